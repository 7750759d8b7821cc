// One run of the query tool `sqlcmd` for a database.
#pragma once

#include <string>

#include "parts/DatabaseParts.h"
#include "querytool/QueryToolCommand.h"

inline constexpr char kToolName[] = "sqlcmd";

// Use: construct, build one of the command lines of QueryToolCommand.h from login() and input(), run() it.
class QueryTool {
  public:
    // Chooses the output file and the tool. A null output file means a temporary one, which only its owner
    // may read. The output file is left to the caller.
    QueryTool(const DatabaseParts& db, const char* outputFile, const char* fallbackTool);

    ToolLogin login() const;  // valid as long as the database object is not changed
    ToolInput input(const char* sql, const char* dbName, const char* separator = nullptr) const {
        return {sql, m_outputFile.c_str(), dbName, separator};
    }
    // Waits for the tool's end, without limit. On failure `whenFailed` becomes the error message and is
    // logged. The command is wiped. A double quote in the input or the login ends an argument of the command
    // line, and another statement might run: the tool is not started then.
    bool run(const ToolInput& input, std::string command, const char* whenFailed);

  private:
    void reportUnwritten() const;
    bool refuseQuote(const ToolInput& input) const;

    DatabaseParts m_db;
    std::string m_outputFile;
    const bool m_temporary;
};

// DBBase::RunStringQuery().
bool runStringQuery(const DatabaseParts& db, const char* sql, const char* outputFile, const char* dbName);

// Sets the tool's path and logs it, once an object.
void chooseToolPath(std::string& toolPath, const char* fallbackTool, const DatabaseReport& report);

// Runs a command line to its end (`timeout` as of runProcess()). A child process that failed logs an empty
// line; the debug log holds the reason. True for exit code 0.
bool runLogged(const char* commandLine, unsigned int timeout, const DatabaseReport& report);
