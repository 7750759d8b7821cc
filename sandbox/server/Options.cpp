#include "Options.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace server {
namespace {

constexpr int kMostLoginSeconds = 3600;
constexpr std::size_t kMostPasswordBytes = 512;

void addOptions(CLI::App& app, Options& options) {
    app.add_option("--data", options.dataDirectory, "directory of the databases; made when missing")
        ->required();
    app.add_option("--port", options.port, "TCP port; 0 picks a free one")->capture_default_str();
    app.add_option("--login", options.login, "name that clients log in with")->required();
    app.add_option("--password-file", options.passwordFile, "file whose first line is that login's password")
        ->required();
    app.add_option("--listen", options.listenAddress, "IPv4 address to listen on")->capture_default_str();
    app.add_flag("--allow-remote", options.allowRemote,
                 "let --listen name an address that other hosts reach; what is sent is not encrypted");
    app.add_option("--max-connections", options.mostConnections, "clients served at a time")
        ->check(CLI::Range(1, 32000))
        ->capture_default_str();
    app.add_option("--login-timeout", options.loginSeconds, "seconds that a client has to log in")
        ->check(CLI::Range(1, kMostLoginSeconds))
        ->capture_default_str();
    app.add_flag("--stop-at-eof", options.stopAtEndOfInput,
                 "end when standard input ends, so as not to outlive the program that started this one");
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    CLI::App app{"tsqlbox: a local SQL server for trying, developing and testing"};
    Options options;
    addOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    return options;
}

std::string readPassword(const std::filesystem::path& file) {
    const std::string name = "the password file " + file.string();
    std::ifstream in(file, std::ios::binary);
    std::string line(kMostPasswordBytes + 1, '\0');
    in.read(line.data(), static_cast<std::streamsize>(line.size()));
    if (in.gcount() == 0 && (!in.is_open() || in.bad()))
        throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
    line.resize(static_cast<std::size_t>(in.gcount()));
    line.resize(std::min(line.find_first_of("\r\n"), line.size()));
    if (line.empty()) throw std::runtime_error(name + " has an empty first line");
    if (line.size() > kMostPasswordBytes)
        throw std::runtime_error("the first line of " + name + " is too long");
    return line;
}

}  // namespace server
