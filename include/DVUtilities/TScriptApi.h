// Script runs for programs without a TScript object. Unmangled names; no state is kept between calls.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/Export.h"

// Results are returned in strings that the caller owns. All functions return true for success; on failure the
// output string holds the reason. A null address of a result makes the call fail at once; null names count as
// empty. The functions clear output and log file first: no input may point into these strings. An output ends
// at its first NUL byte. No function throws.
//
// The query tool expands "$(NAME)" in statements, parameters and arguments as its own variables.
extern "C" {

// Returns whether the name is a stored-procedure tscript of the catalogue. Overwrites both strings, whatever
// the result: with the name in the catalogue's spelling and with the database that was chosen.
DVU_EXPORT bool TS_IsTscriptSP(std::string* scriptName, std::string* dbName);

// Executes (1) a stored-procedure tscript, or returns its help (2) or its parameters (4). `arguments`
// (without double quotes) and `recordedInput` may be null, as for TScript::execTscript(). `auditLevel`
// receives 0 when the script is not found. A secured tscript always fails, since no user can be named.
DVU_EXPORT bool TS_ExecTscript_SP(const char* scriptName, const char* dbName, const char* arguments,
                                  const char* recordedInput, int operation, std::string* logFile,
                                  std::string* output, int* auditLevel);

// Executes (1 or 8) a package or returns its help (2). Any other operation loads the package only and
// succeeds with an empty output. Every operation, help included, adds the package to the catalogue or updates
// its usage text. `dbName` receives the database that was chosen and is unchanged when the package cannot be
// loaded. `parameters` (null: none) fill the package's placeholders. Executions are recorded in the journal,
// whatever the audit level.
DVU_EXPORT bool TS_ExecTscript_SQL(const char* scriptName, std::string* dbName,
                                   const std::vector<std::string>* parameters, const char* recordedInput,
                                   int operation, std::string* logFile, std::string* output);
}
