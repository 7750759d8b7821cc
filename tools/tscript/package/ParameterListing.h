// Parameters of a package as a listing and as JSON.
#pragma once

#include <string>
#include <vector>

#include "console/JsonOutput.h"
#include "package/Parameters.h"

// One line each: "--days int(1..365)  Age in days (default: 30)".
std::string parametersText(const std::vector<Parameter>& parameters);
Json parametersJson(const std::vector<Parameter>& parameters);

// The text without its lines that declare parameters.
std::string withoutParameterLines(const std::string& text);
