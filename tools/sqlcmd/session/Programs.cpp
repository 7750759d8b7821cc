#include "session/Programs.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "text/Errors.h"

namespace sqlcmd {
namespace {

// Temporary file, deleted by the destructor. Only its owner can read it. Its operations throw ToolError.
class TextFile {
  public:
    TextFile() {
        const char* folder = std::getenv("TMPDIR");
        m_path = std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/sqlcmd-XXXXXX.sql";
        const int descriptor = mkostemps(m_path.data(), kSuffixLength, O_CLOEXEC);
        if (descriptor < 0) throwFailure("create");
        close(descriptor);
    }
    ~TextFile() { unlink(m_path.c_str()); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    const std::string& path() const { return m_path; }
    void write(const std::string& text) const {
        std::ofstream file(m_path, std::ios::binary);
        file << text << std::flush;
        if (!file) throwFailure("write");
    }
    std::string read() const {
        std::ifstream file(m_path, std::ios::binary);
        if (!file) throwFailure("read");
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    [[noreturn]] void throwFailure(const char* operation) const {
        const std::string reason = std::strerror(errno);
        throw ToolError(std::string("Sqlcmd: Error: cannot ") + operation + " '" + m_path + "': " + reason +
                        ".");
    }

    static constexpr int kSuffixLength = 4;  // of ".sql"
    std::string m_path;
};

// Attributes of posix_spawn(): the signals that the tool handles or ignores have their default actions.
class DefaultSignals {
  public:
    DefaultSignals() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGPIPE}) sigaddset(&signals, signal);
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~DefaultSignals() { posix_spawnattr_destroy(&m_attributes); }
    DefaultSignals(const DefaultSignals&) = delete;
    DefaultSignals& operator=(const DefaultSignals&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

  private:
    posix_spawnattr_t m_attributes;
};

// Starts /bin/sh. `input` is the descriptor of its standard input, -1 for that of the tool.
pid_t startShell(std::vector<std::string> arguments, int input) {
    constexpr int kFirstOther = 3;
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const bool mayReadScript = isatty(STDIN_FILENO) == 0;  // standard input may be the script
    if (input >= 0)
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    else if (mayReadScript)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, kFirstOther);  // the connection among them
    const DefaultSignals signals;
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/bin/sh", &actions, signals.get(), pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw ToolError(std::string("Sqlcmd: Error: /bin/sh: ") + std::strerror(error) + ".");
    return pid;
}

void waitForShell(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
}

void runShell(std::vector<std::string> arguments) {
    waitForShell(startShell(std::move(arguments), -1));
}

std::size_t terminalWidth() {
    constexpr std::size_t kDefault = 80;
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : kDefault;
}

}  // namespace

Pager::Pager(Output& output, const std::string& command, std::size_t width) : m_output(output) {
    if (command.empty() || !output.isTerminal() || width <= terminalWidth()) return;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw ToolError(std::string("Sqlcmd: Error: cannot create a pipe: ") + std::strerror(errno) + ".");
    try {
        m_pid = startShell({"sh", "-c", command}, ends[0]);
    } catch (const ToolError&) {
        close(ends[0]), close(ends[1]);
        throw;
    }
    close(ends[0]);
    m_input = ends[1];
    output.divert(m_input);
}

Pager::~Pager() {
    if (m_input < 0) return;
    m_output.endDiversion();
    close(m_input);
    waitForShell(m_pid);
}

void runShellCommand(const std::string& command) {
    runShell({"sh", "-c", command});
}

std::string edited(const std::string& text, const std::string& editor) {
    const TextFile file;
    file.write(text);
    runShell({"sh", "-c", editor + " \"$1\"", "sh", file.path()});
    return file.read();
}

}  // namespace sqlcmd
