#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <thread>

#include "CVoFile.h"
#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScript.h"
#include "DVUtilities/TScriptRecords.h"
#include "PackageSeal.h"
#include "ScriptFixture.h"
#include "TurkishLocale.h"
#include "VTPassword.h"

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

// In a new database the first script and its first run have the id 1.
TEST_F(PackageRun, RunsInADatabaseThatIsNamedOrDetected) {
    const std::pair<std::string, std::string> cases[] = {
        {"WFEngine", "808"}, {"VTCloud", "809"}, {"HistoryDB", "810"}};
    m_installation.set("Base", "nPLATTYPE", 4);
    m_installation.remove("InstalledPackages\\803", "sInstallState");
    const std::string log = m_installation.baseFolder() / "made.log";
    for (const auto& [database, component] : cases) {
        SCOPED_TRACE(database);
        DBBase db(true);
        db.SetAccountInfo(s_box->server().c_str(), s_box->login().c_str(), s_box->password().c_str(),
                          log.c_str());
        ASSERT_TRUE(db.SetDBValue(("CREATE DATABASE " + database).c_str()));
        fs::current_path(fs::path(CATALOGUE_SQL).parent_path());  // its :r names are relative to it
        ASSERT_TRUE(db.RunFileQuery(CATALOGUE_SQL, log.c_str(), database.c_str(), true, false));
        for (const auto& other : cases)
            m_installation.set("InstalledPackages\\" + other.second, "sInstallState",
                               other.second == component ? "Installed" : "Removed");
        const std::string script = "#START_SCRIPT#\nPRINT DB_NAME()\n";
        writePackage("named", "#START_OPTIONS#\nDatabase Name:" + database + "\n" + script);
        writePackage("detected", script);
        for (const char* name : {"named", "named", "detected"}) {
            const Result result = runPackage(name);
            EXPECT_EQ(result.output, database + "\n\nTscript Execution Succeeded!\n");
            EXPECT_EQ(result.database, database);
        }
        EXPECT_EQ(query("SELECT s.id, e.id, e.status FROM ZpTscripts s JOIN ZpTscriptExec e ON e.tsId = s.id "
                        "ORDER BY e.id",
                        3, database.c_str()),
                  (Texts{"1|1|1", "1|2|1", "2|3|1"}));
    }
}

TEST_F(PackageRun, NamesWithQuotesAndPercentSignsAreHarmless) {
    const std::string name = "it's {\u00fc} \"100%s\"';\nDELETE ZpTscripts --";
    writePackage(name, packageOf("PRINT 'ran'\n"));
    for (int run = 0; run < 2; ++run) {
        const Result result = runPackage(name);
        EXPECT_TRUE(result.done) << result.output;
        EXPECT_EQ(result.output, "ran\n\nTscript Execution Succeeded!\n");
    }
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscripts WHERE name LIKE 'it''s {%'").front(), "1");
    std::filesystem::create_directory(m_installation.homeFolder() / "Scripts" / "sub");
    writePackage("sub/slash", packageOf("PRINT 'ran'\n"));
    EXPECT_EQ(runPackage("sub/slash").output, "ran\n\nTscript Execution Succeeded!\n");
    EXPECT_EQ(lastRun("sub/slash"), "1|0|");
}

