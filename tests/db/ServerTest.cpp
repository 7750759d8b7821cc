// The direct connection, the query tool and server maintenance against a running server.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <string>

#include "DVUtilities/DBBase.h"
#include "SampleInstallation.h"
#include "TsqlBox.h"

namespace {

using Lines = std::vector<std::string>;
using support::logTexts;
using support::readFile;

// For the overloads that take SQL as unsigned characters, which they do not change.
unsigned char* bytes(const char* sql) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(sql));
}

class Server : public testing::Test {
  protected:
    Server() {
        support::SampleInstallation::loadSchema(box);
        installation.useServer(box);
        db.SetAccountInfo(box.server().c_str(), box.login().c_str(), box.password().c_str(), log.c_str());
    }
    bool find(DBBase& base, const char* dbName = "Dorvas") {
        return base.GetAccountInfo("MainHost", "Instance001", log.c_str(), dbName);
    }
    std::string lastLine() { return logTexts(log).back(); }

    const support::TsqlBox box;
    support::SampleInstallation installation;
    const std::string log = installation.logFolder() / "db.log";
    const std::string output = installation.tempFolder() / "output.txt";
    DBBase db{true};
};

TEST_F(Server, DiscoveryConnectsAndReportsIt) {
    DBBase found(true);
    ASSERT_TRUE(find(found, "dorvas")) << found.getErrorMsg();
    EXPECT_STREQ(found.getErrorMsg(), "Successfully connected to database [dorvas] _DSN[DSN_Connection].");
    EXPECT_EQ(lastLine(), found.getErrorMsg());
    // Flags stay: with two of them set, the server is the first kind's and the data source the second's.
    ASSERT_TRUE(find(found, "NQ2")) << found.getErrorMsg();
    EXPECT_STREQ(found.getErrorMsg(), "Successfully connected to database [NQ2] _DSN[DSN_NQ2CONNECTION].");
    EXPECT_EQ(readFile(log).find(box.password()), std::string::npos);
}

TEST_F(Server, WindowsAuthenticationIsAskedForByDatabaseFirst) {
    // With Windows authentication the login lacks user and password, so the probe fails.
    const std::tuple<long long, long long, bool> cases[] = {
        {1, 0, true}, {0, 1, false}, {-1, 1, true}, {-1, 0, false}, {2, 1, false}};
    for (const auto& [own, general, windows] : cases) {
        installation.set("Database", "nSQLAuthType", general);
        installation.set("Database", "nSQLAuthType_Dorvas", own);
        if (own < 0) installation.remove("Database", "nSQLAuthType_Dorvas");
        DBBase found(true);
        EXPECT_EQ(find(found), !windows) << own << " " << general;
    }
}

TEST_F(Server, EachDatabaseIsFoundByItsOwnValues) {
    const struct {
        const char *name, *instance, *access, *connection;
    } kinds[] = {{"dorvas", "sINSTANCE", "pACCESS", "sConnection"},
                 {"nq2", "sNQ2INSTANCE", "pNQ2ACCESS", "sNQ2CONNECTION"},
                 {"VTCloud", "sCLOUDINSTANCE", "pCLOUDACCESS", "sCLOUDCONNECTION"},
                 {"WFEngine", "sWFINSTANCE", "pWFACCESS", "sWFCONNECTION"},
                 {"HistoryDB", "sINSTANCE", "pACCESS", "sHISTORYCONNECTION"}};
    const std::string credentials =
        support::SampleInstallation::encipheredCredentials("02" + box.login() + box.password());
    for (const auto& kind : kinds) {
        const std::string name = kind.name;
        const bool isNew = !db.SetDBValue(("USE " + name).c_str());
        if (isNew) {
            ASSERT_TRUE(db.SetDBValue(("CREATE DATABASE " + name).c_str()));
            ASSERT_TRUE(db.SetDBValue(("USE " + name + " CREATE TABLE ZPDBVersions (id int)").c_str()));
        }
        installation.useServer("127.0.0.1,1", "nobody", "x");
        installation.set("Database", kind.instance, box.server());
        installation.set("Database", kind.access, credentials);
        installation.set("Database", kind.connection, "own");
        DBBase found(true);
        std::array<char, 64> text{};
        EXPECT_TRUE(find(found, kind.name)) << found.getErrorMsg();
        EXPECT_EQ(found.getErrorMsg(), "Successfully connected to database [" + name + "] _DSN[own].");
        EXPECT_TRUE(found.GetDBValueStr("SELECT DB_NAME()", text.data()));
        EXPECT_EQ(text.data(), name);
        EXPECT_TRUE(!isNew || db.SetDBValue(("DROP DATABASE " + name).c_str()));
    }
}

