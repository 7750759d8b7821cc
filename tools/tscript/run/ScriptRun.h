// Run of a tscript by the library, with Ctrl-C and progress on the terminal.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "run/RunLock.h"

enum class ScriptKind { kPackage, kProcedure };
const char* nameOf(ScriptKind kind);

enum class Operation { kExecute = 1, kHelp = 2, kParameters = 4 };  // numbers of the exported functions

struct ScriptRequest {
    std::string name;
    std::vector<std::string> parameters;  // of a package: values for its placeholders
    std::string arguments;                // of a procedure, as T-SQL
    std::string input;                    // recorded in the journal instead of the parameters
    std::string database;                 // empty: the one of the installed components
    bool allowToolCommands = false;       // accept line breaks, "$(" and commands of the query tool in values
    LockMode lock = LockMode::kNone;
    std::string lockDatabase;         // empty: as `database`
    std::chrono::seconds timeout{0};  // of the run and the wait for its lock; 0: no limit
};

// Option bits of the library's runs and previews.
unsigned int optionsOf(const ScriptRequest& request);

// Throws Failure: kUsage for a name, database or text that the library cannot take, kInstallation for the
// store.
void checkRequest(const ScriptRequest& request);

struct RunResult {
    ScriptKind kind = ScriptKind::kPackage;
    std::string database;  // empty if the library returned none
    std::string output;
    bool succeeded = false;
    bool interrupted = false;
    bool isToolSilent = false;  // the library succeeded, but the tool wrote no output: a failure here
    bool isOutputCut = false;   // the library succeeded, but could not read the whole output: a failure here
    bool timedOut = false;      // interrupted by the request's time-out
    double seconds = 0;
    std::vector<DVUCause_t> causes;  // of a failure
};

class FollowedOutput;

// Runs the script. Prints the lines of `output` meanwhile if it is wanted. Throws Failure (kInstallation) if
// the log folder cannot be used, and as RunLock does; a script's failure is in the result.
RunResult runScript(const ScriptRequest& request, ScriptKind kind, Operation operation, bool showProgress,
                    FollowedOutput& output);
