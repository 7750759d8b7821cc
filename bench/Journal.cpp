// Lists of the journal against its number of rows.
#include "Bench.h"
#include "DVUtilities/DBBase.h"
#include "Growth.h"
#include "ToolCost.h"

namespace bench {
namespace {

ToolCost costOf(const std::vector<std::string>& words) {
    std::vector<std::string> command = {TSCRIPT_PROGRAM};
    command.insert(command.end(), words.begin(), words.end());
    return costOfTool(command, {});
}

// Doubles the rows until there are `rows`. One in a thousand runs has failed.
void fill(DBBase& db, std::size_t rows) {
    const std::string count = std::to_string(rows);
    const std::string statements =
        "SET NOCOUNT ON DECLARE @n int = (SELECT COUNT(*) FROM ZpTscriptExec) "
        "IF @n = 0 BEGIN INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams) "
        "VALUES (1, 100, 'journal1', '20250101', '20250101 00:00:05', 1, '30,2') SET @n = 1 END "
        "WHILE @n < " +
        count +
        " BEGIN INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams) "
        "SELECT TOP (" +
        count +
        " - @n) tsId, type, 'journal' + CONVERT(varchar(9), id % 100), DATEADD(minute, @n % 7919, "
        "timeStart), "
        "DATEADD(minute, @n % 7919, timeEnd), CASE WHEN id % 1000 = 0 THEN 2 ELSE 1 END, inputParams "
        "FROM ZpTscriptExec SELECT @n = COUNT(*) FROM ZpTscriptExec END";
    check(db.SetDBValue(statements.c_str()), "the journal cannot be filled");
}

}  // namespace

void growJournal(Bench& bench, const std::filesystem::path& folder) {
    bench.box();
    DBBase db(true);
    const std::string log = bench.installation().folder("bench.log");
    check(db.GetAccountInfo("MainHost", "Instance001", log.c_str(), "Dorvas"), db.getErrorMsg());
    const std::vector<std::vector<std::string>> lists = {
        {"journal"},         {"journal", "--failed"},      {"journal", "--name", "journal7"},
        {"journal", "tail"}, {"journal", "--since", "1h"}, {"journal", "--slower-than", "1d"},
        {"catalogue"}};
    std::vector<std::string> columns = {"rows"};
    for (const auto& words : lists) {
        std::string name;
        for (const std::string& word : words) name += (name.empty() ? "" : " ") + word;
        columns.push_back(name);
    }
    Series times(folder, "journal-time", columns);
    Series memory(folder, "journal-memory", columns);
    constexpr double kMegabyte = 1e6;
    for (const std::size_t rows : {1'000U, 10'000U, 100'000U, 1'000'000U}) {
        fill(db, bench.scaled(rows));
        std::vector<double> seconds;
        std::vector<double> megabytes;
        for (const auto& words : lists) {
            ToolCost best = costOf(words);
            for (int round = 1; round < bench.options().rounds; ++round)
                best.seconds = std::min(best.seconds, costOf(words).seconds);
            seconds.push_back(best.seconds);
            megabytes.push_back(static_cast<double>(best.peakMemory) / kMegabyte);
        }
        times.add(bench.scaled(rows), seconds);
        memory.add(bench.scaled(rows), megabytes);
    }
}

}  // namespace bench
