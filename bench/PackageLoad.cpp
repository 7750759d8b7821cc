// TScript::setSQLFile() against one read of the package's file, and against a package of half the length.
#include "Bench.h"
#include "DVUtilities/TScript.h"
#include "Growth.h"
#include "Rows.h"

namespace bench {
namespace {

void writePackageOfSize(Bench& bench, const std::string& name, std::size_t bytes) {
    std::string body;
    const std::string line = "PRINT '" + std::string(91, 'p') + "'\n";
    while (body.size() < bytes) body += line;
    bench.writePackage(name, body);
}

void load(const std::string& name) {
    TScript script;
    check(script.initialize(name.c_str()) && script.setSQLFile(nullptr), script.getOutput());
}

}  // namespace

void packageLoad(Bench& bench) {
    bench.box();  // loading a package needs its database
    const std::size_t bytes = bench.scaled(100'000'000);
    writePackageOfSize(bench, "BenchWhole", bytes);
    writePackageOfSize(bench, "BenchHalf", bytes / 2);
    const std::string file = bench.installation().homeFolder() / "Scripts" / "BenchWhole.sql";
    {
        const PeakMemory memory;
        load("BenchWhole");
        Bench::print("package-load/memory", static_cast<double>(memory.bytes()) / static_cast<double>(bytes),
                     atMost(2.1), megabytes(memory.bytes()) + " for " + megabytes(bytes));
    }
    const Step whole = [] { load("BenchWhole"); };
    bench.compare("package-load/half", atMost(2.2), {whole, [] { load("BenchHalf"); }});
    bench.compare("package-load/read", {}, {whole, [&] { check(!readOnce(file).empty(), file); }});
}

void growPackage(Bench& bench, const std::filesystem::path& folder) {
    Series series(folder, "package",
                  {"bytes", "setSQLFile, ms", "one read, ms", "peak memory of the former, MB"});
    for (const std::size_t full : {100'000U, 1'000'000U, 10'000'000U, 100'000'000U}) {
        const std::size_t bytes = bench.scaled(full);
        writePackageOfSize(bench, "BenchGrowth", bytes);
        const std::string file = bench.installation().homeFolder() / "Scripts" / "BenchGrowth.sql";
        std::size_t peak = 0;
        const Step measured = [&] {
            const PeakMemory memory;
            load("BenchGrowth");
            peak = std::max(peak, memory.bytes());
        };
        const auto [ours, read] = bench.bestTimes(1, measured, [&] { readOnce(file); });
        series.add(bytes, {ours * 1e3, read * 1e3, static_cast<double>(peak) / 1e6});
    }
}

}  // namespace bench
