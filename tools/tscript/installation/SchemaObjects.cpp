#include "installation/SchemaObjects.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

#include "console/Outcome.h"
#include "installation/ServerQuery.h"
#include "system/ScratchFile.h"

namespace {

using Columns = std::vector<std::string>;  // each "NAME KIND"

// Data types by kind. A column may have any type of its kind.
struct TypeKind {
    const char* kind;
    std::vector<std::string_view> types;
};
const TypeKind kKinds[] = {
    {"number", {"int", "bigint", "smallint", "tinyint"}},
    {"text", {"nvarchar", "varchar", "nchar", "char", "ntext", "text"}},
    {"time", {"datetime", "datetime2", "smalldatetime"}},
};

struct Table {
    const char* name;
    Columns columns;
    bool inOrder;  // rows are inserted by position
};
const Table kTables[] = {
    {"ZpTscripts",
     {"id number", "type number", "name text", "auditLevel number", "creationTime time", "usage text"},
     /*inOrder=*/true},
    {"ZpTscriptExec",
     {"id number", "tsId number", "type number", "name text", "timeStart time", "timeEnd time",
      "status number", "inputParams text", "userId number"},
     /*inOrder=*/false},
};

struct Routine {
    const char* name;
    const char* proof;  // a statement that returns a number above 0 if the routine works
};
constexpr Routine kRoutines[] = {
    {"GetDateTime", "SELECT CASE WHEN dbo.GetDateTime(1704067261) = '20240101 00:01:01' THEN 1 ELSE 0 END"},
    {"VT_GetSpParams", nullptr},
};

// Returns whether the object exists; false for one that the login may not see.
bool exists(DBBase& db, const std::string& name) {
    int found = 0;
    if (!db.GetDBValueInt(("SELECT CASE WHEN OBJECT_ID('" + name + "') IS NULL THEN 0 ELSE 1 END").c_str(),
                          found))
        throw Failure(ExitCode::kConnection, withCauses("the database cannot be asked for its objects", db));
    return found != 0;
}

std::string kindOf(std::string_view type) {
    for (const TypeKind& kind : kKinds)
        if (std::find(kind.types.begin(), kind.types.end(), type) != kind.types.end()) return kind.kind;
    return std::string(type);
}

Columns columnsOf(DBBase& db, const char* table) {
    std::vector<std::string> rows;
    const std::string sql = std::string(
                                "SELECT COLUMN_NAME + ' ' + DATA_TYPE FROM INFORMATION_SCHEMA.COLUMNS "
                                "WHERE TABLE_NAME = '") +
                            table + "' ORDER BY ORDINAL_POSITION";
    if (!db.GetDBValueList(sql.c_str(), rows, 1))
        throw Failure(ExitCode::kConnection,
                      withCauses(std::string("the columns of ") + table + " cannot be read", db));
    Columns columns;
    for (const std::string& row : rows) {
        const std::size_t blank = row.find(' ');
        columns.push_back(row.substr(0, blank) + " " + kindOf(row.substr(blank + 1)));
    }
    return columns;
}

std::string listed(const Columns& columns) {
    std::string text;
    for (const std::string& column : columns) text += (text.empty() ? "" : ", ") + column;
    return text;
}

SchemaObject inspectTable(DBBase& db, const Table& table) {
    if (!exists(db, table.name)) return {table.name, ObjectState::kMissing, {}};
    const Columns found = columnsOf(db, table.name);
    if (table.inOrder && found != table.columns)
        return {table.name, ObjectState::kDifferent,
                "its columns are " + listed(found) + "; runs need exactly " + listed(table.columns)};
    Columns missing;
    for (const std::string& column : table.columns)
        if (std::find(found.begin(), found.end(), column) == found.end()) missing.push_back(column);
    if (missing.empty()) return {table.name, ObjectState::kGood, {}};
    return {table.name, ObjectState::kDifferent, "it lacks " + listed(missing)};
}

SchemaObject inspectRoutine(DBBase& db, const Routine& routine) {
    if (!exists(db, std::string("dbo.") + routine.name)) return {routine.name, ObjectState::kMissing, {}};
    int works = 1;
    if (routine.proof != nullptr && (!db.GetDBValueInt(routine.proof, works) || works == 0))
        return {routine.name, ObjectState::kDifferent, "it does not return the time for seconds since 1970"};
    return {routine.name, ObjectState::kGood, {}};
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (text.empty()) throw Failure(ExitCode::kInstallation, file.string() + " cannot be read");
    return text;
}

}  // namespace

const char* nameOf(ObjectState state) {
    constexpr const char* kNames[] = {"ok", "missing", "differs"};
    return kNames[static_cast<int>(state)];
}

std::vector<SchemaObject> inspectSchema(DBBase& db) {
    std::vector<SchemaObject> objects;
    for (const Table& table : kTables) objects.push_back(inspectTable(db, table));
    for (const Routine& routine : kRoutines) objects.push_back(inspectRoutine(db, routine));
    return objects;
}

void createMissing(DBBase& db, const std::string& database, const std::vector<SchemaObject>& objects,
                   const std::filesystem::path& folder) {
    constexpr int kNoOptions = 0;
    std::string statements;
    for (const SchemaObject& object : objects)
        if (object.state == ObjectState::kMissing) statements += contentOf(folder / (object.name + ".sql"));
    const ScratchFile file;
    const ScratchFile output;
    file.write(statements);
    if (!db.RunFileQuery_TS(file.path().c_str(), output.path().c_str(), database.c_str(), kNoOptions))
        throw Failure(ExitCode::kInstallation, "the objects cannot be created:\n" + output.content(),
                      "What was created before the message stays; run the command again.");
}
