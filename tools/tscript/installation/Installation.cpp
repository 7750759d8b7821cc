#include "installation/Installation.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "HostSettings.h"
#include "HostSetup.h"
#include "VTPI.h"
#include "console/Outcome.h"
#include "console/TextWidth.h"

namespace {

constexpr SuiteDatabase kDatabases[] = {
    {"Dorvas", "sINSTANCE", "pACCESS"},
    {"NQ2", "sNQ2INSTANCE", "pNQ2ACCESS"},
    {"WFEngine", "sWFINSTANCE", "pWFACCESS"},
    {"HistoryDB", "sINSTANCE", "pACCESS"},
    {"VTCloud", "sCLOUDINSTANCE", "pCLOUDACCESS"},
};

constexpr const char* kTNet = "TNet";

constexpr std::size_t kLongestName = 128;
constexpr std::size_t kValueCapacity = 8192;  // buffer size for a string value of the store

using FolderGetter = bool (DVUtilLib::*)(char*);

std::filesystem::path configuredFolder(FolderGetter getter, const char* key, const char* value) {
    requireStore();
    DVUtilLib util("tscript", /*flag=*/false);
    std::vector<char> folder(kValueCapacity);
    if (util.getInstanceName() && (util.*getter)(folder.data()) && folder.front() != '\0')
        return folder.data();
    throw Failure(ExitCode::kInstallation,
                  "the store " + hostlayer::inspectStore().path + " has no value " + value,
                  std::string("Set the folder as ") + value + " under [Instance001." + key + "].");
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

std::span<const SuiteDatabase> suiteDatabases() {
    return kDatabases;
}

const SuiteDatabase& suiteDatabase(std::string_view name) {
    std::string names;
    for (const SuiteDatabase& database : kDatabases) {
        if (name.size() < kLongestName && strcasecmp(std::string(name).c_str(), database.name) == 0)
            return database;
        names += std::string(names.empty() ? "" : ", ") + database.name;
    }
    throw Failure(ExitCode::kUsage,
                  "there is no database '" + std::string(name.substr(0, kLongestName)) + "'",
                  "The suite's databases are " + names + ".");
}

bool isDatabaseOfPackages(const std::string& name) {
    const auto hasName = [&](const SuiteDatabase& database) {
        return strcasecmp(name.c_str(), database.name) == 0;
    };
    return std::ranges::any_of(kDatabases, hasName) || strcasecmp(name.c_str(), kTNet) == 0;
}

std::string configuredServer(const std::string& database) {
    if (database == kTNet) return {};  // the store has no server of its own for it
    std::array<char, kValueCapacity> server{};
    std::string ignored;
    const char* value = suiteDatabase(database).instance;
    return GetRegistryItemValue("", "Database", value, nullptr, server.data(), ignored) ? server.data() : "";
}

void requireStore() {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    if (store.isInForce && store.problem.empty()) return;
    throw Failure(ExitCode::kInstallation, store.problem,
                  "Name the store with --store or ZEPHRA_REGISTRY; docs/configuration.md describes it, and "
                  "tscript sandbox up creates a sample.");
}

// Without the folder a run would fail before its script starts and leave a journal row and an SQL file
// behind.
void requireLogFolder() {
    const VTPI_Base base;
    const std::string folder = VTPI_EventManager(base).getLogFilesDirectory();
    if (access((folder + "/.").c_str(), W_OK | X_OK) == 0) return;
    throw Failure(ExitCode::kInstallation,
                  "the log folder " + folder + " cannot be used: " + std::strerror(errno),
                  "Create it and let this user write there, or set another: tscript config set "
                  "EventManager.dEVLOGDIR FOLDER");
}

bool canStrangersReplaceFilesIn(const std::string& folder) {
    struct stat status {};
    return stat(folder.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0 &&
           (status.st_mode & S_ISVTX) == 0;
}

bool canStrangersChange(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & S_IWOTH) != 0;
}

std::vector<FileOfRuns> filesOfRuns() {
    std::vector<FileOfRuns> files = {{"store", hostlayer::inspectStore().path}};
    if (const std::string tool = hostlayer::queryToolPath(); tool.find('/') != std::string::npos)
        files.push_back({"sqlcmd", tool});
    if (const std::string authorities = hostlayer::hostSetting("caFile", ""); !authorities.empty())
        files.push_back({"caFile", authorities});
    return files;
}

void requireSafeFiles(const std::string& script) {
    const std::filesystem::path store = hostlayer::inspectStore().path;
    std::vector<std::string> folders = {store.has_parent_path() ? store.parent_path().string() : "."};
    std::vector<FileOfRuns> files = filesOfRuns();
    const std::pair<const char*, const char*> values[] = {{"Base", "dZEPHRAHOME"},
                                                          {"Base", "dBASEHOME"},
                                                          {"Base", "dZEPHRATEMPDIR"},
                                                          {"Base", "sSCRIPTSTEMPDIR"},
                                                          {"EventManager", "dEVLOGDIR"}};
    for (const auto& [key, value] : values) {
        std::vector<char> folder(kValueCapacity);
        std::string ignored;
        if (!GetRegistryItemValue("", key, value, nullptr, folder.data(), ignored)) continue;
        folders.emplace_back(folder.data());
        if (std::string_view(value) != "dZEPHRAHOME") continue;
        folders.push_back(folders.back() + "/Scripts");
        files.push_back({"package", folders.back() + "/" + script + ".sql"});
    }
    for (const std::string& folder : folders)
        if (canStrangersReplaceFilesIn(folder))
            throw Failure(ExitCode::kInstallation, "every user can replace files in " + folder,
                          "Set its mode: chmod o-w " + folder);
    for (const FileOfRuns& file : files)
        if (canStrangersChange(file.path))
            throw Failure(ExitCode::kInstallation, "every user can change " + file.path,
                          "Set its mode: chmod o-w " + file.path);
}

void setDatabaseValue(const std::string& valueName, const std::string& text) {
    std::array<char, 1024> instance{};
    std::string problem;
    if (!GetInstanceName(instance.data()) ||
        !hostlayer::setStoreValue({instance.data(), "Database"}, valueName, text, problem))
        throw Failure(ExitCode::kInstallation, "the store cannot be changed: " + problem);
}

std::filesystem::path scriptsFolder() {
    return configuredFolder(&DVUtilLib::GetZephraInstallDir, "Base", "dZEPHRAHOME") / "Scripts";
}

std::string storeText(const char* key, const char* valueName) {
    std::vector<char> text(kValueCapacity);
    std::string ignored;
    return GetRegistryItemValue("", key, valueName, nullptr, text.data(), ignored) ? text.data() : "";
}

std::string folderOfRuns() {
    const std::string own = storeText("Base", "sSCRIPTSTEMPDIR");
    return own.empty() ? storeText("Base", "dZEPHRATEMPDIR") : own;
}

std::filesystem::path packageFile(const std::string& name) {
    return scriptsFolder() / (name + ".sql");
}

std::filesystem::path sessionLogFile() {
    return configuredFolder(&DVUtilLib::GetZephraLogDir, "EventManager", "dEVLOGDIR") / "Tscript.log";
}

void checkText(const std::string& what, const std::string& text, std::size_t maximum) {
    if (text.size() > maximum)
        throw Failure(ExitCode::kUsage, what + " is longer than " + std::to_string(maximum) + " bytes");
    if (!isUtf8(text)) throw Failure(ExitCode::kUsage, what + " holds bytes that are not UTF-8");
}

void checkScriptName(const std::string& name) {
    const bool allowed = !name.empty() && name.size() <= kLongestName && isUtf8(name) &&
                         name.find_first_of("/\\'\"") == std::string::npos &&
                         std::none_of(name.begin(), name.end(), isControl);
    if (!allowed)
        throw Failure(ExitCode::kUsage, "'" + name.substr(0, kLongestName) + "' cannot be a script's name",
                      "A name has 1 to 128 bytes of UTF-8, without slashes, quotes and control characters.");
}

void checkQueryText(const std::string& what, const std::string& text, std::size_t maximum) {
    checkText(what, text, maximum);
    if (text.find('"') != std::string::npos)
        throw Failure(ExitCode::kUsage, what + " must not hold a double quote",
                      "The query tool's command line cannot carry one. T-SQL strings use single quotes.");
}
