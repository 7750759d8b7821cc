// Asking before something is lost.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

struct Consent {
    bool yes = false;      // given on the command line
    bool noInput = false;  // nobody is there to be asked
};

// The options --yes and --no-input.
void addConsent(CLI::App* command, Consent& consent);

// Asks on the terminal. Throws Failure: usage when nobody can be asked, interrupted for anything but "yes".
void confirm(const Consent& consent, const std::string& question);
