// Run of a stored-procedure tscript, or of one of the questions about it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ScriptReport.h"
#include "SqlBuffer.h"

class CVoError;
class TScript;

class ProcedureRun {
  public:
    // `arguments` and `recordedInput` may be null, which counts as empty. `contentType`: the query tool's
    // option bits, of which 4 also drops the output's heading and 8 leaves the output in its file.
    ProcedureRun(TScript& script, int operation, const char* arguments, const char* recordedInput,
                 std::int32_t contentType);

    bool run();
    // The execution's text for a script that is not secured, with nothing run.
    bool preview(std::string& sql);

  private:
    enum Operation { kExecute = 1, kHelp = 2, kParameters = 4 };

    bool findScript();
    bool buildQuery();
    bool recordStart();
    bool createOutputFile();
    void runQueryTool();
    void recordEnd();
    void cleanHeader();
    void collectOutput();
    void concludeSuccess();

    bool buildExecution();
    void buildHelp();
    void buildParameters();
    bool journalled() const;
    void fail(std::string message);
    void failAtOutput(const char* step, const CVoError& error);

    TScript& m_script;
    ScriptReport m_report;
    int m_operation;
    std::string_view m_arguments;
    const char* m_recordedInput;
    std::int32_t m_contentType;
    SqlBuffer m_query;
    const char* m_successMessage = "";
    bool m_failed = false;
};
