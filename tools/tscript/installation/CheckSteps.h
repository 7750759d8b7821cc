// Steps of checkInstallation() and checkDatabases(), one source file each.
#pragma once

#include <string>

#include "installation/CheckList.h"

// Returns a string value of the store; empty if the store does not have it.
std::string storeText(const char* key, const char* valueName);

void checkFolders(CheckList& list);
