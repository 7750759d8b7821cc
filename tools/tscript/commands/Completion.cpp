#include "commands/Completion.h"

#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <map>

#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "console/Console.h"
#include "console/Outcome.h"
#include "installation/Installation.h"
#include "installation/StoreValues.h"
#include "package/PackageNames.h"
#include "package/Parameters.h"
#include "run/ToolTable.h"

namespace {

constexpr unsigned int kMostSeconds = 3;  // a server that does not answer must not block the shell

// What the words before the last one say.
struct Position {
    const CLI::App* level;
    std::vector<std::string> values;           // of the level's positional arguments
    const CLI::Option* option = nullptr;       // whose value the last word is
    std::map<std::string, std::string> given;  // values of options so far, by the first long name
};

const CLI::Option* findOption(const CLI::App* level, const std::string& word) {
    for (; level != nullptr; level = level->get_parent())
        if (const CLI::Option* option = level->get_option_no_throw(word)) return option;
    return nullptr;
}

const CLI::App* findCommand(const CLI::App& level, const std::string& word) {
    const auto isNamed = [&](const CLI::App* command) { return command->check_name(word); };
    const std::vector<const CLI::App*> found = level.get_subcommands(isNamed);
    return found.empty() ? nullptr : found.front();
}

Position positionOf(const CLI::App& app, const std::vector<std::string>& words) {
    Position position{.level = &app, .values = {}, .given = {}};
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const std::string& word = words[i];
        const bool isOption = word.size() > 1 && word.front() == '-';
        if (word == "--" && position.level->get_name() == "each") {
            position = {.level = &app, .values = {}, .given = {}};  // another command follows
        } else if (const CLI::Option* option = isOption ? findOption(position.level, word) : nullptr;
                   option != nullptr && option->get_items_expected_max() > 0) {
            if (i + 2 == words.size())
                position.option = option;
            else if (!option->get_lnames().empty())
                position.given[option->get_lnames().front()] = words[i + 1];
            ++i;
        } else if (const CLI::App* next = isOption ? nullptr : findCommand(*position.level, word)) {
            position.level = next;
        } else if (!isOption) {
            position.values.push_back(word);
        }
    }
    return position;
}

void writeCandidate(const std::string& word, const std::string& description = {}) {
    if (word.find_first_of("\t\n") == word.npos) writeResult(word + "\t" + description);
}

// ---- Values --------------------------------------------------------------------------------------------

void writePackages(const Position&) {
    for (const std::string& name : packageNames()) writeCandidate(name, "package");
}

std::string databaseOf(const Position& position) {
    const auto given = position.given.find("db");
    return given == position.given.end() ? std::string() : given->second;
}

void writeProcedures(const Position& position) {
    constexpr int kMostScripts = 1000;
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    if (!records.open(databaseOf(position).c_str()) || !records.listScripts("", 0, kMostScripts, entries))
        return;
    for (const TScriptEntry_t& entry : entries)
        if ((entry.type & kTScriptPermanent) != 0) writeCandidate(entry.name, "stored procedure");
}

void writeScripts(const Position& position) {
    writePackages(position);
    writeProcedures(position);
}

void writeParameters(const Position& position) {
    constexpr int kParameters = 4;
    std::string logFile;
    std::string output;
    int auditLevel = 0;
    if (position.values.empty() ||
        !TS_ExecTscript_SP(position.values.front().c_str(), databaseOf(position).c_str(), "", "", kParameters,
                           &logFile, &output, &auditLevel))
        return;
    const Json parameters = parseToolTable(output);
    for (const Json& parameter : parameters.elements())
        writeCandidate(parameter.memberText("name") + "=", parameter.memberText("type"));
}

// Declared by the package that a run names.
std::vector<Parameter> declaredParameters(const Position& position) {
    if (position.level->get_name() != "run" || position.values.empty()) return {};
    try {
        return readParameters(packageFile(position.values.front()).string()).parameters;
    } catch (const Failure&) {
        return {};
    }
}

void writeDatabases(const Position&) {
    for (const char* name : {"Dorvas", "NQ2", "WFEngine", "VTCloud", "HistoryDB"}) writeCandidate(name);
}

void writeValueNames(const Position&) {
    for (const StoreEntry& entry : storeEntries()) writeCandidate(entry.fullName());
}

