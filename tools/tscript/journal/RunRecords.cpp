#include "journal/RunRecords.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "HostSettings.h"
#include "installation/Installation.h"
#include "record/HostOfRuns.h"
#include "record/RecordSettings.h"

namespace {

// Databases with local times: rows from the other half of the year are read with a shift.
constexpr std::int64_t kSummerTime = 3600;

bool isSameName(const std::string& one, const std::string& other) {
    return strcasecmp(one.c_str(), other.c_str()) == 0;
}

bool isSameStart(std::int64_t one, std::int64_t other) {
    const std::int64_t distance = std::llabs(one - other);
    return distance <= kTolerance || std::llabs(distance - kSummerTime) <= kTolerance;
}

}  // namespace

std::string causeText(const DVUCause_t& cause) {
    std::string text = causePlaceName(cause.where);
    if (cause.serverError != 0)
        text += ", Msg " + std::to_string(cause.serverError) + ", level " + std::to_string(cause.severity) +
                ", state " + std::to_string(cause.state);
    if (!cause.procedure.empty()) text += ", procedure " + cause.procedure;
    if (cause.line != 0) text += ", line " + std::to_string(cause.line);
    if (!cause.subject.empty()) text += ", " + cause.subject;
    if (cause.systemError != 0) text += std::string(", ") + std::strerror(cause.systemError);
    if (cause.signal != 0) text += ", signal " + std::to_string(cause.signal);
    return text + ": " + cause.text;
}

const DVUCause_t* mainCause(const RunRecord& record) {
    const auto& causes = record.causes;
    const auto message = std::find_if(causes.begin(), causes.end(),
                                      [](const DVUCause_t& cause) { return cause.serverError != 0; });
    return message != causes.end() ? &*message : causes.empty() ? nullptr : &causes.front();
}

RunRecords::RunRecords(const std::string& database)
    : m_database(database),
      m_server(configuredServer(database)),
      m_host(hostName()),
      m_installation(installationFolder(/*instance=*/"")),
      m_path(hostlayer::hostSetting(record_setting::kFolder, "")) {
    if (m_path.empty()) {
        m_folderProblem = "the store names no folder for records (host.runRecords)";
        return;
    }
    m_folder.emplace(m_path, RecordFolder::Access::kRead);
    if (!m_folder->isOpen()) {
        m_folderProblem = m_path + ": " + m_folder->problem();
    } else {
        m_names = m_folder->names();
    }
}

bool RunRecords::isOfThisDatabase(const RunRecord& record) const {
    const bool isSameServer = !m_server.empty() && isSameName(record.server, m_server);
    return isSameServer || (record.host == m_host && record.installation == m_installation);
}

template <typename Matches>
FoundRecord RunRecords::newest(int run, Matches matches) {
    if (!m_folderProblem.empty()) return {std::nullopt, m_folderProblem};
    FoundRecord found;
    for (const std::string& name : RecordFolder::namesOf(m_names, m_database, run)) {
        RunRecord record;
        const bool isRead = m_folder->read(name, record);
        const bool isThisRow = isRead && record.run == run && isSameName(record.database, m_database);
        if (!isRead) {
            found.problem = m_path + "/" + name + ": " + m_folder->problem();
        } else if (isThisRow && !isOfThisDatabase(record)) {
            found.problem = "the record of this number is of another installation, " + record.installation +
                            " on " + record.host;
        } else if (isThisRow && matches(record)) {
            return {std::move(record), {}};
        }
    }
    if (found.problem.empty()) found.problem = "the run left no record, or it was deleted";
    return found;
}

FoundRecord RunRecords::find(const TScriptRun_t& run) {
    constexpr std::int64_t kPerSecond = 1000;
    return newest(run.id, [&](const RunRecord& record) {
        return isSameName(record.script, run.name) && isSameStart(record.start / kPerSecond, run.startTime);
    });
}

FoundRecord RunRecords::findByNumber(int run) {
    return newest(run, [](const RunRecord&) { return true; });
}
