#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "Proxy.h"
#include "TestStore.h"
#include "TsqlBox.h"
#include "VTSimpleDBConn.h"
#include "VtProcess.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

class ServerConnection : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { defaultDebugLog(); }

    int open() { return open(m_box.password()); }
    int open(const std::string& password, const char* database = "master") {
        const std::string text = m_connection.getConnectionString(
            m_box.server().c_str(), database, m_box.login().c_str(), password.c_str(), false, false);
        return m_connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false);
    }

    // The rows, with "NULL" for NULL. A failure is one row that names the failed step.
    Rows rows(const std::string& sql, bool prepared = false) {
        if (m_connection.executeQuery(sql.c_str(), prepared) != 0) return {{"execute failed"}};
        VTDBAutoBindResult result;
        if (m_connection.autoBind(result) == -1) return {{"bind failed"}};
        Rows found;
        int state = 0;
        while ((state = result.getNextRow()) == 0) {
            auto& row = found.emplace_back();
            for (int i = 0; i < result.columnCount(); ++i)
                row.emplace_back(result.column(i).isNull() ? "NULL" : result.column(i).asUtf8());
        }
        EXPECT_EQ(result.getNextRow(), state);
        if (state != 1) found.push_back({"fetch failed"});
        return found;
    }

    support::TsqlBox m_box;
    const TestStore m_store{""};
    VTSimpleDBConnObject m_connection;
};

TEST_F(ServerConnection, ReturnsValuesAsUtf8) {
    ASSERT_EQ(open(), 0);
    const std::string sql =
        "SELECT 7, CAST(N'Grüße 😀' AS nvarchar(20)), NULL, '', CAST(-1.50 AS decimal(10,2)), "
        "CAST('2024-02-29 23:59:59.997' AS datetime)";
    const Rows wanted = {{"7", "Grüße 😀", "NULL", "", "-1.50", "2024-02-29 23:59:59.997"}};
    EXPECT_EQ(rows(sql), wanted);
    EXPECT_EQ(rows(sql, true), wanted);
    EXPECT_EQ(rows("SELECT CAST('-0.00000000000000000000000000000000000001' AS decimal(38,38)), "
                   "CAST(-1.17549435E-38 AS real)"),
              (Rows{{"-0.00000000000000000000000000000000000001", "-1.17549435e-38"}}));
    EXPECT_EQ(rows("SELECT 1 AS a WHERE 1 = 0"), Rows());
    EXPECT_EQ(rows("PRINT 'x'"), Rows());
}

TEST_F(ServerConnection, CutsNoLongValue) {
    ASSERT_EQ(open(), 0);
    std::string longText;
    for (int i = 0; i < 70001; ++i) longText += "äb€";
    const Rows found = rows(
        "SELECT 1, REPLICATE(CAST(N'äb€' AS nvarchar(max)), 70001), 'after' UNION ALL "
        "SELECT 2, CAST(NULL AS nvarchar(max)), 'null' UNION ALL SELECT 3, CAST('' AS nvarchar(max)), "
        "'empty'");
    const Rows wanted = {{"1", longText, "after"}, {"2", "NULL", "null"}, {"3", "", "empty"}};
    EXPECT_TRUE(found == wanted) << found.size();
    EXPECT_EQ(
        rows("SELECT CAST(REPLICATE(CAST(N'€' AS nvarchar(max)), 4000) AS nvarchar(4000))")[0][0].size(),
        12000U);
}

TEST_F(ServerConnection, ReadsManyBlocksOfRows) {
    ASSERT_EQ(open(), 0);
    ASSERT_EQ(rows("CREATE TABLE Many (i int, t varchar(20))"), Rows());
    ASSERT_EQ(rows("DECLARE @i int SET @i = 0 WHILE @i < 300 BEGIN INSERT INTO Many VALUES "
                   "(@i, CASE WHEN @i % 3 = 0 THEN NULL ELSE 'r' END) SET @i = @i + 1 END"),
              Rows());
    const Rows found = rows("SELECT i, t FROM Many ORDER BY i");
    ASSERT_EQ(found.size(), 300U);
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_EQ(found[i], (std::vector<std::string>{std::to_string(i), i % 3 == 0 ? "NULL" : "r"}));
}

