#include "FreeTdsConfiguration.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <utility>

namespace freetds {
namespace {

constexpr const char* kVariable = "FREETDSCONF";
constexpr std::size_t kLongestValue = 200;  // FreeTDS reads lines of 255 bytes

bool hasControlCharacters(const std::string& value) {
    return std::any_of(value.begin(), value.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

bool hasComment(const std::string& value) {
    return value.find_first_of("#;") != std::string::npos;
}

// Returns a path that a line can hold; "" if the file of another path cannot be opened. The descriptor stays
// open like the configuration's.
std::string caPath(const std::string& file) {
    if (file.empty()) return "system";
    if (file.size() <= kLongestValue && !hasComment(file)) return file;
    const int descriptor = ::open(file.c_str(), O_PATH | O_CLOEXEC);
    return descriptor < 0 ? "" : "/proc/self/fd/" + std::to_string(descriptor);
}

std::string sectionText(const std::string& name, const EncryptedServer& server, const std::string& caFile) {
    std::string text = "[" + name + "]\nhost = " + server.host + "\n";
    text += server.port.empty() ? "instance = " + server.instance : "port = " + server.port;
    text += server.encryption == Encryption::Off ? "\nencryption = off\n" : "\nencryption = require\n";
    if (server.encryption != Encryption::Verify) return text;
    return text + "check certificate hostname = yes\nca file = " + caFile + "\n";
}

class Configuration {
  public:
    std::string section(const EncryptedServer& server) {
        const std::lock_guard lock(m_mutex);
        if (!isInUse()) return "";
        if (const auto known = m_sections.find(server); known != m_sections.end()) return known->second.name;
        const std::string name = "server" + std::to_string(m_sections.size() + 1);
        const std::string caFile = caPath(server.caFile);
        const Section section{name, sectionText(name, server, caFile)};
        if (caFile.empty() || !append(section.text)) return "";
        m_sections.emplace(server, section);
        return name;
    }

    std::optional<EncryptedServer> serverOf(std::string_view section) {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_sections.begin(), m_sections.end(),
                                        [&](const auto& known) { return known.second.name == section; });
        return found == m_sections.end() ? std::nullopt : std::optional(found->first);
    }

  private:
    struct Section {
        std::string name;
        std::string text;
    };

    // True if FreeTDS will read this file. DB-Library takes the name of a section that it does not find for
    // that of a host, and connects to it; the ODBC driver reports an unknown host. The host program may have
    // changed its environment since, or have no /proc.
    bool isInUse() {
        if (!open()) return false;
        const std::string path = "/proc/self/fd/" + std::to_string(m_file);
        const char* const named = std::getenv(kVariable);
        const bool isNamed =
            (named != nullptr && path == named) || ::setenv(kVariable, path.c_str(), /*replace=*/1) == 0;
        return isNamed && ::access(path.c_str(), R_OK) == 0;
    }
    // The descriptor stays open, since the driver opens the file for each connection. A program that this one
    // starts has another descriptor table and finds no file there. A forked child begins a file of its own
    // with the sections that it knows: in one file, parent and child would give one name to two servers.
    bool open() {
        if (isOpen() && m_process == ::getpid()) return true;
        if (isOpen()) ::close(m_file);
        m_file = ::memfd_create("freetds.conf", MFD_CLOEXEC);
        if (m_file < 0) return false;
        m_process = ::getpid();
        const bool isComplete = ::fstat(m_file, &m_status) == 0 &&
                                std::all_of(m_sections.begin(), m_sections.end(),
                                            [this](const auto& known) { return append(known.second.text); });
        if (!isComplete) ::close(std::exchange(m_file, -1));
        return isComplete;
    }
    // False if the host program has closed the descriptor, which may be another file by now.
    bool isOpen() const {
        struct stat status {};
        return m_file >= 0 && ::fstat(m_file, &status) == 0 && status.st_dev == m_status.st_dev &&
               status.st_ino == m_status.st_ino;
    }
    bool append(const std::string& text) const {
        return ::write(m_file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

    std::mutex m_mutex;
    int m_file = -1;
    struct stat m_status {};  // of the file
    pid_t m_process = 0;      // that made it
    std::map<EncryptedServer, Section> m_sections;
};

// Never destroyed: connections may be opened while the program ends.
Configuration& processConfiguration() {
    static Configuration& configuration = *new Configuration;
    return configuration;
}

}  // namespace

std::string encryptedSection(const EncryptedServer& server) {
    for (const std::string* value : {&server.host, &server.instance, &server.port, &server.caFile})
        if (hasControlCharacters(*value)) return "";
    if (hasComment(server.host + server.instance + server.port)) return "";
    if (server.host.size() + server.instance.size() > kLongestValue) return "";
    return processConfiguration().section(server);
}

std::optional<EncryptedServer> serverOfSection(std::string_view section) {
    return processConfiguration().serverOf(section);
}

}  // namespace freetds
