// The command `journal show`: one run of the journal, with its run record.
#pragma once

#include "commands/RecordOptions.h"
#include "console/Outcome.h"

ExitCode showRun(const RecordOptions& options);