TEST_F(PackageRun, HelpAndOtherOperationsRunNothing) {
    writePackage("helped", packageOf("SELECT * FROM absent_table\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("helped") && script.setSQLFile(nullptr)) << script.getOutput();
    const Result help = runPackage("helped", {}, 2);
    EXPECT_TRUE(help.done);
    const std::time_t created = 1700000000;
    std::ostringstream creation;
    creation << std::put_time(std::localtime(&created), "%Y/%m/%d %H:%M:%S");
    EXPECT_EQ(script.getCreation(), creation.str());
    EXPECT_STREQ(script.getUsage(), "\nHow to call it");
    EXPECT_STREQ(script.getDescription(), "\nWhat it does");
    EXPECT_EQ(help.output,
              "\n\nUsage:\n\nHow to call it\n\nDescription:\n\nWhat it does\n\nCreation Time:\n" +
                  creation.str() + "\n\n");
    const Result other = runPackage("helped", {}, 3);
    EXPECT_TRUE(other.done);
    EXPECT_EQ(other.output, "");
    EXPECT_EQ(query("SELECT COUNT(*) FROM ZpTscriptExec WHERE name = 'helped'").front(), "0");
}

// The lines of a file, each with its line break.
std::vector<std::string> linesOf(const std::string& file) {
    std::istringstream in(support::readFile(file));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line + "\n");
    return lines;
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line;
    return text;
}

std::string cipherLine(const std::string& plain) {
    std::string record(2048, '\0');
    unsigned long size = record.size();
    EXPECT_NE(VTPassword().encrypt(plain.c_str(), record.data(), &size), 0);
    return record.substr(0, size);
}

// Reads the package as a run does, without a database; the reason of a refusal.
std::string loadProblem(const std::string& name) {
    std::string database, sql, error;
    const std::vector<std::string> noValues;
    const DVUCauses collector;
    if (TS_PreviewTscript_SQL(name.c_str(), &database, &noValues, &sql, &error)) return {};
    std::vector<DVUCause_t> causes;
    collector.get(causes);
    return causes.empty() ? error : causes.back().text;
}

// The lines of a package behind a seal; `signingKey` is empty or a file.
std::vector<std::string> sealedLines(std::vector<std::string> records, const hostlayer::PackageSeal& seal,
                                     const std::string& signingKey = {}) {
    hostlayer::PackageSealer sealer(seal);
    std::string text, problem;
    EXPECT_TRUE(signingKey.empty() || sealer.setSigningKey(signingKey, problem)) << problem;
    for (const std::string& record : records) {
        std::string plain(511, '\0');
        unsigned long size = plain.size();
        const std::string line = record.substr(0, record.size() - 1);
        EXPECT_NE(VTPassword().decrypt(line.c_str(), plain.data(), &size), 0);
        sealer.addLine(line, plain.substr(0, size));
    }
    EXPECT_TRUE(sealer.makeText(text, problem)) << problem;
    records.insert(records.begin(), cipherLine(text) + "\n");
    return records;
}

// Who has the cipher key, but not the signing key, cannot put a signature on other statements, another name
// or another version.
TEST_F(PackageRun, ASignatureFitsOnePackageOnly) {
    const Texts first = linesOf(writePackage("signed", packageOf("PRINT 'first'\n")));
    const Texts second = linesOf(writePackage("signed", packageOf("PRINT 'second'\n")));
    const std::string key = m_installation.folder("signing.key");
    std::string problem;
    ASSERT_NE(hostlayer::createSigningKeyFile(key, problem), "") << problem;
    const Texts lines = sealedLines(first, {.version = 7, .name = "signed"}, key);
    std::string plain(511, '\0');
    unsigned long size = plain.size();
    const std::string record = lines.front().substr(0, lines.front().size() - 1);
    ASSERT_NE(VTPassword().decrypt(record.c_str(), plain.data(), &size), 0);
    hostlayer::PackageSealCheck check;
    check.addLine(record, "\n", plain.substr(0, size));
    ASSERT_NE(check.seal(), nullptr);
    hostlayer::PackageSeal forged = *check.seal();
    const auto problemOf = [&](const Texts& content) {
        support::writeFile(packagePath("signed"), joinedLines(content));
        return loadProblem("signed");
    };
    EXPECT_EQ(problemOf(lines), "");
    EXPECT_EQ(problemOf(sealedLines(first, forged)), "") << "renewed, as repack does";
    EXPECT_EQ(problemOf(sealedLines(second, forged)), "the package's signature is not valid");
    forged.version = 8;
    EXPECT_EQ(problemOf(sealedLines(first, forged)), "the package's signature is not valid");
    forged.version = 7;
    forged.name = "other";
    EXPECT_EQ(problemOf(sealedLines(first, forged)), "the package's signature is not valid");
}

TEST_F(PackageRun, EveryRearrangementOfASealedPackageIsRefused) {
    const std::string path =
        writePackage("sealed", packageOf("DELETE a\nWHERE b = 1\nGO\nDELETE a\nWHERE b = 2\n"));
    const Texts records = linesOf(path);
    const Texts whole = sealedLines(records, {.version = 7, .name = "sealed"});
    const auto problemOf = [&](const std::string& content) {
        support::writeFile(path, content);
        return loadProblem("sealed");
    };
    EXPECT_EQ(problemOf(joinedLines(whole)), "");
    EXPECT_EQ(problemOf(joinedLines(records)), "") << "without a seal, and none is required";

    std::vector<std::string> changed;
    const auto add = [&](Texts lines) { changed.push_back(joinedLines(lines)); };
    for (std::size_t i = 0; i < whole.size(); ++i) {
        Texts lines = whole;
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(i), whole[i]);
        add(lines);  // doubled
        for (const char* blank : {"\n", "\r\n"}) {
            lines[i] = blank;
            add(lines);
        }
        lines = whole;
        lines[i].insert(lines[i].size() - 1, "\r");
        add(lines);
        if (i > 0) {
            lines = whole;
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
            add(lines);
            add({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(i)});  // cut
        }
        for (std::size_t j = i + 1; j < whole.size(); ++j) {
            lines = whole;
            std::swap(lines[i], lines[j]);
            add(lines);
        }
    }
    add({whole[0], cipherLine("#START_SCRIPT#\n") + "\n", cipherLine("DROP TABLE a\n") + "\n"});
    for (const std::string& content : changed) EXPECT_NE(problemOf(content), "") << content;
    EXPECT_GT(changed.size(), 100U);
    support::writeFile(packagePath("other"), joinedLines(whole));
    EXPECT_EQ(loadProblem("other"), "the package was sealed under the name 'sealed'");
}

