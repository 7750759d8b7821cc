#include "commands/CommandGroups.h"

#include <vector>

#include "console/CommandLine.h"

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

}  // namespace

void groupCommands(CLI::App& app) {
    for (const Group& group : kGroups)
        for (const char* command : group.commands) setHeading(app, command, group.heading);
}
