// The system's views, each a query over a database's catalogue.
#include <algorithm>

#include "Catalogue.h"
#include "Lexer.h"
#include "Text.h"

namespace tsql {
namespace {

const SqlType kName = nvarcharType(128);
const SqlType kInt = simpleType(TypeId::Int);
const SqlType kBit = simpleType(TypeId::Bit);
const SqlType kSmall = simpleType(TypeId::SmallInt);
const SqlType kTiny = simpleType(TypeId::TinyInt);
const SqlType kDate = simpleType(TypeId::DateTime);
const SqlType kText = nvarcharType(SqlType::kMax);
const SqlType kKind{TypeId::Char, 2, 0, 0};
const SqlType kWord = varcharType(30);

// In `query`, $o and $c are the tables of the catalogue, $d the database's name, $L the list of databases.
// Its columns are the view's, in their order.
struct View {
    std::string_view schema;
    std::string_view name;
    std::string_view query;
    std::vector<TableColumn> columns;
};

#define TYPE_FACTS \
    "ts_type_name(c.type), ts_type_length(c.type), ts_type_precision(c.type), ts_type_scale(c.type)"

const std::vector<View>& views() {
    static const std::vector<View> table = {
        {"sys",
         "databases",
         "SELECT name, id, 0, 'ONLINE', 0, 150 FROM $L",
         {{"name", kName},
          {"database_id", kInt},
          {"state", kTiny},
          {"state_desc", kName},
          {"is_read_only", kBit},
          {"compatibility_level", kTiny}}},
        {"",
         "sysdatabases",
         "SELECT name, id, 0 FROM $L",
         {{"name", kName}, {"dbid", kSmall}, {"status", kInt}}},
        {"",
         "sysobjects",
         "SELECT name, id, type, type, 1, parent, created FROM $o WHERE type <> 'IX'",
         {{"name", kName},
          {"id", kInt},
          {"xtype", kKind},
          {"type", kKind},
          {"uid", kSmall},
          {"parent_obj", kInt},
          {"crdate", kDate}}},
        {"sys",
         "objects",
         "SELECT name, id, 1, parent, type, CASE type WHEN 'U' THEN 'USER_TABLE' WHEN 'P' THEN "
         "'SQL_STORED_PROCEDURE' "
         "WHEN 'V' THEN 'VIEW' WHEN 'FN' THEN 'SQL_SCALAR_FUNCTION' WHEN 'IF' THEN "
         "'SQL_INLINE_TABLE_VALUED_FUNCTION' WHEN 'PK' THEN 'PRIMARY_KEY_CONSTRAINT' WHEN 'UQ' THEN "
         "'UNIQUE_CONSTRAINT' WHEN 'F' THEN 'FOREIGN_KEY_CONSTRAINT' ELSE 'CHECK_CONSTRAINT' END, created "
         "FROM $o WHERE type <> 'IX'",
         {{"name", kName},
          {"object_id", kInt},
          {"schema_id", kInt},
          {"parent_object_id", kInt},
          {"type", kKind},
          {"type_desc", kName},
          {"create_date", kDate}}},
        {"sys",
         "tables",
         "SELECT name, id, 1, type, created FROM $o WHERE type = 'U'",
         {{"name", kName},
          {"object_id", kInt},
          {"schema_id", kInt},
          {"type", kKind},
          {"create_date", kDate}}},
        {"sys",
         "views",
         "SELECT name, id, 1, type, created FROM $o WHERE type = 'V'",
         {{"name", kName},
          {"object_id", kInt},
          {"schema_id", kInt},
          {"type", kKind},
          {"create_date", kDate}}},
        {"sys",
         "procedures",
         "SELECT name, id, 1, type, created FROM $o WHERE type = 'P'",
         {{"name", kName},
          {"object_id", kInt},
          {"schema_id", kInt},
          {"type", kKind},
          {"create_date", kDate}}},
        {"sys",
         "indexes",
         "SELECT name, parent, 2, id, type = 'PK' FROM $o WHERE type IN ('IX', 'PK', 'UQ')",
         {{"name", kName},
          {"object_id", kInt},
          {"type", kTiny},
          {"index_id", kInt},
          {"is_primary_key", kBit}}},
        {"",
         "sysindexes",
         "SELECT name, parent, id FROM $o WHERE type IN ('IX', 'PK', 'UQ')",
         {{"name", kName}, {"id", kInt}, {"indid", kInt}}},
        {"sys", "schemas", "SELECT 'dbo', 1", {{"name", kName}, {"schema_id", kInt}}},
        {"sys",
         "columns",
         "SELECT c.object, c.name, c.ordinal, " TYPE_FACTS
         ", c.nullable, c.identity FROM $c c JOIN $o o ON o.id = c.object WHERE o.type IN ('U', 'V')",
         {{"object_id", kInt},
          {"name", kName},
          {"column_id", kInt},
          {"system_type_name", kName},
          {"max_length", kSmall},
          {"precision", kTiny},
          {"scale", kTiny},
          {"is_nullable", kBit},
          {"is_identity", kBit}}},
        {"",
         "syscolumns",
         "SELECT c.name, c.object, c.ordinal, ts_type_length(c.type), c.nullable FROM $c c",
         {{"name", kName}, {"id", kInt}, {"colid", kSmall}, {"length", kSmall}, {"isnullable", kInt}}},
        {"sys",
         "sql_modules",
         "SELECT id, source FROM $o WHERE source <> ''",
         {{"object_id", kInt}, {"definition", kText}}},
        {"",
         "syscomments",
         "SELECT id, 1, source FROM $o WHERE source <> ''",
         {{"id", kInt}, {"colid", kSmall}, {"text", kText}}},
        {"INFORMATION_SCHEMA",
         "TABLES",
         "SELECT $d, 'dbo', name, CASE type WHEN 'U' THEN 'BASE TABLE' ELSE 'VIEW' END FROM $o WHERE type IN "
         "('U', 'V')",
         {{"TABLE_CATALOG", kName}, {"TABLE_SCHEMA", kName}, {"TABLE_NAME", kName}, {"TABLE_TYPE", kWord}}},
        {"INFORMATION_SCHEMA",
         "VIEWS",
         "SELECT $d, 'dbo', name, source FROM $o WHERE type = 'V'",
         {{"TABLE_CATALOG", kName},
          {"TABLE_SCHEMA", kName},
          {"TABLE_NAME", kName},
          {"VIEW_DEFINITION", kText}}},
        {"INFORMATION_SCHEMA",
         "COLUMNS",
         "SELECT $d, 'dbo', o.name, c.name, c.ordinal, nullif(c.fallback, ''), "
         "CASE c.nullable WHEN 1 THEN 'YES' ELSE 'NO' END, ts_type_name(c.type), ts_type_characters(c.type), "
         "ts_type_precision(c.type), ts_type_scale(c.type) FROM $c c JOIN $o o ON o.id = c.object WHERE "
         "o.type IN ('U', 'V')",
         {{"TABLE_CATALOG", kName},
          {"TABLE_SCHEMA", kName},
          {"TABLE_NAME", kName},
          {"COLUMN_NAME", kName},
          {"ORDINAL_POSITION", kInt},
          {"COLUMN_DEFAULT", kText},
          {"IS_NULLABLE", kWord},
          {"DATA_TYPE", kName},
          {"CHARACTER_MAXIMUM_LENGTH", kInt},
          {"NUMERIC_PRECISION", kTiny},
          {"NUMERIC_SCALE", kInt}}},
        {"INFORMATION_SCHEMA",
         "ROUTINES",
         "SELECT $d, 'dbo', name, $d, 'dbo', name, CASE type WHEN 'P' THEN 'PROCEDURE' ELSE 'FUNCTION' END, "
         "source, "
         "created FROM $o WHERE type IN ('P', 'FN', 'IF')",
         {{"SPECIFIC_CATALOG", kName},
          {"SPECIFIC_SCHEMA", kName},
          {"SPECIFIC_NAME", kName},
          {"ROUTINE_CATALOG", kName},
          {"ROUTINE_SCHEMA", kName},
          {"ROUTINE_NAME", kName},
          {"ROUTINE_TYPE", kWord},
          {"ROUTINE_DEFINITION", kText},
          {"CREATED", kDate}}},
        {"INFORMATION_SCHEMA",
         "PARAMETERS",
         "SELECT $d, 'dbo', o.name, c.ordinal - (o.type = 'FN'), "
         "CASE WHEN c.output = 1 THEN CASE c.name WHEN '' THEN 'OUT' ELSE 'INOUT' END ELSE 'IN' END, c.name, "
         "ts_type_name(c.type), ts_type_characters(c.type), ts_type_precision(c.type), ts_type_scale(c.type) "
         "FROM $c c JOIN $o o ON o.id = c.object WHERE o.type IN ('P', 'FN', 'IF')",
         {{"SPECIFIC_CATALOG", kName},
          {"SPECIFIC_SCHEMA", kName},
          {"SPECIFIC_NAME", kName},
          {"ORDINAL_POSITION", kInt},
          {"PARAMETER_MODE", kWord},
          {"PARAMETER_NAME", kName},
          {"DATA_TYPE", kName},
          {"CHARACTER_MAXIMUM_LENGTH", kInt},
          {"NUMERIC_PRECISION", kTiny},
          {"NUMERIC_SCALE", kInt}}},
    };
    return table;
}

std::string databaseList(const Storage& storage) {
    std::string rows;
    for (const auto& name : storage.databases())
        rows += (rows.empty() ? "" : " UNION ALL ") + ("SELECT " + quotedText(name)) + " AS name, " +
                std::to_string(*databaseId(storage, name)) + " AS id";
    return "(" + rows + ")";
}

void replaceAll(std::string& text, std::string_view mark, const std::string& value) {
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += value.size())
        text.replace(at, mark.size(), value);
}

}  // namespace

