// What keeps a script from running, found before anything runs.
#pragma once

#include <optional>

#include "console/Outcome.h"
#include "run/SqlPreview.h"
#include "script/ScriptOptions.h"

// Finds an empty package, or values that do not fit the placeholders.
std::optional<Failure> findObstacle(const ScriptOptions& options, const SqlPreview& preview);

// Throws the obstacle that findObstacle() finds, if there is one, and writes it as the result of --json.
void requireRunnable(const ScriptOptions& options, const SqlPreview& preview);

// Writes the obstacle as the result of --json; nothing without that option.
void writeJsonOfObstacle(const ScriptOptions& options, const SqlPreview& preview, const Failure& obstacle);

// --dry-run: writes the SQL that would run.
ExitCode showSql(const ScriptOptions& options, const SqlPreview& preview);
