#include "catalogue/Constraints.h"

#include <boost/algorithm/string/erase.hpp>

#include "syntax/Parser.h"

namespace tsql {

std::vector<std::string> referencedColumns(const Catalogue& catalogue, const ObjectInfo& key) {
    const auto referenced = catalogue.table(key.stored);
    if (!referenced) throw sqlError(kReferencedTableUnknown, {key.name, shownName(key.stored)});
    auto columns = parseConstraint(key.source).referencedColumns;
    for (const auto& name : columns)
        if (!referenced->column(name))
            throw sqlError(kReferencedColumnUnknown, {key.name, name, shownName(key.stored)});
    const bool implicit = columns.empty();
    const auto candidates = catalogue.keysOf(referenced->id);
    const auto fitting = std::ranges::find_if(candidates, [&](const ObjectInfo& candidate) {
        return implicit ? candidate.type == kPrimaryKey
                        : isUniqueKey(candidate) && candidate.stored.empty() &&
                              std::ranges::is_permutation(candidate.columns, columns, sameText);
    });
    if (fitting == candidates.end())
        throw implicit ? sqlError(kReferencedTableWithoutPrimaryKey, {key.name, shownName(key.stored)})
                       : sqlError(kNoReferencedKey, {shownName(key.stored), key.name});
    if (implicit) columns = fitting->columns;
    const auto& own = key.columns;
    if (own.size() != columns.size())
        throw sqlError(kReferencedColumnCountDiffers, {key.name, shownName(key.stored)});
    const TableInfo table = *catalogue.table(key.table);
    for (std::size_t i = 0; i < own.size(); ++i) {
        const SqlType &from = table.column(own[i])->type, &to = referenced->column(columns[i])->type;
        if (from == to) continue;
        throw sqlError(from.id == to.id ? kReferencedColumnLengthDiffers : kReferencedColumnTypeDiffers,
                       {referenced->name, columns[i], table.name, own[i], key.name});
    }
    return columns;
}

// A key with NULL references nothing. Comparing the key with itself excludes it.
std::string orphans(const Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key,
                    const std::string& rows) {
    const std::string own = "(" + quotedNames(key.columns, rows + ".") + ")";
    return own + " = " + own + " AND NOT EXISTS (SELECT 1 FROM " + table.schema + "." +
           quotedName(key.stored) + " AS parent WHERE (" +
           quotedNames(referencedColumns(catalogue, key), "parent.") + ") = " + own + ")";
}

bool anyRow(Connection& connection, const TableInfo& table, const std::string& condition) {
    return connection.number("SELECT 1 FROM " + table.sqlName() + " WHERE " + condition).has_value();
}

SqlError conflict(std::string_view verb, std::string_view type, const TableInfo& table,
                  const ObjectInfo& key) {
    return sqlError(
        kConstraintConflict,
        {verb, type, key.name.empty() ? "" : " \"" + key.name + "\"", table.database, table.qualifiedName(),
         key.columns.size() == 1 ? ", column '" + key.columns.front() + "'" : ""});
}

// The message names the referenced columns.
SqlError foreignKeyConflict(std::string_view verb, const Catalogue& catalogue, const ObjectInfo& key) {
    ObjectInfo named = key;
    named.columns = referencedColumns(catalogue, key);
    const char* const type = sameText(key.table, key.stored) ? "FOREIGN KEY SAME TABLE" : "FOREIGN KEY";
    return conflict(verb, type, *catalogue.table(key.stored), named);
}

std::string duplicateValue(Connection& connection, const RowChange& change, const ObjectInfo& key) {
    if (!key.stored.empty()) return {};  // the rows that the filter leaves out are not known here
    std::string match;
    for (const auto& name : key.columns) {
        if (!change.target.column(name) || change.newRows.empty()) return {};
        match += " AND present." + quotedName(name) + " IS incoming." + quotedName(name);
    }
    const std::string list = quotedNames(key.columns);
    try {
        PreparedStatement query(
            connection,
            "WITH " + change.newRows + " SELECT " + list + " FROM incoming WHERE EXISTS (SELECT 1 FROM " +
                change.target.sqlName() + " AS present WHERE present._rowid_ IS NOT incoming.ts_row" + match +
                ") UNION ALL SELECT " + list + " FROM incoming GROUP BY " + list + " HAVING count(*) > 1",
            change.values);
        if (!query.step()) return {};
        const auto value = [&, i = 0](const std::string& name) mutable {
            const CellView cell = query.cell(i++);
            return isNull(cell) ? "<NULL>" : textOf(cell, change.target.column(name)->type);
        };
        return " The duplicate key value is (" + commaList(key.columns, value) + ").";
    } catch (const SqliteFailure&) {  // the new rows lack a column of the key
        return {};
    }
}

namespace {

// SQLite does not report which foreign key failed: one that a new row violates, or one to this table.
SqlError brokenReference(Connection& connection, const Catalogue& catalogue, const RowChange& change) {
    for (const auto& key : catalogue.keysOf(change.target.id)) {
        if (change.newRows.empty() || key.type != kForeignKey || isDisabled(key)) continue;
        const std::string broken = "WITH " + change.newRows + " SELECT 1 FROM incoming WHERE " +
                                   orphans(catalogue, change.target, key, "incoming");
        if (connection.number(broken, change.values))
            return foreignKeyConflict(change.statement(), catalogue, key);
    }
    auto others = catalogue.keysTo(change.target.id);
    const auto onChange = change.verb == "DELETE" ? &Constraint::onDelete : &Constraint::onUpdate;
    std::erase_if(others, [&](const ObjectInfo& key) {  // no row prevents the change; NULL references nothing
        const std::string own = "(" + quotedNames(key.columns) + ")";
        const std::string action = parseConstraint(key.source).*onChange;
        return (action != kNoAction && action != "SET DEFAULT") || isDisabled(key) ||
               !anyRow(connection, *catalogue.table(key.table), own + " = " + own);
    });
    if (others.size() != 1) return conflict(change.statement(), "REFERENCE", change.target, {});
    const ObjectInfo& key = others.front();
    if (parseConstraint(key.source).*onChange != kNoAction)
        return foreignKeyConflict(change.statement(), catalogue, key);
    const char* const type = sameText(key.table, key.stored) ? "SAME TABLE REFERENCE" : "REFERENCE";
    return conflict(change.statement(), type, *catalogue.table(key.table), key);
}

// columns: "t.a, t.b", or "index 'name@id'" of a filter, "index 'name@id@nulls'" of the rows with NULL.
SqlError duplicateKey(Connection& connection, const Catalogue& catalogue, const RowChange& change,
                      std::string columns) {
    const TableInfo& target = change.target;
    boost::erase_all(columns, target.stored + ".");
    for (const auto& key : catalogue.keysOf(target.id)) {
        const std::string index = "index '" + key.name + "@" + std::to_string(target.id);
        const bool isNamed = columns == index + "'" || columns == index + std::string(kNullsSuffix) + "'";
        const bool isMeant = isNamed || (key.stored.empty() && sameText(commaList(key.columns), columns));
        if (!isUniqueKey(key) || !isMeant) continue;
        const std::string value = duplicateValue(connection, change, key);
        if (key.type == kIndex)
            return sqlError(kDuplicateKeyInIndex, {target.qualifiedName(), key.name, value});
        const char* const kind = key.type == kPrimaryKey ? "PRIMARY" : "UNIQUE";
        return sqlError(kDuplicateKey, {kind, key.name, target.qualifiedName(), value});
    }
    return sqlError(kDuplicateKey, {"UNIQUE", columns, target.qualifiedName(), ""});
}

}  // namespace

// Messages of SQLite are "UNIQUE constraint failed: t.a, t.b", "CHECK constraint failed: name".
SqlError brokenConstraint(Connection& connection, const RowChange& change, const SqliteFailure& failure) {
    const TableInfo& target = change.target;
    const Catalogue catalogue(connection, target.database, target.schema);
    const std::string text = failure.what();
    const std::string what = text.substr(std::min(text.size(), text.find(": ") + 2));
    switch (failure.code) {
        case SQLITE_CONSTRAINT_NOTNULL:
            return sqlError(kNullInColumn,
                            {what.substr(what.rfind('.') + 1),
                             target.name.front() == '@' ? target.name : target.fullName(), change.verb});
        case SQLITE_CONSTRAINT_CHECK:
            for (const auto& key : catalogue.keysOf(target.id))
                if (key.name == what) return conflict(change.statement(), "CHECK", target, key);
            return conflict(change.statement(), "CHECK", target, {});
        case SQLITE_CONSTRAINT_FOREIGNKEY:
            return brokenReference(connection, catalogue, change);
        default:
            return duplicateKey(connection, catalogue, change, what);
    }
}

}  // namespace tsql
