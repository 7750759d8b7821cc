// Runs a golden script: batches between GO lines, each followed by what the engine must say to it.
#pragma once

#include <string>
#include <string_view>

#include "execute/Engine.h"

namespace tsql::test {

// Runs the text's batches (lines "GO" end them) in one session and gives back what they print:
//   name type | name type     the columns of a result set, * marks an identity, ? what may be NULL
//   value | value             its rows, in their storage form; NULL, and blobs as 0x...
//   (3 rows) / (3 changed) / (done)
//   Msg 208, Level 16, State 1, Line 2 [, Procedure p]: text;   texts without severity stand as "text"
//   USE database
std::string runScript(tsql::Session& session, std::string_view text);

}  // namespace tsql::test
