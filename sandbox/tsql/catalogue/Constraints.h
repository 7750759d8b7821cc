// Checks of constraints on rows, and the errors of violations.
#pragma once

#include "catalogue/Catalogue.h"

namespace tsql {

// The INSERT, UPDATE or DELETE that is being executed.
struct RowChange {
    TableInfo target;
    std::string verb;           // INSERT, UPDATE, DELETE; empty: none
    std::string newRows;        // as Translator::newRows()
    std::vector<Value> values;  // of the parameters in newRows
    bool merges = false;        // it is part of a MERGE, which most messages name
    std::string_view statement() const { return merges ? std::string_view("MERGE") : verb; }
};

// Returns the columns that a foreign key references. Throws SqlError 1767 and others for an impossible key.
std::vector<std::string> referencedColumns(const Catalogue& catalogue, const ObjectInfo& key);
// SQL condition for rows whose foreign key references no row. rows: the key's table, or its new rows.
std::string orphans(const Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key,
                    const std::string& rows);
bool anyRow(Connection& connection, const TableInfo& table, const std::string& condition);

// Returns error 547. type: CHECK, REFERENCE ...; `key` has no name if the constraint is not known.
SqlError conflict(std::string_view verb, std::string_view type, const TableInfo& table,
                  const ObjectInfo& key);
SqlError foreignKeyConflict(std::string_view verb, const Catalogue& catalogue, const ObjectInfo& key);

// Returns the T-SQL error for a failure of the kind SQLITE_CONSTRAINT. Finds the constraint that the change
// violates from SQLite's message and from the rows.
SqlError brokenConstraint(Connection& connection, const RowChange& change, const SqliteFailure& failure);
// Returns " The duplicate key value is (1, x)." for a value among the new rows; empty if none is found.
std::string duplicateValue(Connection& connection, const RowChange& change, const ObjectInfo& key);

}  // namespace tsql
