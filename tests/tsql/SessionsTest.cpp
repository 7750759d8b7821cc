// Isolation of sessions from each other, and sessions that end early.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "ScriptRunner.h"
#include "TempDir.h"

namespace {

using tsql::test::runBatch;

class Sessions : public testing::Test {
  protected:
    std::string first(std::string_view text) { return runBatch(*m_first, text); }
    std::string second(std::string_view text) { return runBatch(*m_second, text); }
    static bool has(const std::string& text, std::string_view part) {
        return text.find(part) != std::string::npos;
    }
    // Asks for an application lock and prints sp_getapplock's result.
    static std::string lockOf(const std::string& name, const std::string& arguments) {
        return "DECLARE @r int EXEC @r = sp_getapplock '" + name + "', " + arguments + " PRINT @r";
    }

    support::TempDir m_directory;
    tsql::Engine m_engine{m_directory.path()};
    std::unique_ptr<tsql::Session> m_first = tsql::openSession(m_engine, {"sa"}, "master", 51);
    std::unique_ptr<tsql::Session> m_second = tsql::openSession(m_engine, {"sa"}, "master", 52);
};

TEST_F(Sessions, HaveTheirOwnTemporaryTables) {
    first("CREATE TABLE #t (x int) INSERT #t VALUES (1)");
    EXPECT_TRUE(has(second("SELECT * FROM #t"), "Msg 208"));
    EXPECT_TRUE(has(second("CREATE TABLE #t (y int) SELECT COUNT(*) FROM #t"), "= 0 (1 rows)\n"));
}

TEST_F(Sessions, WriteAfterReadingWhatAnotherHasChanged) {
    first("CREATE TABLE t (x int) INSERT t VALUES (1)");
    first("BEGIN TRAN SELECT * FROM t");
    second("UPDATE t SET x = 5");
    EXPECT_TRUE(has(first("UPDATE t SET x = x + 1 COMMIT SELECT x FROM t"), "= 6 (1 rows)\n"));
}

// What a session knows of the tables is no older than the last definition of another one.
TEST_F(Sessions, SeeTheDefinitionsOfOthers) {
    constexpr std::string_view kSelect = "SELECT * FROM shop..t";
    first("CREATE DATABASE shop");
    first("USE shop CREATE TABLE t (a int)");
    EXPECT_EQ(second(kSelect), "a int? (0 rows)\n");
    first("ALTER TABLE t ADD b int");
    EXPECT_EQ(second(kSelect), "a int? | b int? (0 rows)\n");
    first("BEGIN TRAN ALTER TABLE t ADD c int");
    EXPECT_EQ(second("BEGIN TRAN SELECT * FROM shop..t"), "a int? | b int? (0 rows)\n");
    first("COMMIT");
    EXPECT_EQ(second("INSERT shop..t (c) VALUES (1) COMMIT"), "(1 changed)\n");
    first("BEGIN TRAN ALTER TABLE t DROP COLUMN c SELECT * FROM t ROLLBACK");
    EXPECT_EQ(first("SELECT c FROM t"), "c int? = 1 (1 rows)\n");
    first("USE master ALTER DATABASE shop MODIFY NAME = old");
    first("CREATE DATABASE shop");
    EXPECT_TRUE(has(second(kSelect), "Msg 208"));
    first("DROP DATABASE shop ALTER DATABASE old MODIFY NAME = shop");
    EXPECT_EQ(second(kSelect), "a int? = NULL | b int? = NULL | c int? = 1 (1 rows)\n");
}

// The same text, translated again after every definition.
TEST_F(Sessions, RunAgainWhatAnotherHasRedefined) {
    constexpr std::string_view kText = "EXEC p SELECT dbo.f() AS f, x FROM v UPDATE t SET a = 5";
    first("CREATE TABLE t (a int) INSERT t VALUES (1)");
    for (const auto module :
         {"PROCEDURE p AS SELECT * FROM t", "FUNCTION f() RETURNS int AS BEGIN RETURN 1 END",
          "VIEW v AS SELECT a AS x FROM t"})
        first(std::string("CREATE ") + module);
    EXPECT_EQ(second(kText), "a int? = 1 (1 rows)\nf int? = 1 | x int? = 1 (1 rows) (1 changed)\n");
    first("ALTER TABLE t ADD b int");
    first("ALTER FUNCTION f() RETURNS char(1) AS BEGIN RETURN 'f' END");
    EXPECT_EQ(second(kText),
              "a int? = 5 | b int? = NULL (1 rows)\nf char(1)? = f | x int? = 5 (1 rows) (1 changed)\n");
    first("ALTER PROCEDURE p AS SELECT 2");
    first("ALTER VIEW v AS SELECT 'x' AS x");
    first("CREATE TRIGGER r ON t AFTER UPDATE AS PRINT 'fired'");
    EXPECT_EQ(second(kText),
              "- int = 2 (1 rows)\nf char(1)? = f | x varchar(1) = x (1 rows)\nfired (1 changed)\n");
}

// Redefines a function when the first row arrives.
class RedefiningSink : public tsql::ResultSink {
  public:
    explicit RedefiningSink(tsql::Session& other) : m_other(other) {}
    void row(std::span<const tsql::CellView> cells) override {
        if (m_values.empty()) runBatch(m_other, "ALTER FUNCTION f() RETURNS int AS BEGIN RETURN 2 END");
        m_values.push_back(std::get<std::int64_t>(cells[0]));
    }
    void message(const tsql::Message&) override {}
    const std::vector<std::int64_t>& values() const { return m_values; }