TEST_F(Server, TheProbedTableFollowsTheProductType) {
    // The type -1 is never set.
    const std::pair<int, std::string> cases[] = {{-1, "ZPDBVersions"}, {1, "simAllZephraRel"}, {0, "TNet"}};
    for (const auto& [productType, table] : cases) {
        if (productType >= 0) db.setProductTypeZephra(productType);
        EXPECT_FALSE(db.DBTest()) << table;
        ASSERT_TRUE(db.SetDBValue(("CREATE TABLE " + table + " (id int)").c_str()));
        EXPECT_TRUE(db.DBTest()) << table;
        ASSERT_TRUE(db.SetDBValue(("DROP TABLE " + table).c_str()));
    }
}

TEST_F(Server, AFailedOperationKeepsItsCauses) {
    const std::string server = box.server(), login = box.login(), password = box.password();
    std::vector<int> numbers;
    int number = 0;
    Lines rows;
    std::string absent = output + ".absent";
    const auto runTool = [&](const char* sql) { return db.RunStringQuery(sql, output.c_str(), "master"); };
    const auto noServer = [&] {
        db.SetAccountInfo("127.0.0.1,1", login.c_str(), password.c_str(), log.c_str());
        return db.Open(nullptr, nullptr, nullptr);
    };
    const struct {
        const char* name;
        std::function<bool()> operation;
        int where, serverError, exitCode, line;
        const char* text;
    } cases[] = {
        {"statement", [&] { return db.SetDBValue("\nSELECT * FROM nowhere"); }, kDVUStatement, 208, -1, 2,
         "Invalid object name 'nowhere'"},
        {"quirk: true after a failed statement",
         [&] { return !db.GetDBValueIntList("SELECT * FROM nowhere", numbers); }, kDVUStatement, 208, -1, 1,
         "nowhere"},
        {"fetch",
         [&] {
             return db.GetDBValueList("SELECT 1 / (3 - id) FROM (VALUES (1), (2), (3)) AS t (id)", rows, 1);
         },
         kDVUStatement, 8134, -1, 1, "Divide by zero"},
        {"not open", [&] { return db.Close() && db.GetValue("SELECT 1", rows, 1); }, kDVUConnection, 0, -1, 0,
         "not open"},
        {"no UTF-8", [&] { return db.SetDBValue("SELECT '\xFF'"); }, kDVUStatement, 0, -1, 0, "byte 9"},
        {"query tool", [&] { return runTool("SELECT * FROM nowhere"); }, kDVUQueryTool, 208, -1, 1,
         "nowhere"},
        {"UTF-16 output",
         [&] { return db.RunStringQuery_TS("SELECT * FROM änowhere", output.c_str(), "master", 8); },
         kDVUQueryTool, 208, -1, 1, "'änowhere'"},
        {"no row", [&] { return db.GetDBValueInt("SELECT 1 WHERE 1 = 0", number); }, kDVUStatement, 0, -1, 0,
         "no row"},
        {"its end", [&] { return runTool("SELECT * FROM nowhere"); }, kDVUQueryTool, 0, 1, 0, "exit code 1"},
        {"double quote", [&] { return runTool("PRINT \"1\""); }, kDVUQueryTool, 0, -1, 0,
         "A double quote in the statement"},
        {"quote as separator", [&] { return db.generateCSVOutput("x.sql", output.c_str(), "", "\" -e \""); },
         kDVUQueryTool, 0, -1, 0, "A double quote in the column separator"},
        {"output file", [&] { return db.parseOutputFile(absent.data(), rows, 1); }, kDVUFile, 0, -1, 0,
         "No such file"},
        {"login", [&] { return db.Open(nullptr, nullptr, const_cast<char*>("wrong")); }, kDVUConnection,
         18456, -1, 0, "Login failed"},
        {"no server", noServer, kDVUConnection, 20009, -1, 0, "Unable to connect"},
    };
    std::vector<DVUCause_t> causes;
    for (const auto& c : cases) {
        EXPECT_FALSE(c.operation()) << c.name;
        DVU_GetCauses(db, causes);
        const bool isNamed = std::any_of(causes.begin(), causes.end(), [&](const DVUCause_t& cause) {
            return cause.where == c.where && cause.serverError == c.serverError &&
                   cause.exitCode == c.exitCode && cause.line == c.line &&
                   cause.text.find(c.text) != std::string::npos;
        });
        EXPECT_TRUE(isNamed) << c.name << ": " << (causes.empty() ? "none" : causes.front().text);
        for (const DVUCause_t& cause : causes)
            EXPECT_EQ(cause.text.find(box.password()), std::string::npos) << c.name;
    }
    db.SetAccountInfo("127.0.0.1,0", login.c_str(), password.c_str(), log.c_str());
    EXPECT_FALSE(db.Open(nullptr, nullptr, nullptr));
    DVU_GetCauses(db, causes);
    ASSERT_EQ(causes.size(), 1U) << "not the empty connection string as well";
    EXPECT_NE(causes[0].text.find("The port of the server"), std::string::npos);
    db.SetAccountInfo(server.c_str(), login.c_str(), password.c_str(), log.c_str());
    EXPECT_TRUE(db.Open(nullptr, nullptr, nullptr));
    DVU_GetCauses(db, causes);
    EXPECT_TRUE(causes.empty()) << "a success has no causes";
}

