// Start of a script run: host, log, database.
#pragma once

#include "catalogue/ScriptCatalogue.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"

class ScriptSession {
  public:
    explicit ScriptSession(const ScriptParts& script)
        : m_session(script.session),
          m_messages(script.messages),
          m_fromPackage(script.entry.fromPackage),
          m_catalogue(script),
          m_report(script) {}

    // TScript::initialize()
    bool start(const char* name);
    // TScript::setDbAndLog()
    bool chooseDatabase(const char* dbName);
    // Chooses the database and leaves the direct connection open; does not look for the script.
    bool openDatabase(const char* dbName);

  private:
    void discardObjects();
    bool nameMachine();
    void startLog();

    bool chooseName(const char* dbName);
    bool detectDatabase();
    bool acceptName(const char* name);
    bool connect();
    bool findScript();

    SessionParts m_session;
    MessageParts m_messages;
    const bool& m_fromPackage;
    ScriptCatalogue m_catalogue;
    ScriptReport m_report;
};
