// Logins that closed connections leave for the next ones.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Realm.h"
#include "SqlEffect.h"
#include "TestStore.h"
#include "TsqlBox.h"
#include "TurkishLocale.h"
#include "VTSimpleDBConn.h"
#include "VtProcess.h"

namespace {

using hostlayer::SqlEffect;

TEST(SqlEffect, OnlyASinglePlainStatementHasNone) {
    const std::pair<const char*, SqlEffect> cases[] = {
        {"SELECT TOP 1 id FROM T WHERE name = 'SET DROP' and type & 2 > 0 ORDER BY id DESC",
         SqlEffect::kNone},
        {" select [exec], \"use\" /* drop */ from t -- kill\r\n union all select 1;", SqlEffect::kNone},
        {"UPDATE t SET a = (SELECT max(b) FROM u)", SqlEffect::kNone},
        {"delete t where a = N'it''s'", SqlEffect::kNone},
        {"INSERT t VALUES (1)", SqlEffect::kIdentity},
        {"SET NOCOUNT ON INSERT INTO t SELECT 1 SELECT @@IDENTITY", SqlEffect::kIdentity},
        {"INSERT INTO t SELECT a INTO u FROM v", SqlEffect::kSession},
        {"INSERT #t VALUES (1)", SqlEffect::kSession},
        {"INSERT t EXEC p", SqlEffect::kServer},
        {"SET NOCOUNT ON UPDATE t SET a = 1", SqlEffect::kNone},
        {"SET NOCOUNT ON", SqlEffect::kSession},
        {"SET LOCK_TIMEOUT 1 SELECT 1", SqlEffect::kSession},
        {"SELECT @@OPTIONS", SqlEffect::kServer},
        {"UPDATE t SET a = 1 SET NOCOUNT ON", SqlEffect::kSession},
        {"SELECT 1 UPDATE t SET a = 1", SqlEffect::kSession},
        {"SELECT a INTO #t FROM u", SqlEffect::kSession},
        {"select a into u from v", SqlEffect::kSession},
        {"SELECT a FROM #t", SqlEffect::kSession},
        {"", SqlEffect::kSession},
        {"sp_who", SqlEffect::kServer},
        {"SELECT 1; sp_who", SqlEffect::kServer},
        {"SELECT 1 USE master", SqlEffect::kServer},
        {"SELECT 1\nBEGIN TRAN", SqlEffect::kServer},
        {"SELECT 1DROP TABLE t", SqlEffect::kServer},
        {"SELECT 1\xC2\xA0"
         "DROP TABLE t",
         SqlEffect::kServer},
        {"SELECT [a]]'] DROP TABLE t --'", SqlEffect::kServer},
        {"SELECT 1 /* /* */ ' */ DROP TABLE t --'", SqlEffect::kServer},
        {"SELECT 1 -- \r ' \n DROP TABLE t --'", SqlEffect::kServer},
        {"SELECT 'unclosed", SqlEffect::kServer},
    };
    const auto check = [&] {
        for (const auto& [sql, effect] : cases) EXPECT_EQ(hostlayer::effectOf(sql), effect) << sql;
    };
    check();
    const support::TurkishLocale otherLetters;
    check();
}

TEST(SqlEffect, OnlyAScriptThatReadsAndChangesRowsSharesTheDatabase) {
    const std::pair<const char*, bool> cases[] = {
        {"SET ARITHABORT ON \nGO \nSELECT 'EXEC' -- RESTORE\nGO\nUPDATE t SET a = 1; PRINT 'x'\ngo\n", false},
        {"IF OBJECT_ID('t') IS NULL CREATE TABLE t (a int)\nWAITFOR DELAY '00:00:01'\n", false},
        {"ALTER DATABASE d SET SINGLE_USER", true},
        {"SELECT 1\nGO\nsp_renamedb 'a', 'b'\n", true},
        {"SELECT 1\nGO 2\nsp_renamedb 'a', 'b'\n", true},
        {"SELECT 1 EXEC p", true},
        {"PRINT '$(x)'", true},
        {":r other.sql\n", true},
        {"PRINT 'unclosed", true},
    };
    for (const auto& [script, mayNeedItAlone] : cases)
        EXPECT_EQ(hostlayer::mayNeedDatabaseAlone(script), mayNeedItAlone) << script;
}

class ConnectionReuse : public ::testing::Test {
  protected:
    int open(VTSimpleDBConnObject& connection, bool readOnly = false) const {
        const std::string text = connection.getConnectionString(
            m_box.server().c_str(), "tempdb", m_box.login().c_str(), m_box.password().c_str(), false, false);
        return connection.OpenSQLConnectionUsingConnectionString(text.c_str(), readOnly);
    }

    // Opens a connection, runs a batch without reading its rows, and closes.
    void run(const char* sql, bool readOnly = false) const {
        VTSimpleDBConnObject connection;
        ASSERT_EQ(open(connection, readOnly), 0);
        connection.executeQuery(sql, false);
    }

    // Number of this process's connections to the server.
    int sockets() const {
        int count = 0;
        for (int descriptor = 0; descriptor < 1024; ++descriptor) {
            sockaddr_in peer{};
            socklen_t size = sizeof peer;
            if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0 &&
                peer.sin_family == AF_INET && ntohs(peer.sin_port) == m_box.port())
                ++count;
        }
        return count;
    }

    support::TsqlBox m_box;
    const TestStore m_store{"[host]\nconnectionReuse = 60\n"};
};

