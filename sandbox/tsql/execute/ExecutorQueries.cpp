// SELECT, INSERT, UPDATE, DELETE, MERGE.

#include "execute/Executor.h"

namespace tsql {

namespace {

// Adds what a statement does to its table.
template <typename Node>
void addChanges(const Node& node, const TableInfo& target, std::vector<Firing>& changes) {
    if constexpr (std::is_same_v<Node, Merge>) {
        for (const auto& clause : node.clauses)
            std::visit([&](const auto& each) { addChanges(each, target, changes); }, clause.change);
    } else {
        auto& updated = changes.emplace_back(Firing{target, node.kVerb}).updated;
        if constexpr (std::is_same_v<Node, Update>)
            for (const auto& clause : node.sets)
                if (const auto* column = target.changedColumn(clause.column)) updated.insert(column->name);
    }
}

}  // namespace

Flow Executor::run(const SelectStatement& statement) {
    if (statement.into)
        return m_settings.describeOnly ? Flow::Next : selectInto(*statement.query, *statement.into);
    const auto made = translated(*statement.query);
    const auto values = parameterValues(made->translator);
    PreparedStatement prepared(m_connection, made->text.sql, values, std::exchange(m_translated, {}));
    const auto& assigned = made->translator.assignments();
    if (!assigned.empty() && m_settings.describeOnly) return Flow::Next;
    return finished(assigned.empty() ? sendRows(prepared, made->columns, m_settings.mostRows)
                                     : assignRows(prepared, assigned, m_settings.mostRows),
                    StatementKind::Select);
}

// `most`: number of rows after which the others are left out; 0: all.
std::int64_t Executor::sendRows(PreparedStatement& statement, std::span<const Column> columns,
                                std::int64_t most) {
    std::vector<CellView> cells(columns.size());
    // An error in the first row produces no result set. Within TRY it produces an empty one before the
    // results of CATCH.
    const bool shown = m_tries > 0 && m_change.verb.empty();
    if (shown) beginRows(columns);
    std::int64_t rows = 0;
    try {
        bool more = !m_settings.describeOnly && statement.step();
        if (!shown) beginRows(columns);
        for (; more; more = rows != most && statement.step()) {
            for (std::size_t i = 0; i < cells.size(); ++i) {
                cells[i] = statement.cell(static_cast<int>(i));
                if (const auto* whole = std::get_if<std::int64_t>(&cells[i]);
                    whole && isApproximate(columns[i].type.id))
                    cells[i] = static_cast<double>(*whole);
            }
            sendRow(columns, cells);
            ++rows;
        }
    } catch (const SqliteFailure&) {
        if (shown) done(rows, StatementKind::Select);
        throw;
    }
    return rows;
}

std::int64_t Executor::assignRows(PreparedStatement& statement, const std::vector<Column>& variables,
                                  std::int64_t most) {
    std::int64_t rows = 0;
    for (; (rows == 0 || rows != most) && statement.step(); ++rows)
        for (std::size_t i = 0; i < variables.size(); ++i)
            setVariable(variables[i].name, statement.cell(static_cast<int>(i)), variables[i].type);
    return rows;
}

// The new table inherits the identity if the query reads one table and selects its identity once.
Flow Executor::selectInto(const Query& query, const ObjectName& name) {
    Translator translator(*this);
    const QueryText text = translator.query(query);
    const auto* select = std::get_if<Select>(&query.body);
    const TableRef* only = select && select->from.size() == 1 ? select->from.front().get() : nullptr;
    const auto* from = only ? std::get_if<NamedTable>(&only->node) : nullptr;
    const bool once = std::ranges::count(text.columns, true, &Column::identity) == 1;
    const auto source = from && once && !from->arguments ? findTable(from->name) : std::nullopt;
    CreateTable create{name, {}, {}};
    for (const OutputColumn& column : text.columns) {
        if (column.name.empty()) throw sqlError(kMissingColumnName);
        auto& made = create.columns.emplace_back(ColumnDefinition{column.name, column.type, column.nullable});
        made.identity = column.newIdentity;
        if (column.identity && once && only && !std::holds_alternative<Join>(only->node))
            made.identity = source ? Identity{source->seed, source->increment} : Identity{};
        if (column.newIdentity) made.nullable = false;
    }
    const TableInfo target = createTable(create);
    ColumnList columns;
    for (std::size_t i = 0; i < text.columns.size(); ++i)
        if (!text.columns[i].newIdentity || target.isCountedBySqlite()) columns.push_back(&target.columns[i]);
    change(target, "INSERT", translator.insertSelected(target, columns, text), translator);
    noteHighest(target);
    return done(m_rowCount, StatementKind::Insert);
}

// Runs a statement that changes rows, with the parameters of `translator`.
void Executor::change(const TableInfo& target, std::string_view verb, const std::string& sql,
                      const Translator& translator) {
    m_change.target = target;
    m_change.verb = verb;
    beforeWrite();
    m_change.newRows = translator.newRows();
    m_change.values = parameterValues(translator);
    PreparedStatement prepared(m_connection, sql, m_change.values, std::exchange(m_translated, {}));
    const QueryText& output = translator.output();
    const auto columns = output.shown();
    if (!translator.assignments().empty())
        assignRows(prepared, translator.assignments());
    else if (!columns.empty() && output.sql.empty())
        sendRows(prepared, columns);
    else
        while (prepared.step()) continue;
    m_rowCount = sqlite3_changes64(m_connection.handle());
    if (!output.sql.empty()) {
        PreparedStatement record(m_connection, output.sql, m_change.values);
        sendRows(record, columns);
    }
    m_error = 0;
    m_change.verb.clear();
}

ColumnList Executor::insertColumns(const TableInfo& target, const std::vector<std::string>& names,
                                   bool defaultValues) const {
    const bool identityGiven = sameWord(m_settings.identityInsert, target.fullName());
    ColumnList columns;
    for (const auto& name : names) {
        const TableColumn* column = target.changedColumn(name);
        if (!column) throw sqlError(kInvalidColumnName, {name});
        if (std::ranges::find(columns, column) != columns.end()) throw sqlError(kColumnSetTwice, {name});
        if (!column->computed.empty()) throw sqlError(kComputedColumnChanged, {column->name});
        if (column->identity && !identityGiven) throw sqlError(kIdentityInsertIsOff, {target.name});
        columns.push_back(column);
    }
    if (names.empty() && !defaultValues) {
        for (const auto& each : target.shown) columns.push_back(target.changedColumn(each.name));
        if (target.through.empty())
            for (const auto& each : target.columns) columns.push_back(&each);
        std::erase_if(columns, [](auto* each) { return each->identity || !each->computed.empty(); });
    }
    // The setting may change before the statement runs.
    if (!m_checking && identityGiven && std::ranges::none_of(columns, &TableColumn::identity))
        throw sqlError(kIdentityValueRequired, {target.name});
    return columns;
}

template <typename Node>
Flow Executor::runChange(const Node& node, StatementKind kind) {
    std::vector<Firing> changes;
    addChanges(node, changedTable(node, node.kVerb), changes);
    return withTriggers(changes, kind, node.output, [&](const TableInfo& target) {
        if (!node.output || !node.output->into) return apply(node, target);
        // OUTPUT ... INTO: the output is inserted into another table, atomically with the change.
        beforeWrite();
        Atomic atomic(m_connection, target.schema);
        claim(*node.output->into);
        const TableInfo to = table(*node.output->into);
        if (to.schema != kTempSchema && !enabledTriggers(to, "INSERT").empty())
            throw sqlError(kOutputIntoTriggers, {asWritten(*node.output->into)});
        std::int64_t changed = 0;
        insertRowsOf(to, insertColumns(to, node.output->columns, /*defaultValues=*/false), /*misfit=*/1, [&] {
            apply(node, target);
            changed = m_rowCount;
        });
        m_rowCount = changed;
        atomic.commit();
    });
}

template Flow Executor::runChange(const Insert&, StatementKind);
template Flow Executor::runChange(const Update&, StatementKind);
template Flow Executor::runChange(const Delete&, StatementKind);
template Flow Executor::runChange(const Merge&, StatementKind);

void Executor::apply(const Insert& insert, const TableInfo& target, Translator* merge) {
    const auto columns = insertColumns(target, insert.columns, insert.defaultValues);
    withIdentities(target, [&] {
        if (insert.execute && m_rowHandler) throw sqlError(kNestedInsertExec);
        if (insert.execute)
            return inTransaction([&] {
                insertRowsOf(target, columns, /*misfit=*/7,
                             [&] { run(std::get<Execute>(insert.execute->node)); });
            });
        const auto made = translated(insert, merge, target, columns);
        change(target, "INSERT", made->text.sql, made->translator);
    });
}

// A client that sends values for the identity means to keep them.
Flow Executor::run(const InsertBulk& bulk) {
    claim(bulk.table);
    const TableInfo target = table(bulk.table);
    if (bulk.firesTriggers && !enabledTriggers(target, "INSERT").empty())
        throw unsupported("INSERT BULK with FIRE_TRIGGERS");
    const TableColumn* identity = target.identityColumn();
    const bool keepsIdentity =
        identity && std::ranges::any_of(bulk.columns, std::bind_front(sameText, identity->name));
    const Temporarily keeping(m_settings.identityInsert,
                              keepsIdentity ? target.fullName() : m_settings.identityInsert);
    const auto columns = insertColumns(target, bulk.columns, /*defaultValues=*/false);
    if (!bulk.sendRows) {
        m_bulk = bulk;
        return finished();
    }
    std::int64_t rows = 0;
    const RowHandler insertOne = [&](std::span<const Column> sent, Cells cells) {
        if (cells.size() != columns.size()) throw sqlError(kColumnCountMismatch);
        ColumnList given;
        std::vector<TypedValue> values;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (!bulk.keepsNulls && isNull(cells[i]) && !columns[i]->byDefault.empty()) continue;
            given.push_back(columns[i]);
            values.push_back({ownedValue(cells[i]), sent[i].type});
        }
        insertRow(target, given, values);
        ++rows;
    };
    withIdentities(target, [&] {
        insertAll(target, [&] {
            bulk.sendRows(insertOne);
            return rows;
        });
    });
    return done(m_rowCount, StatementKind::Insert);
}

