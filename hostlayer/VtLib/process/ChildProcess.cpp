#include "process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace hostlayer {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kFirstOther = STDERR_FILENO + 1;
constexpr milliseconds kGrace{2000};            // between SIGTERM and SIGKILL
constexpr milliseconds kPollWithoutPidfd{10};   // time between two checks of a child that has no pidfd
constexpr milliseconds kLongestPoll{3600'000};  // poll() takes an int
constexpr std::size_t kPipeBytes = 65536;       // default capacity of a pipe, pipe(7)
constexpr std::size_t kChunkBytes = 8192;

// Descriptors of the child: 0 is /dev/null, 1 inherited or /dev/null, 2 the pipe; the others are closed.
class FileActions {
  public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    // Returns 0 or an errno.
    int plan(int errorPipe, ChildProcess::Output output) {
        int error = ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (error == 0 && output == ChildProcess::Output::kDiscard)
            error = ::posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        if (error == 0) error = ::posix_spawn_file_actions_adddup2(&m_actions, errorPipe, STDERR_FILENO);
        if (error == 0) error = ::posix_spawn_file_actions_addclosefrom_np(&m_actions, kFirstOther);
        return error;
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

  private:
    posix_spawn_file_actions_t m_actions;
};

// Attributes of the child: its own process group, no signal blocked or ignored whatever the host program
// does.
class SpawnAttributes {
  public:
    SpawnAttributes() {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        ::posix_spawnattr_setpgroup(&m_attributes, 0);
        ::posix_spawnattr_setflags(&m_attributes,
                                   POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

  private:
    posix_spawnattr_t m_attributes;
};

// Moves a descriptor above the standard ones. A host program that has closed one of those would otherwise get
// the pipe at its number, where the file actions replace it in the child.
bool moveAboveStandard(Descriptor& end) {
    if (end.get() >= kFirstOther) return true;
    end = Descriptor(::fcntl(end.get(), F_DUPFD_CLOEXEC, kFirstOther));
    return static_cast<bool>(end);
}

// Returns 0 or an errno.
int makePipe(Descriptor& reading, Descriptor& writing) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return errno;
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
    if (!moveAboveStandard(reading) || !moveAboveStandard(writing)) return errno;
    // The child's end stays blocking, as programs expect of standard error.
    return ::fcntl(reading.get(), F_SETFL, O_NONBLOCK) == 0 ? 0 : errno;
}

milliseconds timeLeft(Clock::time_point end) {
    return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(end - Clock::now()));
}

// Array of pointers to the strings, with the null pointer at its end that exec functions want.
std::vector<char*> argvOf(std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    return argv;
}

// The caller's environment, not copied, with the given variables.
std::vector<char*> environmentWith(std::vector<std::string>& variables) {
    std::vector<char*> environment = argvOf(variables);
    environment.pop_back();
    const auto isReplaced = [&](std::string_view variable) {
        const std::string_view name = variable.substr(0, variable.find('=') + 1);
        return std::any_of(variables.begin(), variables.end(),
                           [&](const std::string& text) { return text.starts_with(name); });
    };
    // clearenv(3) leaves no list at all.
    for (char** variable = ::environ; variable != nullptr && *variable != nullptr; ++variable)
        if (!isReplaced(*variable)) environment.push_back(*variable);
    environment.push_back(nullptr);
    return environment;
}

}  // namespace

int ChildProcess::start(const std::string& program, std::vector<std::string>& arguments,
                        std::vector<std::string>& variables, Output output) {
    Descriptor writing;
    if (const int error = makePipe(m_errors, writing); error != 0) return error;
    FileActions actions;
    if (const int error = actions.plan(writing.get(), output); error != 0) return error;
    const SpawnAttributes attributes;
    const std::vector<char*> argv = argvOf(arguments);
    const std::vector<char*> environment = environmentWith(variables);
    pid_t pid = -1;
    const int error = ::posix_spawnp(&pid, program.c_str(), actions.get(), attributes.get(), argv.data(),
                                     environment.data());
    if (error != 0) {
        m_errors.reset();
        return error;
    }
    m_pid = pid;
    m_tail.clear();
    m_pidfd = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    return 0;
}

bool ChildProcess::hasEnded() const {
    siginfo_t info{};
    const int result = ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return result != 0 ? errno != EINTR : info.si_pid != 0;
}

// Waits until the child ends, writes to standard error, or the time is over. True when the child has ended.
bool ChildProcess::pollForEnd(milliseconds limit) {
    pollfd watched[] = {{m_pidfd.get(), POLLIN, 0}, {m_errors.get(), POLLIN, 0}};
    const milliseconds wait = std::min(limit, m_pidfd ? kLongestPoll : kPollWithoutPidfd);
    const int ready = ::poll(watched, std::size(watched), static_cast<int>(wait.count()));
    const bool hasFailed = ready < 0 && errno != EINTR;
    if (hasFailed) std::this_thread::sleep_for(std::min(limit, kPollWithoutPidfd));
    return m_pidfd && !hasFailed ? ready > 0 && watched[0].revents != 0 : hasEnded();
}

// Reads once. False when the pipe is empty or closed.
bool ChildProcess::readErrors(std::size_t tailSize) {
    if (!m_errors) return false;
    char chunk[kChunkBytes];
    const ssize_t count = ::read(m_errors.get(), chunk, sizeof chunk);
    if (count < 0 && errno == EINTR) return true;
    if (count == 0 || (count < 0 && errno != EAGAIN)) m_errors.reset();
    if (count <= 0) return false;
    if (tailSize == 0) return true;
    m_tail.append(chunk, static_cast<std::size_t>(count));
    if (m_tail.size() > tailSize) m_tail.erase(0, m_tail.size() - tailSize);
    return true;
}

// Reads what the ended child has left in the pipe, at most what a pipe can hold: processes that the child has
// started may still have the pipe open and keep writing.
void ChildProcess::drainErrors(std::size_t tailSize) {
    constexpr std::size_t kReads = kPipeBytes / kChunkBytes + 1;
    for (std::size_t reads = 0; reads < kReads && readErrors(tailSize);) ++reads;
    m_errors.reset();
}

bool ChildProcess::waitForEnd(std::optional<milliseconds> limit, std::size_t tailSize) {
    const Clock::time_point end = Clock::now() + limit.value_or(milliseconds(0));
    for (;;) {
        const bool isEnded = pollForEnd(limit ? timeLeft(end) : kLongestPoll);
        readErrors(tailSize);
        if (isEnded) return true;
        if (limit && Clock::now() >= end) return false;
    }
}

void ChildProcess::endGroup(std::size_t tailSize) {
    // Until the child is reaped, no other group can get its process group ID.
    ::kill(-m_pid, SIGTERM);
    ::kill(-m_pid, SIGCONT);  // a stopped process does not receive SIGTERM before it continues
    waitForEnd(kGrace, tailSize);
    ::kill(-m_pid, SIGKILL);
}

int ChildProcess::reap(int& status, std::size_t tailSize) {
    pid_t result = -1;
    do {
        result = ::waitpid(m_pid, &status, 0);
    } while (result < 0 && errno == EINTR);
    const int error = result < 0 ? errno : 0;
    m_pid = -1;
    m_pidfd.reset();
    drainErrors(tailSize);
    return error;
}

}  // namespace hostlayer
