// Steps of checkInstallation() and checkDatabases(), one source file each.
#pragma once

#include <string>

#include "DVUtilities/DBBase.h"
#include "doctor/CheckList.h"
#include "installation/Installation.h"

// Checks the store's file and folder.
void checkStore(CheckList& list);
// Checks values that programs replace by a default, or ignore, without a message.
void checkStoreValues(CheckList& list);
// Checks the values of the store that say which components are installed.
void checkComponents(CheckList& list);
// Checks the folders, the room on their disks and the number of files that this process may open.
void checkFolders(CheckList& list);
// Runs a statement through the query tool as a package run does: from a file in the folder of script runs,
// with the output in the log folder. `db` is connected to the database.
void checkToolRun(CheckList& list, DBBase& db, const SuiteDatabase& database);
// Adds whether the login and the connection are encrypted, by which protocol, whether the server is verified,
// and until when its certificate is valid. An unencrypted login to another host is a failure.
void checkEncryption(CheckList& list, const SuiteDatabase& database);
// Executes statements on every table, column, function and procedure that runs need. The statements change
// no row.
void checkSchema(CheckList& list, DBBase& db, const SuiteDatabase& database);
