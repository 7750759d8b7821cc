#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "DVUtilities/Diagnostics.h"
#include "Program.h"
#include "ScriptFixture.h"
#include "record/RecordFolder.h"

namespace {

namespace fs = std::filesystem;

class RunRecords : public ScriptFixture {
  protected:
    RunRecords() { m_installation.setHost("runRecords", folder()); }
    std::string folder() const { return m_installation.folder("records"); }
    // The newest record.
    RunRecord last() const {
        RunRecord record;
        RecordFolder records(folder(), RecordFolder::Access::kRead);
        const std::vector<std::string> names = records.names();
        EXPECT_TRUE(!names.empty() && records.read(names.front(), record)) << records.problem();
        return record;
    }
    std::size_t count() const { return RecordFolder(folder(), RecordFolder::Access::kRead).names().size(); }
    std::string writeEcho() const {
        return writePackage("echo", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT '%s'\n");
    }
};

std::string hashOf(const std::string& text) {
    support::ProgramOptions options;
    options.input = text;
    return support::runProgram({"sha256sum"}, options).output.substr(0, 64);
}

// Of the clock that records use: time() may be a few milliseconds behind it.
std::int64_t millisecondsNow() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

TEST_F(RunRecords, SayWhatRanAndHow) {
    const std::string package = writeEcho();
    const std::string broken = writePackage(
        "broken", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nSELECT * FROM absent_table\n");
    const std::string definition =
        query("SELECT definition FROM sys.sql_modules WHERE object_id = OBJECT_ID('tsEventSummary')").front();
    const struct {
        std::string script, argument;
        bool isPackage, succeeds;
        const char* journal;  // part of the input; null: not journalled
        std::string hash, output;
    } cases[] = {
        {"echo", "it's \"ü\"", true, true, "it's \"ü\"", hashOf(support::readFile(package)),
         "it's \"ü\"\n\nTscript Execution Succeeded!\n"},
        {"broken", "surplus", true, false, "", hashOf(support::readFile(broken)), "absent_table"},
        {"tsEventSummary", "@days = 7", false, true, "@days = 7", hashOf(definition), "last 7 day(s)"},
        {"tsEventSummary", "@nosuch = 1", false, false, "@nosuch = 1", hashOf(definition), "nosuch"},
        {"tsListNodes", "", false, true, nullptr, "", "archive-01"},
    };
    std::size_t runs = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script + " " + c.argument);
        const std::int64_t before = millisecondsNow();
        const Result result = c.isPackage ? runPackage(c.script, {c.argument})
                                          : runProcedure(c.script.c_str(), 1, c.argument.c_str());
        EXPECT_EQ(result.done, c.succeeds) << result.output;
        ASSERT_EQ(count(), ++runs);
        const RunRecord record = last();
        EXPECT_EQ(record.script, c.script);
        EXPECT_EQ(record.isPackage, c.isPackage);
        EXPECT_EQ(record.succeeded, c.succeeds);
        EXPECT_EQ(record.causes.empty(), c.succeeds);
        EXPECT_EQ(record.input.has_value(), c.journal != nullptr);
        EXPECT_EQ(record.run > 0, c.journal != nullptr);
        if (c.journal != nullptr) {
            EXPECT_NE(record.input->find(c.journal), std::string::npos) << *record.input;
            EXPECT_EQ(query("SELECT MAX(id) FROM ZpTscriptExec").front(), std::to_string(record.run));
        }
        EXPECT_TRUE(c.hash.empty() || record.sha256 == c.hash) << record.sha256;
        EXPECT_EQ(record.output, result.output);
        EXPECT_NE(record.output.find(c.output), std::string::npos) << record.output;
        EXPECT_EQ(record.database, "Dorvas");
        EXPECT_EQ(record.server, s_box->server());
        EXPECT_EQ(record.process, getpid());
        EXPECT_TRUE(before <= record.start && record.start <= record.end && record.end <= millisecondsNow());
        EXPECT_FALSE(record.user.empty() || record.host.empty());
    }
    struct stat status {};
    for (const auto& file : fs::directory_iterator(folder()))
        EXPECT_TRUE(stat(file.path().c_str(), &status) == 0 && (status.st_mode & 07777) == 0600);
    EXPECT_TRUE(stat(folder().c_str(), &status) == 0 && (status.st_mode & 07777) == 0700);
    for (const int operation : {2, 4}) EXPECT_TRUE(runProcedure("tsEventSummary", operation).done);
    EXPECT_FALSE(runPackage("absent").done);
    EXPECT_EQ(count(), runs);
}

TEST_F(RunRecords, KeepTheEndsOfALongOutput) {
    writeEcho();
    m_installation.setHost("runRecordOutput", "20");
    EXPECT_TRUE(runPackage("echo", {"begins" + std::string(1000, '-')}).done);
    EXPECT_EQ(last().output, "begins----\n[1017 bytes are left out]\nucceeded!\n");
    EXPECT_EQ(last().outputBytes, 1037U);
    EXPECT_TRUE(last().outputCut);
    for (const auto& [text, most, cut] : {std::tuple{"", 0, ""},
                                          {"äöü", 6, "äöü"},
                                          {"äöü", 5, "ä\n[2 bytes are left out]\nü"},
                                          {"\x80\x80\x80", 2, "\n[3 bytes are left out]\n"}})
        EXPECT_EQ(withoutMiddle(text, static_cast<std::size_t>(most)), cut);
}

TEST_F(RunRecords, AreNotNeededForARun) {
    writeEcho();
    const auto expectRefused = [&](const std::string& reason) {
        const DVUCauses causes;
        const Result result = runPackage("echo", {"x"});
        EXPECT_EQ(result.output, "x\n\nTscript Execution Succeeded!\n");
        std::vector<DVUCause_t> list;
        causes.get(list);
        ASSERT_EQ(list.size(), 1U);
        EXPECT_EQ(list.front().text, "The run record was not written: " + reason);
    };
    support::writeFile(folder(), "a file");
    expectRefused("Not a directory");
    fs::remove(folder());
    fs::create_directory(m_installation.folder("elsewhere"));
    fs::create_directory_symlink(m_installation.folder("elsewhere"), folder());
    expectRefused("Not a directory");
    EXPECT_TRUE(fs::is_empty(m_installation.folder("elsewhere")));
    fs::remove(folder());
    fs::create_directory(folder());
    fs::permissions(folder(), fs::perms::all);
    expectRefused("users other than its owner may write to it");
    const RecordFolder refused("/sys/zephra-runs", RecordFolder::Access::kWrite);  // sysfs has no new folders
    EXPECT_FALSE(refused.problem().empty());
    EXPECT_NE(refused.systemError(), ENOENT) << "why it is not created counts";
}

TEST_F(RunRecords, AreDeletedByNumberAndAge) {
    writeEcho();
    fs::create_directory(folder());
    fs::permissions(folder(), fs::perms::owner_all);
    const std::string old = "/20200131T183000123Z-Dorvas-", half = "/.20200131T183000123Z-Dorvas-9-x.json";
    for (const std::string& name : {old + "1-x.json", old + "2-x.json", old + "3-x.json", half,
                                    std::string("/notes.json"), old + "4-x.txt"})
        support::writeFile(folder() + name, "x");
    m_installation.setHost("runRecordsKeep", "3");
    EXPECT_TRUE(runPackage("echo", {"x"}).done);
    EXPECT_EQ(count(), 3U);
    EXPECT_FALSE(fs::exists(folder() + old + "1-x.json") || fs::exists(folder() + half));
    m_installation.setHost("runRecordDays", "1");
    EXPECT_TRUE(runPackage("echo", {"x"}).done);
    EXPECT_EQ(count(), 2U);
    EXPECT_TRUE(fs::exists(folder() + "/notes.json") && fs::exists(folder() + old + "4-x.txt"));
}

TEST_F(RunRecords, ThatAreDamagedAreRefused) {
    RecordFolder records(folder(), RecordFolder::Access::kWrite);
    const std::string name = "20200131T183000123Z-Dorvas-1-x.json";
    const fs::path file = fs::path(folder()) / name;
    const auto expectProblem = [&](const std::string& problem) {
        RunRecord record;
        EXPECT_FALSE(records.read(name, record));
        EXPECT_EQ(records.problem(), problem);
    };
    const std::string start = R"("start": "2020-01-31T18:30:00.123Z")";
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[]"), std::string(100'000, '['), "{" + start + "}",
          R"({"version": 1, "script": 7, )" + start + "}",
          std::string(R"({"version": 1, "script": "x", "start": "soon"})"),
          std::string(R"({"version": 1, "script": "x", "start": "2020-01-31T18:30:00.5 and later"})"),
          std::string(R"({"version": 1, "script": "x", "start": "1013-01-31T18:30:00.123Z"})")}) {
        support::writeFile(file, text);
        expectProblem("it is damaged");
    }
    support::writeFile(file, R"({"version": 2})");
    expectProblem("it has version 2, which is not supported");
    fs::resize_file(file, (64u << 20) + 1);
    expectProblem("it is larger than 64 MiB");
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    expectProblem("it is not a regular file");
    fs::remove(file);
    fs::create_symlink("/etc/passwd", file);
    expectProblem("Too many levels of symbolic links");
    EXPECT_EQ(records.names(), Texts{name});
    EXPECT_EQ(RecordFolder::namesOf({name}, "Dorvas", 11), Texts());
}

}  // namespace
