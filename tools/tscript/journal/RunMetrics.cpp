#include "journal/RunMetrics.h"

#include <algorithm>

namespace {

constexpr RunState kMeasuredStates[] = {RunState::kOk, RunState::kFailed, RunState::kRunning,
                                        RunState::kAbandoned, RunState::kUnknown};

double numberOf(std::int64_t value) {
    return static_cast<double>(value);
}

}  // namespace

void RunMetrics::add(const RunView& view) {
    const TScriptRun_t& run = view.run;
    ++m_counts[view.state];
    m_totals.add(view);
    if (!m_totals.scripts().contains(run.name)) return;
    Moments& moments = m_moments[run.name];
    moments.start = std::max(moments.start, run.startTime);
    if (view.state == RunState::kOk) moments.success = std::max(moments.success, run.endTime);
}

void RunMetrics::write(MetricsText& metrics) const {
    metrics.add("tscript_journal_runs", "gauge", "Runs in the journal by state.");
    for (const RunState state : kMeasuredStates)
        metrics.sample(numberOf(m_counts[state]), {{"database", m_database}, {"state", nameOf(state)}});
    metrics.add("tscript_runs", "gauge", "Runs of a script in the journal by state.");
    for (const auto& [script, figures] : m_totals.scripts())
        for (const RunState state : kMeasuredStates)
            if (figures.counts[state] > 0 || state == RunState::kOk || state == RunState::kFailed)
                metrics.sample(numberOf(figures.counts[state]),
                               {{"database", m_database}, {"script", script}, {"state", nameOf(state)}});
    metrics.add("tscript_run_duration_seconds", "summary", "Durations of a script's ended runs.");
    for (const auto& [script, figures] : m_totals.scripts()) {
        const MetricsText::Labels labels = {{"database", m_database}, {"script", script}};
        for (const auto& [name, part] : {std::pair{"0.5", 0.5}, {"0.95", 0.95}}) {
            MetricsText::Labels withQuantile = labels;
            withQuantile.emplace_back("quantile", name);
            if (!figures.durations.empty())
                metrics.sample(numberOf(figures.durations.quantile(part)), withQuantile);
        }
        metrics.sample(numberOf(figures.durations.total()), labels, "_sum");
        metrics.sample(numberOf(figures.durations.number()), labels, "_count");
    }
    metrics.add("tscript_last_start_timestamp_seconds", "gauge", "Start of a script's newest run.");
    for (const auto& [script, moments] : m_moments)
        metrics.sample(numberOf(moments.start), {{"database", m_database}, {"script", script}});
    metrics.add("tscript_last_success_timestamp_seconds", "gauge",
                "End of a script's newest successful run; 0 if there is none.");
    for (const auto& [script, moments] : m_moments)
        metrics.sample(numberOf(moments.success), {{"database", m_database}, {"script", script}});
}
