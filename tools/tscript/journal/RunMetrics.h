// Metrics of the runs in a journal.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "console/MetricsText.h"
#include "journal/RunStatistics.h"

class RunMetrics {
  public:
    explicit RunMetrics(std::string database) : m_database(std::move(database)) {}
    void add(const RunView& view);
    void write(MetricsText& metrics) const;

  private:
    struct Moments {
        std::int64_t start = 0, success = 0;  // of the newest run; the newest end with success
    };

    std::string m_database;
    StateCounts m_counts;
    ScriptTotals m_totals;
    std::map<std::string, Moments> m_moments;  // of the scripts in m_totals
};
