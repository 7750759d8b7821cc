#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "DVUtilities/DBBase.h"
#include "SampleInstallation.h"
#include "querytool/QueryToolCommand.h"

namespace {

using support::logTexts;

constexpr ToolLogin kSql = {"/opt/mssql-tools/bin/sqlcmd", "host,1433", "sa", "pass word", false};
constexpr ToolLogin kWindows = {"/opt/mssql-tools/bin/sqlcmd", "host,1433", "sa", "pass word", true};
constexpr ToolInput kInput = {"in.sql", "out.txt", "NQ2"};
constexpr ToolInput kNoDatabase = {"in.sql", "out.txt", ""};

TEST(QueryToolCommand, Lines) {
    const std::string sql = "\"/opt/mssql-tools/bin/sqlcmd\" -b -S host,1433 -U sa -P \"pass word\" ";
    const std::string windows = "\"/opt/mssql-tools/bin/sqlcmd\" -b -S host,1433 -E ";
    const std::string files = "-i \"in.sql\" -o \"out.txt\" ";
    const std::pair<std::string, std::string> cases[] = {
        {fileCommand(kSql, kInput, true), sql + "-d NQ2 -m 1 " + files + "-s \"\t\" -W"},
        {fileCommand(kWindows, kNoDatabase, false), windows + "-d Dorvas -m 0 " + files + "-s \"\t\" -W"},
        {plainFileCommand(kSql, kInput),
         "\"/opt/mssql-tools/bin/sqlcmd\" -n -b -S host,1433 -U sa -P \"pass word\" -d NQ2 " + files},
        {plainFileCommand(kWindows, {"in.sql", "out.txt", nullptr}),
         "\"/opt/mssql-tools/bin/sqlcmd\" -n -b -S host,1433 -E -d Dorvas " + files},
        {scriptFileCommand(kSql, kInput, 14), sql + "-d NQ2 -u -m 1 " + files + "-s \"\t\" -y 0"},
        {scriptFileCommand(kWindows, kNoDatabase, 1 | 16),
         windows + "-d Dorvas  -m 0 " + files + "-s \"\t\" -W"},
        {scriptStringCommand(kSql, {"SELECT 1", "out.txt", nullptr}, 0),
         sql + "-d Dorvas  -m 0 -Q \"SELECT 1\" -o \"out.txt\" -s \"\t\" -W"},
        {csvCommand(kWindows, {"in.sql", "out.txt", "NQ2", ";"}),
         windows + "-d NQ2 " + files + "-s \";\" -W"},
        {csvCommand(kSql, kNoDatabase), sql + "-d Dorvas " + files + "-s \",\" -W"},
        // always with user and password, and no separator
        {stringCommand(kWindows, {"SELECT 1", "out.txt", nullptr}),
         "\"/opt/mssql-tools/bin/sqlcmd\" -b -w 4000 -S host,1433 -U sa -P \"pass word\" -d Dorvas -Q "
         "\"SELECT 1\" "
         "-o \"out.txt\""}};
    for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
}

TEST(QueryToolCommand, Cuts) {
    const std::string longName(300, 'd');
    const std::string longSql(5000, 'q');
    EXPECT_EQ(stringCommand(kSql, {longSql.c_str(), "o", nullptr}).size(), 4095U);
    const std::string cut = " -d " + std::string(255, 'd') + " ";
    EXPECT_NE(stringCommand(kSql, {"q", "o", longName.c_str()}).find(cut), std::string::npos);
    const std::string script = scriptStringCommand(kSql, {longSql.c_str(), "o", longName.c_str()}, 0);
    EXPECT_NE(script.find(cut), std::string::npos);
    EXPECT_NE(script.find(longSql), std::string::npos);
    EXPECT_NE(scriptFileCommand(kSql, {"i", "o", longName.c_str()}, 0).find(longName), std::string::npos);
}

class QueryTool : public testing::Test {
  protected:
    // Nothing listens there: the tool ends with a failure.
    QueryTool() { db.SetAccountInfo("127.0.0.1,1", "sa", "secret-word", log.c_str()); }

