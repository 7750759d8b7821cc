#include "backup/LastBackup.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string_view>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "backup/BackupAges.h"
#include "backup/ServerScript.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/Listing.h"
#include "console/MetricsText.h"
#include "console/TextWidth.h"
#include "console/Times.h"
#include "installation/ServerQuery.h"

namespace {

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

// Exit codes of a Nagios check.
enum class NagiosState { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };
constexpr const char* kNagiosNames[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};

// Writes one line in the form of a Nagios plugin: state, text and, after "|", performance data.
ExitCode writeNagios(NagiosState state, const std::string& text, const std::string& data) {
    std::string line = withoutControls(text);
    std::replace(line.begin(), line.end(), '|', '_');
    writeResult(std::string("BACKUP ") + kNagiosNames[static_cast<int>(state)] + " - " + line +
                (data.empty() ? std::string() : " |" + data));
    return static_cast<ExitCode>(state);
}

struct Limits {
    std::int64_t warning = kNoLimit;
    std::int64_t critical = kNoLimit;
};

// A database without a backup is over every limit that is set.
bool isOver(const BackupAge& age, std::int64_t limit) {
    return limit != kNoLimit && (!age.seconds || *age.seconds > limit);
}

std::string ageText(const BackupAge& age) {
    return age.seconds ? spanText(*age.seconds) : "never";
}

Limits limitsOf(const LastBackupOptions& options) {
    Limits limits;
    if (!options.olderThan.empty()) limits.critical = parseSpan(options.olderThan);
    if (!options.warnAfter.empty()) limits.warning = parseSpan(options.warnAfter);
    if (options.nagios && limits.critical == kNoLimit)
        throw Failure(ExitCode::kUsage, "--nagios needs the age that is critical",
                      "Give it: --older-than 26h");
    if (limits.warning != kNoLimit && !options.nagios)
        throw Failure(ExitCode::kUsage, "--warn-after is for --nagios only");
    return limits;
}

[[noreturn]] void throwUnknownDatabase(const std::string& name) {
    throw Failure(ExitCode::kUsage, "the server has no database '" + name + "'",
                  "tscript db list lists them.");
}

std::vector<BackupAge> agesOf(const LastBackupOptions& options) {
    DBBase db(/*flag=*/false);
    connectToServer(db, *options.account);
    std::vector<BackupAge> ages = backupAges(db);
    if (options.name.empty()) return ages;
    std::erase_if(ages, [&](const BackupAge& age) {
        return strcasecmp(age.database.c_str(), options.name.c_str()) != 0;
    });
    if (ages.empty()) throwUnknownDatabase(options.name);
    return ages;
}

void requireDatabase(DBBase& db, const std::string& name) {
    if (rowsOf(db, "SELECT name FROM master.sys.databases WHERE name = '" + name + "'", 1).empty())
        throwUnknownDatabase(name);
}

// ---- Nagios --------------------------------------------------------------------------------------------

// 'name'=seconds;warning;critical
std::string performanceData(const BackupAge& age, const Limits& limits) {
    std::string label;
    for (const char c : withoutControls(age.database))
        label += c == '\'' ? std::string("''") : std::string(1, c == '=' || c == '|' ? '_' : c);
    const std::string warning = limits.warning == kNoLimit ? std::string() : std::to_string(limits.warning);
    return "'" + label + "'=" + std::to_string(age.seconds.value_or(0)) + "s;" + warning + ";" +
           std::to_string(limits.critical);
}

ExitCode writeNagiosCheck(const std::vector<BackupAge>& ages, const Limits& limits) {
    NagiosState state = NagiosState::kOk;
    std::string findings;
    std::string data;
    std::size_t bad = 0;
    for (const BackupAge& age : ages) {
        if (age.seconds) data += " " + performanceData(age, limits);
        const bool isCritical = isOver(age, limits.critical);
        if (!isCritical && !isOver(age, limits.warning)) continue;
        if (isCritical || state == NagiosState::kOk)
            state = isCritical ? NagiosState::kCritical : NagiosState::kWarning;
        findings += (bad++ == 0 ? ": " : ", ") + age.database + " " + ageText(age);
    }
    return writeNagios(state,
                       std::to_string(bad) + " of " + std::to_string(ages.size()) +
                           " database(s) without a recent backup" + findings,
                       data);
}

// ---- Other forms ---------------------------------------------------------------------------------------

Json jsonOf(const BackupAge& age, bool isTooOld) {
    return {{"name", age.database},
            {"lastBackup", age.seconds ? Json(age.finish) : Json()},
            {"ageSeconds", age.seconds ? Json(*age.seconds) : Json()},
            {"tooOld", isTooOld}};
}

void writeList(const std::vector<BackupAge>& ages, const Limits& limits, bool json) {
    Listing table({{"DATABASE", true}, {"LAST BACKUP"}, {"AGE"}});
    std::vector<Cells> rows;
    Json list = Json::array();
    for (const BackupAge& age : ages) {
        const bool isTooOld = isOver(age, limits.critical);
        if (json) list.push_back(jsonOf(age, isTooOld));
        rows.push_back({{age.database},
                        {age.finish.empty() ? "-" : age.finish},
                        {ageText(age), isTooOld ? Shade::kBad : Shade::kNone}});
    }
    if (json) return writeJson(list);
    table.writePage(rows);
}

ExitCode showAges(const LastBackupOptions& options, const Limits& limits) {
    const std::vector<BackupAge> ages = agesOf(options);
    if (options.prometheus) {
        MetricsText metrics;
        addBackupMetrics(metrics, ages, std::time(nullptr));
        writeResult(metrics.text());
    } else {
        writeList(ages, limits, options.json);
    }
    for (const BackupAge& age : ages)
        if (isOver(age, limits.critical)) return ExitCode::kScriptFailed;
    return ExitCode::kDone;
}

// One database, with the date and the days that the library reports.
ExitCode showOne(const LastBackupOptions& options) {
    DBBase db(/*flag=*/false);
    connectToServer(db, *options.account);
    std::array<char, 256> days{};
    std::array<char, 256> date{};
    if (!db.getLastBackUpInfo(options.name.c_str(), days.data(), date.data())) throwQueryFailure(db);
    const bool never = std::string_view(days.data()) == "NULL";
    if (never) requireDatabase(db, options.name);  // the library does not distinguish the cases
    if (options.json) {
        writeJson({{"name", options.name},
                   {"lastBackup", never ? Json() : Json(date.data())},
                   {"daysAgo", never ? Json() : Json(std::strtol(days.data(), nullptr, 10))}});
    } else {
        writeResult(never ? "never" : std::string(date.data()) + ", " + days.data() + " day(s) ago");
    }
    return ExitCode::kDone;
}

}  // namespace

int reportUnknownBackups(const std::string& reason) {
    return static_cast<int>(writeNagios(NagiosState::kUnknown, reason, /*data=*/{}));
}

ExitCode showLastBackup(const LastBackupOptions& options) {
    const Limits limits = limitsOf(options);
    if (!options.name.empty()) checkServerName("the database name", options.name);
    if (options.nagios) return writeNagiosCheck(agesOf(options), limits);
    const bool isPlain = !options.prometheus && limits.critical == kNoLimit;
    return isPlain && !options.name.empty() ? showOne(options) : showAges(options, limits);
}
