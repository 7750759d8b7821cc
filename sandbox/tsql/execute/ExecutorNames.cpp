// Resolution of names: variables, tables and views.
#include "execute/Executor.h"

namespace tsql {

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
        {"@@nestlevel", integer, [](Self self) -> Value { return std::ssize(self.m_frames) - 1; }},
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

// ---- what is known

// While SQLite reads or writes, the session sees no definition of another one. What is known may be older
// than that only at the first look.
std::shared_ptr<Known> Executor::known() {
    const std::uint64_t version = m_storage.catalogueVersion() + m_connection.detaches();
    const bool isOpen = m_connection.hasSnapshot(), wasOpen = std::exchange(m_hadSnapshot, isOpen);
    if (m_known->isFull() || (version != m_knownVersion && !(isOpen && wasOpen))) forget();
    if (!isOpen) m_knownVersion = version;
    return m_known;
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
    beginImplicitly();
    if (name.name.starts_with('@')) {
        const auto& tables = m_frames.back()->tables;
        const auto found = tables.find(name.name);
        if (found == tables.end()) throw sqlError(kUndeclaredTableVariable, {name.name});
        return found->second->info;
    }
    if (m_frames.back()->schemaName == "sys" && name.name.starts_with("tsqlbox_"))
        return catalogue(name).ownTable(name.name);
    if ((m_checking && name.name.starts_with('#')) || namesChangedRows(name)) return std::nullopt;
    const auto known = this->known();
    const Known::Name key{databaseOf({}), m_frames.back()->schemaName, name.database, name.schema, name.name};
    auto table = known->tables.find(key);
    if (table == known->tables.end()) {
        const auto found = visibleObject(name);
        if (found && m_shadow && m_shadow->id == found->id && m_shadow->database == databaseOf(name))
            return *m_shadow;
        if (!found || found->type != kTable) return std::nullopt;
        table = known->tables.emplace(key, catalogue(name).tableOf(*found)).first;
    }
    return table->second;
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
// a view.
TableInfo Executor::table(const ObjectName& name, int missing, int state, std::string_view verb) {
    if (m_frames.back()->readOnly.contains(name.name)) throw sqlError(kReadOnlyTable, {name.name});
    if (auto found = findTable(name)) return *found;
    if (namesChangedRows(name)) throw sqlError(kChangedRowsChanged);
    const auto view = m_checking ? std::nullopt : module(name, kView);
    if (!view && !m_checking && isMissingView(name.schema, name.name)) throw unsupported(asWritten(name));
    if (!view) throw sqlError(missing, {asWritten(name)}, state);
    const TableInfo rows = viewTable(*view);
    const bool fires = !enabledTriggers(rows, verb).empty();
    if (verb.empty() || (fires && rows.rows.empty()))
        throw unsupported((verb.empty() ? "this statement for a view ('" : "changes through a view ('") +
                          name.name + "')");
    return fires ? rows : Translator(*this).tableBehind({NamedTable{name}, {}}, {});
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
