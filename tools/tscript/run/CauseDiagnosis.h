// What the causes that the library recorded say of a failed run.
#pragma once

#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "installation/Diagnosis.h"
#include "run/ScriptRun.h"

// The cause to report: a message of SQL Server if there is one. Null without causes; else points into
// `causes`.
const DVUCause_t* mainCause(const std::vector<DVUCause_t>& causes);

// Corrects a diagnosis, which is made from the library's messages, by the run's causes.
Diagnosis refined(Diagnosis diagnosis, const RunResult& result);
