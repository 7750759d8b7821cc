#include "commands/Completion.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
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
    std::vector<const CommandDescription*> levels;  // the program, a family, a command
    std::vector<std::string> values;                // of the last level's arguments
    const OptionDescription* option = nullptr;      // whose value the last word is
    std::map<std::string, std::string> given;       // values of options so far, by the first long name

    const CommandDescription& level() const { return *levels.back(); }
};

bool isNamed(const OptionDescription& option, const std::string& word) {
    const auto isOneOf = [](const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return word.compare(0, 2, "--") == 0 ? isOneOf(option.longNames, word.substr(2))
                                         : isOneOf(option.shortNames, word.substr(1));
}

// Options of a command are accepted after its subcommands as well.
const OptionDescription* findOption(const Position& position, const std::string& word) {
    for (auto level = position.levels.rbegin(); level != position.levels.rend(); ++level)
        for (const OptionDescription& option : (*level)->options)
            if (isNamed(option, word)) return &option;
    return nullptr;
}

const CommandDescription* findCommand(const CommandDescription& level, const std::string& word) {
    const auto hasName = [&](const CommandDescription& command) { return command.name == word; };
    const auto found = std::find_if(level.commands.begin(), level.commands.end(), hasName);
    return found != level.commands.end() ? &*found : nullptr;
}

Position positionOf(const CommandDescription& program, const std::vector<std::string>& words) {
    const Position start{.levels = {&program}, .values = {}, .given = {}};
    Position position = start;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const std::string& word = words[i];
        const bool isOption = word.size() > 1 && word.front() == '-';
        if (word == "--" && position.level().name == "each") {
            position = start;  // another command follows
        } else if (const OptionDescription* option = isOption ? findOption(position, word) : nullptr;
                   option != nullptr && option->mostValues > 0) {
            if (i + 2 == words.size())
                position.option = option;
            else if (!option->longNames.empty())
                position.given[option->longNames.front()] = words[i + 1];
            ++i;
        } else if (const CommandDescription* next =
                       isOption ? nullptr : findCommand(position.level(), word)) {
            position.levels.push_back(next);
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
    std::fflush(resultStream());  // a server that does not answer ends the process
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
    if (position.level().name != "run" || position.values.empty()) return {};
    try {
        return readParameters(packageFile(position.values.front()).string()).parameters;
    } catch (const Failure&) {
        return {};
    }
}

void writeDatabases(const Position&) {
    for (const SuiteDatabase& database : suiteDatabases()) writeCandidate(database.name);
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
        if (label == source.label && (source.command == nullptr || position.level().name == source.command))
            return source.write(position);
}

// ---- Commands, options and arguments ----------------------------------------------------------------------

void writeOptions(const Position& position) {
    for (auto level = position.levels.rbegin(); level != position.levels.rend(); ++level) {
        for (const OptionDescription& option : (*level)->options) {
            for (const std::string& name : option.longNames) writeCandidate("--" + name, option.help);
            for (const std::string& name : option.shortNames) writeCandidate("-" + name, option.help);
        }
    }
}

void writeCommands(const Position& position) {
    for (const CommandDescription& command : position.level().commands)
        writeCandidate(command.name, command.help);
}

void writeArgument(const Position& position) {
    std::size_t index = 0;
    for (const OptionDescription& option : position.level().options) {
        if (!option.isArgument()) continue;
        if (index++ == position.values.size() || option.mostValues > 1)
            return writeValues(position, option.argument);
    }
}

void write(const CommandDescription& program, const std::vector<std::string>& words) {
    const Position position = positionOf(program, words);
    const auto store = position.given.find("store");
    if (store != position.given.end()) setenv("ZEPHRA_REGISTRY", store->second.c_str(), 1);
    if (position.option != nullptr) return writeValues(position, position.option->valueName);
    const std::vector<Parameter> parameters = declaredParameters(position);
    if (words.size() > 1 && words[words.size() - 2].compare(0, 2, "--") == 0)
        if (const Parameter* parameter = findParameter(parameters, words[words.size() - 2].substr(2))) {
            for (const std::string& value : valuesOf(*parameter))
                writeCandidate(value, parameter->description);
            return;
        }
    for (const Parameter& parameter : parameters)
        writeCandidate("--" + parameter.name, parameter.description);
    if (!words.back().empty() && words.back().front() == '-') return writeOptions(position);
    writeCommands(position);
    writeArgument(position);
}

}  // namespace

void writeCandidates(const CommandDescription& program, const std::vector<std::string>& words) {
    alarm(kMostSeconds);
    try {
        if (!words.empty()) write(program, words);
    } catch (const std::exception&) {
        return;  // a shell has no use for the reason
    }
}
