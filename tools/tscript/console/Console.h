// Standard streams: secrets are read from them, results and notes are written to them.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "console/Secret.h"

// Reads one line of at most `maximum` bytes: on a terminal with a prompt and without echo, else the first
// line of standard input. Throws Failure if the line is longer, holds a NUL byte or is missing.
Secret readSecret(const std::string& prompt, std::size_t maximum);

// Keeps standard output for results: redirects what the library prints to `stdout` to standard error.
void redirectLibraryOutput();
// Standard output of the process, also after redirectLibraryOutput().
std::FILE* resultStream();

// Writes a result to standard output and ends it with a line break. On a terminal, control characters other
// than line breaks and tabs become blanks: scripts and databases must not send escape sequences to it.
void writeResult(std::string_view text);
// Writes the next lines of a result at once, for results that take long.
void writeNextLines(std::string_view lines);
// Like writeResult(), for text with escape sequences of our own.
void writeStyled(std::string_view text);
// Writes to standard error what the user is to answer, without a line break. Replaces control characters as
// writeResult() does.
void writePrompt(const std::string& text);
// Writes a message to standard error, without leading and trailing line breaks.
void writeNote(const std::string& text);
