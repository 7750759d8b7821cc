#include "report/ReportData.h"

#include "console/Csv.h"
#include "console/JsonOutput.h"
#include "console/Times.h"

namespace {

constexpr double kMedian = 0.5;
constexpr double kMost = 0.95;
constexpr RunState kStates[] = {RunState::kOk, RunState::kFailed, RunState::kAbandoned, RunState::kRunning,
                                RunState::kUnknown};

// Adds the members "runs", "ok", "failed" etc.
void addCounts(Json& json, const StateCounts& counts) {
    json["runs"] = counts.all();
    for (const RunState state : kStates) json[nameOf(state)] = counts[state];
}

Json durationsOf(const Durations& durations) {
    if (durations.empty()) return {};
    return {{"median", durations.quantile(kMedian)},
            {"most", durations.quantile(kMost)},
            {"longest", durations.longest()},
            {"total", durations.total()}};
}

Json scriptsOf(const ScriptTotals& totals) {
    Json scripts = Json::array();
    for (const auto& [name, figures] : totals.scripts()) {
        Json script = {{"name", name}};
        addCounts(script, figures.counts);
        script["seconds"] = durationsOf(figures.durations);
        scripts.push_back(std::move(script));
    }
    return scripts;
}

Json failureOf(const BadRun& bad, const RunOutput& output) {
    const TScriptRun_t& run = bad.run;
    const bool ended = bad.state == RunState::kFailed;
    return {{"run", run.id},
            {"name", run.name},
            {"status", nameOf(bad.state)},
            {"start", utcTime(run.startTime)},
            {"end", ended ? Json(utcTime(run.endTime)) : Json()},
            {"seconds", ended ? Json(bad.seconds) : Json()},
            {"input", run.input},
            {"cause", output.cause.empty() ? Json() : Json(output.cause)},
            {"output", output.text},
            {"more", output.more},
            {"source", output.isRecorded     ? Json("record")
                       : output.text.empty() ? Json()
                                             : Json("log")}};
}

}  // namespace

std::string reportJson(Report& report) {
    Json json = {{"database", report.database},
                 {"name", report.pattern.empty() ? Json() : Json(report.pattern)},
                 {"since", report.since != 0 ? Json(utcTime(report.since)) : Json()},
                 {"until", report.until != 0 ? Json(utcTime(report.until)) : Json()},
                 {"asOf", utcTime(report.now)}};
    addCounts(json["counts"], report.counts);
    json["timelineUnit"] = report.timeline.unit().name;
    json["timeline"] = Json::array();
    for (const auto& [start, counts] : report.timeline.bars()) {
        Json bar = {{"start", utcTime(start)}};
        addCounts(bar, counts);
        json["timeline"].push_back(std::move(bar));
    }
    json["scripts"] = scriptsOf(report.totals);
    json["runsOfOtherScripts"] = report.totals.otherRuns();
    if (report.before.since != 0) {
        json["before"] = {{"since", utcTime(report.before.since)}};
        addCounts(json["before"]["counts"], report.before.counts);
        json["before"]["scripts"] = scriptsOf(report.before.totals);
    }
    json["failures"] = Json::array();
    for (std::size_t i = 0; i < report.badRuns.size(); ++i)
        json["failures"].push_back(failureOf(report.badRuns[i], report.outputs[i]));
    return jsonText(json);
}

std::string reportCsv(const Report& report) {
    std::string text = "script,runs";
    for (const RunState state : kStates) text += std::string(",") + nameOf(state);
    text += ",median_seconds,p95_seconds,longest_seconds,total_seconds\r\n";
    for (const auto& [name, figures] : report.totals.scripts()) {
        const Durations& durations = figures.durations;
        text += csvField(name) + "," + std::to_string(figures.counts.all());
        for (const RunState state : kStates) text += "," + std::to_string(figures.counts[state]);
        for (const std::int64_t seconds :
             {durations.quantile(kMedian), durations.quantile(kMost), durations.longest(), durations.total()})
            text += durations.empty() ? std::string(",") : "," + std::to_string(seconds);
        text += "\r\n";
    }
    return text;
}
