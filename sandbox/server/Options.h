// Command line of tsqlbox.
#pragma once

#include <optional>

#include "Certificate.h"
#include "Login.h"

namespace server {

struct Options {
    std::filesystem::path dataDirectory;
    std::filesystem::path passwordFile;
    std::string login;
    std::string listenAddress = "127.0.0.1";
    std::uint16_t port = 1433;  // 0: any free port
    bool allowRemote = false;   // permits a listenAddress outside 127.0.0.0/8
    bool stopAtEndOfInput = false;
    std::optional<tds::Encryption> encryption;  // parseOptions() chooses one if none is given
    CertificateFiles tlsFiles;
    int newestTls = TLS1_2_VERSION;
    std::vector<std::string> selfSignedNames;          // empty: the files exist
    std::filesystem::path keytab;                      // empty: Windows authentication is refused
    std::vector<std::filesystem::path> backupFolders;  // besides the data directory
    int maxConnections = 512;
    std::size_t sessionMebibytes = 1024;
    std::size_t temporaryMebibytes = 4096;  // files of a session
    int loginSeconds = 15;                  // time limit of a login
};

// Parses the command line. For --help and for a wrong command line, prints the usage or the error and exits.
Options parseOptions(int argc, char** argv);

}  // namespace server
