// The members of a TScript that its steps work on, grouped by concern. Everything is non-owning.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

class DBBase;
class DVUtilLib;

// Script, host, database and log. Database and host objects are null before initialize().
struct SessionParts {
    DBBase*& db;
    DVUtilLib*& util;
    std::string& scriptName;
    std::string& machineName;
    std::string& instanceName;
    std::string& dbName;  // empty until it is chosen
    std::string& logDir;
    std::string& logFile;
};

// Messages for the user.
struct MessageParts {
    std::string& last;
    std::string& output;
};

// The script's row in the catalogue.
struct EntryParts {
    std::int32_t& id;  // below 1: not found
    std::int32_t& auditLevel;
    bool& secured;
    bool& typeRead;  // false: it is not known whether the script is secured
    bool& fromPackage;
};

// A loaded package.
struct PackageParts {
    std::string& path;
    std::string& fileHash;  // SHA-256, for run records; empty if there are none
    std::int64_t& plexumId;
    std::time_t& creationTime;
    std::string& guid;
    std::string& developerName;
    std::string& description;
    std::string& usage;
    std::string& scriptBody;
    std::int32_t& contentType;  // option bits of the query tool
};

// The current run.
struct RunParts {
    std::int32_t& execId;  // the journal's row; below 1: none
    std::int32_t& userId;
    std::string& outputFile;
};

struct ScriptParts {
    SessionParts session;
    MessageParts messages;
    EntryParts entry;
    PackageParts package;
    RunParts run;
};
