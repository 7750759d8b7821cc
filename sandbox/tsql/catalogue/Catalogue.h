// Catalogue of a database: its tables, modules, constraints and indexes, stored in tables of its SQLite file.
// The catalogue of #tables is in the temporary schema of the connection. System views are queries over it.
#pragma once

#include "storage/Connection.h"
#include "syntax/Ast.h"
#include "types/Text.h"

namespace tsql {

// ---- names of objects in schemas. The catalogue and SQLite store an object of dbo under its bare name, any
// other object under "schema", kSchemaEnd, "name".
inline constexpr std::string_view kDefaultSchema = "dbo";
inline constexpr char kSchemaEnd = '\x01';

// schema: empty for dbo. Throws SqlError for a name that contains kSchemaEnd.
inline std::string storedName(std::string_view schema, std::string_view name) {
    if ((std::string(schema) + std::string(name)).find(kSchemaEnd) != std::string::npos)
        throw unsupported("names with the character U+0001");
    const bool isBare = schema.empty() || sameWord(schema, kDefaultSchema);
    return isBare ? std::string(name) : std::string(schema) + kSchemaEnd + std::string(name);
}

inline std::string_view schemaOf(std::string_view stored) {
    const auto end = stored.find(kSchemaEnd);
    return end == std::string_view::npos ? kDefaultSchema : stored.substr(0, end);
}

inline std::string_view bareName(std::string_view stored) {
    return stored.substr(stored.find(kSchemaEnd) + 1);
}

// The name in messages: "name" for an object of dbo, else "schema.name".
inline std::string shownName(std::string stored) {
    std::ranges::replace(stored, kSchemaEnd, '.');
    return stored;
}

// ---- objects

struct TableColumn : Column {
    std::string byDefault = {};  // T-SQL text of the DEFAULT; empty: none
    bool output = false;         // OUTPUT parameter of a procedure
    std::int64_t userType = 0;   // object id of its type of CREATE TYPE; 0: another type
    std::int64_t id = 0;         // column_id
    std::string computed = {};   // T-SQL text of a computed column
    bool persisted = false;

    bool isRowVersion() const { return type.id == TypeId::RowVersion && computed.empty(); }
};
using ColumnList = std::vector<const TableColumn*>;  // columns of one TableInfo

struct TableInfo {
    std::int64_t id = 0;
    std::string database;  // as named in messages
    std::string name;
    std::string schema;                    // of SQLite, quoted
    std::string stored;                    // name in SQLite
    std::int64_t seed = 1, increment = 1;  // of the identity
    std::vector<TableColumn> columns;
    std::string schemaName{kDefaultSchema};  // of T-SQL
    bool isShadow = false;                   // a view in SQLite that receives changes for INSTEAD OF triggers
    std::string rows = {};                   // query of a view whose INSTEAD OF trigger receives changes
    bool mayFire = true;                     // false: no table of its database has triggers
    // Key of the query (view, common or derived table) through which the table is changed, and its columns.
    std::string through = {};
    std::vector<Column> shown = {};

    std::string sqlName() const { return schema + "." + quotedName(stored); }
    std::string qualifiedName() const { return schemaName + "." + name; }
    std::string fullName() const { return database + "." + qualifiedName(); }
    const TableColumn* column(std::string_view columnName) const;
    // As column(), as a statement names it that changes the table. Throws SqlError 4406 (an expression).
    const TableColumn* changedColumn(std::string_view columnName) const;
    const TableColumn* identityColumn() const;
    // An identity as sqlite_sequence counts it, upwards, and the reverse.
    std::int64_t counted(std::int64_t identity) const { return increment < 0 ? -identity : identity; }
    bool isCountedBySqlite() const { return increment == 1 && seed > 0; }  // which begins at 1
};

// Conditions on types. Two in a list at most: SQLite would make a temporary table of more for each query.
inline constexpr std::string_view kUserTypes = "IN ('TYPE', 'TT')",
                                  kObjects = "NOT IN ('IX', 'SCHEMA') AND o.type NOT IN ('TYPE', 'TT')";
inline constexpr std::int64_t kBuiltInTypes = 256;  // their numbers in sys.types; those of objects follow

// A row of the catalogue: a table, a module, a constraint, an index or a schema.
struct ObjectInfo {
    std::int64_t id = 0;  // 0: not in the catalogue yet
    std::string name;
    std::string type;
    std::int64_t parent = 0;  // table of a constraint, index or trigger
    // Name of a table in SQLite; key() of a foreign key's table; filter of an index; kDisabled of a trigger;
    // CASCADE of a view WITH CHECK OPTION; Sequence::text().
    std::string stored = {};
    // Of a constraint or index; events of a trigger; seed and increment of a table.
    std::vector<std::string> columns = {};
    std::string source = {};  // text of a module; state and source of a constraint; kUniqueIndex
    std::string table = {};   // key() of the parent
    std::string schemaName{kDefaultSchema};

