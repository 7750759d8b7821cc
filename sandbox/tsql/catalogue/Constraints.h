// What constraints ask of rows, and the errors of those that break them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "messages/SqlError.h"

namespace tsql {

// A change of rows that runs.
struct RowChange {
    TableInfo target;
    std::string verb;           // INSERT, UPDATE, DELETE; empty: none runs
    std::string newRows;        // as Translator::newRows()
    std::vector<Value> values;  // of the parameters in it
};

// Of the table that the foreign key refers to. Throws the error of a key that cannot be (1767 and others).
std::vector<std::string> referencedColumns(const Catalogue& catalogue, const ObjectInfo& key);
// The condition that a row of `rows` refers to none: SQL over the key's table or the rows that were to come.
std::string orphans(const Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key,
                    const std::string& rows);
bool anyRow(Connection& connection, const TableInfo& table, const std::string& condition);

// Error 547. `type`: CHECK, REFERENCE ...; `key` without a name: which it was is not known.
SqlError conflict(std::string_view verb, std::string_view type, const TableInfo& table,
                  const ObjectInfo& key);
SqlError foreignKeyConflict(std::string_view verb, const Catalogue& catalogue, const ObjectInfo& key);

// The constraint on which a change of rows has failed, found out by what SQLite says and by asking the rows.
class BrokenConstraint {
  public:
    BrokenConstraint(Connection& connection, const RowChange& change)
        : m_connection(connection),
          m_change(change),
          m_catalogue(connection, change.target.database, change.target.schema) {}

    // For a failure of the kind SQLITE_CONSTRAINT.
    SqlError error(const SqliteFailure& failure) const;
    // " The duplicate key value is (1, x).", looked for among the rows that were to come; empty when it is
    // not found.
    std::string duplicateValue(const ObjectInfo& key) const;

  private:
    SqlError conflictWith(std::string_view type, const ObjectInfo& key) const;
    SqlError duplicateKey(std::string columns) const;
    SqlError brokenReference() const;
    bool isReferred(const ObjectInfo& key) const;

    Connection& m_connection;
    const RowChange& m_change;
    Catalogue m_catalogue;
};

}  // namespace tsql