TEST_F(Server, StatementsOnTheOpenConnection) {
    std::array<char, 64> text{};
    Lines rows;
    ASSERT_TRUE(db.Connect(nullptr, nullptr, nullptr));
    EXPECT_TRUE(db.ExecuteQuery(bytes("DECLARE @x int")));
    EXPECT_EQ(db.GetValue("SELECT 41 + 1", nullptr, nullptr), 42);
    EXPECT_EQ(db.GetValue(bytes("SELECT 'text'"), text.data(), nullptr), 1);
    EXPECT_STREQ(text.data(), "text");
    EXPECT_TRUE(db.GetValue("SELECT 'a', 'b'", rows, 2) && db.GetValue(bytes("SELECT 'c', NULL"), rows, 2));
    EXPECT_EQ(rows, (Lines{"a\022b", "c\022"})) << "rows are appended";
    EXPECT_TRUE(db.Close());
}

TEST_F(Server, SingleValues) {
    ASSERT_TRUE(find(db));
    int number = 0;
    std::array<char, 64> text{};
    std::array<wchar_t, 64> wide{};
    EXPECT_TRUE(db.GetDBValueInt(bytes("SELECT 42, 7"), number));
    EXPECT_EQ(number, 42);
    EXPECT_TRUE(db.GetDBValueStr(bytes("SELECT N'ä€'"), text.data()));
    EXPECT_STREQ(text.data(), "ä€");
    EXPECT_TRUE(db.GetDBValueStr(bytes("SELECT N'ä€'"), wide.data()));
    EXPECT_STREQ(wide.data(), L"\u00E4\u20AC");
    EXPECT_TRUE(db.GetDBValueStr("SELECT NULL", text.data()));
    EXPECT_STREQ(text.data(), "");
    EXPECT_TRUE(db.SetDBValue(bytes("DECLARE @x int")));
    EXPECT_FALSE(db.ExecuteQuery("SELECT 1")) << "the connection is closed";

    for (const char* sql :
         {"SELECT -1", "SELECT id FROM ZPDBVersions WHERE 1 = 0", "SELECT * FROM nowhere"}) {
        number = 0;
        EXPECT_FALSE(db.GetDBValueInt(sql, number)) << sql;
        EXPECT_EQ(number, -1);
    }
}

TEST_F(Server, FailedReadLeavesTheConnectionOpen) {
    ASSERT_TRUE(find(db));
    std::array<char, 64> text{};
    EXPECT_FALSE(db.GetDBValueStr("SELECT * FROM nowhere", text.data()));
    EXPECT_TRUE(db.ExecuteQuery("DECLARE @x int"));
    db.Close();
    EXPECT_FALSE(db.SetDBValue("SELECT * FROM nowhere"));
    EXPECT_TRUE(db.ExecuteQuery("DECLARE @x int"));
    int number = 0;
    EXPECT_FALSE(db.GetDBValueInt("SELECT * FROM nowhere", number));
    EXPECT_FALSE(db.ExecuteQuery("DECLARE @x int")) << "this one closes";
}

