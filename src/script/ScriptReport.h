// How a script run tells what happens: the last message, the output for the user, the session log.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class CVoFile;
class TScript;

class ScriptReport {
  public:
    explicit ScriptReport(TScript& script) : m_script(script) {}

    // The message becomes the object's last message.
    void set(std::string message);
    // The same, and it goes to the session log.
    void log(std::string message);
    // The same, and it goes to the user's output, on a line of its own. Always false, for the caller to
    // return.
    bool report(std::string message);
    // The user reads one text; the last message and the log tell more. Always false.
    bool reportAs(std::string_view userText, std::string message);
    // As log(), and the user's output gets the message behind a single line break.
    void conclude(std::string message);
    // To the log alone; the last message stays.
    void trace(const std::string& message);

    // Hands what stands in a query tool's output file, read `chunk` bytes at a time, to the user's output
    // and, as one message, to the log. Nothing is told of an empty file. Unless it is to be the last message,
    // the caller sets another one at once.
    void toolOutput(CVoFile& outputFile, std::size_t chunk, bool lastMessage);

    // The session has its database and host objects. False is reported.
    bool hasSession();

  private:
    void tell(std::string_view userText);
    void writeLog(const char* message);

    TScript& m_script;
};