TEST_F(ServerConnection, NoLimitIsTooLongForTheDriver) {
    m_store.write("[host]\nloginTimeout = 4294967295\nqueryTimeout = 4294968\n");
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(rows("WAITFOR DELAY '00:00:01' SELECT 1"), (Rows{{"1"}}));
}

// The batch would never end.
TEST_F(ServerConnection, AReplyEndsAtItsLimit) {
    m_store.write("[host]\nreplyLimit = 1\n");
    ASSERT_EQ(open(), 0);
    const std::size_t logged = defaultDebugLog().size();
    EXPECT_FALSE(rows("WHILE 1 = 1 SELECT REPLICATE('x', 8000)").empty());
    m_connection.CloseSQLConnection();
    EXPECT_NE(defaultDebugLog().find("the server's answer has more than 1 MiB", logged), std::string::npos);
}

TEST_F(ServerConnection, AnErrorBehindTheFirstRowsIsAFailure) {
    ASSERT_EQ(open(), 0);
    for (const std::string value : {"n", "CAST(n AS varchar(max))"})
        EXPECT_EQ(rows("SELECT 10 / n, " + value + " FROM (VALUES (1), (0)) v (n)").back(),
                  (std::vector<std::string>{"fetch failed"}))
            << value;
}

TEST_F(ServerConnection, DoesNotRunTheFirstHalfOfAStatement) {
    ASSERT_EQ(open(), 0);
    ASSERT_EQ(rows("CREATE TABLE Kept (a int) INSERT Kept VALUES (1), (2)"), Rows());
    EXPECT_EQ(rows("DELETE Kept -- f\xFCr\n WHERE a = 1"), (Rows{{"execute failed"}}));
    EXPECT_EQ(rows("DELETE Kept -- für\n WHERE a = 1"), Rows());
    EXPECT_EQ(rows("SELECT a FROM Kept -- " + std::string(9000, 'x') + "€"), (Rows{{"2"}}));
}

TEST_F(ServerConnection, RunsABatchToItsEnd) {
    ASSERT_EQ(open(), 0);
    ASSERT_EQ(rows("CREATE TABLE Steps (id int IDENTITY(1,1), t varchar(20))"), Rows());
    EXPECT_EQ(rows("INSERT INTO Steps (t) VALUES ('a') INSERT INTO Steps (t) VALUES ('b') SELECT @@IDENTITY"),
              (Rows{{"2"}}));
    EXPECT_EQ(rows("INSERT INTO Steps (t) VALUES ('c') SELECT * FROM NoSuchTable"),
              (Rows{{"execute failed"}}));
    EXPECT_EQ(m_connection.executeQuery("SELECT 1 INSERT INTO Steps (t) VALUES ('after rows')", false), 0);
    EXPECT_EQ(m_connection.CloseSQLConnection(), 0);
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(rows("SELECT COUNT(*) FROM Steps WHERE t = 'after rows'"), (Rows{{"1"}}));
    VTDBAutoBindResult old;
    ASSERT_EQ(m_connection.executeQuery("SELECT id FROM Steps", false), 0);
    ASSERT_EQ(m_connection.autoBind(old), 0);
    ASSERT_EQ(old.getNextRow(), 0);
    EXPECT_EQ(rows("SELECT 5"), (Rows{{"5"}}));
    EXPECT_EQ(old.getNextRow(), -1);  // its statement is gone
}

TEST_F(ServerConnection, AFailedLoginIsInTheDebugLogWithoutThePassword) {
    const std::size_t before = defaultDebugLog().size();
    EXPECT_NE(open("Wrong;Secret}1"), 0);
    EXPECT_NE(m_connection.executeQuery("SELECT 1", false), 0);
    const std::string text = defaultDebugLog().substr(before);
    EXPECT_NE(text.find("(18456)"), std::string::npos) << text;
    EXPECT_EQ(text.find("Secret"), std::string::npos) << text;
    EXPECT_EQ(open(), 0);
}

// Whatever the locale; the driver manager takes the bytes of a connection string for Latin-1.
TEST_F(ServerConnection, NamesAndPasswordsAreUtf8) {
    const std::size_t before = defaultDebugLog().size();
    ASSERT_EQ(open(), 0);
    ASSERT_EQ(rows("CREATE DATABASE [Größe€😀]"), Rows());
    ASSERT_EQ(open(m_box.password(), "Größe€😀"), 0);
    EXPECT_EQ(rows("SELECT DB_NAME()"), (Rows{{"Größe€😀"}}));
    EXPECT_NE(open(m_box.password(), "größer€"), 0);
    EXPECT_NE(open("\xFCnsafe"), 0);
    const std::string text = defaultDebugLog().substr(before);
    EXPECT_NE(text.find("größer€"), std::string::npos) << text;
    EXPECT_NE(text.find("is not UTF-8"), std::string::npos) << text;
}

