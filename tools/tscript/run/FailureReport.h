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

FailureReport describeFailure(const ScriptRequest& request, const RunResult& result,
                              const Diagnosis& diagnosis);
