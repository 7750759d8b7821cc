// DBBase: settings, direct connection, query tool, server maintenance.
#include <DVUtilities/DBBase.h>

#include <cwchar>
#include <fstream>
#include <string>
#include <vector>

#include "Check.h"

namespace {

const unsigned char* asBytes(const char* sql) {
    return reinterpret_cast<const unsigned char*>(sql);
}

void checkSettings(const Site& site, Checks& checks) {
    DBBase db(false);
    CHECK(db.GetAccountInfo("vm", "Instance001", site.logFile.c_str(), "dorvas"));
    CHECK(contains(db.getErrorMsg(), "Successfully connected to database [dorvas]"));
    std::string error;
    CHECK(db.GetDBUser("Instance001", "Dorvas", error));
    CHECK(db.DBTest());
    db.DBLogLine("the consumer's own line", 0);
    CHECK(!DBBase(false).GetAccountInfo("vm", "Instance001", site.logFile.c_str(), "nosuch"));
}

void checkConnection(DBBase& db, Checks& checks) {
    char text[256];
    wchar_t wide[256];
    std::vector<std::string> rows;
    CHECK(db.Open(nullptr, nullptr, nullptr));
    CHECK(db.ExecuteQuery("SELECT 1") && db.ExecuteQuery(asBytes("SELECT 1")));
    CHECK(db.GetValue("SELECT 41 + 1", nullptr, nullptr) == 42);
    CHECK(db.GetValue(asBytes("SELECT 'text'"), text, nullptr) == 1 && std::string(text) == "text");
    CHECK(db.GetValue("SELECT 'a', 'b'", rows, 2) && db.GetValue(asBytes("SELECT 'c', NULL"), rows, 2));
    CHECK(rows == (std::vector<std::string>{"a\x12"
                                            "b",
                                            "c\x12"}));
    CHECK(db.Close() && db.Connect(nullptr, nullptr, nullptr) && db.Close());
    CHECK(db.GetDBValueStr("SELECT 'plain'", text) && db.GetDBValueStr(asBytes("SELECT 'plain'"), text));
    CHECK(db.GetDBValueStr("SELECT N'Zürich'", wide) && std::wcslen(wide) == 6);
    CHECK(db.GetDBValueStr(asBytes("SELECT 'w'"), wide) && wide[0] == L'w');
}

void checkGetters(DBBase& db, Checks& checks) {
    int number = 0;
    CHECK(db.SetDBValue("SELECT 1") && db.SetDBValue(asBytes("SELECT 1")) && !db.SetDBValue("SELECT FROM"));
    CHECK(db.GetDBValueInt("SELECT 7", number) && number == 7);
    CHECK(!db.GetDBValueInt(asBytes("SELECT -1"), number) && number == -1);
    std::vector<std::string> rows;
    CHECK(db.GetDBValueList("SELECT 1, 2", rows, 2) && rows.size() == 1);
    CHECK(!db.GetDBValueList(asBytes("SELECT * FROM NoSuchTable"), rows, 2));
    std::vector<int> ints;
    CHECK(db.GetDBValueIntList("SELECT 3 UNION ALL SELECT 4", ints) && ints.size() == 2);
    CHECK(db.GetDBValueIntList(asBytes("SELECT * FROM NoSuchTable"), ints) && ints.empty());
    std::vector<IdId_t> pairs;
    CHECK(db.GetDBValueIntIntList("SELECT 5, 6", pairs) && pairs.at(0).id2 == 6);
    CHECK(db.GetDBValueIntIntList(asBytes("SELECT 5, 6"), pairs));
    std::vector<IdNameItem_t> names;
    CHECK(db.GetDBValueIdName("SELECT 1, 'O''Brien'", names) && names.at(0).name == "O''Brien");
    CHECK(db.GetDBValueIdName(asBytes("SELECT 1, 'x'"), names));
    std::vector<IdIdName_t> triples;
    CHECK(db.GetDBValueIdIdNameList("SELECT 1, 2, 'three'", triples) && triples.at(0).name == "three");
    CHECK(db.GetDBValueIdIdNameList(asBytes("SELECT 1, 2, 'three'"), triples));
}

void checkTexts(DBBase& db, Checks& checks) {
    char** fields = nullptr;
    db.parseRecord(
        "12\x12\x12"
        "abc",
        fields, 2);
    CHECK(std::string(fields[0]) == "12" && std::string(fields[1]) == "abc");
    db.cleanupRecord(fields, 2);
    CHECK(fields == nullptr);
    wchar_t** wideFields = nullptr;
    db.parseRecord(L"1\x12x", wideFields, 2);
    CHECK(std::wstring(wideFields[1]) == L"x");
    db.cleanupRecord(wideFields, 2);
    char quoted[32] = "O'Brien";
    db.fixTheString(quoted);
    std::string text = "it's 'so'";
    db.fixTheString(text);
    CHECK(std::string(quoted) == "O''Brien" && text == "it''s ''so''");
    char replaced[32] = "a-b-c";
    db.ReplaceString(replaced, "-", "+");
    CHECK(std::string(replaced) == "a+b+c");
}

void checkQueryTool(DBBase& db, const Site& site, Checks& checks) {
    const std::string sql = site.folder + "/consumer.sql";
    const std::string output = site.folder + "/consumer.out";
    std::ofstream(sql) << "SELECT 'one' AS a, 'two' AS b\nGO\n";
    db.getSQLPath("sqlcmd");
    std::string temporary;
    db.getTempFileName(temporary);
    CHECK(contains(temporary, "/sqlFile_"));
    CHECK(db.StartProcess("/bin/true now", 0xFFFFFFFFU) && !db.StartProcess("/bin/false now", 0xFFFFFFFFU));
    CHECK(db.RunFileQuery(sql.c_str(), output.c_str(), "dorvas", true, false));
    CHECK(db.RunFileQuery(sql.c_str(), output.c_str(), "dorvas", false, false));
    CHECK(db.RunFileQuery_TS(sql.c_str(), output.c_str(), "dorvas", 0));
    CHECK(db.RunStringQuery_TS("SELECT 1", output.c_str(), nullptr, 2));
    CHECK(!db.RunStringQuery_TS("SELECT * FROM NoSuchTable", output.c_str(), nullptr, 0));
    CHECK(db.generateCSVOutput(sql.c_str(), output.c_str(), "dorvas", nullptr));
    CHECK(db.RunStringQuery("SELECT 'one', 'two'", output.c_str(), nullptr));
    std::vector<std::string> rows;
    std::string path = output;
    CHECK(db.parseOutputFile(path.data(), rows, 2) && rows == std::vector<std::string>{"one\x12two"});
    CHECK(!db.createSQLFileAndExecute("", "", "") && !db.createSQLFileAndGenerateCSVOutput("", "", "", ""));
}

void checkMaintenance(const Site& site, Checks& checks) {
    DBBase db(true);
    db.setProductTypeZephra(1);
    db.SetAccountInfo(site.server.c_str(), site.user.c_str(), site.password.c_str(), site.logFile.c_str());
    CHECK(db.getDBList().size() >= 2);
    CHECK(db.backUpDB("consumer.bak", site.folder.c_str(), "nq2"));
    CHECK(std::string(db.getErrorMsg()) == "Backed-Up the Database [nq2] as consumer.bak.");
    char days[64];
    char date[64];
    CHECK(db.getLastBackUpInfo("nq2", days, date) && std::string(days) == "0");
    CHECK(std::stoi(db.checkSQLServerProductVersion()) > 0);
    const std::string backup = site.folder + "/consumer.bak";
    CHECK(!db.restoreDB(backup.c_str(), "/data/", "copy"));
    CHECK(contains(db.getErrorMsg(), "RESTORE DATABASE copy FROM DISK = '"));

    std::string error;
    std::vector<std::string> names;
    CHECK(GetDatabaseList(site.server.c_str(), site.user.c_str(), site.password.c_str(), site.logFile.c_str(),
                          error, names));
    CHECK(names.size() >= 2 && error.empty());
    CHECK(!RestoreDatabase(backup.c_str(), "/data/", "copy", site.server.c_str(), site.user.c_str(),
                           site.password.c_str(), site.logFile.c_str(), error));
    CHECK(contains(error, " WITH RECOVERY, REPLACE,  MOVE '"));
}

}  // namespace

void checkDatabase(const Site& site, Checks& checks) {
    checkSettings(site, checks);
    DBBase db(false);
    CHECK(db.GetAccountInfo("vm", "Instance001", site.logFile.c_str(), nullptr));
    checkConnection(db, checks);
    checkGetters(db, checks);
    checkTexts(db, checks);
    checkQueryTool(db, site, checks);
    checkMaintenance(site, checks);
}
