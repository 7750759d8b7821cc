// Statistics of runs, updated run by run with bounded memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "journal/RunView.h"

inline constexpr std::size_t kRunStates = 5;

// Number of runs in each state.
class StateCounts {
  public:
    std::int64_t& operator[](RunState state) { return m_counts[static_cast<std::size_t>(state)]; }
    std::int64_t operator[](RunState state) const { return m_counts[static_cast<std::size_t>(state)]; }
    StateCounts& operator+=(const StateCounts& other);
    std::int64_t all() const;

  private:
    std::array<std::int64_t, kRunStates> m_counts{};
};

// Runs by the local hour, day, week etc. of their start. Begins with hours, and changes to the next larger
// unit whenever the time range needs more than kMostBars bars.
class Timeline {
  public:
    static constexpr std::size_t kMostBars = 62;
    struct Unit {
        const char* name;    // "hour"
        const char* format;  // of strftime()
    };

    void extendTo(std::int64_t time) { barAt(time); }  // without adding a run
    void add(std::int64_t start, RunState state) { ++barAt(start)[state]; }
    const Unit& unit() const;
    // All bars by their start time, empty ones included.
    const std::map<std::int64_t, StateCounts>& bars();

  private:
    StateCounts& barAt(std::int64_t time);
    bool tooLong() const;
    void useLargerUnit();

    std::size_t m_unit = 0;
    std::map<std::int64_t, StateCounts> m_bars;
    std::int64_t m_barStart = 0, m_barEnd = 0;  // cache of the bar used last
};

// Histogram of durations: one class per second up to 31 s, above that 16 classes per power of two.
class Durations {
  public:
    void add(std::int64_t seconds);
    bool empty() const { return m_number == 0; }
    std::int64_t number() const { return m_number; }
    std::int64_t quantile(double part) const;  // mean of its class; 0 if empty
    std::int64_t longest() const { return m_longest; }
    std::int64_t total() const { return m_total; }

  private:
    struct Class {
        std::int64_t runs = 0, seconds = 0;
    };
    std::vector<Class> m_classes;  // up to that of the longest, 500 at most
    std::int64_t m_number = 0, m_longest = 0, m_total = 0;
};

struct ScriptFigures {
    StateCounts counts;
    Durations durations;  // of runs that have ended
};

// Figures by script for the first kMostScripts names; runs of further scripts are only counted.
class ScriptTotals {
  public:
    static constexpr std::size_t kMostScripts = 2000;
    void add(const RunView& view);
    const std::map<std::string, ScriptFigures>& scripts() const { return m_scripts; }
    std::int64_t otherRuns() const { return m_otherRuns; }

  private:
    std::map<std::string, ScriptFigures> m_scripts;
    std::int64_t m_otherRuns = 0;
};
