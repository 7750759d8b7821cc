// Lists of the catalogue and the journal, and previews of script runs. Nothing here changes the catalogue or
// the journal except TS_ExecTscript_SQL_In(), which runs a package.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/Export.h"

struct ScriptRecords;

// Bits of TScriptEntry_t::type and TScriptRun_t::type.
inline constexpr int kTScriptPermanent = 2;      // a stored procedure
inline constexpr int kTScriptSecured = 8;        // its runs need a user
inline constexpr int kTScriptPackageBits = 100;  // any of them: added from a package

// Times are seconds since 1970; 0 if the database holds none.
struct TScriptEntry_t {
    int id = 0;
    int type = 0;
    int auditLevel = 0;
    std::int64_t creationTime = 0;
    std::string name;
};

struct TScriptRun_t {
    int id = 0;
    int scriptId = 0;
    int type = 0;
    int status = 0;  // 0 running, 1 succeeded, 2 failed
    int userId = 0;
    std::int64_t startTime = 0;
    std::int64_t endTime = 0;  // the start, if the run has not ended
    std::string name;
    std::string input;  // cut to 1,000 characters
};

struct TScriptRunFilter_t {
    std::string namePattern;       // as for listScripts()
    int status = -1;               // -1: any
    std::int64_t since = 0;        // runs that started then or later; 0: any time
    std::int64_t longerThan = -1;  // runs that took more seconds, or have not ended; -1: any time
};

// Reader of catalogue and journal over one direct connection. One thread per object. Every operation returns
// true for success; otherwise getErrorMessage() holds the reason, DVU_GetCauses() returns its causes, and
// lists are empty.
//
// Lists come in pages, newest first, so that memory is bounded by the page's length, `maximum` (1 to 10,000).
// `beforeId` is 0 for the first page, then the id of the previous page's last row. A page with fewer rows is
// the last one.
class DVU_EXPORT TScriptRecords {
  public:
    TScriptRecords();
    ~TScriptRecords();
    TScriptRecords(const TScriptRecords&) = delete;
    TScriptRecords& operator=(const TScriptRecords&) = delete;

    // Chooses the database like TScript::setDbAndLog() and connects. One call per object: after a failure use
    // a new object.
    bool open(const char* dbName);
    // `namePattern` (null or empty: every name; at most 256 bytes): "*" matches any characters, "?" matches
    // one, every other character matches itself, SQL's own wildcards and quotes included. The database's
    // collation decides whether case matters.
    bool listScripts(const char* namePattern, int beforeId, int maximum,
                     std::vector<TScriptEntry_t>& entries);
    bool listRuns(const TScriptRunFilter_t& filter, int beforeId, int maximum,
                  std::vector<TScriptRun_t>& runs);

    const char* getDbName() const;
    const char* getErrorMessage() const;

  private:
    friend void DVU_GetCauses(const TScriptRecords& records, std::vector<DVUCause_t>& causes);

    ScriptRecords* m_impl;  // owned
};

// Option bit of TS_ExecTscript_SQL_In() and TS_PreviewTscript_SQL(): values are not checked.
inline constexpr unsigned int kTScriptToolCommandsInValues = 1;

extern "C" {

// The conventions of TScriptApi.h hold here, too: output, log file, `sql` and `errorText` are cleared first,
// so that no input may point into these strings.

// TS_ExecTscript_SQL() with operation 1, in a database of the caller's choice. `dbName` (empty: none) is used
// for a package that names no database. If the package names one, `dbName` must be empty or the same;
// otherwise the call fails before anything is executed. It receives the database that was chosen. Every
// single quote of a value is doubled, so that a value between quotes ('%s') is that value. A value that has a
// line break, completes a "$(" or completes a line that the query tool takes as a command makes the call fail
// before anything is executed, unless `options` has kTScriptToolCommandsInValues.
DVU_EXPORT bool TS_ExecTscript_SQL_In(const char* scriptName, std::string* dbName,
                                      const std::vector<std::string>* parameters, const char* recordedInput,
                                      std::string* logFile, std::string* output, unsigned int options = 0);

// Returns in `sql` the SQL text that TS_ExecTscript_SQL_In() would hand to the query tool, without using a
// database. `dbName` receives the package's own database, or keeps the caller's; empty means that a run would
// use the database of the installed component. `errorText` receives the reason of a failure.
DVU_EXPORT bool TS_PreviewTscript_SQL(const char* scriptName, std::string* dbName,
                                      const std::vector<std::string>* parameters, std::string* sql,
                                      std::string* errorText, unsigned int options = 0);

// The same for TS_ExecTscript_SP() with operation 1. Does not check whether the script exists or is secured,
// which only the database knows.
DVU_EXPORT bool TS_PreviewTscript_SP(const char* scriptName, const char* arguments, std::string* sql,
                                     std::string* errorText);
}