// Inserts the rows that `insertRows` counts: all or none.
void Executor::insertAll(const TableInfo& target, const std::function<std::int64_t()>& insertRows) {
    m_change.verb = "INSERT";
    m_change.target = target;
    beforeWrite();
    Atomic atomic(m_connection, target.schema);
    const std::int64_t rows = insertRows();
    atomic.commit();
    m_rowCount = rows;
    m_error = 0;
    m_change.verb.clear();
}

// Runs an insert and records the identities that it used.
void Executor::withIdentities(const TableInfo& target, const std::function<void()>& insert) {
    sqlite3_set_last_insert_rowid(m_connection.handle(), 0);
    try {
        insert();
    } catch (const SqliteFailure& failure) {
        const bool given = sameWord(m_settings.identityInsert, target.fullName());
        if ((failure.code & 0xFF) == SQLITE_CONSTRAINT && target.identityColumn() &&
            target.isCountedBySqlite() && !given) {
            // A refused row uses up its identity, as the rows before it do.
            m_givenIdentities[{target.schema, target.stored}] =
                std::max<std::int64_t>(lastIdentity(target).value_or(0),
                                       sqlite3_last_insert_rowid(m_connection.handle())) +
                1;
        }
        throw;
    }
    m_identity.reset();
    if (target.identityColumn() && m_rowCount > 0 && !target.isShadow) {
        m_identity = sqlite3_last_insert_rowid(m_connection.handle());
        m_frames.back()->identity = m_identity;
        if (m_transactions > 0)
            m_givenIdentities[{target.schema, target.stored}] = target.counted(*m_identity);
        noteHighest(target);
    }
}

