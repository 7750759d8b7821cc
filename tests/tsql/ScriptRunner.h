// Golden scripts: batches of T-SQL, each followed by what it prints.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "execute/Engine.h"

namespace tsql::test {

// Runs a batch and returns what it prints, line by line:
//   name type | name type     columns of a result set; * marks an identity, ? a nullable column
//   value | value             a row in storage form: NULL, blobs as 0x...
//   name type = value | ...   a result set of one row
//   name type | name type = value | value; value | value   a short one of several rows
//   Msg 208, Level 16, State 1, Line 2[, Procedure p]: text, or the text alone of an informational message
//   USE database
// Row counts, "(3 rows)" or "(3 changed)", and messages that only add to others (1750, 2528, 3621, 8153,
// 15477) are added to the line before; the messages as "(3621)", or "(8153, Line 4)" if the message before
// came from another line of the batch.
std::string runBatch(tsql::Session& session, std::string_view batch);

// Runs every batch of a script and returns the script with their current output, each line of it behind
// "-->". Short lines share one. A batch ends at its recorded output, which begins on its last line or below
// it. A line "GO" ends a batch that has no recorded output.
std::string runScript(tsql::Session& session, std::string_view script);

// The batches of a script, without their recorded output.
std::vector<std::string> batchesOf(std::string_view script);

}  // namespace tsql::test
