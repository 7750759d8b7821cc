// A server that is killed at random moments: acknowledged work is there, transactions are whole, and all
// databases open.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "OdbcClient.h"
#include "ServerProcess.h"
#include "storage/Storage.h"
#include "types/Text.h"

namespace support {
namespace {

constexpr int kRounds = 15;
constexpr int kRowsOfTransaction = 3;

// Runs numbered operations until the server has ended.
struct Writer {
    // Requests of one operation; # is replaced by its number.
    std::vector<std::string> requests;
    int next = 0;
    std::vector<int> acknowledged;
};

std::string numbered(std::string text, int number) {
    for (std::size_t at = 0; (at = text.find('#', at)) != std::string::npos;)
        text.replace(at, 1, std::to_string(number));
    return text;
}

bool isAcknowledged(RawClient& client, const std::string& request) {
    ask(client, request);
    const std::string response = client.response();
    return !response.empty() && (finalStatus(response) & kErrorBit) == 0;
}

void writeUntilTheEnd(const TsqlBox& box, Writer& writer, std::atomic<int>& busy) {
    try {
        const auto client = loggedIn(box);
        for (bool first = true;; first = false) {
            const int number = writer.next++;
            for (const std::string& request : writer.requests)
                if (!isAcknowledged(*client, numbered(request, number))) return;
            writer.acknowledged.push_back(number);
            if (first) ++busy;
        }
    } catch (const std::exception&) {
        return;  // killed during a response or the login
    }
}

int compareNames(void*, int leftSize, const void* left, int rightSize, const void* right) {
    return tsql::compareText({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                             {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
}

// The check of identity columns: returns the identity.
void passIdentity(sqlite3_context* context, int, sqlite3_value** arguments) {
    sqlite3_result_value(context, arguments[0]);
}

std::string integrityOf(const std::filesystem::path& file) {
    const auto connection = tsql::openDatabaseFile(file);
    sqlite3_create_collation(connection.get(), "ts_ci", SQLITE_UTF8, nullptr, compareNames);
    sqlite3_create_function(connection.get(), "ts_identity", 2, SQLITE_UTF8, nullptr, passIdentity, nullptr,
                            nullptr);
    std::string result;
    const auto append = [](void* text, int, char** cells, char**) {
        *static_cast<std::string*>(text) += cells[0];
        return 0;
    };
    sqlite3_exec(connection.get(), "PRAGMA integrity_check", append, &result, nullptr);
    return result;
}

class CrashTest : public testing::Test {
  protected:
    CrashTest() {
        OdbcClient client(box.odbcConnectionString());
        client.run("CREATE DATABASE Other");
        client.run(
            "CREATE TABLE Ledger (writer int, n int, row int) "
            "CREATE TABLE Other..Ledger (writer int, n int, row int)");
    }

    void killAtSomeMoment() {
        std::atomic<int> busy = 0;
        std::vector<std::thread> threads;
        for (Writer& writer : writers) threads.emplace_back([&] { writeUntilTheEnd(box, writer, busy); });
        EXPECT_TRUE(becomesTrue([&] { return busy == static_cast<int>(writers.size()); }));
        std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
        box.kill();
        for (std::thread& thread : threads) thread.join();
    }

    // Number of rows per operation of a writer.
    static std::map<int, int> rowsOf(OdbcClient& client, const std::string& ledger, std::size_t writer) {
        std::map<int, int> rows;
        for (const std::string& row :
             client.run("SELECT n FROM " + ledger + " WHERE writer = " + std::to_string(writer)))
            ++rows[std::stoi(row)];
        EXPECT_TRUE(client.diagnostics().empty());
        return rows;
    }

    void expectWhole(OdbcClient& client, const std::string& ledger, std::size_t writer, int rowsOfEach) {
        SCOPED_TRACE("writer " + std::to_string(writer));
        const auto rows = rowsOf(client, ledger, writer);
        for (const auto& [number, count] : rows) EXPECT_EQ(count, rowsOfEach) << number;
        for (const int number : writers[writer].acknowledged) EXPECT_TRUE(rows.contains(number)) << number;
    }

    void expectAllDatabasesOpen(OdbcClient& client) const {
        for (const auto& entry : std::filesystem::directory_iterator(box.dataDirectory()))
            if (entry.path().extension() == ".db") {
                EXPECT_EQ(integrityOf(entry.path()), "ok") << entry.path();
            }
        for (const std::string& name : client.run("SELECT name FROM sys.databases")) {
            client.run("SELECT COUNT(*) FROM [" + name + "]..sysobjects");
            EXPECT_TRUE(client.diagnostics().empty()) << name;
        }
    }

    TsqlBox box;
    std::vector<Writer> writers = {
        {{"INSERT INTO Ledger VALUES (0, #, 1)"}, 0, {}},
        {{"INSERT INTO Other..Ledger VALUES (1, #, 1)"}, 0, {}},
        {{"BEGIN TRANSACTION INSERT INTO Ledger VALUES (2, #, 1)",
          "INSERT INTO Ledger VALUES (2, #, 2) INSERT INTO Ledger VALUES (2, #, 3)", "COMMIT"},
         0,
         {}},
        {{"BEGIN TRANSACTION INSERT INTO Ledger VALUES (3, #, 1)", "ROLLBACK"}, 0, {}},
        {{"CREATE DATABASE Made#", "DROP DATABASE Made#"}, 0, {}},
        {{"CREATE TABLE Other..Made# (i int)", "DROP TABLE Other..Made#"}, 0, {}},
    };
    std::mt19937 random{std::random_device{}()};
    std::uniform_int_distribution<int> moment{0, 60'000};  // microseconds
};

TEST_F(CrashTest, LosesNothingThatWasAcknowledged) {
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        killAtSomeMoment();
        box.start();
        OdbcClient client(box.odbcConnectionString());
        expectWhole(client, "Ledger", 0, 1);
        expectWhole(client, "Other..Ledger", 1, 1);
        expectWhole(client, "Ledger", 2, kRowsOfTransaction);
        EXPECT_TRUE(rowsOf(client, "Ledger", 3).empty());
        expectAllDatabasesOpen(client);
    }
}

}  // namespace
}  // namespace support
