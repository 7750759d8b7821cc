// Commands on a package: `run`, and the steps that `help` and `params` share with it.
#pragma once

#include "console/Outcome.h"
#include "package/Parameters.h"
#include "run/SqlPreview.h"
#include "script/ScriptOptions.h"

inline constexpr const char* kCompile = "compile";  // value of --check

ExitCode runPackage(const ScriptOptions& options);

// Does `work` on the package. Finds it in any case, and suggests a similar name for one that does not exist.
ExitCode onPackage(const ScriptOptions& given, ExitCode (*work)(const ScriptOptions&));

// The parameters that the package declares, if its placeholders are as many; others are text of an older
// package.
ParameterList declaredParameters(const ScriptOptions& options, const SqlPreview& preview);
