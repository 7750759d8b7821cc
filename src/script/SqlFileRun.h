// Run of a loaded package: its statements go through an SQL file and the query tool.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CVoFile.h"
#include "ScriptReport.h"

class TScript;

class SqlFileRun {
  public:
    // Null as `recordedInput` counts as empty.
    SqlFileRun(TScript& script, std::vector<std::string> parameters, const char* recordedInput);

    bool run();

  private:
    void readKeepSetting();
    bool createSqlFile();
    bool writeSqlFile();
    bool recordStart();
    bool createOutputFile();
    void runQueryTool();
    void recordEnd();
    void collectOutput();
    bool cleanUp();

    bool write(std::string_view text);
    bool closeSqlFile();
    void fail(std::string message);

    TScript& m_script;
    ScriptReport m_report;
    std::vector<std::string> m_parameters;
    std::string m_recordedInput;
    unsigned int m_keepSqlFile = 0;
    std::string m_sqlPath;
    CVoFile m_sqlFile;
    CVoError m_writeError;
    bool m_failed = false;
};
