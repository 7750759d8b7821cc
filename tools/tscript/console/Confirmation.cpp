#include "console/Confirmation.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "console/Outcome.h"
#include "console/Terminal.h"

namespace {

bool noInput = false;  // as the command line has it; read once, before any command works

}  // namespace

void addNoInput(CLI::App& app) {
    app.add_flag("--no-input", noInput, "Ask nothing: fail where something would be asked");
}

bool canAsk() {
    return !noInput && isTerminal(STDIN_FILENO);
}

void addConsent(CLI::App* command, bool& yes) {
    command->add_flag("--yes", yes, "Do not ask");
}

void confirm(bool yes, const std::string& question) {
    if (yes) return;
    if (!canAsk())
        throw Failure(ExitCode::kUsage, question + " Nobody can be asked.", "Give --yes to go ahead.");
    std::fprintf(stderr, "%s Type yes to go ahead: ", question.c_str());
    std::string answer;
    if (!std::getline(std::cin, answer)) std::fputc('\n', stderr);
    if (answer != "yes") throw Failure(ExitCode::kInterrupted, "nothing was changed");
}
