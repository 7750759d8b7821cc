// The figures of a report as JSON and as CSV.
#pragma once

#include <string>

#include "report/ReportPage.h"

// Times are UTC, durations seconds.
std::string reportJson(Report& report);
// One line for each script, with a heading (RFC 4180).
std::string reportCsv(const Report& report);
