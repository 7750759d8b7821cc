#include <sys/resource.h>

#include <csignal>
#include <thread>

#include "DVUtilities/TScript.h"
#include "ScriptFixture.h"

namespace {

namespace fs = std::filesystem;

using PackageRun = ScriptFixture;

const std::string kHeader =
    "#START_OPTIONS#\nCreation Time:1700000000\nDatabase Name:Dorvas\nDescription:What it does\n";

// A package for the management database with these statements.
std::string packageOf(const std::string& body) {
    return kHeader + "#START_USAGE#\nHow to call it\n#START_SCRIPT#\n" + body;
}

TEST_F(PackageRun, FillsRunsJournalsAndLeavesNothingBehind) {
    writePackage("echo",
                 packageOf("SET NOCOUNT ON\n/* 100% of %s */\nPRINT 'first: %s'\nPRINT '50%% of %s'\nGO\n"
                           "PRINT '%s'\n"));
    const Result result = runPackage("echo", {"O'Brien", "x%n", "last", "surplus"});
    EXPECT_TRUE(result.done) << result.output;
    EXPECT_EQ(result.output, "first: O'Brien\n50% of x%n\nlast\n\nTscript Execution Succeeded!\n");
    EXPECT_EQ(result.database, "Dorvas");
    EXPECT_EQ(result.logFile, (m_installation.logFolder() / "Tscript.log").string());
    EXPECT_EQ(lastRun("echo"), "1|0|O'Brien, x%n, last");
}

TEST_F(PackageRun, AFailedToolStillGivesItsOutputAndAnEnd) {
    writePackage("broken", packageOf("PRINT 'before'\nGO\nSELECT * FROM absent_table\n"));
    const Result result = runPackage("broken", {}, 8, "as the user typed it");
    EXPECT_FALSE(result.done);
    EXPECT_EQ(
        result.output.find("\nFailed at RunFileQuery_TS! Error: [Failed to execute SQL Script!].\nbefore\n"),
        0U)
        << result.output;
    EXPECT_NE(result.output.find("absent_table"), std::string::npos);
    EXPECT_EQ(result.output.find("Succeeded"), std::string::npos);
    EXPECT_EQ(lastRun("broken"), "2|0|as the user typed it");
}

TEST_F(PackageRun, IsCataloguedOnceAndOnlyItsUsageRefreshed) {
    const std::string rows =
        "SELECT type, auditLevel, DATEDIFF(second, '19700101', creationTime), usage "
        "FROM ZpTscripts WHERE name = 'listed'";
    writePackage("listed", kHeader + "#START_USAGE#\nO'Brien's\n#START_SCRIPT#\nPRINT 1\n");
    EXPECT_TRUE(runPackage("listed").done);
    EXPECT_EQ(query(rows, 4), (std::vector<std::string>{"100|0|1700000000|\nO'Brien's"}));
    writePackage("listed", "#START_OPTIONS#\nCreation Time:1\n" + packageOf("").substr(kHeader.size()));
    EXPECT_TRUE(runPackage("listed").done);
    EXPECT_EQ(query(rows, 4), (std::vector<std::string>{"100|0|1700000000|\nHow to call it"}));
}

TEST_F(PackageRun, NamesWithQuotesAndPercentSignsAreHarmless) {
    const std::string name = "it's \"100%s\"'; DELETE ZpTscripts --";
    writePackage(name, packageOf("PRINT 'ran'\n"));
    for (int run = 0; run < 2; ++run) {
        const Result result = runPackage(name);
        EXPECT_TRUE(result.done) << result.output;
        EXPECT_EQ(result.output, "ran\n\nTscript Execution Succeeded!\n");
    }
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscripts WHERE name LIKE 'it''s \"100%'").front(), "1");
}

TEST_F(PackageRun, HelpAndOtherOperationsRunNothing) {
    writePackage("helped", packageOf("SELECT * FROM absent_table\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("helped") && script.setSQLFile(nullptr)) << script.getOutput();
    const Result help = runPackage("helped", {}, 2);
    EXPECT_TRUE(help.done);
    EXPECT_EQ(
        help.output,
        std::string("\n\nUsage:\n\nHow to call it\n\nDescription:\n\nWhat it does\n\nCreation Time:\n") +
            script.getCreation() + "\n\n");
    const Result other = runPackage("helped", {}, 3);
    EXPECT_TRUE(other.done);
    EXPECT_EQ(other.output, "");
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscriptExec WHERE name = 'helped'").front(), "0");
}

TEST_F(PackageRun, ARefusedPackageSaysWhyAndLeavesNoPlainCopy) {
    const std::string script = "#START_SCRIPT#\nPRINT 1\n";
    const std::string guid = query("SELECT SettingValue FROM NQSetting", 1, "NQ2").front();
    const struct {
        const char* name;
        std::string text, output;
    } cases[] = {
        {"othersite", "#START_OPTIONS#\nDatabase Name:Dorvas\nPlexum ID:5\n" + script,
         "\nThis site specific tscript cannot be run on this DV: [1A].\n"},
        {"thissite",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nPlexum ID:26\nGUID:not asked for here\n" + script, ""},
        {"otherguid", "#START_OPTIONS#\nDatabase Name:NQ2\nGUID: " + guid + "\n" + script,
         "\nThis site specific tscript cannot be run on this NQ2 machine.\n"},
        {"thisguid", "#START_OPTIONS#\nDatabase Name:NQ2\nGUID:" + guid + "\n" + script, ""},
        {"otherdb", "#START_OPTIONS#\nDatabase Name: Dorvas\n" + script,
         "\nInvalid db name [ Dorvas] passed to DV.\n\nFailed to get database info.\n"},
        {"tnet", "#START_OPTIONS#\nDatabase Name:tnet\n" + script,
         "\nFailed to get database access info.\n\nFailed to get database info.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        writePackage(c.name, c.text);
        const Result result = runPackage(c.name, {}, 3);
        EXPECT_EQ(result.done, c.output.empty());
        EXPECT_EQ(result.output, c.output);
    }
}

TEST_F(PackageRun, ADamagedPackageIsRefused) {
    const std::string good = support::readFile(writePackage("damaged", packageOf("PRINT 1\n")));
    std::string changed = good;
    changed[good.size() / 2] = changed[good.size() / 2] == 'A' ? 'B' : 'A';
    for (const std::string& content :
         {changed, good.substr(0, good.size() - 9), std::string("plain text\n")}) {
        support::writeFile(packagePath("damaged"), content);
        const Result result = runPackage("damaged");
        EXPECT_FALSE(result.done);
        EXPECT_EQ(result.output, "\nFailed to decrypt script file.\n");
    }
    fs::remove(packagePath("damaged"));
    EXPECT_EQ(runPackage("damaged").output, "\nTScript file not found!\n");
}

TEST_F(PackageRun, KeepsTheSqlFileWhenTheConfigurationAsksForIt) {
    m_installation.set("Database", "dUTILKEEPSQLFILE", 1);
    m_installation.set("Base", "sSCRIPTSTEMPDIR", m_installation.baseFolder().string());
    writePackage("kept", packageOf("PRINT '%s' -- %s\nPRINT '%s'\n"));
    EXPECT_TRUE(runPackage("kept", {"it's", "b"}).done);
    std::vector<fs::path> files(fs::directory_iterator(m_installation.baseFolder()), {});
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(support::readFile(files[0]), "SET ARITHABORT ON \nGO \nPRINT 'it''s' -- b\nPRINT '%s'\n");
    EXPECT_EQ(fs::status(files[0]).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(PackageRun, APathOnceSetIsKept) {
    writePackage("first", packageOf("PRINT 'first'\n"));
    const std::string second = writePackage("second", packageOf("PRINT 'second'\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("first"));
    EXPECT_EQ(script.getSQLFile(), packagePath("first"));
    ASSERT_TRUE(script.setSQLFile(second.c_str()));
    ASSERT_TRUE(script.executeSQLFile({}, nullptr));
    EXPECT_EQ(std::string(script.getOutput()).find("first"), 0U);
    EXPECT_FALSE(script.isTscriptSP("tsListNodes", "Dorvas")) << "the object holds a package";
}

TEST_F(PackageRun, AnSqlFileThatCannotBeWrittenWholeNeverRuns) {
    m_installation.set("Database", "dUTILKEEPSQLFILE", 1);
    writePackage("full", packageOf("PRINT 'ran'\n-- %s\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("full") && script.setSQLFile(nullptr)) << script.getOutput();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1 << 20, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_FALSE(script.executeSQLFile({std::string(2 << 20, 'x')}, "input"));
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(std::string(script.getOutput()).find("\nFailed to write sql File: ["), 0U);
    EXPECT_NE(std::string(script.getOutput()).find("Error[27 : File too large]."), std::string::npos);
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscriptExec WHERE name = 'full'").front(), "0");
}

TEST_F(PackageRun, WithoutAFolderForItsFilesTheRunEnds) {
    writePackage("homeless", packageOf("PRINT 'ran'\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("homeless") && script.setSQLFile(nullptr)) << script.getOutput();
    m_installation.set("Base", "sSCRIPTSTEMPDIR", (m_installation.tempFolder() / "absent").string());
    EXPECT_FALSE(script.executeSQLFile({}, nullptr));
    EXPECT_EQ(std::string(script.getOutput())
                  .find("\nFailed to open file [" + m_installation.tempFolder().string()),
              0U);
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscriptExec WHERE name = 'homeless'").front(), "0");

    // Without an output file: the start is recorded, its end is not, and the SQL file stays.
    m_installation.remove("Base", "sSCRIPTSTEMPDIR");
    fs::remove_all(m_installation.logFolder());
    EXPECT_FALSE(script.executeSQLFile({}, "none"));
    EXPECT_NE(std::string(script.getOutput()).find("\nFailed to create output File: ["), std::string::npos);
    m_expectedLeftovers = leftovers();
    EXPECT_EQ(m_expectedLeftovers.size(), 1U);
    fs::create_directory(m_installation.logFolder());
    EXPECT_EQ(lastRun("homeless"), "0|0|none");
}

TEST_F(PackageRun, ThreadsWithObjectsOfTheirOwnRunSideBySide) {
    constexpr int kThreads = 8;
    for (int i = 0; i < kThreads; ++i) {
        writePackage("thread" + std::to_string(i), packageOf("PRINT 'thread %s'\n"));
    }
    std::vector<Result> results(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([i, &results] {
            const std::string number = std::to_string(i);
            results[static_cast<std::size_t>(i)] = runPackage("thread" + number, {number});
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int i = 0; i < kThreads; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(results[static_cast<std::size_t>(i)].output,
                  "thread " + number + "\n\nTscript Execution Succeeded!\n");
        EXPECT_EQ(lastRun("thread" + number), "1|0|" + number);
    }
}

}  // namespace
