// SET options, databases, maintenance.
#include "execute/Executor.h"

namespace tsql {

void Executor::set(const Settings& settings) {
    m_settings = settings;
    m_connection.setLockTimeout(std::chrono::milliseconds(m_settings.lockTimeout));
}

void Executor::run(const SetOption& option) {
    constexpr std::int64_t kUsual = -1, kLongest = 60'000;  // milliseconds
    for (const auto& name : option.names) {
        if (name == "NOCOUNT") m_settings.noCount = option.on;
        if (name == "FMTONLY") m_settings.describeOnly = option.on;
        if (name == "PARSEONLY") m_settings.parseOnly = option.on;
        if (name == "NOEXEC") m_settings.checkOnly = option.on;
        if (name == "XACT_ABORT") m_settings.abortOnError = option.on;
        if (name == "IMPLICIT_TRANSACTIONS") m_settings.implicitTransactions = option.on;
        if (name == "QUOTED_IDENTIFIER") m_settings.quotedIdentifiers = option.on;
        if (name == "ANSI_PADDING") m_settings.padding = option.on;
        if (name == "ROWCOUNT") m_settings.mostRows = *option.number;
        if (name == "LOCK_TIMEOUT")
            m_settings.lockTimeout = static_cast<int>(std::clamp(*option.number, kUsual, kLongest));
    }
    set(m_settings);
    if (!option.table) return;
    const TableInfo target = table(*option.table, kObjectNotFound, 11);
    if (!target.identityColumn()) throw sqlError(kNoIdentityColumn, {target.name});
    std::string& current = m_settings.identityInsert;
    const bool isOther = !current.empty() && current != target.fullName();
    if (option.on && isOther) throw sqlError(kIdentityInsertAlreadyOn, {current, target.name});
    if (!isOther) current = option.on ? target.fullName() : "";
}

// ---- databases

void Executor::useDatabase(const std::string& name) {
    m_connection.attach(name);
    const std::string before = std::exchange(m_database, m_storage.canonicalName(name));
    m_sink->databaseChanged(before, m_database);
}

void Executor::run(const Use& use) {
    if (!m_frames.back()->procedure.empty())
        throw sqlError(kNotAllowedHere, {"a USE database statement", "a procedure, function or trigger"});
    useDatabase(use.database);
    inform(kDatabaseChanged, {m_database});
}

void Executor::run(const CreateDatabase& create) {
    if (m_transactions > 0) throw sqlError(kNotWithinTransaction, {"CREATE DATABASE"});
    m_storage.create(create.name);
}

void Executor::run(const AlterDatabase& alter) {
    const std::string name = alter.name.empty() ? m_database : m_storage.canonicalName(alter.name);
    if (name.empty()) throw sqlError(kCannotAlterDatabase, {alter.name});
    if (m_transactions > 0) throw sqlError(kNotWithinTransaction, {"ALTER DATABASE"});
    const bool isOwn = databaseKey(name) == databaseKey(m_database);
    if (alter.excludes && !isOwn) m_connection.detach(name);
    if (alter.excludes && m_storage.use(databaseKey(name), /*change=*/0) > isOwn)
        throw unsupported("SINGLE_USER and RESTRICTED_USER of a database that other sessions use");
    if (alter.newName.empty()) return;
    releaseDatabase(name, sqlError(kDatabaseNotLocked));
    m_storage.rename(name, alter.newName);
    inform(kDatabaseRenamed, {alter.newName});
}

// Detaches a database. Throws `inUse` if the session or another one uses it.
void Executor::releaseDatabase(std::string_view name, const SqlError& inUse) {
    if (databaseKey(name) == databaseKey(m_database)) throw inUse;
    m_connection.detach(name);
    m_storage.noteCatalogueChange();
    if (m_storage.use(databaseKey(name), /*change=*/0) > 0) throw inUse;
}

void Executor::dropDatabase(const std::string& name, bool ifExists) {
    if (ifExists && !m_storage.exists(name)) return;
    if (m_transactions > 0) throw sqlError(kNotWithinTransaction, {"DROP DATABASE"});
    releaseDatabase(name, sqlError(kCannotDropInUse, {name}));
    m_storage.drop(name);
}

// ---- maintenance

void Executor::run(const Maintenance& node) {
    if (node.table) {
        const bool isDbcc = !node.dbcc.empty();
        const TableInfo target = table(*node.table, isDbcc ? kDbccTableUnknown : kStatisticsTableUnknown);
        if (isDbcc) checkIdentity(target, node);
    }
    if (node.dbcc == "CHECKDB") {
        const std::string name = node.database ? evaluateText(*node.database) : m_database;
        PreparedStatement findings(m_connection, "PRAGMA " + m_connection.attach(name) + ".integrity_check");
        int faults = 0;
        for (; findings.step() && findings.text(0) != "ok"; ++faults) inform(kTableError, {findings.text(0)});
        if (faults > 0 || !node.onlyFaults)
            inform(kDatabaseChecked, {std::to_string(faults), m_storage.canonicalName(name)});
    }
    if (!node.dbcc.empty() && !node.onlyFaults) inform(kDbccDone);
}

// DBCC CHECKIDENT. A given seed is the next identity of a table that never had one, else the last identity.
void Executor::checkIdentity(const TableInfo& table, const Maintenance& check) {
    const TableColumn* identity = table.identityColumn();
    if (!identity) throw sqlError(kTableWithoutIdentity, {table.name});
    const std::int64_t unused = table.seed - table.increment, last = lastIdentity(table).value_or(unused);
    const auto highest = m_connection.number(
        std::string("SELECT ") + (table.increment < 0 ? "min(" : "max(") + quotedName(identity->name) +
        ") FROM " + table.sqlName() + " HAVING count(*) > 0");
    const std::string column = highest ? std::to_string(*highest) : "NULL";
    if (!check.onlyFaults)
        inform(kIdentityChecked, {last == unused ? "NULL" : std::to_string(last),
                                  check.seed ? "" : ", current column value '" + column + "'"});
    Value next = table.counted(std::max(table.counted(last), table.counted(highest.value_or(last))));
    if (check.seed) next = evaluate(*check.seed, identity->type);
    if (!check.reseeds || isNull(next)) return;
    beforeWrite();
    const std::int64_t step = check.seed && last == unused ? table.increment : 0;
    setCounter(table.schema, table.stored, table.counted(std::get<std::int64_t>(next) - step));
}

// Sends rows that are kept in memory. Only the columns of `table` are used.
Flow Executor::sendTable(const QueryText& table, std::span<const std::vector<Value>> rows) {
    const auto columns = table.shown();
    beginRows(columns);
    for (const auto& row : rows) {
        std::vector<CellView> cells(row.size());
        std::ranges::transform(row, cells.begin(), [](const Value& cell) { return viewOf(cell); });
        sendRow(columns, cells);
    }
    return finished(static_cast<std::int64_t>(rows.size()), StatementKind::Select);
}

}  // namespace tsql
