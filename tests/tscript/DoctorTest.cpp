// What `tscript doctor` finds.
#include "Faults.h"

namespace {

using support::ProgramResult;

TEST_F(Installation, ReportsFaultsOfAnInstallation) {
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    const fs::path package = folder / "Scripts" / "PurgeEvents.sql";
    const std::string intact = support::readFile(package);
    support::writeFile(package, intact.substr(0, intact.size() / 2));
    expectAll({{purge, 3, "", "record"}});
    support::writeFile(package, "#START_SCRIPT#\nSELECT 1\n");
    expectAll({{purge, 3, "", "Line 1 cannot be decrypted: the text is not an encrypted record"}});
    support::writeFile(package, intact);

    fs::permissions(folder / "cipher.key", fs::perms(0644));
    expectAll({{purge, 3, "", "Line 1 cannot be decrypted: users other than its owner"},
               {purge, 3, "", "tscript doctor checks it"}});
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
    packBody("purgeEVENTS", "PRINT 'x'\n");
    expectAll(
        {{doctor, 0, "warning  package purgeEVENTS: has the name of PurgeEvents in other letters", ""}});
    fs::remove(folder / "Scripts" / "purgeEVENTS.sql");
    const std::tuple<std::string, std::string, std::string> faults[] = {
        {"\"FreeTDS\"", "\"NoSuchDriver\"", "FAILED   ODBC driver: NoSuchDriver"},
        {"/sqlcmd\"", "/no-sqlcmd\"", "FAILED   sqlcmd: "},
        {"/temp\"", "/no-temp\"", "FAILED   temporary folder: "},
        {"/logs\"", "/registry.toml\"", "skipped  databases: not tried without log folder"},
        {"sDVHOSTNAME", "sOther", "FAILED   host name: "},
        {"[host]", "stray = 1\n[host]", "warning  store content: line "},
        {"strictQueryTool", "strictQueryTools", "warning  strict query tool: off"},
        {"strictQueryTool = 1", "strictQueryTool = 7",
         "FAILED   store value: host.strictQueryTool is '7', not a whole number from 0 to 1"},
        {"[host]", "[host]\nrequireSael = 1",
         "warning  store value: host.requireSael is no setting and has no effect\n"
         "         -> Did you mean host.requireSeal?"},
        {"[host]", "[host]\ndebugLogLevel = 'all'",
         "FAILED   store value: host.debugLogLevel is 'all', not a whole number from 0 to 3"},
        {"[host]", "[host", "FAILED   store: "},
        {"pNQ2ACCESS", "pOther", "FAILED   NQ2 credentials: the store has no value"},
        {"dZEPHRAHOME", "sOther", "-> Set it: tscript config set Base.dZEPHRAHOME FOLDER"},
        {"cipherKeyFile  = \"", "cipherKeyFile = \"/proc/sys/vm/compact_memory\"  # \"",
         "-> Run tscript as the user of the key file"},
        {"/cipher.key\"", "/no.key\"", "FAILED   key: the key file that cipherKeyFile names is missing"},
        {"/cipher.key\"", "/password\"",
         "FAILED   key: the key file is not a regular file of exactly 32 bytes"},
    };
    const std::string intact = support::readFile(store());
    for (const auto& [from, to, output] : faults) {
        replaceInFile(store(), from, to);
        expectAll({{doctor, output[0] == 'w' ? 0 : 3, output, ""}});
        support::writeFile(store(), intact);
    }
    replaceInFile(store(), "\"FreeTDS\"", "\"NoSuchDriver\"");
    expectAll({{{"credentials", "test", "NQ2"}, 4, "", "sqlcmd connects with the same login"}});
    replaceInFile(store(), "sqlcmd = \"", "sqlcmd = \"/bin/false\"  # \"");
    expectAll(
        {{{"credentials", "test", "NQ2"}, 4, "", "The query tool ended with exit code 1.\nIs it running"},
         {{"credentials", "test", "NQ2"}, 4, "", "Can't open lib 'NoSuchDriver'"},
         {{"credentials", "test", "WFEngine"}, 3, "", "doctor shows the components"}});
    support::writeFile(store(), intact);
    expectCases({{doctor, 3, "FAILED   store: ", ""}, {doctor, 3, "skipped  everything else", ""}});
    fs::permissions(store(), fs::perms(0666));
    expectAll({{doctor, 3, "FAILED   store mode: every user can change", ""}});
    fs::permissions(store(), fs::perms(0600));
    fs::permissions(folder / "cipher.key", fs::perms(0640));
    expectAll(
        {{doctor, 3, "set its mode to 0600", ""},
         {doctor, 3, "databases: not tried without key", ""},
         {{"credentials", "test", "NQ2"}, 3, "", "users other than its owner can access the key file"}});
    fs::permissions(folder / "cipher.key", fs::perms(0600));
    packBody("Drop", "DROP TABLE nq2..ZpTscriptExec\n");
    EXPECT_EQ(run({"run", "Drop"}).exitCode, 0);
    expectAll({{doctor, 3, "FAILED   NQ2 schema: ZpTscriptExec (read): Msg 208", ""}});
    expectAll({{{"credentials", "set", "Dorvas", "--user", "sa"}, 0, "", "stored", "wrong\n"},
               {{"credentials", "set", "NQ2", "--user", "sa"}, 0, "", "stored", "wrong\n"},
               {doctor, 5, "-> Set the credentials again", ""},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {json, 4, "\"exitCode\": 4", ""}});
    EXPECT_EQ(run(json).output.find(password.substr(0, password.size() - 1)), std::string::npos);
}

// Objects of NQ2 are dropped by a script that runs in Dorvas.
TEST_F(Faults, DoctorFindsMissingObjectsOfADatabase) {
    packBody("Break",
             "USE nq2\nGO\nDROP FUNCTION dbo.GetDateTime\nDROP PROCEDURE VT_GetSpParams\n"
             "DROP TABLE ZpTscriptExec\nINSERT ZpTscripts VALUES (2, 'tsLost', 0, GETDATE(), '')\n"
             "ALTER TABLE ZpTscripts ADD more int NULL\n"
             "DELETE NQSetting WHERE SettingName = 'NQ2_DATABASE_ID'\n");
    ASSERT_EQ(run({"run", "Break"}).exitCode, 0);
    const std::string found = run({"doctor"}).output;
    for (const char* finding :
         {"dbo.GetDateTime (call): Msg 4121", "ZpTscripts (insert): Msg 213", "ZpTscriptExec (read): Msg 208",
          "VT_GetSpParams (call): Msg 2812", "NQSetting (read NQ2_DATABASE_ID): the row is missing",
          "the catalogue lists tsLost, but the stored procedure is missing"})
        EXPECT_NE(found.find(std::string("FAILED   NQ2 schema: ") + finding), std::string::npos) << found;
    EXPECT_NE(found.find("ok       Dorvas schema: "), std::string::npos) << found;
}

// A tool that starts, but does not do what a run needs.
TEST_F(Faults, DoctorRunsTheQueryTool) {
    const auto rows = [this] { return run({"catalogue"}).output + run({"journal"}).output; };
    const std::string before = rows();
    expectAll({{{"doctor"}, 0, "ok       NQ2 query tool: ", ""}});
    EXPECT_EQ(rows(), before);
    packBody("Lose", "DROP DATABASE nq2\n");
    ASSERT_EQ(run({"run", "Lose"}).exitCode, 0);
    expectAll({{{"doctor"}, 5, "-> Create or restore the database", ""}});

    const fs::path tool = m_temp / "sqlcmd";
    support::writeFile(tool, "");
    fs::permissions(tool, fs::perms(0700));
    const std::string path = run({"config", "get", "host.programs.sqlcmd"}).output;
    replaceInFile(store(), path.substr(0, path.find('\n')), tool);
    const std::pair<const char*, const char*> faults[] = {
        {"exit 0", "succeeds without the statement's result; its output is empty"},
        {"exit 1", "fails on a statement"},
        {"echo Login failed", "succeeds without"},
        {"test \"$1\" = -?", "fails on a statement"},
    };
    for (const auto& [command, finding] : faults) {
        support::writeFile(tool, std::string("#!/bin/sh\n") + command + "\n");
        expectAll({{{"doctor"},
                    3,
                    std::string("FAILED   Dorvas query tool: ") + tool.string() + " " + finding,
                    ""}});
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
    // Another program that succeeds is not believed; a tool that writes an empty output is.
    support::writeFile(tool, "#!/bin/sh\nexit 0\n");
    const std::string silent = tool.string() + " ended with exit code 0, but wrote no output";
    expectAll({{{"run", "SiteInventory"}, 3, "", silent},
               {{"exec", "tsEventSummary", "--json"}, 3, "\"exitCode\": 3", silent},
               {{"db", "backup", "dorvas", folder / "backups" / "x.bak"}, 3, "", silent}});
    support::writeFile(tool, "#!/bin/sh\nexit 4\n");
    expectAll({{{"run", "SiteInventory"}, 1, "", "subject    " + tool.string() + "\n"}});
    support::writeFile(tool, "#!/bin/sh\nwhile [ \"$1\" != -o ]; do shift; done\n: >\"$2\"\n");
    support::writeFile(folder / "Scripts" / "Empty.sql", "");
    expectAll({{{"run", "SiteInventory"}, 0, "Succeeded", ""},
               {{"run", "Empty"}, 3, "", "The package has no record."}});
}

TEST_F(Faults, DoctorFindsFaultsOfFoldersAndLimits) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their runtimes open descriptors
    for (const char* few : {"6", "7", "10"}) {
        const std::string errors = runAfter(std::string("ulimit -n ") + few, {"run", "SiteInventory"}).errors;
        EXPECT_NE(errors.find("raise it (ulimit -a)"), std::string::npos) << errors;
    }
#endif
    std::vector<std::pair<std::string, const char*>> faults = {
        {"ulimit -f 64", "FAILED   temporary folder: "},  // no file of 64 KiB, as on a full disk
        {"ulimit -n 40", "FAILED   file descriptors: "},
        {"export TMPDIR=/nowhere", "FAILED   TMPDIR: /nowhere: No such file"},
        {"chmod o+w " + inQuotes(folder / "Scripts"), "FAILED   package folder mode: every user"},
    };
    if (geteuid() == 0)
        faults.push_back({"chown 12345 " + inQuotes(folder / "logs"), "FAILED   log folder owner: "});
    for (const auto& [command, finding] : faults) {
        const ProgramResult result = runAfter(command, {"doctor"});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_NE(result.output.find(finding), std::string::npos) << result.output << result.errors;
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

TEST_F(Faults, DoctorOpensEveryPackageAndNamesOddComponents) {
    const std::string end = "\n#START_SCRIPT#\nPRINT 'x'\n";
    pack("OtherSite", "#START_OPTIONS#\nDatabase Name:Dorvas\nPlexum ID:27" + end);
    pack("OtherGuid", "#START_OPTIONS#\nDatabase Name:NQ2\nGUID:00000000-0000-0000-0000-000000000000" + end);
    pack("NoComponent", "#START_OPTIONS#\nDatabase Name:VTCloud" + end);
    const fs::path scripts = folder / "Scripts";
    const std::string whole = support::readFile(scripts / "PurgeEvents.sql");
    support::writeFile(scripts / "Cut.sql", whole.substr(0, whole.size() / 2));
    support::writeFile(scripts / "Empty.sql", "");
    support::writeFile(scripts / "Plain.sql", "SELECT 1\n");
    fs::create_directory(scripts / "Folder.sql");
    const std::string found = run({"doctor"}).output;
    for (const char* finding :
         {"OtherSite: is made for site 27; this is site 26", "OtherGuid: is made for the NQ2 database 0000",
          "NoComponent: is made for VTCloud, whose component", "Cut: line ", "Empty: is empty",
          "Plain: line 1: ", "Folder: "})
        EXPECT_NE(found.find(std::string("FAILED   package ") + finding), std::string::npos) << found;
    EXPECT_NE(found.find("ok       packages: 5 "), std::string::npos) << found;

    replaceInFile(store(), "= \"127.0.0.1,", "= \"127.0.0.1, ");
    replaceInFile(store(), "nPLATTYPE      = 1", "nPLATTYPE      = 5");
    expectAll({{{"doctor"}, 3, "FAILED   Dorvas server: Database.sINSTANCE", ""}});
    replaceInFile(store(), "nPLATTYPE      = 5", "nPLATTYPE      = 8");
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = \"soon\"");
    replaceInFile(store(), "nSQLAuthType     = 0", "nSQLAuthType     = 7");
    expectAll({{{"doctor"}, 3, "FAILED   store value: host.loginTimeout is 'soon', not a whole number", ""},
               {{"doctor"}, 3, "FAILED   store value: Database.nSQLAuthType is '7'", ""}});
    replaceInFile(store(), "\"Installed\"", "\"installed\"");
    expectAll({{{"doctor"}, 3, "FAILED   platform type: Base.nPLATTYPE is 8", ""},
               {{"doctor"}, 3, "FAILED   component of NQ2: ", ""}});

    fs::remove_all(scripts);
    fs::create_directory(scripts);
    for (const char* name : {"One.sql", "Two.sql"}) support::writeFile(scripts / name, "SELECT 1\n");
    expectAll({{{"doctor"}, 3, "FAILED   packages: none of 2 can be decrypted", ""}});
}

}  // namespace