// Counts identities that were given, unless SQLite does.
void Executor::noteHighest(const TableInfo& target) {
    const TableColumn* identity = target.identityColumn();
    if (!identity || target.isCountedBySqlite()) return;
    m_connection.run("UPDATE " + target.schema + ".sqlite_sequence SET seq = (SELECT max(seq, ifnull(max(" +
                         (target.increment < 0 ? "-" : "") + "_rowid_), seq)) FROM " + target.sqlName() +
                         ") WHERE name = ?1",
                     {target.stored});
}

std::int64_t Executor::nextIdentity(std::string_view schema, std::string_view table, std::int64_t step) {
    const auto counted = m_connection.number(
        "UPDATE " + std::string(schema) +
            ".sqlite_sequence SET seq = seq + abs(?2) WHERE name = ?1 RETURNING seq * sign(?2)",
        {std::string(table), step});
    if (!counted) {  // the first rowversion of the database
        setCounter(std::string(schema), kRowVersions, kBeforeRowVersions);
        return nextIdentity(schema, table, step);
    }
    m_givenIdentities[{std::string(schema), std::string(table)}] = step < 0 ? -*counted : *counted;
    return *counted;
}

// Identities are not generated again, even if their rows were rolled back.
void Executor::skipIdentities() {
    for (const auto& [table, last] : m_givenIdentities)
        m_connection.run("UPDATE " + table.first + ".sqlite_sequence SET seq = max(seq, ?2) WHERE name = ?1",
                         {table.second, last});
}

