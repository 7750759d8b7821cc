// Check of a run without running it: site, catalogue, and the batches by the database's own server.
#pragma once

#include <optional>
#include <string>

#include "console/JsonOutput.h"
#include "console/Outcome.h"
#include "run/SqlPreview.h"

struct RunCheck {
    std::string text;
    Json json;
    std::optional<Failure> failure;
};

// `preview` holds the SQL with the values of the run. With `compiles`, the server also looks up the names of
// columns and the types (SET NOEXEC); else it parses only (SET PARSEONLY). Throws Failure with the diagnosis
// if the database cannot be reached.
RunCheck checkRun(const ScriptRequest& request, const SqlPreview& preview, bool compiles);
