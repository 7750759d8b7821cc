#include "catalogue/Catalogue.h"

#include <boost/algorithm/string/iter_find.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <sstream>

#include "syntax/Parser.h"

namespace tsql {
namespace {

// Tables of the catalogue. $ is replaced by the schema.
constexpr std::string_view kTables[] = {
    "CREATE TABLE IF NOT EXISTS $.tsqlbox_objects (id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "name TEXT NOT NULL COLLATE ts_ci, type TEXT NOT NULL, parent INTEGER NOT NULL, stored TEXT NOT NULL, "
    "keys TEXT NOT NULL, created TEXT NOT NULL, source TEXT NOT NULL)",
    // An empty fallback or computed: there is no default, or it is not computed. user_type: id of its object.
    R"(CREATE TABLE IF NOT EXISTS $.tsqlbox_columns (object INTEGER NOT NULL, ordinal INTEGER NOT NULL, name TEXT NOT
NULL COLLATE ts_ci, type INTEGER NOT NULL, nullable INTEGER NOT NULL, identity INTEGER NOT NULL, fallback TEXT NOT NULL,
output INTEGER NOT NULL, user_type INTEGER NOT NULL, computed TEXT NOT NULL, persisted INTEGER NOT NULL, PRIMARY KEY
(object, ordinal)))",
    "CREATE INDEX IF NOT EXISTS $.tsqlbox_objects_name ON tsqlbox_objects (name)",
    "CREATE INDEX IF NOT EXISTS $.tsqlbox_triggers ON tsqlbox_objects (parent) WHERE type = 'TR'",
    // Users and roles and, in master, logins. The columns have the types of T-SQL.
    R"(CREATE TABLE IF NOT EXISTS $.tsqlbox_principals (id int, login bit, name nvarchar(128) COLLATE ts_ci, type
char(1), sid varbinary(85), home nvarchar(128), owner int, created datetime DEFAULT '2003-04-08 09:10:42.287', PRIMARY
KEY (login, id)))",
    R"(INSERT OR IGNORE INTO $.tsqlbox_principals (id, login, name, type, sid) VALUES (1, 1, '', 'S', x'01'), (2, 1,
'public', 'R', x'02'), (3, 1, 'sysadmin', 'R', x'03'), (0, 0, 'public', 'R', NULL), (1, 0, 'dbo', 'S', x'01'), (2,
0, 'guest', 'S', x'00'), (3, 0, 'INFORMATION_SCHEMA', 'S', NULL), (4, 0, 'sys', 'S', NULL), (16384, 0, 'db_owner',
'R', NULL), (16387, 0, 'db_ddladmin', 'R', NULL), (16390, 0, 'db_datareader', 'R', NULL), (16391, 0,
'db_datawriter', 'R', NULL))",
    "CREATE TABLE IF NOT EXISTS $.tsqlbox_members (role int, member int)",
    // Permissions on and properties of the database (class 0), objects (1) and schemas (3), by their id.
    R"(CREATE TABLE IF NOT EXISTS $.tsqlbox_permissions (class int, major int, grantee int, code char(4), name
nvarchar(128), state char(1), PRIMARY KEY (class, major, grantee, name)))",
    R"(CREATE TABLE IF NOT EXISTS $.tsqlbox_properties (class int, major int, minor int, name nvarchar(128) COLLATE
ts_ci, value nvarchar(4000), PRIMARY KEY (class, major, minor, name)))",
    // What belongs to an object or a column is deleted with it.
    R"(CREATE TRIGGER IF NOT EXISTS $.tsqlbox_column_deleted AFTER DELETE ON tsqlbox_columns BEGIN DELETE FROM
tsqlbox_properties WHERE class = 1 AND major = old.object AND minor = old.ordinal; END)",
    R"(CREATE TRIGGER IF NOT EXISTS $.tsqlbox_object_deleted AFTER DELETE ON tsqlbox_objects BEGIN DELETE FROM
tsqlbox_columns WHERE object = old.id; DELETE FROM sqlite_sequence WHERE name = '@sequence ' || old.id; DELETE FROM
tsqlbox_permissions WHERE class > 0 AND major = old.id; DELETE FROM tsqlbox_properties WHERE class > 0 AND major =
old.id; END)",
};

std::string inSchema(std::string_view text, std::string_view schema) {
    return boost::replace_all_copy(std::string(text), "$", schema);
}

