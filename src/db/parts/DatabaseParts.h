// The members of a DBBase that its steps work on, grouped by concern. Everything is non-owning.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "parts/DatabaseReport.h"

class VTSimpleDBConnObject;

// How to reach the server, and the login.
struct ServerAccount {
    char (&dataSource)[128];  // for the debug log and messages only
    std::string& serverInstance;
    std::string& userName;
    std::string& password;
    std::string& dbName;
    bool& windowsAuthentication;
};

// The suite's databases; indexes into DatabaseParts::kindFlags.
enum class DatabaseKind : std::size_t { kDorvas, kNQ2, kVTCloud, kWFEngine, kHistoryDB };
inline constexpr std::size_t kDatabaseKinds = 5;

struct DatabaseParts {
    char (&machineName)[128];
    std::string& logFile;
    ServerAccount account;
    const int& productType;  // kZephra, or another
    std::array<bool*, kDatabaseKinds> kindFlags;
    const std::string& probeQuery;
    VTSimpleDBConnObject*& connection;  // null while closed
    std::string& toolPath;
    DatabaseReport report;
    char separator;  // of a row text's columns
};
