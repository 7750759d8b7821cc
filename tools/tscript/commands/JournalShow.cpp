#include "commands/JournalShow.h"

#include <optional>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "commands/RunJson.h"
#include "console/Console.h"
#include "console/Times.h"
#include "journal/Records.h"
#include "journal/RunRecords.h"
#include "record/RunRecord.h"

namespace {

constexpr std::int64_t kPerSecond = 1000;

// Lines "name       value"; empty values are left out.
class Lines {
  public:
    void add(const std::string& name, const std::string& value) {
        constexpr std::size_t kWidth = 11;
        if (!value.empty()) m_text += name + std::string(kWidth - name.size(), ' ') + value + "\n";
    }
    void addText(const std::string& text) { m_text += text; }
    const std::string& text() const { return m_text; }

  private:
    std::string m_text;
};

void addRow(Lines& lines, const TScriptRun_t& row, double staleHours) {
    const RunView view(row, staleHours);
    lines.add("run", std::to_string(row.id) + ", " + statusText(view));
    lines.add("script", row.name + " (" + kindOf(row.type) + ")");
    lines.add("started", localTime(row.startTime) + ", " + (row.status == 0 ? "so far " : "took ") +
                             spanText(view.seconds));
    lines.add("user", row.userId != 0 ? std::to_string(row.userId) : "");
}

void addStart(Lines& lines, const RunRecord& record) {
    lines.add("run", std::to_string(record.run) + ", " + (record.succeeded ? "ok" : "failed") +
                         "; the journal has no such row any more");
    lines.add("script", record.script + (record.isPackage ? " (package)" : " (procedure)"));
    lines.add("started", localTime(record.start / kPerSecond) + ", took " +
                             spanText((record.end - record.start) / kPerSecond));
    lines.add("user", record.journalUser != 0 ? std::to_string(record.journalUser) : "");
}

void addRecord(Lines& lines, const RunRecord& record) {
    lines.add("sha256", record.sha256);
    lines.add("database", record.database + " on " + record.server);
    lines.add("run by", record.user + " on " + record.host + ", " + record.program + ", process " +
                            std::to_string(record.process));
    for (const DVUCause_t& cause : record.causes) lines.add("cause", causeText(cause));
    lines.add("output", std::to_string(record.outputBytes) + " bytes" +
                            (record.outputCut ? ", of which the record has the beginning and the end" : "") +
                            (record.output.empty() ? "" : ":"));
    lines.addText(record.output);
}

void writeText(const std::optional<TScriptRun_t>& row, const FoundRecord& found, double staleHours) {
    Lines lines;
    if (row) {
        addRow(lines, *row, staleHours);
    } else {
        addStart(lines, *found.record);
    }
    lines.add("input", found.record && found.record->input ? *found.record->input : row ? row->input : "");
    if (found.record) {
        addRecord(lines, *found.record);
    } else {
        lines.add("record", "none: " + found.problem);
    }
    writeResult(lines.text());
}

void writeAsJson(const std::optional<TScriptRun_t>& row, const FoundRecord& found, double staleHours) {
    Json json = {{"row", row ? jsonOf(RunView(*row, staleHours)) : Json()},
                 {"record", found.record ? jsonOf(*found.record) : Json()}};
    if (!found.record) json["recordProblem"] = found.problem;
    writeJson(json);
}

}  // namespace

ExitCode showRun(const RecordOptions& options) {
    TScriptRecords journal;
    openRecords(journal, options.database);
    const std::optional<TScriptRun_t> row = findRun(journal, options.run);
    RunRecords records(journal.getDbName());
    const FoundRecord found = row ? records.find(*row) : records.findByNumber(options.run);
    if (!row && !found.record)
        throw Failure(ExitCode::kUsage,
                      "the journal of " + std::string(journal.getDbName()) + " has no run " +
                          std::to_string(options.run) + ", and there is no record of one",
                      "tscript journal lists the runs.");
    (options.json ? writeAsJson : writeText)(row, found, options.staleHours);
    return ExitCode::kDone;
}
