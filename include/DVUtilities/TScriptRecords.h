// What the databases record of tscripts, and what a script would run: to be looked at. Nothing here changes
// the catalogue or the journal, but for TS_ExecTscript_SQL_In(), which runs a package.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DVUtilities/Export.h"

struct ScriptRecords;

// Bits of TScriptEntry_t::type and TScriptRun_t::type.
inline constexpr int kTScriptPermanent = 2;      // a stored procedure
inline constexpr int kTScriptSecured = 8;        // its runs need a user
inline constexpr int kTScriptPackageBits = 100;  // any of them: entered from a package

// Times are seconds since 1970; 0 where the database holds none.
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
    std::int64_t endTime = 0;  // of a run that has not ended: its start
    std::string name;
    std::string input;  // cut to 1,000 characters
};

struct TScriptRunFilter_t {
    std::string namePattern;  // as for listScripts()
    int status = -1;          // -1: any
    std::int64_t since = 0;   // runs that started then or later; 0: any time
};

// Reads catalogue and journal over one direct connection. One thread per object. Every operation returns true
// for success; else getErrorMessage() holds the reason, and lists are empty.
//
// Lists come in pages, newest first, so that a journal of any length takes the memory of one page: `beforeId`
// is 0 for the first page, then the id of the last row got; `maximum` (1 to 10,000) is the page's length. A
// page with fewer rows is the last one.
class DVU_EXPORT TScriptRecords {
  public:
    TScriptRecords();
    ~TScriptRecords();
    TScriptRecords(const TScriptRecords&) = delete;
    TScriptRecords& operator=(const TScriptRecords&) = delete;

    // Chooses the database as TScript::setDbAndLog() does, and connects. Once per object.
    bool open(const char* dbName);
    // `namePattern` (null or empty: every name; at most 256 bytes): "*" stands for any characters, "?" for
    // one, every other character for itself, SQL's own wildcards and quotes included. Case counts as the
    // database's collation has it.
    bool listScripts(const char* namePattern, int beforeId, int maximum,
                     std::vector<TScriptEntry_t>& entries);
    bool listRuns(const TScriptRunFilter_t& filter, int beforeId, int maximum,
                  std::vector<TScriptRun_t>& runs);

    const char* getDbName() const;
    const char* getErrorMessage() const;

  private:
    ScriptRecords* m_impl;  // owned
};

extern "C" {

// TS_ExecTscript_SQL() with operation 1, in a database of the caller's choice. `dbName` (empty: none) is used
// for a package that names no database, and may repeat the one that is named; another one fails before
// anything is run. It receives the database that was settled on.
DVU_EXPORT bool TS_ExecTscript_SQL_In(const char* scriptName, std::string* dbName,
                                      const std::vector<std::string>* parameters, const char* recordedInput,
                                      std::string* logFile, std::string* output);

// The whole text that TS_ExecTscript_SQL_In() would hand to the query tool, into `sql`; no database is asked.
// `dbName` receives the package's own database, or keeps the caller's; empty means that it would be found
// from the installed components. A failure's reason is in `errorText`.
DVU_EXPORT bool TS_PreviewTscript_SQL(const char* scriptName, std::string* dbName,
                                      const std::vector<std::string>* parameters, std::string* sql,
                                      std::string* errorText);

// The same for TS_ExecTscript_SP() with operation 1. Whether the script exists and is secured stays open: the
// database alone knows.
DVU_EXPORT bool TS_PreviewTscript_SP(const char* scriptName, const char* arguments, std::string* sql,
                                     std::string* errorText);
}
