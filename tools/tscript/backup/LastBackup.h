// The command `db last-backup`: ages of backups, also as a check of a monitoring system.
#pragma once

#include <string>

#include "console/Outcome.h"

struct LastBackupOptions {
    const std::string* account;  // suite database with the server and the login to use
    std::string name = {};       // empty: all user databases
    std::string olderThan = {};
    std::string warnAfter = {};
    bool json = false;
    bool nagios = false;
    bool prometheus = false;
};

// Throws Failure; with `nagios` the caller then reports it by reportUnknownBackups().
ExitCode showLastBackup(const LastBackupOptions& options);

// Writes the line of a Nagios check that could not be made, and returns its exit code (3, unknown).
int reportUnknownBackups(const std::string& reason);
