#include "run/SqlPreview.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "console/Console.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "run/CauseDiagnosis.h"
#include "system/Interrupt.h"

namespace {

[[noreturn]] void throwDiagnosed(const ScriptRequest& request, const std::string& database,
                                 const std::string& error, const DVUCauses& causes) {
    RunResult result;
    causes.get(result.causes);
    const Diagnosis diagnosis = refined(diagnoseRun(request.name, database, error), result);
    writeNote(error);
    throw diagnosis.failure();
}

// Text that TS_PreviewTscript_SQL() returns.
struct PackageSql {
    bool isReadable = false;
    std::string database;
    std::string sql;
    std::string error;
};

PackageSql readPackage(const ScriptRequest& request, const std::vector<std::string>& values) {
    PackageSql package;
    package.database = request.database;
    const InterruptDelay delay;
    package.isReadable = TS_PreviewTscript_SQL(request.name.c_str(), &package.database, &values, &package.sql,
                                               &package.error, optionsOf(request));
    return package;
}

PackageSql packageSql(const ScriptRequest& request, const std::vector<std::string>& values) {
    const DVUCauses causes;
    PackageSql package = readPackage(request, values);
    if (!package.isReadable) throwDiagnosed(request, package.database, package.error, causes);
    return package;
}

std::size_t countPlaceholders(std::string_view sql) {
    constexpr std::string_view kPlaceholder = "%s";
    std::size_t count = 0;
    for (std::size_t at = 0; (at = sql.find(kPlaceholder, at)) != sql.npos; at += kPlaceholder.size())
        ++count;
    return count;
}

// The text behind the two lines that begin every run.
std::string_view bodyOf(std::string_view sql) {
    for (int line = 0; line < 2; ++line) sql.remove_prefix(std::min(sql.find('\n'), sql.size() - 1) + 1);
    return sql;
}

// The XML directive counts in the package's first line.
bool startsWithXmlDirective(std::string_view sql) {
    const std::string_view body = bodyOf(sql);
    return body.substr(0, body.find('\n')).find(":XML ON") != body.npos;
}

// Placeholders are counted without values, because a value may hold "%s" as well.
SqlPreview describe(const PackageSql& withoutValues) {
    SqlPreview preview;
    preview.database = withoutValues.database;
    preview.placeholders = countPlaceholders(withoutValues.sql);
    preview.isEmpty = bodyOf(withoutValues.sql).find_first_not_of(" \t\r\n") == std::string_view::npos;
    preview.isXml = startsWithXmlDirective(withoutValues.sql);
    return preview;
}

}  // namespace

std::optional<SqlPreview> peekPackage(const ScriptRequest& request) {
    std::error_code ignored;
    // A pipe could be read only once.
    if (!std::filesystem::is_regular_file(packageFile(request.name), ignored)) return std::nullopt;
    const PackageSql package = readPackage(request, {});
    return package.isReadable ? std::optional(describe(package)) : std::nullopt;
}

SqlPreview previewPackage(const ScriptRequest& request) {
    SqlPreview preview = describe(packageSql(request, {}));
    preview.sql = packageSql(request, request.parameters).sql;
    return preview;
}

SqlPreview previewProcedure(const ScriptRequest& request) {
    SqlPreview preview;
    preview.kind = ScriptKind::kProcedure;
    preview.database = request.database;
    std::string error;
    const DVUCauses causes;
    if (!TS_PreviewTscript_SP(request.name.c_str(), request.arguments.c_str(), &preview.sql, &error))
        throwDiagnosed(request, request.database, error, causes);
    return preview;
}
