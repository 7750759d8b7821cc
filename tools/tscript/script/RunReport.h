// A script's run and its report: output, JSON, failure.
#pragma once

#include <string>

#include "console/JsonOutput.h"
#include "console/Outcome.h"
#include "run/FollowedOutput.h"
#include "run/ScriptRun.h"
#include "script/ScriptOptions.h"
#include "system/ResultFile.h"

// Runs the script and writes its result where the options say. Throws Failure.
ExitCode runAndReport(const ScriptOptions& options, ScriptKind kind, Operation operation);

// Reports a run that failed. The output is a result if the script ran, else a note.
[[noreturn]] void throwRunFailure(const ScriptOptions& options, const RunResult& result, ResultFile& target,
                                  const FollowedOutput& followed);

// failure: null after a success.
Json jsonOf(const ScriptOptions& options, const RunResult& result, const Failure* failure);
