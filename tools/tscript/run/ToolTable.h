// A table as the query tool prints it, for programs.
#pragma once

#include <string_view>

#include "console/JsonOutput.h"

// The rows of the first table in the output: an object a row, its members named by the headings. NULL becomes
// null and a whole number a number. An empty array when there is no table.
Json rowsOf(std::string_view output);
