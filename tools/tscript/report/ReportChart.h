// Charts of a report as inline SVG, coloured by the page's style sheet. Coordinates are percentages, so that
// a chart fits any width without scaling its text.
#pragma once

#include <cstdint>
#include <string>

#include "journal/RunStatistics.h"

// Legend of the states that have runs.
std::string chartLegend(const StateCounts& counts);
// Stacked bar chart of runs over time.
std::string timelineChart(Timeline& timeline);
// Table rows with the numbers of the bar chart.
std::string timelineRows(Timeline& timeline);

// Bar of median, 95th percentile and longest duration on a logarithmic scale from 0 to `longest` seconds, and
// the axis of that scale.
std::string durationBar(const Durations& durations, std::int64_t longest);
std::string durationAxis(std::int64_t longest);
