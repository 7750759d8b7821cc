// What a database knows of its tables, procedures and functions, kept in two tables of its SQLite file
// (for #tables: of the connection's temporary schema).
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
    std::string byDefault = {};  // T-SQL text of the DEFAULT, empty without one
    bool output = false;         // of a procedure's parameter
};

struct TableInfo {
    std::int64_t id = 0;
    std::string database;  // as a message names it
    std::string name;
    std::string schema;     // of SQLite, quoted
    std::string stored;     // the table's name in SQLite
    std::int64_t seed = 1;  // of the identity
    std::vector<TableColumn> columns;

    std::string sqlName() const { return schema + "." + quotedName(stored); }
    std::string fullName() const { return database + ".dbo." + name; }
    const TableColumn* column(std::string_view columnName) const;
    const TableColumn* identityColumn() const;
};

// Object types as sysobjects.xtype has them.
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
    std::int64_t parent = 0;                // the table that a constraint or an index belongs to
    std::string stored = {};                // a table: its name in SQLite; a foreign key: what it refers to
    std::vector<std::string> columns = {};  // of a constraint or an index
    std::string source = {};                // a module's text; Constraint::source; kUniqueIndex
    std::string table = {};                 // the parent's name
    std::int64_t seed = 1;                  // of a table's identity
};
std::string listOf(const std::vector<std::string>& names);  // "a, b"
inline constexpr std::string_view kUniqueIndex = "UNIQUE";
inline bool isUniqueKey(const ObjectInfo& key) {
    return key.type == objectType::kPrimaryKey || key.type == objectType::kUnique ||
           key.source == kUniqueIndex;
}

inline constexpr std::string_view kCollationName = "SQL_Latin1_General_CP1_CI_AS";
inline constexpr std::string_view kTempSchema = "temp";
inline constexpr std::string_view kNullsSuffix = "@nulls";  // of the index of a unique key's rows with NULL
// #table, or the variable @table.
inline bool isTemporaryName(std::string_view name) {
    return name.starts_with('#') || name.starts_with('@');
}

// The catalogue of one attached database, or of the temporary tables.
class Catalogue {
  public:
    // `schema`: quoted, or kTempSchema. Makes the catalogue's tables when they are missing.
    Catalogue(Connection& connection, std::string database, std::string schema);

    const std::string& schema() const { return m_schema; }
    bool isTemporary() const { return m_schema == kTempSchema; }
    // The latest object of that name that is no index.
    std::optional<ObjectInfo> find(std::string_view name) const;
    std::optional<ObjectInfo> findById(std::int64_t id) const;
    std::optional<TableInfo> table(std::string_view name) const;
    std::vector<TableColumn> columns(std::int64_t object) const;
    std::vector<ObjectInfo> keysOf(std::int64_t table) const;      // constraints and indexes
    std::vector<ObjectInfo> keysTo(std::string_view table) const;  // foreign keys that refer to it
    std::int64_t lastId() const;

    // Enters a new object (then with a new id) or what has changed of a known one.
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
