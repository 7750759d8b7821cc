// Report of a failed run: where it failed, the server's message, what that means for the data, the next step.
#pragma once

#include <string>

#include "console/JsonOutput.h"
#include "installation/Diagnosis.h"
#include "run/ScriptRun.h"

struct FailureReport {
    std::string text;  // lines "name   value"; empty if nothing more than the diagnosis is known
    Json json;         // the same as an object
};

// Describes a failed run by its main cause; without causes, only what is known of its journal row.
FailureReport describeFailure(const ScriptRequest& request, const RunResult& result,
                              const Diagnosis& diagnosis);
