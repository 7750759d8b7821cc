#include "console/Confirmation.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "console/Console.h"
#include "console/Outcome.h"
#include "console/Terminal.h"

namespace {

bool noInput = false;  // set by the command line parser before any command runs

}  // namespace

void addNoInputOption(CLI::App& app) {
    addFlag(&app, "--no-input", noInput, "Never ask: fail where a question would be asked");
}

bool canAsk() {
    return !noInput && isTerminal(STDIN_FILENO);
}

void addYesOption(CLI::App* command, bool& yes) {
    addFlag(command, "--yes", yes, "Do not ask for confirmation");
}

void confirm(bool yes, const std::string& question) {
    if (yes) return;
    if (!canAsk())
        throw Failure(ExitCode::kUsage, question + " Confirmation is needed.", "Give --yes to go ahead.");
    writePrompt(question + " Type yes to go ahead: ");
    std::string answer;
    if (!std::getline(std::cin, answer)) std::fputc('\n', stderr);
    if (answer != "yes") throw Failure(ExitCode::kInterrupted, "nothing was changed");
}
