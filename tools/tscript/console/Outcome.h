// Exit codes of the commands, and the exception that carries one.
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
    kRefused = 5,  // by authentication, a secured script or the site binding
    kInterrupted = 130
};

// An error with its exit code and, where there is any, advice on what to do. Caught by main().
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

// The work of the chosen command; runs after the whole command line has been parsed.
using Action = std::function<ExitCode()>;
