#include "script/ProcedureCommands.h"

#include <strings.h>

#include <string>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "console/NearestWord.h"
#include "run/ProcedureArguments.h"
#include "script/Obstacles.h"
#include "script/RunReport.h"

namespace {

// The request with the named values (-p) as T-SQL behind the arguments.
ScriptOptions withNamedArguments(const ScriptOptions& options) {
    ScriptOptions named = options;
    if (options.request.parameters.empty()) return named;
    std::string& text = named.request.arguments;
    text += (text.empty() ? "" : ", ") +
            namedArguments(options.request.name, options.request.database, options.request.parameters);
    checkRequest(named.request);
    return named;
}

// The catalogue's procedure whose name is most similar; empty if there is none, or one of that name.
std::string similarProcedure(const ScriptRequest& request) {
    constexpr int kMostScripts = 1000;
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    std::vector<std::string> names;
    if (!records.open(request.database.c_str()) || !records.listScripts("", 0, kMostScripts, entries))
        return {};
    for (const TScriptEntry_t& entry : entries)
        if ((entry.type & kTScriptPermanent) != 0) names.push_back(entry.name);
    const std::string nearest = nearestWord(names, request.name);
    return strcasecmp(nearest.c_str(), request.name.c_str()) == 0 ? std::string() : nearest;
}

ExitCode runFoundProcedure(const ScriptOptions& given) {
    const ScriptOptions options = withNamedArguments(given);
    if (options.dryRun) return showSql(options, previewProcedure(options.request));
    return runAndReport(options, ScriptKind::kProcedure, Operation::kExecute);
}

}  // namespace

ExitCode runProcedure(const ScriptOptions& options) {
    try {
        return runFoundProcedure(options);
    } catch (const Failure& failure) {
        if (failure.code() != ExitCode::kUsage) throw;
        const std::string similar = similarProcedure(options.request);
        if (similar.empty()) throw;
        throw Failure(failure.code(), failure.what(), "Did you mean " + similar + "?\n" + failure.advice());
    }
}
