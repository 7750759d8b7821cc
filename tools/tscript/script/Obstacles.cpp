#include "script/Obstacles.h"

#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "script/RunReport.h"
#include "system/ResultFile.h"

namespace {

// The library ignores surplus values and leaves placeholders without a value as they are.
std::optional<Failure> findMiscount(const ScriptOptions& options, const SqlPreview& preview) {
    const std::size_t values = options.request.parameters.size();
    if (options.allowMissing || preview.kind != ScriptKind::kPackage || values == preview.placeholders)
        return std::nullopt;
    const std::string counts = std::to_string(preview.placeholders) + " placeholder(s), and " +
                               std::to_string(values) + " value(s) are given";
    const char* effect = values > preview.placeholders ? "ignores surplus values"
                                                       : "leaves placeholders without a value as they are";
    return Failure(ExitCode::kUsage, "the script has " + counts,
                   "tscript help " + options.request.name +
                       " shows its usage. With --allow-missing the script runs and " + effect + ".");
}

Json jsonOf(const ScriptOptions& options, const SqlPreview& preview, const std::optional<Failure>& failure) {
    Json value = {
        {"script", options.request.name}, {"kind", nameOf(preview.kind)}, {"database", preview.database}};
    if (preview.kind == ScriptKind::kPackage) {
        value["placeholders"] = preview.placeholders;
        value["values"] = options.request.parameters.size();
    }
    value["exitCode"] = static_cast<int>(failure ? failure->code() : ExitCode::kDone);
    value["sql"] = preview.sql;
    if (failure) {
        value["error"] = failure->what();
        value["advice"] = failure->advice();
    }
    return value;
}

}  // namespace

// The library runs an empty package, which succeeds without an effect.
std::optional<Failure> findObstacle(const ScriptOptions& options, const SqlPreview& preview) {
    if (preview.kind != ScriptKind::kPackage || !preview.isEmpty) return findMiscount(options, preview);
    return Failure(ExitCode::kInstallation,
                   "the package " + packageFile(options.request.name).string() + " has no statement",
                   "Pack it again from its plain text: tscript pack");
}

void writeJsonOfObstacle(const ScriptOptions& options, const SqlPreview& preview, const Failure& obstacle) {
    if (!options.json) return;
    RunResult notRun;
    notRun.database = preview.database;
    ResultFile(options.outputFile).write(jsonText(jsonOf(options, notRun, &obstacle)));
}

void requireRunnable(const ScriptOptions& options, const SqlPreview& preview) {
    const std::optional<Failure> obstacle = findObstacle(options, preview);
    if (!obstacle) return;
    writeJsonOfObstacle(options, preview, *obstacle);
    throw *obstacle;
}

ExitCode showSql(const ScriptOptions& options, const SqlPreview& preview) {
    const std::optional<Failure> obstacle = findObstacle(options, preview);
    ResultFile target(options.outputFile);
    target.write(options.json ? jsonText(jsonOf(options, preview, obstacle)) : preview.sql);
    const std::string place =
        preview.database.empty() ? "the database found from the installed components" : preview.database;
    if (!options.quiet) writeNote("This would run in " + place + "; nothing has been run.");
    if (obstacle) throw *obstacle;
    return ExitCode::kDone;
}
