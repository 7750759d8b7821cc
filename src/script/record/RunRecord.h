// Record of one ended run: what ran where, when, with which result. Stored as a JSON file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "json/Json.h"

// Strings that are unknown are empty. Times are milliseconds since 1970.
struct RunRecord {
    int run = 0;  // id of the journal's row; 0: not journalled
    std::string script{};
    bool isPackage = false;
    std::string sha256{};  // of the package file, or of the procedure's definition as UTF-8
    std::string database{};
    std::string server{};
    std::string host{};
    std::string installation{};  // its folder
    std::string user{};          // of the operating system
    std::string program{};
    int process = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
    bool succeeded = false;
    int journalUser = 0;
    std::optional<std::string> input{};  // as journalled; empty: not journalled
    std::vector<DVUCause_t> causes{};    // of a failure
    std::string output{};
    std::size_t outputBytes = 0;  // of the whole output; more than `output` has if it was cut
    bool outputCut = false;
};

Json jsonOf(const RunRecord& record);
// Parses the text of jsonOf()'s value. Returns the reason of a failure; empty for success. Members that are
// missing or of another type count as unknown, except version, script and start.
std::string parseRecord(std::string_view json, RunRecord& record);

// "connection", "statement" etc. for DVUCause_t::where; empty for other numbers.
const char* causePlaceName(int where);

// Returns a text of up to `most` bytes unchanged. Of a longer one, returns the beginning and the end,
// together at most `most` bytes, with a line between them that states how many bytes are left out. UTF-8
// characters stay whole.
std::string withoutMiddle(std::string_view text, std::size_t most);

// "2026-01-31T18:30:00.123Z"
std::string isoTime(std::int64_t milliseconds);