TEST_F(PackageRun, NothingInAPackageIsSkipped) {
    const std::string path = writePackage("whole", packageOf("PRINT 'one'\nPRINT 'two'\n"));
    const std::string content = support::readFile(path);
    const std::string nul(1, '\0');
    const std::size_t lastLine = content.rfind('\n', content.size() - 2) + 1;
    const std::pair<std::string, std::string> cases[] = {
        {content, ""},
        {content.substr(0, content.size() - 1), ""},  // the last line break
        {content + "\n\n", ""},
        {"", "The package has no record."},
        {"\n\r\n\n", "The package has no record."},
        {nul + content, "Line 1 is cut off or holds a NUL byte."},
        {content.substr(0, lastLine) + nul + content.substr(lastLine), "holds a NUL byte."},
        {content.substr(0, content.size() - 1) + nul + "PRINT 3\n", "holds a NUL byte."},
        {content.substr(0, content.size() - 1) + nul + "PRINT 3", "holds a NUL byte."},
        {content + nul + "\n", "holds a NUL byte."},
        {content + nul, "holds a NUL byte."},
        {content + "Z", "is cut off or holds a NUL byte."},
        {content + "ZF", "cannot be decrypted."},
        {content + "Z\n", "cannot be decrypted."},
    };
    for (const auto& [changed, expected] : cases) {
        support::writeFile(path, changed);
        const std::string problem = loadProblem("whole");
        EXPECT_TRUE(problem.ends_with(expected) && problem.empty() == expected.empty())
            << problem << " instead of " << expected;
    }
    for (std::size_t length = lastLine + 1; length + 1 < content.size(); ++length) {
        support::writeFile(path, content.substr(0, length));
        EXPECT_NE(loadProblem("whole"), "") << length;
    }
}

