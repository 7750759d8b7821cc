#include "commands/CommandGroups.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

namespace {

struct Group {
    const char* heading;
    std::vector<const char*> commands;
};

const Group kGroups[] = {
    {"Run scripts", {"run", "exec", "which", "help", "params"}},
    {"See what ran", {"list", "catalogue", "journal", "report", "metrics"}},
    {"Write packages", {"new", "lint", "test", "pack", "inspect", "diff", "repack"}},
    {"Set up and repair", {"doctor", "tidy", "config", "key", "rotate", "credentials", "schema", "db"}},
    {"Many installations", {"each"}},
    {"Try it out", {"sandbox"}},
};

const char* headingOf(const CLI::App& command) {
    for (const Group& group : kGroups)
        if (std::find(group.commands.begin(), group.commands.end(), command.get_name()) !=
            group.commands.end())
            return group.heading;
    return "Other";
}

}  // namespace

void groupCommands(CLI::App& app) {
    for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        command->group(headingOf(*command));
}
