// sqlcmd with an output file against a loop over the same client library, DB-Library, that prints nothing:
// rows of a result, and batches of one line.
#include <sybfront.h>  // must come before sybdb.h
//
#include <sybdb.h>

#include <memory>
#include <vector>

#include "Bench.h"
#include "Rows.h"
#include "ToolCost.h"

namespace bench {
namespace {

constexpr char kDatabase[] = "Dorvas";
constexpr char kAllRows[] = "SELECT id, name, amount, created, note FROM QueryToolRows";

class HandDbLib {
  public:
    explicit HandDbLib(const support::TsqlBox& box) {
        check(dbinit() == SUCCEED, "dbinit");
        const std::unique_ptr<LOGINREC, decltype(&dbloginfree)> login(dblogin(), dbloginfree);
        DBSETLUSER(login.get(), box.login().c_str());
        DBSETLPWD(login.get(), box.password().c_str());
        DBSETLDBNAME(login.get(), kDatabase);
        DBSETLCHARSET(login.get(), "UTF-8");
        dbsetlversion(login.get(), DBVERSION_74);
        m_process = dbopen(login.get(), ("127.0.0.1:" + std::to_string(box.port())).c_str());
        check(m_process != nullptr, "hand-written DB-Library cannot connect");
    }
    ~HandDbLib() {
        dbclose(m_process);
        dbexit();
    }
    HandDbLib(const HandDbLib&) = delete;
    HandDbLib& operator=(const HandDbLib&) = delete;

    // Returns the number of rows.
    std::size_t run(const std::string& batch) const {
        check(dbcmd(m_process, batch.c_str()) == SUCCEED && dbsqlexec(m_process) == SUCCEED, batch);
        std::size_t rows = 0;
        while (dbresults(m_process) == SUCCEED)
            while (dbnextrow(m_process) == REG_ROW) ++rows;
        return rows;
    }

  private:
    DBPROCESS* m_process = nullptr;
};

void makeRows(const HandDbLib& connection, std::size_t rows) {
    const std::string count = std::to_string(rows);
    connection.run(
        "CREATE TABLE QueryToolRows (id int NOT NULL PRIMARY KEY, name varchar(40), amount decimal(12,2), "
        "created datetime, note nvarchar(20)) "
        "INSERT QueryToolRows VALUES (1, 'a name of usual length', 1234.50, '20260102 03:04:05', N'a note')");
    connection.run("DECLARE @n int = 1 WHILE @n < " + count +
                   " BEGIN INSERT QueryToolRows SELECT id + @n, name, amount + id, created, note "
                   "FROM QueryToolRows WHERE id <= " +
                   count + " - @n SELECT @n = COUNT(*) FROM QueryToolRows END");
}

// Runs sqlcmd and returns its peak memory in bytes.
std::size_t peakOfTool(const support::TsqlBox& box, std::vector<std::string> arguments,
                       const std::string& output) {
    std::vector<std::string> command = {SQLCMD_PROGRAM, "-S",      box.server(), "-U",  box.login(),
                                        "-d",           kDatabase, "-o",         output};
    command.insert(command.end(), arguments.begin(), arguments.end());
    support::ProgramOptions options;
    options.environment = {"SQLCMDPASSWORD=" + box.password()};
    return costOfTool(command, options).peakMemory;
}

}  // namespace

void queryTool(Bench& bench) {
    const support::TsqlBox& box = bench.box();
    const HandDbLib connection(box);
    const std::string output = bench.installation().folder("query-tool.txt");
    const std::size_t rows = bench.scaled(1'000'000);
    makeRows(connection, rows);

    const Step removeOutput = [&] { std::filesystem::remove(output); };
    // The first run reads the libraries into the page cache: more of their pages count for the later ones.
    peakOfTool(box, {"-Q", "SELECT 1"}, output);
    const std::size_t few = peakOfTool(box, {"-Q", "SELECT 1"}, output);
    std::size_t peak = 0;
    const Step fetch = [&] { check(connection.run(kAllRows) == rows, "rows are missing"); };
    const Step print = [&] { peak = std::max(peak, peakOfTool(box, {"-Q", kAllRows}, output)); };
    const Step printTrimmed = [&] { peakOfTool(box, {"-W", "-s", "\t", "-Q", kAllRows}, output); };
    const Step printCsv = [&] { peakOfTool(box, {"--csv", "-Q", kAllRows}, output); };
    bench.compare("query-tool/rows", atLeast(0.75), {print, fetch, removeOutput});
    bench.compare("query-tool/rows-trimmed", atLeast(0.75), {printTrimmed, fetch, removeOutput});
    bench.compare("query-tool/rows-csv", {}, {printCsv, fetch, removeOutput});
    Bench::print("query-tool/rows-memory", static_cast<double>(peak) / static_cast<double>(few), atMost(1.1),
                 megabytes(peak) + " against " + megabytes(few) + " for one row");

    const std::size_t batches = bench.scaled(100'000);
    const std::string script = bench.installation().folder("query-tool.sql");
    {
        std::string text;
        for (std::size_t i = 0; i < batches; ++i) text += "SELECT 1\nGO\n";
        support::writeFile(script, text);
    }
    peak = 0;
    const Step runScript = [&] { peak = std::max(peak, peakOfTool(box, {"-i", script}, output)); };
    const Step runByHand = [&] {
        for (std::size_t i = 0; i < batches; ++i) connection.run("SELECT 1");
    };
    bench.compare("query-tool/batches", atLeast(0.9), {runScript, runByHand, removeOutput});
    Bench::print("query-tool/batches-memory", static_cast<double>(peak) / static_cast<double>(few),
                 atMost(1.1), megabytes(peak) + " against " + megabytes(few) + " for one batch");
}

}  // namespace bench
