// The management database's catalogue of scripts.
#pragma once

#include "state/ScriptParts.h"
#include "state/ScriptReport.h"

class SqlBuffer;

class ScriptCatalogue {
  public:
    explicit ScriptCatalogue(const ScriptParts& script)
        : m_session(script.session), m_entry(script.entry), m_package(script.package), m_report(script) {}

    // TScript::getTscriptId()
    bool find();
    // TScript::addNewTscript()
    bool addPackage();
    // Reads whether the script is secured, unless find() has. False if that cannot be read.
    bool readSecured();

  private:
    bool insertPackage(const char* usage, SqlBuffer& statement);
    bool updateUsage(const char* usage, SqlBuffer& statement);

    SessionParts m_session;
    EntryParts m_entry;
    PackageParts m_package;
    ScriptReport m_report;
};
