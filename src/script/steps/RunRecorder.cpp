#include "steps/RunRecorder.h"

#include <errno.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <string_view>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "FX.h"
#include "VtSettings.h"
#include "parts/DatabaseParts.h"
#include "record/HostOfRuns.h"
#include "record/RecordFolder.h"
#include "record/Sha256.h"
#include "text/CatalogueSql.h"
#include "text/SqlQuotes.h"

namespace {

constexpr std::size_t kMostInput = 65536;  // bytes

std::string setting(const char* name) {
    std::string text;
    if (VtSetting != nullptr) VtSetting(name, &text);
    return text;
}

// Leaves the number unchanged unless the setting is one as a whole.
void readNumber(const char* name, std::size_t& number) {
    const std::string text = setting(name);
    const char* const end = text.data() + text.size();
    std::size_t read = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, read);
    if (error == std::errc() && stop == end) number = read;
}

std::int64_t now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string userName() {
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    const uid_t user = ::geteuid();
    ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_name : std::to_string(user);
}

}  // namespace

RecordSettings recordSettings() {
    RecordSettings settings;
    settings.folder = setting(record_setting::kFolder);
    if (settings.folder.empty()) return settings;
    readNumber(record_setting::kOutput, settings.outputBytes);
    settings.outputBytes = std::min(settings.outputBytes, RecordSettings::kMostOutput);
    readNumber(record_setting::kKeep, settings.keep);
    readNumber(record_setting::kDays, settings.days);
    settings.days = std::min(settings.days, RecordSettings::kMostDays);
    return settings;
}

RunRecorder::RunRecorder(const ScriptParts& script) : m_script(script), m_settings(recordSettings()) {}

void RunRecorder::noteStart(const char* input) {
    if (!isOn()) return;
    m_record.sha256 = m_script.entry.fromPackage ? m_script.package.fileHash : procedureHash();
    if (input != nullptr) m_record.input = withoutMiddle(input, kMostInput);
    m_outputStart = m_script.messages.output.size();
    m_record.start = now();
}

// Empty if the login may not see the definition.
std::string RunRecorder::procedureHash() const {
    const std::string sql = FXString::Format(
        catalogue_sql::kDefinition, quotesDoubled(*m_script.session.db, m_script.session.scriptName).c_str());
    std::vector<std::string> rows;
    const bool isRead = m_script.session.db->GetDBValueList(sql.c_str(), rows, /*columns=*/1);
    return isRead && !rows.empty() && !rows.front().empty() ? sha256Of(rows.front()) : std::string();
}

void RunRecorder::write(bool succeeded) noexcept {
    if (isOn()) guarded([&] { writeRecord(succeeded); });
}

void RunRecorder::writeRecord(bool succeeded) {
    describe(succeeded);
    RecordFolder folder(m_settings.folder, RecordFolder::Access::kWrite);
    if (!folder.isOpen() || !folder.write(m_record))
        return reportCause({.where = kDVUFile,
                            .systemError = folder.systemError(),
                            .subject = m_settings.folder,
                            .text = "The run record was not written: " + folder.problem()});
    folder.prune(m_settings.keep, m_settings.days, m_record.end);
}

void RunRecorder::describe(bool succeeded) {
    RunRecord& record = m_record;
    record.end = now();
    record.succeeded = succeeded;
    if (record.input) {
        record.run = m_script.run.execId;
        record.journalUser = m_script.run.userId;
    }
    record.script = m_script.session.scriptName;
    record.isPackage = m_script.entry.fromPackage;
    record.database = m_script.session.dbName;
    record.server = partsOf(*m_script.session.db).account.serverInstance;
    record.host = hostName();
    record.installation = installationFolder(m_script.session.instanceName.c_str());
    record.user = userName();
    record.program = program_invocation_short_name;
    record.process = ::getpid();
    if (!succeeded) record.causes = m_collector.causes();
    const std::string_view output = std::string_view(m_script.messages.output).substr(m_outputStart);
    record.output = withoutMiddle(output, m_settings.outputBytes);
    record.outputBytes = output.size();
    record.outputCut = output.size() > m_settings.outputBytes;
}
