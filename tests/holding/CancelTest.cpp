// Cancelled requests are answered whatever the session waits for, and a client that disconnects leaves
// nothing behind. The locks that they wait for are released only afterwards.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "OdbcClient.h"
#include "ServerProcess.h"
#include "storage/Storage.h"

namespace support {
namespace {

constexpr unsigned kAttentionBit = 0x20;

// Sent before a wait, so that the client knows when the wait begins.
constexpr const char* kSendNow = "RAISERROR('now', 0, 1) WITH NOWAIT ";

constexpr const char* kManyRows =
    "FROM sys.types a, sys.types b, sys.types c, sys.types d, sys.types e, sys.types f, "
    "sys.types g, sys.types h";

class CancelTest : public testing::Test {
  protected:
    CancelTest() {
        run(*holder, "CREATE DATABASE Held CREATE DATABASE Own");
        run(*holder,
            "CREATE TABLE Held..t (i int) CREATE TABLE Own..t (i int) INSERT INTO Held..t VALUES (0)");
        run(*holder, "BACKUP DATABASE Held TO DISK = '" + backup + "'");
        run(*holder,
            "BEGIN TRANSACTION UPDATE Held..t SET i = 1 "
            "EXEC sp_getapplock 'held', 'Exclusive', 'Session'");
        tsql::execute(outside.get(), "BEGIN IMMEDIATE");
    }

