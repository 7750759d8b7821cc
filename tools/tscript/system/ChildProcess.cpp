#include "system/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "console/Outcome.h"

namespace {

class SpawnSettings {
  public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        sigset_t ignored;  // by main(); SIGXFSZ stays ignored in children, too
        sigemptyset(&ignored);
        sigaddset(&ignored, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes, &ignored);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> list;
    list.reserve(strings.size() + 1);
    for (const std::string& string : strings) list.push_back(const_cast<char*>(string.c_str()));
    list.push_back(nullptr);
    return list;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& added) {
    std::vector<std::string> all = added;  // getenv() finds the first entry of a name
    for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
    return all;
}

constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
constexpr mode_t kMode = 0600;

// posix_spawn() reports an output file that cannot be opened like a program that cannot be started.
void requireWritable(const std::string& file) {
    const int fd = open(file.c_str(), kWrite | O_CLOEXEC, kMode);
    if (fd < 0) throw Failure(ExitCode::kInstallation, file + " cannot be written: " + std::strerror(errno));
    close(fd);
}

void redirectStreams(SpawnSettings& settings, const ChildOptions& options) {
    posix_spawn_file_actions_addopen(&settings.files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&settings.files, STDOUT_FILENO, options.outputFile.c_str(), kWrite,
                                     kMode);
    if (options.errorFile.empty()) {
        posix_spawn_file_actions_adddup2(&settings.files, STDOUT_FILENO, STDERR_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&settings.files, STDERR_FILENO, options.errorFile.c_str(), kWrite,
                                         kMode);
    }
    posix_spawn_file_actions_addclosefrom_np(&settings.files, STDERR_FILENO + 1);
    if (!options.workingDirectory.empty())
        posix_spawn_file_actions_addchdir_np(&settings.files, options.workingDirectory.c_str());
}

}  // namespace

pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options) {
    requireWritable(options.outputFile);
    if (!options.errorFile.empty()) requireWritable(options.errorFile);
    SpawnSettings settings;
    redirectStreams(settings, options);
    const int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK |
                      (options.detached ? POSIX_SPAWN_SETSID : 0) |
                      (options.ownGroup ? POSIX_SPAWN_SETPGROUP : 0);
    posix_spawnattr_setflags(&settings.attributes, static_cast<short>(flags));
    const std::vector<std::string> environment = environmentWith(options.environment);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, command.front().c_str(), &settings.files, &settings.attributes,
                                  pointersTo(command).data(), pointersTo(environment).data());
    if (error != 0)
        throw Failure(ExitCode::kInstallation,
                      command.front() + " cannot be started: " + std::strerror(error));
    return pid;
}

int runChild(const std::vector<std::string>& command, const ChildOptions& options) {
    const pid_t pid = startChild(command, options);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return exitCodeOf(status);
}

int exitCodeOf(int status) {
    constexpr int kSignalled = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

std::vector<pid_t> childrenOf(pid_t thread) {
    std::ifstream list("/proc/self/task/" + std::to_string(thread) + "/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; list >> child;) children.push_back(child);
    return children;
}