void writeKeys(const Position&) {
    std::string last;
    for (const StoreEntry& entry : storeEntries())
        if (entry.table.back() != last) writeCandidate(last = entry.table.back());
}

void writeFiles(const Position&) {
    writeCandidate(":files");
}

void writePackagesAndFiles(const Position& position) {
    writeFiles(position);
    writePackages(position);
}

void writeFolders(const Position&) {
    writeCandidate(":folders");
}

struct ValueSource {
    const char* label;    // the value's name in the usage of the command
    const char* command;  // null: every one
    void (*write)(const Position& position);
};

// In order: the first entry that matches applies. Values of other names have no candidates.
constexpr ValueSource kSources[] = {
    {"NAME", "get", writeValueNames},      {"NAME", "set", writeValueNames},
    {"NAME", "exec", writeProcedures},     {"NAME", "params", writeScripts},
    {"NAME", "help", writeScripts},        {"NAME", "which", writeScripts},
    {"NAME", nullptr, writePackages},      {"ARGS", nullptr, writeParameters},
    {"DB", nullptr, writeDatabases},       {"KEY", nullptr, writeKeys},
    {"A", nullptr, writePackagesAndFiles}, {"B", nullptr, writePackagesAndFiles},
    {"FILE", nullptr, writeFiles},         {"PLAIN", nullptr, writeFiles},
    {"PATH", nullptr, writeFiles},         {"DIR", nullptr, writeFolders},
    {"GLOB", nullptr, writeFiles},
};

// The usage lists the words of an option that takes few of them: "TEXT:{running,ok,failed}".
void writeMembers(const std::string& label) {
    std::size_t begin = label.find(":{");
    if (begin == label.npos) return;
    for (begin += 2; begin < label.size();) {
        const std::size_t end = std::min(label.find_first_of(",}", begin), label.size());
        writeCandidate(label.substr(begin, end - begin));
        begin = end + 1;
    }
}

void writeValues(const Position& position, const std::string& label) {
    writeMembers(label);
    for (const ValueSource& source : kSources)
        if (label == source.label &&
            (source.command == nullptr || position.level->get_name() == source.command))
            return source.write(position);
}

// ---- Commands, options and arguments ----------------------------------------------------------------------

void writeOptions(const CLI::App* level) {
    for (; level != nullptr; level = level->get_parent()) {
        for (const CLI::Option* option : level->get_options()) {
            for (const std::string& name : option->get_lnames())
                writeCandidate("--" + name, option->get_description());
            for (const std::string& name : option->get_snames())
                writeCandidate("-" + name, option->get_description());
        }
    }
}

void writeCommands(const CLI::App& level) {
    for (const CLI::App* command : level.get_subcommands([](const CLI::App*) { return true; }))
        writeCandidate(command->get_name(), command->get_description());
}

void writeArgument(const Position& position) {
    std::size_t index = 0;
    for (const CLI::Option* option : position.level->get_options()) {
        if (!option->get_positional()) continue;
        const bool takesMany = option->get_items_expected_max() > 1;
        if (index++ == position.values.size() || takesMany)
            return writeValues(position, option->get_name(/*positional=*/true));
    }
}

void write(const CLI::App& app, const std::vector<std::string>& words) {
    const Position position = positionOf(app, words);
    const auto store = position.given.find("store");
    if (store != position.given.end()) setenv("ZEPHRA_REGISTRY", store->second.c_str(), 1);
    if (position.option != nullptr) return writeValues(position, position.option->get_type_name());
    const std::vector<Parameter> parameters = declaredParameters(position);
    if (words.size() > 1 && words[words.size() - 2].compare(0, 2, "--") == 0)
        if (const Parameter* parameter = findParameter(parameters, words[words.size() - 2].substr(2))) {
            for (const std::string& value : valuesOf(*parameter))
                writeCandidate(value, parameter->description);
            return;
        }
    for (const Parameter& parameter : parameters)
        writeCandidate("--" + parameter.name, parameter.description);
    if (!words.back().empty() && words.back().front() == '-') return writeOptions(position.level);
    writeCommands(*position.level);
    writeArgument(position);
}

}  // namespace

void writeCandidates(const CLI::App& app, const std::vector<std::string>& words) {
    alarm(kMostSeconds);
    try {
        if (!words.empty()) write(app, words);
    } catch (const std::exception&) {
        return;  // a shell has no use for the reason
    }
}