    static void run(RawClient& client, const std::string& batch) {
        ask(client, batch);
        ASSERT_EQ(answer(client) & kErrorBit, 0U) << batch;
    }
    static void startWaiting(RawClient& client, const std::string& batch) {
        ask(client, kSendNow + batch);
        bool last = true;
        client.packetBody(last);
        ASSERT_FALSE(last) << batch;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    static void expectCancelled(RawClient& client, const std::string& batch) {
        SCOPED_TRACE(batch);
        startWaiting(client, batch);
        client.send(packet(kAttention, ""));
        EXPECT_EQ(answer(client) & (kErrorBit | kAttentionBit), 0U) << "a cancelled request reports no error";
        EXPECT_EQ(answer(client), kAttentionBit);
    }
    static std::string answerTo(RawClient& client, const std::string& condition) {
        ask(client, "IF " + condition + " PRINT 'yes' ELSE RAISERROR('no', 16, 1)");
        return (answer(client) & kErrorBit) == 0 ? "yes" : "no";
    }

    TsqlBox box;
    std::string backup = (std::filesystem::path(box.dataDirectory()) / "held.bak").string();
    std::unique_ptr<RawClient> holder = loggedIn(box);
    tsql::SqliteConnection outside = [this] {
        run(*holder, "CREATE DATABASE Target");
        return tsql::openDatabaseFile(std::filesystem::path(box.dataDirectory()) / "Target.db");
    }();
    // Looking for one in the other takes 10^11 comparisons.
    const std::string longStrings =
        "DECLARE @text varchar(max) = REPLICATE(CONVERT(varchar(max), 'a'), 1000000) "
        "DECLARE @part varchar(max) = LEFT(@text, 500000) + 'b' ";
    std::string pipe() const {
        const std::string path = (std::filesystem::path(box.dataDirectory()) / "pipe").string();
        mkfifo(path.c_str(), 0600);
        return path;
    }
    const std::vector<std::string> waits = {
        "SET LOCK_TIMEOUT 60000 UPDATE Held..t SET i = 2",
        "SET LOCK_TIMEOUT 60000 BEGIN TRY CREATE TABLE Held..u (i int) END TRY BEGIN CATCH THROW END CATCH",
        "SET LOCK_TIMEOUT 60000 EXEC('INSERT INTO Held..t OUTPUT inserted.i VALUES (3)')",
        "EXEC sp_getapplock 'held', 'Shared', 'Session'",
        "WAITFOR DELAY '01:00:00'",
        std::string("SELECT a.name + b.name + c.name AS x ") + kManyRows + " ORDER BY x",
        std::string("INSERT INTO Own..t SELECT 1 ") + kManyRows,
        "RESTORE DATABASE Target FROM DISK = '" + backup + "' WITH REPLACE, MOVE 'Held' TO '/t.mdf'",
        "RESTORE DATABASE Target FROM DISK = '" + pipe() + "' WITH REPLACE, MOVE 'Held' TO '/t.mdf'",
        longStrings + "SELECT CHARINDEX(@part, @text)",
        longStrings + "SELECT REPLACE(@text, @part, '')",
        longStrings + "SELECT PATINDEX('%' + @part + '%', @text)",
        longStrings + "IF @text LIKE '%' + @part PRINT 'yes'",
    };
};

TEST_F(CancelTest, EndsEveryWait) {
    const auto client = loggedIn(box);
    for (const std::string& wait : waits) {
        expectCancelled(*client, wait);
        EXPECT_TRUE(isServed(*client)) << wait;
    }
    tsql::execute(outside.get(), "COMMIT");
    run(*holder, "COMMIT EXEC sp_releaseapplock 'held', 'Session'");
    run(*client, "UPDATE Held..t SET i = i + 1 EXEC sp_getapplock 'held', 'Exclusive', 'Session'");
    EXPECT_EQ(answerTo(*client, "(SELECT SUM(i) FROM Held..t) = 2 AND NOT EXISTS (SELECT 1 FROM Own..t)"),
              "yes");
    EXPECT_EQ(answerTo(*client, "EXISTS (SELECT 1 FROM Target.sys.tables)"), "no");
    for (const auto& entry : std::filesystem::directory_iterator(box.dataDirectory()))
        EXPECT_EQ(entry.path().string().find("restore."), std::string::npos) << entry.path();
}

// A cancelled wait keeps the transaction; a cancelled change rolls it back, and so does XACT_ABORT.
TEST_F(CancelTest, KeepsOrRollsBackTheWholeTransaction) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", waits[0], "@@TRANCOUNT = 1 AND EXISTS (SELECT 1 FROM Own..t)"},
        {"", waits[4], "@@TRANCOUNT = 1 AND EXISTS (SELECT 1 FROM Own..t)"},
        {"", waits[6], "@@TRANCOUNT = 0 AND NOT EXISTS (SELECT 1 FROM Own..t)"},
        {"SET XACT_ABORT ON ", waits[4], "@@TRANCOUNT = 0 AND NOT EXISTS (SELECT 1 FROM Own..t)"}};
    for (const auto& [settings, wait, left] : cases) {
        SCOPED_TRACE(settings + wait);
        const auto client = loggedIn(box);
        run(*client, settings + "BEGIN TRANSACTION INSERT INTO Own..t VALUES (7)");
        expectCancelled(*client, wait);
        EXPECT_EQ(answerTo(*client, left), "yes");
        run(*client, "IF @@TRANCOUNT > 0 ROLLBACK");
    }
}

TEST_F(CancelTest, EndsTheSessionOfAClientThatDisconnects) {
    const std::size_t threads = threadsOf(box);
    for (const std::string& wait : waits) {
        SCOPED_TRACE(wait);
        const bool canHold = wait.find("RESTORE") == std::string::npos;
        {
            const auto client = loggedIn(box);
            run(*client, "EXEC sp_getapplock 'own', 'Exclusive', 'Session'");
            if (canHold) run(*client, "BEGIN TRANSACTION INSERT INTO Own..t VALUES (7)");
            startWaiting(*client, wait);
            ask(*client, "SELECT 'never read'");
        }
        EXPECT_TRUE(becomesTrue([&] { return threadsOf(box) == threads; }));
        const auto other = loggedIn(box);
        run(*other,
            "SET LOCK_TIMEOUT 0 INSERT INTO Own..t VALUES (1) DELETE FROM Own..t WHERE i = 1 DECLARE @r int "
            "EXEC @r = sp_getapplock 'own', 'Exclusive', 'Session' IF @r <> 0 RAISERROR('held', 16, 1)");
        EXPECT_EQ(answerTo(*other, "NOT EXISTS (SELECT 1 FROM Own..t)"), "yes");
    }
}

TEST_F(CancelTest, SigtermEndsEveryWait) {
    std::vector<std::unique_ptr<RawClient>> clients;
    for (const std::string& wait : waits) startWaiting(*clients.emplace_back(loggedIn(box)), wait);
    EXPECT_EQ(box.stop(), 0);
}

// The driver sends an attention when its time-out has passed.
TEST_F(CancelTest, EndsALockWaitAtTheDriversTimeOut) {
    OdbcClient client(box.odbcConnectionString());
    client.run("SET LOCK_TIMEOUT 60000");
    SQLSetStmtAttr(client.statement(), SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(1), 0);
    EXPECT_EQ(client.value("UPDATE Held..t SET i = 2"), "Timeout expired");
    EXPECT_EQ(client.value("SELECT i FROM Held..t"), "0");
}

}  // namespace
}  // namespace support
