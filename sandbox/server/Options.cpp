#include "Options.h"

#include <CLI/CLI.hpp>

namespace server {
namespace {

constexpr int kWrongCommandLine = 2;  // exit code

using enum tds::Encryption;
const std::map<std::string, tds::Encryption> kEncryptionModes = {
    {"login", Login}, {"none", None}, {"on", On}, {"required", Required}};
const std::map<std::string, int> kTlsVersions = {
    {"1.1", TLS1_1_VERSION}, {"1.2", TLS1_2_VERSION}, {"1.3", TLS1_3_VERSION}};

void addOptions(CLI::App& app, Options& options) {
    const auto add = [&](const char* name, auto& value, const char* type, const char* help) {
        return app.add_option(name, value, help)->option_text(type)->allow_extra_args(false)->take_last();
    };
    add("--data", options.dataDirectory, "DIR", "directory of the databases; created if missing (required)")
        ->required();
    add("--port", options.port, "N", "TCP port (1433); 0: any free port")->check(CLI::Range(0, 65535));
    add("--login", options.login, "NAME", "login name for clients (required)")->required();
    add("--password-file", options.passwordFile, "FILE",
        "file with the password of the login in its first line (required)")
        ->required();
    add("--listen", options.listenAddress, "ADDRESS", "IPv4 address to listen on (127.0.0.1)");
    app.add_flag("--allow-remote", options.allowRemote,
                 "permit a --listen address that other hosts can reach");
    auto* const certificate = add("--tls-cert", options.tlsFiles.certificate, "FILE",
                                  "PEM file of the certificate and its intermediate certificates");
    auto* const key = add("--tls-key", options.tlsFiles.key, "FILE", "PEM file of its key");
    certificate->needs(key);
    key->needs(certificate);
    add("--tls-self-signed", options.selfSignedNames, "NAME,...",
        "create the two files above for these host names and addresses")
        ->delimiter(',')
        ->take_all()
        ->needs(certificate);
    add("--encryption", options.encryption, "MODE",
        "none, login, on or required (with --tls-cert: on; else none)")
        ->transform(CLI::CheckedTransformer(kEncryptionModes));
    add("--tls-max", options.newestTls, "VERSION", "newest TLS version: 1.1, 1.2 or 1.3 (1.2)")
        ->transform(CLI::CheckedTransformer(kTlsVersions));
    add("--keytab", options.keytab, "FILE", "keytab of the server's service principals, for Kerberos logins");
    add("--max-connections", options.maxConnections, "N", "maximum number of connected clients (512)")
        ->check(CLI::Range(1, 32'000));
    add("--session-memory", options.sessionMebibytes, "MIB", "maximum memory of a session (1024)")
        ->check(CLI::Range(16, 1 << 20));
    add("--session-files", options.temporaryMebibytes, "MIB",
        "maximum size of a session's temporary files (4096)")
        ->check(CLI::Range(1, 1 << 20));
    add("--backup-folder", options.backupFolders, "DIR",
        "folder that BACKUP may write to, besides --data; may be repeated")
        ->take_all();
    add("--login-timeout", options.loginSeconds, "SECONDS", "time limit of a login (15)")
        ->check(CLI::Range(1, 3600));
    app.add_flag("--stop-at-eof", options.stopAtEndOfInput, "exit at the end of standard input");
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    CLI::App app("Local SQL server for development and tests.");
    Options options;
    addOptions(app, options);
    try {
        app.parse(argc, argv);
        const bool hasCertificate = !options.tlsFiles.certificate.empty();
        if (!options.encryption) options.encryption = hasCertificate ? On : None;
        if (!hasCertificate && options.encryption != None)
            throw CLI::RequiresError("--encryption", "--tls-cert");
    } catch (const CLI::ParseError& error) {
        std::exit(app.exit(error) == 0 ? 0 : kWrongCommandLine);
    }
    return options;
}

}  // namespace server
