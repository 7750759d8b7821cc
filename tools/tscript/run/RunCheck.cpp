#include "run/RunCheck.h"

#include <string.h>

#include <algorithm>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScriptRecords.h"
#include "installation/Account.h"
#include "installation/Components.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "package/Batches.h"
#include "package/Inspection.h"
#include "package/SiteCheck.h"

namespace {

constexpr std::size_t kPrefixLines = 2;  // that a run writes before the package's statements

// A connection whose batches do not execute, as long as the object lives.
class CheckingConnection {
  public:
    CheckingConnection(const std::string& database, bool compiles)
        : m_db(/*flag=*/false), m_setting(compiles ? "SET NOEXEC " : "SET PARSEONLY ") {
        if (!openAccount(m_db, suiteDatabase(database)) || !m_db.Open(nullptr, nullptr, nullptr) ||
            !m_db.ExecuteQuery((m_setting + "ON").c_str()))
            throw diagnoseDatabase(database).failure();
    }
    ~CheckingConnection() {
        m_db.ExecuteQuery((m_setting + "OFF").c_str());
        m_db.Close();
    }
    CheckingConnection(const CheckingConnection&) = delete;
    CheckingConnection& operator=(const CheckingConnection&) = delete;

    // The server's first error; nothing if it accepts the batch.
    std::optional<DVUCause_t> errorOf(const std::string& batch) {
        if (m_db.ExecuteQuery(batch.c_str())) return std::nullopt;
        std::vector<DVUCause_t> causes;
        DVU_GetCauses(m_db, causes);
        for (const DVUCause_t& cause : causes)
            if (cause.serverError != 0) return cause;
        return causes.empty() ? DVUCause_t{.text = "the statement failed"} : causes.front();
    }

  private:
    DBBase m_db;
    std::string m_setting;
};

// The lines of the SQL that would run, with their places in the package; without places if a value with line
// breaks moves them.
std::vector<PackageLine> filledLines(const std::string& sql, const std::string& packageFile) {
    std::vector<PackageLine> lines;
    std::size_t number = 0;
    for (std::size_t at = 0; at < sql.size();) {
        const std::size_t end = std::min(sql.find('\n', at), sql.size());
        if (++number > kPrefixLines && end > at) lines.push_back({0, sql.substr(at, end - at)});
        at = end + 1;
    }
    const std::vector<PackageLine> plain = statementLines(packageFile);
    if (plain.size() == lines.size())
        for (std::size_t i = 0; i < lines.size(); ++i) lines[i].number = plain[i].number;
    return lines;
}

// The message behind the names that the driver puts before it: "[FreeTDS][SQL Server]".
std::string withoutDriver(std::string text) {
    while (text.rfind('[', 0) == 0 && text.find(']') != text.npos) text.erase(0, text.find(']') + 1);
    return text;
}

// Number of batches that are not sent to the server.
struct Unsent {
    std::size_t withVariables = 0;
    std::size_t switchingCheck = 0;

    std::size_t all() const { return withVariables + switchingCheck; }
    std::string text() const {
        std::string reasons;
        if (withVariables > 0)
            reasons = ", not sent " + std::to_string(withVariables) + " with variables of the query tool";
        if (switchingCheck > 0)
            reasons += ", not sent " + std::to_string(switchingCheck) + " with NOEXEC or PARSEONLY";
        return reasons;
    }
};

// The server would not understand variables, which the query tool replaces in a run.
bool hasVariable(const PackageBatch& batch) {
    return batch.text().find("$(") != std::string::npos;
}

// The server obeys SET NOEXEC and SET PARSEONLY during a check as well: behind OFF it executes statements.
bool switchesCheck(const PackageBatch& batch) {
    const std::string text = batch.text();
    return strcasestr(text.c_str(), "NOEXEC") != nullptr || strcasestr(text.c_str(), "PARSEONLY") != nullptr;
}

Unsent removeUnsent(std::vector<PackageBatch>& batches, const PackageContent& content) {
    Unsent unsent;
    if (needsToolVariables(content.description) || needsToolVariables(content.developerName))
        unsent.withVariables = std::erase_if(batches, hasVariable);
    unsent.switchingCheck = std::erase_if(batches, switchesCheck);
    return unsent;
}

struct BatchError {
    std::size_t batch;
    std::size_t line;  // in the package's plain text; 0: unknown
    DVUCause_t cause;

