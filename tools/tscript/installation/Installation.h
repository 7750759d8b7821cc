// The suite's installation on this host: store, folders, databases.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// A suite database and the names of its values under the key "Database".
struct SuiteDatabase {
    const char* name;
    const char* instance;
    const char* credentials;
};

std::span<const SuiteDatabase> suiteDatabases();

// Looks a database up by its name, ignoring case. Throws Failure (kUsage) that lists the names.
const SuiteDatabase& suiteDatabase(std::string_view name);

// Whether a package may name the database, in any case: a suite database, or TNet, which the library knows.
bool isDatabaseOfPackages(const std::string& name);

// Server of a suite database; empty if the store has none.
std::string configuredServer(const std::string& database);

// Throws Failure (kInstallation) if the configuration store is missing, cannot be read or does not parse.
void requireStore();

// Throws Failure (kInstallation) if this user cannot create files in the log folder.
void requireLogFolder();

// Throws Failure (kInstallation) if every user can replace files in a folder of the installation, or change a
// file that a run of the script uses.
void requireSafeFiles(const std::string& script);
// Returns whether every user can replace what is in the folder. The sticky bit, as on /tmp, prevents it.
bool canStrangersReplaceFilesIn(const std::string& folder);
// Returns whether every user can change the file.
bool canStrangersChange(const std::string& file);

// A file besides packages and key that decides what a run does.
struct FileOfRuns {
    const char* name;
    std::string path;
};
// The store, the query tool and the trusted authorities, where the store names them by a path.
std::vector<FileOfRuns> filesOfRuns();

// Sets a string value under the key "Database". Throws Failure (kInstallation).
void setDatabaseValue(const std::string& valueName, const std::string& text);

// Returns a string value of the store; empty if the store does not have it.
std::string storeText(const char* key, const char* valueName);
// Folder of the SQL files that runs write; empty if the store does not name it.
std::string folderOfRuns();

// All throw Failure (kInstallation) if the store does not name the folder.
std::filesystem::path scriptsFolder();
std::filesystem::path packageFile(const std::string& name);  // of a script; may not exist
std::filesystem::path sessionLogFile();                      // "Tscript.log" in the log folder

// Throws Failure (kUsage) if the text is longer than `maximum` bytes or not UTF-8.
void checkText(const std::string& what, const std::string& text, std::size_t maximum);
// Throws Failure (kUsage) if the name is empty, longer than 128 bytes or not UTF-8, or holds a slash, a quote
// or a control character.
void checkScriptName(const std::string& name);
// Like checkText(). Also refuses double quotes, which the query tool's command line cannot carry.
void checkQueryText(const std::string& what, const std::string& text, std::size_t maximum);
