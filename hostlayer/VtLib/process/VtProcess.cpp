#include "VtProcess.h"

#include <string.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HostSettings.h"
#include "ProcessStart.h"
#include "VtCauses.h"
#include "process/ChildProcess.h"
#include "process/CommandLine.h"
#include "process/ProgramPath.h"
#include "process/StrictQueryTool.h"
#include "store/Store.h"

// No error text quotes a command line: it may hold a password.

namespace {

// Number of characters that fit into a buffer beside the NUL.
std::size_t capacityOf(int bufferSize) {
    return bufferSize > 0 ? static_cast<std::size_t>(bufferSize) - 1 : 0;
}

// Copies as much of the text as fits, and a NUL.
void copyTruncated(std::string_view text, char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return;
    buffer[text.copy(buffer, capacityOf(size))] = '\0';
}

// `program`: as the caller named it, which the store may map to `path`.
std::string startFailure(const char* program, const std::string& path, int error,
                         const hostlayer::StoreState& store) {
    std::string text = "Cannot start [" + path + "]: " + std::strerror(error) + ".";
    if (error == ENOENT || error == EACCES || error == ENOTDIR)
        text += " Install it, or set " + hostlayer::entryNameOf(program) +
                " to its path under [host.programs] in [" + store.path + "].";
    if (error == E2BIG)
        text += " The command line is longer than the system permits. Pass long texts in a file.";
    return text;
}

// Strings of which one may hold a password. Wiped when they are destroyed.
struct WipedStrings : std::vector<std::string> {
    WipedStrings() = default;
    ~WipedStrings() {
        for (std::string& text : *this) ::explicit_bzero(text.data(), text.size());
    }
    WipedStrings(const WipedStrings&) = delete;
    WipedStrings& operator=(const WipedStrings&) = delete;
};

// Notes the end of a program that failed, with what it wrote. An exit code of -1: it has none.
void noteFailure(const std::string& program, int exitCode, int signal, std::string text) {
    text.erase(text.find_last_not_of('\n') + 1);
    VtNoteCause({.place = VtCause::kQueryTool,
                 .exitCode = exitCode,
                 .signal = signal,
                 .subject = program,
                 .text = text.empty()
                             ? "The query tool ended with exit code " + std::to_string(exitCode) + "."
                             : text});
}

// Adds the settings that the query tool reads from its environment, because its command line is fixed: the
// host's encryption and network time-out, and that scripts start no programs.
void addQueryToolVariables(std::vector<std::string>& variables) {
    variables.emplace_back("SQLCMD_NO_PROGRAMS=1");
    for (const auto& [variable, setting] : {std::pair("SQLCMD_ENCRYPT", "encrypt"),
                                            {"SQLCMD_CA_FILE", "caFile"},
                                            {"SQLCMD_NETWORK_TIMEOUT", "networkTimeout"}})
        if (const std::string value = hostlayer::hostSetting(setting, ""); !value.empty())
            variables.push_back(std::string(variable) + "=" + value);
}

}  // namespace

struct VtProcess::Impl {
    std::string reap(std::size_t tailSize, int& exitCode, int& signal);

    hostlayer::ChildProcess child;
    std::string program;
    bool isSilent = false;
};

// Reaps the ended child. Returns the reason why there is no exit code; empty when `exitCode` is set. `signal`
// is set when one has ended the child.
std::string VtProcess::Impl::reap(std::size_t tailSize, int& exitCode, int& signal) {
    int status = 0;
    if (const int error = child.reap(status, tailSize); error != 0)
        return std::string("The exit code is lost (does the host program ignore SIGCHLD?): ") +
               std::strerror(error);
    if (WIFSIGNALED(status)) {
        signal = WTERMSIG(status);
        return "Ended by signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
    }
    exitCode = WEXITSTATUS(status);
    return "";
}

VtProcess::VtProcess() : m_impl(std::make_unique<Impl>()) {}

VtProcess::~VtProcess() {
    if (!m_impl->child.isStarted()) return;
    constexpr std::size_t kNoTail = 0;  // takes no memory, whose lack could not be reported
    int status = 0;
    m_impl->child.waitForEnd(std::nullopt, kNoTail);
    m_impl->child.reap(status, kNoTail);
}

void VtProcess::SetSilence(bool silent) {
    m_impl->isSilent = silent;
}

bool VtProcess::Start(const char* program, const char* commandLine, char* error, int errorSize, int option) {
    static_cast<void>(option);  // no effect on this platform
    copyTruncated("", error, errorSize);
    const auto fail = [&](const std::string& reason) {
        copyTruncated(reason, error, errorSize);
        return false;
    };
    if (program == nullptr || commandLine == nullptr || *program == '\0')
        return fail("The program has no name.");
    if (m_impl->child.isStarted()) return fail("The previous process has not been waited for.");
    const auto store = hostlayer::currentStore();
    const std::string path = hostlayer::programPath(program, *store);
    WipedStrings arguments;
    if (!hostlayer::splitCommandLine(commandLine, arguments))
        return fail("A double quote in the command line of [" + path + "] is not closed.");
    if (arguments.empty()) arguments.emplace_back();
    arguments.front() = path;
    m_impl->program = path;
    hostlayer::announceProcessStart(arguments);
    using Output = hostlayer::ChildProcess::Output;
    WipedStrings variables;
    addQueryToolVariables(variables);
    if (hostlayer::isStrictQueryTool(program)) hostlayer::makeStrict(arguments, variables);
    const int failure = m_impl->child.start(path, arguments, variables,
                                            m_impl->isSilent ? Output::kDiscard : Output::kInherit);
    if (failure == 0) return true;
    const std::string reason = startFailure(program, path, failure, *store);
    VtNoteCause({.place = VtCause::kQueryTool, .systemError = failure, .subject = path, .text = reason});
    return fail(reason);
}

bool VtProcess::Wait(int* exitCode, char* error, int errorSize, unsigned int timeoutMilliseconds) {
    if (!m_impl->child.isStarted()) {
        copyTruncated("No process was started.", error, errorSize);
        return false;
    }
    const std::size_t tailSize = capacityOf(errorSize);
    std::optional<std::chrono::milliseconds> limit;
    if (timeoutMilliseconds != kNoTimeout) limit.emplace(timeoutMilliseconds);
    std::string reason;
    int code = 0;
    int signal = 0;
    if (m_impl->child.waitForEnd(limit, tailSize)) {
        reason = m_impl->reap(tailSize, code, signal);
    } else {
        m_impl->child.endGroup(tailSize);
        m_impl->reap(tailSize, code, signal);
        reason = "Ended because it ran longer than " + std::to_string(timeoutMilliseconds) + " ms";
    }
    const bool hasExited = reason.empty();
    if (hasExited && exitCode != nullptr) *exitCode = code;
    const std::string& tail = m_impl->child.errorTail();
    if (!hasExited) reason += tail.empty() ? "." : ". It wrote:\n";
    copyTruncated(reason + tail, error, errorSize);
    if (!hasExited || code != 0) noteFailure(m_impl->program, hasExited ? code : -1, signal, reason + tail);
    return hasExited;
}
