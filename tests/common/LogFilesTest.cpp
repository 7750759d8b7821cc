#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "SampleInstallation.h"

namespace {

using support::logTexts;
using support::readFile;
using support::writeFile;

template <typename Work>
std::string printedBy(Work work) {
    testing::internal::CaptureStdout();
    work();
    return testing::internal::GetCapturedStdout();
}

class LogFiles : public testing::Test {
  protected:
    support::SampleInstallation installation;
    const std::string log = installation.logFolder() / "test.log";
    const std::string source = installation.tempFolder() / "report.txt";
};

TEST(TimeString, IsLocalTimeCutToTheLength) {
    std::tm newYear{};
    newYear.tm_year = 2024 - 1900;
    newYear.tm_mday = 1;
    newYear.tm_isdst = -1;
    const long moment = std::mktime(&newYear);
    char buffer[64] = "untouched";
    EXPECT_EQ(GetTimeString(buffer, sizeof buffer, moment, true), buffer);
    EXPECT_STREQ(buffer, "2024/01/01");
    EXPECT_STREQ(GetTimeString(buffer, sizeof buffer, moment, false), "2024/01/01 00:00:00");
    EXPECT_STREQ(GetTimeString(buffer, 5, moment, false), "2024");
    EXPECT_STREQ(GetTimeString(buffer, 0, moment, false), "2024");
    EXPECT_EQ(GetTimeString(nullptr, 5, moment, false), nullptr);
    for (const auto& [zone, text] :
         {std::pair("UTC0", "1970/01/01 00:00:00"), std::pair("PKT-5", "1970/01/01 05:00:00")}) {
        setenv("TZ", zone, 1);
        EXPECT_STREQ(GetTimeString(buffer, sizeof buffer, 0, false), text);
    }
    unsetenv("TZ");
}

TEST_F(LogFiles, AppendsTimedAndRawEntries) {
    LogToFile(log.c_str(), "hello", false);
    LogToFile(log.c_str(), "ends in a newline\n", false);
    LogToFile(log.c_str(), "raw", true);
    LogToFile(log.c_str(), nullptr, true);
    EXPECT_EQ(logTexts(log),
              (std::vector<std::string>{"hello", "ends in a newline", "untimed: ", "untimed: raw"}));
    EXPECT_EQ(readFile(log).back(), 'w');
}

TEST_F(LogFiles, ProblemsArePrinted) {
    EXPECT_EQ(printedBy([] { LogToFile(nullptr, "x", false); }), "Invalid log file name.");
    EXPECT_EQ(printedBy([] { LogToFile("/no/such/folder/x.log", "x", false); }),
              "Cannot open log file [/no/such/folder/x.log], Error [2]\n");
    EXPECT_EQ(printedBy([] { LogToFile("/dev/full", "x", false); }),
              "Cannot write log file [/dev/full], Error [28]\n");
    const support::TempDir folder;
    writeFile(folder / "victim", "x");
    std::filesystem::create_symlink(folder / "victim", folder / "link");
    std::filesystem::create_hard_link(folder / "victim", folder / "name");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const std::string longerThanAPipe(std::size_t{1} << 20, 'x');
    for (const auto& [file, error] : {std::pair("link", ELOOP), {"name", EMLINK}, {"pipe", EAGAIN}})
        EXPECT_NE(printedBy([&, file = file] {
                      LogToFile((folder / file).c_str(), longerThanAPipe.c_str(), false);
                  }).find("Error [" + std::to_string(error) + "]"),
                  std::string::npos)
            << file;
    EXPECT_EQ(readFile(folder / "victim"), "x");
}

TEST_F(LogFiles, EntriesOfConcurrentWritersNeverMix) {
    const auto write = [&](char letter) {
        for (int i = 0; i < 200; ++i) LogToFile(log.c_str(), std::string(5000, letter).c_str(), false);
    };
    std::vector<std::thread> writers;
    for (const char letter : {'a', 'b', 'c'}) writers.emplace_back(write, letter);
    for (auto& writer : writers) writer.join();
    const auto texts = logTexts(log);
    EXPECT_EQ(texts.size(), 600U);
    for (const auto& text : texts) ASSERT_EQ(text, std::string(5000, text.at(0)));
}

TEST_F(LogFiles, CopiesLinesWithTheirTimes) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"one\ntwo\n\nthree", {"one", "two", "", "three"}},
        {std::string(10000, 'x') + "\n", {std::string(8191, 'x'), std::string(1809, 'x')}},
        {std::string("cut\0off\nnext\n", 13), {"cut", "next"}}};
    for (const auto& [content, expected] : cases) {
        writeFile(source, content);
        writeFile(log, "");
        LogFileContent(source.c_str(), log.c_str(), false, nullptr);
        EXPECT_EQ(logTexts(log), expected);
    }
    LogFileContent(nullptr, log.c_str(), false, nullptr);
}

