// SQL that a run would execute.
#pragma once

#include <cstddef>
#include <string>

#include "run/ScriptRun.h"

struct SqlPreview {
    ScriptKind kind = ScriptKind::kPackage;
    std::string database;  // empty: the one of the installed components
    std::string sql;
    std::size_t placeholders = 0;  // of a package
};

// Both throw Failure with the diagnosis, and write the library's message to standard error.
SqlPreview previewPackage(const ScriptRequest& request);
SqlPreview previewProcedure(const ScriptRequest& request);
