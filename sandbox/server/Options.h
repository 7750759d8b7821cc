// The command line of tsqlbox.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace server {

struct Options {
    std::filesystem::path dataDirectory;
    std::filesystem::path passwordFile;
    std::string login;
    std::string listenAddress = "127.0.0.1";
    std::uint16_t port = 1433;  // 0: any that is free
    bool allowRemote = false;   // needed for an address other than a loopback one
    bool stopAtEndOfInput = false;
    int mostConnections = 512;
    int loginSeconds = 15;  // that a client has to log in
};

// Ends the process for --help and for a command line that is wrong, saying what is.
Options parseOptions(int argc, char** argv);

// The file up to its first line end. Throws std::runtime_error when it is missing or that is empty.
std::string readPassword(const std::filesystem::path& file);

}  // namespace server
