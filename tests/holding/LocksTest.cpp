// Sessions that wait for each other: the wait ends, the victim gets an error, and its session continues.
#include <gtest/gtest.h>

#include <thread>

#include "OdbcClient.h"
#include "TsqlBox.h"

namespace support {
namespace {

constexpr int kLockTimeOut = 1222, kDeadlock = 1205;

class LocksTest : public testing::Test {
  protected:
    LocksTest() {
        first.run("CREATE DATABASE Left_ CREATE DATABASE Right_");
        for (const char* name : {"Left_", "Right_"})
            first.run("USE " + std::string(name) + " CREATE TABLE t (i int) INSERT INTO t VALUES (0)");
        first.run("USE master");
    }
    static int firstError(const OdbcClient& client) {
        return client.diagnostics().empty() ? 0 : client.diagnostics().front().number;
    }

    TsqlBox box;
    OdbcClient first{box.odbcConnectionString()};
    OdbcClient second{box.odbcConnectionString()};
};

TEST_F(LocksTest, AWaitEndsAtItsTimeOut) {
    first.run("BEGIN TRANSACTION UPDATE Left_..t SET i = 1");
    for (const char* statement : {"INSERT INTO Left_..t VALUES (2)", "UPDATE Left_..t SET i = 2",
                                  "DELETE FROM Left_..t", "CREATE TABLE Left_..u (i int)"}) {
        second.run(std::string("SET LOCK_TIMEOUT 100 ") + statement);
        EXPECT_EQ(firstError(second), kLockTimeOut) << statement;
    }
    second.run("SET LOCK_TIMEOUT 0 UPDATE Left_..t SET i = 2");
    EXPECT_EQ(firstError(second), kLockTimeOut);
    EXPECT_EQ(second.value("SELECT i FROM Left_..t"), "0") << "reading does not wait";
    first.run("COMMIT");
    second.run("UPDATE Left_..t SET i = i + 1");
    EXPECT_EQ(second.value("SELECT i FROM Left_..t"), "2");
}

// Also in a transaction that has written to another database and to tempdb.
TEST_F(LocksTest, AWaitEndsWhenTheOtherTransactionEnds) {
    for (const char* statement :
         {"UPDATE Left_..t SET i = i + 1", "INSERT INTO Left_..t SELECT i FROM Right_..t",
          "INSERT INTO Right_..t OUTPUT inserted.i INTO Left_..t VALUES (5)", "DELETE FROM Left_..t",
          "TRUNCATE TABLE Left_..t", "CREATE TABLE Left_..u (i int)", "CREATE INDEX x ON Left_..u (i)",
          "ALTER TABLE Left_..u ADD j int", "DROP TABLE Left_..u"}) {
        SCOPED_TRACE(statement);
        first.run("BEGIN TRANSACTION UPDATE Left_..t SET i = i + 1");
        second.run("BEGIN TRANSACTION CREATE TABLE #own (i int) UPDATE Right_..t SET i = 3");
        std::thread waiting([&] { second.run(statement); });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        first.run("COMMIT");
        waiting.join();
        EXPECT_EQ(firstError(second), 0);
        second.run("DROP TABLE #own COMMIT");
        EXPECT_EQ(firstError(second), 0);
    }
}

TEST_F(LocksTest, ADeadlockEnds) {
    first.run("SET LOCK_TIMEOUT 1000 BEGIN TRANSACTION UPDATE Left_..t SET i = 1");
    second.run("SET LOCK_TIMEOUT 1000 BEGIN TRANSACTION UPDATE Right_..t SET i = 2");
    std::thread waiting([&] { first.run("UPDATE Right_..t SET i = 1"); });
    second.run("UPDATE Left_..t SET i = 2");
    waiting.join();
    int losers = 0;
    for (OdbcClient* client : {&first, &second}) {
        const int error = firstError(*client);
        EXPECT_TRUE(error == 0 || error == kLockTimeOut || error == kDeadlock) << error;
        losers += error != 0;
        client->run("IF @@TRANCOUNT > 0 ROLLBACK");
    }
    EXPECT_GE(losers, 1);
    EXPECT_EQ(second.value("SELECT l.i, r.i FROM Left_..t l CROSS JOIN Right_..t r"), "0|0");
    for (OdbcClient* client : {&first, &second})
        client->run("BEGIN TRANSACTION UPDATE Left_..t SET i = i + 1 UPDATE Right_..t SET i = i + 1 COMMIT");
    EXPECT_EQ(second.value("SELECT l.i, r.i FROM Left_..t l CROSS JOIN Right_..t r"), "2|2");
}

// A transaction cannot change what it has read and another one has changed since.
TEST_F(LocksTest, TheVictimOfAConflictIsRolledBackAndContinues) {
    first.run("BEGIN TRANSACTION UPDATE Right_..t SET i = 1 SELECT i FROM Left_..t");
    second.run("UPDATE Left_..t SET i = 2");
    EXPECT_EQ(firstError(second), 0);
    first.run("UPDATE Left_..t SET i = 1");
    EXPECT_EQ(firstError(first), kDeadlock);
    EXPECT_EQ(first.value("SELECT @@TRANCOUNT, l.i, r.i FROM Left_..t l CROSS JOIN Right_..t r"), "0|2|0");
    first.run("BEGIN TRANSACTION UPDATE Left_..t SET i = 1 COMMIT");
    EXPECT_EQ(second.value("SELECT i FROM Left_..t"), "1");
}

}  // namespace
}  // namespace support