TEST_F(ServerConnection, ALostServerIsAFailureAndAReopenedOneWorks) {
    ASSERT_EQ(open(), 0);
    m_box.kill();
    EXPECT_EQ(rows("SELECT 1"), (Rows{{"execute failed"}}));
    EXPECT_NE(open(), 0);
    m_box.start();
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(rows("SELECT 1"), (Rows{{"1"}}));
}

// Through the host layer, as the library starts it; `error` gets the end of its standard error.
bool sqlcmdConnects(const std::string& server, const std::string& password, std::string& error) {
    VtProcess tool;
    const std::string line = "sqlcmd -S " + server + " -U sa -P \"" + password + "\" -l 1 -b -Q \"SELECT 1\"";
    char text[512] = "";
    int exitCode = -1;
    tool.SetSilence(true);
    EXPECT_TRUE(tool.Start("sqlcmd", line.c_str(), text, sizeof text, 0)) << text;
    EXPECT_TRUE(tool.Wait(&exitCode, text, sizeof text, VtProcess::kNoTimeout)) << text;
    error = text;
    return exitCode == 0;
}

// The direct connection and the query tool, with the same settings. The proxy keeps what they send.
TEST(EncryptedConnection, SendsTheLoginOnlyAsTheSettingsPermit) {
    const support::Certificates certificates;
    const std::string ca = certificates.file("ca.pem");
    struct Case {
        std::string encrypt, caFile, certificate, host;
        std::string reason;  // why the connection is not opened
        std::string newestTls = "1.2";
        support::NetworkFault fault = {};
    };
    const support::NetworkFault inTheHandshake{.kind = support::NetworkFault::kClose, .after = 100};
    const std::string cut = "the server ends the connection instead of sending its part of the TLS handshake";
    const std::string unknown = "the server's certificate is from an unknown authority (/CN=";
    const std::string plain = "the server does not support encryption";
    const Case cases[] = {
        {"verify", ca, "good", "localhost", cut, "1.2", inTheHandshake},
        {"require", "", "good", "localhost", cut, "1.2", inTheHandshake},
        {"verify", ca, "good", "localhost", ""},
        {"verify", ca, "good", "localhost", "", "1.1"},  // FreeTDS does not refuse it
        {"verify", ca, "good", "localhost", "the server chooses TLS 1.3, which FreeTDS", "1.3"},
        {"verify", ca, "good", "127.0.0.1", "certificate is for localhost, not for 127.0.0.1"},
        {"verify", ca, "other-host", "localhost", "certificate is for db.example.org, not for localhost"},
        {"verify", ca, "expired", "localhost", "certificate has expired on 2021-01-01"},
        {"verify", ca, "early", "localhost", "certificate is not valid before 2047-01-01"},
        {"verify", ca, "unknown", "localhost", unknown + "unknown)"},
        {"verify", ca, "", "localhost", plain},
        {"verify", "", "good", "localhost", unknown + "authority)"},
        {"verify", "/nowhere.pem", "good", "localhost", "the CA file /nowhere.pem cannot be read"},
        {"require", "", "expired", "127.0.0.1", ""},
        {"require", "", "", "127.0.0.1", plain},
        {"off", "", "", "127.0.0.1", ""}};
    std::map<std::string, support::TsqlBox> boxes;  // by certificate and version
    defaultDebugLog();
    const TestStore store("");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.encrypt + " " + c.caFile + " " + c.certificate + " " + c.host + " " + c.newestTls);
        const bool isOpened = c.reason.empty();
        store.write("[host]\nencrypt = '" + c.encrypt + "'\ncaFile = '" + c.caFile +
                    "'\n[host.programs]\nsqlcmd = '" SQLCMD_PROGRAM "'\n");
        const auto arguments = c.certificate.empty()
                                   ? std::vector<std::string>()
                                   : certificates.options(c.certificate, {"--tls-max", c.newestTls});
        const support::TsqlBox& box = boxes.try_emplace(c.certificate + c.newestTls, arguments).first->second;
        const std::size_t logged = defaultDebugLog().size();
        const support::Proxy proxy(box.port(), c.fault);
        const std::string server = c.host + "," + std::to_string(proxy.port());
        VTSimpleDBConnObject connection;
        const std::string text = connection.getConnectionString(server.c_str(), "master", box.login().c_str(),
                                                                box.password().c_str(), false, false);
        EXPECT_EQ(connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false) == 0, isOpened);
        EXPECT_NE(defaultDebugLog().find(c.reason, logged), std::string::npos);
        std::string error;
        EXPECT_EQ(sqlcmdConnects(server, box.password(), error), isOpened) << error;
        EXPECT_NE(error.find(c.reason), std::string::npos) << error;
        // A server that is not verified receives no login, not even an encrypted one.
        const std::string wire = proxy.wire();
        const auto isOnTheWire = [&](std::string_view bytes) { return wire.find(bytes) != wire.npos; };
        constexpr std::string_view kLogin("s\0a\0", 4), kTlsData("\x17\x03\x03\0", 4),
            kLongerData("\x17\x03\x03\1", 4);
        EXPECT_EQ(isOnTheWire(kLogin), c.encrypt == "off");
        const bool expectsData = isOpened ? c.encrypt != "off" : c.newestTls == "1.3";
        if (c.newestTls != "1.1") {
            EXPECT_EQ(isOnTheWire(kTlsData) || isOnTheWire(kLongerData), expectsData);
        }
    }
}

