// Command `report`: writes an HTML page about the runs in a journal.
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <memory>

#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "console/Terminal.h"
#include "console/Times.h"
#include "installation/Installation.h"
#include "journal/Records.h"
#include "report/Html.h"
#include "report/ReportData.h"
#include "report/ReportPage.h"
#include "system/ResultFile.h"

namespace {

constexpr int kReportPage = 10000;
constexpr std::size_t kMostBadRuns = 200;
// Shortest time range of the chart: a day with the current hour.
constexpr std::int64_t kShortestRange = std::int64_t{23} * 3600;

struct ReportOptions {
    RecordOptions records;
    std::string output;
    std::string until;
    bool compare = false;
};

// Progress line on an ANSI terminal.
class ReadingProgress {
  public:
    ~ReadingProgress() { draw({}); }
    void show(std::int64_t runs) const { draw("reading the journal: " + countText(runs, "run")); }

  private:
    void draw(const std::string& text) const {
        if (m_isShown) std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
    }
    const bool m_isShown = isAnsiTerminal(STDERR_FILENO);
};

void addRun(const RunView& view, Report& report) {
    const TScriptRun_t& run = view.run;
    if (report.until != 0 && run.startTime >= report.until) return;
    if (report.before.since != 0 && run.startTime < report.since) {
        ++report.before.counts[view.state];
        return report.before.totals.add(view);
    }
    ++report.counts[view.state];
    report.totals.add(view);
    if (run.startTime != 0) report.timeline.add(run.startTime, view.state);
    const bool isBad = view.state == RunState::kFailed || view.state == RunState::kAbandoned;
    if (isBad && report.badRuns.size() < kMostBadRuns)
        report.badRuns.push_back({run, view.state, view.seconds});
}

void readJournal(TScriptRecords& records, const TScriptRunFilter_t& filter, double staleHours,
                 Report& report) {
    const ReadingProgress progress;
    std::vector<TScriptRun_t> page;
    int beforeId = 0;
    do {
        if (!records.listRuns(filter, beforeId, kReportPage, page)) throwUnreadable(records);
        for (const TScriptRun_t& run : page) addRun(RunView(run, staleHours), report);
        if (!page.empty()) beforeId = page.back().id;
        progress.show(report.counts.all());
    } while (page.size() == static_cast<std::size_t>(kReportPage));
}

void addOutputs(Report& report) {
    std::vector<TScriptRun_t> runs;
    for (const BadRun& bad : report.badRuns) runs.push_back(bad.run);
    if (runs.empty()) return;
    RunRecords records(report.database);
    report.outputs = findOutputs(records, sessionLogFile().parent_path(), report.database, runs);
}

// Sets the times of the report and returns the start of what is to be read.
std::int64_t choosePeriods(const ReportOptions& options, std::int64_t since, Report& report) {
    report.since = since;
    report.now = std::time(nullptr);
    if (!options.until.empty()) report.until = parseMoment(options.until);
    const std::int64_t end = report.until != 0 ? report.until : report.now;
    if (since >= end) throw Failure(ExitCode::kUsage, "the period ends before it begins");
    report.timeline.extendTo(end);
    report.timeline.extendTo(since != 0 ? since : end - kShortestRange);
    if (!options.compare) return since;
    if (since == 0)
        throw Failure(ExitCode::kUsage, "--compare needs the beginning of the period",
                      "Give it: --since 7d compares the last seven days with the seven before.");
    return report.before.since = since - (end - since);
}

ExitCode writeReport(const ReportOptions& options) {
    const bool isPage = !options.records.json && !options.records.csv;
    if (isPage && options.output.empty() && isTerminal(STDOUT_FILENO))
        throw Failure(ExitCode::kUsage, "the page would be written to the terminal",
                      "Name a file: -o report.html");
    TScriptRunFilter_t filter = runFilter(options.records);
    Report report;
    filter.since = choosePeriods(options, filter.since, report);
    // Fail before reading the journal if the file cannot be written.
    static_cast<void>(ResultFile(options.output));
    TScriptRecords records;
    openRecords(records, options.records.database);

    report.database = records.getDbName();
    report.pattern = options.records.name;
    readJournal(records, filter, options.records.staleHours, report);
    addOutputs(report);
    ResultFile(options.output)
        .write(isPage                 ? reportPage(report)
               : options.records.json ? reportJson(report)
                                      : reportCsv(report));
    return ExitCode::kDone;
}

}  // namespace

void addReportCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ReportOptions>();
    CLI::App* command =
        addCommand(&app, action, "report",
                   "Write a page about the runs of scripts: over time, how long they took, what failed",
                   options, writeReport);
    addOption(command, "-o,--output", options->output, "File to write (default: standard output)",
              {.type = "FILE"});
    addFlag(command, "--json", options->records.json, "Write the figures as JSON instead of a page");
    addFlag(command, "--csv", options->records.csv, "Write the figures of the scripts as CSV", "--json");
    addDatabaseOption(command, options->records.database);
    addPatternOption(command, options->records.name);
    addSinceOption(command, options->records.since);
    addOption(command, "--until", options->until,
              "Only runs that started before this time, which is given as for --since", {.type = "TIME"});
    addFlag(command, "--compare", options->compare,
            "Compare with the period of the same length before --since");
    addStaleOption(command, options->records.staleHours);
}
