// Results for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

using Json = nlohmann::ordered_json;  // members stay in the order in which they are set

// Indented. Bytes that are no UTF-8 come out as U+FFFD.
std::string jsonText(const Json& value);
// The same, on standard output.
void writeJson(const Json& value);
