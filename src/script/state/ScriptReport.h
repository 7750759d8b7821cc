// Reports of a script run: the last message, the output for the user, the session log.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "state/Attempt.h"
#include "state/ScriptParts.h"

class CVoFile;

class ScriptReport {
  public:
    explicit ScriptReport(const ScriptParts& script)
        : m_session(script.session), m_messages(script.messages) {}

    // Makes the message the object's last one.
    void set(std::string message);
    // set(), and writes it to the session log.
    void log(std::string message);
    // log(), and appends it to the user's output, on a line of its own.
    void report(std::string message);
    // log(), and appends it to the user's output behind a line break, without one after it.
    void reportLast(std::string message);
    // report() for a failure: always false.
    bool fail(std::string message);
    // The user's output gets `userText`, the last message and the log get `message`. Always false.
    bool failAs(std::string_view userText, std::string message);
    // Writes to the log only; the last message stays.
    void trace(const std::string& message);

    // Appends the rest of a query tool's output file, read `chunk` bytes at a time, to the user's output and
    // writes it to the log as one message. An empty file is not reported. `path` is the file's. With
    // `lastMessage` the text becomes the last message, too.
    void toolOutput(CVoFile& outputFile, const std::string& path, std::size_t chunk, bool lastMessage);

    // Returns whether the session has its database and host objects; reports it if not.
    bool requireSession();

    // Returns what `work` returns; an exception is reported and counts as false.
    template <typename Work>
    bool attempted(Work&& work) {
        return attempt(std::forward<Work>(work), [this] { reportBrokenOff(); });
    }

  private:
    void reportBrokenOff();
    void appendLine(std::string_view userText);
    void writeLog(const char* message);

    SessionParts m_session;
    MessageParts m_messages;
};
