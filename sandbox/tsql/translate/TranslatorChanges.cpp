#include "syntax/Parser.h"
#include "translate/Translator.h"

namespace tsql {

namespace {

// Throws SqlError 273 for columns whose values are given.
void refuseRowVersions(const ColumnList& columns) {
    if (std::ranges::any_of(columns, &TableColumn::isRowVersion)) throw sqlError(kRowVersionInsert);
}

// Returns `columns` and the other columns that have defaults.
ColumnList filledColumns(const TableInfo& target, const ColumnList& columns) {
    ColumnList filled = columns;
    for (const auto& column : target.columns) {
        const bool isFilled = !column.byDefault.empty() || (column.identity && !target.isCountedBySqlite()) ||
                              (column.isRowVersion() && !target.isShadow);
        if (isFilled && std::ranges::find(columns, &column) == columns.end()) filled.push_back(&column);
    }
    return filled;
}

// Without a column list, values are expected for all columns but the identity.
void checkCount(const TableInfo& target, const ColumnList& columns, const Insert& insert, std::size_t given) {
    if (given == columns.size()) return;
    const bool more = given > columns.size(), all = insert.query ? more : given == target.columns.size();
    if (insert.columns.empty() && all && target.identityColumn())
        throw sqlError(kIdentityValueNeedsColumnList, {target.name});
    if (insert.columns.empty()) throw sqlError(kColumnCountMismatch);
    if (insert.query) throw sqlError(more ? kMoreSelectedThanInserted : kFewerSelectedThanInserted);
    throw sqlError(more ? kFewerInsertColumnsThanValues : kMoreInsertColumnsThanValues);
}

// Gives the values of each column their common type, as UNION ALL does. Defaults keep theirs.
void unifyTypes(const Insert& insert, std::vector<std::vector<Typed>>& rows) {
    for (std::size_t i = 0; rows.size() > 1 && i < insert.rows.front().size(); ++i) {
        std::vector<Typed> given;
        for (std::size_t row = 0; row < rows.size(); ++row)
            if (insert.rows[row][i]) given.push_back(rows[row][i]);
        const SqlType type = commonType(given);
        for (std::size_t row = 0; row < rows.size(); ++row)
            if (insert.rows[row][i]) rows[row][i] = coerce(rows[row][i], type);
    }
}

}  // namespace

// The values of a MERGE are computed when other clauses may have changed the table.
std::string Translator::assigned(const Typed& value, const TableInfo& target, const TableColumn& column) {
    const bool reads =
        value.sql.find("SELECT ") != value.sql.npos || value.sql.find("ts_call(") != value.sql.npos;
    if (m_clause && reads && m_merge->clauses.size() > 1)
        throw unsupported("a subquery or function among the values of a MERGE with several clauses");
    return emitAssign(value, column.type, target.fullName(), column.name).sql;
}

Typed Translator::defaultOf(const TableInfo& target, const TableColumn& column) {
    const auto next = [&](std::string_view counter, std::int64_t step) {
        return "ts_next_identity(" + quotedText(target.schema) + ", " + quotedText(counter) + ", " +
               std::to_string(step) + ")";
    };
    if (column.isRowVersion()) return {next(kRowVersions, 1), simpleType(TypeId::BigInt)};
    if (column.identity) return emitIdentity(next(target.stored, target.increment), column.type);
    return column.byDefault.empty() ? nullLiteral() : value(*parseExpression(column.byDefault));
}

// Constants in VALUES become parameters, so that rows with other values reuse the prepared statement.
Typed Translator::cell(const Expr& expr) {
    constexpr std::size_t kMostParameters = 1000;  // SQLite accepts 32,766
    const auto* literal = std::get_if<Literal>(&expr.node);
    if (!literal || isNull(literal->constant.value) || m_parameters.size() >= kMostParameters)
        return value(expr);
    m_parameters.push_back({{}, &literal->constant.value});
    return typedConstant("?" + std::to_string(m_parameters.size()), literal->constant);
}

std::string Translator::rowText(const TableInfo& target, const ColumnList& columns, Pieces cells) {
    std::string row;
    for (std::size_t i = 0; i < columns.size(); ++i)
        row += (i ? ", " : "") +
               assigned(i < cells.size() ? cells[i] : defaultOf(target, *columns[i]), target, *columns[i]);
    return row;
}

std::string Translator::insertText(const TableInfo& target, const ColumnList& columns,
                                   const std::string& rows) {
    const std::string names = commaList(columns, [](auto* column) { return quotedName(column->name); });
    m_newRows = "given(" + names + ") AS (" + rows + "), incoming AS (SELECT *, NULL AS ts_row FROM given)";
    return "INSERT INTO " + target.sqlName() + " (" + names + ") " + rows;
}

std::string Translator::insertRows(const TableInfo& target, const ColumnList& columns, const Insert& insert) {
    const ColumnList all = filledColumns(target, columns);
    if (all.empty())
        return "INSERT INTO " + target.sqlName() + " DEFAULT VALUES" +
               returning(target, insert.output, "inserted");
    Scope scope;
    const Temporarily visible(m_scope, m_clause ? &scope : m_scope);
    const std::string merged = m_clause ? mergedRows() : "";
    std::vector<std::vector<Typed>> given;
    for (const auto& row : insert.rows) {
        checkCount(target, columns, insert, row.size());
        auto& cells = given.emplace_back();
        m_sequences.clear();
        for (const auto& each : row) {
            if (each) refuseRowVersions({columns[cells.size()]});
            cells.push_back(each ? cell(*each) : defaultOf(target, *columns[cells.size()]));
        }
        while (cells.size() < all.size()) cells.push_back(defaultOf(target, *all[cells.size()]));
    }
    unifyTypes(insert, given);
    std::string rows = insert.defaultValues ? "VALUES (" + rowText(target, all, {}) + ")" : "";
    for (const auto& cells : given) {
        const std::string values = rowText(target, all, cells);
        rows += m_clause ? "SELECT " + values + merged : (rows.empty() ? "VALUES (" : ", (") + values + ")";
    }
    if (scope.sawAggregate) throw unsupported("an aggregate in the INSERT of MERGE");
    if (insert.top) rows = limited(rows, insert.top);
    return insertText(target, all, rows) + returning(target, insert.output, "inserted");
}

std::string Translator::change(const TableInfo& target, const Insert& insert, const ColumnList& columns) {
    useCommonTables(insert);
    if (!insert.query) return insertRows(target, columns, insert);
    refuseRowVersions(columns);
    const QueryText text = query(*insert.query);
    checkCount(target, columns, insert, text.columns.size());
    return insertSelected(target, columns, text, insert.top) + returning(target, insert.output, "inserted");
}

std::string Translator::insertSelected(const TableInfo& target, const ColumnList& columns,
                                       const QueryText& text, const ExprPtr& top) {
    std::vector<Typed> cells;
    for (const auto& output : text.columns)
        if (!output.newIdentity || target.isCountedBySqlite()) cells.push_back(output.typed());
    const ColumnList all = filledColumns(target, columns);
    return insertText(target, all,
                      "SELECT " + rowText(target, all, cells) + " FROM (" + limited(text.sql, top) + ")");
}

std::string Translator::insertParameters(const TableInfo& target, const ColumnList& columns,
                                         const std::vector<TypedValue>& row) {
    refuseRowVersions(columns);
    std::vector<Typed> cells;
    for (const auto& each : row) cells.push_back({"?" + std::to_string(cells.size() + 1), each.type});
    const ColumnList all = filledColumns(target, columns);
    return insertText(target, all, "VALUES (" + rowText(target, all, cells) + ")");
}

void Translator::useCommonTables(const Change& change) {
    m_topLevel = false;
    if (change.maxRecursion) m_maxRecursion = *change.maxRecursion;
    for (const auto& table : change.with) m_with.push_back({&table});
}

std::string Translator::returning(const TableInfo& target, const std::optional<Output>& output,
                                  const std::string& exposed, const std::string& record) {
    if (!output) return {};
    if (std::ranges::count(target.shown, "", &Column::own) > 0)
        throw unsupported("OUTPUT of a change through a query with expressions");
    const Temporarily clause(m_nextValue, kNextValueInClause);
    Scope scope;
    const Temporarily inner(m_scope, &scope);
    addSource(target, exposed, {});
    if (!record.empty()) {
        addSource(target, "deleted", {});
        for (auto& source : scope.sources)
            for (auto& column : source.columns) {
                column.sql.insert(1, source.exposed == "deleted" ? "old " : "new ");  // within the quotes
                column.nullable = column.nullable || m_merge;
            }
    }
    if (m_merge) {
        std::ranges::copy(m_merged, std::back_inserter(scope.sources));
        scope.sources.emplace_back().columns = {{{"$action", nvarcharType(10), false, false}, "action"}};
    }
    std::string list;
    for (const auto& item : output->items) {
        if (!item.variable.empty()) throw unsupported("a variable in the OUTPUT clause");
        if (item.identity) throw sqlError(kIdentityWithoutInto);
        selectItem(item, m_output, list, /*collate=*/false);
    }
    if (record.empty()) return " RETURNING " + list;
    m_output.sql = "SELECT " + list + " FROM " + record;
    m_isLasting = false;  // the next record has another name
    return {};
}

// RETURNING for SET @variable = column = value: the variable gets the new value of the column.
std::string Translator::returnedToVariables(const TableInfo& target, const Update& update) {
    std::string list;
    for (const auto& clause : update.sets) {
        if (clause.variable.empty()) continue;
        const bool read = std::ranges::any_of(
            m_parameters, [&](const Parameter& each) { return sameWord(each.variable, clause.variable); });
        if (update.output || read)
            throw unsupported(
                "UPDATE ... SET @variable = column with OUTPUT or with the variable's own value");
        const TableColumn& column = *target.changedColumn(clause.column);
        list += (list.empty() ? " RETURNING " : ", ") + quotedName(column.name);
        m_assignments.push_back({clause.variable, column.type});
    }
    return list;
}

// Returns the FROM clause of a change, and the changed table in it.
std::pair<std::string, const Source*> Translator::joinedSources(const TableInfo& target,
                                                                const Change& change) {
    m_through = target.through;
    const ObjectName name = m_clause ? ObjectName{{}, {}, m_merge->alias} : change.table;
    std::string sql = m_clause ? mergedRows() : from(change.from);
    std::vector<const Source*> found;  // the table under an alias: changed if it occurs only once
    for (const auto& source : m_scope->sources) {
        const bool isNamedSo = sameText(source.exposed, name.name);
        const bool isTarget = source.table == (target.through.empty() ? target.sqlName() : target.through);
        if (isNamedSo && !isTarget && name.schema.empty()) throw sqlError(kAmbiguousTable, {name.name});
        if (isTarget) found.insert(isNamedSo ? found.begin() : found.end(), &source);
    }
    if (found.size() > 1 && !sameText(found.front()->exposed, name.name))
        throw sqlError(kAmbiguousTable, {name.name});
    if (!found.empty()) return {sql, found.front()};
    sql += sql.empty() ? " FROM " : ", ";
    sql += namedTable({m_clause ? m_merge->table : name}, name.name, /*applied=*/false);
    const Source& added = m_scope->sources.back();
    return {m_clause ? sql + " ON merged.id = " + added.rowid : sql, &added};
}

// Value of SET column = value, or column += value, where `source` is the changed table.
Typed Translator::assignedValue(const TableInfo& target, const Source& source, const SetClause& clause) {
    const bool isTarget =
        clause.table.empty() || sameText(clause.table, target.name) || sameText(clause.table, source.exposed);
    if (!isTarget) throw sqlError(kUnboundIdentifier, {clause.table + "." + clause.column});
    const TableColumn* column = target.changedColumn(clause.column);
    if (!column) throw sqlError(kInvalidColumnName, {clause.column});
    if (column->identity) throw sqlError(kIdentityUpdate, {column->name});
    if (!column->computed.empty()) throw sqlError(kComputedColumnChanged, {column->name});
    if (column->isRowVersion()) throw sqlError(kRowVersionUpdate);
    if (clause.value && !clause.op) return cell(*clause.value);
    const Typed next = clause.value ? value(*clause.value) : defaultOf({}, *column);
    if (!clause.op) return next;
    const auto present = std::ranges::find(source.columns, column->name, &SourceColumn::own);
    return emitBinary(*clause.op, {present->sql, column->type}, next);
}

std::string Translator::change(const TableInfo& target, const Update& update, const std::string& record) {
    useCommonTables(update);
    Scope scope;
    const Temporarily inner(m_scope, &scope);
    const auto [sources, source] = joinedSources(target, update);
    std::string picked, sets, away, kept;
    std::map<const TableColumn*, std::string> names;  // of the values
    const auto assign = [&](const TableColumn& column, const Typed& given) {
        const std::string alias = "v" + std::to_string(names.size());
        if (!names.emplace(&column, alias).second) throw sqlError(kColumnSetTwice, {column.name});
        picked += ", " + assigned(given, target, column) + " AS " + alias;
        const std::string set = (sets.empty() ? "" : ", ") + quotedName(column.name) + " = ";
        sets.append(set).append("picked.").append(alias);
        away.append(set).append("CAST('tsqlbox ' || _rowid_ AS BLOB)");
    };
    for (const auto& clause : update.sets) {
        const Typed given = assignedValue(target, *source, clause);
        assign(*target.changedColumn(clause.column), given);
    }
    for (const auto& column : target.columns)
        if (column.isRowVersion() && !target.isShadow) assign(column, defaultOf(target, column));
    if (scope.sawAggregate) throw sqlError(kAggregateInSetList);
    const std::string rows = "SELECT " + source->rowid + " AS id" + picked + sources + filter(update);
    const std::string returned =
        returning(target, update.output, "inserted", record) + returnedToVariables(target, update);
    for (const auto& column : target.columns) {
        const auto value = names.find(&column);
        const std::string name = quotedName(column.name);
        kept += ", " + (value == names.end() ? "present." + name : "given." + value->second) + " AS " + name;
    }
    m_newRows = "given AS (" + rows + "), incoming AS (SELECT given.id AS ts_row" + kept +
                " FROM given JOIN " + target.sqlName() + " AS present ON present._rowid_ = given.id)";
    const std::string changed = "UPDATE " + target.sqlName() + " AS changed SET " + sets + " FROM ";
    const std::string joined = " AS picked WHERE changed._rowid_ = picked.id" + returned;
    m_steps = {"CREATE TEMP TABLE tsqlbox_picked AS " + rows,
               "UPDATE " + target.sqlName() + " SET " + away +
                   " WHERE _rowid_ IN (SELECT id FROM temp.tsqlbox_picked)",
               changed + "temp.tsqlbox_picked" + joined, "DROP TABLE temp.tsqlbox_picked"};
    return changed + "(" + rows + ")" + joined;
}

std::string Translator::filter(const Change& change) {
    const Temporarily clause(m_nextValue, kNextValueInClause);
    const std::string rows = where(change.where, /*binds=*/true);
    return rows + changeLimit(change.top);
}

std::string Translator::change(const TableInfo& target, const Delete& statement) {
    useCommonTables(statement);
    Scope scope;
    const Temporarily inner(m_scope, &scope);
    const auto [sources, source] = joinedSources(target, statement);
    const std::string rows = "SELECT " + source->rowid + sources + filter(statement);
    return "DELETE FROM " + target.sqlName() + " WHERE _rowid_ IN (" + rows + ")" +
           returning(target, statement.output, "deleted");
}

std::string Translator::merge(const TableInfo& target, const Merge& merge) {
    useCommonTables(merge);
    m_merge = &merge;
    Scope scope;
    m_scope = &scope;
    const auto clauseOf = [&](std::string_view rows) {
        std::string sql = "CASE WHEN 0 THEN 0";
        for (std::size_t i = 0; i < merge.clauses.size(); ++i)
            if (const auto& [those, test, change] = merge.clauses[i]; those == rows)
                sql += " WHEN " + (test ? condition(*test) : "1") + " THEN " + std::to_string(i + 1);
        return sql + " END";
    };
    const std::string source = from(merge.source);
    m_through = target.through;
    const std::string changed = namedTable({merge.table}, merge.alias, /*applied=*/false);
    const std::string id = scope.sources.back().rowid;
    const std::string on = condition(*merge.where), clauseOfBoth = clauseOf(kMatchedRows);
    scope.firstSource = scope.sources.size() - 1;  // a condition sees only the tables that have the row
    const std::string clauseOfOld = clauseOf(kOldRows);
    scope.firstSource = 0;
    scope.sources.pop_back();
    const std::string clauseOfNew = clauseOf(kNewRows);
    if (scope.sawAggregate) throw sqlError(kAggregateInWhere);
    m_scope = nullptr;
    m_merged = std::move(scope.sources);
    std::string columns;
    for (auto& each : m_merged) {
        each.rowid = each.table = "";
        for (auto& column : each.columns) {
            const std::string name = "c" + std::to_string(columns.size());
            columns += ", " + std::exchange(column.sql, "merged." + name) + " AS " + name;
            column.nullable = true;
        }
    }
    const bool hasOld = std::ranges::count(merge.clauses, kOldRows, &MergeClause::rows) > 0;
    return "CREATE TEMP TABLE tsqlbox_merged AS SELECT " + id + " AS id, CASE WHEN " + id + " IS NULL THEN " +
           clauseOfNew + " WHEN given.yes THEN " + clauseOfBoth + " ELSE " + clauseOfOld + " END AS clause" +
           columns + source + " CROSS JOIN (SELECT 1 AS yes) AS given" + (hasOld ? " FULL" : " LEFT") +
           " JOIN " + changed + " ON " + on + " ORDER BY 1, 2 DESC";
}

// FROM clause with the rows that the clause of a MERGE changes.
std::string Translator::mergedRows() {
    if (m_clause->rows != kOldRows) m_scope->sources = m_merged;
    return " FROM (SELECT * FROM temp.tsqlbox_merged WHERE clause = " +
           std::to_string(m_clause - m_merge->clauses.data() + 1) + ") AS merged";
}

CheckText Translator::check(const TableInfo& table, const Expr& expr) {
    Scope scope;
    const Temporarily inner(m_scope, &scope);
    m_nextValue = kNextValueInSubquery;
    addSource(table, table.name, {});
    CheckText text{expr.isCondition() ? Typed{condition(expr), {}} : value(expr)};
    for (const auto& name : scope.loose) text.columns.insert(name.substr(table.name.size() + 1));
    return text;
}

}  // namespace tsql
