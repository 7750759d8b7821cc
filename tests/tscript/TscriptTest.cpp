// Command line, databases, stores, values and the sample installation.
#include "Installation.h"

namespace {

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
        {{"--store", "", "run", "X"}, 2, "", "--store names no file"},
        {{"--store", temp / "bad.toml", "run", "X"}, 3, "", "line 2"},
        {{"pack", temp / "bad.toml"}, 3, "", "/nowhere"},
        {{"credentials", "set", "Dorvas"}, 2, "", "--user is required"},
        {{"credentials", "set", "Nothing", "--user", "u"}, 2, "", "Dorvas, NQ2"},
        {{"sandbox", "up", "--dir", temp.path()}, 3, "", "is not empty"},
        {{"sandbox", "up", "--port", "70000"}, 2, "", "70000"},
        {{"sandbox", "reset", "--yes", "--dir", ""}, 2, "", "value is empty\nSee tscript sandbox reset -"},
        {{"pack", temp / "bad.toml", "--sign", ""}, 2, "", "--sign: the value is empty"},
        {{"pack", temp / "bad.toml", "--package-version", "-1"}, 2, "", "'-1' is not a number from 1 to 18"},
        {{"journal", "close", "1", "--stale", "nan"}, 2, "", "'nan' is not a number from 0 to 1000000"},
        {{"journal", "show", "0x1"}, 2, "", "ID: '0x1' is not a number"},
        {{"sandbox", "down", "--dir", temp / "none"}, 0, "", "not running"},
    });
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
        {{"db", "last-backup", "no"}, 2, "", "the server has no database 'no'"},
        {{"db", "last-backup", "--nagios"}, 3, "BACKUP UNKNOWN - --nagios needs the age", ""},
        {{"db", "last-backup", "--nagios", "--older", "1d"}, 3, "BACKUP UNKNOWN - ", ""},
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
        {{"db", "restore", backup, ""}, 2, "", "DB: the value is empty"},
        {{"db", "restore", backup, std::string(129, 'x')}, 2, "", "the database name"},
        {{"db", "restore", "/x\ny.bak", "copy"}, 2, "", "the backup file must not"},
        {{"db", "restore", "x.bak", "copy"}, 2, "", "'x.bak' is not absolute"},
        {{"db", "last-backup", "x'y"}, 2, "", "the database name must not"},
        {{"db", "backup", "dorvas", "relative.bak"}, 2, "", "is not absolute"},
        {{"sandbox", "shell"}, 0, "", "", "CREATE DATABASE [two words\n|]\n"},
        {{"db", "list"}, 0, "\ntwo words |\n", ""},
        {{"db", "last-backup", "--older-than", "7d", "--nagios"}, 2, ": nq2 never, two words _ never |", ""},
        {{"db", "backup", "x'; DROP TABLE y --", backup}, 2, "", "must not"},
        {{"db", "backup", "nothing", backup}, 1, "", "Failed to execute DB query"},
        {{"db", "backup", "dorvas", "/nowhere/at/all.bak"}, 1, "", "Failed to execute DB query"},
        {{"db", "list", "--db", "VTCloud"}, 3, "", "VtCloud is not installed"},
    });
    EXPECT_EQ(run({"db", "list"}).output.find("copy"), std::string::npos);

    // A row whose entry in an index has another value.
    const Words test = {"db", "restore", backup, "copy", "--test"};
    packBody("Index",
             "CREATE TABLE t (x varchar(40), UNIQUE (x))\nINSERT t VALUES ('value to be damaged')\n");
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
    packBody("Echo", "PRINT '<%s>'\n");
    const std::string all = m_temp / "stores" / "*.toml";
    const std::string good = m_temp / "stores" / "[ac].toml";
    fs::create_directory(m_temp / "stores");
    for (const char* name : {"a.toml", "b.toml", "c.toml"}) fs::copy_file(store(), m_temp / "stores" / name);
    replaceInFile(m_temp / "stores" / "b.toml", "[host]", "[host");
    expectCases({
        {{"each", "--stores", good, "--", "run", "Echo", "-p", "[x, --json]"}, 0, "a.toml\n<[x, --json]", ""},
        {{"each", "--stores", all, "--", "run", "Echo", "-p", ""}, 1, "c.toml\tnot run\t-\t-", "[2/3] b.t"},
        {{"each", "--stores", all, "--stores", good, "--jobs", "3", "--keep-going", "--", "db", "list"},
         1,
         "\nb.toml\tfailed\t3\t",
         "/3] b.toml: failed (exit code 3), "},
        {{"each", "--stores", all, "--json", "--", "db", "list"}, 1, "\"notRun\": 1", ""},
        {{"each", "--stores", good, "--output-dir", m_temp / "out", "--", "db", "list"}, 0, "a.toml\tok", ""},
        {{"each", "--stores", good, "--output-dir", "/proc", "--", "db", "list"}, 3, "", "a.toml.out cannot"},
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
               {{"sandbox", "up", "--dir", folder, "--port", "1"}, 2, "", "is running on port "},
               {{"sandbox", "status", "--dir", folder}, 0, "running on", ""}});
    EXPECT_NE(journal("SiteInventory").find("1||"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(folder / "temp"));
    const support::TempDir temp;
    const fs::path foreign = temp / "foreign";
    fs::create_directory(foreign);
    if (chown(foreign.c_str(), 65534, 65534) == 0)  // which root alone may do
        expectAll({{{"sandbox", "up", "--dir", foreign}, 3, "", "belongs to another user"}});
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
        {{"config", "set", "host.requireSeal", "2"}, 2, "", "host.requireSeal is a whole number from 0 to 1"},
        {{"config", "set", "host.encrypt", "verfy"}, 2, "", "host.encrypt is verify, require or off"},
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