// The caller has announced the change.
void Executor::insertRow(const TableInfo& target, const ColumnList& columns,
                         const std::vector<TypedValue>& cells) {
    Translator translator(*this);
    const std::string sql = translator.insertParameters(target, columns, cells);
    m_change.newRows = translator.newRows();
    m_change.values.clear();
    for (const auto& cell : cells) m_change.values.push_back(cell.value);
    m_connection.run(sql, m_change.values);
}

void Executor::insertRowsOf(const TableInfo& target, const ColumnList& columns, int misfit,
                            const std::function<void()>& work) {
    std::vector<std::vector<TypedValue>> collected;  // `work` may read the target table
    bool misfits = false;                            // a row has another number of columns
    const RowHandler collect = [&](std::span<const Column> types, Cells cells) {
        misfits = misfits || cells.size() != columns.size();
        if (misfits) return;
        auto& row = collected.emplace_back();
        for (std::size_t i = 0; i < cells.size(); ++i) row.push_back({ownedValue(cells[i]), types[i].type});
    };
    {
        const Temporarily diverted(m_rowHandler, &collect);
        work();
    }
    if (misfits) throw sqlError(kColumnCountMismatch, {}, misfit);
    insertAll(target, [&] {
        for (const auto& row : collected) insertRow(target, columns, row);
        return std::ssize(collected);
    });
}

// Returns the table that a statement changes.
TableInfo Executor::changedTable(const Change& change, std::string_view verb) {
    const TableRef ref = targetOf(change);
    const auto* table = std::get_if<NamedTable>(&ref.node);
    const ObjectName& name = table ? table->name : change.table;
    const auto isNamed = std::bind_front(sameText, name.name);
    const bool isStored =
        table && (!name.schema.empty() || std::ranges::none_of(change.with, isNamed, &CommonTable::name));
    claim(name);
    if (isStored) return Executor::table(name, kInvalidObjectName, 0, verb);
    const TableInfo target = Translator(*this).tableBehind(ref, change);
    if (m_frames.back()->readOnly.contains(target.name)) throw sqlError(kReadOnlyTable, {target.name});
    return target;
}

