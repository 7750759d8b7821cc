// Start of a script run: host, log, database.
#pragma once

#include "ScriptReport.h"

class TScript;

// What each operation does is told at TScript's operations.
class ScriptSession {
  public:
    explicit ScriptSession(TScript& script) : m_script(script), m_report(script) {}

    bool start(const char* name);
    bool chooseDatabase(const char* dbName);
    // The same without a look for the script, and the direct connection stays open.
    bool openDatabase(const char* dbName);

  private:
    void discardObjects();
    bool nameMachine();
    void startLog();

    bool settle(const char* dbName);
    bool detectDatabase();
    bool takeDatabase(const char* name);
    bool connect();
    bool findScript();

    TScript& m_script;
    ScriptReport m_report;
};
