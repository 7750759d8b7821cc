// SQL that a run would execute.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "run/ScriptRun.h"

struct SqlPreview {
    ScriptKind kind = ScriptKind::kPackage;
    std::string database;  // empty: the one of the installed components
    std::string sql;
    std::size_t placeholders = 0;  // of a package
    bool isEmpty = false;          // a package without a statement
    bool isXml = false;            // a package whose output is XML
};

// Reads the package without using a database. Returns nothing for a package that cannot be read: its run
// reports the reason.
std::optional<SqlPreview> peekPackage(const ScriptRequest& request);

// Both throw Failure with the diagnosis, and write the library's message to standard error.
SqlPreview previewPackage(const ScriptRequest& request);
SqlPreview previewProcedure(const ScriptRequest& request);
