// What a database knows of its tables, procedures and functions, kept in two tables of its SQLite file
// (for #tables: of the connection's temporary schema).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Connection.h"

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

struct ObjectInfo {
    std::int64_t id = 0;
    std::string name;
    std::string type;
    std::string source;  // a module's text
};

// A constraint or an index of a table.
struct KeyInfo {
    std::int64_t id = 0;
    std::string name;
    std::string type;
    std::string columns;     // "a, b"
    std::string source;      // as Constraint::source, empty for an index
    std::string references;  // the table of a foreign key
    std::string table;       // whose it is
};

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
    std::optional<ObjectInfo> find(std::string_view name) const;
    std::optional<ObjectInfo> findById(std::int64_t id) const;
    std::optional<TableInfo> table(std::string_view name) const;
    std::vector<TableColumn> columns(std::int64_t object) const;
    std::optional<KeyInfo> key(std::string_view storedTable, std::string_view columns) const;
    std::vector<KeyInfo> keysOfType(std::string_view storedTable, std::string_view type) const;
    std::vector<KeyInfo> keysOf(std::int64_t table) const;
    std::vector<KeyInfo> keysTo(std::string_view table) const;  // foreign keys that refer to it
    std::optional<ObjectInfo> index(std::int64_t table, std::string_view name) const;

    // `detail`: a table's name in SQLite (empty: its own), an index's columns, a module's source.
    std::int64_t add(std::string_view name, std::string_view type, std::int64_t parent,
                     std::string_view detail);
    void setStored(std::int64_t object, std::string_view stored);  // of a foreign key: what it refers to
    void setSource(std::int64_t object, std::string_view source);
    void setSeed(std::int64_t table, std::int64_t seed);
    void setColumn(std::int64_t object, const TableColumn& column);
    void addColumns(std::int64_t object, const std::vector<TableColumn>& columns);
    void removeColumn(std::int64_t object, std::string_view name);
    void removeColumns(std::int64_t object);
    void remove(std::int64_t object);  // with its columns, keys and indexes
    std::int64_t lastId() const;
    std::vector<TableInfo> tablesAfter(std::int64_t id) const;

  private:
    std::optional<ObjectInfo> findObject(const std::string& where, const Value& value) const;
    std::vector<KeyInfo> keys(const std::string& where, std::span<const Value> values) const;

    Connection& m_connection;
    std::string m_database;
    std::string m_schema;
};

// Views of the system (sysobjects, sys.tables, INFORMATION_SCHEMA.COLUMNS ...): a query over the catalogue.
struct SystemView {
    std::string sql;
    std::vector<TableColumn> columns;
};
std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage);
// 1 master, 2 tempdb, 3 model, 4 msdb, then the others by name; nothing for an unknown one.
std::optional<int> databaseId(const Storage& storage, std::string_view name);

}  // namespace tsql
