#include "run/FailureReport.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "installation/Installation.h"
#include "record/RunRecord.h"
#include "run/CauseDiagnosis.h"
#include "run/FailurePlace.h"

namespace {

class ReportWriter {
  public:
    explicit ReportWriter(const DVUCause_t& cause) : m_cause(cause) {}

    void addServer(const std::string& database) {
        add("server", database.empty() ? m_cause.server : configuredServer(database));
        add("database", database);
    }
    void addPlace(const ScriptRequest& request, const RunResult& result);
    void addMessage();
    void addData(bool scriptRan, ScriptKind kind);
    void addSilentRun() {
        add("data", "unknown: nothing shows that a statement has run");
        add("journal", "the run is recorded as succeeded, since the tool ended with exit code 0");
    }
    void addJournal(const std::string& output) {
        const auto holds = [&](const char* message) { return output.find(message) != output.npos; };
        if (holds("Failed to record tscript end time") || holds("Failed to create output File"))
            return add("journal",
                       "the run stays open (status running); docs/operations.md says how to close it");
        if (holds("Failed to record tscript start time") || holds("most likely for lack of memory"))
            add("journal", "the run may be open (tscript journal --status running)");
    }
    void addNext(const std::string& advice) { add("next", advice); }
    FailureReport take() { return std::move(m_report); }

  private:
    void add(const char* name, const std::string& value) {
        if (value.empty()) return;
        addLine(name, value);
        m_report.json[name] = value;
    }
    void addLine(const char* name, const std::string& value) {
        constexpr std::size_t kWidth = 11;
        std::string label = name;
        label.resize(std::max(kWidth, label.size() + 1), ' ');
        m_report.text += "  " + label + value + "\n";
    }
    void addPackagePlaces(const std::vector<FailurePlace>& places);

    const DVUCause_t& m_cause;
    std::size_t m_batch = 0;  // 0: unknown
    FailureReport m_report;
};

void ReportWriter::addPackagePlaces(const std::vector<FailurePlace>& places) {
    const std::string line = "line " + std::to_string(m_cause.line);
    std::string text;
    Json list = Json::array();
    for (const FailurePlace& place : places) {
        text += (text.empty() ? "" : ", or ") + ("batch " + std::to_string(place.batch)) + ", " + line +
                " (line " + std::to_string(place.packageLine) + " of the package, empty lines not counted)";
        list.push_back({{"batch", place.batch},
                        {"line", m_cause.line},
                        {"packageLine", place.packageLine},
                        {"statement", place.statement}});
    }
    addLine("where", text + (places.size() > 1 ? "; the output does not show which" : ""));
    if (places.size() == 1) {
        addLine("statement", places.front().statement);
        m_batch = places.front().batch;
    }
    m_report.json["places"] = std::move(list);
}

void ReportWriter::addPlace(const ScriptRequest& request, const RunResult& result) {
    if (!m_cause.procedure.empty()) add("procedure", m_cause.procedure);
    if (m_cause.line == 0) return add("where", causePlaceName(m_cause.where));
    m_report.json["line"] = m_cause.line;
    const bool isInPackage = result.kind == ScriptKind::kPackage && m_cause.procedure.empty();
    const std::vector<FailurePlace> places =
        isInPackage ? possiblePlaces(packageFile(request.name).string(), m_cause.line,
                                     {m_cause.text, result.output, request.parameters})
                    : std::vector<FailurePlace>();
    if (!places.empty()) return addPackagePlaces(places);
    addLine("where", "line " + std::to_string(m_cause.line) +
                         (m_cause.procedure.empty() ? " of the batch, or of a procedure that it calls"
                                                    : " of the procedure"));
}

void ReportWriter::addMessage() {
    if (m_cause.serverError != 0) {
        addLine("message", "Msg " + std::to_string(m_cause.serverError) + ", level " +
                               std::to_string(m_cause.severity) + ", state " + std::to_string(m_cause.state));
        m_report.json["message"] = m_cause.serverError;
        m_report.json["severity"] = m_cause.severity;
        m_report.json["state"] = m_cause.state;
    }
    add("sqlState", m_cause.sqlState);
    add("subject", m_cause.subject);
    if (m_cause.systemError != 0) add("system", std::strerror(m_cause.systemError));
    if (m_cause.signal != 0) add("signal", std::to_string(m_cause.signal));
    add("text", m_cause.text);
}

void ReportWriter::addData(bool scriptRan, ScriptKind kind) {
    if (!scriptRan) return add("data", "unchanged: no statement of the script has run");
    if (m_cause.serverError == 0) return add("data", "unknown: the server has reported no failed statement");
    const std::string before =
        kind != ScriptKind::kPackage ? "the statements before it have run"
        : m_batch == 1               ? "no earlier batch; the statements before it in its batch have run"
        : m_batch == 2               ? "batch 1 has run, and the statements before it in batch 2"
        : m_batch > 2
            ? "batches 1 to " + std::to_string(m_batch - 1) + " have run, and the statements before it"
            : "all batches before it have run, and the statements before it in its batch";
    add("before", before);
    add("data", "the changes of what has run remain, unless the script had begun a transaction");
}

FailureReport describeJournal(const RunResult& result) {
    const DVUCause_t none;
    ReportWriter report(none);
    report.addJournal(result.output);
    return report.take();
}

}  // namespace

FailureReport describeFailure(const ScriptRequest& request, const RunResult& result,
                              const Diagnosis& diagnosis) {
    const DVUCause_t* cause = mainCause(result.causes);
    if (cause == nullptr) return describeJournal(result);
    ReportWriter report(*cause);
    report.addServer(result.database);
    if (diagnosis.scriptRan) report.addPlace(request, result);
    report.addMessage();
    result.isToolSilent ? report.addSilentRun() : report.addData(diagnosis.scriptRan, result.kind);
    report.addJournal(result.output);
    report.addNext(diagnosis.advice);
    return report.take();
}
