#include "Program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace support {
namespace {

void check(int error, const std::string& what) {
    if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

bool setsName(std::string_view assignment, std::string_view other) {
    const auto nameEnd = assignment.find('=');
    return other.substr(0, nameEnd + 1) == assignment.substr(0, nameEnd + 1);
}

std::vector<std::string> environmentWith(const std::vector<std::string>& additions) {
    std::vector<std::string> environment = additions;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        bool replaced = false;
        for (const std::string& addition : additions) replaced |= setsName(addition, *entry);
        if (!replaced) environment.emplace_back(*entry);
    }
    return environment;
}

class SpawnSettings {
  public:
    SpawnSettings() {
        check(posix_spawn_file_actions_init(&m_actions), "posix_spawn_file_actions_init");
        check(posix_spawnattr_init(&m_attributes), "posix_spawnattr_init");
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

}  // namespace

void Descriptor::reset() {
    if (m_fd >= 0) close(m_fd);
    m_fd = -1;
}

Descriptor memoryFile(const std::string& content) {
    Descriptor file(memfd_create("test", MFD_CLOEXEC));
    if (file.get() < 0) check(errno, "memfd_create");
    if (pwrite(file.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
        check(errno, "write to a memory file");
    return file;
}

std::string contentOf(const Descriptor& memoryFile) {
    std::string content;
    char block[65536];
    ssize_t got = 0;
    while ((got = pread(memoryFile.get(), block, sizeof block, static_cast<off_t>(content.size()))) > 0)
        content.append(block, static_cast<std::size_t>(got));
    return content;
}

pid_t spawn(const std::vector<std::string>& command, const ProgramOptions& options, StandardFiles files) {
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.m_actions, files.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&settings.m_actions, files.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&settings.m_actions, files.errors, STDERR_FILENO);
    if (!options.workingDirectory.empty())
        posix_spawn_file_actions_addchdir_np(&settings.m_actions, options.workingDirectory.c_str());
    posix_spawnattr_setflags(&settings.m_attributes, POSIX_SPAWN_SETPGROUP);

    const std::vector<std::string> environment = environmentWith(options.environment);
    pid_t pid = -1;
    check(posix_spawnp(&pid, command.at(0).c_str(), &settings.m_actions, &settings.m_attributes,
                       pointersTo(command).data(), pointersTo(environment).data()),
          "start " + command.at(0));
    return pid;
}

bool waitFor(pid_t pid, std::chrono::milliseconds limit, int& exitCode) {
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    pollfd ended{process.get(), POLLIN, 0};
    const bool byItself = poll(&ended, 1, static_cast<int>(limit.count())) == 1;
    if (!byItself) kill(-pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return byItself;
}

ProgramResult runProgram(const std::vector<std::string>& command, const ProgramOptions& options) {
    const Descriptor input = memoryFile(options.input);
    const Descriptor output = memoryFile();
    const Descriptor errors = memoryFile();
    const pid_t pid = spawn(command, options, {input.get(), output.get(), errors.get()});
    ProgramResult result;
    result.timedOut = !waitFor(pid, options.limit, result.exitCode);
    result.output = contentOf(output);
    result.errors = contentOf(errors);
    return result;
}

}  // namespace support