std::vector<std::string> namesOf(std::string_view list) {
    std::vector<std::string> names;
    if (!list.empty()) boost::iter_split(names, list, boost::first_finder(", "));
    return names;
}

}  // namespace

void requireColumnName(std::string_view column) {
    if (column.empty()) throw sqlError(kMissingColumnName);
    if (column.find(", ") != column.npos) throw unsupported("a column name with a comma and a blank");
}

std::string_view storageClass(const SqlType& type) {
    if (isBinary(type.id) || isWide(type)) return "BLOB";
    if (isExact(type.id)) return "INTEGER";
    if (isApproximate(type.id)) return "REAL";
    return type.id == TypeId::DateTimeOffset ? "TEXT COLLATE ts_utc" : "TEXT COLLATE ts_ci";
}

const TableColumn* TableInfo::column(std::string_view wanted) const {
    const auto found = std::ranges::find_if(columns, std::bind_front(sameText, wanted), &TableColumn::name);
    return found == columns.end() ? nullptr : &*found;
}

const TableColumn* TableInfo::changedColumn(std::string_view columnName) const {
    if (through.empty()) return column(columnName);
    const auto found = std::ranges::find_if(shown, std::bind_front(sameText, columnName), &Column::name);
    if (found == shown.end()) return nullptr;
    if (found->own.empty()) throw sqlError(kChangedExpression, {bareName(through)});
    return column(found->own);
}

const TableColumn* TableInfo::identityColumn() const {
    const auto found = std::ranges::find(columns, true, &TableColumn::identity);
    return found == columns.end() ? nullptr : &*found;
}

std::string Sequence::text() const {
    const std::int64_t parts[] = {start, increment, least, most, cycles, base};
    return commaList(parts, [](std::int64_t part) { return std::to_string(part); });
}

Sequence Sequence::read(const std::string& text) {
    Sequence read;
    std::istringstream parts(text);
    for (auto* part : {&read.start, &read.increment, &read.least, &read.most, &read.cycles, &read.base})
        (parts >> *part).ignore();
    return read;
}

std::optional<std::int64_t> Sequence::value(std::int64_t given) const {
    const std::int64_t end = increment > 0 ? most : least, again = increment > 0 ? least : most;
    const auto countFrom = [&](std::int64_t first) {
        const Int128 steps = (Int128{end} - first) / increment;
        return (increment > 0 ? first > end : first < end) ? Int128{0} : steps + 1;
    };
    const Int128 ofBase = countFrom(base);
    if (given < ofBase) return static_cast<std::int64_t>(base + Int128{given} * increment);
    if (!cycles) return std::nullopt;
    return static_cast<std::int64_t>(again + (given - ofBase) % countFrom(again) * increment);
}

Catalogue::Catalogue(Connection& connection, std::string database, std::string schema)
    : m_connection(connection), m_database(std::move(database)), m_schema(std::move(schema)) {
    if (m_connection.hasCatalogue(m_schema)) return;
    if (query("SELECT 1 FROM $.sqlite_master WHERE name = 'tsqlbox_object_deleted'").step()) {
        const std::string own =
            "SELECT 1 FROM pragma_table_info('tsqlbox_columns', ?1) WHERE name = 'user_type'";
        if (!isTemporary() && !m_connection.number(own, {databaseKey(m_database)}))
            throw unsupported("databases of older builds ('" + m_database + "'): make the data folder anew");
        // A rollback would delete tables that the current transaction has created.
        if (!m_connection.inTransaction()) m_connection.noteCatalogue(m_schema);
        return;
    }
    for (const auto table : kTables) run(table);
}

void Catalogue::run(std::string_view sql, const std::vector<Value>& values) {
    m_connection.run(inSchema(sql, m_schema), values);
}

PreparedStatement Catalogue::query(std::string_view sql, const Value& value) const {
    return {m_connection, inSchema(sql, m_schema), {&value, 1}};
}

std::vector<ObjectInfo> Catalogue::objects(const std::string& where, const Value& value) const {
    auto rows = query(
        "SELECT o.id, o.name, o.type, o.parent, o.stored, o.keys, o.source, t.name FROM $.tsqlbox_objects o "
        "LEFT JOIN $.tsqlbox_objects t ON t.id = o.parent WHERE " +
            where + " ORDER BY o.id",
        value);
    std::vector<ObjectInfo> found;
    while (rows.step()) {
        const std::string key = rows.text(1);
        found.push_back({rows.integer(0), std::string(bareName(key)), rows.text(2), rows.integer(3),
                         rows.text(4), namesOf(rows.text(5)), rows.text(6), rows.text(7),
                         std::string(schemaOf(key))});
    }
    return found;
}

