// Catalogue of a database: its tables, modules, constraints and indexes, stored in two tables of its SQLite
// file. The catalogue of #tables is in the temporary schema of the connection.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/Connection.h"

namespace tsql {

struct TableColumn {
    std::string name;
    SqlType type;
    bool nullable = true;
    bool identity = false;
    std::string byDefault = {};  // T-SQL text of the DEFAULT; empty: none
    bool output = false;         // OUTPUT parameter of a procedure
};

struct TableInfo {
    std::int64_t id = 0;
    std::string database;  // as named in messages
    std::string name;
    std::string schema;     // in SQLite, quoted
    std::string stored;     // name in SQLite
    std::int64_t seed = 1;  // of the identity
    std::vector<TableColumn> columns;

    std::string sqlName() const { return schema + "." + quotedName(stored); }
    std::string fullName() const { return database + ".dbo." + name; }
    const TableColumn* column(std::string_view columnName) const;
    const TableColumn* identityColumn() const;
};

// Object types, with the values of sysobjects.xtype.
namespace objectType {
inline constexpr std::string_view kTable = "U", kView = "V", kProcedure = "P", kFunction = "FN",
                                  kTableFunction = "IF", kPrimaryKey = "PK", kUnique = "UQ",
                                  kForeignKey = "F", kCheck = "C", kDefault = "D", kIndex = "IX";
}

// A row of the catalogue: a table, a module, a constraint or an index.
struct ObjectInfo {
    std::int64_t id = 0;  // 0: not in the catalogue yet
    std::string name;
    std::string type;
    std::int64_t parent = 0;  // table of a constraint or index
    std::string stored = {};  // name of a table in SQLite; table of a foreign key; filter of an index
    std::vector<std::string> columns = {};  // of a constraint or index
    std::string source = {};                // text of a module; Constraint::source; kUniqueIndex
    std::string table = {};                 // name of the parent
    std::int64_t seed = 1;                  // of a table's identity
};
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
    // Returns the newest object of that name that is not an index.
    std::optional<ObjectInfo> find(std::string_view name) const;
    std::optional<ObjectInfo> findById(std::int64_t id) const;
    std::optional<TableInfo> table(std::string_view name) const;
    std::vector<TableColumn> columns(std::int64_t object) const;
    // Returns the name of the column with that column_id, or NULL.
    Value columnName(std::int64_t object, std::int64_t id) const;
    std::vector<ObjectInfo> keysOf(std::int64_t table) const;      // constraints and indexes
    std::vector<ObjectInfo> keysTo(std::string_view table) const;  // foreign keys that reference it
    std::int64_t lastId() const;

    // Inserts an object whose id is 0 and sets its id, or updates an existing object.
    void save(ObjectInfo& object);
    void remove(std::int64_t object);  // with its columns, keys and indexes
    void addColumns(std::int64_t object, const std::vector<TableColumn>& columns);
    void changeColumn(std::int64_t object, const TableColumn& column);
    void removeColumns(std::int64_t object, std::string_view name = {});  // all, or one

  private:
    std::vector<ObjectInfo> objects(const std::string& where, const Value& value) const;
    std::optional<ObjectInfo> latest(const std::string& where, const Value& value) const;
    TableInfo tableOf(const ObjectInfo& object) const;
    void run(std::string_view sql, std::span<const Value> values = {});

    Connection& m_connection;
    std::string m_database;
    std::string m_schema;
};

}  // namespace tsql
