// The server: attentions, resets, connection limit, shutdown, command line.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <sstream>

#include "ByteReader.h"
#include "OdbcClient.h"
#include "ServerProcess.h"

namespace support {
namespace {

using namespace std::string_literals;

constexpr std::uint8_t kMoreFollows = 0;
constexpr unsigned kDoneAttention = 0x20;

TEST(Server, AnswersAnAttentionInEveryState) {
    const TsqlBox box;
    const auto connection = loggedIn(box);
    RawClient& client = *connection;

    client.send(packet(kAttention, ""));
    EXPECT_EQ(answer(client), kDoneAttention) << "idle";

    ask(client, "WHILE 1 = 1 SELECT REPLICATE('x', 500)");
    bool last = false;
    std::string streamed;
    for (int i = 0; i < 20; ++i) streamed += client.packetBody(last);
    ASSERT_FALSE(last);
    client.send(packet(kAttention, ""));
    EXPECT_EQ(answer(client) & kDoneAttention, 0U) << "the result ends early";
    EXPECT_EQ(answer(client), kDoneAttention) << "while a result streams";

    client.send(packet(kSqlBatch, batchPacket("SELECT 1"), kMoreFollows) + packet(kAttention, ""));
    EXPECT_EQ(answer(client), kDoneAttention) << "while the request is being sent";

    ask(client, "SELECT 1");
    EXPECT_EQ(answer(client), 0x10U) << "the session continues";
}

TEST(Server, KeepsTheTransactionInAResetThatAsksForIt) {
    constexpr std::uint8_t kResetAll = 0x09, kResetAround = 0x11;  // with the end-of-message bit
    const TsqlBox box;
    const auto run = [](RawClient& client, const std::string& batch, std::uint8_t status = 1) {
        client.send(packet(kSqlBatch, batchPacket(batch), status));
        return answer(client) & 2U;
    };
    const auto check = [](const std::string& condition) {
        return "IF NOT (" + condition + ") RAISERROR('unexpected', 16, 1)";
    };
    RawClient client(box.port()), other(box.port());
    for (RawClient* each : {&client, &other}) ASSERT_TRUE(each->logIn(box.login(), box.password()));
    EXPECT_EQ(run(client, "CREATE TABLE Kept (i int)"), 0U);
    const std::string begin =
        "SET NOCOUNT ON CREATE TABLE #t (i int) EXEC sp_getapplock 'mine', 'Exclusive', 'Session' BEGIN "
        "TRANSACTION "
        "INSERT INTO Kept VALUES (1) CREATE TABLE #u (i int) SET XACT_ABORT ON USE msdb";
    const std::string fresh =
        " AND OBJECT_ID('tempdb..#t') IS NULL AND OBJECT_ID('tempdb..#u') IS NULL "
        "AND DB_NAME() = 'master'";
    const std::string free =
        "DECLARE @r int EXEC @r = sp_getapplock 'mine', 'Exclusive', 'Session', 0 "
        "EXEC sp_releaseapplock 'mine', 'Session' " +
        check("@r = 0");
    for (const std::string end : {"ROLLBACK", "COMMIT"}) {
        SCOPED_TRACE(end);
        EXPECT_EQ(run(client, begin), 0U);
        EXPECT_EQ(run(client, check("@@TRANCOUNT = 1 AND EXISTS (SELECT 1 FROM Kept)" + fresh), kResetAround),
                  0U);
        EXPECT_EQ(run(other, free), 0U) << "the session's lock is released";
        EXPECT_EQ(run(client, end), 0U);
        const std::string rows = end == "COMMIT" ? "1" : "0";
        EXPECT_EQ(run(client, check("@@TRANCOUNT = 0 AND (SELECT COUNT(*) FROM Kept) = " + rows + fresh)),
                  0U);
    }
    EXPECT_EQ(run(client, begin), 0U);
    EXPECT_EQ(run(client, check("@@TRANCOUNT = 0 AND (SELECT COUNT(*) FROM Kept) = 1" + fresh), kResetAll),
              0U);
    EXPECT_EQ(run(client, check("@@TRANCOUNT = 0" + fresh), kResetAround), 0U) << "no transaction to keep";
}

TEST(Server, UsesTheDefaultOfAParameter) {
    const TsqlBox box;
    const auto connection = loggedIn(box);
    RawClient& client = *connection;
    client.send(
        packet(kSqlBatch, batchPacket("CREATE PROCEDURE P @a int = 7 AS IF @a <> 7 RAISERROR('no', 16, 1)")));
    EXPECT_EQ(answer(client), 0U);
    for (const char flags : {'\2', '\0'}) {  // the default, then the given 1
        const std::string call = "\1\0P\0\0\0\0"s + flags + "\x26\4\4\1\0\0\0"s;
        client.send(packet(kRpc, batchPacket("") + call));
        EXPECT_EQ(client.response().find("n\0o\0"s) != std::string::npos, flags == 0);
    }
}

TEST(Server, ReturnsOutputsWithTheirPlaceInTheCall) {
    const TsqlBox box;
    const auto connection = loggedIn(box);
    RawClient& client = *connection;
    client.send(packet(kSqlBatch, batchPacket("CREATE PROCEDURE Q @a int, @b int OUTPUT AS SET @b = @a")));
    EXPECT_EQ(answer(client), 0U);
    const std::string number = "\x26\4\4\7\0\0\0"s;
    client.send(packet(kRpc, batchPacket("") + "\1\0Q\0\0\0\0\0"s + number + "\0\1"s + number));
    EXPECT_NE(client.response().find("\xAC\1\0\0\1"s), std::string::npos);
}

// The tokens of a response without messages and rows: "FF C3 1" (token, command, count) or "79 4".
std::string tokensOf(std::string_view response) {
    std::ostringstream text;
    for (tds::ByteReader in(response); !in.atEnd();) {
        const unsigned token = in.u8();
        text << (text.tellp() > 0 ? ", " : "") << std::hex << std::uppercase << token << std::dec;
        if (token == 0x79) {
            text << ' ' << in.u32();
            continue;
        }
        const bool hasCount = (in.u16() & 0x10U) != 0;
        text << ' ' << std::hex << in.u16() << std::dec;
        const std::uint32_t count = in.u32();
        in.skip(4);
        if (hasCount) text << ' ' << count;
    }
    return text.str();
}

TEST(Server, EndsStatementsAndCallsWithTheirOwnTokens) {
    const TsqlBox box;
    const auto connection = loggedIn(box);
    RawClient& client = *connection;
    for (const auto* batch : {"CREATE TABLE T (i int)", "CREATE PROCEDURE P AS INSERT T VALUES (1) RETURN 4",
                              "CREATE PROCEDURE Aborts AS SET NOCOUNT ON INSERT T VALUES ('x')"}) {
        client.send(packet(kSqlBatch, batchPacket(batch)));
        ASSERT_EQ(answer(client), 0U);
    }
    const std::pair<const char*, const char*> kCases[] = {
        {"DECLARE @v int = 1 SELECT @v = 2", "FD C1 1"},
        {"INSERT T VALUES (1), (2)", "FD C3 2"},
        {"UPDATE T SET i = 3 DELETE T", "FD C5 2, FD C4 2"},
        {"EXEC P EXEC sp_executesql N'DELETE T'", "FF C3 1, 79 4, FE E0, FF C4 1, 79 0, FE E0"},
        {"SET NOCOUNT ON EXEC P DELETE T SET NOCOUNT OFF", "FD 0, 79 4, FE E0, FD C4, FD 0"},
    };
    for (const auto& [batch, tokens] : kCases) {
        client.send(packet(kSqlBatch, batchPacket(batch)));
        EXPECT_EQ(tokensOf(client.response()), tokens) << batch;
    }
    const std::string chain = "\6\0A\0b\0o\0r\0t\0s\0\0\0\xFF\1\0P\0\0\0"s;
    client.send(packet(kRpc, batchPacket("") + chain));
    client.response();
    client.send(packet(kSqlBatch, batchPacket("DELETE T")));
    EXPECT_EQ(tokensOf(client.response()), "FD C4 0") << "a call that aborts the batch ends the chain";
}

TEST(Server, KeepsNothingOfAnInvalidBulkLoad) {
    constexpr std::uint8_t kBulkLoad = 7;
    const std::string integers = "\x81\1\0\0\0\0\0\0\0\x38\0"s, row = "\xD1\7\0\0\0"s;
    const std::string texts = "\x81\1\0\0\0\0\0\0\0\xE7\x0A\0\x09\x04\xD0\0\x34\0"s;
    const std::pair<std::string, bool> cases[] = {{integers + row + row.substr(0, 3), true},
                                                  {integers + row + "\x99", true},
                                                  {integers + row + "\xD1", true},
                                                  {"\xD1", false},  // without columns
                                                  {texts + "\xD1\2\0001\0\xD1\1\0002"s, false},
                                                  {texts + "\xD1\2\0001\0\xD1\2\0x\0"s, false}};
    const TsqlBox box;
    OdbcClient odbc(box.odbcConnectionString());
    odbc.run("CREATE TABLE Loaded (i int)");
    for (const auto& [body, closes] : cases) {
        SCOPED_TRACE(testing::PrintToString(body));
        const auto client = loggedIn(box);
        ask(*client, "INSERT BULK Loaded (i int)");
        EXPECT_EQ(answer(*client), 0U);
        client->send(packet(kBulkLoad, body));
        if (closes) {
            EXPECT_TRUE(client->isClosed());
            continue;
        }
        EXPECT_EQ(answer(*client), kErrorBit);
        client->send(packet(kBulkLoad, integers + row));
        EXPECT_EQ(answer(*client), kErrorBit) << "without INSERT BULK";
        EXPECT_TRUE(isServed(*client));
    }
    EXPECT_EQ(odbc.value("SELECT COUNT(*) FROM Loaded"), "0");
    const auto client = loggedIn(box);
    ask(*client, "INSERT BULK Loaded (i int)");
    answer(*client);
    client->send(packet(kBulkLoad, integers + row));
    EXPECT_EQ(answer(*client), 0x10U);
    EXPECT_EQ(odbc.value("SELECT i FROM Loaded"), "7");
}

TEST(Server, ClosesConnectionsAboveTheLimit) {
    const TsqlBox box({"--max-connections", "2"});
    {
        RawClient first(box.port()), second(box.port());
        ASSERT_TRUE(first.logIn(box.login(), box.password()));
        ASSERT_TRUE(second.logIn(box.login(), box.password()));
        EXPECT_TRUE(RawClient(box.port()).isClosed());
    }
    bool served = false;  // once the server has noticed that they left
    for (int i = 0; i < 500 && !served; ++i)
        served = RawClient(box.port()).logIn(box.login(), box.password());
    EXPECT_TRUE(served);
}

TEST(Server, ServesOnWhenAFileReachesTheLimitOfItsSize) {
    const TsqlBox box;
    const rlimit limit{1'000'000, RLIM_INFINITY};
    ASSERT_EQ(::prlimit(box.pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    const auto client = loggedIn(box);
    ask(*client, "SELECT REPLICATE('x', 8000) AS x INTO t FROM STRING_SPLIT(REPLICATE('1,', 500), ',')");
    EXPECT_EQ(answer(*client) & 2U, 2U);
    ask(*client, "SELECT 1");
    EXPECT_EQ(answer(*client), 0x10U);
}

TEST(Server, StopsWithClientsInAllStatesAndKeepsCommittedRows) {
    TsqlBox box;
    RawClient silent(box.port());
    RawClient idle(box.port()), busy(box.port()), unread(box.port());
    for (RawClient* client : {&idle, &busy, &unread}) ASSERT_TRUE(client->logIn(box.login(), box.password()));
    ask(idle, "CREATE TABLE Kept (i int) INSERT INTO Kept VALUES (1)");
    EXPECT_EQ(answer(idle) & 2U, 0U);
    ask(busy, "WHILE 1 = 1 WAITFOR DELAY '00:00:01'");
    ask(unread, "WHILE 1 = 1 SELECT REPLICATE('x', 4000)");
    bool last = false;
    unread.packetBody(last);
    EXPECT_EQ(box.stop(), 0);
    EXPECT_EQ(box.errors(), "");
    box.start();
    RawClient after(box.port());
    ASSERT_TRUE(after.logIn(box.login(), box.password()));
    ask(after, "SELECT i FROM Kept");
    EXPECT_EQ(answer(after), 0x10U);
}

TEST(Server, ReportsAWrongCommandLine) {
    const TsqlBox box;
    const TempDir folder;
    writeFile(folder / "password", "secret\n");
    writeFile(folder / "empty", "\nsecond line\n");
    writeFile(folder / "file", "");
    const std::string data = folder / "data", password = folder / "password";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--data", data, "--port", "0", "--login", "sa"}, "--password-file is required"},
        {{"--data", data, "--port", "0", "--login", "sa", "--password-file", folder / "none"},
         "cannot read the password file"},
        {{"--data", data, "--port", "0", "--login", "sa", "--password-file", folder / "empty"},
         "empty first line"},
        {{"--data", data, "--port", "70000", "--login", "sa", "--password-file", password}, "--port"},
        {{"--data", data, "--port", std::to_string(box.port()), "--login", "sa", "--password-file", password},
         "Address already in use"},
        {{"--data", data, "--port", "0", "--login", "sa", "--password-file", password, "--encryption", "on"},
         "--encryption requires --tls-cert"},
        {{"--data", data, "--port", "0", "--login", "sa", "--password-file", password, "--tls-cert",
          folder / "none", "--tls-key", folder / "none"},
         "cannot be used"},
        {{"--data", folder / "file", "--port", "0", "--login", "sa", "--password-file", password},
         folder / "file"},
    };
    for (const auto& [arguments, reason] : cases) {
        std::vector<std::string> command = {tsqlboxProgram()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ProgramResult result = runProgram(command);
        EXPECT_NE(result.exitCode, 0) << reason;
        EXPECT_FALSE(result.timedOut) << reason;
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errors.find(reason), std::string::npos) << result.errors;
    }
}

}  // namespace
}  // namespace support
