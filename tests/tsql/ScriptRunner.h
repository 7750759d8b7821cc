// Golden scripts: batches of T-SQL, each followed by what it prints.
#pragma once

#include <string>
#include <string_view>

#include "execute/Engine.h"

namespace tsql::test {

// Runs a batch and returns what it prints, line by line:
//   name type | name type     columns of a result set; * marks an identity, ? a nullable column
//   value | value             a row in storage form: NULL, blobs as 0x...
//   Msg 208, Level 16, State 1, Line 2[, Procedure p]: text, or the text alone of an informational message
//   USE database
// Row counts, "(3 rows)" or "(3 changed)", and message 3621 of the same line, "(3621)", end the line before.
std::string runBatch(tsql::Session& session, std::string_view batch);

// Runs every batch of a script and returns the script with what they print now. A batch ends at its recorded
// output, lines that begin with "-->", or at a line "GO", which stands for no output.
std::string runScript(tsql::Session& session, std::string_view script);

}  // namespace tsql::test
