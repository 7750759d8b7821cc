// Results as JSON.
#pragma once

#include "json/Json.h"

// Writes the value to standard output as jsonText() formats it.
void writeJson(const Json& value);
