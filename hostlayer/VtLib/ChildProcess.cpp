#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace hostlayer {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kFirstOther = STDERR_FILENO + 1;
constexpr milliseconds kGrace{2000};    // between asking a group to end and forcing it to
constexpr milliseconds kBlindPoll{10};  // between two looks where the kernel cannot tell of the end
constexpr std::size_t kPipeBytes = 65536;
constexpr std::size_t kChunkBytes = 8192;

// What the child's descriptors become.
class FileActions {
  public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    int plan(int errors, bool dropsOutput) {
        int error = ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (error == 0 && dropsOutput)
            error = ::posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        if (error == 0) error = ::posix_spawn_file_actions_adddup2(&m_actions, errors, STDERR_FILENO);
        if (error == 0) error = ::posix_spawn_file_actions_addclosefrom_np(&m_actions, kFirstOther);
        return error;
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

  private:
    posix_spawn_file_actions_t m_actions;
};

// A group of its own, and no blocked or ignored signal of the host program's.
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

// A pipe's end above the standard descriptors: where the host program has closed one of those, the pipe
// would otherwise take its place and be replaced in the child.
bool liftAboveStandard(Descriptor& end) {
    if (end.get() >= kFirstOther) return true;
    end = Descriptor(::fcntl(end.get(), F_DUPFD_CLOEXEC, kFirstOther));
    return static_cast<bool>(end);
}

int makePipe(Descriptor& reading, Descriptor& writing) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return errno;
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
    if (!liftAboveStandard(reading) || !liftAboveStandard(writing)) return errno;
    // The child's end stays blocking: programs expect that of standard error.
    return ::fcntl(reading.get(), F_SETFL, O_NONBLOCK) == 0 ? 0 : errno;
}

milliseconds timeLeft(Clock::time_point end) {
    return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(end - Clock::now()));
}

}  // namespace

int ChildProcess::start(const std::string& program, std::vector<std::string>& words, bool dropsOutput) {
    Descriptor writing;
    if (const int error = makePipe(m_errors, writing); error != 0) return error;
    FileActions actions;
    if (const int error = actions.plan(writing.get(), dropsOutput); error != 0) return error;
    const SpawnAttributes attributes;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t pid = -1;
    const int error =
        ::posix_spawnp(&pid, program.c_str(), actions.get(), attributes.get(), arguments.data(), ::environ);
    if (error != 0) {
        m_errors.reset();
        return error;
    }
    m_pid = pid;
    m_tail.clear();
    m_watch = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    return 0;
}

bool ChildProcess::hasEnded() const {
    siginfo_t info{};
    const int result = ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return result != 0 ? errno != EINTR : info.si_pid != 0;
}

// Waits for the child's end or its next errors; true when there is something to look at.
bool ChildProcess::pollOnce(milliseconds limit) {
    if (!m_watch && (limit.count() < 0 || limit > kBlindPoll)) limit = kBlindPoll;
    pollfd watched[] = {{m_watch.get(), POLLIN, 0}, {m_errors.get(), POLLIN, 0}};
    constexpr milliseconds kLongest{60 * 60 * 1000};
    const auto wait = static_cast<int>(std::min(limit, kLongest).count());
    return ::poll(watched, std::size(watched), wait) > 0 && watched[0].revents != 0;
}

// One read; false when nothing is there at present.
bool ChildProcess::readErrors(std::size_t tailSize) {
    if (!m_errors) return false;
    char chunk[kChunkBytes];
    const ssize_t got = ::read(m_errors.get(), chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) return true;
    if (got == 0 || (got < 0 && errno != EAGAIN)) m_errors.reset();
    if (got <= 0) return false;
    m_tail.append(chunk, static_cast<std::size_t>(got));
    if (m_tail.size() > tailSize) m_tail.erase(0, m_tail.size() - tailSize);
    return true;
}

// What the child has left in the pipe. No more than a pipe holds: processes that it started may hold the pipe
// and go on writing.
void ChildProcess::drainErrors(std::size_t tailSize) {
    constexpr std::size_t kReads = kPipeBytes / kChunkBytes + 1;
    for (std::size_t reads = 0; reads < kReads && readErrors(tailSize);) ++reads;
    m_errors.reset();
}

bool ChildProcess::waitForEnd(milliseconds limit, std::size_t tailSize) {
    const Clock::time_point end = Clock::now() + limit;
    const bool isBounded = limit.count() >= 0;
    for (;;) {
        const bool isTold = pollOnce(isBounded ? timeLeft(end) : limit);
        readErrors(tailSize);
        if (isTold || (!m_watch && hasEnded())) return true;
        if (isBounded && Clock::now() >= end) return false;
    }
}

void ChildProcess::endGroup(std::size_t tailSize) {
    // The child is not reaped in between: as long as it is not, its group's number is nobody else's.
    ::kill(-m_pid, SIGTERM);
    ::kill(-m_pid, SIGCONT);
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
    m_watch.reset();
    drainErrors(tailSize);
    return error;
}

}  // namespace hostlayer
