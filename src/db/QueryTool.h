// One run of the query tool `sqlcmd` for a database.
#pragma once

#include <string>

#include "DVUtilities/DBBase.h"
#include "QueryToolCommand.h"

// In the order of its operations: settle where the output goes and where the tool is, build one of the
// command lines of QueryToolCommand.h from login() and input(), run it.
class QueryTool {
  public:
    // A null output file means a temporary one, which nobody else may read. The output file is left to the
    // caller.
    QueryTool(DBBase& db, const char* outputFile, const char* fallbackTool);

    ToolLogin login() const;  // valid as long as the database object is not changed
    ToolInput input(const char* sql, const char* dbName) const { return {sql, m_outputFile.c_str(), dbName}; }
    // Waits for the tool's end, without limit. `whenFailed` becomes the error message and is logged. The
    // command is wiped.
    bool run(std::string command, const char* whenFailed);

  private:
    DBBase& m_db;
    std::string m_outputFile;
    const bool m_temporary;
};
