// Commands `help` and `params`.
#pragma once

#include "console/Outcome.h"
#include "script/ScriptOptions.h"

// Usage of the package with this name if there is one, else of the procedure.
ExitCode showUsage(const ScriptOptions& options);

// Parameters of the package with this name if it declares any, else of the procedure.
ExitCode listParameters(const ScriptOptions& options);

// All commands of the tool.
ExitCode showCommands(const ScriptOptions& options);
