// A running tsqlbox with a data directory of its own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "TempDir.h"

namespace support {

class TsqlBox {
  public:
    // Starts the server and waits until it listens. Throws std::runtime_error with the server's output.
    explicit TsqlBox(std::vector<std::string> extraArguments = {});
    ~TsqlBox();  // stops it
    TsqlBox(const TsqlBox&) = delete;
    TsqlBox& operator=(const TsqlBox&) = delete;

    int stop();    // SIGTERM; waits and returns the exit code (-1 when it is not running)
    void kill();   // SIGKILL; waits
    void start();  // again, on the same data and the same port

    int port() const { return m_port; }
    std::string server() const { return "127.0.0.1," + std::to_string(m_port); }  // host,port
    const std::string& login() const { return m_login; }
    const std::string& password() const { return m_password; }
    std::filesystem::path dataDirectory() const { return m_folder / "data"; }
    std::filesystem::path passwordFile() const { return m_folder / "password"; }
    pid_t pid() const { return m_pid; }
    std::string errors() const { return contentOf(m_errors); }  // the server's standard error since start()

    // For SQLDriverConnect through Debian's FreeTDS driver.
    std::string odbcConnectionString(const std::string& database = "master") const;

  private:
    void readPort(const Descriptor& output);
    [[noreturn]] void failToStart(const std::string& reason);

    TempDir m_folder;
    std::vector<std::string> m_extraArguments;
    std::string m_login = "sa";
    std::string m_password = "Blue; Harbor 7";
    int m_port = 0;
    pid_t m_pid = -1;
    Descriptor m_input;  // the server stops when it is closed, also by a crash of this process
    Descriptor m_errors;
};

// Certificates of an authority, ca.pem, in a folder: good, other-host, expired, early; and unknown, which is
// self-signed. Each has a .pem and a .key file.
class Certificates {
  public:
    Certificates();  // throws std::runtime_error
    std::string file(const std::string& name) const { return m_folder / name; }
    // Arguments of a tsqlbox that uses the certificate.
    std::vector<std::string> options(const std::string& name, std::vector<std::string> more = {}) const;

  private:
    TempDir m_folder;
};

// The built program, for tests of its command line.
std::string tsqlboxProgram();

}  // namespace support
