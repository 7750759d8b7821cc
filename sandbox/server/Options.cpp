#include "Options.h"

#include <argp.h>

#include <charconv>
#include <iterator>
#include <map>
#include <sstream>
#include <type_traits>

#include "types/Text.h"

namespace server {
namespace {

constexpr int kWrongCommandLine = 2;  // exit code
constexpr int kFirstKey = 256;        // keys of long options for argp(3), above all characters
constexpr int kMaxMebibytes = 1 << 20;

using UsageError = std::invalid_argument;

const std::map<std::string, tds::EncryptionMode> kEncryptionModes = {
    {"login", tds::EncryptionMode::Login},
    {"none", tds::EncryptionMode::None},
    {"on", tds::EncryptionMode::On},
    {"required", tds::EncryptionMode::Required}};

const std::map<std::string, int> kTlsVersions = {
    {"1.1", TLS1_1_VERSION}, {"1.2", TLS1_2_VERSION}, {"1.3", TLS1_3_VERSION}};

// Returns the value of a name. Throws UsageError with the known names for another one.
template <typename Value>
Value valueNamed(const std::string& name, const std::map<std::string, Value>& values) {
    const auto found = values.find(name);
    if (found != values.end()) return found->second;
    throw UsageError("'" + name + "' is none of " +
                     tsql::commaList(values, [](auto& each) { return each.first; }));
}

// An option of the command line.
struct Entry {
    const char* name;
    const char* value;  // its name in the usage; null: a flag
    const char* help;
    void (*set)(Options& options, const char* value);
};

template <auto Member>
void setText(Options& options, const char* value) {
    options.*Member = value;
}

template <auto Member, int least, int most>
void setNumber(Options& options, const char* value) {
    int number = -1;
    const char* const end = value + std::strlen(value);
    const auto [rest, error] = std::from_chars(value, end, number);
    if (error != std::errc() || rest != end || number < least || number > most)
        throw UsageError("'" + std::string(value) + "' is no number from " + std::to_string(least) + " to " +
                         std::to_string(most));
    options.*Member = static_cast<std::remove_reference_t<decltype(options.*Member)>>(number);
}

constexpr Entry kEntries[] = {
    {"data", "DIR", "directory of the databases; created if missing (required)",
     setText<&Options::dataDirectory>},
    {"port", "N", "TCP port (1433); 0: any free port", setNumber<&Options::port, 0, 65535>},
    {"login", "NAME", "login name for clients (required)", setText<&Options::login>},
    {"password-file", "FILE", "file with the password of the login in its first line (required)",
     setText<&Options::passwordFile>},
    {"listen", "ADDRESS", "IPv4 address to listen on (127.0.0.1)", setText<&Options::listenAddress>},
    {"allow-remote", nullptr, "permit a --listen address that other hosts can reach",
     [](Options& options, const char*) { options.allowRemote = true; }},
    {"tls-cert", "FILE", "PEM file of the certificate and its intermediate certificates",
     [](Options& options, const char* value) { options.tlsFiles.certificate = value; }},
    {"tls-key", "FILE", "PEM file of its key",
     [](Options& options, const char* value) { options.tlsFiles.key = value; }},
    {"tls-self-signed", "NAME,...", "create the two files above for these host names and addresses",
     [](Options& options, const char* value) {
         std::istringstream names(value);
         for (std::string name; std::getline(names, name, ',');) options.selfSignedNames.push_back(name);
     }},
    {"encryption", "MODE", "none, login, on or required (with --tls-cert: on; else none)",
     [](Options& options, const char* value) { options.encryption = valueNamed(value, kEncryptionModes); }},
    {"tls-max", "VERSION", "newest TLS version: 1.1, 1.2 or 1.3 (1.2)",
     [](Options& options, const char* value) { options.newestTls = valueNamed(value, kTlsVersions); }},
    {"keytab", "FILE", "keytab of the server's service principals, for Kerberos logins",
     setText<&Options::keytab>},
    {"max-connections", "N", "maximum number of connected clients (512)",
     setNumber<&Options::maxConnections, 1, 32'000>},
    {"session-memory", "MIB", "maximum memory of a session (1024)",
     setNumber<&Options::sessionMebibytes, 16, kMaxMebibytes>},
    {"session-files", "MIB", "maximum size of a session's temporary files (4096)",
     setNumber<&Options::temporaryMebibytes, 1, kMaxMebibytes>},
    {"backup-folder", "DIR", "folder that BACKUP may write to, besides --data; may be repeated",
     [](Options& options, const char* value) { options.backupFolders.emplace_back(value); }},
    {"login-timeout", "SECONDS", "time limit of a login (15)", setNumber<&Options::loginSeconds, 1, 3600>},
    {"stop-at-eof", nullptr, "exit at the end of standard input",
     [](Options& options, const char*) { options.stopAtEndOfInput = true; }},
};

void require(bool isTrue, const char* text) {
    if (!isTrue) throw UsageError(text);
}

void checkAndComplete(Options& options) {
    const bool hasCertificate = !options.tlsFiles.certificate.empty();
    require(!options.dataDirectory.empty(), "--data is required");
    require(!options.login.empty(), "--login is required");
    require(!options.passwordFile.empty(), "--password-file is required");
    require(hasCertificate != options.tlsFiles.key.empty(), "--tls-cert and --tls-key require each other");
    require(hasCertificate || options.selfSignedNames.empty(), "--tls-self-signed requires --tls-cert");
    if (!options.encryption)
        options.encryption = hasCertificate ? tds::EncryptionMode::On : tds::EncryptionMode::None;
    require(hasCertificate || options.encryption == tds::EncryptionMode::None,
            "--encryption requires --tls-cert");
}

// Handles an option or the end of the command line. argp(3) itself reports unknown options and missing
// values.
error_t handle(int key, char* value, argp_state* state) {
    auto& options = *static_cast<Options*>(state->input);
    const bool isOption = key >= kFirstKey && key < kFirstKey + std::ssize(kEntries);
    const Entry* const entry = isOption ? &kEntries[key - kFirstKey] : nullptr;
    try {
        if (isOption) entry->set(options, value);
        if (key == ARGP_KEY_END) checkAndComplete(options);
    } catch (const UsageError& error) {
        const std::string option = isOption ? "--" + std::string(entry->name) + ": " : "";
        argp_error(state, "%s%s", option.c_str(), error.what());  // exits
    }
    return isOption || key == ARGP_KEY_END ? 0 : ARGP_ERR_UNKNOWN;
}

}  // namespace

Options parseOptions(int argc, char** argv) {
    std::vector<argp_option> entries;
    int key = kFirstKey;
    for (const Entry& entry : kEntries) entries.push_back({entry.name, key++, entry.value, 0, entry.help, 0});
    entries.push_back({});  // the end
    const argp parser{
        entries.data(), handle, nullptr, "Local SQL server for development and tests.", {}, {}, {}};
    argp_err_exit_status = kWrongCommandLine;
    Options options;
    ::argp_parse(&parser, argc, argv, 0, nullptr, &options);
    return options;
}

}  // namespace server
