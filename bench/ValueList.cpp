// DBBase::GetDBValueList() against a loop over bound columns. Both connect, fetch the same rows in blocks and
// store them as row texts.
#include <array>
#include <vector>

#include "Bench.h"
#include "DVUtilities/DBBase.h"
#include "Growth.h"
#include "HandOdbc.h"
#include "Rows.h"
#include "ValueListSoci.h"

namespace bench {
namespace {

constexpr char kQuery[] = "SELECT id, name, amount FROM BenchRows ORDER BY id";
constexpr char kSeparator = '\x12';
constexpr std::size_t kBlockRows = 256;

using Texts = std::vector<std::string>;

struct BoundRow {
    struct Cell {
        SQLLEN length;
        char text[64];
    };
    std::array<Cell, 3> cells;
};

// Creates a table and doubles its rows until it has `rows` of them.
void makeTable(DBBase& db, std::size_t rows) {
    const char* const create =
        "IF OBJECT_ID('BenchRows') IS NOT NULL DROP TABLE BenchRows "
        "CREATE TABLE BenchRows (id int NOT NULL PRIMARY KEY, name varchar(40), amount decimal(12,2)) "
        "INSERT BenchRows VALUES (1, 'a name of usual length', 1234.50)";
    const std::string fill =
        "DECLARE @n int SELECT @n = COUNT(*) FROM BenchRows WHILE @n < " + std::to_string(rows) +
        " BEGIN INSERT BenchRows SELECT id + @n, name, amount + id FROM BenchRows WHERE id <= " +
        std::to_string(rows) + " - @n SELECT @n = COUNT(*) FROM BenchRows END";
    check(db.SetDBValue(create) && db.SetDBValue(fill.c_str()), "the table cannot be created");
}

void readBound(const std::string& connectionString, Texts& rows) {
    const HandConnection connection(connectionString);
    SQLHSTMT statement = connection.statement();
    std::vector<BoundRow> block(kBlockRows);
    SQLULEN fetched = 0;
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_BIND_TYPE, reinterpret_cast<SQLPOINTER>(sizeof(BoundRow)), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlockRows), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    connection.execute(kQuery);
    SQLUSMALLINT number = 0;
    for (BoundRow::Cell& cell : block.front().cells)
        SQLBindCol(statement, ++number, SQL_C_CHAR, cell.text, sizeof cell.text, &cell.length);
    while (SQL_SUCCEEDED(SQLFetch(statement))) {
        for (std::size_t i = 0; i < fetched; ++i) {
            std::string& row = rows.emplace_back();
            for (const BoundRow::Cell& cell : block[i].cells) {
                if (&cell != block[i].cells.data()) row += kSeparator;
                if (cell.length > 0) row.append(cell.text, static_cast<std::size_t>(cell.length));
            }
        }
    }
}

}  // namespace

void valueList(Bench& bench) {
    const std::string connectionString = bench.box().odbcConnectionString("dorvas");
    const std::string log = bench.installation().folder("bench.log");
    DBBase db(true);
    check(db.GetAccountInfo("MainHost", "Instance001", log.c_str(), "Dorvas"), db.getErrorMsg());
    const std::size_t count = bench.scaled(300'000);
    makeTable(db, count);

    Texts rows;
    const auto checkRows = [&] { check(rows.size() == count, std::to_string(rows.size()) + " rows read"); };
    const Step measured = [&] {
        rows.clear();
        check(db.GetDBValueList(kQuery, rows, 3), "GetDBValueList fails");
        checkRows();
    };
    const Step reference = [&] {
        rows.clear();
        readBound(connectionString, rows);
        checkRows();
    };
    const Step soci = [&] {
        rows.clear();
        readWithSoci(connectionString, kQuery, kSeparator, rows);
        checkRows();
    };
    bench.compare("value-list", atLeast(0.95), {measured, reference});
    bench.compare("value-list/soci", atLeast(1), {measured, soci});
}

void growRows(Bench& bench, const std::filesystem::path& folder) {
    const std::string connectionString = bench.box().odbcConnectionString("dorvas");
    const std::string log = bench.installation().folder("bench.log");
    DBBase db(true);
    check(db.GetAccountInfo("MainHost", "Instance001", log.c_str(), "Dorvas"), db.getErrorMsg());
    Series series(folder, "rows", {"rows", "GetDBValueList, ms", "ODBC by hand, ms", "SOCI, ms"});
    for (const std::size_t full : {100U, 1'000U, 10'000U, 100'000U, 1'000'000U}) {
        const std::size_t count = bench.scaled(full);
        makeTable(db, count);
        const auto best = [&](const std::function<void(Texts&)>& read) {
            return bench
                       .bestTimes(
                           1,
                           [&] {
                               Texts rows;
                               read(rows);
                               check(rows.size() == count, std::to_string(rows.size()) + " rows read");
                           },
                           [] {})
                       .first *
                   1e3;
        };
        series.add(
            count,
            {best([&](Texts& rows) { check(db.GetDBValueList(kQuery, rows, 3), "GetDBValueList fails"); }),
             best([&](Texts& rows) { readBound(connectionString, rows); }),
             best([&](Texts& rows) { readWithSoci(connectionString, kQuery, kSeparator, rows); })});
    }
}

}  // namespace bench
