// The management database's catalogue of scripts and journal of their runs, and the checks that keep a
// package at the site it was made for.
#pragma once

#include <string>
#include <vector>

#include "ScriptReport.h"

class SqlBuffer;
class TScript;

// What each operation leaves in the script's members and returns is told at TScript's operations.
class ScriptCatalogue {
  public:
    explicit ScriptCatalogue(TScript& script) : m_script(script), m_report(script) {}

    bool find();
    bool checkSite();
    bool checkGuid();
    bool addPackage();
    bool recordStart(const char* inputParams);
    bool recordEnd(int status);

    // Appends the row texts of a query on an open connection.
    bool read(const char* sql, int columns, std::vector<std::string>& rows);

  private:
    void readSecured();
    bool insertPackage(const char* usage, SqlBuffer& statement);
    bool updateUsage(const char* usage, SqlBuffer& statement);

    TScript& m_script;
    ScriptReport m_report;
};
