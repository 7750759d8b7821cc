// Results as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

using Json = nlohmann::ordered_json;  // keeps members in insertion order

// Returns the value as indented JSON. Invalid UTF-8 becomes U+FFFD.
std::string jsonText(const Json& value);
// Writes the value to standard output as jsonText() formats it.
void writeJson(const Json& value);
