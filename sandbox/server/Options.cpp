#include "Options.h"

#include <CLI/CLI.hpp>

#include <map>

namespace server {
namespace {

constexpr int kMaxLoginSeconds = 3600;
constexpr int kMaxConnections = 32'000;

const std::map<std::string, tds::EncryptionMode> kEncryptionModes = {
    {"none", tds::EncryptionMode::None},
    {"login", tds::EncryptionMode::Login},
    {"on", tds::EncryptionMode::On},
    {"required", tds::EncryptionMode::Required},
};

const std::map<std::string, int> kTlsVersions = {
    {"1.1", TLS1_1_VERSION}, {"1.2", TLS1_2_VERSION}, {"1.3", TLS1_3_VERSION}};

void addTlsOptions(CLI::App& app, Options& options) {
    CLI::Option* const cert = app.add_option("--tls-cert", options.tlsFiles.certificate,
                                             "PEM file of the certificate and its intermediate certificates");
    CLI::Option* const key = app.add_option("--tls-key", options.tlsFiles.key, "PEM file of its key");
    cert->needs(key);
    key->needs(cert);
    app.add_option("--tls-self-signed", options.selfSignedNames,
                   "host names and addresses of a self-signed certificate; creates the two files above if "
                   "they do not hold such a certificate")
        ->delimiter(',')
        ->needs(cert);
    const auto setMode = [&options](const std::string& name) {
        options.encryption = kEncryptionModes.at(name);
    };
    app.add_option_function<std::string>(
           "--encryption", setMode,
           "none; login: only logins, unless the client asks for more; on: connections of clients "
           "that support it; required: all, other clients are refused")
        ->check(CLI::IsMember(kEncryptionModes))
        ->default_str("none; with --tls-cert: on");
    const auto setVersion = [&options](const std::string& name) {
        options.newestTls = kTlsVersions.at(name);
    };
    app.add_option_function<std::string>("--tls-max", setVersion,
                                         "newest TLS version; FreeTDS 1.3 cannot log in with 1.3")
        ->check(CLI::IsMember(kTlsVersions))
        ->default_str("1.2");
}

void completeTlsOptions(const CLI::App& app, Options& options) {
    const bool hasCertificate = !options.tlsFiles.certificate.empty();
    if (hasCertificate && app.get_option("--encryption")->empty())
        options.encryption = tds::EncryptionMode::On;
    if (!hasCertificate && options.encryption != tds::EncryptionMode::None)
        throw CLI::RequiresError("--encryption", "--tls-cert");
}

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
                 "permit a --listen address that other hosts can reach");
    addTlsOptions(app, options);
    app.add_option("--keytab", options.keytab,
                   "keytab of the server's service principals; Kerberos principals can then log in");
    app.add_option("--max-connections", options.maxConnections, "maximum number of connected clients")
        ->check(CLI::Range(1, kMaxConnections))
        ->capture_default_str();
    app.add_option("--session-memory", options.sessionMebibytes, "maximum memory of a session, in MiB")
        ->check(CLI::Range(16, 1 << 20))
        ->capture_default_str();
    app.add_option("--session-files", options.temporaryMebibytes,
                   "maximum size of a session's temporary files, in MiB")
        ->check(CLI::Range(1, 1 << 20))
        ->capture_default_str();
    app.add_option("--backup-folder", options.backupFolders,
                   "folder that BACKUP may write to, besides the data directory; may be repeated");
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
        completeTlsOptions(app, options);
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error));
    }
    return options;
}

}  // namespace server
