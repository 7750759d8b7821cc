#include "sandbox/SandboxFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include "console/Outcome.h"
#include "console/Secret.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kComplete = "complete\n";
constexpr std::size_t kPasswordLength = 32;
constexpr std::size_t kLongestPath = 512;

[[noreturn]] void throwFailure(const fs::path& path, const std::string& reason) {
    throw Failure(ExitCode::kInstallation, path.string() + ": " + reason);
}

// Writes into the existing file, which keeps its mode and its lock.
void writeInPlace(const fs::path& path, std::string_view text) {
    std::ofstream out(path, std::ios::trunc);
    out << text << std::flush;
    if (!out) throwFailure(path, std::strerror(errno));
}

// Replaces the file with a new one of mode 0600.
void writePrivateFile(const fs::path& path, std::string_view text) {
    unlink(path.c_str());
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) throwFailure(path, std::strerror(errno));
    close(fd);
    writeInPlace(path, text);
}

void createPrivateFolder(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) throwFailure(path, std::strerror(errno));
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) throwFailure(path, std::strerror(errno));
    if (status.st_uid != geteuid())
        throwFailure(path, "it belongs to another user, who could put links into it");
    if (chmod(path.c_str(), 0700) != 0) throwFailure(path, std::strerror(errno));
}

// 32 random characters of 64: 192 bits.
Secret randomPassword() {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::array<unsigned char, kPasswordLength> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw Failure(ExitCode::kInstallation,
                      std::string("cannot get random bytes: ") + std::strerror(errno));
    Secret password(kPasswordLength + 1);
    for (const unsigned char byte : bytes) password.text() += kLetters[byte % kLetters.size()];
    explicit_bzero(bytes.data(), bytes.size());
    return password;
}

// Template of writeStore(), which replaces the names in angle brackets.
constexpr std::string_view kStore = R"toml(# The configuration store of a sample installation.
[host]
cipherKeyFile  = "<folder>/cipher.key"
odbcDriver     = "FreeTDS"
odbcAttributes = "TDS_Version=7.4;ClientCharset=UTF-8"
loginTimeout   = 15
encrypt        = "verify"
caFile         = "<folder>/tls-cert.pem"
strictQueryTool = 1
runRecords     = "<folder>/records"

[host.programs]
sqlcmd = "<sqlcmd>"

[Instance001.Base]
nPLATTYPE      = 1
sVERSION       = "8.0.0(SAMPLE)"
dBASEHOME      = "<folder>"
dZEPHRAHOME    = "<folder>"
dZEPHRATEMPDIR = "<folder>/temp"

[Instance001.EventManager]
dEVLOGDIR = "<folder>/logs"

[Instance001.Dorvase]
sDVHOSTNAME = "sample"

[Instance001.'InstalledPackages\803']
sInstallState = "Installed"

[Instance001.Database]
nSQLAuthType     = 0
dUTILKEEPSQLFILE = 0
sINSTANCE        = "127.0.0.1,<port>"
sConnection      = "Dorvas"
sNQ2INSTANCE     = "127.0.0.1,<port>"
sNQ2CONNECTION   = "NQ2"
)toml";

void replaceAll(std::string& text, std::string_view placeholder, const std::string& value) {
    for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos; at += value.size())
        text.replace(at, placeholder.size(), value);
}

}  // namespace

SandboxFolder::SandboxFolder(const fs::path& folder) : m_path(fs::absolute(folder).lexically_normal()) {
    if (!m_path.has_filename()) m_path = m_path.parent_path();
    const std::string path = m_path.string();
    const auto isForbidden = [](char c) {
        return c == '"' || c == '\\' || c == '%' || c == '<' || static_cast<unsigned char>(c) < 0x20;
    };
    if (path.size() > kLongestPath || std::any_of(path.begin(), path.end(), isForbidden))
        throw Failure(
            ExitCode::kUsage, "'" + path.substr(0, kLongestPath) + "' cannot hold a sample installation",
            "Use a folder of at most 512 bytes, without double quotes, backslashes, percent signs, '<' and "
            "control characters.");
}

bool SandboxFolder::isSandbox() const {
    std::error_code ignored;
    return fs::is_regular_file(mark(), ignored);
}

bool SandboxFolder::isComplete() const {
    std::ifstream in(mark());
    std::string text;
    return std::getline(in, text) && text + "\n" == kComplete;
}

void SandboxFolder::markComplete() const {
    writeInPlace(mark(), kComplete);
}

void SandboxFolder::markIncomplete() const {
    writeInPlace(mark(), "incomplete\n");
}

void SandboxFolder::create() const {
    for (const char* old :
         {"data", "Scripts", "temp", "logs", "records", "cipher.key", "tls-cert.pem", "tls-key.pem"}) {
        std::error_code error;
        fs::remove_all(m_path / old, error);
        if (error) throwFailure(m_path / old, "cannot be deleted: " + error.message());
    }
    for (const char* part : {"data", "Scripts", "temp", "logs", "backups"})
        createPrivateFolder(m_path / part);
    Secret password = randomPassword();
    password.text() += '\n';
    writePrivateFile(passwordFile(), password.text());
}

void SandboxFolder::writeStore(int port) const {
    std::string text(kStore);
    replaceAll(text, "<port>", std::to_string(port));
    replaceAll(text, "<sqlcmd>", sandboxSqlcmd().string());
    replaceAll(text, "<folder>", m_path.string());
    writePrivateFile(store(), text);
}

SandboxLock::SandboxLock(const SandboxFolder& folder) : m_fd(-1) {
    std::error_code ignored;
    const fs::path& path = folder.path();
    const auto isForeign = [&] {
        return !folder.isSandbox() && fs::exists(path, ignored) && !fs::is_empty(path, ignored);
    };
    if (isForeign() && isForeign())  // another process may be creating it
        throw Failure(ExitCode::kInstallation, path.string() + " is not empty and not a sample installation",
                      "Name another folder with --dir.");
    createPrivateFolder(path);
    m_fd = open(folder.mark().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_fd < 0) throwFailure(folder.mark(), std::strerror(errno));
    while (flock(m_fd, LOCK_EX) != 0) {
        const int error = errno;
        if (error == EINTR) continue;
        close(m_fd);
        throwFailure(folder.mark(), std::string("cannot be locked: ") + std::strerror(error));
    }
}

SandboxLock::~SandboxLock() {
    close(m_fd);
}

fs::path programFolder() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

fs::path sandboxSqlcmd() {
    const fs::path installed = (programFolder() / TSCRIPT_SQLCMD).lexically_normal();
    std::error_code ignored;
    return fs::exists(installed, ignored) ? installed : programFolder() / "sqlcmd";
}

fs::path sampleFolder() {
    const fs::path folder = programFolder() / TSCRIPT_SAMPLE_FOLDER;
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) throwFailure(folder, "the sample's files are missing");
    return folder.lexically_normal();
}
