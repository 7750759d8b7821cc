#include "installation/ServerQuery.h"

#include <string_view>

#include "DVUtilities/Diagnostics.h"
#include "installation/Account.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

constexpr char kSeparator = '\x12';  // of the columns of a row text

std::vector<std::string> columnsOf(std::string_view row, std::size_t number) {
    std::vector<std::string> values;
    while (values.size() < number) {
        const std::size_t end = row.find(kSeparator);
        values.emplace_back(row.substr(0, end));
        row = end == row.npos ? std::string_view() : row.substr(end + 1);
    }
    return values;
}

}  // namespace

void connectToServer(DBBase& db, const std::string& account) {
    requireStore();
    if (!openAccount(db, suiteDatabase(account))) throw diagnoseDatabase(account).failure();
}

std::string withCauses(std::string what, const DBBase& db) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    for (const DVUCause_t& cause : causes) what += "\n" + cause.text;
    return what;
}

void throwQueryFailure(const DBBase& db) {
    requireQueryTool();
    throw Failure(ExitCode::kScriptFailed, withCauses(db.getErrorMsg(), db),
                  "See the server's message in " + sessionLogFile().string() + ".");
}

std::vector<std::vector<std::string>> rowsOf(DBBase& db, const std::string& sql, int columns) {
    std::vector<std::string> texts;
    if (!db.GetDBValueList(sql.c_str(), texts, columns))
        throw Failure(ExitCode::kScriptFailed, withCauses("the query failed", db));
    std::vector<std::vector<std::string>> rows;
    for (const std::string& text : texts) rows.push_back(columnsOf(text, static_cast<std::size_t>(columns)));
    return rows;
}
