// Command `exec`: a stored-procedure script.
#pragma once

#include "console/Outcome.h"
#include "script/ScriptOptions.h"

ExitCode runProcedure(const ScriptOptions& options);
