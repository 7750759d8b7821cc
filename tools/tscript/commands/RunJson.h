// Scripts and runs of the journal as JSON, and the words that the listings use for them.
#pragma once

#include "console/JsonOutput.h"
#include "journal/RunView.h"

// "procedure", "package", "both" or "other" for a type of catalogue or journal.
const char* kindOf(int type);
// Name of the run's state; the number of an unknown one.
std::string statusText(const RunView& view);
Json jsonOf(const RunView& view);