TEST_F(Server, Lists) {
    ASSERT_TRUE(find(db));
    auto* three = bytes("SELECT 1, 10, 'O''Brien' UNION ALL SELECT 2, 20, '100%%' ORDER BY 1");
    auto* two = bytes("SELECT 1, 'O''Brien' UNION ALL SELECT 2, 'x' ORDER BY 1");
    Lines rows = {"old"};
    EXPECT_TRUE(db.GetDBValueList(three, rows, 3));
    EXPECT_EQ(rows, (Lines{"1\02210\022O'Brien", "2\02220\022100%%"}));
    std::vector<int> numbers;
    EXPECT_TRUE(db.GetDBValueIntList(three, numbers));
    EXPECT_EQ(numbers, (std::vector<int>{1, 2}));
    std::vector<IdId_t> pairs;
    EXPECT_TRUE(db.GetDBValueIntIntList(three, pairs));
    EXPECT_EQ(pairs.at(1).id2, 20);
    std::vector<IdIdName_t> triples;
    EXPECT_TRUE(db.GetDBValueIdIdNameList(three, triples));
    EXPECT_EQ(triples.at(0).name, "O'Brien");
    EXPECT_EQ(triples.at(1).name, "100%");
    std::vector<IdNameItem_t> names;
    EXPECT_TRUE(db.GetDBValueIdName(two, names));
    EXPECT_EQ(names.at(0).name, "O''Brien");
    EXPECT_EQ(names.at(1).id, 2);

    EXPECT_TRUE(db.GetDBValueList("SELECT id FROM ZPDBVersions WHERE 1 = 0", rows, 1));
    EXPECT_TRUE(rows.empty());
}

TEST_F(Server, FailedStatementIsReportedByTwoListsOnly) {
    ASSERT_TRUE(find(db));
    const char* sql = "SELECT * FROM nowhere";
    Lines rows;
    std::vector<int> numbers = {1};
    std::vector<IdId_t> pairs(1);
    std::vector<IdIdName_t> triples(1);
    std::vector<IdNameItem_t> names(1);
    EXPECT_FALSE(db.GetDBValueList(sql, rows, 1));
    EXPECT_FALSE(db.GetDBValueIdName(sql, names));
    EXPECT_TRUE(db.GetDBValueIntList(sql, numbers));
    EXPECT_TRUE(db.GetDBValueIntIntList(sql, pairs));
    EXPECT_TRUE(db.GetDBValueIdIdNameList(sql, triples));
    EXPECT_EQ(numbers.size() + pairs.size() + triples.size() + names.size(), 0U);
}

TEST_F(Server, RunnersWriteTheToolsOutput) {
    const std::string input = installation.folder("in.sql");
    support::writeFile(input, "SELECT 1 AS a, 'x y' AS b\n");
    const char* database = "dorvas";
    ASSERT_TRUE(db.RunStringQuery("SELECT 'one' AS a, 'two' AS b", output.c_str(), database))
        << db.getErrorMsg();
    Lines rows;
    std::string name = output;
    ASSERT_TRUE(db.parseOutputFile(name.data(), rows, 2));
    EXPECT_EQ(rows, Lines{"one\022two"});
    ASSERT_TRUE(db.RunFileQuery_TS(input.c_str(), output.c_str(), database, 0));
    EXPECT_NE(readFile(output).find("1\tx y\n"), std::string::npos);
    ASSERT_TRUE(db.RunStringQuery_TS("SELECT 5 AS a", output.c_str(), database, 8));
    EXPECT_NE(readFile(output).find(std::string("5\0", 2)), std::string::npos);
    ASSERT_TRUE(db.generateCSVOutput(input.c_str(), output.c_str(), database, nullptr));
    EXPECT_NE(readFile(output).find("1,x y\n"), std::string::npos);
    ASSERT_TRUE(db.RunFileQuery(input.c_str(), output.c_str(), database, true, true));
    EXPECT_NE(readFile(output).find("1\tx y\n"), std::string::npos);
    ASSERT_TRUE(db.RunFileQuery(input.c_str(), output.c_str(), database, false, false));
    EXPECT_FALSE(db.RunStringQuery("SELECT * FROM nowhere", output.c_str(), database));
    EXPECT_NE(readFile(output).find("nowhere"), std::string::npos);
}

