// Run of a stored-procedure tscript, or a query about it: help, parameters.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "catalogue/ScriptCatalogue.h"
#include "catalogue/ScriptJournal.h"
#include "files/RunMark.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"
#include "steps/RunRecorder.h"
#include "text/SqlBuffer.h"

class CVoError;

// Values of an operation argument; any other value is reported as invalid.
enum ProcedureOperation { kExecuteProcedure = 1, kProcedureHelp = 2, kProcedureParameters = 4 };

class ProcedureRun {
  public:
    // Null `arguments` and `recordedInput` count as empty. `contentType`: the query tool's option bits. Bit 4
    // also drops the output's heading, bit 8 leaves the output in its file.
    ProcedureRun(const ScriptParts& script, int operation, const char* arguments, const char* recordedInput,
                 std::int32_t contentType);

    bool run();
    // Returns in `sql` the text that run() would execute; executes nothing.
    bool preview(std::string& sql);

  private:
    bool findScript();
    bool knowsSecured();
    bool buildQuery();
    bool recordStart();
    bool runStarted();
    bool createOutputFile();
    void runQueryTool();
    void recordEnd();
    void cleanHeader();
    void collectOutput();
    void reportExecuted();

    bool buildExecution();
    void buildHelp();
    void buildParameters();
    bool journalled() const;
    void fail(std::string message);
    void failAtOutput(const char* step, const CVoError& error);

    SessionParts m_session;
    EntryParts m_entry;
    RunParts m_run;
    ScriptReport m_report;
    ScriptCatalogue m_catalogue;
    ScriptJournal m_journal;
    RunRecorder m_recorder;
    int m_operation;
    std::string_view m_arguments;
    const char* m_recordedInput;
    std::int32_t m_contentType;
    SqlBuffer m_query;
    const char* m_successMessage = "";
    RunMark m_outputMark;
    bool m_failed = false;
};
