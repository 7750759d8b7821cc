#include "DVUtilities/TScriptApi.h"

#include "DVUtilities/TScript.h"
#include "ExceptionGuard.h"
#include "state/Attempt.h"
#include "text/ScriptMessages.h"

namespace {

enum PackageOperation { kExecutePackage = 1, kPackageHelp = 2, kExecutePackageFile = 8 };

bool runProcedure(TScript& script, const char* scriptName, const char* dbName, const char* arguments,
                  const char* recordedInput, int operation, std::string& output) {
    constexpr int kNoUser = 0;  // no user can be named here: a secured tscript always fails
    if (!script.initialize(scriptName)) {
        output = script.getErrorMessage();
        return false;
    }
    const bool done =
        script.setDbAndLog(dbName) && script.execTscript(operation, arguments, recordedInput, kNoUser);
    output = script.getOutput();
    return done;
}

bool runLoaded(TScript& script, const std::vector<std::string>* parameters, const char* recordedInput,
               int operation, std::string& output) {
    switch (operation) {
        case kPackageHelp: {
            std::string help;
            script.getSQLFileHelp(help);
            output += help;
            return true;
        }
        case kExecutePackage:
        case kExecutePackageFile: {
            const bool done = script.executeSQLFile(
                parameters != nullptr ? *parameters : std::vector<std::string>(), recordedInput);
            output = script.getOutput();
            return done;
        }
        default:
            return true;  // the package is loaded only
    }
}

bool runPackage(TScript& script, const char* scriptName, std::string& dbName,
                const std::vector<std::string>* parameters, const char* recordedInput, int operation,
                std::string& output) {
    if (!script.initialize(scriptName)) {
        output = script.getErrorMessage();
        return false;
    }
    if (!script.setSQLFile(nullptr)) {
        output = script.getOutput();
        return false;
    }
    dbName = script.getDbName();
    return runLoaded(script, parameters, recordedInput, operation, output);
}

}  // namespace

bool TS_IsTscriptSP(std::string* scriptName, std::string* dbName) {
    if (scriptName == nullptr || dbName == nullptr) return false;
    return guarded(false, [&] {
        TScript script;
        const bool found = script.isTscriptSP(scriptName->c_str(), dbName->c_str());
        *dbName = script.getDbName();
        *scriptName = script.getScriptName();
        return found;
    });
}

bool TS_ExecTscript_SP(const char* scriptName, const char* dbName, const char* arguments,
                       const char* recordedInput, int operation, std::string* logFile, std::string* output,
                       int* auditLevel) {
    if (logFile == nullptr || output == nullptr || auditLevel == nullptr) return false;
    return attempted(*output, [&] {
        TScript script;
        output->clear();
        logFile->clear();
        const bool done =
            runProcedure(script, scriptName, dbName, arguments, recordedInput, operation, *output);
        *logFile = script.getLogFile();
        *auditLevel = script.getAuditLevel();
        return done;
    });
}

bool TS_ExecTscript_SQL(const char* scriptName, std::string* dbName,
                        const std::vector<std::string>* parameters, const char* recordedInput, int operation,
                        std::string* logFile, std::string* output) {
    if (dbName == nullptr || logFile == nullptr || output == nullptr) return false;
    return attempted(*output, [&] {
        TScript script;
        output->clear();
        logFile->clear();
        const bool done =
            runPackage(script, scriptName, *dbName, parameters, recordedInput, operation, *output);
        *logFile = script.getLogFile();
        return done;
    });
}
