// A program of another project: includes every exported header and runs a package of a sample installation.
#include <DVUtilities/DBBase.h>
#include <DVUtilities/DVUtilLib.h>
#include <DVUtilities/TScript.h>
#include <DVUtilities/TScriptApi.h>
#include <DVUtilities/TScriptRecords.h>
#include <DVUtilities/commonFunc.h>

#include <cstddef>
#include <cstdio>
#include <type_traits>
#include <utility>

// Statements are given as these types only.
template <typename Sql, typename = void>
struct IsStatement : std::false_type {};
template <typename Sql>
struct IsStatement<Sql, std::void_t<decltype(std::declval<DBBase&>().SetDBValue(std::declval<Sql>()))>>
    : std::true_type {};
static_assert(IsStatement<const char*>::value && IsStatement<char*>::value);
static_assert(IsStatement<const char (&)[9]>::value && IsStatement<unsigned char*>::value);
static_assert(IsStatement<unsigned char (&)[9]>::value && !IsStatement<const unsigned char*>::value);
static_assert(!IsStatement<void*>::value && !IsStatement<std::nullptr_t>::value && !IsStatement<int>::value);

int main() {
    std::string error;
    char instance[1024];
    std::string machine;
    TScript script;
    DBBase db(false);
    int events = 0;
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    std::string procedure = "tsEventSummary";
    std::string database = "Dorvas";
    const bool done = GetInstanceName(instance) && isPlatformDV(instance, error) &&
                      DVUtilLib("consumer", false).GetMachineName(machine) &&
                      script.initialize("PurgeEvents") && script.setSQLFile(nullptr) &&
                      script.executeSQLFile({"3650", "1"}, nullptr) &&
                      db.GetAccountInfo(machine.c_str(), instance, script.getLogFile(), database.c_str()) &&
                      db.GetDBValueInt("SELECT COUNT(*) FROM EventLog", events) && events > 0 &&
                      records.open("Dorvas") && records.listScripts("PurgeEvents", 0, 1, entries) &&
                      entries.size() == 1 && TS_IsTscriptSP(&procedure, &database);
    std::puts(script.getOutput());
    return done ? 0 : 1;
}
