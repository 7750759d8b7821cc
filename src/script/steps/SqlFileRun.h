// Run of a loaded package: its statements are written to an SQL file, which the query tool executes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CVoFile.h"
#include "catalogue/ScriptJournal.h"
#include "files/RemovedAtEnd.h"
#include "files/RunMark.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"
#include "steps/RunRecorder.h"
#include "text/PlaceholderFiller.h"

// How single quotes in values are doubled: by the rule that callers of executeSQLFile() rely on
// (quotesDoubledInPlace()), or each of them.
enum class QuoteRule { kInPlace, kEvery };

class SqlFileRun {
  public:
    // A null `recordedInput` counts as empty.
    SqlFileRun(const ScriptParts& script, std::vector<std::string> parameters, const char* recordedInput,
               QuoteRule quoteRule = QuoteRule::kInPlace);

    bool run();
    // Returns the SQL file's text in `sql`; executes nothing.
    bool preview(std::string& sql);

  private:
    void readKeepSetting();
    bool createSqlFile();
    bool writeSqlFile();
    bool recordStart();
    bool runStarted();
    bool createOutputFile();
    bool endWithoutOutput();
    void runQueryTool();
    void recordEnd();
    void collectOutput();

    bool compose(const PlaceholderFiller::Write& write);
    CVoError composeToFile();
    void failAtOutput(const char* message, const CVoError& error);
    void fail(std::string message);

    SessionParts m_session;
    PackageParts m_package;
    std::string& m_outputFile;
    ScriptReport m_report;
    ScriptJournal m_journal;
    RunRecorder m_recorder;
    std::vector<std::string> m_parameters;
    std::string m_recordedInput;
    const QuoteRule m_quoteRule;
    std::string m_joinedValues;
    unsigned int m_keepSqlFile = 0;
    std::string m_sqlPath;
    RemovedAtEnd m_sqlRemoval;
    RunMark m_sqlMark;
    RunMark m_outputMark;
    CVoFile m_sqlFile;  // closed before it is removed
    bool m_failed = false;
};
