#include "SampleInstallation.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "Program.h"
#include "VTPassword.h"

namespace support {

namespace {

constexpr char kStoreVariable[] = "ZEPHRA_REGISTRY";
constexpr std::size_t kCredentialsSize = 8192;

// A string as a TOML literal.
std::string tomlText(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

void writeKey(const std::filesystem::path& path) {
    writeFile(path, "sample key of thirty-two bytes..");
    std::filesystem::permissions(path,
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace

SampleInstallation::SampleInstallation(std::string instance)
    : m_instance(std::move(instance)), m_queryTool(SQLCMD_PROGRAM) {
    for (const char* name : {"log", "tmp", "home", "home/Scripts", "bin"})
        std::filesystem::create_directory(folder(name));
    writeKey(folder("cipher.key"));
    m_values["Base"] = {{"nPLATTYPE", "1"},
                        {"sVERSION", tomlText("8.0.0(BUILD1)")},
                        {"dZEPHRAHOME", tomlText(homeFolder().string())},
                        {"dBASEHOME", tomlText(baseFolder().string())},
                        {"dZEPHRATEMPDIR", tomlText(tempFolder().string())}};
    m_values["EventManager"] = {{"dEVLOGDIR", tomlText(logFolder().string())}};
    m_values["Dorvase"] = {{"sDVHOSTNAME", tomlText("MainHost")}};
    for (const char* number : {"803", "808", "809", "810"})
        m_values[std::string("InstalledPackages\\") + number] = {{"sInstallState", tomlText("Installed")}};
    write();
    setenv(kStoreVariable, storeFile().c_str(), 1);
}

SampleInstallation::~SampleInstallation() {
    unsetenv(kStoreVariable);
}

void SampleInstallation::set(const std::string& key, const std::string& valueName, const std::string& text) {
    m_values[key][valueName] = tomlText(text);
    write();
}

void SampleInstallation::set(const std::string& key, const std::string& valueName, const char* text) {
    set(key, valueName, std::string(text));
}

void SampleInstallation::setNumber(const std::string& key, const std::string& valueName, long long number) {
    m_values[key][valueName] = std::to_string(number);
    write();
}

void SampleInstallation::setHost(const std::string& setting, const std::string& text) {
    m_hostLines += setting + " = " + tomlText(text) + "\n";
    write();
}

void SampleInstallation::useQueryTool(const std::string& path) {
    m_queryTool = path;
    write();
}

void SampleInstallation::remove(const std::string& key, const std::string& valueName) {
    m_values[key].erase(valueName);
    write();
}

void SampleInstallation::useServer(const std::string& server, const std::string& login,
                                   const std::string& password) {
    const std::string length = std::to_string(login.size());
    const std::string credentials = encipheredCredentials(
        std::string(2 - std::min<std::size_t>(length.size(), 2), '0') + length + login + password);
    for (const char* name : {"sINSTANCE", "sNQ2INSTANCE", "sCLOUDINSTANCE", "sWFINSTANCE"})
        m_values["Database"][name] = tomlText(server);
    for (const char* name : {"pACCESS", "pNQ2ACCESS", "pCLOUDACCESS", "pWFACCESS"})
        m_values["Database"][name] = tomlText(credentials);
    for (const char* kind :
         {"Connection", "NQ2CONNECTION", "CLOUDCONNECTION", "WFCONNECTION", "HISTORYCONNECTION"})
        m_values["Database"][std::string("s") + kind] = tomlText(std::string("DSN_") + kind);
    write();
}

void SampleInstallation::useServer(const TsqlBox& box) {
    useServer(box.server(), box.login(), box.password());
}

void SampleInstallation::loadSchema(const TsqlBox& box) {
    const std::vector<std::string> command = {SQLCMD_PROGRAM, "-b",        "-S", box.server(),
                                              "-U",           box.login(), "-i", "load.sql"};
    ProgramOptions options;
    options.workingDirectory = SAMPLE_SCHEMA_FOLDER;
    options.environment = {"SQLCMDPASSWORD=" + box.password()};
    const ProgramResult result = runProgram(command, options);
    if (result.exitCode != 0)
        throw std::runtime_error("the sample schema cannot be loaded: " + result.output + result.errors);
}

std::string SampleInstallation::encipheredCredentials(const std::string& text) {
    std::array<char, kCredentialsSize> enciphered{};
    unsigned long size = enciphered.size();
    VTPassword cipher;
    if (cipher.encryptPwd(text.c_str(), enciphered.data(), &size) == 0)
        throw std::runtime_error("credentials cannot be enciphered: error " +
                                 std::to_string(cipher.getLastError()));
    return enciphered.data();
}

std::vector<std::string> logTexts(const std::filesystem::path& logFile) {
    static const std::regex timed("[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} - ");
    std::vector<std::string> texts;
    std::istringstream lines(readFile(logFile));
    for (std::string line; std::getline(lines, line);) {
        std::smatch time;
        const bool found = std::regex_search(line, time, timed, std::regex_constants::match_continuous);
        texts.push_back(found ? time.suffix().str() : "untimed: " + line);
    }
    return texts;
}

// Replaces the file, so that the reader notices two changes within one tick of the clock.
void SampleInstallation::write() const {
    std::string text =
        "[host]\ncipherKeyFile = " + tomlText(folder("cipher.key").string()) +
        "\nodbcDriver = \"FreeTDS\"\nodbcAttributes = \"TDS_Version=7.4;ClientCharset=UTF-8\"\n" +
        m_hostLines + "[host.programs]\nsqlcmd = " + tomlText(m_queryTool) + "\n";
    for (const auto& [key, values] : m_values) {
        text += "['" + m_instance + "'.'" + key + "']\n";
        for (const auto& [name, value] : values) text += tomlText(name) + " = " + value + "\n";
    }
    writeFile(folder("registry.new"), text);
    std::filesystem::rename(folder("registry.new"), storeFile());
}

}  // namespace support