// The same two, with the reason of each failure before the login, or without one.
TEST(MisbehavingNetwork, IsSurvivedOrNamed) {
    using enum support::NetworkFault::Kind;
    const support::TsqlBox box;
    constexpr std::size_t kAfterPrelogin = 20;
    const std::pair<support::NetworkFault, std::string> cases[] = {
        {{.mostBytes = 1}, ""},
        {{.delay = std::chrono::milliseconds(20)}, ""},
        {{.kind = kClose},
         "the server ends the connection instead of sending its answer to the first message"},
        {{.kind = kReset}, "Connection reset by peer"},
        {{.kind = kSilence}, "the server does not send its answer to the first message in time"},
        {{.kind = kClose, .after = kAfterPrelogin}, "Adaptive Server connection failed"}};
    defaultDebugLog();
    const TestStore store("[host]\nloginTimeout = 1\n[host.programs]\nsqlcmd = '" SQLCMD_PROGRAM "'\n");
    for (const auto& [fault, reason] : cases) {
        SCOPED_TRACE(reason);
        const support::Proxy proxy(box.port(), fault);
        const std::string server = "127.0.0.1," + std::to_string(proxy.port());
        const std::size_t logged = defaultDebugLog().size();
        VTSimpleDBConnObject connection;
        const std::string text = connection.getConnectionString(server.c_str(), "master", box.login().c_str(),
                                                                box.password().c_str(), false, false);
        EXPECT_EQ(connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false) == 0,
                  reason.empty());
        EXPECT_NE(defaultDebugLog().find(reason, logged), std::string::npos)
            << defaultDebugLog().substr(logged);
        std::string error;
        EXPECT_EQ(sqlcmdConnects(server, box.password(), error), reason.empty()) << error;
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }
}

// Nothing answers the statement, not even the server's host. The kernel alone would wait for a quarter of an
// hour.
TEST(MisbehavingNetwork, AConnectionThatAFirewallForgotEnds) {
    const support::TsqlBox box;
    defaultDebugLog();
    const TestStore store("[host]\nnetworkTimeout = 2\n");
    support::Proxy proxy(box.port());
    const std::string server = "127.0.0.1," + std::to_string(proxy.port());
    VTSimpleDBConnObject connection;
    const std::string text = connection.getConnectionString(server.c_str(), "master", box.login().c_str(),
                                                            box.password().c_str(), false, false);
    ASSERT_EQ(connection.OpenSQLConnectionUsingConnectionString(text.c_str(), false), 0);
    ASSERT_EQ(connection.executeQuery("SELECT 1", false), 0);
    proxy.losePackets();
    const std::size_t logged = defaultDebugLog().size();
    EXPECT_NE(connection.executeQuery("SELECT 1", false), 0);
    EXPECT_NE(defaultDebugLog().find("the connection to the server has ended", logged), std::string::npos)
        << defaultDebugLog().substr(logged);
}

}  // namespace
