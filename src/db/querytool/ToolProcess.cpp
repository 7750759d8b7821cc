#include "querytool/ToolProcess.h"

#include <array>
#include <string>
#include <string_view>

#include "Causes.h"
#include "EvDebug.h"
#include "FX.h"
#include "VtProcess.h"
#include "parts/DatabaseMessages.h"

namespace {

constexpr char kTag[] = "StartProcess";
constexpr int kErrorSize = 1024;
constexpr int kStartOption = 0;

}  // namespace

ProcessEnd runProcess(const char* commandLine, unsigned int timeout) {
    namespace debug = database_messages::debug;
    const EvDebug debugLog(nullptr);
    int exitCode = 1;
    std::array<char, kErrorSize> error{};
    VtProcess process;
    const std::string_view command = commandLine;
    const std::string program(command.substr(0, command.find(' ')));
    process.SetSilence(/*silent=*/true);
    const ExplainedStep step;
    if (!process.Start(program.c_str(), commandLine, error.data(), kErrorSize, kStartOption)) {
        debugLog.Debug(kTag, debug::kStartFailed, error.data());
        step.noteUnlessExplained({.where = kDVUQueryTool, .subject = program, .text = error.data()});
        return ProcessEnd::kNotStarted;
    }
    if (!process.Wait(&exitCode, error.data(), kErrorSize, timeout)) {
        debugLog.Debug(kTag, debug::kWaitFailed, error.data());
        step.noteUnlessExplained({.where = kDVUQueryTool, .subject = program, .text = error.data()});
        return ProcessEnd::kFailed;
    }
    if (exitCode == 0) return ProcessEnd::kSucceeded;
    debugLog.Debug(kTag, debug::kProcessFailed, exitCode, error.data());
    const bool hasText = error.front() != '\0';
    step.noteUnlessExplained(
        {.where = kDVUQueryTool,
         .exitCode = exitCode,
         .subject = program,
         .text = hasText ? error.data() : FXString::Format(database_messages::kExitCode, exitCode)});
    return ProcessEnd::kFailed;
}
