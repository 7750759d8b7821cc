#include "FreeTdsConfiguration.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>

namespace freetds {
namespace {

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
        if (const auto known = m_sections.find(server); known != m_sections.end()) return known->second;
        const std::string name = "server" + std::to_string(m_sections.size() + 1);
        const std::string caFile = caPath(server.caFile);
        const std::string text = sectionText(name, server, caFile);
        if (caFile.empty() || !open() ||
            ::write(m_file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            return "";
        return m_sections[server] = name;
    }

    std::optional<EncryptedServer> serverOf(std::string_view section) {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_sections.begin(), m_sections.end(),
                                        [&](const auto& known) { return known.second == section; });
        return found == m_sections.end() ? std::nullopt : std::optional(found->first);
    }

  private:
    // The descriptor stays open, since the driver opens the file for each connection. A child process has
    // another descriptor table and finds no file there.
    bool open() {
        if (m_file >= 0) return true;
        const int file = ::memfd_create("freetds.conf", MFD_CLOEXEC);
        if (file < 0) return false;
        const std::string path = "/proc/self/fd/" + std::to_string(file);
        const bool isNamed = ::setenv("FREETDSCONF", path.c_str(), /*replace=*/1) == 0;
        if (isNamed)
            m_file = file;
        else
            ::close(file);
        return isNamed;
    }

    std::mutex m_mutex;
    int m_file = -1;
    std::map<EncryptedServer, std::string> m_sections;
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
