// TScript::executeSQLFile() against sqlcmd with the same options and its output in a file, which is then read
// in one call.
#include <vector>

#include "Bench.h"
#include "DVUtilities/TScript.h"
#include "Growth.h"
#include "Program.h"
#include "Rows.h"

namespace bench {
namespace {

constexpr char kScript[] = "BenchRun";

// Returns about `bodyBytes` of PRINT statements and a query of `rows` rows, each a line of 1,000 characters.
std::string statements(std::size_t bodyBytes, std::size_t rows) {
    std::string body = "SET NOCOUNT ON\n";
    while (body.size() < bodyBytes) {
        for (int line = 0; line < 100; ++line) body += "PRINT '" + std::string(80, 'p') + "'\n";
        body += "GO\n";
    }
    const std::string count = std::to_string(rows);
    return body +
           "CREATE TABLE #wide (id int, text varchar(1000))\n"
           "INSERT #wide VALUES (1, REPLICATE('x', 990))\n"
           "DECLARE @n int = 1\n"
           "WHILE @n < " +
           count +
           "\nBEGIN\n"
           "INSERT #wide SELECT id + @n, text FROM #wide WHERE id <= " +
           count +
           " - @n\n"
           "SELECT @n = COUNT(*) FROM #wide\nEND\n"
           "SELECT id, text FROM #wide\nGO\n";
}

std::size_t runByHand(const support::TsqlBox& box, const std::string& input, const std::string& output) {
    support::ProgramOptions options;
    options.environment = {"SQLCMDPASSWORD=" + box.password()};
    options.limit = std::chrono::minutes(10);
    const std::vector<std::string> command = {SQLCMD_PROGRAM, "-b",     "-S", box.server(), "-U", box.login(),
                                              "-d",           "Dorvas", "-m", "0",          "-i", input,
                                              "-o",           output,   "-s", "\t",         "-W"};
    check(support::runProgram(command, options).exitCode == 0, "sqlcmd fails");
    return readOnce(output).size();
}

}  // namespace

void sqlFile(Bench& bench) {
    const support::TsqlBox& box = bench.box();
    const std::string body = statements(bench.scaled(1'000'000), bench.scaled(50'000));
    bench.writePackage(kScript, body);
    const std::string input = bench.installation().folder("by-hand.sql");
    const std::string output = bench.installation().folder("by-hand.txt");
    support::writeFile(input, "SET ARITHABORT ON \nGO \n" + body);

    std::unique_ptr<TScript> script;
    std::size_t outputBytes = 0;
    std::size_t peak = 0;
    const Step prepare = [&] {
        script = std::make_unique<TScript>();
        check(script->initialize(kScript) && script->setSQLFile(nullptr), script->getOutput());
    };
    const Step measured = [&] {
        const PeakMemory memory;
        check(script->executeSQLFile({}, nullptr), script->getErrorMessage());
        peak = std::max(peak, memory.bytes());
    };
    const Step reference = [&] { outputBytes = runByHand(box, input, output); };
    bench.compare("sql-file/time", atMost(1.05), {measured, reference, prepare});
    Bench::print("sql-file/memory", static_cast<double>(peak) / static_cast<double>(outputBytes), atMost(1.5),
                 megabytes(peak) + " for " + megabytes(outputBytes) + " of output");
}

void growOutput(Bench& bench, const std::filesystem::path& folder) {
    const support::TsqlBox& box = bench.box();
    const std::string input = bench.installation().folder("by-hand.sql");
    const std::string output = bench.installation().folder("by-hand.txt");
    Series series(
        folder, "output",
        {"bytes", "executeSQLFile, ms", "sqlcmd and one read, ms", "peak memory of the former, MB"});
    for (const std::size_t rows : {20U, 200U, 2'000U, 20'000U, 100'000U}) {
        const std::string body = statements(/*bodyBytes=*/100, bench.scaled(rows));
        bench.writePackage(kScript, body);
        support::writeFile(input, "SET ARITHABORT ON \nGO \n" + body);
        std::size_t bytes = 0;
        std::size_t peak = 0;
        const Step measured = [&] {
            TScript script;
            check(script.initialize(kScript) && script.setSQLFile(nullptr), script.getOutput());
            const PeakMemory memory;
            check(script.executeSQLFile({}, nullptr), script.getErrorMessage());
            peak = std::max(peak, memory.bytes());
        };
        const auto [ours, byHand] =
            bench.bestTimes(1, measured, [&] { bytes = runByHand(box, input, output); });
        series.add(bytes, {ours * 1e3, byHand * 1e3, static_cast<double>(peak) / 1e6});
    }
}

}  // namespace bench
