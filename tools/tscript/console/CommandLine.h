// Commands and options of the command line. CommandLine.cpp alone includes the parser's header, which takes
// many seconds to compile.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console/CommandTree.h"

namespace CLI {
class App;
}

class CommandLine {
  public:
    CommandLine(const char* description, const char* program, const char* version, const char* footer);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    CLI::App& app() { return *m_app; }
    // Parses the arguments and calls the chosen command's function. Returns false if it has printed the help
    // or the version instead. Throws Failure (kUsage).
    bool parse(int argc, char** argv);

  private:
    std::unique_ptr<CLI::App> m_app;
};

// Adds a command; `chosen` is called while the command line is parsed, unless one of its subcommands follows.
CLI::App* addCommand(CLI::App* family, const char* name, const char* description,
                     const std::function<void()>& chosen);
// Adds a command that has only subcommands.
CLI::App* addFamily(CLI::App& app, const char* name, const char* description);
std::string usageOf(const CLI::App& app);
// Lists the command under the heading in the help.
void setHeading(CLI::App& app, const char* command, const char* heading);
// Returns the commands and options that have been added so far.
CommandDescription describe(const CLI::App& app);
// Makes a command accept words that it does not know. Its usage ends with `help`, one line about them.
void acceptFurtherWords(CLI::App* command, const char* help);
// Words of the parsed command line that its command does not know.
std::vector<std::string> furtherWords(const CLI::App& app);
// Returns the command's long option that is most similar to the word, with its hyphens; empty if none is.
std::string nearestOption(const CLI::App& app, const char* command, const std::string& word);
bool hasCommand(const CLI::App& app, const std::string& name);

struct OptionRules {
    const char* type = nullptr;  // name of its value in the help
    bool required = false;
    bool mayBeEmpty = false;              // otherwise the empty string, as of an unset variable, is refused
    std::vector<std::string> oneOf = {};  // the permitted values
};

template <typename Number>
struct NumberRules {
    const char* type = nullptr;
    Number least;
    Number most;
    bool defaultInHelp = true;
    bool required = false;
};

// A name without hyphens is a positional argument.
void addOption(CLI::App* command, const char* name, std::string& value, const char* help,
               const OptionRules& rules = {});
void addOption(CLI::App* command, const char* name, std::vector<std::string>& values, const char* help,
               const OptionRules& rules = {});
void addNumber(CLI::App* command, const char* name, int& value, const char* help, NumberRules<int> rules);
void addNumber(CLI::App* command, const char* name, double& value, const char* help,
               NumberRules<double> rules);
void addNumber(CLI::App* command, const char* name, std::uint64_t& value, const char* help,
               NumberRules<std::uint64_t> rules);
// Adds an option that may be repeated. Its values are taken literally: they are not split into lists, and
// they may be empty or start with a minus.
void addRepeatable(CLI::App* command, const char* name, std::vector<std::string>& values, const char* help,
                   const char* type);
// Adds an argument for the words after "--", which trailingWords() returns.
void addTrailingWords(CLI::App* command, const char* name, const char* help);
// The words after the first "--" of the command line as they were typed; the parser would split "[a,b]".
const std::vector<std::string>& trailingWords();
// Adds an option that calls a function with its value, also for the commands below.
void addOptionFunction(CLI::App& app, const char* name, const std::function<void(const std::string&)>& set,
                       const char* help, const char* type);
// `excluded` names a flag of the same command that cannot be given together with this one.
void addFlag(CLI::App* command, const char* name, bool& value, const char* help,
             const char* excluded = nullptr);
// A flag that may have a value, `--name=VALUE`. Without one it has the first of the permitted values.
void addChoiceFlag(CLI::App* command, const char* name, std::string& value, const char* help,
                   const std::vector<std::string>& oneOf);