TEST_F(Server, Maintenance) {
    Lines names = db.getDBList();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Lines{"dorvas", "nq2"}));
    EXPECT_GE(std::stoi(db.checkSQLServerProductVersion()), 8);

    const std::string directory = installation.folder("home").string();
    std::array<char, 11> days{};
    std::array<char, 21> date{};
    ASSERT_TRUE(db.backUpDB("x.bak", directory.c_str(), "dorvas")) << db.getErrorMsg() << readFile(log);
    EXPECT_STREQ(db.getErrorMsg(), "Backed-Up the Database [dorvas] as x.bak.");
    EXPECT_EQ(lastLine(), db.getErrorMsg());
    EXPECT_TRUE(std::filesystem::exists(directory + "/x.bak"));
    ASSERT_TRUE(db.getLastBackUpInfo("dorvas", days.data(), date.data())) << db.getErrorMsg();
    EXPECT_STREQ(days.data(), "0");
    EXPECT_EQ(std::string(date.data()).size(), 20U);
    ASSERT_TRUE(db.getLastBackUpInfo("nq2", days.data(), nullptr));
    EXPECT_STREQ(days.data(), "NULL");
    ASSERT_TRUE(db.getLastBackUpInfo("dorvas", days.data(), date.data()));
    EXPECT_EQ(db.getErrorMsg(), std::string("Last backup of database[dorvas] taken on ") + date.data() +
                                    ". Days since last backup [0].");

    const std::string backup = directory + "/x.bak";
    EXPECT_FALSE(db.restoreDB(backup.c_str(), "/data/", "copy"));
    EXPECT_EQ(db.getErrorMsg(),
              "Failed to execute Database Restore Command [RESTORE DATABASE copy FROM DISK = '" + backup +
                  "' WITH RECOVERY, REPLACE,  MOVE 'dorvas' TO '/data/dorvas',  MOVE 'dorvas_log' TO "
                  "'/data/dorvas_log'].");
    EXPECT_EQ(db.getDBList().size(), 2U) << "the statement is not run";
    std::string error;
    Lines listed;
    EXPECT_TRUE(GetDatabaseList(box.server().c_str(), box.login().c_str(), box.password().c_str(),
                                log.c_str(), error, listed));
    EXPECT_EQ(error + std::to_string(listed.size()), "2");
    EXPECT_FALSE(RestoreDatabase(backup.c_str(), "/data/", "copy", box.server().c_str(), box.login().c_str(),
                                 box.password().c_str(), log.c_str(), error));
    EXPECT_EQ(error, db.getErrorMsg());
    EXPECT_FALSE(db.createSQLFileAndGenerateCSVOutput("SELECT 1", output.c_str(), "dorvas", ""));
}

TEST_F(Server, MaintenanceFailures) {
    EXPECT_FALSE(db.backUpDB("x.bak", "/no/such/folder", "dorvas"));
    EXPECT_STREQ(db.getErrorMsg(),
                 "Failed to execute DB query [BACKUP DATABASE dorvas \t\t\t\t\t\t\n TO DISK = "
                 "'/no/such/folder/x.bak' ].");
    EXPECT_NE(readFile(log).find("Msg 3201"), std::string::npos) << "the tool's output goes into the log";
    std::array<char, 64> text{};
    EXPECT_FALSE(db.getLastBackUpInfo("O'Brien", text.data(), text.data()));
    EXPECT_EQ(std::string(db.getErrorMsg()).substr(0, 28), "Failed to execute DB query [");
    EXPECT_FALSE(db.restoreDB("/no/such/x.bak", "/data/", "copy"));
    EXPECT_STREQ(db.getErrorMsg(),
                 "Failed to execute DB query [RESTORE FILELISTONLY FROM DISK = '/no/such/x.bak'].");

    const support::TsqlBox empty;
    const auto list = [&](const std::string& password, std::string& error) {
        Lines names;
        return GetDatabaseList(empty.server().c_str(), empty.login().c_str(), password.c_str(), log.c_str(),
                               error, names);
    };
    const std::string statement =
        "SELECT name FROM master..sysdatabases WHERE name NOT IN ('master', 'tempdb', 'model', 'msdb', "
        "'Northwind', "
        "'pubs')";
    std::string error;
    std::vector<DVUCause_t> causes;
    const DVUCauses collector;
    EXPECT_FALSE(list(empty.password(), error));
    EXPECT_EQ(error, "Failed to parse resultset for DB query [" + statement + "].");
    collector.get(causes);
    EXPECT_TRUE(causes.size() == 1 && causes[0].text == "The statement returned no row.");
    EXPECT_FALSE(list("wrong", error));
    EXPECT_EQ(error, "Failed to execute DB query [" + statement + "].");
    DBBase nobody(true);
    nobody.SetAccountInfo(empty.server().c_str(), "sa", "wrong", log.c_str());
    EXPECT_EQ(nobody.checkSQLServerProductVersion(), "-1");
}

