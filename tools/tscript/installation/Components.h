// Components of the suite that own a database.
#pragma once

#include <string>
#include <vector>

#include "installation/Installation.h"

class CheckList;

// Returns whether the component that owns the database is installed on this host.
bool isInstalled(const SuiteDatabase& database);

// Databases of the installed components, in the order of the components.
std::vector<const SuiteDatabase*> installedDatabases();

// Checks the values of the store that say which components are installed.
void checkComponents(CheckList& list);
