// Many connections at once: memory they need, and whether all of them are served.
#include <gtest/gtest.h>

#include <thread>

#include "OdbcClient.h"
#include "ServerProcess.h"

namespace support {
namespace {

constexpr std::size_t kMany = 200;
constexpr int kWriters = 20;

TEST(Connections, TwoHundredNeedLittleMemoryAndAreAllServed) {
    const TsqlBox box;
    const auto first = loggedIn(box);
    // About four megabytes, read by every connection.
    ask(*first,
        "CREATE TABLE Pages (id int IDENTITY PRIMARY KEY, text varchar(1000)) "
        "INSERT INTO Pages (text) VALUES (REPLICATE('x', 1000)) "
        "WHILE (SELECT COUNT(*) FROM Pages) < 4000 INSERT INTO Pages (text) SELECT text FROM Pages");
    ASSERT_EQ(answer(*first) & 2U, 0U);
    const ServerMemory memory(box);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (std::size_t i = 0; i < kMany; ++i) {
        clients.push_back(std::make_unique<RawClient>(box.port()));
        clients.back()->send(preloginPacket());
        clients.back()->send(packet(kLogin7, loginPacket(box.login(), box.password())));
    }
    for (const auto& client : clients) {
        client->response();  // to the prelogin
        ASSERT_EQ(finalStatus(client->response()), 0U);
    }
    EXPECT_LT(memory.growth() / kMany, kMebibyte) << "after the login";
    for (const char* query : {"SELECT COUNT(*) FROM Pages WHERE text IS NULL", "SELECT @@SPID"}) {
        for (const auto& client : clients) ask(*client, query);
        for (const auto& client : clients) EXPECT_EQ(answer(*client), 0x10U);
        EXPECT_LT(memory.growth() / kMany, kMebibyte) << "after " << query;
    }
    EXPECT_TRUE(isServed(*first));
}

TEST(Connections, ASessionsMemoryIsBounded) {
    const TsqlBox box({"--session-memory", "16"});
    const auto client = loggedIn(box);
    const ServerMemory memory(box);
    const std::string text = "DECLARE @s varchar(max) = REPLICATE(CONVERT(varchar(max), 'x'), 1000000) ";
    for (const char* rest : {"WHILE 1 = 1 SET @s = @s + @s", "SELECT REPLACE(@s, 'x', REPLICATE('y', 30))",
                             "SELECT STRING_AGG(@s, '') FROM sys.types a, sys.types b"}) {
        ask(*client, "SET XACT_ABORT ON " + text + rest);
        EXPECT_NE(answer(*client) & 2U, 0U) << rest;
        EXPECT_TRUE(isServed(*client)) << rest;
    }
    EXPECT_LT(memory.peakGrowth(), 96 * kMebibyte);
}

TEST(Connections, ASessionsTemporaryFilesAreBounded) {
    const TsqlBox box({"--session-files", "8"});
    const auto client = loggedIn(box);
    const std::string texts = "SELECT COUNT(DISTINCT CAST(a.name + b.name + c.name AS char(150))";
    const std::string tables = " FROM sys.types a, sys.types b, sys.types c";
    for (int round = 0; round < 3; ++round) {  // a statement's files count as long as it runs
        ask(*client, texts + ")" + tables);
        EXPECT_EQ(answer(*client) & 2U, 0U);
    }
    ask(*client, texts + " + d.name)" + tables + ", sys.types d");
    EXPECT_NE(answer(*client) & 2U, 0U);
    EXPECT_TRUE(isServed(*client));
}

// Inserts rows one by one, then in transactions of ten; returns the error messages.
std::string writeRows(const std::string& connection, int writer) {
    constexpr int kRows = 50, kInTransaction = 10;
    std::string problems;
    OdbcClient client(connection);
    const auto run = [&](const std::string& batch) {
        client.run(batch);
        for (const Diagnostic& diagnostic : client.diagnostics()) problems += diagnostic.text + "\n";
    };
    for (int row = 0; row < 2 * kRows; ++row) {
        const bool begins = row >= kRows && row % kInTransaction == 0;
        const bool ends = row >= kRows && row % kInTransaction == kInTransaction - 1;
        if (begins) run("BEGIN TRANSACTION");
        run("INSERT INTO Written VALUES (" + std::to_string(writer) + ", " + std::to_string(row) + ")");
        if (ends) run("COMMIT");
    }
    return problems;
}

TEST(Connections, TwentyWritersLoseNoRow) {
    const TsqlBox box;
    OdbcClient reader(box.odbcConnectionString());
    reader.run("CREATE TABLE Written (writer int, row int, PRIMARY KEY (writer, row))");
    std::vector<std::string> problems(kWriters);
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kWriters; ++writer)
        threads.emplace_back([&, writer] {
            try {
                problems[static_cast<std::size_t>(writer)] = writeRows(box.odbcConnectionString(), writer);
            } catch (const std::exception& error) {
                problems[static_cast<std::size_t>(writer)] = error.what();
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(problems, std::vector<std::string>(kWriters));
    EXPECT_EQ(reader.value("SELECT COUNT(*), COUNT(DISTINCT writer), SUM(row) FROM Written"),
              "2000|20|99000");
}

}  // namespace
}  // namespace support