TEST_F(Server, OutputIsNeverWrittenThroughALink) {
    const std::string victim = installation.folder("victim");
    support::writeFile(victim, "kept");
    // The name of this second and of those in which the operations below run.
    std::string name;
    db.getTempFileName(name);
    const std::size_t digits = name.rfind('_') + 1;
    const long long now = std::stoll(name.substr(digits));
    for (long long second = now; second < now + 30; ++second)
        std::filesystem::create_symlink(victim, name.substr(0, digits) + std::to_string(second) + ".txt");
    EXPECT_TRUE(db.getDBList().empty());
    EXPECT_EQ(std::string(db.getErrorMsg()).substr(0, 28), "Failed to execute DB query [");
    EXPECT_FALSE(db.RunStringQuery("SELECT 1", nullptr, "dorvas"));
    EXPECT_STREQ(db.getErrorMsg(), "Failed to execute SQL Script");
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    EXPECT_TRUE(causes.size() == 1 && causes[0].text.find("is a link") != std::string::npos);
    EXPECT_EQ(readFile(victim), "kept");
    EXPECT_EQ(readFile(log).find("kept"), std::string::npos);
}

// As in a folder where everybody may rename files.
TEST_F(Server, OutputThatOthersHaveReplacedIsNotRead) {
    const std::string secret = installation.folder("secret"), tool = installation.folder("replacing-tool");
    support::writeFile(secret, "heading\n-------\nsecret\n");
    installation.useQueryTool(tool);
    for (const std::string& replacement : {"ln -s " + secret, std::string("mkfifo")})
        for (const char* exitCode : {"0", "1"}) {
            support::writeFile(tool, "#!/bin/sh\nfor o in \"$@\"; do :; done; rm -f \"$o\"; " + replacement +
                                         " \"$o\"; exit " + exitCode + "\n");
            std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
            EXPECT_TRUE(db.getDBList().empty()) << replacement;
            EXPECT_EQ(readFile(log).find("secret"), std::string::npos) << replacement;
            for (const auto& entry : std::filesystem::directory_iterator(installation.tempFolder()))
                std::filesystem::remove(entry);
        }
}

TEST_F(Server, TemporaryFilesThatStayOrAreDeleted) {
    std::array<char, 64> text{};
    const std::string home = installation.homeFolder();
    const auto execute = [&](const char* sql) { db.RunStringQuery(sql, nullptr, "dorvas"); };
    DBBase unknown(true);
    unknown.SetAccountInfo("", "", "", log.c_str());  // the tool refuses before it writes
    const std::tuple<const char*, std::function<void()>, int> cases[] = {
        {"backup", [&] { db.backUpDB("x.bak", home.c_str(), "dorvas"); }, 0},
        {"failed backup", [&] { db.backUpDB("x.bak", "/no/such", "dorvas"); }, 0},
        {"restore", [&] { db.restoreDB((home + "/x.bak").c_str(), "/", "copy"); }, 0},
        {"failed restore", [&] { db.restoreDB("/no/such/x.bak", "/", "copy"); }, 0},
        {"date", [&] { db.getLastBackUpInfo("dorvas", text.data(), text.data()); }, 0},
        {"failed date", [&] { db.getLastBackUpInfo("O'Brien", text.data(), text.data()); }, 1},
        {"list", [&] { db.getDBList(); }, 1},
        {"refused list", [&] { unknown.getDBList(); }, 0},
        {"version", [&] { db.checkSQLServerProductVersion(); }, 1},
        {"statement", [&] { execute("SELECT 1"); }, 1},
        {"failed statement", [&] { execute("SELECT * FROM nowhere"); }, 1},
        {"refused statement", [&] { unknown.RunStringQuery("SELECT 1", nullptr, ""); }, 0}};
    for (const auto& [what, work, expected] : cases) {
        work();
        int left = 0;
        for (const auto& entry : std::filesystem::directory_iterator(installation.tempFolder())) {
            EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600)) << what;
            std::filesystem::remove(entry);
            ++left;
        }
        EXPECT_EQ(left, expected) << what;
    }
}

}  // namespace
