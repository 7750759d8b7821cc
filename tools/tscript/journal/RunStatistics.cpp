#include "journal/RunStatistics.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <ctime>
#include <numeric>
#include <utility>

namespace {

constexpr std::int64_t kHour = 3600;
constexpr int kNext = 1;             // offset of the next bar
constexpr std::int64_t kExact = 32;  // shorter durations have one class per second
constexpr std::int64_t kExactBits = 5;
constexpr std::int64_t kParts = 16;  // classes between two powers of 2
constexpr std::int64_t kLongest = std::int64_t{1} << 33;

// Moves a local time to the start of the unit that is `offset` units after its own.
using MoveToStart = void (*)(std::tm& time, int offset);

void moveToYears(std::tm& time, int years, int offset) {
    constexpr int kTmEpoch = 1900;
    time.tm_year = (time.tm_year + kTmEpoch) / years * years + offset * years - kTmEpoch;
    time.tm_mon = 0;
    time.tm_mday = 1;
}

constexpr struct {
    Timeline::Unit unit;
    MoveToStart moveToStart;  // nullptr for hours, which clock changes do not move
} kUnits[] = {
    {{"hour", "%d %b %H:%M"}, nullptr},
    {{"day", "%d %b %Y"}, [](std::tm& time, int offset) { time.tm_mday += offset; }},
    {{"week", "%d %b %Y"},
     [](std::tm& time, int offset) { time.tm_mday += 7 * offset - (time.tm_wday + 6) % 7; }},
    {{"month", "%b %Y"},
     [](std::tm& time, int offset) {
         time.tm_mon += offset;
         time.tm_mday = 1;
     }},
    {{"year", "%Y"}, [](std::tm& time, int offset) { moveToYears(time, 1, offset); }},
    {{"decade", "%Y"}, [](std::tm& time, int offset) { moveToYears(time, 10, offset); }},
    {{"century", "%Y"}, [](std::tm& time, int offset) { moveToYears(time, 100, offset); }},
};

// Start of the bar that holds `time`, or of the bar `offset` bars later.
std::int64_t barStart(std::size_t unit, std::int64_t time, int offset = 0) {
    const std::time_t seconds = time;
    std::tm parts{};
    localtime_r(&seconds, &parts);
    if (kUnits[unit].moveToStart == nullptr)
        return time - parts.tm_sec - std::int64_t{60} * parts.tm_min + offset * kHour;
    parts.tm_sec = parts.tm_min = parts.tm_hour = 0;
    kUnits[unit].moveToStart(parts, offset);
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

std::size_t classOf(std::int64_t seconds) {
    const std::int64_t bounded = std::clamp<std::int64_t>(seconds, 0, kLongest);
    if (bounded < kExact) return static_cast<std::size_t>(bounded);
    const auto power = static_cast<std::int64_t>(std::bit_width(static_cast<std::uint64_t>(bounded))) - 1;
    const std::int64_t part = (bounded * kParts >> power) - kParts;
    return static_cast<std::size_t>(kExact + (power - kExactBits) * kParts + part);
}

}  // namespace

StateCounts& StateCounts::operator+=(const StateCounts& other) {
    for (std::size_t i = 0; i < m_counts.size(); ++i) m_counts[i] += other.m_counts[i];
    return *this;
}

std::int64_t StateCounts::all() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), std::int64_t{0});
}

const Timeline::Unit& Timeline::unit() const {
    return kUnits[m_unit].unit;
}

StateCounts& Timeline::barAt(std::int64_t time) {
    if (time >= m_barStart && time < m_barEnd) return m_bars[m_barStart];
    m_bars[barStart(m_unit, time)];
    while (tooLong() && m_unit + 1 < std::size(kUnits)) useLargerUnit();
    m_barStart = barStart(m_unit, time);
    m_barEnd = barStart(m_unit, time, kNext);
    return m_bars[m_barStart];
}

bool Timeline::tooLong() const {
    std::int64_t last = m_bars.begin()->first;
    for (std::size_t bars = 1; bars < kMostBars; ++bars) last = barStart(m_unit, last, kNext);
    return m_bars.rbegin()->first > last;
}

void Timeline::useLargerUnit() {
    ++m_unit;
    std::map<std::int64_t, StateCounts> bars;
    for (const auto& [start, counts] : m_bars) bars[barStart(m_unit, start)] += counts;
    m_bars = std::move(bars);
}

const std::map<std::int64_t, StateCounts>& Timeline::bars() {
    if (m_bars.empty()) return m_bars;
    const std::int64_t last = m_bars.rbegin()->first;
    for (std::int64_t start = m_bars.begin()->first; start < last; start = barStart(m_unit, start, kNext))
        m_bars[start];
    return m_bars;
}

void Durations::add(std::int64_t seconds) {
    const std::size_t number = classOf(seconds);
    if (m_classes.size() <= number) m_classes.resize(number + 1);
    ++m_classes[number].runs;
    m_classes[number].seconds += seconds;
    ++m_number;
    m_longest = std::max(m_longest, seconds);
    m_total += seconds;
}

std::int64_t Durations::quantile(double part) const {
    const double rank = std::ceil(part * static_cast<double>(m_number));  // the nearest-rank method
    const auto wanted = std::max<std::int64_t>(static_cast<std::int64_t>(rank), 1);
    std::int64_t seen = 0;
    for (const Class& one : m_classes) {
        seen += one.runs;
        if (one.runs > 0 && seen >= wanted) return one.seconds / one.runs;
    }
    return 0;
}

void ScriptTotals::add(const RunView& view) {
    if (m_scripts.size() >= kMostScripts && !m_scripts.contains(view.run.name)) {
        ++m_otherRuns;
        return;
    }
    ScriptFigures& figures = m_scripts[view.run.name];
    ++figures.counts[view.state];
    const bool ended = view.state == RunState::kOk || view.state == RunState::kFailed;
    if (ended && view.run.startTime != 0) figures.durations.add(view.seconds);
}
