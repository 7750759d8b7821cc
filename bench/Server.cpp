// Rates of tsqlbox for a client on the same machine: rows read, round trips, rows inserted. The reference is
// a required rate; that of a look-up by key is a round trip.
#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "Bench.h"
#include "HandOdbc.h"
#include "Rows.h"

namespace bench {
namespace {

constexpr std::size_t kBlockRows = 256;

// Required rates, per second.
constexpr double kRows = 500'000;
constexpr double kRoundTrips = 5'000;
constexpr double kInserts = 100'000 / 3.0;

struct BoundRow {
    SQLINTEGER id;
    char name[41];
    double amount;
    std::array<SQLLEN, 3> lengths;
};

// Runs a batch without result sets to its end.
void run(const HandConnection& connection, const std::string& batch) {
    auto* const text = reinterpret_cast<SQLCHAR*>(const_cast<char*>(batch.c_str()));
    SQLRETURN result = SQLExecDirect(connection.statement(), text, SQL_NTS);
    while (SQL_SUCCEEDED(result)) result = SQLMoreResults(connection.statement());
    check(result == SQL_NO_DATA, "hand-written ODBC fails: " + batch);
}

// Creates a table and doubles its rows until it has `rows` of them.
void makeTable(const HandConnection& connection, std::size_t rows) {
    run(connection,
        "CREATE TABLE #Rows (id int NOT NULL PRIMARY KEY, name varchar(40), amount decimal(12,2)) "
        "INSERT #Rows VALUES (1, 'a name of usual length', 1234.50)");
    const std::string count = std::to_string(rows);
    run(connection, "DECLARE @n int = 1 WHILE @n < " + count +
                        " BEGIN INSERT #Rows SELECT id + @n, name, amount + id FROM #Rows WHERE id <= " +
                        count + " - @n SELECT @n = COUNT(*) FROM #Rows END");
}

std::size_t readBound(const HandConnection& connection) {
    const SQLHSTMT statement = connection.statement();
    std::vector<BoundRow> block(kBlockRows);
    SQLULEN fetched = 0;
    std::size_t rows = 0;
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_BIND_TYPE, reinterpret_cast<SQLPOINTER>(sizeof(BoundRow)), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlockRows), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
    connection.execute("SELECT id, name, amount FROM #Rows");
    BoundRow& first = block.front();
    SQLBindCol(statement, 1, SQL_C_LONG, &first.id, 0, &first.lengths[0]);
    SQLBindCol(statement, 2, SQL_C_CHAR, first.name, sizeof first.name, &first.lengths[1]);
    SQLBindCol(statement, 3, SQL_C_DOUBLE, &first.amount, 0, &first.lengths[2]);
    while (SQL_SUCCEEDED(SQLFetch(statement))) rows += fetched;
    SQLFreeStmt(statement, SQL_UNBIND);
    SQLSetStmtAttr(statement, SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(1), 0);
    SQLFreeStmt(statement, SQL_CLOSE);
    return rows;
}

// Runs a query whose result is 1.
void makeRoundTrips(const HandConnection& connection, std::size_t count,
                    const std::string& query = "SELECT 1") {
    SQLINTEGER value = 0;
    SQLLEN length = 0;
    for (std::size_t i = 0; i < count; ++i) {
        connection.execute(query);
        SQLBindCol(connection.statement(), 1, SQL_C_LONG, &value, sizeof value, &length);
        check(SQL_SUCCEEDED(SQLFetch(connection.statement())) && value == 1, query);
        SQLFetch(connection.statement());  // reads the end of the result set
        SQLFreeStmt(connection.statement(), SQL_CLOSE);
    }
}

void insertTexts(const HandConnection& connection, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        connection.execute("INSERT INTO BenchInserts VALUES (" + std::to_string(i) +
                           ", 'a name of usual length', 1234.50)");
}

void insertPrepared(const HandConnection& connection, std::size_t count) {
    const SQLHSTMT statement = connection.statement();
    SQLINTEGER id = 0;
    char name[] = "a name of usual length";
    double amount = 1234.5;
    SQLLEN length = SQL_NTS;
    SQLLEN given = 0;
    SQLBindParameter(statement, 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 0, 0, &id, 0, &given);
    SQLBindParameter(statement, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 40, 0, name, 0, &length);
    SQLBindParameter(statement, 3, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DECIMAL, 12, 2, &amount, 0, &given);
    SQLCHAR insert[] = "INSERT INTO BenchInserts VALUES (?, ?, ?)";
    check(SQL_SUCCEEDED(SQLPrepare(statement, insert, SQL_NTS)), "an insert cannot be prepared");
    for (; static_cast<std::size_t>(id) < count; ++id)
        check(SQL_SUCCEEDED(SQLExecute(statement)), "a prepared insert fails");
    SQLFreeStmt(statement, SQL_RESET_PARAMS);
    SQLFreeStmt(statement, SQL_CLOSE);
}

// Prints the best rate at which `measured` does `count` operations. The ratio is this rate by the required
// one.
void printRate(const Bench& bench, const std::string& name, std::size_t count, double required,
               const Sides& sides) {
    double best = 0;
    for (int round = 0; round < bench.options().rounds; ++round) {
        sides.prepare();
        best = std::max(best, static_cast<double>(count) / secondsOf(sides.measured));
    }
    char absolute[80];
    std::snprintf(absolute, sizeof absolute, "%.0f/s against %.0f/s", best, required);
    Bench::print(name, best / required, atLeast(1), absolute);
}

}  // namespace

void server(Bench& bench) {
    const HandConnection connection(bench.box().odbcConnectionString("tempdb"));
    const std::size_t rows = bench.scaled(300'000);
    makeTable(connection, rows);
    const Step read = [&] { check(readBound(connection) == rows, "rows are missing"); };
    const Step noReference;
    printRate(bench, "server/rows", rows, kRows, {read, noReference});

    const std::size_t roundTrips = bench.scaled(20'000);
    printRate(bench, "server/round-trips", roundTrips, kRoundTrips,
              {[&] { makeRoundTrips(connection, roundTrips); }, noReference});
    run(connection,
        "CREATE TABLE BenchLookups (id int NOT NULL PRIMARY KEY) INSERT BenchLookups VALUES (1), (2)");
    bench.compare(
        "server/look-ups", atMost(1.5),
        {[&] { makeRoundTrips(connection, roundTrips, "SELECT id FROM BenchLookups WHERE id = 1"); },
         [&] { makeRoundTrips(connection, roundTrips); }});

    const std::size_t inserts = bench.scaled(100'000);
    const Step makeEmpty = [&] {
        run(connection,
            "IF OBJECT_ID('BenchInserts') IS NOT NULL DROP TABLE BenchInserts "
            "CREATE TABLE BenchInserts (id int NOT NULL PRIMARY KEY, name varchar(40), "
            "amount decimal(12,2))");
    };
    const auto insertWith = [&](void (*insert)(const HandConnection&, std::size_t)) {
        return [&, insert] {
            run(connection, "BEGIN TRANSACTION");
            insert(connection, inserts);
            run(connection, "COMMIT");
        };
    };
    printRate(bench, "server/inserts", inserts, kInserts, {insertWith(insertTexts), noReference, makeEmpty});
    printRate(bench, "server/inserts-prepared", inserts, kInserts,
              {insertWith(insertPrepared), noReference, makeEmpty});
}

}  // namespace bench
