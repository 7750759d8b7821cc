// The installation that the tool works on: its store, folders and databases.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// A database of the suite, and the value names under which the key "Database" keeps its settings.
struct SuiteDatabase {
    const char* name;
    const char* instance;
    const char* credentials;
};

// By name, in any case. Throws Failure (usage) that lists the names.
const SuiteDatabase& suiteDatabase(std::string_view name);

// Throws Failure (installation) when the configuration store is missing, cannot be read or does not parse.
void requireStore();

// Throws Failure (installation) when scripts could not write their logs and outputs.
void requireLogFolder();

// Sets a text under the key "Database". Throws Failure (installation).
void setDatabaseValue(const std::string& valueName, const std::string& text);

std::filesystem::path scriptsFolder();                       // throws Failure when the store names no home
std::filesystem::path packageFile(const std::string& name);  // of a script, whether it is there or not
std::filesystem::path sessionLogFile();                      // "Tscript.log" in the log folder

// Throws Failure (usage) for a text that is longer than `maximum` bytes or not UTF-8.
void checkText(const std::string& what, const std::string& text, std::size_t maximum);
// Throws Failure (usage) for a name that cannot be a script's: empty, longer than 128 bytes, not UTF-8, with
// a slash, a quote or a control character.
void checkScriptName(const std::string& name);
// Throws Failure (usage) for a text that the query tool's command line cannot carry: one with a double quote,
// a NUL or, where it is longer than `maximum` bytes, the rest of it.
void checkQueryText(const std::string& what, const std::string& text, std::size_t maximum);
