// Run of a loaded package: its statements go through an SQL file and the query tool.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CVoFile.h"
#include "PlaceholderFiller.h"
#include "RemovedAtEnd.h"
#include "ScriptReport.h"

class TScript;

class SqlFileRun {
  public:
    // Null as `recordedInput` counts as empty.
    SqlFileRun(TScript& script, std::vector<std::string> parameters, const char* recordedInput);

    bool run();
    // The SQL file's text, with nothing run.
    bool preview(std::string& sql);

  private:
    void readKeepSetting();
    bool createSqlFile();
    bool writeSqlFile();
    bool recordStart();
    bool createOutputFile();
    bool endWithoutOutput();
    void runQueryTool();
    void recordEnd();
    void collectOutput();

    bool compose(const PlaceholderFiller::Write& write);
    bool write(std::string_view text);
    bool closeSqlFile();
    void fail(std::string message);

    TScript& m_script;
    ScriptReport m_report;
    std::vector<std::string> m_parameters;
    std::string m_recordedInput;
    std::string m_joinedValues;
    unsigned int m_keepSqlFile = 0;
    std::string m_sqlPath;
    RemovedAtEnd m_sqlRemoval;
    CVoFile m_sqlFile;  // closed before it is removed
    CVoError m_writeError;
    bool m_failed = false;
};
