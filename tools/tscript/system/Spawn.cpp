#include "system/Spawn.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "console/Outcome.h"

namespace {

class SpawnSetup {
  public:
    SpawnSetup() {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (const std::string& text : texts) list.push_back(const_cast<char*>(text.c_str()));
    list.push_back(nullptr);
    return list;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& more) {
    std::vector<std::string> all = more;  // the first of a name counts
    for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
    return all;
}

void setFiles(SpawnSetup& setup, const ChildOptions& options) {
    constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&setup.files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&setup.files, STDOUT_FILENO, options.outputFile.c_str(), kWrite, 0600);
    posix_spawn_file_actions_adddup2(&setup.files, STDOUT_FILENO, STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&setup.files, STDERR_FILENO + 1);
    if (!options.workingDirectory.empty())
        posix_spawn_file_actions_addchdir_np(&setup.files, options.workingDirectory.c_str());
}

}  // namespace

pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options) {
    SpawnSetup setup;
    setFiles(setup, options);
    if (options.detached) posix_spawnattr_setflags(&setup.attributes, POSIX_SPAWN_SETSID);
    const std::vector<std::string> environment = environmentWith(options.environment);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, command.front().c_str(), &setup.files, &setup.attributes,
                                  pointers(command).data(), pointers(environment).data());
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
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
