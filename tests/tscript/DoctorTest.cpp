// What `tscript doctor` finds.
#include "Installation.h"

namespace {

using support::ProgramResult;

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

}  // namespace
