// Results for programs.
#pragma once

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;  // members stay in the order in which they are set

// On standard output, indented. Bytes that are no UTF-8 come out as U+FFFD.
void writeJson(const Json& value);
