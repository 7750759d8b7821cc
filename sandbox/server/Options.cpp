#include "Options.h"

#include <CLI/CLI.hpp>

namespace server {
namespace {

constexpr int kMaxLoginSeconds = 3600;
constexpr int kMaxConnections = 32'000;

void addOptions(CLI::App& app, Options& options) {
    app.add_option("--data", options.dataDirectory, "directory of the databases; created if missing")
        ->required();
    app.add_option("--port", options.port, "TCP port; 0: any free port")->capture_default_str();
    app.add_option("--login", options.login, "login name for clients")->required();
    app.add_option("--password-file", options.passwordFile,
                   "file with the password of the login in its first line")
        ->required();
    app.add_option("--listen", options.listenAddress, "IPv4 address to listen on")->capture_default_str();
    app.add_flag("--allow-remote", options.allowRemote,
                 "permit a --listen address that other hosts can reach; connections are not encrypted");
    app.add_option("--max-connections", options.maxConnections, "maximum number of connected clients")
        ->check(CLI::Range(1, kMaxConnections))
        ->capture_default_str();
    app.add_option("--login-timeout", options.loginSeconds, "time limit of a login, in seconds")
        ->check(CLI::Range(1, kMaxLoginSeconds))
        ->capture_default_str();
    app.add_flag("--stop-at-eof", options.stopAtEndOfInput,
                 "exit at the end of standard input, and so with the program that holds its other end");
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    CLI::App app{"tsqlbox: local SQL server for development and tests"};
    Options options;
    addOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    return options;
}

}  // namespace server
