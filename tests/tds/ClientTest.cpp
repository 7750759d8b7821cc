// The server as independent clients see it: FreeTDS's ODBC driver and its db-lib, tedious, jTDS, go-mssqldb,
// and libraries over them.
#include <gtest/gtest.h>

#include "OdbcClient.h"
#include "TsqlBox.h"

namespace support {
namespace {

class ClientTest : public testing::Test {
  protected:
    const TsqlBox box;
};

TEST_F(ClientTest, EveryTypeHasItsMetadataValueAndNull) {
    struct Case {
        const char* type;
        const char* literal;
        int sqlType;
        SQLULEN size;
        const char* text;
    };
    const Case cases[] = {
        {"bit", "1", SQL_BIT, 1, "1"},
        {"tinyint", "255", SQL_TINYINT, 3, "255"},
        {"smallint", "-32768", SQL_SMALLINT, 5, "-32768"},
        {"int", "-2147483648", SQL_INTEGER, 10, "-2147483648"},
        {"bigint", "'-9223372036854775807'", SQL_BIGINT, 19, "-9223372036854775807"},
        {"decimal(9,2)", "-1234567.89", SQL_NUMERIC, 9, "-1234567.89"},
        {"decimal(18,4)", "12345678901234.5678", SQL_NUMERIC, 18, "12345678901234.5678"},
        {"decimal(28,8)", "-12345678901234567890.00000001", SQL_NUMERIC, 28,
         "-12345678901234567890.00000001"},
        {"decimal(38,0)", "99999999999999999999999999999999999999", SQL_NUMERIC, 38,
         "99999999999999999999999999999999999999"},
        {"smallmoney", "-1.5", SQL_DECIMAL, 10, "-1.5000"},
        {"money", "-123456789.1234", SQL_DECIMAL, 19, "-123456789.1234"},
        {"real", "0.5", SQL_REAL, 24, "0.5"},
        {"float", "-2.5", SQL_DOUBLE, 53, "-2.5"},
        {"char(5)", "'ab'", SQL_CHAR, 5, "ab   "},
        {"nchar(5)", "N'ab'", SQL_WCHAR, 5, "ab   "},
        {"varchar(30)", "'Größe'", SQL_VARCHAR, 30, "Größe"},
        {"varchar(8000)", "N'ĀΩ😀'", SQL_VARCHAR, 8000, "A???"},
        {"varchar(max)", "'x'", SQL_VARCHAR, 0, "x"},
        {"text", "'€'", SQL_LONGVARCHAR, 2147483647, "€"},
        {"nvarchar(10)", "N'€😀'", SQL_WVARCHAR, 10, "€😀"},
        {"nvarchar(max)", "N''", SQL_WVARCHAR, 0, ""},
        {"date", "'2024-02-29'", SQL_TYPE_DATE, 10, "2024-02-29"},
        {"time(7)", "'23:59:59.1234567'", -154, 16, "23:59:59.1234567"},
        {"datetime", "'2024-02-29 23:59:59.997'", SQL_TYPE_TIMESTAMP, 23, "2024-02-29 23:59:59.997"},
        {"smalldatetime", "'2024-02-29 23:59'", SQL_TYPE_TIMESTAMP, 16, "2024-02-29 23:59:00"},
        {"datetime2(3)", "'2024-02-29 00:00:00.123'", SQL_TYPE_TIMESTAMP, 23, "2024-02-29 00:00:00.123"},
        {"datetimeoffset(3)", "'2024-02-29 23:59:58.123 +05:30'", -155, 30, "2024-02-29 23:59:58.123 +05:30"},
        {"uniqueidentifier", "'6F9619FF-8B86-D011-B42D-00C04FC964FF'", SQL_GUID, 36,
         "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"binary(4)", "0x0A0B", SQL_BINARY, 4, "0a0b0000"},
        {"varbinary(10)", "0x0AFF", SQL_VARBINARY, 10, "0aff"},
        {"varbinary(max)", "0x00", SQL_VARBINARY, 0, "00"},
    };
    OdbcClient client(box.odbcConnectionString());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        const std::string type = c.type;
        client.run("CREATE TABLE #t (a " + type + ", b " + type + "); INSERT INTO #t VALUES (" + c.literal +
                   ", NULL)");
        EXPECT_EQ(client.value("SELECT a, b FROM #t"), std::string(c.text) + "|NULL");
        SQLExecDirect(client.statement(), reinterpret_cast<SQLCHAR*>(const_cast<char*>("SELECT a FROM #t")),
                      SQL_NTS);
        SQLSMALLINT described = 0;
        SQLULEN size = 0;
        SQLDescribeCol(client.statement(), 1, nullptr, 0, nullptr, &described, &size, nullptr, nullptr);
        SQLFreeStmt(client.statement(), SQL_CLOSE);
        EXPECT_EQ(described, c.sqlType);
        EXPECT_EQ(size, c.size);
        client.run("DROP TABLE #t");
    }
}

TEST_F(ClientTest, EveryProtocolVersionReturnsTheSameValuesAndMessages) {
    for (const std::string version : {"7.1", "7.2", "7.3", "7.4"}) {
        SCOPED_TRACE(version);
        std::string connection = box.odbcConnectionString();
        connection.replace(connection.find("TDS_Version=7.4") + 12, 3, version);
        OdbcClient client(connection);
        EXPECT_EQ(
            client.value("SELECT CAST(-1.5 AS decimal(9,2)), CAST('2024-02-29' AS date), NULL, "
                         "CAST(N'ä' AS nvarchar(max)), CAST(0x01 AS varbinary(max)), CAST('t' AS text), "
                         "CAST('2024-02-29 01:00 +05:30' AS datetimeoffset(0))"),
            "-1.50|2024-02-29|NULL|ä|01|t|2024-02-29 01:00:00 +05:30");
        const std::string text = client.value("SELECT REPLICATE(CAST(N'äb' AS nvarchar(max)), 100000)");
        ASSERT_EQ(text.size(), 300'000U) << "across packets";
        EXPECT_EQ(text.substr(299'997), "äb");
        client.run("\nPRINT 'grüß' SELECT * FROM Nowhere");
        // The driver puts errors first.
        EXPECT_EQ(client.diagnostics(),
                  (std::vector<Diagnostic>{{208, 2, "Invalid object name 'Nowhere'."}, {0, 2, "grüß"}}));
    }
}

TEST_F(ClientTest, ParametersAndPreparedStatements) {
    OdbcClient client(box.odbcConnectionString());
    client.run("CREATE TABLE #p (i int, t nvarchar(30), d decimal(10,2))");
    SQLINTEGER number = -7;
    char text[40] = "it's\nGröße";
    double amount = 1.25;
    SQLLEN given = 0;
    SQLLEN textLength = SQL_NTS;
    SQLHSTMT statement = client.statement();
    SQLBindParameter(statement, 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 0, 0, &number, 0, &given);
    SQLBindParameter(statement, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_WVARCHAR, 30, 0, text, 0, &textLength);
    SQLBindParameter(statement, 3, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DECIMAL, 10, 2, &amount, 0, &given);
    SQLCHAR insert[] = "INSERT INTO #p VALUES (?, ?, ?)";
    ASSERT_EQ(SQLExecDirect(statement, insert, SQL_NTS), SQL_SUCCESS);
    ASSERT_EQ(SQLPrepare(statement, insert, SQL_NTS), SQL_SUCCESS);
    for (number = 1; number <= 2; ++number) ASSERT_EQ(SQLExecute(statement), SQL_SUCCESS);
    textLength = SQL_NULL_DATA;
    ASSERT_EQ(SQLExecute(statement), SQL_SUCCESS);
    SQLFreeStmt(statement, SQL_CLOSE);
    SQLFreeStmt(statement, SQL_RESET_PARAMS);
    const std::string row = "|it's\nGröße|1.25";
    EXPECT_EQ(client.run("SELECT i, t, d FROM #p ORDER BY i"),
              (std::vector<std::string>{"-7" + row, "1" + row, "2" + row, "3|NULL|1.25"}));
}

// The driver sends the calls of all rows in one request.
TEST_F(ClientTest, RunsOneCallPerRowOfAParameterArray) {
    OdbcClient client(box.odbcConnectionString());
    client.run("CREATE TABLE Arrayed (i int PRIMARY KEY, t nvarchar(10))");
    SQLINTEGER numbers[] = {1, 2, 2, 4};
    SQLCHAR texts[][8] = {"one", "two", "again", "four"};
    SQLLEN lengths[] = {SQL_NTS, SQL_NTS, SQL_NTS, SQL_NULL_DATA};
    SQLUSMALLINT states[4] = {};
    const SQLHSTMT statement = client.statement();
    SQLSetStmtAttr(statement, SQL_ATTR_PARAMSET_SIZE, reinterpret_cast<SQLPOINTER>(4), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_PARAM_STATUS_PTR, states, 0);
    SQLBindParameter(statement, 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 0, 0, numbers, 0, nullptr);
    SQLBindParameter(statement, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_WVARCHAR, 10, 0, texts, 8, lengths);
    SQLCHAR insert[] = "INSERT INTO Arrayed VALUES (?, ?)";
    SQLExecDirect(statement, insert, SQL_NTS);
    while (SQLMoreResults(statement) != SQL_NO_DATA) continue;
    EXPECT_EQ(states[2], SQL_PARAM_ERROR);
    SQLSetStmtAttr(statement, SQL_ATTR_PARAMSET_SIZE, reinterpret_cast<SQLPOINTER>(1), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_PARAM_STATUS_PTR, nullptr, 0);
    SQLFreeStmt(statement, SQL_RESET_PARAMS);
    EXPECT_EQ(client.run("SELECT i, t FROM Arrayed ORDER BY i"),
              (std::vector<std::string>{"1|one", "2|two", "4|NULL"}));
}

TEST_F(ClientTest, DescribesAPreparedStatementBeforeItRuns) {
    OdbcClient client(box.odbcConnectionString());
    client.run("CREATE TABLE Described (i int, t nvarchar(30))");
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"SELECT i, t AS name, 1 FROM Described WHERE i = ? AND t LIKE ?", {"i", "name", ""}},
        {"INSERT INTO Described VALUES (?, ?)", {}},
        {"IF ? = 1 SELECT t FROM Described WHERE i = ?", {"t"}}};
    const SQLHSTMT statement = client.statement();
    SQLINTEGER number = 1;
    SQLLEN given = 0;
    for (const auto& [batch, expected] : cases) {
        SCOPED_TRACE(batch);
        SQLCHAR* const text = reinterpret_cast<SQLCHAR*>(const_cast<char*>(batch));
        for (SQLUSMALLINT i = 1; i <= 2; ++i)
            SQLBindParameter(statement, i, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 0, 0, &number, 0,
                             &given);
        ASSERT_EQ(SQLPrepare(statement, text, SQL_NTS), SQL_SUCCESS);
        SQLSMALLINT count = 0;
        ASSERT_EQ(SQLNumResultCols(statement, &count), SQL_SUCCESS);
        std::vector<std::string> columns;
        for (SQLUSMALLINT i = 1; i <= count; ++i) {
            SQLCHAR name[64] = "";
            SQLDescribeCol(statement, i, name, sizeof name, nullptr, nullptr, nullptr, nullptr, nullptr);
            columns.emplace_back(reinterpret_cast<char*>(name));
        }
        EXPECT_EQ(columns, expected);
        EXPECT_TRUE(SQL_SUCCEEDED(SQLExecute(statement)));
        SQLFreeStmt(statement, SQL_CLOSE);
    }
    SQLFreeStmt(statement, SQL_RESET_PARAMS);
    EXPECT_EQ(client.value("SELECT COUNT(*) FROM Described"), "1");
    SQLCHAR wrong[] = "SELECT * FROM Nowhere";
    SQLSMALLINT count = 0;
    SQLPrepare(statement, wrong, SQL_NTS);
    EXPECT_EQ(SQLNumResultCols(statement, &count), SQL_ERROR);
    EXPECT_EQ(OdbcClient::diagnosticsOf(SQL_HANDLE_STMT, statement).front().number, 208);
}

TEST_F(ClientTest, DbLib) {
    for (const std::string version : {"7.1", "7.2", "7.3", "7.4"}) {
        SCOPED_TRACE(version);
        const ProgramResult result =
            runProgram({"bsqldb", "-S", "127.0.0.1:" + std::to_string(box.port()), "-U", box.login(), "-P",
                        box.password()},
                       {"SELECT 1 AS one, 'zwei' AS two\nGO\nSELECT * FROM Nowhere\nGO\n",
                        {},
                        {"TDSVER=" + version},
                        std::chrono::minutes(1)});
        EXPECT_NE(result.output.find("zwei"), std::string::npos) << result.output;
        EXPECT_NE(result.errors.find("Invalid object name 'Nowhere'."), std::string::npos) << result.errors;
    }
}

// Without -E the identities of the file are not used. A load that fails uses up its identities. pymssql sends
// strings to nvarchar columns as bytes of its own character set, which SQL Server refuses as well if their
// number is odd.
TEST_F(ClientTest, BulkCopyOfDbLib) {
    OdbcClient client(box.odbcConnectionString());
    client.run(
        "CREATE TABLE Loaded (id int IDENTITY(5, 1) PRIMARY KEY, name nvarchar(20) NOT NULL, amount "
        "decimal(10, 2) DEFAULT 1.5 CHECK (amount >= 0), taken datetime, note text)");
    const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
        {"1\tzwölf\t2.25\t2024-02-29 01:02:03.123\tnote\n1\tdefault\t\t\t\n", {}, "2 rows copied"},
        {"20\tkept\t3\t\t\n", {"-E"}, "1 rows copied"},
        {"30\tgood\t1\t\t\n31\tbad\t-1\t\t\n", {"-h", "TABLOCK,CHECK_CONSTRAINTS"}, "CHECK constraint"},
        {"20\tagain\t1\t\t\n", {"-E"}, "duplicate key"},
    };
    const TempDir folder;
    for (const auto& [rows, options, message] : cases) {
        SCOPED_TRACE(rows);
        writeFile(folder / "rows", rows);
        std::vector<std::string> command{"freebcp", "master..Loaded", "in", folder / "rows", "-c"};
        const std::string server = "127.0.0.1:" + std::to_string(box.port());
        command.insert(command.end(), {"-S", server, "-U", box.login(), "-P", box.password()});
        command.insert(command.end(), options.begin(), options.end());
        const ProgramResult result = runProgram(command, {{}, {}, {"TDSVER=7.1"}, std::chrono::minutes(1)});
        EXPECT_NE((result.output + result.errors).find(message), std::string::npos)
            << result.output << result.errors;
    }
    const char* const script =
        "import sys, pymssql\n"
        "c = pymssql.connect(server='127.0.0.1', port=sys.argv[1], user='sa', password=sys.argv[2])\n"
        "c.bulk_copy('Loaded', [(40 + i, i / 4) for i in range(3)], column_ids=[1, 3])\n"
        "c.commit()\n"
        "c.bulk_copy('Copied', [('odd', 'ab', 'some'), ('even', 'abcd', 'text'), (None, '', None)], "
        "column_ids=[1, 2, 3])\n"
        "c.commit()\n"
        "c.bulk_copy('Copied', [('odd',)], column_ids=[4])\n";
    client.run(
        "ALTER TABLE Loaded ALTER COLUMN name nvarchar(20) NULL; "
        "CREATE TABLE Copied (v varchar(10), c char(4), t text, n nvarchar(10))");
    const ProgramResult copied =
        runProgram({"/usr/bin/python3", "-c", script, std::to_string(box.port()), box.password()});
    EXPECT_NE(copied.errors.find("Unicode data is odd byte size for column 4."), std::string::npos)
        << copied.errors;
    EXPECT_EQ(client.run("SELECT * FROM Copied"),
              (std::vector<std::string>{"odd|ab  |some|NULL", "even|abcd|text|NULL", "NULL|    |NULL|NULL"}));
    EXPECT_EQ(
        client.run("SELECT * FROM Loaded ORDER BY id"),
        (std::vector<std::string>{"5|zwölf|2.25|2024-02-29 01:02:03.123|note", "6|default|1.50|NULL|NULL",
                                  "20|kept|3.00|NULL|NULL", "23|NULL|0.00|NULL|NULL",
                                  "24|NULL|0.25|NULL|NULL", "25|NULL|0.50|NULL|NULL"}));
}

// What the packages needed at that time runs on Debian's Node.js 18.
ProgramResult installModules() {
    return runProgram({INSTALL_NPM, TDS_MODULES, "2025-01-01", "tedious@18.6.1", "knex@3.1.0",
                       "sequelize@6.37.5", "typeorm@0.3.20", "mssql@11.0.1"},
                      {{}, {}, {}, std::chrono::minutes(4)});
}

// The cases are in clients/tedious_client.js.
TEST_F(ClientTest, Tedious) {
    const ProgramResult installed = installModules();
    if (installed.exitCode == 77) GTEST_SKIP() << installed.errors;
    ASSERT_EQ(installed.exitCode, 0) << installed.errors;
    const Certificates certificates;
    const TsqlBox encrypted(certificates.options("good", {"--encryption", "required"}));
    for (const auto& [server, argument] :
         {std::pair<const TsqlBox*, std::string>(&box, "plain"), {&encrypted, "encrypt"}}) {
        const ProgramResult result =
            runProgram({"node", TDS_CLIENTS "/tedious_client.js", TDS_MODULES, std::to_string(server->port()),
                        server->login(), server->password(), argument});
        EXPECT_EQ(result.exitCode, 0) << argument << result.output << result.errors;
    }
}

// The cases are in clients/knex_client.js and so on.
TEST_F(ClientTest, LibrariesOverTedious) {
    const ProgramResult installed = installModules();
    if (installed.exitCode == 77) GTEST_SKIP() << installed.errors;
    ASSERT_EQ(installed.exitCode, 0) << installed.errors;
    for (const std::string library : {"knex", "sequelize", "typeorm"}) {
        OdbcClient(box.odbcConnectionString()).run("CREATE DATABASE " + library);
        const ProgramResult result =
            runProgram({"node", TDS_CLIENTS "/" + library + "_client.js", TDS_MODULES,
                        std::to_string(box.port()), box.login(), box.password()});
        EXPECT_EQ(result.exitCode, 0) << library << result.output << result.errors;
    }
}

// The cases are in clients/sqlalchemy_client.py.
TEST_F(ClientTest, SqlAlchemy) {
    for (const std::string driver : {"pymssql", "pyodbc"}) {
        OdbcClient(box.odbcConnectionString()).run("CREATE DATABASE alchemy_" + driver);
        const ProgramResult result =
            runProgram({"/usr/bin/python3", TDS_CLIENTS "/sqlalchemy_client.py", std::to_string(box.port()),
                        box.login(), box.password(), driver});
        EXPECT_EQ(result.exitCode, 0) << driver << result.output << result.errors;
    }
}

// The cases are in clients/JtdsClient.java.
TEST_F(ClientTest, Jtds) {
    OdbcClient(box.odbcConnectionString()).run("CREATE DATABASE jtds");
    const ProgramResult result =
        runProgram({"java", "-cp", "/usr/share/java/jtds.jar", TDS_CLIENTS "/JtdsClient.java",
                    std::to_string(box.port()), box.login(), box.password()});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
}

// The cases are in clients/mssql_client.go.
TEST_F(ClientTest, GoMssqldb) {
    const TempDir folder;
    const ProgramResult built = runProgram(
        {"go", "build", "-o", folder / "client", TDS_CLIENTS "/mssql_client.go"},
        {{},
         {},
         {"GO111MODULE=off", "GOPATH=/usr/share/gocode", "GOFLAGS=-p=2", "GOCACHE=" TDS_MODULES ".go"},
         std::chrono::minutes(4)});
    ASSERT_EQ(built.exitCode, 0) << built.errors;
    const Certificates certificates;
    const TsqlBox encrypted(certificates.options("good", {"--encryption", "required"}));
    for (const auto& [server, encrypt] :
         {std::pair<const TsqlBox*, std::string>(&box, "disable"), {&encrypted, "true"}}) {
        const ProgramResult result = runProgram({folder / "client", std::to_string(server->port()),
                                                 server->login(), server->password(), encrypt});
        EXPECT_EQ(result.exitCode, 0) << encrypt << result.output << result.errors;
    }
}

}  // namespace
}  // namespace support
