// What a failed run means for the exit code, and what to do about it.
#pragma once

#include <string>

#include "console/Outcome.h"

struct Diagnosis {
    ExitCode code = ExitCode::kScriptFailed;
    std::string what;
    std::string advice;
    bool scriptRan = true;  // its output is a result
};

// From the output text that the library gave for a failed run of `script`. `database`: the one chosen, empty
// for none. Looks further where the text alone does not tell: tries the package's records, or the server.
Diagnosis diagnoseRun(const std::string& script, const std::string& database, const std::string& output);

// Why a suite database cannot be reached: store, credentials, query tool, server or login.
Diagnosis diagnoseDatabase(const std::string& database);

// The sqlcmd that runs are made with.
std::string queryToolPath();
void requireQueryTool();  // throws Failure (installation) when it cannot be started

// The meaning of the error text that EncryptFile() or DecryptFile() left.
std::string explainCipherError(const std::string& errorText);
