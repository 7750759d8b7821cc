// Headings of the program's usage, by what a user wants to do.
#pragma once

namespace CLI {
class App;
}

void groupCommands(CLI::App& app);