// Values of every kind between quotes come back equal; what the query tool would not read as a part of a
// value is refused.
TEST_F(PackageRun, HostileValuesArriveOrAreRefused) {
    Texts values;
    const std::string parts[] = {"'",         "''",     ", '",    "'; DROP TABLE a --",
                                 "/*",        "*/",     "--",     "%",
                                 "%s",        "%%",     "%n",     "\\",
                                 ";",         "\"",     "\"'\"",  "[",
                                 "]]",        "{}",     "GO",     "go 5",
                                 ":r x",      ":quit",  "!!ls",   "exit",
                                 "N'",        "0x27",   "\u02BC", "\u2019",
                                 "\uFF07",    "\u00B4", "\u2032", "\U0001F600",
                                 "e\u0301",   "\t",     "\x01",   "$",
                                 "(",         ")",      "$ (",    "`id`",
                                 "&&",        "\u201C", "\u2018", "\u00A0",
                                 "\u200B",    "\uFEFF", "$'",     "*/'/*",
                                 "@@VERSION", "'+'",    "NULL",   ""};
    for (const std::string& part : parts)
        for (const std::string& value :
             {part, "a" + part + "b", part + part + "'" + part, "x' " + part + " 'y"})
            values.push_back(value);
    std::string body = "SET NOCOUNT ON\n";
    std::string expected;
    for (const std::string& value : values) {
        body += "PRINT N'<%s>'\n";
        expected += "<" + value + ">\n";
    }
    writePackage("values", packageOf(body));
    std::string database, log, output;
    ASSERT_TRUE(TS_ExecTscript_SQL_In("values", &database, &values, nullptr, &log, &output)) << output;
    EXPECT_EQ(output, expected + "\nTscript Execution Succeeded!\n");
    EXPECT_GE(values.size(), 200U);

    const std::tuple<std::string, Texts, std::string> refused[] = {
        {"PRINT '%s'\n", {"a\nb"}, "value 1 has a line break."},
        {"PRINT '%s'\n", {"a\r"}, "value 1 has a line break."},
        {"PRINT '%s%s'\n", {"a", "\nGO\n"}, "value 2 has a line break."},
        {"PRINT '%s'\n", {"$(HOME)"}, "value 1 completes a variable $(."},
        {"PRINT '%s%s'\n", {"$", "(HOME)"}, "value 2 completes a variable $(."},
        {"PRINT '$%s'\n", {"(HOME)"}, "value 1 completes a variable $(."},
        {"PRINT '%s(HOME)'\n", {"$"}, "value 1 completes a variable $(."},
        {"PRINT '\n%s\n'\n", {"go"}, "value 1 completes a command of the query tool."},
        {"PRINT '\n  %s\n'\n", {"GO 5"}, "value 1 completes a command of the query tool."},
        {"PRINT '\n%s%s", {"", "\t:r /etc/passwd"}, "value 2 completes a command of the query tool."},
        {"PRINT '\n%s'", {":!!ls"}, "value 1 completes a command of the query tool."},
        {"%s\n", {"!!ls"}, "value 1 completes a command of the query tool."},
        {"%st\n", {"Qui"}, "value 1 completes a command of the query tool."},
    };
    const support::TurkishLocale otherLetters;
    for (const auto& [statements, given, problem] : refused) {
        writePackage("refused", packageOf(statements));
        EXPECT_FALSE(TS_ExecTscript_SQL_In("refused", &database, &given, nullptr, &log, &output))
            << statements;
        EXPECT_EQ(output, "\nThe values are refused: " + problem + "\n");
        std::string sql;
        EXPECT_FALSE(TS_PreviewTscript_SQL("refused", &database, &given, &sql, &output));
        EXPECT_TRUE(
            TS_PreviewTscript_SQL("refused", &database, &given, &sql, &output, kTScriptToolCommandsInValues));
    }
    EXPECT_EQ(lastRun("refused"), "");
}

