// Description of the command line's commands and options, for manual pages and completion.
#pragma once

#include <string>
#include <vector>

// An option, or an argument without hyphens.
struct OptionDescription {
    std::string argument;                // its name; empty: an option
    std::string names;                   // of an option, as written: "-a,--all"
    std::vector<std::string> longNames;  // without hyphens
    std::vector<std::string> shortNames;
    std::string valueName;  // in the help: "FILE", "TEXT:{running,ok,failed}"
    std::string help;
    int mostValues = 0;  // 0: a flag
    bool isRequired = false;
    bool isHelp = false;

    bool isArgument() const { return !argument.empty(); }
};

struct CommandDescription {
    std::string name;
    std::string help;
    std::string furtherWords;  // help for words that the command does not know; empty: it refuses them
    std::vector<OptionDescription> options;
    std::vector<CommandDescription> commands;
};