std::optional<ObjectInfo> Catalogue::latest(const std::string& where, const Value& value) const {
    auto found = objects(where, value);
    return found.empty() ? std::nullopt : std::optional(std::move(found.back()));
}

TableInfo Catalogue::tableOf(const ObjectInfo& object) const {
    const auto& identity = object.columns;  // older tables have no increment
    const auto number = [&](std::size_t i) { return identity.size() > i ? std::stoll(identity[i]) : 1; };
    return {object.id,          m_database,        object.name, m_schema, object.stored, number(0), number(1),
            columns(object.id), object.schemaName, false,       {},       hasTriggers()};
}

std::optional<TableInfo> Catalogue::table(std::string_view key) const {
    const auto found = find(key, "= 'U'");
    return found ? std::optional(tableOf(*found)) : std::nullopt;
}

TableInfo Catalogue::ownTable(const std::string& name) const {
    TableInfo table{0, m_database, name, m_schema, name, 1, 1, {}};
    PreparedStatement columns(m_connection, "PRAGMA " + m_schema + ".table_info(" + name + ")");
    while (columns.step()) table.columns.push_back({{columns.text(1), parseType(columns.text(2))}});
    return table;
}

std::optional<SchemaInfo> Catalogue::schema(const Value& key) const {
    auto row = query("SELECT name, id FROM " + std::string(kSchemas) + " WHERE name = ?1 COLLATE ts_ci", key);
    return row.step() ? std::optional(SchemaInfo{row.text(0), row.integer(1)}) : std::nullopt;
}

std::vector<TableColumn> Catalogue::columns(std::int64_t object) const {
    const Value id(object);
    auto rows = query(
        "SELECT name, type, nullable, identity, fallback, output, user_type, ordinal, computed, persisted "
        "FROM $.tsqlbox_columns WHERE object = ?1 ORDER BY ordinal",
        id);
    const auto flag = [&](int column) { return rows.integer(column) != 0; };
    std::vector<TableColumn> columns;
    while (rows.step()) {
        const Column column{rows.text(0), decodeType(rows.integer(1)), flag(2), flag(3)};
        columns.push_back(
            {column, rows.text(4), flag(5), rows.integer(6), rows.integer(7), rows.text(8), flag(9)});
    }
    return columns;
}

std::int64_t Catalogue::lastId() const {
    return *m_connection.number(inSchema("SELECT coalesce(max(id), 0) FROM $.tsqlbox_objects", m_schema));
}

void Catalogue::save(ObjectInfo& object) {
    const std::string created = toStorage(timeNow(), simpleType(TypeId::DateTime));
    run(R"(INSERT INTO $.tsqlbox_objects (id, name, type, parent, stored, keys, created, source) VALUES (nullif(?1, 0),
?2, ?3, ?4, ?5, ?6, ?7, ?8) ON CONFLICT (id) DO UPDATE SET name = ?2, stored = ?5, keys = ?6, source = ?8)",
        {object.id, object.key(), object.type, object.parent, object.stored, commaList(object.columns),
         created, object.source});
    if (!object.id) object.id = sqlite3_last_insert_rowid(m_connection.handle());
}

void Catalogue::saveColumns(std::int64_t object, const std::vector<TableColumn>& columns) {
    for (const auto& column : columns)
        run(R"(INSERT INTO $.tsqlbox_columns SELECT ?1, iif(?2, ?2, coalesce(max(ordinal), 0) + 1), ?3, ?4, ?5, ?6, ?7, ?8,
?9, ?10, ?11 FROM $.tsqlbox_columns WHERE object = ?1 ON CONFLICT (object, ordinal) DO UPDATE SET name = ?3, type = ?4,
nullable = ?5, fallback = ?7, user_type = ?9)",
            {object, column.id, column.name, encodeType(column.type), column.nullable, column.identity,
             column.byDefault, column.output, column.userType, column.computed, column.persisted});
}

// A column of the same name in the same place is the same.
void Catalogue::replaceColumns(std::int64_t object, std::vector<TableColumn> made) {
    for (auto& column : made) column.id = &column - made.data() + 1;
    for (const auto& old : columns(object))
        if (old.id > std::ssize(made) || !sameText(made[static_cast<std::size_t>(old.id - 1)].name, old.name))
            removeColumn(object, old.name);
    saveColumns(object, made);
}

}  // namespace tsql
