// Triggers: their definition, what fires them, and the rows that they see.
#include "execute/Executor.h"

namespace tsql {

namespace {

constexpr std::string_view kInsteadOf = "INSTEAD OF";  // before the events of such a trigger

bool isInsteadOf(const ObjectInfo& trigger) {
    return trigger.columns.front() == kInsteadOf;
}

bool isFiredBy(const ObjectInfo& trigger, std::string_view verb) {
    return std::ranges::find(trigger.columns, verb) != trigger.columns.end();
}

}  // namespace

// ---- definition

// Returns the table of a trigger that is being defined.
TableInfo Executor::tableOfTrigger(const CreateModule& trigger) {
    if (isTemporaryName(trigger.table.name)) throw unsupported("triggers on temporary tables");
    const auto found = object(trigger.table);
    const bool fits = found && (found->type == kTable || (found->type == kView && trigger.insteadOf));
    if (!fits || databaseOf(trigger.table) != databaseOf(trigger.name))
        throw sqlError(kNoTableForTrigger, {asWritten(trigger.table)});
    if (found->type == kView && !found->stored.empty())
        throw sqlError(kTriggerOfCheckedView, {trigger.name.name, found->name});
    if (!trigger.name.schema.empty() && !sameText(trigger.name.schema, found->schemaName))
        throw sqlError(kTriggerInOtherSchema, {trigger.create ? "create" : "alter", trigger.name.name});
    return catalogue(trigger.table).tableOf(*found);
}

// Enters the table and the events into the catalogue's entry of a trigger.
void Executor::bindTrigger(const Catalogue& owner, const CreateModule& trigger, const TableInfo& table,
                           ObjectInfo& object) {
    const std::string_view verb = trigger.create ? "create" : "alter";
    if (object.id != 0 && object.parent != table.id)
        throw sqlError(kTriggerOfOtherTable, {verb, object.name, table.name});
    object.parent = table.id;
    object.columns = trigger.events;
    if (!trigger.insteadOf) return;
    object.columns.insert(object.columns.begin(), std::string(kInsteadOf));
    for (const auto& other : owner.triggersOf(table.id))
        for (const auto& event : trigger.events)
            if (other.id != object.id && isInsteadOf(other) && isFiredBy(other, event))
                throw sqlError(
                    kSecondInsteadOfTrigger,
                    {verb, object.name, table.stored.empty() ? "view" : "table", table.name, event});
}

// ---- firing

// A trigger is not fired by its own statements, but by those of another trigger that it fires.
std::vector<ObjectInfo> Executor::enabledTriggers(const TableInfo& table, std::string_view verb) {
    const Frame* current = nullptr;
    for (const Frame* frame : m_frames)
        if (frame->firing) current = frame;
    const bool isNear = current && current->database == table.database;
    auto triggers = Catalogue(m_connection, table.database, table.schema).triggersOf(table.id);
    std::erase_if(triggers, [&](const ObjectInfo& trigger) {
        return !isFiredBy(trigger, verb) || !trigger.stored.empty() ||
               (isNear && trigger.id == current->procedureId);
    });
    const auto instead = std::ranges::find_if(triggers, isInsteadOf);
    return instead == triggers.end() ? triggers : std::vector{*instead};
}

// Adds the change, if it fires triggers, and those that foreign keys add to it.
void Executor::addFiring(Firing firing, std::vector<Firing>& all) {
    for (auto& each : all)
        if (each.table.id == firing.table.id && each.verb == firing.verb)
            return each.updated.merge(firing.updated);
    firing.triggers = enabledTriggers(firing.table, firing.verb);
    all.push_back(firing);
    const bool instead = !firing.triggers.empty() && isInsteadOf(firing.triggers.front());
    if (instead && firing.cascades) throw unsupported("a cascade to a table with INSTEAD OF triggers");
    if (instead || firing.verb == "INSERT") return;
    const Catalogue owner(m_connection, firing.table.database, firing.table.schema);
    for (const auto& key : owner.keysTo(firing.table.id)) {
        const Constraint constraint = parseConstraint(key.source);
        const bool isDelete = firing.verb == "DELETE";
        const std::string& action = isDelete ? constraint.onDelete : constraint.onUpdate;
        if (action == kNoAction || isDisabled(key)) continue;
        const std::string_view verb = isDelete && action == "CASCADE" ? "DELETE" : "UPDATE";
        addFiring({*owner.table(key.table), verb, {key.columns.begin(), key.columns.end()}, {}, true}, all);
    }
}

Flow Executor::withTriggers(const std::vector<Firing>& changes, StatementKind kind,
                            const std::optional<Output>& output, const ChangeRows& change) {
    const TableInfo& target = changes.front().table;
    std::vector<Firing> firings;
    if (target.mayFire)
        for (const auto& each : changes) addFiring(each, firings);
    std::erase_if(firings, [](const Firing& each) { return each.triggers.empty(); });
    for (const auto& own : firings) {
        if (own.cascades) continue;
        if (output && !output->into) throw sqlError(kOutputOfTriggers, {target.name});
        if (isInsteadOf(own.triggers.front()) && (output || kind == StatementKind::Merge))
            throw unsupported(output ? "OUTPUT of a change that a trigger replaces"
                                     : "MERGE of a table with INSTEAD OF triggers");
    }
    const auto fireAll = [&] { changeAndFire(target, std::move(firings), change); };
    firings.empty() ? change(target) : inTransaction(fireAll);
    return done(m_rowCount, kind);
}

// The triggers of tables that foreign keys change fire first, the last one reached before the others.
void Executor::changeAndFire(const TableInfo& target, std::vector<Firing> firings, const ChangeRows& change) {
    beforeWrite();
    m_connection.lock(target.database);
    temporary();  // creates the catalogue to which the targets of INSTEAD OF triggers belong
    const bool instead = isInsteadOf(firings.front().triggers.front()) && !firings.front().cascades;
    std::list<RowRecord> records;
    for (auto& firing : firings) {
        records.emplace_back(m_connection, firing.table, std::string(firing.verb), instead);
        firing.rows = records.back().name();
    }
    {
        const bool reads = instead && firings.front().verb != "INSERT";  // by the name of the table
        const Temporarily shadow(m_shadow, reads ? std::optional(records.front().target()) : std::nullopt);
        const Finally afterwards([&] {
            if (instead) forget();
        });
        if (instead) forget();
        change(instead ? records.front().target() : target);
    }
    for (auto& record : records) record.stop();
    const auto count = [&](const Firing& firing) {
        return *m_connection.number("SELECT count(*) FROM temp." + firing.rows);
    };
    const std::int64_t changed = instead ? count(firings.front()) : m_rowCount;
    for (auto firing = firings.rbegin(); firing != firings.rend(); ++firing) {
        if (firing->cascades && count(*firing) == 0) continue;
        for (const auto& trigger : firing->triggers) {
            m_rowCount = changed;
            fire(trigger, *firing);
        }
    }
    m_rowCount = changed;
    m_error = 0;
}

// XACT_ABORT is on in a trigger.
void Executor::fire(const ObjectInfo& trigger, const Firing& firing) {
    const auto stored = module({firing.table.database, trigger.schemaName, trigger.name, m_line}, kTrigger);
    Frame frame(*stored);
    frame.firing = &firing;
    const Temporarily afterwards(m_line, m_line);
    const Temporarily aborts(m_settings.abortOnError, true);
    const Temporarily mayCommit(m_fewestTransactions, 0);
    runScope(stored->module->body, frame);
    if (m_doomed) throw sqlError(kErrorInTrigger);
    if (m_transactions == 0) throw sqlError(kTransactionEndedInTrigger);
}

// ---- the changed rows

// Whether the name is that of inserted or deleted, which only the statements of a trigger itself see.
bool Executor::namesChangedRows(const ObjectName& name) const {
    return m_frames.back()->firing && name.schema.empty() &&
           (sameWord(name.name, "inserted") || sameWord(name.name, "deleted"));
}

// After a rollback in the trigger there are no rows.
SystemView Executor::changedRows(const ObjectName& name) {
    const Firing& firing = *m_frames.back()->firing;
    const bool isNew = sameWord(name.name, "inserted");
    const bool isEmpty =
        firing.verb == (isNew ? "DELETE" : "INSERT") ||
        !m_connection.number("SELECT 1 FROM sqlite_temp_master WHERE name = ?1", {firing.rows});
    const std::string list = commaList(firing.table.columns, [&](const TableColumn& column) {
        const std::string value = quotedName((isNew ? "new " : "old ") + column.name);
        return (isEmpty ? "NULL" : value) + " AS " + quotedName(column.name);
    });
    return {"SELECT " + list + (isEmpty ? " WHERE 0" : " FROM temp." + firing.rows), firing.table.columns};
}

bool Executor::isUpdated(std::string_view column) const {
    const Firing* firing = m_frames.back()->firing;
    if (!firing || !firing->table.column(column)) throw sqlError(kInvalidColumnName, {column});
    return firing->verb == "INSERT" || (firing->verb == "UPDATE" && firing->updated.contains(column));
}

}  // namespace tsql
