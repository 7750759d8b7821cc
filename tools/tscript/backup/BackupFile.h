// Backup files on the server's host: their checks.
#pragma once

#include <string>

#include "DVUtilities/DBBase.h"

// Backs a database up with checksums, then has the server read the new backup and verify them. The backup is
// appended to a file that holds others. Returns a line that says so. Throws Failure.
std::string backUpVerified(DBBase& db, const std::string& database, const std::string& file);

struct RestoreTest {
    std::string file;
    std::string name;    // of the database that is created and dropped
    std::string folder;  // for its data files; empty: that of the original ones
};

// Restores the newest backup of a file under a new name, checks the database with DBCC CHECKDB and drops it.
// Returns lines that say what was checked. Throws Failure, also if a database of that name exists.
std::string testRestore(DBBase& db, const RestoreTest& test);