    std::string text() const {
        std::string place = line > 0 ? "line " + std::to_string(line) + " (batch " : "batch ";
        place += std::to_string(batch) + (line > 0 ? "): " : ": ");
        if (cause.serverError != 0) place += "Msg " + std::to_string(cause.serverError) + ": ";
        return place + cause.text;
    }
};

std::vector<BatchError> errorsOf(const std::vector<PackageBatch>& batches, const std::string& database,
                                 bool compiles) {
    CheckingConnection connection(database, compiles);
    std::vector<BatchError> errors;
    for (const PackageBatch& batch : batches) {
        std::optional<DVUCause_t> cause = connection.errorOf(batch.text());
        if (!cause) continue;
        cause->text = withoutDriver(cause->text);
        const auto index = static_cast<std::size_t>(std::max(cause->line, 1)) - 1;
        errors.push_back({batch.number, batch.lines[std::min(index, batch.lines.size() - 1)].number, *cause});
    }
    return errors;
}

std::string catalogueText(const std::string& script, const std::string& database) {
    constexpr int kRows = 100;
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    if (!records.open(database.c_str())) throw diagnoseDatabase(database).failure();
    if (!records.listScripts(script.c_str(), 0, kRows, entries))
        throw Failure(ExitCode::kInstallation, records.getErrorMessage(),
                      "tscript schema check shows whether catalogue and journal are in the database.");
    for (const TScriptEntry_t& entry : entries)
        if ((entry.type & kTScriptPackageBits) != 0 && entry.name == script)
            return "entry " + std::to_string(entry.id) + " of " + records.getDbName();
    return std::string("no entry yet; the first run adds it to ") + records.getDbName();
}

std::string siteText(const PackageContent& content, bool isUnknown) {
    const std::string here = isUnknown ? "; which one this is cannot be read" : ", this one";
    if (content.plexumId != 0) return std::to_string(content.plexumId) + here;
    return content.guid.empty() ? "any" : "the NQ2 database " + content.guid + (isUnknown ? here : "");
}

std::string databaseOf(const SqlPreview& preview) {
    if (!preview.database.empty()) return preview.database;
    const std::vector<const SuiteDatabase*> installed = installedDatabases();
    return installed.empty() ? "Dorvas" : installed.front()->name;
}

std::optional<Failure> failureOf(const std::string& script, const std::optional<SiteFault>& foreign,
                                 bool isUnknown, const std::vector<BatchError>& errors) {
    if (foreign) return Failure(ExitCode::kRefused, script + " " + foreign->what, foreign->advice);
    if (isUnknown)
        return Failure(ExitCode::kInstallation,
                       script + " is bound to a site, and which one this is cannot be read",
                       "tscript doctor shows why.");
    if (errors.empty()) return std::nullopt;
    return Failure(ExitCode::kScriptFailed,
                   "the server refuses " + std::to_string(errors.size()) + " batch(es) of " + script);
}

}  // namespace

RunCheck checkRun(const ScriptRequest& request, const SqlPreview& preview, bool compiles) {
    const std::string file = packageFile(request.name).string();
    const PackageContent content = inspectPackage(file).content;
    const std::string database = databaseOf(preview);
    const std::string catalogue = catalogueText(request.name, database);
    Site thisSite;
    const std::optional<SiteFault> foreign = siteFault(content, thisSite);
    const bool isUnknown = isSiteUnknown(content, thisSite);
    const std::string site = foreign ? foreign->what : siteText(content, isUnknown);
    std::vector<PackageBatch> batches = divideStatements(filledLines(preview.sql, file)).batches;
    const Unsent unsent = removeUnsent(batches, content);
    const std::vector<BatchError> errors = errorsOf(batches, database, compiles);

    RunCheck check;
    check.failure = failureOf(request.name, foreign, isUnknown, errors);
    check.text = "package    " + file + ", authentic\n" + "values     " +
                 std::to_string(request.parameters.size()) + " of " + std::to_string(preview.placeholders) +
                 " placeholder(s)\nsite       " + site + "\ncatalogue  " + catalogue + "\nserver     " +
                 (compiles ? "compiled " : "parsed ") + std::to_string(batches.size()) + " batch(es) in " +
                 database + ", refused " + std::to_string(errors.size()) + unsent.text() + "\n";
    check.json = {{"script", request.name}, {"database", database},      {"catalogue", catalogue},
                  {"site", site},           {"batches", batches.size()}, {"notSent", unsent.all()}};
    Json list = Json::array();
    for (const BatchError& error : errors) {
        check.text += "           " + error.text() + "\n";
        list.push_back({{"batch", error.batch},
                        {"line", error.line},
                        {"number", error.cause.serverError},
                        {"text", error.cause.text}});
    }
    check.json["errors"] = list;
    check.json["exitCode"] = static_cast<int>(check.failure ? check.failure->code() : ExitCode::kDone);
    return check;
}
