// A sample installation whose commands run into limits and signals.
#pragma once

#include <fstream>
#include <functional>
#include <string>

#include "Installation.h"

std::string inQuotes(const std::string& word);  // of a shell

class Faults : public Installation {
  protected:
    // In the process of a shell that has run this command.
    support::ProgramResult runAfter(const std::string& command, const Words& words) const;
    // Starts a command, and sends it the signal once `waitUntilAtWork` has returned; its file is closed then.
    void expectInterrupted(Words command, int signal,
                           const std::function<std::ofstream()>& waitUntilAtWork) const;
    // In a process whose files cannot grow beyond 32 KiB: writing fails as it does on a full disk.
    support::ProgramResult runWithSmallFiles(const Words& words) const;
};