    std::string key() const { return storedName(schemaName, name); }  // its name in the catalogue
};
// Definition of a sequence. `base` is its first value since CREATE or ALTER SEQUENCE. The number of values
// given since then is in sqlite_sequence.
struct Sequence {
    std::int64_t start = 0, increment = 1, least = 0, most = 0, cycles = 0, base = 0;

    std::string text() const;
    static Sequence read(const std::string& text);
    std::optional<std::int64_t> value(std::int64_t given) const;  // the next one; empty if there is none
};
struct SchemaInfo {
    std::string name;
    std::int64_t id;                                        // in sys.schemas
    bool isOfSystem() const { return id == 3 || id == 4; }  // INFORMATION_SCHEMA, sys
};
// Query for the schemas: the four of every database, then those of the catalogue. $: schema of SQLite.
inline constexpr std::string_view kSchemas =
    R"((SELECT column1 AS name, column2 AS id, column2 AS owner FROM (VALUES ('dbo', 1), ('guest', 2),
('INFORMATION_SCHEMA', 3), ('sys', 4)) UNION ALL SELECT name, id + 4, iif(stored, stored + 0, 1) FROM $.tsqlbox_objects
WHERE type = 'SCHEMA') s)";
// SQLite's type and collation of a column.
std::string_view storageClass(const SqlType& type);
inline constexpr std::string_view kUniqueIndex = "UNIQUE";
// States of a constraint in front of its source: not enforced; enforced, but not checked for the older rows.
inline constexpr std::string_view kDisabled = "NOCHECK ", kUntrusted = "WITH NOCHECK ";
inline bool isDisabled(const ObjectInfo& constraint) {
    return constraint.source.starts_with(kDisabled);
}
inline bool isUniqueKey(const ObjectInfo& key) {
    return key.type == kPrimaryKey || key.type == kUnique || key.source == kUniqueIndex;
}
// Indexes and unique keys of a table share their names.
inline bool isIndexed(const ObjectInfo& key) {
    return key.type == kIndex || isUniqueKey(key);
}

inline constexpr std::string_view kCollationName = "SQL_Latin1_General_CP1_CI_AS";
inline constexpr std::string_view kTempSchema = "temp";
inline constexpr const char* kRowVersions = "@rowversion";  // counter of a database, from:
inline constexpr std::int64_t kBeforeRowVersions = 2000;
inline constexpr std::string_view kNullsSuffix = "@nulls";  // of the index for rows with NULL in a unique key
// Whether the name is that of a #table or a table variable.
inline bool isTemporaryName(std::string_view name) {
    return name.starts_with('#') || name.starts_with('@');
}

// Throws SqlError for an empty name, and for one with what separates names in the catalogue's lists.
void requireColumnName(std::string_view column);

// Catalogue of one attached database or of the temporary tables.
class Catalogue {
  public:
    // schema: quoted, or kTempSchema. Creates the tables of the catalogue if they are missing.
    Catalogue(Connection& connection, std::string database, std::string schema);

