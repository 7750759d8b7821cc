#include "sandbox/SandboxServer.h"

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "console/Outcome.h"
#include "system/ChildProcess.h"
#include "system/Interrupt.h"

namespace {

constexpr std::chrono::seconds kStartLimit{60};
constexpr std::chrono::seconds kStopLimit{60};
constexpr std::chrono::milliseconds kPollInterval{20};
constexpr const char* kReady = "listening on 127.0.0.1:";

// Start time of a process in clock ticks since boot; 0 if it has ended or is a zombie. This is field 22 of
// /proc/PID/stat; the program's name before it may contain blanks and parentheses.
unsigned long long startTime(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(in, line);
    const std::size_t name = line.rfind(") ");
    if (name == std::string::npos || line.compare(name + 2, 1, "Z") == 0) return 0;
    std::size_t at = name + 2;
    for (int field = 3; field < 22 && at != std::string::npos; ++field) at = line.find(' ', at + 1);
    return at == std::string::npos ? 0 : std::stoull(line.substr(at));
}

std::string logFile(const SandboxFolder& folder) {
    return (folder.logs() / "tsqlbox.log").string();
}

std::string content(const std::string& file) {
    std::ifstream in(file);
    std::string text;
    for (std::string line; text.size() < 4096 && std::getline(in, line);) text += line + "\n";
    return text;
}

// Port that the server printed; 0 if it has not printed one yet.
int announcedPort(const std::string& log) {
    std::ifstream in(log);
    for (std::string line; std::getline(in, line);)
        if (line.rfind(kReady, 0) == 0 && !in.eof())
            return static_cast<int>(std::strtol(line.c_str() + std::string(kReady).size(), nullptr, 10));
    return 0;
}

int waitForPort(const SandboxFolder& folder, pid_t pid) {
    const auto deadline = std::chrono::steady_clock::now() + kStartLimit;
    bool isRunning = true;
    while (isRunning && std::chrono::steady_clock::now() < deadline) {
        if (const int port = announcedPort(logFile(folder))) return port;
        std::this_thread::sleep_for(kPollInterval);
        isRunning = waitpid(pid, nullptr, WNOHANG) == 0;
    }
    if (isRunning) kill(pid, SIGKILL);
    throw Failure(ExitCode::kConnection, "the server did not start:\n" + content(logFile(folder)));
}

}  // namespace

std::string addressOf(int port) {
    return "127.0.0.1," + std::to_string(port);
}

std::optional<RunningServer> findServer(const SandboxFolder& folder) {
    std::ifstream in(folder.pidFile());
    RunningServer server;
    unsigned long long started = 0;
    if (!(in >> server.pid >> started >> server.port) || server.pid <= 1) return std::nullopt;
    if (started == 0 || startTime(server.pid) != started) return std::nullopt;
    return server;
}

RunningServer startServer(const SandboxFolder& folder, int port) {
    const InterruptDelay delay;  // without its pid file, nobody would find the server of an interrupted start
    const std::string program = (programFolder() / "tsqlbox").string();
    const pid_t pid =
        startChild({program, "--data", folder.data(), "--port", std::to_string(port), "--login", "sa",
                    "--password-file", folder.passwordFile(), "--tls-cert", folder.certificate(), "--tls-key",
                    folder.tlsKey(), "--tls-self-signed", "localhost,127.0.0.1", "--encryption", "required",
                    "--backup-folder", folder.backups()},
                   {.outputFile = logFile(folder), .detached = true, .workingDirectory = "/"});
    const RunningServer server{pid, waitForPort(folder, pid)};
    std::ofstream out(folder.pidFile(), std::ios::trunc);
    out << server.pid << ' ' << startTime(pid) << ' ' << server.port << '\n' << std::flush;
    if (!out) {
        kill(pid, SIGTERM);
        throw Failure(ExitCode::kInstallation, folder.pidFile().string() + " cannot be written");
    }
    return server;
}

void stopServer(const SandboxFolder& folder, const RunningServer& server) {
    const auto deadline = std::chrono::steady_clock::now() + kStopLimit;
    kill(server.pid, SIGTERM);
    while (findServer(folder)) {
        if (std::chrono::steady_clock::now() > deadline)
            throw Failure(ExitCode::kConnection,
                          "the server (process " + std::to_string(server.pid) + ") does not end");
        std::this_thread::sleep_for(kPollInterval);
    }
    std::error_code ignored;
    std::filesystem::remove(folder.pidFile(), ignored);
}