std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage) {
    const bool legacy = schema.empty() || sameWord(schema, "dbo");
    for (const auto& view : views()) {
        if (!sameWord(view.name, name)) continue;
        if (!(sameWord(view.schema, schema) || (view.schema.empty() && (legacy || sameWord(schema, "sys")))))
            continue;
        std::string sql(view.query);
        replaceAll(sql, "$o", std::string(sqliteSchema) + ".tsqlbox_objects");
        replaceAll(sql, "$c", std::string(sqliteSchema) + ".tsqlbox_columns");
        replaceAll(sql, "$d", quotedText(database));
        replaceAll(sql, "$L", databaseList(storage));
        SystemView found{{}, view.columns};
        // A common table gives the columns the names by which they are asked for.
        std::string names;
        for (const auto& column : view.columns)
            names += (names.empty() ? "" : ", ") + quotedName(column.name);
        found.sql = "WITH facts(" + names + ") AS (" + sql + ") SELECT * FROM facts";
        return found;
    }
    return std::nullopt;
}

std::optional<int> databaseId(const Storage& storage, std::string_view name) {
    constexpr std::string_view kSystem[] = {"master", "tempdb", "model", "msdb"};
    int id = 0;
    for (const auto system : kSystem) {
        ++id;
        if (sameWord(system, name)) return id;
    }
    for (const auto& each : storage.databases()) {
        if (Storage::isSystemDatabase(each)) continue;
        ++id;
        if (databaseKey(each) == databaseKey(name)) return id;
    }
    return std::nullopt;
}

}  // namespace tsql
