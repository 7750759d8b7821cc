// Figures about runs, gathered one run at a time: they take the same memory for ten runs and for a million.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "journal/JournalReader.h"

inline constexpr std::size_t kRunStates = 5;

// How many runs are in which state.
class StateCounts {
  public:
    std::int64_t& operator[](RunState state) { return m_counts[static_cast<std::size_t>(state)]; }
    std::int64_t operator[](RunState state) const { return m_counts[static_cast<std::size_t>(state)]; }
    StateCounts& operator+=(const StateCounts& other);
    std::int64_t all() const;

  private:
    std::array<std::int64_t, kRunStates> m_counts{};
};

// Runs by the local hour, day, week ... of their start. Begins with hours, and goes over to the next larger
// unit whenever the stretch of time would take more than kMostBars of them.
class Timeline {
  public:
    static constexpr std::size_t kMostBars = 62;
    struct Unit {
        const char* name;    // "hour"
        const char* format;  // of a moment, for strftime
    };

    void cover(std::int64_t moment) { at(moment); }  // the stretch reaches there, runs or none
    void add(std::int64_t start, RunState state) { ++at(start)[state]; }
    const Unit& unit() const;
    // By their first moment, those without runs included.
    const std::map<std::int64_t, StateCounts>& bars();

  private:
    StateCounts& at(std::int64_t moment);
    bool tooLong() const;
    void coarsen();

    std::size_t m_unit = 0;
    std::map<std::int64_t, StateCounts> m_bars;
    std::int64_t m_barStart = 0, m_barEnd = 0;  // the bar used last: neighbours in time come one by one
};

// Lengths of runs, in classes of like ones: up to 31 s each has its own, above they are a sixteenth wide.
class Durations {
  public:
    void add(std::int64_t seconds);
    bool empty() const { return m_number == 0; }
    std::int64_t quantile(double part) const;  // the mean of its class; 0 where there are none
    std::int64_t longest() const { return m_longest; }
    std::int64_t total() const { return m_total; }

  private:
    struct Class {
        std::int64_t runs = 0, seconds = 0;
    };
    std::vector<Class> m_classes;  // as many as the longest needs, 500 at most
    std::int64_t m_number = 0, m_longest = 0, m_total = 0;
};

struct ScriptFigures {
    StateCounts counts;
    Durations durations;  // of runs that have ended
};

// By name, for the first so many names; the runs of all others are only counted.
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
