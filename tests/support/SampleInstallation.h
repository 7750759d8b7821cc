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

// As built, it is a management server ("nPLATTYPE" = 1) with every companion database installed, the folders
// log, tmp, home and bin, and no database server. The process's store is this installation's as long as the
// object lives. Changes are seen by the next read.
class SampleInstallation {
  public:
    explicit SampleInstallation(std::string instance = "Instance001");
    ~SampleInstallation();
    SampleInstallation(const SampleInstallation&) = delete;
    SampleInstallation& operator=(const SampleInstallation&) = delete;

    // Keys as the library names them ("Database", "InstalledPackages\\803").
    void set(const std::string& key, const std::string& valueName, const std::string& text);
    void set(const std::string& key, const std::string& valueName, const char* text);
    template <std::integral Number>
    void set(const std::string& key, const std::string& valueName, Number number) {
        setNumber(key, valueName, static_cast<long long>(number));
    }
    void remove(const std::string& key, const std::string& valueName);

    // Points every database's instance, credentials and connection value at that server and login.
    void useServer(const std::string& server, const std::string& login, const std::string& password);
    void useServer(const TsqlBox& box);
    // The server's sample databases: management database with catalogue and data, and companion. Throws
    // std::runtime_error with what the tool said.
    static void loadSchema(const TsqlBox& box);
    // The text as the store keeps credentials ("pACCESS"): two digits, user name, password.
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
    std::map<std::string, std::map<std::string, std::string>> m_values;  // key, value name, TOML text
};

// The texts of a log file's lines, without their times; a line without one begins with "untimed: ".
std::vector<std::string> logTexts(const std::filesystem::path& logFile);

}  // namespace support
