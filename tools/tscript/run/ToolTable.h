// Parser for a table that the query tool printed.
#pragma once

#include <string_view>

#include "console/JsonOutput.h"

// Returns the rows of the first table in the output as an array of objects with the column names as keys.
// "NULL" becomes null, an integer becomes a number. The array is empty if there is no table.
Json parseToolTable(std::string_view output);
