// How a command ends.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

enum class ExitCode : int {
    kDone = 0,
    kScriptFailed = 1,
    kUsage = 2,
    kInstallation = 3,
    kConnection = 4,
    kRefused = 5,  // authentication or site binding
    kInterrupted = 130
};

// What went wrong, and what to do about it (may be empty). Thrown within the tool, caught by main().
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& what, std::string advice = {})
        : std::runtime_error(what), m_code(code), m_advice(std::move(advice)) {}
    ExitCode code() const { return m_code; }
    const std::string& advice() const { return m_advice; }

  private:
    ExitCode m_code;
    std::string m_advice;
};

// What the command line asked for; run after it has been read whole.
using Action = std::function<ExitCode()>;
