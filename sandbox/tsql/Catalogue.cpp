#include "Catalogue.h"

#include <algorithm>

#include "DateTime.h"
#include "Text.h"

namespace tsql {
namespace {

// %s stands for the schema.
constexpr std::string_view kTables[] = {
    "CREATE TABLE IF NOT EXISTS %s.tsqlbox_objects (id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "name TEXT NOT NULL COLLATE ts_ci, type TEXT NOT NULL, parent INTEGER NOT NULL, stored TEXT NOT NULL, "
    "keys TEXT NOT NULL, created TEXT NOT NULL, source TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS %s.tsqlbox_columns (object INTEGER NOT NULL, ordinal INTEGER NOT NULL, "
    "name TEXT NOT NULL COLLATE ts_ci, type INTEGER NOT NULL, nullable INTEGER NOT NULL, "
    "identity INTEGER NOT NULL, fallback TEXT NOT NULL, output INTEGER NOT NULL, PRIMARY KEY (object, "
    "ordinal))",
    "CREATE INDEX IF NOT EXISTS %s.tsqlbox_objects_name ON tsqlbox_objects (name)",
};

std::string withSchema(std::string_view text, std::string_view schema) {
    std::string sql(text);
    return sql.replace(sql.find("%s"), 2, schema);
}

bool isKind(std::string_view type, std::initializer_list<std::string_view> types) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace

const TableColumn* TableInfo::column(std::string_view columnName) const {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const TableColumn& each) {
        return compareText(each.name, columnName) == 0;
    });
    return found == columns.end() ? nullptr : &*found;
}

const TableColumn* TableInfo::identityColumn() const {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [](const auto& each) { return each.identity; });
    return found == columns.end() ? nullptr : &*found;
}

Catalogue::Catalogue(Connection& connection, std::string database, std::string schema)
    : m_connection(connection), m_database(std::move(database)), m_schema(std::move(schema)) {
    if (m_connection.hasCatalogue(m_schema)) return;
    const std::string master = isTemporary() ? "sqlite_temp_master" : m_schema + ".sqlite_master";
    {
        PreparedStatement known(m_connection, "SELECT 1 FROM " + master + " WHERE name = 'tsqlbox_columns'");
        if (known.step()) {
            // What this session's transaction has made would go with it.
            if (!m_connection.inTransaction()) m_connection.noteCatalogue(m_schema);
            return;
        }
    }
    for (const auto table : kTables) m_connection.run(withSchema(table, m_schema));
}

std::optional<ObjectInfo> Catalogue::findObject(const std::string& where, const Value& value) const {
    PreparedStatement query(m_connection, "SELECT id, name, type, source FROM " + m_schema +
                                              ".tsqlbox_objects WHERE type <> 'IX' AND " + where +
                                              " ORDER BY id DESC LIMIT 1");
    query.bind(1, viewOf(value));
    if (!query.step()) return std::nullopt;
    return ObjectInfo{query.integer(0), query.text(1), query.text(2), query.text(3)};
}

std::optional<ObjectInfo> Catalogue::find(std::string_view name) const {
    return findObject("name = ?1", Value(std::string(name)));
}

std::optional<ObjectInfo> Catalogue::findById(std::int64_t id) const {
    return findObject("id = ?1", Value(id));
}

std::optional<ObjectInfo> Catalogue::index(std::int64_t table, std::string_view name) const {
    PreparedStatement query(m_connection,
                            "SELECT id, stored, type FROM " + m_schema +
                                ".tsqlbox_objects WHERE type = 'IX' AND parent = ?1 AND name = ?2");
    query.bind(1, table);
    query.bind(2, name);
    if (!query.step()) return std::nullopt;
    return ObjectInfo{query.integer(0), query.text(1), query.text(2), {}};
}

std::optional<TableInfo> Catalogue::table(std::string_view name) const {
    TableInfo info;
    {
        PreparedStatement query(m_connection, "SELECT id, name, stored, keys FROM " + m_schema +
                                                  ".tsqlbox_objects WHERE name = ?1 AND type = 'U' "
                                                  "ORDER BY id DESC LIMIT 1");
        query.bind(1, name);
        if (!query.step()) return std::nullopt;
        info = {query.integer(0), m_database, query.text(1), m_schema, query.text(2), 1, {}};
        if (const std::string seed = query.text(3); !seed.empty()) info.seed = std::stoll(seed);
    }
    info.columns = columns(info.id);
    return info;
}

std::vector<TableColumn> Catalogue::columns(std::int64_t object) const {
    PreparedStatement query(m_connection, "SELECT name, type, nullable, identity, fallback, output FROM " +
                                              m_schema +
                                              ".tsqlbox_columns WHERE object = ?1 ORDER BY ordinal");
    query.bind(1, object);
    std::vector<TableColumn> columns;
    while (query.step())
        columns.push_back({query.text(0), decodeType(query.integer(1)), query.integer(2) != 0,
                           query.integer(3) != 0, query.text(4), query.integer(5) != 0});
    return columns;
}

std::vector<KeyInfo> Catalogue::keys(const std::string& where, std::span<const Value> values) const {
    PreparedStatement query(
        m_connection, "SELECT k.id, k.name, k.type, k.keys, k.source, k.stored, t.name FROM " + m_schema +
                          ".tsqlbox_objects k JOIN " + m_schema +
                          ".tsqlbox_objects t ON t.id = k.parent WHERE " + where + " ORDER BY k.id");
    query.bindAll(values);
    std::vector<KeyInfo> found;
    while (query.step())
        found.push_back({query.integer(0), query.text(1), query.text(2), query.text(3), query.text(4),
                         query.text(5), query.text(6)});
    return found;
}

