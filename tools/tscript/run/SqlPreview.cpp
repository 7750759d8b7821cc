#include "run/SqlPreview.h"

#include <string_view>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "console/Console.h"
#include "installation/Diagnosis.h"
#include "system/Interrupt.h"

namespace {

[[noreturn]] void throwDiagnosed(const ScriptRequest& request, const std::string& database,
                                 const std::string& error) {
    const Diagnosis diagnosis = diagnoseRun(request.name, database, error);
    writeNote(error);
    throw diagnosis.failure();
}

std::string packageSql(const ScriptRequest& request, const std::vector<std::string>& values,
                       std::string& database) {
    std::string sql;
    std::string error;
    database = request.database;
    const auto preview = [&] {
        const InterruptDelay delay;
        return TS_PreviewTscript_SQL(request.name.c_str(), &database, &values, &sql, &error);
    };
    if (!preview()) throwDiagnosed(request, database, error);
    return sql;
}

std::size_t countPlaceholders(std::string_view sql) {
    constexpr std::string_view kPlaceholder = "%s";
    std::size_t count = 0;
    for (std::size_t at = 0; (at = sql.find(kPlaceholder, at)) != sql.npos; at += kPlaceholder.size())
        ++count;
    return count;
}

}  // namespace

SqlPreview previewPackage(const ScriptRequest& request) {
    SqlPreview preview;
    // Counted without values, because a value may hold "%s" as well.
    preview.placeholders = countPlaceholders(packageSql(request, {}, preview.database));
    preview.sql = packageSql(request, request.parameters, preview.database);
    return preview;
}

SqlPreview previewProcedure(const ScriptRequest& request) {
    SqlPreview preview;
    preview.kind = ScriptKind::kProcedure;
    preview.database = request.database;
    std::string error;
    if (!TS_PreviewTscript_SP(request.name.c_str(), request.arguments.c_str(), &preview.sql, &error))
        throwDiagnosed(request, request.database, error);
    return preview;
}