TEST_F(ConnectionReuse, FollowsPlainStatementsOnly) {
    run("CREATE TABLE dbo.Kept (id int IDENTITY, a int)");
    const std::pair<const char*, int> cases[] = {{"SELECT 1", 1},
                                                 {"SELECT name FROM sys.databases", 1},
                                                 {"SET ROWCOUNT 1", 0},
                                                 {"SET NOCOUNT ON SELECT 1", 1},
                                                 {"CREATE TABLE #t (a int)", 0},
                                                 {"SELECT 1 / 0", 0},
                                                 {"SELECT 2", 1},
                                                 {"INSERT dbo.Kept DEFAULT VALUES", 1},
                                                 {"UPDATE dbo.Kept SET a = 2", 1},
                                                 {"no statement", 0}};
    for (const auto& [sql, kept] : cases) {
        run(sql);
        EXPECT_EQ(sockets(), kept) << sql;
    }
    run("SELECT 1");
    run("SELECT 1", /*readOnly=*/true);
    EXPECT_EQ(sockets(), 2);
}

// A later connection does not see the identity that an earlier one's INSERT has left.
TEST_F(ConnectionReuse, EndsBeforeAnIdentityIsRead) {
    run("CREATE TABLE dbo.Kept (id int IDENTITY(7, 1), a int)");
    for (const char* sql : {"SELECT 1 WHERE @@IDENTITY IS NULL", "SELECT 1 WHERE SCOPE_IDENTITY() IS NULL"}) {
        run("INSERT dbo.Kept VALUES (1)");
        EXPECT_EQ(sockets(), 1);
        VTSimpleDBConnObject connection;
        VTDBAutoBindResult result;
        ASSERT_EQ(open(connection), 0);
        EXPECT_EQ(connection.executeQuery(sql, false), 0);
        EXPECT_EQ(connection.autoBind(result), 0);
        EXPECT_EQ(result.getNextRow(), 0) << sql;
    }
}

TEST_F(ConnectionReuse, GivesALoginToOneConnectionAtATime) {
    run("SELECT 1");
    std::vector<VTSimpleDBConnObject> connections(8);
    std::vector<std::thread> threads;
    for (VTSimpleDBConnObject& connection : connections)
        threads.emplace_back([&] { EXPECT_EQ(open(connection), 0); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(sockets(), 8);
}

TEST_F(ConnectionReuse, ReplacesALoginThatTheServerHasClosed) {
    run("SELECT 1");
    m_box.kill();
    VTSimpleDBConnObject connection;
    EXPECT_EQ(open(connection), -1);
    m_box.start();
    run("SELECT 1");
    m_box.stop();
    m_box.start();
    ASSERT_EQ(open(connection), 0);
    EXPECT_EQ(connection.executeQuery("SELECT 1", false), 0);
}

TEST_F(ConnectionReuse, EndsBeforeWhatMayNeedTheDatabaseAlone) {
    VTSimpleDBConnObject other;
    ASSERT_EQ(open(other), 0);
    const std::function<void()> acts[] = {
        [] {
            VtProcess process;
            EXPECT_TRUE(process.Start("/bin/true", "true", nullptr, 0, 0));
            EXPECT_TRUE(process.Wait(nullptr, nullptr, 0, VtProcess::kNoTimeout));
        },
        [&] { other.executeQuery("DROP TABLE NoSuchTable", false); },
        [] {
            const pid_t child = ::fork();
            if (child == 0) ::_exit(0);
            ::waitpid(child, nullptr, 0);
        }};
    for (const auto& act : acts) {
        run("SELECT 1");
        ASSERT_EQ(sockets(), 2);
        act();
        EXPECT_EQ(sockets(), 1);
    }
}

TEST_F(ConnectionReuse, EndsAfterItsTime) {
    m_store.write("[host]\nconnectionReuse = 0\n");
    run("SELECT 1");
    EXPECT_EQ(sockets(), 0);
    m_store.write("[host]\nconnectionReuse = 1\n");
    run("SELECT 1");
    EXPECT_EQ(sockets(), 1);
    for (int i = 0; i < 300 && sockets() > 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(sockets(), 0);
}

TEST(WindowsIdentity, IsThatOfTheTicketsAlsoForLoginsThatAreContinued) {
    const support::Realm realm;
    const support::TsqlBox box({"--keytab", realm.keytab()});
    realm.addService(box.port());
    const TestStore store("[host]\nconnectionReuse = 60\n");
    const auto name = [&] {
        VTSimpleDBConnObject connection;
        const std::string server = "localhost," + std::to_string(box.port());
        const std::string text =
            connection.getConnectionString(server.c_str(), "tempdb", nullptr, nullptr, true, false);
        VTDBAutoBindResult result;
        const bool hasRow = connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false) == 0 &&
                            connection.executeQuery("SELECT SUSER_SNAME()", false) == 0 &&
                            connection.autoBind(result) == 0 && result.getNextRow() == 0;
        return std::string(hasRow ? result.column(0).asUtf8() : "no login");
    };
    const std::string clients[] = {"person", "other"};
    for (const std::string& client : clients) {
        realm.useTickets(client);
        realm.logIn(client);
        EXPECT_EQ(name(), client + "@EXAMPLE.TEST");
    }
    realm.useTickets("person");
    EXPECT_EQ(name(), "person@EXAMPLE.TEST");
    realm.logIn("other");  // does not end a login that waits for its next use
    EXPECT_EQ(name(), "person@EXAMPLE.TEST");

    realm.useTickets("none");
    EXPECT_EQ(name(), "no login");
    setenv("KRB5_CLIENT_KTNAME", realm.clientKeytab().c_str(), 1);
    EXPECT_EQ(name(), "person@EXAMPLE.TEST");
    store.write("[host]\nconnectionReuse = 0\n");
    std::vector<std::thread> threads;
    std::atomic<int> logins = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 5; ++round) logins += name() == "person@EXAMPLE.TEST" ? 1 : 0;
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(logins, 40);
    unsetenv("KRB5_CLIENT_KTNAME");
}

}  // namespace
