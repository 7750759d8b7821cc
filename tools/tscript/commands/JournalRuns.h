// The commands `journal`, `journal export` and `journal tail`: runs of the journal that match filters.
#pragma once

#include "commands/RecordOptions.h"
#include "console/Outcome.h"

ExitCode listRuns(const RecordOptions& options);
ExitCode exportRuns(const RecordOptions& options);
ExitCode tailRuns(const RecordOptions& options);