    support::SampleInstallation installation;
    const std::string log = installation.logFolder() / "db.log";
    const std::string output = installation.tempFolder() / "output.txt";
    DBBase db{true};
};

TEST_F(QueryTool, ProcessesSucceedByExitCodeZeroAlone) {
    const std::string mark = installation.tempFolder() / "mark";
    EXPECT_TRUE(db.StartProcess(("\"/usr/bin/touch\" \"" + mark + "\"").c_str(), 0xFFFFFFFFU));
    EXPECT_TRUE(std::filesystem::exists(mark));
    EXPECT_TRUE(db.StartProcess("/bin/true", 10'000));
    EXPECT_FALSE(std::filesystem::exists(log));
    EXPECT_FALSE(db.StartProcess("/no/such/program x", 10'000));  // never started: no line
    EXPECT_FALSE(std::filesystem::exists(log));
    EXPECT_FALSE(db.StartProcess("/bin/false", 10'000));
    EXPECT_FALSE(db.StartProcess("/bin/sleep 60", 50));
    EXPECT_EQ(logTexts(log), (std::vector<std::string>{"", ""}));  // the details are in the debug log
    EXPECT_FALSE(db.StartProcess(nullptr, 10'000));
    EXPECT_STREQ(db.getErrorMsg(), "");
}

TEST_F(QueryTool, MessagesOfAnEarlierRunAreNoCauses) {
    installation.useQueryTool("/no/such/tool");
    support::writeFile(output, "Msg 208, Level 16, State 1, Server s, Line 1\nInvalid object name 'x'.\n");
    EXPECT_FALSE(db.RunStringQuery("SELECT 1", output.c_str(), nullptr));
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    ASSERT_EQ(causes.size(), 1U);
    EXPECT_EQ(causes[0].systemError, ENOENT);
}

// The tool's messages may be cut within a character, or have the encoding of another locale.
TEST_F(QueryTool, CausesAreUtf8) {
    const std::string tool = installation.folder("tool");
    support::writeFile(tool, "#!/bin/sh\nprintf 'Gr\\374\\303\\237e \\342\\202' >&2\nexit 1\n");
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    EXPECT_FALSE(db.StartProcess(tool.c_str(), 0xFFFFFFFFU));
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    ASSERT_EQ(causes.size(), 1U);
    EXPECT_EQ(causes[0].text, "Gr\uFFFDße \uFFFD\uFFFD");
}

#if !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)  // their runtimes take memory as they like
TEST_F(QueryTool, LackOfMemoryIsACause) {
    support::writeFile(output, "");
    std::filesystem::resize_file(output, std::size_t{128} << 20);
    unsigned long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit small{pages * static_cast<unsigned long>(getpagesize()) + (24U << 20), before.rlim_max};
    std::vector<std::string> rows;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &small), 0);
    const bool isRead = db.parseOutputFile(std::string(output).data(), rows, 1);
    ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    ASSERT_TRUE(!isRead && causes.size() == 1);
    EXPECT_EQ(causes[0].text, "The operation was stopped, most likely for lack of memory.");
}
#endif

TEST_F(QueryTool, EachRunnerReportsAFailureInItsOwnWords) {
    support::writeFile(installation.folder("in.sql"), "SELECT 1\n");
    const std::string input = installation.folder("in.sql");
    const std::string said = "Failed to execute SQL Script";
    EXPECT_FALSE(db.RunStringQuery("SELECT 1", output.c_str(), nullptr));
    EXPECT_EQ(db.getErrorMsg(), said);
    EXPECT_EQ(logTexts(log),
              (std::vector<std::string>{"Using sqlExePath : /opt/mssql-tools/bin/sqlcmd", "", said}));
    EXPECT_FALSE(db.RunFileQuery(input.c_str(), output.c_str(), "", true, true));
    EXPECT_EQ(db.getErrorMsg(), said + "!");
    EXPECT_FALSE(db.RunFileQuery_TS(input.c_str(), output.c_str(), "", 0));
    EXPECT_FALSE(db.RunStringQuery_TS("SELECT 1", output.c_str(), nullptr, 0));
    EXPECT_FALSE(db.generateCSVOutput(input.c_str(), output.c_str(), "", nullptr));
    const auto lines = logTexts(log);
    EXPECT_EQ(lines.size(), 11U) << "the tool's path is told once";
    for (std::size_t i = 3; i < lines.size(); ++i) EXPECT_EQ(lines[i], i % 2 == 1 ? "" : said + "!");
    EXPECT_EQ(support::readFile(log).find("secret-word"), std::string::npos);
}

}  // namespace
