// Script runs for programs that handle no TScript object. Unmangled names; nothing survives between calls.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/Export.h"

// Result texts go into strings that the caller owns; they are overwritten. All return true for success;
// a failure's reason is in the output text. A null address where a result is to go makes the call fail at
// once; null names count as empty ones. An output ends at its first NUL byte. Nothing is thrown.
extern "C" {

// Is the name a stored-procedure tscript of the catalogue? Both strings are overwritten, whatever the result:
// with the name as the catalogue spells it, and with the database that was settled on.
DVU_EXPORT bool TS_IsTscriptSP(std::string* scriptName, std::string* dbName);

// Runs (1), explains (2) or lists the parameters of (4) a stored-procedure tscript. `arguments` (without
// double quotes) and `recordedInput` may be null, as told at TScript::execTscript(). `auditLevel` receives 0
// when the script was not found. A secured tscript always fails here: no user can be named.
DVU_EXPORT bool TS_ExecTscript_SP(const char* scriptName, const char* dbName, const char* arguments,
                                  const char* recordedInput, int operation, std::string* logFile,
                                  std::string* output, int* auditLevel);

// Runs (1 or 8) or explains (2) a package. `dbName` receives the database that was chosen, and is left alone
// when the package cannot be loaded. Any other operation loads the package, runs nothing and succeeds with an
// empty output. `parameters` (null: none) fill the package's placeholders; they are copied.
DVU_EXPORT bool TS_ExecTscript_SQL(const char* scriptName, std::string* dbName,
                                   const std::vector<std::string>* parameters, const char* recordedInput,
                                   int operation, std::string* logFile, std::string* output);
}
