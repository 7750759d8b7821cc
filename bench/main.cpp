// dvu_bench: compares the library with hand-written code that does the same.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "Bench.h"
#include "Growth.h"
#include "Rows.h"

namespace {

struct Row {
    const char* name;
    void (*run)(bench::Bench& bench);
};
constexpr Row kRows[] = {
    {"value-list", bench::valueList},
    {"sql-file", bench::sqlFile},
    {"file-cipher", bench::fileCipher},
    {"package-load", bench::packageLoad},
    {"tool-output", bench::toolOutput},
    {"log-line", bench::logLine},
    {"child-process", bench::childProcess},
    {"registry-value", bench::registryValue},
    {"catalogue", bench::catalogue},
    {"package-run", bench::packageRun},
    {"tool-time", bench::toolTime},
    {"concurrent", bench::concurrentRuns},
    {"server", bench::server},
    {"query-tool", bench::queryTool},
};

std::vector<std::string> rowNames() {
    std::vector<std::string> names;
    for (const Row& row : kRows) names.emplace_back(row.name);
    return names;
}

bool run(const Row& row, bench::Bench& bench) {
    try {
        row.run(bench);
        return true;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dvu_bench: %s: %s\n", row.name, error.what());
        return false;
    }
}

bool runAll(const bench::Options& options, const std::vector<std::string>& names) {
    bench::Bench bench(options);
    std::printf("%-28s %8s  %-8s (best times of %d rounds: measured against reference)\n", "name", "ratio",
                "bar", options.rounds);
    bool allSucceeded = true;
    for (const Row& row : kRows) {
        const bool isSelected =
            names.empty() || std::find(names.begin(), names.end(), row.name) != names.end();
        if (isSelected) allSucceeded &= run(row, bench);
    }
    return allSucceeded;
}

void runGrowth(const bench::Options& options, const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    bench::Bench bench(options);
    for (const auto grow :
         {bench::growJournal, bench::growRows, bench::growOutput, bench::growPackage, bench::growConcurrency})
        grow(bench, folder);
}

}  // namespace

// The exit code is 0 even if ratios miss their bars, and 1 after an error.
int main(int argc, char** argv) {
    CLI::App app("Compares the library with hand-written code that does the same.", "dvu_bench");
    bench::Options options;
    std::vector<std::string> names;
    app.add_flag("--quick", options.quick, "Do a twentieth of the work");
    app.add_flag("!--no-big-process", options.bigProcess, "Skip the row that needs 4 GiB of memory");
    app.add_option("--rounds", options.rounds, "Number of runs of each side")->check(CLI::Range(1, 1000));
    std::filesystem::path growth;
    app.add_option("--growth", growth, "Measure costs against sizes instead; the folder of the tables");
    app.add_option("rows", names, "Run only these benchmarks")->check(CLI::IsMember(rowNames()));
    CLI11_PARSE(app, argc, argv);
    try {
        if (growth.empty()) return runAll(options, names) ? 0 : 1;
        runGrowth(options, growth);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dvu_bench: %s\n", error.what());
        return 1;
    }
}