TEST_F(PackageRun, ARefusedPackageReportsWhyAndLeavesNoPlainCopy) {
    const std::string script = "#START_SCRIPT#\nPRINT 1\n";
    const std::string guid = query("SELECT SettingValue FROM NQSetting", 1, "NQ2").front();
    const std::tuple<const char*, std::string, std::string> cases[] = {
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
    for (const auto& [name, text, output] : cases) {
        SCOPED_TRACE(name);
        writePackage(name, text);
        const Result result = runPackage(name, {}, 3);
        EXPECT_EQ(result.done, output.empty());
        EXPECT_EQ(result.output, output);
    }
}

TEST_F(PackageRun, MissingOrDamagedPartsAreReported) {
    using Installation = support::SampleInstallation;
    const std::string refused = "\nFailed to decrypt script file.\n", missing = "\nTScript file not found!\n";
    const std::string noAccess = "\nFailed to get database access info.\n\nFailed to get database info.\n";
    const std::string noFolder =
        "\nFailed to get zephra base folder.\n\nFailed to get sql file based on script name.\n";
    const struct {
        const char* what;
        void (*damage)(Installation& i, std::string& package);
        const std::string& output;
        const char* cause;  // subject and text of one
    } cases[] = {
        {"base folder", [](auto& i, auto&) { i.remove("Base", "dZEPHRAHOME"); }, noFolder,
         "Base\\dZEPHRAHOME: The value is missing"},
        {"key", [](auto& i, auto&) { fs::remove(i.folder("cipher.key")); }, refused,
         "cipher.key: the key file that cipherKeyFile names is missing"},
        {"private key", [](auto& i, auto&) { fs::permissions(i.folder("cipher.key"), fs::perms(0640)); },
         refused, "cipher.key: users other than its owner"},
        {"same key", [](auto& i, auto&) { support::writeFile(i.folder("cipher.key"), std::string(32, 'k')); },
         refused, ": the encrypted record was changed, or encrypted with another key"},
        {"temporary folder", [](auto& i, auto&) { fs::remove_all(i.tempFolder()); }, refused,
         "_DE.txt: No such file or directory"},
        {"password", [](auto& i, auto&) { i.useServer(s_box->server(), s_box->login(), "x"); }, noAccess,
         "Login failed for user"},
        {"server", [](auto& i, auto&) { i.useServer("127.0.0.1,1", "sa", "x"); }, noAccess,
         "Unable to connect"},
        {"package", [](auto&, auto& package) { package.clear(); }, missing,
         "lacking.sql: No such file or directory"},
        {"its byte", [](auto&, auto& package) { package[package.size() / 2] ^= 3; }, refused,
         "lacking.sql: Line "},
        {"its end", [](auto&, auto& package) { package.resize(package.size() - 9); }, refused,
         "lacking.sql: Line "},
        {"its cipher", [](auto&, auto& package) { package = "plain text\n"; }, refused,
         ": the text is not an encrypted record"},
    };
    const std::string good = support::readFile(writePackage("lacking", packageOf("PRINT 1\n")));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Installation damaged;
        damaged.useServer(*s_box);
        std::string package = good;
        c.damage(damaged, package);
        if (!package.empty()) support::writeFile(damaged.homeFolder() / "Scripts" / "lacking.sql", package);
        const DVUCauses collector;
        const Result result = runPackage("lacking");
        std::vector<DVUCause_t> causes;
        collector.get(causes);
        std::string texts;
        for (const DVUCause_t& cause : causes) texts += cause.subject + ": " + cause.text + "\n";
        EXPECT_NE(texts.find(c.cause), std::string::npos) << texts;
        EXPECT_FALSE(result.done);
        EXPECT_EQ(result.output, c.output);
        EXPECT_TRUE(!fs::exists(damaged.tempFolder()) || fs::is_empty(damaged.tempFolder()));
    }
    setenv("ZEPHRA_REGISTRY", m_installation.storeFile().c_str(), 1);
}

TEST_F(PackageRun, AMissingToolStillClosesTheJournalRow) {
    const std::string store = support::readFile(m_installation.storeFile());
    const std::size_t programs = store.find("sqlcmd = ");
    support::writeFile(m_installation.storeFile(), store.substr(0, programs) + "sqlcmd = \"/absent/sqlcmd\"" +
                                                       store.substr(store.find('\n', programs)));
    writePackage("toolless", packageOf("PRINT 1\n"));
    EXPECT_EQ(runPackage("toolless").output,
              "\nFailed at RunFileQuery_TS! Error: [Failed to execute SQL Script!].\n");
    EXPECT_EQ(lastRun("toolless"), "2|0|");
}

TEST_F(PackageRun, AStartStatementThatIsCutRunsNothing) {
    writePackage("quoted", packageOf("PRINT 'ran'\n"));
    EXPECT_TRUE(runPackage("quoted", {}, 1, std::string(600, '\'').c_str()).done);
    EXPECT_EQ(lastRun("quoted"), "1|0|" + std::string(600, '\''));
    const Result cut = runPackage("quoted", {}, 1, std::string(1000, '\'').c_str());
    EXPECT_FALSE(cut.done);
    EXPECT_EQ(cut.output.find("\nFailed to record tscript start time. Error : ["), 0U) << cut.output;
    TScript script;
    ASSERT_TRUE(script.initialize("tsListNodes") && script.setDbAndLog("Dorvas"));
    int runs = std::stoi(runCount());
    for (std::size_t quotes = 780; quotes < 820; ++quotes)
        runs += script.recordExecStart(std::string(quotes, '\'').c_str()) ? 1 : 0;
    EXPECT_EQ(runCount(), std::to_string(runs)) << "a statement without its condition added rows";
    EXPECT_FALSE(script.recordExecEnd(1)) << "the last start has failed";
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
    EXPECT_STREQ(script.getErrorMessage(), "Tscript Execution Succeeded!");
    EXPECT_FALSE(script.isTscriptSP("tsListNodes", "Dorvas")) << "the object holds a package";
}

