// Components of the suite that own a database.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "installation/Installation.h"

struct Component {
    const char* database;
    bool (*isInstalled)(const char* instance, std::string& errorText);
    const char* packageKey;  // key of the store with its install state; null: installed by the platform type
};

std::span<const Component> components();

// Returns whether the component that owns the database is installed on this host.
bool isInstalled(const SuiteDatabase& database);

// Databases of the installed components, in the order of the components.
std::vector<const SuiteDatabase*> installedDatabases();
