// Catalogue of a database: its tables, modules, constraints and indexes, stored in two tables of its SQLite
// file. The catalogue of #tables is in the temporary schema of the connection.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/SchemaName.h"
#include "storage/Connection.h"

namespace tsql {

struct TableColumn {
    std::string name;
    SqlType type;
    bool nullable = true;
    bool identity = false;
    std::string byDefault = {};  // T-SQL text of the DEFAULT; empty: none
    bool output = false;         // OUTPUT parameter of a procedure
    std::int64_t id = 0;         // column_id
};
using ColumnList = std::vector<const TableColumn*>;  // columns of one TableInfo

struct TableInfo {
    std::int64_t id = 0;
    std::string database;  // as named in messages
    std::string name;
    std::string schema;     // of SQLite, quoted
    std::string stored;     // name in SQLite
    std::int64_t seed = 1;  // of the identity
    std::vector<TableColumn> columns;
    std::string schemaName{kDefaultSchema};  // of T-SQL
    bool isShadow = false;                   // a view in SQLite that receives changes for INSTEAD OF triggers

    std::string sqlName() const { return schema + "." + quotedName(stored); }
    std::string qualifiedName() const { return schemaName + "." + name; }
    std::string fullName() const { return database + "." + qualifiedName(); }
    const TableColumn* column(std::string_view columnName) const;
    const TableColumn* identityColumn() const;
};

// Object types, with the values of sysobjects.xtype.
namespace objectType {
inline constexpr std::string_view kTable = "U", kView = "V", kProcedure = "P", kFunction = "FN",
                                  kTableFunction = "IF", kPrimaryKey = "PK", kUnique = "UQ",
                                  kForeignKey = "F", kCheck = "C", kDefault = "D", kIndex = "IX",
                                  kTrigger = "TR", kSchema = "SCHEMA";
}

// A row of the catalogue: a table, a module, a constraint, an index or a schema.
struct ObjectInfo {
    std::int64_t id = 0;  // 0: not in the catalogue yet
    std::string name;
    std::string type;
    std::int64_t parent = 0;  // table of a constraint, index or trigger
    // Name of a table in SQLite; key() of a foreign key's table; filter of an index; kDisabled of a trigger.
    std::string stored = {};
    std::vector<std::string> columns = {};  // of a constraint or index; events of a trigger
    std::string source = {};  // text of a module; state and source of a constraint; kUniqueIndex
    std::string table = {};   // key() of the parent
    std::int64_t seed = 1;    // of a table's identity
    std::string schemaName{kDefaultSchema};

    std::string key() const { return storedName(schemaName, name); }  // its name in the catalogue
};
struct SchemaInfo {
    std::string name;
    std::int64_t id;          // in sys.schemas
    std::int64_t object = 0;  // id of its row; 0: every database has it
    bool isOfSystem = false;  // sys, INFORMATION_SCHEMA: without objects of users
};
// SQLite's type and collation of a column.
std::string_view storageClass(const SqlType& type);
inline constexpr std::string_view kUniqueIndex = "UNIQUE";
// States of a constraint in front of its source: not enforced; enforced, but not checked for the older rows.
inline constexpr std::string_view kDisabled = "NOCHECK ", kUntrusted = "WITH NOCHECK ";
inline bool isDisabled(const ObjectInfo& constraint) {
    return constraint.source.starts_with(kDisabled);
}
inline bool isUniqueKey(const ObjectInfo& key) {
    return key.type == objectType::kPrimaryKey || key.type == objectType::kUnique ||
           key.source == kUniqueIndex;
}

inline constexpr std::string_view kCollationName = "SQL_Latin1_General_CP1_CI_AS";
inline constexpr std::string_view kTempSchema = "temp";
inline constexpr std::string_view kNullsSuffix = "@nulls";  // of the index for rows with NULL in a unique key
// Whether the name is that of a #table or a table variable.
inline bool isTemporaryName(std::string_view name) {
    return name.starts_with('#') || name.starts_with('@');
}

// Catalogue of one attached database or of the temporary tables.
class Catalogue {
  public:
    // schema: quoted, or kTempSchema. Creates the tables of the catalogue if they are missing.
    Catalogue(Connection& connection, std::string database, std::string schema);

    const std::string& schema() const { return m_schema; }
    bool isTemporary() const { return m_schema == kTempSchema; }
    // Return an object that is neither an index nor a schema; of several with that key the newest one.
    std::optional<ObjectInfo> find(std::string_view key) const;
    std::optional<ObjectInfo> findById(std::int64_t id) const;
    std::optional<TableInfo> table(std::string_view key) const;
    TableInfo tableOf(const ObjectInfo& object) const;
    std::vector<SchemaInfo> schemas() const;
    std::optional<SchemaInfo> schemaNamed(std::string_view name) const;
    std::vector<ObjectInfo> objectsIn(std::string_view schemaName) const;  // without constraints and indexes
    std::vector<TableColumn> columns(std::int64_t object) const;
    std::vector<ObjectInfo> keysOf(std::int64_t table) const;  // constraints and indexes
    std::vector<ObjectInfo> keysTo(std::int64_t table) const;  // foreign keys that reference it
    std::vector<ObjectInfo> triggersOf(std::int64_t table) const;
    bool hasTriggers() const;
    std::int64_t lastId() const;

    // Inserts an object whose id is 0 and sets its id, or updates an existing object.
    void save(ObjectInfo& object);
    void remove(std::int64_t object);  // with its columns, keys and indexes
    // As save(), for columns.
    void saveColumns(std::int64_t object, const std::vector<TableColumn>& columns);
    void removeColumns(std::int64_t object, std::string_view name = {});  // all, or one

  private:
    std::vector<ObjectInfo> objects(const std::string& where, const Value& value) const;
    std::optional<ObjectInfo> latest(const std::string& where, const Value& value) const;
    void run(std::string_view sql, std::span<const Value> values = {});

    Connection& m_connection;
    std::string m_database;
    std::string m_schema;
};

}  // namespace tsql
