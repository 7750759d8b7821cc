// Programs that a script starts: shell commands (!!) and the editor (:ed).
#pragma once

#include <string>

namespace sqlcmd {

// Runs a command with /bin/sh and waits for its end. It gets the tool's standard streams and no other
// descriptor. Throws ToolError if the shell cannot be started.
void runShellCommand(const std::string& command);

// Returns the text as the editor, a shell command, leaves it. Throws ToolError if there is no place for the
// text.
std::string edited(const std::string& text, const std::string& editor);

}  // namespace sqlcmd
