// 64 runs of a package at the same time, by processes and by threads of one process, against 64 `sqlcmd` with
// the same SQL.
#include <thread>

#include "Bench.h"
#include "DVUtilities/TScriptApi.h"
#include "Growth.h"
#include "Rows.h"
#include "ToolCost.h"

namespace bench {
namespace {

constexpr const char* kScript = "benchConcurrent";
constexpr std::size_t kRuns = 64;
// A script that takes two seconds, most of which the server waits.
constexpr const char* kStatements = "SELECT COUNT(*) FROM app_plexum\nWAITFOR DELAY '00:00:02'\n";

void runAtOnce(std::size_t runs, const Step& run) {
    std::vector<std::thread> threads;
    std::vector<std::string> failures(runs);
    for (std::string& failure : failures)
        threads.emplace_back([&] {
            try {
                run();
            } catch (const std::exception& error) {
                failure = error.what();
            }
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& failure : failures) check(failure.empty(), failure);
}

void runByLibrary() {
    std::string database;
    std::string log;
    std::string output;
    check(TS_ExecTscript_SQL(kScript, &database, nullptr, nullptr, /*operation=*/1, &log, &output), output);
}

// The three ways to run a script's statements, `runs` times at once.
class Runs {
  public:
    Runs(Bench& bench, const std::string& statements)
        : m_box(bench.box()), m_input(bench.installation().folder("concurrent.sql")) {
        bench.writePackage(kScript, statements);
        support::writeFile(m_input, statements);
        runByLibrary();  // adds the package to the catalogue
    }

    Step byQueryTool(std::size_t runs) const {
        return [this, runs] {
            runAtOnce(runs, [this] {
                runTool({SQLCMD_PROGRAM, "-b", "-S", m_box.server(), "-U", m_box.login(), "-d", "Dorvas",
                         "-i", m_input},
                        m_box.password());
            });
        };
    }
    static Step byProcesses(std::size_t runs) {
        return [runs] { runAtOnce(runs, [] { runTool({TSCRIPT_PROGRAM, "run", kScript}); }); };
    }
    static Step byThreads(std::size_t runs) {
        return [runs] { runAtOnce(runs, runByLibrary); };
    }

  private:
    const support::TsqlBox& m_box;
    std::string m_input;
};

}  // namespace

void concurrentRuns(Bench& bench) {
    const Runs runs(bench, kStatements);
    bench.compare("concurrent/processes", atLeast(0.9), {Runs::byProcesses(kRuns), runs.byQueryTool(kRuns)});
    bench.compare("concurrent/threads", atLeast(0.9), {Runs::byThreads(kRuns), runs.byQueryTool(kRuns)});
}

void growConcurrency(Bench& bench, const std::filesystem::path& folder) {
    const Runs runs(bench, "SELECT COUNT(*) FROM app_plexum\n");
    Series series(folder, "concurrency",
                  {"runs at once", "tscript run, runs/s", "threads, runs/s", "sqlcmd, runs/s"});
    for (std::size_t count = 1; count <= kRuns; count *= 2) {
        const auto perSecond = [&](const Step& step) {
            return static_cast<double>(count) / bench.bestTimes(1, step, [] {}).first;
        };
        series.add(count, {perSecond(Runs::byProcesses(count)), perSecond(Runs::byThreads(count)),
                           perSecond(runs.byQueryTool(count))});
    }
}

}  // namespace bench