TEST_F(PackageRun, APreviewShowsTheTextThatRuns) {
    writePackage("shown", packageOf("PRINT '%s'\n"));
    const Texts values{"it's"};
    std::string database = "nq2", sql, log, output;
    EXPECT_FALSE(TS_PreviewTscript_SQL("shown", &database, &values, &sql, &output));
    EXPECT_NE(output.find("made for the database [Dorvas]"), std::string::npos) << output;
    EXPECT_FALSE(TS_ExecTscript_SQL_In("shown", &database, &values, nullptr, &log, &output));
    EXPECT_NE(output.find("made for the database [Dorvas]"), std::string::npos) << output;
    EXPECT_EQ(database, "nq2");
    database.clear();
    EXPECT_TRUE(TS_PreviewTscript_SQL("shown", &database, &values, &sql, &output)) << output;
    EXPECT_EQ(database, "Dorvas");
    EXPECT_EQ(sql, "SET ARITHABORT ON \nGO \nPRINT 'it''s'\n");
    database.clear();
    EXPECT_TRUE(TS_ExecTscript_SQL_In("shown", &database, &values, nullptr, &log, &output));
    EXPECT_EQ(database + ": " + output, "Dorvas: it's\n\nTscript Execution Succeeded!\n");
    for (const char* arguments : {"", "@days = 7"}) {
        EXPECT_TRUE(TS_PreviewTscript_SP("tsEventSummary", arguments, &sql, &output));
        EXPECT_EQ(sql, std::string("  EXEC tsEventSummary ") + arguments + (*arguments != '\0' ? "  " : " "));
    }
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

TEST_F(PackageRun, WithoutAnOutputFileTheStartHasNoEndAndTheSqlFileStays) {
    writePackage("homeless", packageOf("PRINT 'ran'\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("homeless") && script.setSQLFile(nullptr)) << script.getOutput();
    fs::remove_all(m_installation.logFolder());
    EXPECT_FALSE(script.executeSQLFile({}, "none"));
    EXPECT_NE(std::string(script.getOutput()).find("\nFailed to create output File: ["), std::string::npos);
    m_expectedLeftovers = leftovers();
    EXPECT_EQ(m_expectedLeftovers.size(), 1U);
    fs::create_directory(m_installation.logFolder());
    EXPECT_EQ(lastRun("homeless"), "0|0|none");
}

// Every path that a run with this seed may try within the next seconds, taken beforehand.
std::vector<fs::path> occupy(const fs::path& folder, const std::string& script, const char* ending) {
    constexpr unsigned int kSeed = 7;
    std::vector<fs::path> paths;
    std::srand(kSeed);
    for (int attempt = 0; attempt < 100; ++attempt) {
        const int random = std::rand();
        for (std::time_t time = std::time(nullptr); time < std::time(nullptr) + 10; ++time) {
            paths.push_back(folder / (script + "_" + std::to_string(getpid()) + "_" + std::to_string(time) +
                                      "_" + std::to_string(random) + ending));
            CVoFile().Open(paths.back().c_str(), O_CREAT | O_WRONLY, S_IRUSR | S_IWUSR);
        }
    }
    std::srand(kSeed);
    return paths;
}

TEST_F(PackageRun, WhenEveryNameIsTakenTheLastOneServesACopyAndIsRemoved) {
    writePackage("taken", packageOf("PRINT 'ran'\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("taken"));
    const auto copies = occupy(m_installation.tempFolder(), "taken", "_DE.txt");
    EXPECT_TRUE(script.setSQLFile(nullptr)) << script.getOutput();
    EXPECT_EQ(leftovers().size(), copies.size() - 1);

    const auto files = occupy(m_installation.tempFolder(), "taken", ".sql");
    EXPECT_FALSE(script.executeSQLFile({}, nullptr));
    const std::string output = script.getOutput();
    const std::string last = output.substr(output.find('[') + 1, output.rfind(']') - output.find('[') - 1);
    EXPECT_EQ(output, "\nFailed to open file [" + last + "].\n");
    EXPECT_FALSE(fs::exists(last)) << "it is deleted, though it is another's";
    m_expectedLeftovers = leftovers();
    EXPECT_EQ(m_expectedLeftovers.size(), copies.size() - 1 + files.size() - 1);
}

#if !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)  // their runtimes take memory as they like
TEST_F(PackageRun, LackOfMemoryIsReported) {
    constexpr rlim_t kSpare = 24 << 20;
    const std::string large(40 << 20, 'x');
    writePackage("largebody", packageOf("-- " + large + "\n"));
    writePackage("largeoutput",
                 packageOf("DECLARE @i int SET @i = 0\nWHILE @i < 10000 BEGIN PRINT REPLICATE('x', "
                           "4000) SET @i = @i + 1 END\n"));
    unsigned long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    const rlimit small{pages * static_cast<unsigned long>(getpagesize()) + kSpare, before.rlim_max};
    for (const char* name : {"largebody", "largeoutput"}) {
        const DVUCauses collector;
        setrlimit(RLIMIT_AS, &small);
        const Result result = runPackage(name);
        setrlimit(RLIMIT_AS, &before);
        EXPECT_FALSE(result.done);
        EXPECT_EQ(result.output.find("\nThe operation was stopped, most likely for lack of memory."), 0U)
            << result.output.substr(0, 200);
        std::vector<DVUCause_t> causes;
        collector.get(causes);
        ASSERT_EQ(causes.size(), 1U);
        EXPECT_EQ(causes[0].text, "The operation was stopped, most likely for lack of memory.");
    }
    EXPECT_EQ(lastRun("largeoutput"), "1|0|");
    writePackage("replaced", packageOf("PRINT 'first'\n"));
    TScript script;
    ASSERT_TRUE(script.initialize("replaced") && script.setSQLFile(nullptr));
    fs::copy_file(packagePath("largebody"), packagePath("replaced"), fs::copy_options::overwrite_existing);
    setrlimit(RLIMIT_AS, &small);
    EXPECT_FALSE(script.setSQLFile(nullptr));
    setrlimit(RLIMIT_AS, &before);
    EXPECT_NE(std::string(script.getDescription()).find("What it does"), std::string::npos);
}
#endif

TEST_F(PackageRun, ThreadsRunPackagesAndProceduresSideBySide) {
    constexpr int kThreads = 64;
    constexpr int kProcedures = 8;
    std::vector<std::string> outputs(kThreads);
    std::vector<std::thread> threads;
    writePackage("threads", packageOf("PRINT 'thread %s'\n"));
    for (int i = 0; i < kThreads; ++i) {
        const std::string name = "thread" + std::to_string(i);
        threads.emplace_back([name, i, &output = outputs[static_cast<std::size_t>(i)]] {
            const Result package = runPackage("threads", {name});
            output = package.output;
            if (i >= kProcedures) return;
            const Result procedure = runProcedure("tsEventSummary", 1, nullptr, name.c_str());
            output += procedure.done ? "" : procedure.output;
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::string log = support::readFile(m_installation.logFolder() / "ZephraDebug.log");
    for (int i = 0; i < kThreads; ++i) {
        const std::string name = "thread" + std::to_string(i);
        EXPECT_EQ(outputs[static_cast<std::size_t>(i)],
                  "thread " + name + "\n\nTscript Execution Succeeded!\n");
        EXPECT_EQ(
            query("SELECT status, inputParams FROM ZpTscriptExec WHERE inputParams = '" + name + "'", 2),
            i < kProcedures ? (Texts{"1|" + name, "1|" + name}) : (Texts{"1|" + name}));
        EXPECT_NE(log.find("thread " + name + "\n"), std::string::npos) << name;
    }
}

}  // namespace
