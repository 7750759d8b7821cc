// An installation of the suite in a temporary folder: its configuration store, cipher key, credentials and
// folders, and, on a running server, the sample databases.
#pragma once

#include <concepts>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "TempDir.h"
#include "TsqlBox.h"

namespace support {

// A new installation is a management server ("nPLATTYPE" = 1) with every companion database, the folders log,
// tmp, home and bin, and no database server. It is the process's configuration store while the object lives.
// The next read sees every change.
class SampleInstallation {
  public:
    explicit SampleInstallation(std::string instance = "Instance001");
    ~SampleInstallation();
    SampleInstallation(const SampleInstallation&) = delete;
    SampleInstallation& operator=(const SampleInstallation&) = delete;

    // Keys are named as in the library ("Database", "InstalledPackages\\803").
    void set(const std::string& key, const std::string& valueName, const std::string& text);
    void set(const std::string& key, const std::string& valueName, const char* text);
    template <std::integral Number>
    void set(const std::string& key, const std::string& valueName, Number number) {
        setNumber(key, valueName, static_cast<long long>(number));
    }
    void setHost(const std::string& setting, const std::string& text);  // in [host]
    void useQueryTool(const std::string& path);                         // in place of sqlcmd
    void remove(const std::string& key, const std::string& valueName);

    // Points every database's instance, credentials and connection value at that server and login.
    void useServer(const std::string& server, const std::string& login, const std::string& password);
    void useServer(const TsqlBox& box);
    // The server's sample databases: management database with catalogue and data, and companion. Throws
    // std::runtime_error with the tool's output.
    static void loadSchema(const TsqlBox& box);
    // Credentials as the store keeps them ("pACCESS"). The text is the length of the name in two digits,
    // name, password.
    static std::string encipheredCredentials(const std::string& text);

    std::filesystem::path folder(std::string_view name) const { return m_folder / name; }
    std::filesystem::path logFolder() const { return folder("log"); }
    std::filesystem::path tempFolder() const { return folder("tmp"); }
    std::filesystem::path homeFolder() const {
        return folder("home");
    }  // "dZEPHRAHOME"; packages: home/Scripts
    std::filesystem::path baseFolder() const { return folder("bin"); }  // "dBASEHOME"
    std::filesystem::path storeFile() const { return folder("registry.toml"); }

  private:
    void setNumber(const std::string& key, const std::string& valueName, long long number);
    void write() const;

    TempDir m_folder;
    std::string m_instance;
    std::string m_hostLines;
    std::string m_queryTool;
    std::map<std::string, std::map<std::string, std::string>> m_values;  // key, value name, TOML text
};

// Lines of a log file without their times; "untimed: " precedes a line that has none.
std::vector<std::string> logTexts(const std::filesystem::path& logFile);

}  // namespace support