  private:
    tsql::Session& m_other;
    std::vector<std::int64_t> m_values;
};

TEST_F(Sessions, SeeADefinitionBehindTheStatementThatItMeets) {
    first("CREATE FUNCTION f() RETURNS int AS BEGIN RETURN 1 END");
    first("CREATE TABLE t (x int) INSERT t VALUES (0), (0), (0)");
    RedefiningSink sink(*m_first);
    m_second->runBatch("SELECT dbo.f() + x FROM t", sink);
    EXPECT_EQ(sink.values(), (std::vector<std::int64_t>{1, 1, 1}));
    EXPECT_TRUE(has(second("SELECT dbo.f()"), "= 2 (1 rows)\n"));
}

TEST_F(Sessions, WriteByTheDefinitionForWhichTheyHaveWaited) {
    first("CREATE TABLE t (v int)");
    second("INSERT t VALUES (12)");
    first("BEGIN TRAN ALTER TABLE t ALTER COLUMN v money");
    std::thread waiting([&] { second("INSERT t VALUES (12)"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    first("COMMIT");
    waiting.join();
    EXPECT_TRUE(has(first("SELECT DISTINCT v FROM t"), "= 12.0000 (1 rows)\n"));
}

TEST_F(Sessions, InsertThroughAViewWhatAProcedureReturns) {
    first("CREATE TABLE t (x int)");
    first("CREATE VIEW v AS SELECT x FROM t");
    first("CREATE TRIGGER tr ON v INSTEAD OF INSERT AS SELECT x FROM inserted");
    EXPECT_TRUE(has(first("INSERT v EXEC ('SELECT 7')"), "= 7 (1 rows)"));
}

TEST_F(Sessions, LeaveOnlyCommittedRowsBehind) {
    {
        const auto gone = tsql::openSession(m_engine, {"sa"}, "master", 53);
        runBatch(*gone, "CREATE TABLE t (x int) INSERT t VALUES (1) BEGIN TRAN INSERT t VALUES (2)");
    }
    EXPECT_TRUE(has(first("SELECT COUNT(*) FROM t"), "= 1 (1 rows)\n"));
}

TEST_F(Sessions, PrintAtMost8000Bytes) {
    constexpr std::size_t kNewline = 1;
    EXPECT_EQ(first("PRINT REPLICATE(CAST('x' AS varchar(max)), 8001)").size(), 8000 + kNewline);
    EXPECT_EQ(first("PRINT REPLICATE(CAST(N'x' AS nvarchar(max)), 4001)").size(), 4000 + kNewline);
}

TEST_F(Sessions, PreventTheDropOfTheirDatabase) {
    first("CREATE DATABASE other");
    first("USE other");
    EXPECT_TRUE(has(second("DROP DATABASE other"), "Msg 3702"));
    EXPECT_TRUE(has(second("ALTER DATABASE other SET SINGLE_USER WITH NO_WAIT"), "that other sessions use"));
    first("USE master");
    EXPECT_EQ(second("ALTER DATABASE other SET SINGLE_USER WITH ROLLBACK IMMEDIATE"), "");
    EXPECT_EQ(second("DROP DATABASE other"), "");
    EXPECT_FALSE(m_engine.storage.exists("other"));
}

TEST_F(Sessions, AreListedHoweverManyTheyAre) {
    std::vector<std::unique_ptr<tsql::Session>> more;
    for (int id = 100; id < 600; ++id) more.push_back(tsql::openSession(m_engine, {"sa"}, "master", id));
    EXPECT_TRUE(has(first("SELECT COUNT(*) FROM sys.dm_exec_sessions"), "= 502 (1 rows)\n"));
}

TEST_F(Sessions, WaitForTheNextValueOfASequence) {
    first("CREATE SEQUENCE s BEGIN TRAN SELECT NEXT VALUE FOR s");
    EXPECT_TRUE(has(second("SET LOCK_TIMEOUT 0 SELECT NEXT VALUE FOR s"), "Msg 1222"));
}

TEST_F(Sessions, NameAFileThatCannotBeOpened) {
    std::filesystem::create_directory(m_directory.path() / "folder.db");
    EXPECT_TRUE(has(first("SELECT * FROM folder..t"), "Msg 5120"));
    std::ofstream(m_directory.path() / "noise.db") << std::string(5000, 'x');
    EXPECT_TRUE(has(first("SELECT * FROM noise..t"), "noise.db\". Operating system error 0: \"file is not"));
    EXPECT_THROW(tsql::openSession(m_engine, {"sa"}, "folder", 53), tsql::SqlError);
}

// SQLite's last call before it gives up looks for a file that does not exist (2).
TEST_F(Sessions, NameTheReasonWhyAFileCannotBeOpened) {
    first("CREATE DATABASE shut");
    const uid_t own = ::geteuid();
    ::chmod(m_directory.path().c_str(), 0555);
    ASSERT_EQ(::seteuid(own == 0 ? 65534 : own), 0);
    const std::string answer = second("SELECT * FROM shut..t");
    ASSERT_EQ(::seteuid(own), 0);
    ::chmod(m_directory.path().c_str(), 0700);
    EXPECT_TRUE(has(answer, "Operating system error 13")) << answer;
}

TEST_F(Sessions, WaitForApplicationLocks) {
    const std::string lockJob = lockOf("job", "'Exclusive', 'Session', 5000");
    EXPECT_EQ(first(lockJob), "0\n");
    EXPECT_EQ(second(lockOf("job", "'Shared', 'Session', 50")), "-1\n");
    EXPECT_EQ(second(lockOf("JOB", "'Shared', 'Session', 50")), "0\n");
    std::string waited;
    std::thread waiting([&] { waited = second(lockJob); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    first("EXEC sp_releaseapplock 'job', 'Session'");
    waiting.join();
    EXPECT_EQ(waited, "1\n");
    {
        const auto gone = tsql::openSession(m_engine, {"sa"}, "master", 53);
        EXPECT_EQ(runBatch(*gone, "BEGIN TRAN " + lockOf("other", "'Update'")), "0\n");
    }
    EXPECT_EQ(first("BEGIN TRAN " + lockOf("other", "'Exclusive'") + " ROLLBACK"), "0\n");
}

TEST_F(Sessions, DetectADeadlockOfApplicationLocks) {
    const std::string a = lockOf("a", "'Exclusive', 'Session'"), b = lockOf("b", "'Exclusive', 'Session'");
    first(a);
    second(b);
    std::string waited;
    std::thread waiting([&] { waited = first(b); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(second(a), "-3\n");
    second("EXEC sp_releaseapplock 'b', 'Session'");
    waiting.join();
    EXPECT_EQ(waited, "1\n");
}

TEST_F(Sessions, BackUpAndRestore) {
    const std::string disk = "DISK = '" + (m_directory.path() / "shop.bak").string() + "'";
    std::filesystem::create_symlink("..", m_directory.path() / "link");
    first("CREATE DATABASE shop");
    first("USE shop CREATE TABLE t (x int) INSERT t VALUES (1)");
    const std::string output = first("BACKUP DATABASE shop TO " + disk +
                                     " WITH COPY_ONLY, INIT, CHECKSUM, NAME = 'full', STATS = 40");
    for (const auto line : {"40 percent processed.\n", "80 percent processed.\n", "100 percent processed.\n"})
        EXPECT_TRUE(has(output, line)) << output;
    EXPECT_TRUE(has(output, "pages for database 'shop', file 'shop' on file 1.\nMsg 3014")) << output;
    struct Case {
        std::string statement, answer;
    };
    const std::string restore = "RESTORE DATABASE ";
    const std::string moves = " WITH MOVE 'shop' TO '/a.mdf', MOVE 'shop_log' TO '/a.ldf', RECOVERY";
    const Case cases[] = {
        {"RESTORE FILELISTONLY FROM " + disk, "shop_log | "},
        {"RESTORE HEADERONLY FROM " + disk,
         "BackupName nvarchar(128)? = full | BackupDescription nvarchar(255)? = NULL | BackupType smallint? "
         "= 1 | "},
        {"SELECT name FROM msdb..backupset", "= full (1 rows)\n"},
        {"RESTORE VERIFYONLY FROM " + disk, "The backup set on file 1 is valid."},
        {"DBCC CHECKDB (SHOP) WITH ALL_ERRORMSGS", "0 consistency errors in database 'shop'."},
        {"DBCC CHECKDB (nosuch)", "Msg 911"},
        {"DBCC CHECKALLOC (shop)", "does not support DBCC CHECKALLOC"},
        {restore + "shop FROM " + disk + " WITH REPLACE", "Msg 3102"},
        {restore + "copy FROM " + disk, "File 'shop_log' cannot be restored"},
        {restore + "copy FROM " + disk + moves, "RESTORE DATABASE successfully processed"},
        {restore + "copy FROM " + disk + moves, "Msg 3154"},
        {restore + "copy FROM " + disk + moves + ", REPLACE, STATS", "90 percent processed.\n"},
        {restore + "copy FROM " + disk + " WITH MOVE 'nope' TO '/a', REPLACE", "Msg 3234"},
        {restore + "new FROM DISK = '/nonexistent/file'", "Msg 3201"},
        {restore + "copy FROM " + disk + " WITH NORECOVERY", "does not support RESTORE WITH NORECOVERY"},
        {"BACKUP DATABASE shop TO " + disk + " WITH NOINIT", "does not support BACKUP WITH NOINIT"},
        {"BACKUP DATABASE nosuch TO " + disk, "Msg 3013"},
        {"BACKUP DATABASE shop TO DISK = '" + m_directory.path().string() + "/../outside.bak'", "Msg 3201"},
        {"BACKUP DATABASE shop TO DISK = '" + m_directory.path().string() + "/link/x.bak'", "Msg 3201"},
        {"BACKUP DATABASE tempdb TO " + disk, "Msg 3147"},
        {"BEGIN TRAN BACKUP DATABASE shop TO " + disk + " ROLLBACK", "transaction.\nMsg 3013"},
        {"SELECT COUNT(*) FROM copy..t", "= 1 (1 rows)\n"},
    };
    for (const auto& [statement, answer] : cases) {
        const std::string answered = first(statement);
        EXPECT_TRUE(has(answered, answer)) << statement << "\n" << answered;
    }
    second("USE shop");
    EXPECT_TRUE(has(first("USE master RESTORE DATABASE shop FROM " + disk + " WITH REPLACE"), "Msg 3101"));
}

// A client that leaves: it throws at the first row, or cancels after 50 ms.
class LeavingSink final : public tsql::ResultSink {
  public:
    explicit LeavingSink(bool throws) : m_throws(throws) {}
    void columns(std::span<const tsql::Column>) override {}
    void row(std::span<const tsql::CellView>) override {
        ++m_rows;
        if (m_throws) throw std::runtime_error("the client left");
    }
    void statementDone(std::int64_t, tsql::StatementKind) override {}
    void message(const tsql::Message&) override { ++m_messages; }
    void databaseChanged(std::string_view, std::string_view) override {}
    bool cancelled() override { return !m_throws && std::chrono::steady_clock::now() > m_until; }
    int rows() const { return m_rows; }
    int messages() const { return m_messages; }

  private:
    bool m_throws;
    int m_rows = 0, m_messages = 0;
    std::chrono::steady_clock::time_point m_until =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
};

TEST_F(Sessions, ContinueAfterACancelledBatch) {
    constexpr std::string_view kEndless[] = {
        "WHILE 1 = 1 SET NOCOUNT ON",
        "SELECT COUNT(*) FROM sys.objects a, sys.objects b, sys.objects c, sys.objects d, sys.objects e, "
        "sys.objects f, sys.objects g, sys.objects h, sys.objects i, sys.objects j",
        "WAITFOR DELAY '01:00:00'",
    };
    for (int i = 0; i < 12; ++i) first("CREATE TABLE u" + std::to_string(i) + " (x int)");
    for (const auto batch : kEndless) {
        LeavingSink sink(false);
        EXPECT_TRUE(m_first->runBatch(batch, sink)) << batch;
        EXPECT_EQ(sink.messages(), 0) << batch;
    }
    EXPECT_TRUE(has(first("SELECT 1"), "= 1\n"));  // no row count: NOCOUNT is ON
}

TEST_F(Sessions, ContinueAfterASinkThatThrows) {
    LeavingSink sink(true);
    EXPECT_THROW(m_first->runBatch("SELECT 1 SELECT 2", sink), std::runtime_error);
    EXPECT_EQ(sink.rows(), 1);
    EXPECT_TRUE(has(first("SELECT 3"), "= 3 (1 rows)\n"));
}

}  // namespace
