#include "Confirmation.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "Outcome.h"

void addConsent(CLI::App* command, Consent& consent) {
    command->add_flag("--yes", consent.yes, "Do not ask");
    command->add_flag("--no-input", consent.noInput, "Fail where something would be asked");
}

void confirm(const Consent& consent, const std::string& question) {
    if (consent.yes) return;
    if (consent.noInput || isatty(STDIN_FILENO) == 0)
        throw Failure(ExitCode::kUsage, question + " Nobody can be asked.", "Give --yes to go ahead.");
    std::fprintf(stderr, "%s Type yes to go ahead: ", question.c_str());
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "yes") throw Failure(ExitCode::kInterrupted, "nothing was changed");
}
