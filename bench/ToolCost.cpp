#include "ToolCost.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <cerrno>

#include "Bench.h"

namespace bench {
namespace {

// Ends the program if an exception leaves it behind.
class TracedProgram {
  public:
    explicit TracedProgram(pid_t pid) : m_pid(pid) {
        check(ptrace(PTRACE_SEIZE, pid, nullptr, PTRACE_O_TRACEEXIT) == 0, "the program cannot be traced");
    }
    ~TracedProgram() {
        if (m_pid < 0) return;
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    TracedProgram(const TracedProgram&) = delete;
    TracedProgram& operator=(const TracedProgram&) = delete;

    // Waits until all of its memory has been used: it is about to exit. Passes on signals.
    void waitForExit() const {
        constexpr int kExiting = SIGTRAP | PTRACE_EVENT_EXIT << 8;  // ptrace(2)
        for (;;) {
            const int status = wait();
            check(WIFSTOPPED(status), "the program has ended before it could be traced");
            if (status >> 8 == kExiting) return;
            ptrace(PTRACE_CONT, m_pid, nullptr, status >> 16 == 0 ? WSTOPSIG(status) : 0);
        }
    }

    // Returns the wait status.
    int end() {
        ptrace(PTRACE_DETACH, m_pid, nullptr, nullptr);
        const int status = wait();
        m_pid = -1;
        return status;
    }

  private:
    int wait() const {
        int status = 0;
        while (waitpid(m_pid, &status, __WALL) < 0) check(errno == EINTR, "waitpid() fails");
        return status;
    }

    pid_t m_pid;
};

}  // namespace

void runTool(const std::vector<std::string>& command, const std::string& password) {
    support::ProgramOptions options;
    options.environment = {"SQLCMDPASSWORD=" + password};
    const support::ProgramResult result = support::runProgram(command, options);
    check(result.exitCode == 0, command[0] + " fails: " + result.output + result.errors);
}

// The peak that wait4() reports would include the memory of this process, which starts the program.
ToolCost costOfTool(const std::vector<std::string>& command, const support::ProgramOptions& options) {
    const support::Descriptor output = support::memoryFile();
    ToolCost cost;
    int status = 0;
    cost.seconds = secondsOf([&] {
        const pid_t pid = support::spawn(command, options, {output.get(), output.get(), output.get()});
        TracedProgram program(pid);
        program.waitForExit();
        cost.peakMemory = processStatus(std::to_string(pid), "VmHWM:");
        status = program.end();
    });
    check(status == 0, command[0] + " fails: " + support::contentOf(output));
    return cost;
}

}  // namespace bench
