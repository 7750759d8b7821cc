// The built command line, end to end.
#include <signal.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "Installation.h"

namespace {

using support::ProgramResult;

TEST(CommandLine, WrongInputsAreRefusedWithTheirExitCode) {
    const support::TempDir temp;
    support::writeFile(temp / "bad.toml", "[host]\ncipherKeyFile = \n");
    expectCases({
        {{}, 2, "", "See tscript --help"},
        {{"--help"}, 0, "Exit codes", ""},
        {{"rnu", "X"}, 2, "", "did you mean 'run'?"},
        {{"lin"}, 2, "", "did you mean 'lint'?"},         // "run" is two letters away
        {{"epack"}, 2, "", "did you mean 'pack'?"},       // "repack" is as near
        {{"ojurnla"}, 2, "", "did you mean 'journal'?"},  // swapped letters count once
        {{"catalog"}, 2, "", "did you mean 'catalogue'?"},
        {{"ctalog"}, 2, "", "no command 'ctalog'\n"},
        {{"xx"}, 2, "", "no command 'xx'\n"},
        {{"sandbox", "dwon"}, 2, "", "did you mean 'down'?"},
        {{"rnu", "--help"}, 2, "", "did you mean 'run'?"},
        {{"db", "--db", "NQ2", "lst", "--help"}, 2, "", "'lst'; did you mean 'list'?"},
        {{"db", "--db", "NQ2", "list", "--help"}, 0, "List the user databases", ""},
        {{"run", "rnu", "--help"}, 0, "Run a script package", ""},
        {{"--no-input", "sandbox", "status", "--no-input", "--dir", temp / "none"}, 3, "", "holds no sample"},
        {{"--store", "run", "exce", "X"}, 2, "", "did you mean 'exec'?"},
        {{"run"}, 2, "", "NAME is required"},
        {{"run", "../x"}, 2, "", "cannot be a script's name"},
        {{"run", std::string(129, 'x')}, 2, "", "cannot be a script's name"},
        {{"which", "Z\xFCrich"}, 2, "", "cannot be a script's name"},
        {{"run", "X"}, 3, "", "/nowhere"},
        {{"--store", temp / "bad.toml", "run", "X"}, 3, "", "line 2"},
        {{"pack", temp / "bad.toml"}, 3, "", "/nowhere"},
        {{"credentials", "set", "Dorvas"}, 2, "", "--user is required"},
        {{"credentials", "set", "Nothing", "--user", "u"}, 2, "", "Dorvas, NQ2"},
        {{"sandbox", "up", "--dir", temp.path()}, 3, "", "is not empty"},
        {{"sandbox", "up", "--port", "70000"}, 2, "", "70000"},
        {{"sandbox", "down", "--dir", temp / "none"}, 0, "", "not running"},
    });
}

TEST_F(Installation, RunsScriptsByName) {
    pack("Echo",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nSET NOCOUNT ON\n"
         "SELECT '<%s|%s|%s>'\n");
    expectAll({
        {{"run", "PurgeEvents", "-p", "30", "-p", "2"}, 0, "Deleted 54 event(s)", ""},
        {{"run", "PurgeEvents", "-p", "x", "-p", "2"}, 1, "Conversion failed", "the script failed"},
        {{"run", "CloseAuditPeriods", "-p", "2024-01", "-p", "2024-02"}, 1, "PRIMARY KEY", "script failed"},
        {{"run", "EventReport", "-p", "10"}, 0, "<errors days=\"10\">", ""},
        {{"run", "SiteInventory"}, 0, "Zürich", ""},
        {{"run", "NQCleanup"}, 0, "waiting", ""},
        {{"run", "Echo", "-p", "[a,b]", "-p", "-5", "-p", ""}, 0, "<[a,b]|-5|>", ""},
        {{"run", "Echo", "-p", "O'Brien", "-p", "50% {x};", "-p", "é"}, 0, "<O'Brien|50% {x};|é>", ""},
        {{"help", "PurgeEvents"}, 0, "PurgeEvents DAYS SEVERITY", ""},
        {{"help", "tsEventSummary"}, 0, "EXEC tsEventSummary", ""},
        {{"help", "journal"}, 2, "", "tscript journal --help"},
        {{"params", "tsEventSummary"}, 0, "@zone", ""},
        {{"exec", "tsEventSummary", "@days = 7", "--input", "seven"}, 0, "archive-01", ""},
        {{"exec", "tsEventSummary", "-p", "days=7", "-p", "@ZONE=x' y"}, 0, "Succeeded", ""},
        {{"exec", "tsEventSummary", "-p", "zone=x' y", "--dry-run"}, 0, "@zone = 'x'' y'", ""},
        {{"exec", "tsEventSummary", "-p", "days=7; DROP"}, 2, "", "the value of @days is no int"},
        {{"exec", "tsEventSummary", "-p", "no=7"}, 2, "", "has no parameter @no"},
        {{"exec", "tsEventSummary", "-p", "7"}, 2, "", "not of the form NAME=VALUE"},
        {{"exec", "tsEventSummary", "-p", "zone=a\"b"}, 2, "", "double quote"},
        {{"exec", "tsEventSummary", "-p", "zone=$(HOME)"}, 2, "", "a line break or $("},
        {{"exec", "tsEventSummary", "@days = 7\nGO"}, 2, "", "a line break or $("},
        {{"run", "Echo", "-p", "a\nGO", "-p", "", "-p", ""}, 2, "", "value 1 has a line break"},
        {{"run", "Echo", "-p", "", "-p", "$(x)", "-p", "", "--dry-run"},
         2,
         "",
         "value 2 completes a variable"},
        {{"run", "Echo", "-p", "$(x)", "-p", "", "-p", "", "--allow-tool-commands"}, 0, "<$(x)||>", ""},
        {{"exec", "tsEventSummary", "\"x\""}, 2, "", "double quote"},
        {{"run", "PurgeEvents", "-p", "30\xFF"}, 2, "", "a parameter holds bytes that are not UTF-8"},
        {{"exec", "tsSwitchNode", "'spare', 1"}, 5, "", "Need userId input"},
        {{"exec", "tsNothing"}, 2, "", "not a permanent tscript"},
        {{"exec", "tsEventSummary", "--db", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"run", "tsEventSummary"}, 2, "", "tscript exec tsEventSummary"},
        {{"run", "Missing"}, 3, "", "there is no package"},
    });
    const std::string variable = "#START_SCRIPT#\n:setvar who me\nPRINT '<$(who)>'\n";
    pack("Literal", variable);
    pack("Expanded", "#START_OPTIONS#\nDescription:Who\nTool Variables:yes\n" + variable);
    expectAll({{{"run", "Literal"}, 0, "<$(who)>", ""},
               {{"run", "Expanded"}, 0, "<me>", ""},
               {{"run", "Literal"}, 0, "<$(who)>", ""}});
    pack("Program",
         "#START_OPTIONS#\nDescription:x\nTool Variables:yes\n#START_SCRIPT#\n!!echo ran\nPRINT '$(HOME)'\n");
    const ProgramResult program = run({"run", "Program"});
    EXPECT_EQ(program.exitCode, 1) << program.output;
    EXPECT_EQ(program.output.find("\nran\n"), std::string::npos);
    EXPECT_EQ(program.output.find(std::string("/")), std::string::npos) << program.output;
    EXPECT_EQ(journal("CloseAuditPeriods").rfind("2|2024-01, 2024-02|"), 3U) << journal("CloseAuditPeriods");
    EXPECT_NE(journal("tsEventSummary").find("1|seven|"), std::string::npos);
    EXPECT_NE(journal("Echo").find("1|O'Brien, 50% {x};, é|"), std::string::npos);
}

TEST_F(Installation, ListsBacksUpAndRestoresDatabases) {
    const std::string backup = folder / "backups" / "d.bak";
    expectAll({
        {{"db", "list"}, 0, "dorvas", ""},
        {{"db", "version"}, 0, "\n", ""},
        {{"db", "last-backup", "dorvas"}, 0, "never", ""},
        {{"db", "last-backup"}, 0, "dorvas\t-\tnever\n", ""},
        {{"db", "last-backup", "DORVAS", "--older-than", "7d"}, 1, "dorvas\t-\tnever\n", ""},
        {{"db", "backup", "dorvas", backup}, 0, "Backed-Up the Database [dorvas]", ""},
        {{"db", "last-backup", "dorvas"}, 0, ", 0 day(s) ago", ""},
        {{"db", "last-backup", "dorvas", "--older-than", "7d", "--json"}, 0, R"("tooOld": false)", ""},
        {{"db", "last-backup", "--older-than", "7d", "--nagios"}, 2, "BACKUP CRITICAL - 1 of 2 ", ""},
        {{"db", "last-backup", "dorvas", "--older-than", "7d", "--nagios"}, 0, "s;;604800\n", ""},
        {{"db", "last-backup", "--nagios"}, 2, "", "--nagios needs the age"},
        {{"db", "last-backup", "no", "--nagios", "--older-than", "1d"}, 3, "UNKNOWN - the server has no", ""},
        {{"db", "last-backup", "--prometheus"}, 0, "_seconds{database=\"nq2\"} 0\n", ""},
        {{"db", "backup", "dorvas", backup, "--verify"}, 0, "and verified it", ""},
        {{"db", "backup", "nothing", backup, "--verify"}, 1, "", "the database was not backed up"},
        {{"db", "restore", backup, "a ]copy", "--test"}, 0, "restored as a ]copy, checked", ""},
        {{"db", "restore", backup, "dorvas", "--test"}, 2, "", "the database dorvas exists"},
        {{"db", "restore", "/x.bak", "copy", "--test"}, 1, "", "Cannot open backup device"},
        {{"db", "restore", backup, "copy"}, 2, "", "Name it with --to"},
        {{"db", "restore", backup, "copy", "--to", "/data"}, 0, "TO '/data/dorvas'", "has not been run"},
        {{"db", "restore", backup, "copy", "--to", "data"}, 2, "", "'data' is not absolute"},
        {{"db", "restore", backup, "copy", "--to", "/50%"}, 2, "", "the folder for the data files must not"},
        {{"db", "restore", backup, "x'y"}, 2, "", "the database name must not"},
        {{"db", "restore", backup, ""}, 2, "", "the database name must not"},
        {{"db", "restore", backup, std::string(129, 'x')}, 2, "", "the database name"},
        {{"db", "restore", "/x\ny.bak", "copy"}, 2, "", "the backup file must not"},
        {{"db", "restore", "x.bak", "copy"}, 2, "", "'x.bak' is not absolute"},
        {{"db", "last-backup", "x'y"}, 2, "", "the database name must not"},
        {{"db", "backup", "dorvas", "relative.bak"}, 2, "", "is not absolute"},
        {{"db", "backup", "x'; DROP TABLE y --", backup}, 2, "", "must not"},
        {{"db", "backup", "nothing", backup}, 1, "", "Failed to execute DB query"},
        {{"db", "backup", "dorvas", "/nowhere/at/all.bak"}, 1, "", "Failed to execute DB query"},
        {{"db", "list", "--db", "VTCloud"}, 3, "", "VtCloud is not installed"},
    });
    EXPECT_EQ(run({"db", "list"}).output.find("copy"), std::string::npos);

    // A row whose entry in an index has another value.
    const Words test = {"db", "restore", backup, "copy", "--test"};
    pack("Index",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nCREATE TABLE t (x varchar(40), UNIQUE (x))\n"
         "INSERT t VALUES ('value to be damaged')\n");
    expectAll({{{"run", "Index"}, 0, "", ""}, {{"sandbox", "down"}, 0, "", "stopped"}});
    replaceInFile(folder / "data" / "dorvas.db", "value to be", "value is to");
    expectAll({{{"sandbox", "up", "--dir", folder}, 0, "", ""},
               {{"db", "backup", "dorvas", backup, "--verify"}, 0, "and verified it", ""},
               {test, 1, "", "Table error"}});
    replaceInFile(backup, "value is to", "value IS to");
    expectAll({{test, 1, "", "the backup cannot be restored"}});
    EXPECT_EQ(run({"db", "list"}).output.find("copy"), std::string::npos);
}

TEST_F(Installation, RunsACommandOnSeveralStores) {
    pack("Echo", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT '<%s>'\n");
    const std::string all = m_temp / "stores" / "*.toml";
    const std::string good = m_temp / "stores" / "[ac].toml";
    fs::create_directory(m_temp / "stores");
    for (const char* name : {"a.toml", "b.toml", "c.toml"}) fs::copy_file(store(), m_temp / "stores" / name);
    replaceInFile(m_temp / "stores" / "b.toml", "[host]", "[host");
    expectCases({
        {{"each", "--stores", good, "--", "run", "Echo", "-p", "[x, --json]"},
         0,
         "==> a.toml\n<[x, --json]>",
         ""},
        {{"each", "--stores", all, "--", "run", "Echo", "-p", ""},
         1,
         "c.toml\tnot run\t-\t-\n",
         "[2/3] b.toml: "},
        {{"each", "--stores", all, "--stores", good, "--jobs", "3", "--keep-going", "--", "db", "list"},
         1,
         "\nb.toml\tfailed\t3\t",
         "/3] b.toml: failed (exit code 3), "},
        {{"each", "--stores", all, "--json", "--", "db", "list"}, 1, "\"notRun\": 1", ""},
        {{"each", "--stores", good, "--output-dir", m_temp / "out", "--", "db", "list"},
         0,
         "a.toml\tok\t0",
         ""},
        {{"each", "--stores", m_temp / "*.none", "--", "db", "list"}, 2, "", "no file matches --stores"},
        {{"each", "--stores", all}, 2, "", "there is no command to run"},
        {{"each", "--stores", all, "--", "--store", "x"}, 2, "", "'--store' cannot be run"},
        {{"each", "--", "db", "list"}, 2, "", "no stores are named"},
    });
    EXPECT_EQ(support::readFile(m_temp / "out" / "c.toml.out"), "dorvas\nnq2\n");
}

TEST_F(Installation, WritesMetrics) {
    const fs::path file = m_temp / "m.prom";
    expectAll({{{"run", "SiteInventory"}, 0, "", ""},
               {{"metrics"}, 0, "{database=\"Dorvas\",script=\"SiteInventory\",state=\"ok\"} 1\n", ""},
               {{"metrics", "-o", file}, 0, "", ""},
               {{"metrics", "-o", m_temp / "no" / "m.prom"}, 3, "", "cannot create a file"},
               {{"metrics", "--since", "never"}, 2, "", "never"}});
    for (const char* line :
         {"tscript_backup_last_timestamp_seconds{database=\"nq2\"} 0\n",
          "tscript_doctor_checks{result=\"failed\"} 0\n",
          "tscript_last_success_timestamp_seconds{database=\"Dorvas\",script=\"SiteInventory\"} 1",
          "tscript_run_duration_seconds_count{database=\"Dorvas\",script=\"SiteInventory\"} 1\n"})
        EXPECT_NE(support::readFile(file).find(line), std::string::npos) << line << support::readFile(file);
    expectAll({{{"sandbox", "down"}, 0, "", ""}, {{"metrics", "-o", file}, 4, "", "tscript: journal: "}});
    EXPECT_NE(support::readFile(file).find("tscript_metrics_complete{part=\"journal\"} 0\n"),
              std::string::npos);
}

TEST_F(Installation, KeepsSecretsPrivateAndItsDataOverARestart) {
    for (const char* file : {"registry.toml", "cipher.key", "password"})
        EXPECT_EQ(modeOf(folder / file), 0600U);
    for (const char* sub : {"", "data", "logs", "temp", "Scripts"}) EXPECT_EQ(modeOf(folder / sub), 0700U);
    EXPECT_EQ(modeOf(folder / "data" / "dorvas.db"), 0600U);
    EXPECT_EQ(run({"run", "SiteInventory"}).exitCode, 0);
    const pid_t server = serverOf(folder);
    expectAll({{{"sandbox", "up", "--dir", folder}, 0, "export", "(process " + std::to_string(server) + ")"},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {{"sandbox", "status", "--dir", folder}, 4, "stopped", ""},
               {{"sandbox", "up", "--dir", folder}, 0, "export", "running on"},
               {{"sandbox", "status"}, 0, "running on", ""},  // the store in force names it
               {{"sandbox", "status", "--dir", folder}, 0, "running on", ""}});
    EXPECT_NE(journal("SiteInventory").find("1||"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(folder / "temp"));
    const support::TempDir temp;
    const fs::path foreign = temp / "foreign";
    fs::create_directory(foreign);
    if (chown(foreign.c_str(), 65534, 65534) == 0)  // which root alone may do
        expectAll({{{"sandbox", "up", "--dir", foreign}, 3, "", "belongs to another user"}});
}

TEST_F(Installation, ReportsFaultsOfAnInstallation) {
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    const fs::path package = folder / "Scripts" / "PurgeEvents.sql";
    const std::string intact = support::readFile(package);
    support::writeFile(package, intact.substr(0, intact.size() / 2));
    expectAll({{purge, 3, "", "record"}});
    support::writeFile(package, "#START_SCRIPT#\nSELECT 1\n");
    expectAll({{purge, 3, "", "not an encrypted record"}});
    support::writeFile(package, intact);

    fs::permissions(folder / "cipher.key", fs::perms(0644));
    expectAll({{purge, 3, "", "users other than its owner"}});
    fs::permissions(folder / "cipher.key", fs::perms(0600));
    fs::rename(folder / "cipher.key", folder / "old.key");
    expectAll({{purge, 3, "", "the key file that cipherKeyFile names is missing"},
               {{"key", "create"}, 0, "", "created the key"},
               {{"key", "create"}, 3, "", "cipher.key"},
               {purge, 3, "", "another key"}});
    fs::rename(folder / "old.key", folder / "cipher.key");

    fs::rename(folder / "logs", folder / "elsewhere");
    expectAll({{purge, 3, "", "the log folder"}});
    const ProgramResult listed = run({"journal", "--json"});  // a result stays one
    EXPECT_EQ(listed.output.rfind("[", 0), 0U) << listed.output;
    EXPECT_NE(listed.errors.find("Cannot open log file"), std::string::npos) << listed.errors;
    fs::rename(folder / "elsewhere", folder / "logs");

    pack("Foreign", "#START_OPTIONS#\nPlexum ID:5\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'x'\n");
    expectAll({{{"run", "Foreign"}, 5, "", "cannot be run on this DV: [1A]"}});

    replaceInFile(store(), "/sqlcmd\"", "/no-sqlcmd\"");
    expectAll(
        {{purge, 3, "", "sqlcmd cannot be started"}, {{"db", "version"}, 3, "", "sqlcmd cannot be started"}});
    replaceInFile(store(), "/no-sqlcmd\"", "/sqlcmd\"");

    const std::string password = support::readFile(folder / "password");
    expectAll(
        {{{"credentials", "set", "dorvas", "--user", "sa"}, 0, "", "stored", "wrong;}'\n"},
         {purge, 5, "", "Login failed"},
         {{"credentials", "set", "dorvas", "--user", "sa"}, 2, "", "double quotes", "a\"b\n"},
         {{"credentials", "set", "dorvas", "--user", "sa"}, 2, "", "nothing was entered"},
         {{"credentials", "set", "dorvas", "--user", "sa"}, 2, "", "longer than", std::string(500, 'x')},
         {{"credentials", "set", "Dorvas", "--user", "sa"}, 0, "", "stored", password},
         {purge, 0, "Deleted", ""},
         {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
         {purge, 4, "", "cannot be reached"}});
    EXPECT_TRUE(fs::is_empty(folder / "temp"));
}

TEST_F(Installation, PacksOnlyWhatCanBeLoaded) {
    const fs::path plain = m_temp / "p.txt";
    const fs::path target = m_temp / "p.sql";
    support::writeFile(target, "kept");
    const std::string longLine(509, 'x');
    const struct {
        std::string text;
        int exitCode;
        std::string errors;
    } cases[] = {
        {"", 2, "there is no line #START_SCRIPT#"},
        {"#START_SCRIPT#\n\n", 2, "no statements"},
        {"#START_OPTIONS#\n#START_SCRIPT#\r\nSELECT 1\n", 2, "line 2: a carriage return"},
        {"\xEF\xBB\xBF#START_SCRIPT#\nSELECT 1\n", 2, "byte order mark"},
        {std::string("#START_SCRIPT#\nSELECT\0001\n", 24), 2, "NUL byte"},
        {"#START_SCRIPT#\nPRINT 'z\xC3\xBCrich'\n-- z\xFCrich\nGO\n", 2, "line 3: bytes that are not UTF-8"},
        {"#START_OPTIONS#\nDatabase Name: Dorvas\n#START_SCRIPT#\nGO\n", 2, "a blank after"},
        {"#START_SCRIPT#\n" + longLine + "x", 2, "its last character"},
        {"#START_USAGE#\nit's\n'X'\n#START_SCRIPT#\nGO\n", 2, "line 3: a third single quote"},
        {"Hi\n#START_SCRIPT#\n" + longLine + "\nGO\n", 0, "line 3: a line of 509 bytes"},
    };
    for (const auto& c : cases) {
        support::writeFile(plain, c.text);
        const ProgramResult result = run({"pack", plain, "-o", target});
        EXPECT_EQ(result.exitCode, c.exitCode) << c.text << result.errors;
        EXPECT_NE(result.errors.find(c.errors), std::string::npos) << result.errors;
        EXPECT_EQ(support::readFile(target) == "kept", c.exitCode != 0) << c.text;
    }
    fs::copy_file(plain, m_temp / "it's.txt");
    expectAll({{{"pack", plain, "-o", plain}, 2, "", "the place of its plain text"},
               {{"pack", m_temp / "it's.txt"}, 2, "", "cannot be a script's name"}});
    for (const auto& entry : fs::directory_iterator(m_temp.path()))
        EXPECT_EQ(entry.path().filename().string().find("p.sql."), std::string::npos) << entry.path();
}

// The package's records behind its seal.
std::string withoutSeal(const fs::path& package) {
    const std::string records = support::readFile(package);
    return records.substr(records.find('\n') + 1);
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
    expectAll({{{"key", "create", "--signing", signer}, 3, "", "File exists"},
               {{"key", "create", "--signing"}, 2, "", "name the file"},
               {{"config", "set", "host.trustedSigners", "other, " + publicKey}, 0, "", ""}});
    expectRefused("the package is not signed");
    expectAll({{{"pack", m_temp / "Small.txt", "--sign", key}, 3, "", "exactly 64 bytes"},
               {{"pack", m_temp / "Small.txt", "--sign", signer}, 0, "", "packed"}});
    expectAccepted("signed by " + publicKey);
    const fs::path next = m_temp / "next.key";
    expectAll({{{"key", "create", next}, 0, "", ""},
               {{"repack", "--old-key", key, "--new-key", next, package}, 0, "", "repacked"}});
    fs::copy_file(next, key, fs::copy_options::overwrite_existing);
    expectAccepted("signed by " + publicKey);
    expectAll({{{"config", "set", "host.trustedSigners", "another"}, 0, "", ""}});
    expectRefused("signer is not one of");
    expectAll({{{"doctor"}, 3, "package Small: the package's signer is not one of", ""}});
}

TEST_F(Installation, RunsScriptsWithNamedValues) {
    const std::string script = "#START_SCRIPT#\nSET NOCOUNT ON\nPRINT '<%s|%s|%s>'\n";
    pack("Typed",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nDescription:Prints.\nParameter:days int(1..365) 30 \"Age in "
         "\"\"days\"\"\"\n"
         "Parameter:since date \"First day\"\nParameter:note string(5) 'it''s'\n#START_USAGE#\nTyped\n" +
             script);
    expectAll({
        {{"run", "Typed", "--since", "2026-02-28"}, 0, "<30|2026-02-28|it's>", ""},
        {{"run", "Typed", "--SINCE=2026-02-28", "--days", "+7", "--note=--x"},
         2,
         "",
         "the value of --days is no int"},
        {{"run", "Typed", "--SINCE=2026-02-28", "--days", "7", "--note=--x"}, 0, "<7|2026-02-28|--x>", ""},
        {{"run", "Typed", "-p", "9", "--since", "2024-02-29", "-p",
          "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9"},
         0,
         "<9|2024-02-29|",
         ""},
        {{"run", "Typed", "--days", "-5", "--since", "2026-01-01"},
         2,
         "",
         "the value of --days is not in 1..365: '-5'"},
        {{"run", "Typed", "--since", "2026-02-29"}, 2, "", "--since is no date"},
        {{"run", "Typed", "--since", "2026-02-28", "--note", "123456"}, 2, "", "is longer than 5 characters"},
        {{"run", "Typed", "-p", "0", "-p", "2026-02-28"}, 2, "", "is not in 1..365"},
        {{"run", "Typed"}, 2, "", "the value of --since (date) is missing: First day"},
        {{"run", "Typed", "--json"}, 2, "\"error\": \"the value of --since", "is missing"},
        {{"run", "Typed", "--since"}, 2, "", "'--since' needs a value"},
        {{"run", "Typed", "--sinec", "x"}, 2, "", "Did you mean --since?"},
        {{"run", "Typed", "--days", "1", "--Days", "2"}, 2, "", "--days is given twice"},
        {{"run", "Typed", "--since", "2026-02-28", "x"}, 2, "", "'x' is not expected"},
        {{"run", "Typed", "-p", "1", "-p", "2026-02-28", "-p", "", "-p", "4"}, 2, "", "4 value(s) are given"},
        {{"run", "Typed", "--since", "2026-02-28", "--note", "a';x", "--dry-run"}, 0, "|a'';x>'", ""},
        {{"run", "PurgeEvents", "--quit", "x"}, 2, "", "Did you mean --quiet?"},
        {{"exec", "tsEventSummary", "--days", "7"}, 2, "", "not expected: --days"},
        {{"help", "Typed"}, 0, "--days int(1..365)  Age in \"days\" (default: 30)", ""},
        {{"params", "Typed"}, 0, "--since date        First day", ""},
        {{"params", "Typed", "--json"}, 0, "\"default\": null", ""},
        {{"inspect", folder / "Scripts" / "Typed.sql", "--json"}, 0, "\"description\": \"Prints.\"", ""},
        {{"__complete", "run", "Typed", "--"}, 0, "--since\tFirst day", ""},
    });
    // An older package has a line of its description that begins like a declaration.
    pack("Line", "#START_SCRIPT#\nParameter: the days\n");
    pack("Older", "#START_OPTIONS#\n" + script);
    const fs::path older = folder / "Scripts" / "Older.sql";
    std::string records = withoutSeal(older);
    const std::string line = withoutSeal(folder / "Scripts" / "Line.sql");
    records.insert(records.find('\n') + 1, line.substr(line.find('\n') + 1));
    support::writeFile(older, records);
    expectAll({{{"run", "Older", "-p", "1", "-p", "2", "-p", "3"}, 0, "<1|2|3>", ""},
               {{"run", "Older", "--days", "1"}, 2, "", "line 2: a name must follow the colon"}});
}

TEST_F(Installation, ChecksARunWithoutRunningIt) {
    pack("Wrong",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nDELETE FROM EventLog\nGO\nDECLARE @i int\n"
         "SELECT nodeIdd FROM EventLog\nGO\nSELECT 1\nFROM WHERE '%s' = ''\n");
    pack("Foreign", "#START_OPTIONS#\nPlexum ID:5\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'x'\n");
    pack("Variable",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nDescription:x\nTool Variables:yes\n#START_SCRIPT#\n"
         ":setvar t EventLog\nSELECT 1 FROM $(t)\nGO\nPRINT 'x'\n");
    expectAll({
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check"},
         0,
         "parsed 2 batch(es) in Dorvas, refused 0",
         ""},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check=compile", "--json"}, 0, "\"errors\": []", ""},
        {{"run", "PurgeEvents", "-p", "30", "--check"}, 2, "", "2 placeholder(s), and 1 value(s)"},
        {{"run", "Wrong", "-p", "x", "--check"},
         1,
         "line 10 (batch 3): Msg 156: ",
         "the server refuses 1 batch(es)"},
        {{"run", "Wrong", "-p", "x", "--check=compile"},
         1,
         "line 7 (batch 2): Msg 207: Invalid column name 'nodeIdd'",
         ""},
        {{"run", "Foreign", "--check"},
         5,
         "is made for site 5",
         "Foreign is made for site 5; this is site 26"},
        {{"run", "SiteInventory", "--check"}, 0, "site       26, this one", ""},
        {{"run", "Wrong", "--check=all"}, 2, "", "--check"},
        {{"run", "Variable", "--check"}, 0, "parsed 1 batch(es) in Dorvas, refused 0, not sent 1", ""},
    });
    EXPECT_EQ(journal("Wrong"), journal("None"));
    expectAll({{{"run", "PurgeEvents", "-p", "30", "-p", "2"}, 0, "Deleted 54 event(s)", ""},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check"}, 4, "", "127.0.0.1"}});
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
    const struct {
        std::string text;
        const char* errors;
    } malformed[] = {
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
    for (const auto& c : malformed) {
        support::writeFile(expectations, c.text);
        expectCases({{{"test", plain}, 2, "", c.errors}});
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
         "1..1\n# It\nok 1 - refuses   x\n",
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
    const struct {
        std::string text;
        int exitCode;
        std::string output;
    } cases[] = {
        {head + "PRINT '%s %s'\n", 0, "0 error(s), 0 warning(s), 2 placeholder(s)"},
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
        {head + "MERGE a USING b ON 1 = 1;\n", 0, "line 4, column 1: tsqlbox does not support"},
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
    for (const auto& c : cases) {
        support::writeFile(plain, c.text);
        const ProgramResult result = tscript({"lint", plain});
        EXPECT_EQ(result.exitCode, c.exitCode) << c.text << result.errors;
        EXPECT_NE(result.output.find(c.output), std::string::npos) << c.output << " in " << result.output;
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
    const Words words = {"repack", "--old-key", key, "--new-key", next, broken, purge, report};
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
    expectAll({{words, 3, "", "Broken.sql was left as it is: line "},
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

// The names in a listing of one row a line, joined by ",".
std::string namesIn(const ProgramResult& listing) {
    EXPECT_EQ(listing.exitCode, 0) << listing.errors;
    std::string names;
    std::istringstream lines(listing.output);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find('\t') + 1;
        names += (names.empty() ? "" : ",") + line.substr(begin, line.find('\t', begin) - begin);
    }
    return names;
}

TEST_F(Installation, ListsCatalogueAndJournal) {
    pack("Rows",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n"
         "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId) VALUES\n"
         "(1, 2, 'O''Brien', dbo.GetDateTime(1700000000), dbo.GetDateTime(1700000125), 1, "
         "'a' + CHAR(9) + CHAR(27) + 'b', 0),\n"
         "(1, 2, '50%', dbo.GetDateTime(1700000001), dbo.GetDateTime(1700000001), 2, NULL, 0),\n"
         "(1, 2, '50x', dbo.GetDateTime(1700000002), dbo.GetDateTime(1700000002), 0, '', 7),\n"
         "(1, 2, '[a_b]', dbo.GetDateTime(1700000003), dbo.GetDateTime(1700000003), 1, '', 0),\n"
         "(1, 1, 'Odd', dbo.GetDateTime(1700000003), dbo.GetDateTime(1700000003), 7, '', 0)\n"
         "INSERT ZpTscripts VALUES (102, 'Both', 0, GETDATE(), ''), (1, 'Other', 0, GETDATE(), '')\n");
    ASSERT_EQ(run({"run", "Rows"}).exitCode, 0);
    pack("tsListNodes", "#START_SCRIPT#\nPRINT 'x'\n");
    const std::string all = "Odd,[a_b],50x,50%,O'Brien,Rows";
    const struct {
        Words filter;
        std::string names;
    } cases[] = {
        {{}, all},
        {{"--last", "0"}, all},
        {{"--last", "2"}, "Odd,[a_b]"},
        {{"--name", "O'Brien"}, "O'Brien"},
        {{"--name", "' OR 1 = 1 --"}, ""},
        {{"--name", "50%"}, "50%"},
        {{"--name", "50?"}, "50x,50%"},
        {{"--name", "*r*"}, "O'Brien,Rows"},
        {{"--name", "[a_b]"}, "[a_b]"},
        {{"--name", "_a_b]"}, ""},
        {{"--status", "ok", "--last", "2"}, "[a_b],O'Brien"},
        {{"--status", "failed"}, "50%"},
        {{"--status", "running"}, "50x"},
        {{"--failed"}, "50%"},
        {{"--since", "yesterday"}, "Rows"},
        {{"--slower-than", "2m"}, "50x,O'Brien"},
        {{"--slower-than", "125s", "--status", "ok"}, ""},
        {{"--slower-than", "2m", "--last", "1", "--status", "ok"}, "O'Brien"},
        {{"--since", "1h"}, "Rows"},
        {{"--since", "2023-11-10", "--name", "50*"}, "50x,50%"},
        {{"--db", "nq2"}, ""},
    };
    for (const auto& c : cases) {
        Words words = c.filter;
        words.insert(words.begin(), "journal");
        EXPECT_EQ(namesIn(run(words)), c.names) << joined(words);
    }
    EXPECT_EQ(namesIn(run({"journal", "tail", "--last", "2"})), "[a_b],Odd");
    EXPECT_EQ(namesIn(run({"catalogue", "--name", "tsS*"})), "tsSwitchNode");
    for (const char* pattern : {"ts%", "tsS_itchNode", "[t]s*", "' OR name LIKE '%", "\"", "--"})
        EXPECT_EQ(namesIn(run({"catalogue", "--name", pattern})), "") << pattern;
    expectAll({
        {{"journal", "--name", "O*"}, 0, "\t2 min 05 s\ta  b\n", ""},
        {{"journal", "--status", "running"}, 0, "\t50x\tabandoned\t", ""},
        {{"journal", "--name", "Odd"}, 0, "\tOdd\t7\t", ""},
        {{"journal", "--status", "running", "--stale", "900000"}, 0, "\t50x\trunning\t", ""},
        {{"journal", "--json", "--name", "50x"}, 0, R"("kind":"procedure","status":"abandoned",)", ""},
        {{"journal", "--json", "--name", "50x"}, 0, R"("start":"2023-11-14T22:13:22Z","end":null,)", ""},
        {{"journal", "--json", "--name", "Rows"}, 0, R"("name":"Rows","kind":"package","status":"ok",)", ""},
        {{"journal", "--json", "--name", "Odd"}, 0, R"("kind":"other","status":"7",)", ""},
        {{"catalogue", "--json", "--name", "Both"}, 0, R"("kind":"both","type":102,"secured":false,)", ""},
        {{"catalogue", "--json", "--name", "Other"}, 0, R"("kind":"other","type":1,)", ""},
        {{"catalogue", "--json", "--name", "tsSw*"}, 0, R"("kind":"procedure","type":10,"secured":true)", ""},
        {{"journal", "--json", "--name", "none"}, 0, "[]\n", ""},
        {{"journal", "export", "--csv", "--name", "O'*"},
         0,
         "id,name,kind,status,start,end,seconds,user,input\r\n2,\"O'Brien\",\"procedure\",\"ok\","
         "\"2023-11-14T22:13:20Z\",\"2023-11-14T22:15:25Z\",125,0,\"a  b\"\r\n",
         ""},
        {{"journal", "export", "--csv", "--name", "none"}, 0, "id,name,kind,status", ""},
        {{"journal", "export", "--status", "running"}, 0, "[\n{\"id\":4,\"name\":\"50x\"", ""},
        {{"journal", "export", "--csv", "--json"}, 2, "", "excludes"},
        {{"journal", "--failed", "--status", "ok"}, 2, "", "excludes"},
        {{"journal", "--slower-than", "fast"}, 2, "", "is not a length of time"},
        {{"journal", "tail", "--last", "0"}, 2, "", "--last"},
        {{"which", "tsSwitchNode"}, 0, "audit level 2, secured", ""},
        {{"which", "tsSwitchNode", "--json"}, 0, R"("kind": "procedure",)", ""},
        {{"which", "tsListNodes", "--json"}, 0, R"("kind": "both",)", ""},
        {{"which", "Rows", "--json"}, 0, R"("kind": "package",)", ""},
        {{"which", "Rows", "--json"}, 0, R"("packageDatabase": "Dorvas")", ""},
        {{"which", "None"}, 2, "", "neither a package nor a stored-procedure"},
        {{"journal", "--status", "broken"}, 2, "", "broken"},
        {{"journal", "--since", "2026-02-30"}, 2, "", "is not a time"},
        {{"journal", "--last", "-1"}, 2, "", "-1"},
        {{"journal", "--name", std::string(257, '*')}, 2, "", "longer than 256"},
        {{"catalogue", "--db", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
        {{"journal"}, 4, "", "cannot be reached"},
    });
}

TEST_F(Installation, FollowsTheJournal) {
    pack("Short", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nWAITFOR DELAY '00:00:03'\n");
    ASSERT_EQ(run({"exec", "tsEventSummary"}).exitCode, 0);
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t tail = support::spawn({TSCRIPT_PROGRAM, "journal", "tail", "-f", "--json"}, options,
                                      {output.get(), output.get(), output.get()});
    const auto expectLine = [&](const std::string& part) {
        for (int i = 0; i < 600 && support::contentOf(output).find(part) == std::string::npos; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_NE(support::contentOf(output).find(part), std::string::npos) << support::contentOf(output);
    };
    expectLine("{\"id\":1,\"name\":\"tsEventSummary\",\"kind\":\"procedure\",\"status\":\"ok\"");
    EXPECT_EQ(run({"run", "Short"}).exitCode, 0);
    expectLine("\n{\"id\":2,\"name\":\"Short\",\"kind\":\"package\",\"status\":\"running\"");
    expectLine("\n{\"id\":2,\"name\":\"Short\",\"kind\":\"package\",\"status\":\"ok\"");
    kill(tail, SIGINT);
    int exitCode = 0;
    EXPECT_TRUE(support::waitFor(tail, std::chrono::seconds(20), exitCode));
    EXPECT_EQ(exitCode, 130);
}

TEST_F(Installation, ShowsOneRunWithItsRecord) {
    const std::string header = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    pack("Fails", header + "PRINT 'before %s'\nGO\nSELECT * FROM absent\n");
    pack("Change", header +
                       "DELETE ZpTscriptExec WHERE id = 2\n"
                       "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, "
                       "userId) VALUES (1, 4, 'Fails', GETDATE(), GETDATE(), 2, 'x', 0)\n");
    EXPECT_EQ(run({"run", "Fails", "-p", "<x>"}).exitCode, 1);
    EXPECT_EQ(run({"exec", "tsEventSummary", "@days = 3"}).exitCode, 0);
    EXPECT_EQ(run({"run", "Change"}).exitCode, 0);
    const auto expectShown = [&](const std::string& id, const std::string& part) {
        expectAll({{{"journal", "show", id}, 0, part, ""}});
    };
    expectShown("1", "run        1, failed\nscript     Fails (package)\nstarted    ");
    expectShown("1",
                "cause      query tool, Msg 208, level 16, state 1, line 1: Invalid object name 'absent'");
    expectShown("1", "input      <x>\nsha256     ");
    expectShown("1", "before <x>\nMsg 208");
    expectShown("2",
                "run        2, ok; the journal has no such row any more\nscript     tsEventSummary (proc");
    expectShown("2", "Events of the last 3 day(s)");
    expectShown("4", "run        4, failed\nscript     Fails (package)");
    expectShown("4", "record     none: the run left no record, or it was deleted\n");
    expectAll({{{"journal", "show", "1", "--json"}, 0, "\"message\": 208", ""},
               {{"journal", "show", "4", "--json"}, 0, "\"recordProblem\": \"the run left", ""},
               {{"journal", "show", "5"}, 2, "", "the journal of Dorvas has no run 5"},
               {{"journal", "show", "0"}, 2, "", "ID"},
               {{"journal", "show", "2147483647"}, 2, "", "has no run 2147483647"},
               {{"journal", "show"}, 2, "", "ID"},
               {{"doctor"}, 0, "run records: " + (folder / "records").string(), ""}});
    fs::path record;
    for (const auto& file : fs::directory_iterator(folder / "records"))
        if (file.path().string().find("-Dorvas-1-") != std::string::npos) record = file.path();
    replaceInFile(record, "\"server\": \"127", "\"server\": \"10");
    expectShown("1", "sha256");  // the installation is this one
    replaceInFile(record, "\"installation\": \"", "\"installation\": \"/other");
    expectShown("1", "record     none: the record of this number is of another installation, /other");
    support::writeFile(record, "{");
    expectShown("1", record.string() + ": it is damaged");
    fs::permissions(folder / "records", fs::perms::all);
    expectShown("1", "users other than its owner may write to it");
    expectAll({{{"doctor"}, 0, "run records: " + (folder / "records").string() + ": users other", ""},
               {{"config", "set", "host.runRecords", "records"}, 2, "", "absolute path"},
               {{"config", "set", "host.runRecords", folder / "none"}, 0, "", ""}});
    expectShown("1", "none: No such file");
    replaceInFile(store(), "runRecords", "noRecords");
    expectShown("1", "record     none: the store names no folder for records");
}

TEST_F(Installation, ShowsAndSavesResults) {
    pack("Anywhere", "#START_SCRIPT#\nSELECT '<%s>', DB_NAME()\n");
    const fs::path result = m_temp / "result";
    support::writeFile(result, "kept");
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    const auto with = [&](Words more) {
        more.insert(more.begin(), purge.begin(), purge.end());
        return more;
    };
    expectAll({
        {with({"--dry-run"}), 0, "CONVERT(int, '30')", "would run in Dorvas; nothing has been run"},
        {{"run", "Anywhere", "--dry-run", "-p", "it's", "--json"}, 0, R"(\nSELECT '<it''s>')", ""},
        {with({"--dry-run", "-o", "/dev/stdout"}), 0, "CONVERT(int, '30')", ""},
        {with({"--dry-run", "-q", "-p", "%s"}), 2, "int, '30')",
         "2 placeholder(s), and 3 value(s) are given"},
        {with({"-p", "x"}), 2, "", "and 3 value(s) are given\ntscript help"},
        {with({"-p", "x", "--json"}), 2, "\"exitCode\": 2", "and 3 value(s) are given"},
        {with({"-p", "x", "--allow-missing", "--dry-run"}), 0, "int, '30')", "nothing has been run"},
        {{"run", "PurgeEvents", "-p", "%s", "--dry-run", "--json"},
         2,
         "2 placeholder(s), and 1",
         "--allow-m"},
        {{"run", "Anywhere", "-p", "%s", "--dry-run", "--json"}, 0, "holders\": 1,\n  \"values\": 1", ""},
        {{"exec", "tsEventSummary", "@days = 3", "--dry-run"}, 0, " EXEC tsEventSummary @days = 3", ""},
        {{"run", "Missing", "--dry-run"}, 3, "", "there is no package"},
        {{"run", "Missing", "-o", result}, 3, "", "there is no package"},
        {with({"-o", m_temp / "none" / "x"}), 3, "", "No such file"},
        {with({"-o", m_temp.path()}), 3, "", "Is a directory"},
        {with({"-o", "/dev/full"}), 3, "", "No space left on device\nThe script has run"},
        {with({"--db", "nq2"}), 2, "", "made for the database [Dorvas]"},
        {with({"--quiet", "--json"}), 2, "", "excludes"},
    });
    EXPECT_EQ(namesIn(run({"journal"})), "PurgeEvents");  // the one whose result /dev/full did not take
    EXPECT_EQ(support::readFile(result), "kept");
    expectAll({
        {{"run", "Anywhere", "--db", "nq2", "-p", "x"}, 0, "nq2", ""},
        {{"run", "PurgeEvents", "-p", "x", "-p", "2", "--quiet"},
         1,
         "Conversion failed",
         "the script failed"},
        {with({"-o", result}), 0, "", ""},
    });
    EXPECT_NE(support::readFile(result).find("Execution Succeeded!"), std::string::npos);
    EXPECT_EQ(run(with({"--quiet"})).output, "");
    pack("Xml",
         "#START_SCRIPT#\n:XML ON\nSELECT '<nodes><DataNode name=\"' + name + '\"/></nodes>' FROM DataNode "
         "WHERE id = 3\n");
    const std::string xml = "<nodes><DataNode name=\"Zürich\"/></nodes>";
    expectAll({{{"run", "Xml"}, 0, xml + "\n\nTscript Execution", ""},
               {{"run", "Xml", "-o", result}, 0, "", ""},
               {{"exec", "tsListNodes", "--data", "-o", m_temp / "nodes"}, 0, "", ""}});
    EXPECT_EQ(support::readFile(result), xml + "\n");
    EXPECT_EQ(run({"run", "Xml", "--data"}).output, xml + "\n");
    EXPECT_EQ(support::readFile(m_temp / "nodes").find("Tscript"), std::string::npos);
}

TEST_F(Installation, GivesEveryListingAsJson) {
    const fs::path purge = folder / "Scripts" / "PurgeEvents.sql";
    support::writeFile(m_temp / "p.txt", "#START_SCRIPT#\nPRINT '%s'\n");
    ASSERT_EQ(run({"run", "PurgeEvents", "-p", "30", "-p", "2"}).exitCode, 0);
    const struct {
        Words words;
        const char* name;  // a member of the object, or of the array's first one
    } cases[] = {
        {{"catalogue"}, "auditLevel"},
        {{"journal"}, "seconds"},
        {{"which", "tsSwitchNode"}, "secured"},
        {{"params", "tsEventSummary"}, "type"},
        {{"inspect", purge}, "authentic"},
        {{"lint", m_temp / "p.txt"}, "placeholders"},
        {{"db", "list"}, "name"},
        {{"db", "version"}, "majorVersion"},
        {{"db", "last-backup", "dorvas"}, "daysAgo"},
        {{"config", "show"}, "value"},
        {{"config", "get", "Base.nPLATTYPE"}, "value"},
        {{"doctor"}, "checks"},
        {{"sandbox", "status", "--dir", folder}, "process"},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2"}, "output"},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--dry-run"}, "sql"},
        {{"exec", "tsListNodes"}, "status"},
    };
    const std::string password = support::readFile(folder / "password").substr(0, 32);
    for (const auto& c : cases) {
        SCOPED_TRACE(joined(c.words));
        Words words = c.words;
        words.emplace_back("--json");
        const ProgramResult result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        nlohmann::json value = nlohmann::json::parse(result.output, nullptr, false);
        if (value.is_array() && !value.empty()) value = value.front();
        EXPECT_TRUE(value.contains(c.name)) << result.output;
        EXPECT_EQ(result.output.find(password), std::string::npos);
        EXPECT_EQ(result.output.find("ZC1."), std::string::npos);
    }
}

// The code of a result is that of the process.
TEST_F(Installation, EndsWithTheCodeOfEachFailure) {
    const auto expectCode = [&](const Words& words, int code) {
        Words asJson = words;
        asJson.emplace_back("--json");
        const ProgramResult result = run(asJson);
        EXPECT_EQ(result.exitCode, code) << joined(words) << result.output << result.errors;
        const nlohmann::json value = nlohmann::json::parse(result.output, nullptr, false);
        EXPECT_EQ(value.value("exitCode", -1), code) << result.output;
        EXPECT_EQ(value.value("status", ""), code == 0 ? "ok" : "failed");
    };
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    expectCode(purge, 0);
    expectCode({"run", "PurgeEvents", "-p", "x", "-p", "2"}, 1);
    expectCode({"run", "tsListNodes"}, 2);
    expectCode({"run", "Missing"}, 3);
    expectCode({"exec", "tsSwitchNode", "'spare', 1"}, 5);
    ASSERT_EQ(run({"sandbox", "down", "--dir", folder}).exitCode, 0);
    expectCode(purge, 4);
}

TEST_F(Installation, NamesTheCauseOfAFailedRun) {
    pack("Batches",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n:setvar x 1\nPRINT 1\nGO\nPRINT 2\nSELECT "
         "1/0\n");
    pack("Drop", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n%s\n");
    const std::string head = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    pack("Quoted", head + "SELECT 1\nGO\nSELECT * FROM NoTable\nGO\nSELECT 2\n");
    pack("Printed", head + "PRINT 'a'\nSELECT 1/0\nGO\nPRINT 'b'\nSELECT 1/0\nGO\nPRINT 'c'\nSELECT 1\n");
    pack("Counted",
         head + "SELECT 1\nDELETE EventLog WHERE 1 = 0\nGO\nSELECT 1\nSELECT 1/0\nGO\nSELECT 1\nSELECT 2\n");
    pack("Open", head + "SELECT 1\nEXEC sp_who\nGO\nDECLARE @x int\nSET @x = 1/0\n");
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    expectAll({
        {{"run", "Quoted"},
         1,
         "",
         "where      batch 2, line 1 (line 6 of the package, empty lines not counted)\n"},
        {{"run", "Printed"},
         1,
         "",
         "where      batch 1, line 2 (line 5 of the package, empty lines not counted)\n"},
        {{"run", "Counted"},
         1,
         "",
         "where      batch 2, line 2 (line 8 of the package, empty lines not counted)\n"},
        {{"run", "Batches"}, 1, "", "batch 2, line 2 (line 8 of the package"},
        {{"run", "Batches"}, 1, "", "statement  SELECT 1/0\n  message    Msg 8134, level 16, state 1\n"},
        {{"run", "Batches"}, 1, "", "batch 1 has run"},
        {{"run", "Batches", "--json"}, 1, "\"packageLine\": 8", "the script failed"},
        {{"exec", "tsEventSummary", "@days = 'x'"}, 1, "", "  message    Msg "},
        {{"run", "Drop", "-p", "DROP TABLE nq2..ZpTscriptExec"}, 0, "", ""},
        {{"run", "NQCleanup"},
         3,
         "",
         "lacks what runs need: [FreeTDS][SQL Server]Invalid object name 'ZpTscriptExec'"},
        {{"journal", "--db", "NQ2"}, 3, "", "Invalid object name 'ZpTscriptExec'"},
        {{"run", "Drop", "-p", "DROP FUNCTION dbo.GetDateTime"}, 3, "", "the run stays open"},
        {purge, 3, "", "GetDateTime"},
        {{"schema", "check", "NQ2"},
         3,
         "missing  ZpTscriptExec\nok       GetDateTime\n",
         "tscript schema install NQ2"},
        {{"schema", "check", "Dorvas", "--json"}, 3, "\"state\": \"missing\"", "missing in Dorvas"},
        {{"schema", "install", "NQ2"}, 2, "", "created in NQ2: ZpTscriptExec. Confirmation is needed"},
        {{"schema", "install", "NQ2", "--yes"}, 0, "ok       ZpTscriptExec\n", ""},
        {{"schema", "install", "Dorvas", "--yes"}, 0, "ok       GetDateTime\n", ""},
        {{"schema", "check", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"run", "Drop", "-p", "ALTER TABLE nq2..ZpTscriptExec DROP COLUMN inputParams"}, 0, "", ""},
        {{"schema", "install", "NQ2", "--yes"},
         3,
         "differs  ZpTscriptExec: it lacks inputParams text",
         "by hand"},
        {purge, 0, "Deleted", ""},
        {{"run", "Drop", "-p", "DROP PROCEDURE tsListNodes"}, 0, "", ""},
        {{"exec", "tsListNodes"},
         3,
         "",
         "lacks what runs need: Could not find stored procedure 'tsListNodes'"},
        {{"run", "Drop", "-p", "DROP PROCEDURE VT_GetSpParams"}, 0, "", ""},
        {{"params", "tsEventSummary"}, 3, "", "tscript doctor names every procedure"},
        {{"run", "Drop", "-p", "DELETE app_plexum WHERE id = 2"}, 0, "", ""},
        {{"run", "SiteInventory"}, 3, "", "lacks a row that runs need: The statement returned no row"},
    });
    support::writeFile(m_temp / "tool", "#!/nowhere/sh\n");
    fs::permissions(m_temp / "tool", fs::perms(0700));
    const std::string program = (fs::path(TSCRIPT_PROGRAM).parent_path() / "sqlcmd").string();
    replaceInFile(store(), program, m_temp / "tool");
    expectAll({{{"exec", "tsListNodes"}, 3, "", "cannot run: Cannot start ["}});
}

TEST_F(Installation, DoctorReportsItsFindings) {
    const std::string password = support::readFile(folder / "password");
    const Words doctor = {"doctor"};
    const Words json = {"doctor", "--json"};
    expectAll(
        {{doctor, 0, "ok       NQ2 schema: ", ""},
         {doctor, 0, "Dorvas query tool: runs a statement", ""},
         {doctor, 0, "NQ2 encryption: login and data by TLSv1.2; certificate verified, valid until 2", ""},
         {json, 0, "\"exitCode\": 0", ""}});
    EXPECT_EQ(run(doctor).output.find("FAILED"), std::string::npos) << run(doctor).output;
    const struct {
        std::string from;
        std::string to;
        std::string output;
    } faults[] = {
        {"\"FreeTDS\"", "\"NoSuchDriver\"", "FAILED   ODBC driver: NoSuchDriver"},
        {"/sqlcmd\"", "/no-sqlcmd\"", "FAILED   sqlcmd: "},
        {"/temp\"", "/no-temp\"", "FAILED   temporary folder: "},
        {"/logs\"", "/registry.toml\"", "skipped  databases: not tried without log folder"},
        {"sDVHOSTNAME", "sOther", "FAILED   host name: "},
        {"[host]", "stray = 1\n[host]", "warning  store content: line "},
        {"strictQueryTool", "strictQueryTools", "warning  strict query tool: off"},
        {"[host]", "[host", "FAILED   store: "},
        {"pNQ2ACCESS", "pOther", "FAILED   NQ2 credentials: the store has no value"},
        {"dZEPHRAHOME", "sOther", "-> Set it: tscript config set Base.dZEPHRAHOME FOLDER"},
        {"/cipher.key\"", "/no.key\"", "FAILED   key: the key file that cipherKeyFile names is missing"},
        {"/cipher.key\"", "/password\"",
         "FAILED   key: the key file is not a regular file of exactly 32 bytes"},
    };
    const std::string intact = support::readFile(store());
    for (const auto& fault : faults) {
        replaceInFile(store(), fault.from, fault.to);
        expectAll({{doctor, fault.output[0] == 'w' ? 0 : 3, fault.output, ""}});
        support::writeFile(store(), intact);
    }
    replaceInFile(store(), "\"FreeTDS\"", "\"NoSuchDriver\"");
    expectAll({{{"credentials", "test", "NQ2"}, 4, "", "Can't open lib 'NoSuchDriver'"},
               {{"credentials", "test", "WFEngine"}, 3, "", "doctor shows the components"}});
    support::writeFile(store(), intact);
    expectCases({{doctor, 3, "FAILED   store: ", ""}, {doctor, 3, "skipped  everything else", ""}});
    fs::permissions(store(), fs::perms(0666));
    expectAll({{doctor, 3, "FAILED   store mode: every user can change", ""}});
    fs::permissions(store(), fs::perms(0600));
    fs::permissions(folder / "cipher.key", fs::perms(0640));
    expectAll({{doctor, 3, "set its mode to 0600", ""}, {doctor, 3, "databases: not tried without key", ""}});
    fs::permissions(folder / "cipher.key", fs::perms(0600));
    pack("Drop", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nDROP TABLE nq2..ZpTscriptExec\n");
    EXPECT_EQ(run({"run", "Drop"}).exitCode, 0);
    expectAll({{doctor, 3, "FAILED   NQ2 schema: ZpTscriptExec (read): Msg 208", ""}});
    expectAll({{{"credentials", "set", "Dorvas", "--user", "sa"}, 0, "", "stored", "wrong\n"},
               {{"credentials", "set", "NQ2", "--user", "sa"}, 0, "", "stored", "wrong\n"},
               {doctor, 5, "-> Set the credentials again", ""},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {json, 4, "\"exitCode\": 4", ""}});
    EXPECT_EQ(run(json).output.find(password.substr(0, password.size() - 1)), std::string::npos);
}

TEST_F(Installation, ShowsAndChangesItsValues) {
    replaceInFile(store(), "TDS_Version=7.4", "PWD=x;TDS_Version=7.4");
    const std::string before = support::readFile(store());
    const std::string longText(1024, 'x');
    expectAll({
        {{"config", "show"}, 0, "Instance001.Database.pACCESS = (secret)\n", ""},
        {{"config", "show"}, 0, "host.odbcAttributes = (secret)\n", ""},
        {{"config", "show", "--key", "Base"}, 0, "Instance001.Base.nPLATTYPE = 1\n", ""},
        {{"config", "show", "--key", "host", "--json"}, 0, "\"value\": \"FreeTDS\"", ""},
        {{"config", "show", "--key", "Bas"}, 2, "", "no key 'Bas'"},
        {{"config", "get", "Dorvase.sDVHOSTNAME"}, 0, "sample\n", ""},
        {{"config", "get", "Instance001.InstalledPackages\\803.sInstallState"}, 0, "Installed\n", ""},
        {{"config", "get", "Base.nPLATTYPE", "--json"}, 0, "\"value\": 1\n", ""},
        {{"config", "get", "Base.sNothing"}, 3, "", "has no value"},
        {{"config", "get", "Database.pACCESS"}, 2, "", "is a secret"},
        {{"config", "get", "Base"}, 2, "", "is not the name of a value"},
        {{"config", "set", "a.b.c.d", "1"}, 2, "", "is not the name of a value"},
        {{"config", "set", "Base.nPLATTYP", "1"}, 2, "", "is not a value of the store"},
        {{"config", "set", "Base.nPLATTYPE", "1x"}, 2, "", "whole number"},
        {{"config", "set", "Base.nPLATTYPE", "2147483648"}, 2, "", "whole number"},
        {{"config", "set", "Base.dBASEHOME", "relative"}, 2, "", "absolute path"},
        {{"config", "set", "Base.sVERSION", "50%"}, 2, "", "written twice"},
        {{"config", "set", "Base.sVERSION", "a\nb"}, 2, "", "control character"},
        {{"config", "set", "Base.sVERSION", longText}, 2, "", "longer than"},
        {{"config", "set", "Base.sVERSION", "\xFF"}, 3, "", "not UTF-8"},
        {{"config", "set", "Database.pACCESS", "ZC1.x"}, 2, "", "is a secret"},
        {{"config", "set", "host.odbcAttributes", "Pwd = x"}, 2, "", "is a secret"},
    });
    EXPECT_EQ(support::readFile(store()), before);
    expectAll({{{"config", "set", "Dorvase.sDVHOSTNAME", "other"}, 0, "", "set Instance001.Dorvase"}});
    std::string wanted = before;
    wanted.replace(wanted.find("\"sample\""), 8, "\"other\"");
    EXPECT_EQ(support::readFile(store()), wanted);
    EXPECT_EQ(modeOf(store()), 0600U);
}

TEST_F(Installation, AsksBeforeDataIsLost) {
    const std::string backup = folder / "backups" / "d.bak";
    const std::string password = support::readFile(folder / "password");
    const Words restore = {"db", "restore", backup, "copy", "--to", folder / "data", "--execute"};
    const Words reset = {"sandbox", "reset", "--dir", folder};
    const auto with = [](Words words, const char* option) {
        words.emplace_back(option);
        return words;
    };
    expectAll({
        {{"credentials", "test", "NQ2"}, 0, "", "the credentials of NQ2 work"},
        {{"credentials", "test", "VTCloud"}, 3, "", "not installed"},
        {{"credentials", "set", "NQ2", "--user", "sa"}, 0, "", "stored", "wrong\n"},
        {{"credentials", "test", "NQ2"}, 5, "", "Login failed"},
        {{"db", "backup", "dorvas", backup}, 0, "Backed-Up", ""},
        {restore, 2, "RESTORE DATABASE copy", "Give --yes", "yes\n"},
        {with(restore, "--no-input"), 2, "", "Confirmation is needed"},
        {with(restore, "--yes"), 0, "RESTORE DATABASE copy", "restored copy"},
        {{"db", "list"}, 0, "copy\n", ""},
        {{"sandbox", "shell", "--dir", folder}, 0, "dorvas", "", "SELECT DB_NAME()\nGO\n"},
        {{"sandbox", "shell", "--dir", folder, "--db", "copy"}, 0, "copy", "", "SELECT DB_NAME()\nGO\n"},
        {reset, 2, "", "Give --yes"},
        {with(reset, "--no-input"), 2, "", "Give --yes"},
    });
    EXPECT_EQ(support::readFile(folder / "password"), password);
    expectAll({{{"sandbox", "reset", "--yes"}, 0, "export", "clearing " + folder.string()},
               {{"run", "SiteInventory"}, 0, "Zürich", ""}});
    EXPECT_EQ(run({"db", "list"}).output.find("copy"), std::string::npos);
    EXPECT_NE(support::readFile(folder / "password"), password);
    EXPECT_TRUE(fs::exists(backup));
    support::writeFile(backup, "no backup");
    expectAll({{with(restore, "--yes"), 1, "", ""},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {{"sandbox", "shell", "--dir", folder}, 4, "", "is not running"},
               {{"sandbox", "reset", "--yes", "--dir", m_temp / "none"}, 3, "", "holds no sample"}});
}

}  // namespace
