// The drawings of a report, as SVG within the page: coordinates are percentages, so that they fit every width
// while their texts keep their size. The page's style sheet colours them.
#pragma once

#include <cstdint>
#include <string>

#include "journal/RunStatistics.h"

// The states that have runs, each with the sample of its fill.
std::string chartLegend(const StateCounts& counts);
// Stacked bars of runs over time.
std::string timelineChart(Timeline& timeline);
// The same as rows of a table.
std::string timelineRows(Timeline& timeline);

// Median, 95th percentile and longest, on a logarithmic scale that ends at `longest` seconds.
std::string durationBar(const Durations& durations, std::int64_t longest);
std::string durationAxis(std::int64_t longest);
