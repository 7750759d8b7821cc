// dvu_bench: compares what the library does with the same thing written by hand, in one run.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>

#include "Bench.h"
#include "Rows.h"

namespace {

struct Row {
    const char* name;
    void (*run)(bench::Bench& bench);
};
constexpr Row kRows[] = {
    {"value-list", bench::valueList},       {"sql-file", bench::sqlFile},
    {"file-cipher", bench::fileCipher},     {"package-load", bench::packageLoad},
    {"tool-output", bench::toolOutput},     {"log-line", bench::logLine},
    {"child-process", bench::childProcess}, {"registry-value", bench::registryValue},
    {"catalogue", bench::catalogue},        {"server", bench::server},
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
    bool allDone = true;
    for (const Row& row : kRows)
        if (names.empty() || std::find(names.begin(), names.end(), row.name) != names.end())
            allDone &= run(row, bench);
    return allDone;
}

}  // namespace

// Ends with 0 however slow things were, and with 1 when something did not work.
int main(int argc, char** argv) {
    CLI::App app("Compares what the library does with the same thing written by hand.", "dvu_bench");
    bench::Options options;
    std::vector<std::string> names;
    app.add_flag("--quick", options.quick, "About a twentieth of the work");
    app.add_flag("!--no-big-process", options.bigProcess, "Skip what needs 4 GiB of memory");
    app.add_option("--rounds", options.rounds, "How often each side runs")->check(CLI::Range(1, 1000));
    app.add_option("rows", names, "Only these")->check(CLI::IsMember(rowNames()));
    CLI11_PARSE(app, argc, argv);
    try {
        return runAll(options, names) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dvu_bench: %s\n", error.what());
        return 1;
    }
}
