// Packages: packed, sealed, listed, inspected, tested, linted, packed again.
#include <sys/stat.h>

#include <sstream>

#include "Installation.h"

namespace {

using support::ProgramResult;

TEST_F(Installation, PacksOnlyWhatCanBeLoaded) {
    const fs::path plain = m_temp / "p.txt";
    const fs::path target = m_temp / "p.sql";
    support::writeFile(target, "kept");
    const std::string longLine(509, 'x');
    const std::tuple<std::string, int, std::string> cases[] = {
        {"", 2, "there is no line #START_SCRIPT#"},
        {"#START_SCRIPT#\n\n", 2, "no statements"},
        {"#START_OPTIONS#\n#START_SCRIPT#\r\nSELECT 1\n", 2, "line 2: a carriage return"},
        {"\xEF\xBB\xBF#START_SCRIPT#\nSELECT 1\n", 2, "byte order mark"},
        {std::string("#START_SCRIPT#\nSELECT\0001\n", 24), 2, "NUL byte"},
        {"#START_SCRIPT#\nPRINT 'zürich'\n-- z\xFCrich\nGO\n", 2, "line 3: bytes that are not UTF-8"},
        {"#START_OPTIONS#\nDatabase Name: Dorvas\n#START_SCRIPT#\nGO\n", 2, "a blank after"},
        {"#START_SCRIPT#\n" + longLine + "x", 2, "its last character"},
        {"#START_USAGE#\nit's\n'X'\n#START_SCRIPT#\nGO\n", 2, "line 3: a third single quote"},
        {"Hi\n#START_SCRIPT#\n" + longLine + "\nGO\n", 0, "line 3: a line of 509 bytes"},
    };
    for (const auto& [text, exitCode, errors] : cases) {
        support::writeFile(plain, text);
        const ProgramResult result = run({"pack", plain, "-o", target});
        EXPECT_EQ(result.exitCode, exitCode) << text << result.errors;
        EXPECT_NE(result.errors.find(errors), std::string::npos) << result.errors;
        EXPECT_EQ(support::readFile(target) == "kept", exitCode != 0) << text;
    }
    fs::copy_file(plain, m_temp / "it's.txt");
    ASSERT_EQ(mkfifo((m_temp / "pipe").c_str(), 0600), 0);
    expectAll({{{"pack", plain, "-o", plain}, 2, "", "the place of its plain text"},
               {{"pack", m_temp / "it's.txt"}, 2, "", "cannot be a script's name"},
               {{"pack", m_temp / "it's.txt", "-o", m_temp / "pipe"}, 3, "", "it is not a regular file"}});
    for (const auto& entry : fs::directory_iterator(m_temp.path()))
        EXPECT_EQ(entry.path().filename().string().find("p.sql."), std::string::npos) << entry.path();
}

// What a run and `inspect` find in a package, and what the settings demand of it.
TEST_F(Installation, UsesOnlyPackagesThatAreWhatWasSealed) {
    const fs::path package = folder / "Scripts" / "Small.sql";
    const fs::path signer = m_temp / "signer.key";
    const Words preview = {"run", "Small", "--dry-run"};
    const Words look = {"inspect", package};
    const auto expectRefused = [&](const std::string& reason) {
        expectAll({{preview, 3, "", reason}, {look, 3, "no: ", "is not authentic"}, {look, 3, reason, ""}});
    };
    const auto expectAccepted = [&](const std::string& seal) {
        expectAll({{preview, 0, "PRINT 'x'", ""}, {look, 0, "yes, every record", ""}, {look, 0, seal, ""}});
    };
    pack("Small", "#START_SCRIPT#\nPRINT 'x'\n");
    expectAll({{{"pack", m_temp / "Small.txt", "--package-version", "3"}, 0, "", "packed"}});
    expectAccepted("version 3, not signed");
    const std::string sealed = support::readFile(package);
    const std::string unsealed = withoutSeal(package);
    support::writeFile(package, sealed + unsealed);
    expectRefused("the package differs from what was sealed");
    support::writeFile(package, unsealed + sealed);
    expectRefused("a seal is not the first line");
    expectAll({{{"which", "Small"}, 3, "", "a seal is not the first line"}});
    support::writeFile(package, support::readFile(folder / "Scripts" / "PurgeEvents.sql"));
    expectRefused("was sealed under the name 'PurgeEvents'");
    support::writeFile(package, unsealed);
    expectAccepted("none: ");
    expectAll({{{"config", "set", "host.requireSeal", "1"}, 0, "", ""}});
    expectRefused("has no seal");
    const std::string key = folder / "cipher.key";
    expectAll({{{"repack", "--seal", "--old-key", key, "--new-key", key, package}, 0, "", "repacked"}});
    expectAccepted("version 1");
    const ProgramResult made = run({"key", "create", "--signing", signer});
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_EQ(modeOf(signer), 0600U);
    const std::string publicKey = made.output.substr(0, made.output.size() - 1);
    std::string otherKey = publicKey;
    otherKey[0] = publicKey[0] == 'A' ? 'B' : 'A';
    expectAll({{{"key", "create", "--signing", signer}, 3, "", "File exists"},
               {{"key", "create", "--signing"}, 2, "", "name the file"},
               {{"config", "set", "host.trustedSigners", otherKey + ", " + publicKey}, 0, "", ""}});
    expectRefused("the package is not signed");
    expectAll({{{"pack", m_temp / "Small.txt", "--sign", key}, 3, "", "exactly 64 bytes"},
               {{"pack", m_temp / "Small.txt", "--sign", signer}, 0, "", "packed"}});
    expectAccepted("signed by " + publicKey);
    const fs::path next = m_temp / "next.key";
    expectAll({{{"key", "create", next}, 0, "", ""},
               {{"repack", "--old-key", key, "--new-key", next, package}, 0, "", "repacked"}});
    fs::copy_file(next, key, fs::copy_options::overwrite_existing);
    expectAccepted("signed by " + publicKey);
    expectAll({{{"config", "set", "host.trustedSigners", "another"}, 2, "", "is a list of public keys"},
               {{"config", "set", "host.trustedSigners", otherKey}, 0, "", ""}});
    expectRefused("signer is not one of");
    expectAll({{{"doctor"}, 3, "package Small: the package's signer is not one of", ""}});
    replaceInFile(store(), otherKey, otherKey + " another");
    expectRefused("trusted signers, of which 'another' is no public key");
    expectAll(
        {{{"doctor"}, 3, "host.trustedSigners is '" + otherKey + " another', not a list of public", ""}});
    replaceInFile(store(), otherKey + " another", " , ");
    expectRefused("' , ' is no public key");
}

TEST_F(Installation, ListsAndComparesScripts) {
    pack("Typed",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nDescription:Prints.\nParameter:a int 3\nParameter:b bit\n"
         "#START_SCRIPT#\nPRINT '%s'\nPRINT '%s'\n");
    const fs::path plain = m_temp / "Typed.txt";
    const fs::path scripts = folder / "Scripts";
    expectAll({
        {{"list"}, 0, "Typed\tpackage\tDorvas\tany\tsealed\t", ""},
        {{"list"}, 0, "\t[a] b\tPrints.", ""},
        {{"list"}, 0, "tsEventSummary\tprocedure\tDorvas\t", ""},
        {{"run", "tYPED", "--b", "1"}, 0, "3\n1\n", ""},
        {{"list", "--name", "t?ped"}, 0, " ok\t[a] b\t", ""},
        {{"list", "--json", "--name", "Typed"}, 0, "\"status\":\"ok\"", ""},
        {{"list", "--name", "'%[x"}, 0, "", ""},
        {{"list", "--name", std::string(300, 'x')}, 2, "", "longer than 256"},
        {{"which", "typed"}, 0, "name      Typed", ""},
        {{"help", "typed"}, 0, "--a int", ""},
        {{"run", "Tyepd"}, 3, "", "Did you mean Typed?"},
        {{"which", "Tyepd"}, 2, "", "Did you mean Typed?"},
        {{"exec", "tsEventSumary"}, 2, "", "Did you mean tsEventSummary?"},
        {{"diff", "Typed", plain}, 0, "", ""},
        {{"diff", "typed", "PurgeEvents"}, 1, "-Parameter:a int 3\n", ""},
        {{"diff", "Tpyed", plain}, 2, "", "Did you mean Typed?"},
        {{"diff", store(), plain}, 3, "", "neither a plain text nor an authentic package"},
        {{"diff", "../x", plain}, 2, "", "cannot be a script's name"},
    });
    support::writeFile(
        plain, "#START_OPTIONS#\n\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT '%s'\nPRINT '%s'\nGO\n");
    expectAll(
        {{{"diff", "Typed", plain},
          1,
          "@@ line 1 @@\n #START_OPTIONS#\n Database Name:Dorvas\n-Description:Prints.\n-Parameter:a int 3\n"
          "-Parameter:b bit\n #START_SCRIPT#\n PRINT '%s'\n PRINT '%s'\n+GO\n",
          ""}});
    fs::copy_file(scripts / "Typed.sql", scripts / "TYPED.sql");  // sealed under another name
    support::writeFile(scripts / "Bad 'x'\n.sql", "x\n");
    expectAll({{{"list", "--packages"}, 0, "TYPED\tpackage\t\t\tnot authentic\t", ""},
               {{"list", "--packages"}, 0, "Bad 'x' \tpackage\t", ""},
               {{"run", "tyPED", "--b", "1"}, 3, "", "there is no package"},  // two fit
               {{"sandbox", "shell"}, 0, "", "", "EXEC sp_rename 'ZpTscripts', 'Away'\n"},
               {{"list"}, 3, "Typed\tpackage\tDorvas\tany\tsealed\t", "Invalid object name 'ZpTscripts'"},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {{"list"}, 4, "Typed\tpackage\tDorvas\tany\tsealed\t", ""}});
}

class SamplePackage : public testing::TestWithParam<const char*> {};

TEST_P(SamplePackage, MeetsItsExpectations) {
    const fs::path packages =
        fs::path(TSCRIPT_PROGRAM).parent_path() / "../share/dvutilities/installation/packages";
    expectCases({{{"test", packages / (std::string(GetParam()) + ".txt")}, 0, " test(s), 0 failed\n", ""}});
}
INSTANTIATE_TEST_SUITE_P(Tscript, SamplePackage,
                         testing::Values("CloseAuditPeriods", "EventReport", "NQCleanup", "PurgeEvents",
                                         "SiteInventory"));

TEST(CommandLine, TestsPackagesAgainstExpectations) {
    const support::TempDir temp;
    const fs::path plain = temp / "It.txt";
    const fs::path expectations = temp / "It.test";
    support::writeFile(plain,
                       "#START_OPTIONS#\nDatabase Name:NQ2\nParameter:a int\n#START_SCRIPT#\nPRINT '<%s>'\n");
    const std::pair<std::string, const char*> malformed[] = {
        {"", "It.test has no test"},
        {"value: 1\n", "line 1: the first line is test: NAME"},
        {"test: a\nvalue 1\n", "line 2: a line is KEY: VALUE"},
        {"test: a\nvalues: 1\n", "line 2: the key 'values' is unknown"},
        {"test:\n", "line 1: a test has a name"},
        {"test: a\n# x\n\ntest: a\n", "line 4: a second test of that name"},
        {"test: a\nexit: 256\n", "line 2: an exit code is a number from 0 to 255"},
        {"test: a\nexit: x\n", "line 2: an exit code"},
        {"test: a\nparameter: x\n", "line 2: a parameter is NAME=VALUE"},
        {"test: a\nrow: 1\n", "line 2: a row follows its query"},
        {"test: a\r\n", "line 1: text is UTF-8 without carriage returns"},
        {"test: \xFF\n", "line 1: text is UTF-8"},
        {"test: a\nsetup: SELEC 1\n", "Could not find stored procedure 'SELEC'"},
    };
    for (const auto& [text, errors] : malformed) {
        support::writeFile(expectations, text);
        expectCases({{{"test", plain}, 2, "", errors}});
    }
    support::writeFile(expectations,
                       "test: <fails> # here\nvalue: 7\noutput: <8>\nabsent: <7\nquery: SELECT 1 AS a, NULL "
                       "AS b, 'x,y' AS c\n"
                       "row: 2\ntest: refuses # x\nparameter: a=x\nexit: 2\nerror: is no int\n");
    const std::string fault = "SELECT 1 AS a, NULL AS b, 'x,y' AS c: 1,,\"x,y\", expected 2";
    expectCases({
        {{"test", plain},
         1,
         "        the output has no line '<8>'\n        the output contains '<7'\n        " + fault +
             "\npassed  refuses",
         ""},
        {{"test", plain, "--only", "refuses # x", "--format", "tap"},
         0,
         "1..1\n# It\nok 1 - refuses   x",
         ""},
        {{"test", plain, "--only", "<fails> # here", "--format", "junit"},
         1,
         "<failure message=\"the output has no line &#39;&lt;8&gt;&#39;\">\n",
         ""},
        {{"test", plain, "--only", "x"}, 2, "", "has no test 'x'"},
        {{"test", plain, "--expect", temp / "none"}, 2, "", "is not a file"},
        {{"test", temp / "none.txt"}, 2, "", "is not a file"},
    });
}

TEST_F(Installation, InspectsPackages) {
    const fs::path purge = folder / "Scripts" / "PurgeEvents.sql";
    const std::string body = "--" + std::string(600, 'x') + "\nPRINT '%s 5%% %s'\nPRINT '%s'\n";
    pack("Long",
         "#START_OPTIONS#\nPlexum ID:26\nDescription:one\ntwo\n#START_USAGE#\nLong X\n#START_SCRIPT#\n" +
             body);
    const fs::path packed = folder / "Scripts" / "Long.sql";
    expectAll({
        {{"inspect", purge}, 0, "yes, every record", ""},
        {{"inspect", packed}, 0, "Long X", ""},
        {{"inspect", packed, "--json"}, 0, "\"description\": \"one\\ntwo\"", ""},
        {{"inspect", packed, "--json"}, 0, "\"bodyLines\": 3,\n  \"placeholders\": 3\n", ""},
        {{"inspect", packed}, 0, " bytes, 3 line(s), 3 placeholder(s)\n", ""},
        {{"inspect", packed, "--body"}, 0, "\n\n" + body, ""},
        {{"inspect", m_temp / "none"}, 2, "", "is not a file"},
        {{"inspect", m_temp.path()}, 2, "", "is not a file"},
        {{"inspect", store()}, 3, "no: ", "is not authentic"},
    });
    EXPECT_EQ(run({"inspect", packed}).output.find("PRINT"), std::string::npos);
    std::string blankLines = withoutSeal(packed);
    for (std::size_t at = 0; (at = blankLines.find('\n', at)) != std::string::npos; at += 4)
        blankLines.replace(at, 1, "\r\n\r\n");
    support::writeFile(packed, blankLines);
    expectAll({{{"inspect", packed}, 0, "yes, every record", ""},
               {{"run", "Long", "--allow-missing"}, 0, "%s 5%% %s\n%s\n", ""}});
    std::string records = support::readFile(purge);
    const std::size_t third = records.find('\n', records.find('\n') + 1) + 1;
    records[third + 40] = records[third + 40] == 'A' ? 'B' : 'A';
    support::writeFile(purge, records + std::string(3000, 'x') + "\n");
    expectAll({{{"inspect", purge}, 3, "no: 2 of", "is not authentic"},
               {{"inspect", purge}, 3, "the first in line 3: ", ""},
               {{"inspect", purge, "--json"}, 3, "\"firstBad\": {\n    \"line\": 3", ""}});
    fs::rename(folder / "cipher.key", folder / "away.key");
    expectAll({{{"inspect", packed}, 3, "", "key file"}});
}

TEST(CommandLine, LintsPlainScripts) {
    const support::TempDir temp;
    const fs::path plain = temp / "p.txt";
    const std::string head = "#START_OPTIONS#\n#START_USAGE#\n#START_SCRIPT#\n";
    const std::tuple<std::string, int, std::string> cases[] = {
        {head + "PRINT '%s %s'\n", 0, "0 error(s), 0 warning(s), 2 placeholder(s)"},
        {"\xEF\xBB\xBF#START_OPTIONS#\r\n#START_USAGE#\r\n#START_SCRIPT#\r\n\r\nGO\r\n", 1,
         "line 1: a carriage return (in 5 line(s)); lines end with a line feed only\n" + plain.string() +
             ": 2 error(s), 0 warning(s)"},
        {head + "GO -- \u202E\n", 0, "line 4: a character that changes the direction of text"},
        {"#START_SCRIPT#\nGO\n", 0, "no line #START_USAGE#"},
        {"#START_OPTIONS#\nHello\n", 1, "error: there is no line #START_SCRIPT#"},
        {"#START_OPTIONS#\nAuthor:me\n" + head + "GO\n", 0, "line 2: the key \"Author:\" is unknown"},
        {"#START_OPTIONS#\nSee GUID:x\n" + head + "GO\n", 0, "\"GUID:\" counts as a key here too"},
        {"#START_OPTIONS#\nPlexum ID:x\n" + head + "GO\n", 0, "is not a number"},
        {"#START_OPTIONS#\nDatabase Name:Dorvax\n" + head + "GO\n", 0, "no database of that name"},
        {head + "#START_SCRIPT\nGO\n", 0, "line 4: begins like a marker"},
        {head + "PRINT '5%%'\nPRINT '%s'\n", 0, "line 4: %% before the last placeholder"},
        {head + "PRINT '%s'\nPRINT '5%%'\n", 0, "0 warning(s)"},
        {head + "PRINT '%%s'\n", 0, "line 4: %%s uses up a parameter"},
        {head + "/* 5%s\n*/ PRINT '%s'\n", 0, "line 4: a percent sign between"},
        {head + "PRINT '--%s'\n", 0, "0 warning(s)"},
        {head + "PRINT '$(x)'\n", 0, "line 4: $( is not expanded"},
        {"#START_OPTIONS#\nTool Variables:yes\n" + head + "PRINT '$(x)'\n", 0, "0 warning(s)"},
        {head + "GO -- %s\n", 0, "line 4: a placeholder in a -- comment"},
        {head + "SELECT * FROM Log_%s\n", 0, "line 4: a placeholder in a name"},
        {head + "SELECT 1 AS [a %s]\n", 0, "line 4: a placeholder in a name"},
        {head + "SELECT ']' AS a, '%s' WHERE '' < %s OR 2 %% 3 = %s\n", 0, "1 warning(s), 3 placeholder(s)"},
        {head + "PRINT 'a\nGO\n!!x'\nGO\nSELECT\n1 FORM x,\n", 0,
         "line 9, column 8: Incorrect syntax near 'x'"},
        {head + "SELECT a FROM %s WHERE b = %s ORDER BY %s\n", 0, "0 warning(s)"},
        {head + "SELECT (1\n/* x\n", 0, "line 5, column 1: Missing end comment"},
        {head + "SELECT 'x\n", 0, "line 4, column 8: Unclosed quotation mark"},
        {head + "PRINT @x\n", 0, "line 4, column 7: Must declare the scalar variable \"@x\""},
        {head + "KILL 5\n", 0, "line 4, column 1: tsqlbox does not support"},
        {head + "!!rm x\n  :r x.sql\nQUIT\n", 0, "line 4, column 1: starts a program"},
        {head + "PRINT ''\n  :r x.sql\nQUIT\n", 0, "line 5, column 1: reads a file"},
        {head + "USE Dorvax\nSELECT 1 FROM nq3..x, dbo.y, nq2.dbo.z\n", 0, "2 warning(s)"},
        {"#START_OPTIONS#\nParameter:days int(1..9) 7 \"Age\"\n" + head + "PRINT '%s'\n", 0, "0 warning(s)"},
        {"#START_OPTIONS#\nParameter:days int\n" + head + "GO\n", 1, "1 parameter(s) are declared, and 0"},
        {"#START_OPTIONS#\nParameter: days int\n" + head + "GO\n", 1, "line 2: a parameter: a name must"},
        {"#START_OPTIONS#\nParameter:it's int\n" + head + "GO\n", 1, "a name has at most 64 letters"},
        {"#START_OPTIONS#\nParameter:a*b/c int\n" + head + "GO\n", 1, "a name has at most 64 letters"},
        {"#START_OPTIONS#\nParameter:a\tb int\n" + head + "GO\n", 1, "a name has at most 64 letters"},
        {"#START_OPTIONS#\nParameter:days\n" + head + "GO\n", 1, "'' is no type; the types are int"},
        {"#START_OPTIONS#\nParameter:days int(9..1)\n" + head + "GO\n", 1, "'int(9..1)' is no type"},
        {"#START_OPTIONS#\nParameter:days int 7 Age\n" + head + "GO\n", 1, "nothing may follow"},
        {"#START_OPTIONS#\nParameter:days int \"Age\n" + head + "GO\n", 1, "description's closing quote"},
        {"#START_OPTIONS#\nParameter:days int 'x' \"\"\n" + head + "GO\n", 1, "the default is no int"},
        {"#START_OPTIONS#\nParameter:a bit\nParameter:A bit\n" + head + "GO\n", 1,
         "line 3: a parameter: the name A"},
        {"#START_OPTIONS#\nParameter:a bit \"GUID: x\"\n" + head + "GO\n", 1,
         "\"GUID:\" in the line of a parameter"},
    };
    for (const auto& [text, exitCode, output] : cases) {
        support::writeFile(plain, text);
        const ProgramResult result = tscript({"lint", plain});
        EXPECT_EQ(result.exitCode, exitCode) << text << result.errors;
        EXPECT_NE(result.output.find(output), std::string::npos) << output << " in " << result.output;
    }
    // No parameter can have the name of an option of a run.
    std::istringstream usage(tscript({"run", "--help"}).output);
    int options = 0;
    for (std::string word; usage >> word;) {
        if (word.rfind("--", 0) != 0 || word == "--PARAMETER") continue;
        const std::string name = word.substr(2, word.find_first_of("=[,{", 2) - 2);
        support::writeFile(plain, "#START_OPTIONS#\nParameter:" + name + " bit\n" + head + "PRINT '%s'\n");
        EXPECT_NE(tscript({"lint", plain}).output.find("tscript run has an option"), std::string::npos)
            << name;
        ++options;
    }
    EXPECT_GE(options, 12);
    support::writeFile(plain, head + "SELECT 1,\n");
    expectCases(
        {{{"lint", plain, "--json"}, 0, "\"line\": 4,\n      \"column\": 9,\n      \"word\": \",\"", ""},
         {{"lint", temp / "none"}, 2, "", "is not a file"},
         {{"new", "It's"}, 2, "", "cannot be a script's name"},
         {{"new", "X", "--db", "Nope"}, 2, "", "Dorvas, NQ2"},
         {{"new", "50%s *", "-o", temp / "new.txt"}, 0, "", "next: tscript lint"},
         {{"new", "50%s *", "-o", temp / "new.txt"}, 2, "", "exists"},
         {{"lint", temp / "new.txt"}, 0, "0 error(s), 0 warning(s), 2 placeholder(s)", ""}});
}

TEST_F(Installation, RepacksWithANewKey) {
    const fs::path key = folder / "cipher.key";
    const fs::path next = m_temp / "next.key";
    const fs::path purge = folder / "Scripts" / "PurgeEvents.sql";
    const fs::path report = folder / "Scripts" / "EventReport.sql";
    const fs::path broken = folder / "Scripts" / "Broken.sql";
    const fs::path none = m_temp / "none.sql";
    const Words words = {"repack", "--old-key", key, "--new-key", next, none, broken, purge, report};
    expectAll({{words, 3, "", "next.key cannot be used: it is missing"},
               {{"key", "create", next}, 0, "", "created"}});
    const std::string old = support::readFile(purge);
    const fs::path third = m_temp / "third.key";
    expectAll(
        {{{"key", "create", third}, 0, "", "created"},
         {{"key", "create", third}, 3, "", "File exists"},
         {{"repack", "--old-key", third, "--new-key", next, purge, report}, 3, "", "2 of 2 file(s) were"},
         {{"inspect", purge}, 0, "yes, every record", ""},
         {{"inspect", report}, 0, "yes, every record", ""}});
    EXPECT_EQ(support::readFile(purge), old);
    support::writeFile(broken, old + "ZF1.AAAA\n");
    fs::permissions(purge, fs::perms(0640));
    expectAll({{words, 3, "", "none.sql was left as it is: No such file"},
               {words, 3, "", "Broken.sql was left as it is: line "},
               {words, 3, "", "PurgeEvents.sql has the new key already"},
               {{"repack", "--old-key", key, "--new-key", key, purge}, 2, "", "same file"},
               {{"inspect", purge}, 3, "no: ", ""},
               {{"inspect", report}, 3, "no: ", ""}});
    EXPECT_EQ(support::readFile(broken), old + "ZF1.AAAA\n");
    EXPECT_EQ(modeOf(purge), 0640U);
    const std::string password = support::readFile(folder / "password");
    fs::copy_file(next, key, fs::copy_options::overwrite_existing);
    expectAll({{{"credentials", "set", "Dorvas", "--user", "sa"}, 0, "", "stored", password},
               {{"run", "PurgeEvents", "-p", "30", "-p", "2"}, 0, "Deleted", ""}});
    for (const auto& entry : fs::directory_iterator(folder / "Scripts"))
        EXPECT_EQ(entry.path().extension(), ".sql") << entry.path();
}

}  // namespace
