// Resolution of names: variables, tables and views.
#include "execute/Executor.h"

namespace tsql {

constexpr std::size_t kKnownTables = 256;

// ---- variables

TypedValue& Executor::local(std::string_view name) {
    const auto found = m_frames.back()->variables.find(name);
    if (found == m_frames.back()->variables.end()) throw sqlError(kUndeclaredVariable, {name});
    return found->second;
}

// A global variable (@@name): its type and the source of its value.
struct Executor::Global {
    std::string_view name;
    SqlType type;
    Value (*value)(Executor& self);
};

const Executor::Global& Executor::global(std::string_view name) {
    static constexpr const char* kVersionText =
        "Microsoft SQL Server 2019 (tsqlbox) - 15.0.2000.5 (X64)\n\tlocal sandbox on Linux";
    using Self = Executor&;
    const SqlType tiny = simpleType(TypeId::TinyInt), integer = simpleType(TypeId::Int),
                  word = nvarcharType(128);
    static const std::vector<Global> table = {
        {"@@error", integer, [](Self self) -> Value { return self.m_error; }},
        {"@@rowcount", integer, [](Self self) -> Value { return self.m_rowCount; }},
        {"@@identity", decimalType(kMostDigits, 0), [](Self self) { return identityValue(self.m_identity); }},
        {"@@dbts", SqlType{TypeId::VarBinary, 8, 0, 0}, [](Self self) { return self.rowVersion(0); }},
        {"@@trancount", integer, [](Self self) -> Value { return self.m_transactions; }},
        {"@@spid", simpleType(TypeId::SmallInt), [](Self self) -> Value { return self.m_spid; }},
        {"@@lock_timeout", integer, [](Self self) -> Value { return self.m_settings.lockTimeout; }},
        {"@@nestlevel", integer,
         [](Self self) -> Value { return static_cast<int>(self.m_frames.size()) - 1; }},
        {"@@procid", integer, [](Self self) -> Value { return self.m_frames.back()->procedureId; }},
        {"@@version", nvarcharType(300), [](Self) -> Value { return kVersionText; }},
        {"@@servername", word, [](Self) -> Value { return hostName(); }},
        {"@@servicename", word, [](Self) -> Value { return "MSSQLSERVER"; }},
        {"@@language", word, [](Self) -> Value { return "us_english"; }},
        {"@@max_precision", tiny, [](Self) -> Value { return 38; }},
        {"@@datefirst", tiny, [](Self) -> Value { return 7; }},
        {"@@options", integer, [](Self self) -> Value { return self.m_settings.bits(); }},
        {"@@microsoftversion", integer, [](Self) -> Value { return 0x0F0007D0; }},
        {"@@textsize", integer, [](Self) -> Value { return 2147483647; }},
        {"@@fetch_status", integer, [](Self self) -> Value { return self.m_fetchStatus; }},
        {"@@cursor_rows", integer, [](Self self) -> Value { return self.m_cursorRows; }},
        {"@@max_connections", integer, [](Self) -> Value { return 32767; }},
    };
    for (const auto& each : table)
        if (sameWord(each.name, name)) return each;
    throw sqlError(kUndeclaredVariable, {name});
}

SqlType Executor::variableType(std::string_view name) {
    return name.starts_with("@@") ? global(name).type : local(name).type;
}

Value Executor::variableValue(std::string_view name) {
    return name.starts_with("@@") ? global(name).value(*this) : local(name).value;
}

// ---- identities

std::optional<std::int64_t> Executor::lastIdentity(const TableInfo& table) {
    auto last = counter(table.schema, table.stored);
    if (last) last = table.counted(*last);
    const std::int64_t unused = table.seed - table.increment;  // of a table that never had an identity
    while (last && *last != unused && !fits(*last, table.identityColumn()->type)) *last -= table.increment;
    return last;
}

// ---- objects

std::string Executor::databaseOf(const ObjectName& name) const {
    if (!name.database.empty()) {
        const std::string known = m_storage.canonicalName(name.database);
        return known.empty() ? name.database : known;
    }
    const std::string& inner = m_frames.empty() ? m_database : m_frames.back()->database;
    return inner.empty() ? m_database : inner;
}

// The database of tempdb..#t is ignored.
Catalogue Executor::catalogue(const ObjectName& name) {
    if (name.name.starts_with("##")) throw unsupported("global temporary objects");
    if (isTemporaryName(name.name)) return temporary();
    const std::string database = databaseOf(name);
    return {m_connection, database, m_connection.attach(database)};
}

std::optional<TableInfo> Executor::findTable(const ObjectName& name) {
    if (isTemporaryName(name.name) && m_frames.back()->isQuery) throw sqlError(kViewOnTemporaryTable);
    if (name.name.starts_with('@')) {
        const auto& tables = m_frames.back()->tables;
        const auto found = tables.find(name.name);
        if (found == tables.end()) throw sqlError(kUndeclaredTableVariable, {name.name});
        return found->second->info;
    }
    if (m_frames.back()->schemaName == "sys" && name.name.starts_with("tsqlbox_"))
        return catalogue(name).ownTable(name.name);
    if ((m_checking && name.name.starts_with('#')) || namesChangedRows(name)) return std::nullopt;
    const std::uint64_t version = m_storage.catalogueVersion();
    if (!m_connection.inTransaction() && std::exchange(m_knownVersion, version) != version)
        m_knownTables.clear();
    const std::vector<std::string> key = {databaseOf(name), name.database, name.schema,
                                          m_frames.back()->schemaName, name.name};
    auto known = m_knownTables.find(key);
    if (known == m_knownTables.end()) {
        const auto found = visibleObject(name);
        if (found && m_shadow && m_shadow->id == found->id && m_shadow->database == databaseOf(name))
            return *m_shadow;
        if (!found || found->type != kTable) return std::nullopt;
        if (m_knownTables.size() >= kKnownTables) m_knownTables.clear();
        known = m_knownTables.emplace(key, catalogue(name).tableOf(*found)).first;
    }
    if (awaitsTransaction()) begin({});
    return known->second;
}

std::optional<ObjectInfo> Executor::object(const ObjectName& name) {
    if (!name.database.empty() && !m_storage.exists(name.database)) return std::nullopt;
    const Catalogue owner = catalogue(name);
    return owner.find(owner.isTemporary() ? name.name : storedName(name.schema, name.name));
}

// In a module, an unqualified name means an object of the module's schema or, if it has none, of dbo.
std::optional<ObjectInfo> Executor::visibleObject(const ObjectName& name) {
    const std::string& inner = m_frames.back()->schemaName;
    if (name.schema.empty() && name.database.empty() && !inner.empty())
        if (auto found = object({{}, inner, name.name, name.line})) return found;
    return object(name);
}

// Returns an object that is about to be created. Throws error 2760 if there is no such schema.
ObjectInfo Executor::newObject(const Catalogue& owner, const ObjectName& name, std::string_view type) {
    if (name.name.empty()) throw sqlError(kMissingColumnName);
    ObjectInfo object{0, name.name, std::string(type)};
    if (owner.isTemporary()) object.stored = name.name + "@" + std::to_string(owner.lastId() + 1);
    if (name.schema.empty() || owner.isTemporary()) return object;
    const auto schema = owner.schema(name.schema);
    if (!schema || schema->isOfSystem()) throw sqlError(kUnknownSchema, {name.schema});
    object.schemaName = schema->name;
    return object;
}

std::string Executor::asWritten(const ObjectName& name) {
    std::string full = name.database;
    if (!full.empty() || !name.schema.empty()) full += (full.empty() ? "" : ".") + name.schema + ".";
    return full + name.name;
}

// missing, state: number and state of the error if there is no such table. verb: of a change, which may name
// a view with an INSTEAD OF trigger.
TableInfo Executor::table(const ObjectName& name, int missing, int state, std::string_view verb) {
    if (m_frames.back()->readOnly.contains(name.name)) throw sqlError(kReadOnlyTable, {name.name});
    if (auto found = findTable(name)) return *found;
    if (namesChangedRows(name)) throw sqlError(kChangedRowsChanged);
    const auto view = m_checking ? std::nullopt : module(name, kView);
    const TableInfo rows = view ? viewTable(*view) : TableInfo();
    if (view && (rows.rows.empty() || verb.empty() || enabledTriggers(rows, verb).empty()))
        throw unsupported("changes through a view ('" + name.name + "')");
    if (view) return rows;
    throw sqlError(missing, {asWritten(name)}, state);
}

std::optional<SystemView> Executor::view(const ObjectName& name) {
    if (namesChangedRows(name)) return changedRows(name);
    if (isTemporaryName(name.name) || (!name.database.empty() && !m_storage.exists(name.database)))
        return std::nullopt;
    const std::string database = sameWord(name.name, "server_principals") ? "master" : databaseOf(name);
    catalogue({database, {}, {}}), temporary();  // creates the tables that the views read
    return systemView(name.schema, name.name, m_connection.attach(database), database, m_storage);
}

Value Executor::lookUp(std::string_view query, const std::string& database, Cells arguments) {
    catalogue({database, {}, {}}), temporary();  // creates the tables that the query may read
    const std::string sql =
        inDatabase(std::string(query), m_connection.attach(database), database, m_storage);
    std::vector<Value> values(arguments.size());
    std::ranges::transform(arguments, values.begin(), ownedValue);
    PreparedStatement found(m_connection, sql, values);
    return found.step() ? ownedValue(found.cell(0)) : Value(Null{});
}

}  // namespace tsql
