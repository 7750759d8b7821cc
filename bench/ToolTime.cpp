// Own time of `tscript`: of its start, and of a run of a trivial package on this host beside that of
// `sqlcmd`.
#include "Bench.h"
#include "Rows.h"
#include "ToolCost.h"

namespace bench {
namespace {

constexpr const char* kScript = "benchTrivial";
constexpr const char* kStatement = "SELECT 1\n";

Step runs(const std::vector<std::string>& command, const std::string& password = {}) {
    return [command, password] { runTool(command, password); };
}

void printDifference(const std::string& name, double limit, double measured, double reference) {
    Bench::print(name, (measured - reference) * 1e3, atMost(limit),
                 milliseconds(measured) + " less " + milliseconds(reference));
}

}  // namespace

void toolTime(Bench& bench) {
    const support::TsqlBox& box = bench.box();
    bench.writePackage(kScript, kStatement);
    const std::string input = bench.installation().folder("trivial.sql");
    support::writeFile(input, kStatement);
    constexpr int kRuns = 20;
    const auto [version, nothing] =
        bench.bestTimes(kRuns, runs({TSCRIPT_PROGRAM, "--version"}), runs({"/bin/true"}));
    printDifference("tool-time/version-ms", 5, version, nothing);
    const auto [run, bare] = bench.bestTimes(
        kRuns, runs({TSCRIPT_PROGRAM, "run", kScript}),
        runs({SQLCMD_PROGRAM, "-b", "-S", box.server(), "-U", box.login(), "-d", "Dorvas", "-i", input},
             box.password()));
    printDifference("tool-time/run-ms", 25, run, bare);
}

}  // namespace bench
