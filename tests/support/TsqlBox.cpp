#include "TsqlBox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>

namespace support {
namespace {

// Generous: sanitizer builds on a busy machine are slow to start and to close their files.
constexpr std::chrono::milliseconds kStartLimit{60'000};
constexpr std::chrono::milliseconds kStopLimit{60'000};

struct Pipe {
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
    }
    Descriptor readEnd;
    Descriptor writeEnd;
};

// The first line, or the part of it that arrived before the limit or the end of the writer.
std::string readLine(int fd, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::string line;
    for (char c = 0; c != '\n'; line += c) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd readable{fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) != 1) break;
        if (read(fd, &c, 1) != 1) break;
    }
    return line;
}

}  // namespace

std::string tsqlboxProgram() {
    return TSQLBOX_PROGRAM;
}

Certificates::Certificates() {
    const ProgramResult result = runProgram({CERTIFICATES_SCRIPT, m_folder.path()});
    if (result.exitCode != 0) throw std::runtime_error("no certificates: " + result.errors);
}

std::vector<std::string> Certificates::options(const std::string& name, std::vector<std::string> more) const {
    more.insert(more.begin(), {"--tls-cert", file(name + ".pem"), "--tls-key", file(name + ".key")});
    return more;
}

TsqlBox::TsqlBox(std::vector<std::string> extraArguments) : m_extraArguments(std::move(extraArguments)) {
    writeFile(passwordFile(), m_password + "\n");
    start();
}

TsqlBox::~TsqlBox() {
    stop();
}

void TsqlBox::start() {
    if (m_pid > 0) return;
    Pipe input;
    Pipe output;
    m_errors = memoryFile();
    std::vector<std::string> command = {
        tsqlboxProgram(),       "--data",        dataDirectory(),   "--port",
        std::to_string(m_port), "--login",       m_login,           "--password-file",
        passwordFile(),         "--stop-at-eof", "--backup-folder", std::filesystem::temp_directory_path()};
    command.insert(command.end(), m_extraArguments.begin(), m_extraArguments.end());
    m_pid = spawn(command, {}, {input.readEnd.get(), output.writeEnd.get(), m_errors.get()});
    m_input = std::move(input.writeEnd);
    output.writeEnd.reset();
    readPort(output.readEnd);
}

void TsqlBox::readPort(const Descriptor& output) {
    const std::string ready = "listening on ";
    const std::string line = readLine(output.get(), kStartLimit);
    if (line.rfind(ready, 0) != 0 || line.back() != '\n') failToStart(line);
    m_port = std::stoi(line.substr(line.rfind(':') + 1));
}

void TsqlBox::failToStart(const std::string& reason) {
    kill();
    throw std::runtime_error("tsqlbox did not start: " + reason + errors());
}

int TsqlBox::stop() {
    if (m_pid <= 0) return -1;
    ::kill(m_pid, SIGTERM);
    int exitCode = -1;
    waitFor(m_pid, kStopLimit, exitCode);
    m_pid = -1;
    return exitCode;
}

void TsqlBox::kill() {
    if (m_pid <= 0) return;
    ::kill(m_pid, SIGKILL);
    int exitCode = -1;
    waitFor(m_pid, kStopLimit, exitCode);
    m_pid = -1;
}

std::string TsqlBox::odbcConnectionString(const std::string& database) const {
    return "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(m_port) + ";Database=" + database +
           ";UID=" + m_login + ";PWD={" + m_password + "};TDS_Version=7.4;ClientCharset=UTF-8";
}

}  // namespace support
