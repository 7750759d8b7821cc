// Command `metrics`: runs, backups and findings of `doctor` for Prometheus.
#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScriptRecords.h"
#include "backup/BackupAges.h"
#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "console/Console.h"
#include "console/MetricsText.h"
#include "doctor/CheckList.h"
#include "installation/ServerQuery.h"
#include "journal/Records.h"
#include "journal/RunMetrics.h"
#include "package/PackageChecks.h"
#include "system/ResultFile.h"

namespace {

constexpr int kMetricsPage = 10000;

struct MetricsOptions {
    RecordOptions records;
    std::string output;
    bool withoutDoctor = false;
};

// The parts of the page. Each reports its failure as a metric, so that the others are still written.
class MetricsPage {
  public:
    explicit MetricsPage(const MetricsOptions& options) : m_options(options) {}
    void addRuns();
    void addBackups();
    void addFindings();
    std::string finish();
    ExitCode exitCode() const { return m_exitCode; }

  private:
    template <typename Work>
    void addPart(const char* name, Work work);

    const MetricsOptions& m_options;
    std::string m_database;  // whose journal was read
    MetricsText m_metrics;
    std::vector<std::pair<const char*, bool>> m_parts;  // name, whether it is complete
    ExitCode m_exitCode = ExitCode::kDone;
};

template <typename Work>
void MetricsPage::addPart(const char* name, Work work) {
    try {
        work();
        m_parts.emplace_back(name, true);
    } catch (const Failure& failure) {
        writeNote(std::string("tscript: ") + name + ": " + failure.what());
        if (m_exitCode == ExitCode::kDone) m_exitCode = failure.code();
        m_parts.emplace_back(name, false);
    }
}

void MetricsPage::addRuns() {
    const TScriptRunFilter_t filter = runFilter(m_options.records);  // wrong usage ends the command
    addPart("journal", [&] {
        TScriptRecords records;
        openRecords(records, m_options.records.database);
        m_database = records.getDbName();
        RunMetrics runs(m_database);
        std::vector<TScriptRun_t> page;
        int beforeId = 0;
        do {
            if (!records.listRuns(filter, beforeId, kMetricsPage, page)) throwUnreadable(records);
            for (const TScriptRun_t& run : page) runs.add(RunView(run, m_options.records.staleHours));
            if (!page.empty()) beforeId = page.back().id;
        } while (page.size() == static_cast<std::size_t>(kMetricsPage));
        runs.write(m_metrics);
    });
}

void MetricsPage::addBackups() {
    addPart("backups", [&] {
        const std::string& named = m_options.records.database;
        DBBase db(/*flag=*/false);
        connectToServer(db, !named.empty() ? named : !m_database.empty() ? m_database : "Dorvas");
        addBackupMetrics(m_metrics, backupAges(db), std::time(nullptr));
    });
}

void MetricsPage::addFindings() {
    if (m_options.withoutDoctor) return;
    addPart("doctor", [&] {
        CheckList list;
        checkInstallation(list);
        checkDatabases(list);
        checkPackages(list);
        constexpr std::pair<Health, const char*> kResults[] = {{Health::kGood, "ok"},
                                                               {Health::kWarning, "warning"},
                                                               {Health::kFailed, "failed"},
                                                               {Health::kSkipped, "skipped"}};
        m_metrics.add("tscript_doctor_checks", "gauge", "Checks of tscript doctor by result.");
        for (const auto& [health, name] : kResults) {
            const auto hasResult = [wanted = health](const Check& check) { return check.health == wanted; };
            const auto number = std::count_if(list.checks().begin(), list.checks().end(), hasResult);
            m_metrics.sample(static_cast<double>(number), {{"result", name}});
        }
    });
}

std::string MetricsPage::finish() {
    m_metrics.add("tscript_metrics_complete", "gauge",
                  "1 if a part of these metrics was collected, 0 if not.");
    for (const auto& [name, isComplete] : m_parts) m_metrics.sample(isComplete ? 1 : 0, {{"part", name}});
    return m_metrics.text();
}

ExitCode writeMetrics(const MetricsOptions& options) {
    static_cast<void>(ResultFile(options.output));  // fails early if it cannot be written
    MetricsPage page(options);
    page.addRuns();
    page.addBackups();
    page.addFindings();
    ResultFile(options.output).write(page.finish());
    return page.exitCode();
}

}  // namespace

void addMetricsCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<MetricsOptions>();
    CLI::App* command =
        addCommand(&app, action, "metrics", "Write metrics for Prometheus: runs, backups, findings of doctor",
                   options, writeMetrics);
    addOption(command, "-o,--output", options->output,
              "File to write, replaced as a whole (default: standard output)", {.type = "FILE"});
    addDatabaseOption(command, options->records.database);
    addPatternOption(command, options->records.name);
    addSinceOption(command, options->records.since);
    addStaleOption(command, options->records.staleHours);
    addFlag(command, "--without-doctor", options->withoutDoctor, "Leave the checks of doctor out");
}
