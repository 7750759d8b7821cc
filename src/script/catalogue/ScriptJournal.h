// The management database's journal of script runs.
#pragma once

#include <string>

#include "state/ScriptParts.h"
#include "state/ScriptReport.h"

enum class RunStatus { kSucceeded = 1, kFailed = 2 };

class ScriptJournal {
  public:
    explicit ScriptJournal(const ScriptParts& script)
        : m_session(script.session), m_entry(script.entry), m_run(script.run), m_report(script) {}

    // TScript::recordExecStart()
    bool recordStart(const char* inputParams);
    // TScript::recordExecEnd(). The journal stores any status.
    bool recordEnd(int status);
    bool recordEnd(RunStatus status) { return recordEnd(static_cast<int>(status)); }

  private:
    // Executes the statement; repeats it for some seconds if it fails for a reason that may pass.
    bool updateRepeatedly(const std::string& statement);
    bool mayPass() const;

    SessionParts m_session;
    EntryParts m_entry;
    RunParts m_run;
    ScriptReport m_report;
};