void Executor::apply(const Update& update, const TableInfo& target, Translator* merge) {
    std::optional<RowRecord> record;
    if (update.output) record.emplace(m_connection, target, "UPDATE");
    const auto made = translated(update, merge, target, record ? "temp." + record->name() : "");
    try {
        change(target, "UPDATE", made->text.sql, made->translator);
    } catch (const SqliteFailure& failure) {
        if (failure.code != SQLITE_CONSTRAINT_UNIQUE) throw;
        // The steps would act for keys that stay the same, too.
        for (const auto& key : Catalogue(m_connection, target.database, target.schema).keysTo(target.id))
            if (const std::string action = parseConstraint(key.source).onUpdate; action.starts_with("SET"))
                throw unsupported("ON UPDATE " + action + " for rows that take over each other's keys");
        updateInSteps(target, made->translator);
    }
}

// SQLite checks keys row by row, T-SQL at the end of the statement. Therefore the rows give up their keys
// first.
void Executor::updateInSteps(const TableInfo& target, const Translator& translator) {
    Atomic atomic(m_connection, target.schema);
    const auto steps = translator.updateInSteps();
    m_connection.run(steps[0], parameterValues(translator));
    {
        const Finally checkAgain([this] { m_connection.tryRun("PRAGMA ignore_check_constraints = 0"); });
        m_connection.run("PRAGMA ignore_check_constraints = 1");
        m_connection.run(steps[1]);
    }
    change(target, "UPDATE", steps[2], translator);
    m_connection.run(steps[3]);
    atomic.commit();
}

void Executor::apply(const Delete& remove, const TableInfo& target, Translator* merge) {
    const auto made = translated(remove, merge, target);
    change(target, "DELETE", made->text.sql, made->translator);
}

// First determines the clause of each row, then runs one clause after the other.
void Executor::apply(const Merge& merge, const TableInfo& target) {
    Translator translator(*this);
    constexpr const char* kTwice =
        "SELECT 1 FROM temp.tsqlbox_merged WHERE clause AND id NOT NULL GROUP BY id HAVING count(*) > 1";
    const std::string rows = translator.merge(target, merge);
    m_change.verb = "UPDATE";
    beforeWrite();
    Atomic atomic(m_connection, target.schema);
    const Finally drop([this] { m_connection.tryRun("DROP TABLE IF EXISTS temp.tsqlbox_merged"); });
    m_connection.run(rows, parameterValues(translator));
    if (m_connection.number(kTwice)) throw sqlError(kMergedTwice);
    std::int64_t changed = 0;
    std::list<RowRecord> records;
    std::string output;
    for (const std::string verb : {"DELETE", "UPDATE", "INSERT"}) {
        if (merge.output)
            output += (output.empty() ? "(SELECT '" : " UNION ALL SELECT '") + verb +
                      "' AS action, * FROM temp." + records.emplace_back(m_connection, target, verb).name() +
                      " AS changed JOIN temp.tsqlbox_merged AS merged ON merged.clause AND " +
                      (verb == "INSERT" ? "merged._rowid_ = changed._rowid_" : "merged.id = ts_row");
        for (const auto& clause : merge.clauses) {
            if (clause.verb() != verb) continue;
            translator.begin(clause);
            try {
                std::visit([&](const auto& node) { apply(node, target, &translator); }, clause.change);
            } catch (const SqliteFailure& failure) {  // its error names values of the rows
                const Temporarily merging(m_change.merges, true);
                throw errorOf(failure);
            }
            changed += m_rowCount;
        }
        if (merge.output) records.back().stop();
    }
    translator.returning(target, merge.output, "inserted", output + ") AS merged");
    if (merge.output) change(target, "UPDATE", "SELECT 1", translator);
    m_rowCount = changed;
    atomic.commit();
}

// TRUNCATE TABLE restarts the identity.
void Executor::run(const Truncate& truncate) {
    claim(truncate.table);
    const TableInfo target = table(truncate.table, kTruncatedTableNotFound);
    for (const auto& key : catalogue(truncate.table).keysTo(target.id))
        if (key.parent != target.id) throw sqlError(kTruncatedTableReferenced, {asWritten(truncate.table)});
    beforeWrite();
    m_connection.run("DELETE FROM " + target.sqlName());
    startIdentity(target);
}

}  // namespace tsql
