// Previews of what a script would run, and runs in a database of the caller's choice.
#include "DVUtilities/TScript.h"
#include "DVUtilities/TScriptRecords.h"
#include "state/Attempt.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"
#include "steps/PackageLoader.h"
#include "steps/ProcedureRun.h"
#include "steps/SqlFileRun.h"
#include "text/PlaceholderFiller.h"
#include "text/ScriptMessages.h"
#include "text/ValueCheck.h"

namespace {

using Values = std::vector<std::string>;

Values valuesOf(const Values* parameters) {
    return parameters != nullptr ? *parameters : Values();
}

// Reports the first value that may not be filled in.
bool acceptValues(const ScriptParts& parts, const Values& values, unsigned int options) {
    if ((options & kTScriptToolCommandsInValues) != 0) return true;
    const std::string body = blankPercentSignsInComments(parts.package.scriptBody);
    const std::string problem = valueProblem(body, values);
    return problem.empty() || ScriptReport(parts).fail(messages::kRefusedValue + problem);
}

bool runIn(TScript& script, const char* scriptName, std::string& dbName, const Values& values,
           const char* recordedInput, unsigned int options, std::string& output) {
    if (!script.initialize(scriptName)) {
        output = script.getErrorMessage();
        return false;
    }
    const ScriptParts parts = partsOf(script);
    const auto accept = [&] { return acceptValues(parts, values, options); };
    const bool done = PackageLoader(parts, dbName).run(nullptr, accept) && ScriptReport(parts).attempted([&] {
        return SqlFileRun(parts, values, recordedInput, QuoteRule::kEvery).run();
    });
    if (*script.getDbName() != '\0') dbName = script.getDbName();
    output = script.getOutput();
    return done;
}

bool preview(TScript& script, const char* scriptName, std::string& dbName, const Values& values,
             unsigned int options, std::string& sql) {
    if (!script.initialize(scriptName)) return false;
    const ScriptParts parts = partsOf(script);
    PackageLoader loader(parts, dbName);
    if (!loader.read(nullptr)) return false;
    dbName = loader.databaseName();
    return acceptValues(parts, values, options) &&
           SqlFileRun(parts, values, /*recordedInput=*/nullptr, QuoteRule::kEvery).preview(sql);
}

}  // namespace

bool TS_ExecTscript_SQL_In(const char* scriptName, std::string* dbName, const Values* parameters,
                           const char* recordedInput, std::string* logFile, std::string* output,
                           unsigned int options) {
    if (dbName == nullptr || logFile == nullptr || output == nullptr) return false;
    return attempted(*output, [&] {
        TScript script;
        output->clear();
        logFile->clear();
        const bool done =
            runIn(script, scriptName, *dbName, valuesOf(parameters), recordedInput, options, *output);
        *logFile = script.getLogFile();
        return done;
    });
}

bool TS_PreviewTscript_SQL(const char* scriptName, std::string* dbName, const Values* parameters,
                           std::string* sql, std::string* errorText, unsigned int options) {
    if (dbName == nullptr || sql == nullptr || errorText == nullptr) return false;
    return attempted(*errorText, [&] {
        TScript script;
        sql->clear();
        errorText->clear();
        if (preview(script, scriptName, *dbName, valuesOf(parameters), options, *sql)) return true;
        const bool hasOutput = *script.getOutput() != '\0';
        *errorText = hasOutput ? script.getOutput() : script.getErrorMessage();
        return false;
    });
}

bool TS_PreviewTscript_SP(const char* scriptName, const char* arguments, std::string* sql,
                          std::string* errorText) {
    if (sql == nullptr || errorText == nullptr) return false;
    return attempted(*errorText, [&] {
        TScript script;
        sql->clear();
        errorText->clear();
        constexpr int kNoOptions = 0;
        if (script.initialize(scriptName) &&
            ProcedureRun(partsOf(script), kExecuteProcedure, arguments, /*recordedInput=*/nullptr, kNoOptions)
                .preview(*sql))
            return true;
        *errorText = script.getErrorMessage();
        return false;
    });
}