    const std::string& schema() const { return m_schema; }
    bool isTemporary() const { return m_schema == kTempSchema; }
    // Return an object of these types, kObjects or kUserTypes; of several with that key the newest one.
    std::optional<ObjectInfo> find(std::string_view key, std::string_view types = kObjects) const {
        return latest("o.name = ?1 AND o.type " + std::string(types), std::string(key));
    }
    std::optional<ObjectInfo> findById(std::int64_t id, std::string_view types = kObjects) const {
        return latest("o.id = ?1 AND o.type " + std::string(types), id);
    }
    std::optional<ObjectInfo> userOfType(std::int64_t type) const {  // that has columns or parameters of it
        return latest("o.id IN (SELECT object FROM $.tsqlbox_columns WHERE user_type = ?1)", type);
    }
    std::optional<TableInfo> table(std::string_view key) const;
    TableInfo tableOf(const ObjectInfo& object) const;
    TableInfo ownTable(const std::string& name) const;  // of the catalogue itself, for system procedures
    std::optional<SchemaInfo> schema(const Value& name) const;  // of kSchemas
    std::vector<TableColumn> columns(std::int64_t object) const;
    std::vector<ObjectInfo> keysOf(std::int64_t table) const {  // constraints and indexes
        return objects("o.parent = ?1 AND o.type <> 'TR'", table);
    }
    std::vector<ObjectInfo> keysTo(std::int64_t table) const {  // foreign keys that reference it
        return objects(
            "o.type = 'F' AND o.stored = (SELECT name FROM $.tsqlbox_objects WHERE id = ?1) COLLATE ts_ci",
            table);
    }
    std::vector<ObjectInfo> triggersOf(std::int64_t table) const {
        return objects("o.parent = ?1 AND o.type = 'TR'", table);
    }
    bool hasTriggers() const { return query("SELECT 1 FROM $.tsqlbox_objects WHERE type = 'TR'").step(); }
    std::int64_t lastId() const;

    // Inserts an object whose id is 0 and sets its id, or updates an existing object.
    void save(ObjectInfo& object);
    void remove(std::int64_t object) {  // with its columns, keys and indexes
        run("DELETE FROM $.tsqlbox_objects WHERE id = ?1 OR parent = ?1", {object});
    }
    // As save(), for columns.
    void saveColumns(std::int64_t object, const std::vector<TableColumn>& columns);
    void removeColumn(std::int64_t object, std::string_view name) {
        run("DELETE FROM $.tsqlbox_columns WHERE object = ?1 AND name = ?2", {object, std::string(name)});
    }
    void replaceColumns(std::int64_t object, std::vector<TableColumn> made);

  private:
    std::vector<ObjectInfo> objects(const std::string& where, const Value& value) const;
    std::optional<ObjectInfo> latest(const std::string& where, const Value& value) const;
    // value: of ?1; it must outlive the query. $ is replaced by the schema.
    PreparedStatement query(std::string_view sql, const Value& value = {}) const;
    void run(std::string_view sql, const std::vector<Value>& values = {});

    Connection& m_connection;
    std::string m_database;
    std::string m_schema;
};

// ---- system views

// A system view (sysobjects, sys.tables, INFORMATION_SCHEMA.COLUMNS ...) as a query over the catalogue.
struct SystemView {
    std::string sql;
    std::vector<TableColumn> columns;
    std::string name = {};  // with its schema; empty: not a view of the catalogue
};
// Replaces the placeholders for the database in a query of its catalogue.
std::string inDatabase(std::string sql, std::string_view schema, std::string_view database, const Storage&);
// columns: "name type = expression; ...".
SystemView queryOf(std::string_view columns, std::string_view from);
std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage);
// Whether a view or table function that tsqlbox lacks is one of SQL Server's, as all in its schemas are.
bool isMissingView(std::string_view schema, std::string_view name);
// Returns the number of a database, from 1 in the order of Storage::databases(). Empty for an unknown name.
std::optional<int> databaseId(const Storage& storage, std::string_view name);

}  // namespace tsql
