#include "VtProcess.h"

#include <string.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "ChildProcess.h"
#include "CommandLine.h"
#include "Store.h"

// Command lines carry passwords: no text made here quotes one.

namespace {

std::size_t tailRoom(int size) {
    return size > 0 ? static_cast<std::size_t>(size) - 1 : 0;
}

// Cut to the buffer, its NUL included.
void copyCut(std::string_view text, char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return;
    buffer[text.copy(buffer, tailRoom(size))] = '\0';
}

std::string_view baseName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

// The name without its quotes, or the path that the store gives for a tool of that name.
std::string programFor(std::string_view name, const hostlayer::StoreState& store) {
    std::string program(name);
    std::erase(program, '"');
    if (!store.content) return program;
    const auto* mapped = hostlayer::findValue(store.content->programs, baseName(program));
    return mapped != nullptr ? hostlayer::textOf(*mapped) : program;
}

std::string startFailure(const std::string& program, int error, const hostlayer::StoreState& store) {
    std::string text = "Cannot start [" + program + "]: " + std::strerror(error) + ".";
    if (error == ENOENT || error == EACCES || error == ENOTDIR)
        text += " Install it, or name its path as " + std::string(baseName(program)) +
                " under [host.programs] in [" + store.path + "].";
    if (error == E2BIG)
        text += " The command line is longer than the system takes; hand long texts over in a file.";
    return text;
}

}  // namespace

struct VtProcess::Impl {
    std::string end(std::size_t tailSize, int* exitCode);

    hostlayer::ChildProcess child;
    bool isSilent = false;
};

// Reaps the ended child; the text says why it is no success, and is empty when it is one.
std::string VtProcess::Impl::end(std::size_t tailSize, int* exitCode) {
    int status = 0;
    if (const int error = child.reap(status, tailSize); error != 0)
        return std::string("The exit code is lost (the host program may ignore SIGCHLD): ") +
               std::strerror(error);
    if (WIFSIGNALED(status))
        return "Ended by signal " + std::to_string(WTERMSIG(status)) + " (" + ::strsignal(WTERMSIG(status)) +
               ")";
    if (exitCode != nullptr) *exitCode = WEXITSTATUS(status);
    return "";
}

VtProcess::VtProcess() : m_impl(std::make_unique<Impl>()) {}

VtProcess::~VtProcess() {
    if (m_impl->child.isRunning()) Wait(nullptr, nullptr, 0, kNoTimeout);
}

void VtProcess::SetSilence(bool silent) {
    m_impl->isSilent = silent;
}

bool VtProcess::Start(const char* program, const char* commandLine, char* error, int errorSize, int option) {
    static_cast<void>(option);  // selects nothing on this platform
    copyCut("", error, errorSize);
    const auto fail = [&](const std::string& why) {
        copyCut(why, error, errorSize);
        return false;
    };
    if (program == nullptr || commandLine == nullptr || *program == '\0') return fail("No program is named.");
    if (m_impl->child.isRunning()) return fail("The process before has not been waited for.");
    const auto store = hostlayer::currentStore();
    const std::string path = programFor(program, *store);
    std::vector<std::string> words;
    if (!hostlayer::splitCommandLine(commandLine, words))
        return fail("A double quote in the command line of [" + path + "] is not closed.");
    if (words.empty()) words.emplace_back();
    words.front() = path;
    const int failure = m_impl->child.start(path, words, m_impl->isSilent);
    for (std::string& word : words) ::explicit_bzero(word.data(), word.size());  // one may be a password
    return failure == 0 || fail(startFailure(path, failure, *store));
}

bool VtProcess::Wait(int* exitCode, char* error, int errorSize, unsigned int timeoutMilliseconds) {
    if (!m_impl->child.isRunning()) {
        copyCut("No process was started.", error, errorSize);
        return false;
    }
    const std::size_t tailSize = tailRoom(errorSize);
    const auto limit = timeoutMilliseconds == kNoTimeout ? std::chrono::milliseconds(-1)
                                                         : std::chrono::milliseconds(timeoutMilliseconds);
    std::string reason;
    if (m_impl->child.waitForEnd(limit, tailSize)) {
        reason = m_impl->end(tailSize, exitCode);
    } else {
        m_impl->child.endGroup(tailSize);
        m_impl->end(tailSize, nullptr);
        reason = "Ended because it ran longer than " + std::to_string(timeoutMilliseconds) + " ms";
    }
    const std::string& tail = m_impl->child.errorTail();
    if (!reason.empty()) reason += tail.empty() ? "." : ". It wrote:\n";
    copyCut(reason + tail, error, errorSize);
    return reason.empty();
}
