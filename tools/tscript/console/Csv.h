// CSV (RFC 4180) from the JSON objects that the listings write.
#pragma once

#include <string>
#include <string_view>

#include "console/JsonOutput.h"

// Returns the text in double quotes. Control characters, line breaks included, become blanks.
std::string csvField(std::string_view text);
// Return the names, or the values, of an object's members as one line with its end. Null is an empty field.
std::string csvHeading(const Json& object);
std::string csvLine(const Json& object);