TEST_F(LogFiles, EchoIsLoggedOnlyBySettingAndThenExactly) {
    writeFile(source, "one\ntwo");
    writeFile(log, "");
    const auto echo = [&](const char* instance) {
        return printedBy([&] { LogFileContent(source.c_str(), log.c_str(), true, instance); });
    };
    EXPECT_EQ(echo("Instance001"), "one\ntwo\n");
    EXPECT_EQ(readFile(log), "");
    installation.set("Database", "dTScriptResultLogOutput", 1);
    EXPECT_EQ(echo(nullptr), "one\ntwo\n");
    EXPECT_EQ(readFile(log), "");
    EXPECT_EQ(echo("Instance001"), "one\ntwo\n");
    EXPECT_EQ(readFile(log), "one\ntwo\n");
    EXPECT_EQ(printedBy([&] { LogFileContent(source.c_str(), nullptr, true, "Instance001"); }),
              "one\ntwo\nInvalid log file name.");
}

TEST_F(LogFiles, SourceThatCannotBeOpenedForWritingIsReported) {
    LogFileContent("/no/such/report", log.c_str(), false, nullptr);
    LogFileContent(installation.tempFolder().c_str(), log.c_str(), false,
                   nullptr);  // a folder opens for "r" alone
    const std::string message =
        "Failed to printout the report on demand: Can't open the Media errors Report [";
    EXPECT_EQ(logTexts(log), (std::vector<std::string>{message + "/no/such/report]",
                                                       message + installation.tempFolder().string() + "]"}));
}

TEST_F(LogFiles, PrintoutNeverCopiesAFileIntoItself) {
    char logFile[1024];
    DVUtilLib util("Report", true);
    ASSERT_TRUE(util.Initialize(logFile, nullptr));
    writeFile(logFile, "x\n");
    const std::string otherCase = installation.logFolder() / "REPORT.LOG";
    writeFile(otherCase, "y\n");
    EXPECT_EQ(printedBy([&] { util.printoutContent(otherCase.c_str(), logFile, true); }), "y\n\n");
    EXPECT_EQ(printedBy([&] { util.printoutContent(otherCase.c_str(), nullptr, false); }), "");
    EXPECT_EQ(printedBy([&] { util.printoutContent(logFile, logFile, true); }), "x\n\n");
    const std::string link = installation.logFolder() / "link";
    std::filesystem::create_symlink(logFile, link);
    EXPECT_EQ(printedBy([&] { util.printoutContent(link.c_str(), logFile, false); }), "");
    const std::string secondName = installation.logFolder() / "second";
    std::filesystem::create_hard_link(logFile, secondName);
    installation.set("Database", "dTScriptResultLogOutput", 1);
    for (const std::string& name : {std::string(logFile), link, secondName}) {
        EXPECT_EQ(printedBy([&] { LogFileContent(name.c_str(), logFile, true, "Instance001"); }), "x\n\n");
        LogFileContent(logFile, name.c_str(), false, nullptr);
    }
    EXPECT_EQ(readFile(logFile), "x\n");
    std::filesystem::remove(secondName);  // a log with a second name is not opened
    writeFile(source, "z\n");
    util.printoutContent(source.c_str(), nullptr, false);  // into the object's own log file
    EXPECT_EQ(logTexts(logFile), (std::vector<std::string>{"untimed: x", "z"}));
}

TEST_F(LogFiles, ScriptLinesMarkAMissingDatabaseByTwoLetters) {
    DVUtilLib util("purge", true);
    util.LogTScript(log.c_str(), "", "purge", "done");
    util.LogTScript(log.c_str(), "Dorvas", "purge", "100% done");
    const std::string content = readFile(log);
    EXPECT_NE(content.find("  xx..purge done\n"), std::string::npos);
    EXPECT_NE(content.find("  Dorvas..purge 100% done\n"), std::string::npos);
    EXPECT_NE(
        printedBy([&] { util.LogTScript(nullptr, "", "purge", "x"); }).find("Cannot open log file [NULL]"),
        std::string::npos);
}

TEST_F(LogFiles, OpeningFiles) {
    FILE* stream = stderr;
    EXPECT_EQ(DVUtilities_fopen_s(&stream, log.c_str(), nullptr), -1);
    EXPECT_EQ(stream, stderr);
    EXPECT_EQ(DVUtilities_fopen_s(&stream, "/no/such/file", "r"), ENOENT);
    EXPECT_EQ(stream, nullptr);
    ASSERT_EQ(DVUtilities_fopen_s(&stream, log.c_str(), "w"), 0);
    EXPECT_EQ(std::fclose(stream), 0);
}

}  // namespace