std::optional<KeyInfo> Catalogue::key(std::string_view storedTable, std::string_view columns) const {
    const Value values[] = {std::string(storedTable), std::string(columns)};
    const auto found =
        keys("t.stored = ?1 AND k.keys = ?2 COLLATE NOCASE AND k.type IN ('PK', 'UQ', 'IX')", values);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<KeyInfo> Catalogue::keysOfType(std::string_view storedTable, std::string_view type) const {
    const Value values[] = {std::string(storedTable), std::string(type)};
    return keys("t.stored = ?1 AND k.type = ?2", values);
}

std::vector<KeyInfo> Catalogue::keysOf(std::int64_t table) const {
    const Value values[] = {table};
    return keys("t.id = ?1", values);
}

std::vector<KeyInfo> Catalogue::keysTo(std::string_view table) const {
    const Value values[] = {std::string(table)};
    return keys("k.type = 'F' AND k.stored = ?1 COLLATE NOCASE", values);
}

std::int64_t Catalogue::add(std::string_view name, std::string_view type, std::int64_t parent,
                            std::string_view detail) {
    const bool isModule = isKind(
        type, {objectType::kProcedure, objectType::kFunction, objectType::kView, objectType::kTableFunction});
    const bool isTable = type == objectType::kTable;
    const Value values[] = {std::string(name),
                            std::string(type),
                            parent,
                            isTable ? std::string(detail.empty() ? name : detail) : std::string(),
                            isTable || isModule ? std::string() : std::string(detail),
                            toStorage(localNow(), simpleType(TypeId::DateTime)),
                            isModule ? std::string(detail) : std::string()};
    m_connection.run("INSERT INTO " + m_schema +
                         ".tsqlbox_objects (name, type, parent, stored, keys, created, source) "
                         "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                     values);
    return sqlite3_last_insert_rowid(m_connection.handle());
}

void Catalogue::setStored(std::int64_t object, std::string_view stored) {
    const Value values[] = {object, std::string(stored)};
    m_connection.run("UPDATE " + m_schema + ".tsqlbox_objects SET stored = ?2 WHERE id = ?1", values);
}

void Catalogue::setSeed(std::int64_t table, std::int64_t seed) {
    const Value values[] = {table, std::to_string(seed)};
    m_connection.run("UPDATE " + m_schema + ".tsqlbox_objects SET keys = ?2 WHERE id = ?1", values);
}

void Catalogue::setColumn(std::int64_t object, const TableColumn& column) {
    const Value values[] = {object, column.name, encodeType(column.type), std::int64_t{column.nullable},
                            column.byDefault};
    m_connection.run("UPDATE " + m_schema +
                         ".tsqlbox_columns SET type = ?3, nullable = ?4, fallback = ?5 WHERE object = ?1 AND "
                         "name = ?2",
                     values);
}

void Catalogue::setSource(std::int64_t object, std::string_view source) {
    const Value values[] = {object, std::string(source)};
    m_connection.run("UPDATE " + m_schema + ".tsqlbox_objects SET source = ?2 WHERE id = ?1", values);
}

void Catalogue::addColumns(std::int64_t object, const std::vector<TableColumn>& columns) {
    for (const auto& column : columns) {
        const Value values[] = {object,
                                column.name,
                                encodeType(column.type),
                                std::int64_t{column.nullable},
                                std::int64_t{column.identity},
                                column.byDefault,
                                std::int64_t{column.output}};
        m_connection.run(
            "INSERT INTO " + m_schema +
                ".tsqlbox_columns SELECT ?1, coalesce(max(ordinal), 0) + 1, ?2, ?3, ?4, ?5, ?6, ?7 FROM " +
                m_schema + ".tsqlbox_columns WHERE object = ?1",
            values);
    }
}

void Catalogue::removeColumn(std::int64_t object, std::string_view name) {
    const Value values[] = {object, std::string(name)};
    m_connection.run("DELETE FROM " + m_schema + ".tsqlbox_columns WHERE object = ?1 AND name = ?2", values);
}

void Catalogue::removeColumns(std::int64_t object) {
    const Value values[] = {object};
    m_connection.run("DELETE FROM " + m_schema + ".tsqlbox_columns WHERE object = ?1", values);
}

void Catalogue::remove(std::int64_t object) {
    const Value values[] = {object};
    removeColumns(object);
    m_connection.run("DELETE FROM " + m_schema + ".tsqlbox_objects WHERE id = ?1 OR parent = ?1", values);
}

std::int64_t Catalogue::lastId() const {
    PreparedStatement query(m_connection,
                            "SELECT coalesce(max(id), 0) FROM " + m_schema + ".tsqlbox_objects");
    query.step();
    return query.integer(0);
}

std::vector<TableInfo> Catalogue::tablesAfter(std::int64_t id) const {
    PreparedStatement query(m_connection, "SELECT id, name, stored FROM " + m_schema +
                                              ".tsqlbox_objects WHERE type = 'U' AND id > ?1");
    query.bind(1, id);
    std::vector<TableInfo> tables;
    while (query.step())
        tables.push_back({query.integer(0), m_database, query.text(1), m_schema, query.text(2), 1, {}});
    return tables;
}

}  // namespace tsql
