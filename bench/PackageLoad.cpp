// TScript::setSQLFile() against one read of the package's file, and against a package of half the length.
#include "Bench.h"
#include "DVUtilities/TScript.h"
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
                     atMost(2.5), megabytes(memory.bytes()) + " for " + megabytes(bytes));
    }
    const Step whole = [] { load("BenchWhole"); };
    bench.compare("package-load/half", atMost(2.2), {whole, [] { load("BenchHalf"); }});
    bench.compare("package-load/read", {}, {whole, [&] { check(!readOnce(file).empty(), file); }});
}

}  // namespace bench
