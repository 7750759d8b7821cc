// What names mean to a session: variables, tables, functions, and the facts that its functions ask for.
#include <unistd.h>
#include <algorithm>

#include "Executor.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {

using namespace ast;

namespace {

constexpr std::string_view kProductVersion = "15.0.2000.5";
constexpr std::string_view kVersionText =
    "Microsoft SQL Server 2019 (tsqlbox) - 15.0.2000.5 (X64)\n\tlocal sandbox on Linux";

std::string hostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "localhost";
}

std::string textAt(std::span<const CellView> arguments, std::size_t index) {
    if (index >= arguments.size()) return {};
    if (const auto* text = std::get_if<std::string_view>(&arguments[index])) return std::string(*text);
    return {};
}

// "[dbo].[t]", "db..t" to their parts.
ObjectName splitName(std::string_view text) {
    std::vector<std::string> parts(1);
    for (const Token& token : tokenize(text)) {
        if (token.kind == TokenKind::End) break;
        if (token.raw == ".")
            parts.emplace_back();
        else
            parts.back() = unquoted(token);
    }
    ObjectName name;
    name.name = parts.back();
    if (parts.size() > 1) name.schema = parts[parts.size() - 2];
    if (parts.size() > 2) name.database = parts[parts.size() - 3];
    return name;
}

SqlType identityType() {
    constexpr int kDigits = 18;
    return decimalType(kDigits, 0);
}

Value number(std::int64_t value) {
    return Value(value);
}

Value optionalNumber(const std::optional<std::int64_t>& number) {
    return number ? Value(*number) : Value(Null{});
}

constexpr std::string_view kCollationName = "SQL_Latin1_General_CP1_CI_AS";

using Properties = std::initializer_list<std::pair<std::string_view, std::string>>;

// The value of a property by its name; NULL for one that is not there.
Value propertyIn(std::string_view name, const Properties& properties) {
    for (const auto& [property, value] : properties)
        if (sameWord(property, name)) return value;
    return Null{};
}

Value serverProperty(std::string_view name) {
    return propertyIn(name, {{"ProductVersion", std::string(kProductVersion)},
                             {"ProductLevel", "RTM"},
                             {"Edition", "tsqlbox"},
                             {"ServerName", hostName()},
                             {"MachineName", hostName()},
                             {"Collation", std::string(kCollationName)}});
}

}  // namespace

// ---- variables

const Variable& Executor::local(std::string_view name) {
    const auto found = m_frames.back()->variables.find(lowerAscii(name));
    if (found == m_frames.back()->variables.end()) throw sqlError(137, {name});
    return found->second;
}

// @@name: its type, and where its value comes from.
struct Executor::Global {
    std::string_view name;
    SqlType type;
    Value (*value)(const Executor& self);
};

const std::vector<Executor::Global>& Executor::globals() {
    using Self = const Executor&;
    static const std::vector<Global> table = {
        {"@@error", simpleType(TypeId::Int), [](Self self) { return number(self.m_error); }},
        {"@@rowcount", simpleType(TypeId::Int), [](Self self) { return number(self.m_rowCount); }},
        {"@@identity", identityType(), [](Self self) { return optionalNumber(self.m_identity); }},
        {"@@trancount", simpleType(TypeId::Int), [](Self self) { return number(self.m_transactions); }},
        {"@@spid", simpleType(TypeId::SmallInt), [](Self self) { return number(self.m_spid); }},
        {"@@lock_timeout", simpleType(TypeId::Int), [](Self self) { return number(self.m_lockTimeout); }},
        {"@@nestlevel", simpleType(TypeId::Int),
         [](Self self) { return number(static_cast<std::int64_t>(self.m_frames.size()) - 1); }},
        {"@@version", nvarcharType(300), [](Self) { return Value(std::string(kVersionText)); }},
        {"@@servername", nvarcharType(128), [](Self) { return Value(hostName()); }},
        {"@@servicename", nvarcharType(128), [](Self) { return Value(std::string("MSSQLSERVER")); }},
        {"@@language", nvarcharType(128), [](Self) { return Value(std::string("us_english")); }},
        {"@@max_precision", simpleType(TypeId::TinyInt), [](Self) { return number(38); }},
        {"@@datefirst", simpleType(TypeId::TinyInt), [](Self) { return number(7); }},
        {"@@options", simpleType(TypeId::Int), [](Self) { return number(5496); }},
        {"@@microsoftversion", simpleType(TypeId::Int), [](Self) { return number(0x0F0007D0); }},
        {"@@textsize", simpleType(TypeId::Int), [](Self) { return number(2147483647); }},
        {"@@fetch_status", simpleType(TypeId::Int), [](Self self) { return number(self.m_fetchStatus); }},
        {"@@cursor_rows", simpleType(TypeId::Int), [](Self self) { return number(self.m_cursorRows); }},
        {"@@max_connections", simpleType(TypeId::Int), [](Self) { return number(32767); }},
    };
    return table;
}

const Executor::Global& Executor::global(std::string_view name) {
    for (const auto& each : globals())
        if (sameWord(each.name, name)) return each;
    throw sqlError(137, {name});
}

SqlType Executor::variableType(std::string_view name) {
    return name.starts_with("@@") ? global(name).type : local(name).type;
}

Value Executor::variableValue(std::string_view name) {
    return name.starts_with("@@") ? global(name).value(*this) : local(name).value;
}

// ---- objects

std::string Executor::databaseOf(const ObjectName& name) const {
    if (!name.database.empty()) {
        const std::string known = m_engine.storage.canonicalName(name.database);
        return known.empty() ? name.database : known;
    }
    const std::string& inner = m_frames.empty() ? m_database : m_frames.back()->database;
    return inner.empty() ? m_database : inner;
}

// tempdb..#t is #t.
Catalogue Executor::catalogue(const ObjectName& name) {
    if (name.name.starts_with('@')) return temporary();
    if (name.name.starts_with('#')) {
        if (name.name.starts_with("##")) throw unsupported("global temporary tables");
        return temporary();
    }
    const std::string database = databaseOf(name);
    return {m_connection, database, m_connection.attach(database)};
}

std::optional<TableInfo> Executor::findTable(const ObjectName& name) {
    if (isTemporaryName(name.name) && m_frames.back()->isQuery) throw sqlError(4508);
    if (name.name.starts_with('@')) {
        const auto& tables = m_frames.back()->tables;
        const auto found = tables.find(lowerAscii(name.name));
        if (found == tables.end()) throw sqlError(1087, {name.name});
        return found->second.info;
    }
    if (!name.schema.empty() && !sameWord(name.schema, "dbo") && !name.name.starts_with('#'))
        return std::nullopt;
    if (!m_connection.inTransaction()) m_knownTables.clear();
    const std::string key = databaseOf(name) + '/' + name.name;
    if (const auto known = m_knownTables.find(key); known != m_knownTables.end()) return known->second;
    if (!name.database.empty() && !m_engine.storage.exists(name.database)) return std::nullopt;
    auto found = catalogue(name).table(name.name);
    if (found && m_connection.inTransaction()) m_knownTables.emplace(key, *found);
    return found;
}

TableInfo Executor::table(const ObjectName& name) {
    if (auto found = findTable(name)) return *found;
    if (module(name, objectType::kView)) throw unsupported("changes through a view ('" + name.name + "')");
    std::string full = name.database;
    if (!full.empty() || !name.schema.empty()) full += (full.empty() ? "" : ".") + name.schema + ".";
    throw sqlError(208, {full + name.name});
}

std::optional<SystemView> Executor::view(const ObjectName& name) {
    if (isTemporaryName(name.name) || (!name.database.empty() && !m_engine.storage.exists(name.database)))
        return std::nullopt;
    const std::string database = databaseOf(name);
    return systemView(name.schema, name.name, m_connection.attach(database), database, m_engine.storage);
}

// ---- facts

Value Executor::objectId(std::span<const CellView> arguments) {
    const ObjectName name = splitName(textAt(arguments, 0));
    if (!name.database.empty() && !m_engine.storage.exists(name.database)) return Null{};
    const auto found = catalogue(name).find(name.name);
    const std::string type = toUpper(trimmed(textAt(arguments, 1)));
    if (!found || (!type.empty() && found->type != type)) return Null{};
    return found->id;
}

Value Executor::identityOf(std::string_view name) {
    const TableInfo info = table(splitName(name));
    if (!info.identityColumn()) return Null{};
    PreparedStatement query(m_connection,
                            "SELECT seq FROM " + info.schema + ".sqlite_sequence WHERE name = ?1");
    query.bind(1, info.stored);
    return query.step() ? Value(query.integer(0)) : Value(std::int64_t{1});
}

Value Executor::errorFact(SessionFunction function) const {
    if (m_caught.empty()) return Null{};
    const Message& error = m_caught.back();
    switch (function) {
        case SessionFunction::ErrorNumber:
            return std::int64_t{error.number};
        case SessionFunction::ErrorSeverity:
            return std::int64_t{error.severity};
        case SessionFunction::ErrorState:
            return std::int64_t{error.state};
        case SessionFunction::ErrorLine:
            return std::int64_t{error.line};
        case SessionFunction::ErrorProcedure:
            return error.procedure.empty() ? Value(Null{}) : Value(error.procedure);
        default:
            return error.text;
    }
}

Value Executor::databaseName(std::span<const CellView> arguments) {
    if (arguments.empty()) return databaseOf({});
    const auto* id = std::get_if<std::int64_t>(&arguments[0]);
    for (const auto& name : m_engine.storage.databases())
        if (id && databaseId(m_engine.storage, name) == *id) return name;
    return Null{};
}

std::optional<ObjectInfo> Executor::objectWithId(std::span<const CellView> arguments) {
    const auto* id = arguments.empty() ? nullptr : std::get_if<std::int64_t>(&arguments[0]);
    return id ? catalogue({}).findById(*id) : std::nullopt;
}

Value Executor::objectProperty(std::span<const CellView> arguments) {
    constexpr std::pair<std::string_view, std::string_view> kProperties[] = {
        {"IsUserTable", objectType::kTable},
        {"IsTable", objectType::kTable},
        {"IsProcedure", objectType::kProcedure},
        {"IsView", objectType::kView},
        {"IsInlineFunction", objectType::kTableFunction},
        {"IsScalarFunction", objectType::kFunction},
        {"IsPrimaryKey", objectType::kPrimaryKey}};
    const auto found = objectWithId(arguments);
    for (const auto& [property, type] : kProperties)
        if (found && sameWord(property, textAt(arguments, 1))) return std::int64_t{found->type == type};
    return Null{};
}

Value Executor::columnLength(std::span<const CellView> arguments) {
    const auto name = splitName(textAt(arguments, 0));
    const auto found = catalogue(name).find(name.name);
    if (!found || found->type != objectType::kTable) return Null{};
    const TableInfo info = table(name);
    const TableColumn* column = info.column(textAt(arguments, 1));
    return column ? Value(std::int64_t{maxLength(column->type)}) : Value(Null{});
}

Value Executor::databaseProperty(std::span<const CellView> arguments) {
    if (!m_engine.storage.exists(textAt(arguments, 0))) return Null{};
    return propertyIn(textAt(arguments, 1), {{"Status", "ONLINE"},
                                             {"Recovery", "SIMPLE"},
                                             {"Updateability", "READ_WRITE"},
                                             {"UserAccess", "MULTI_USER"},
                                             {"Collation", std::string(kCollationName)}});
}

Value Executor::sessionValue(SessionFunction function, std::span<const CellView> arguments) {
    switch (function) {
        case SessionFunction::DbName:
            return databaseName(arguments);
        case SessionFunction::DbId: {
            const auto id =
                databaseId(m_engine.storage, arguments.empty() ? databaseOf({}) : textAt(arguments, 0));
            return id ? Value(std::int64_t{*id}) : Value(Null{});
        }
        case SessionFunction::ObjectId:
            return objectId(arguments);
        case SessionFunction::ObjectName: {
            const auto found = objectWithId(arguments);
            return found ? Value(found->name) : Value(Null{});
        }
        case SessionFunction::ObjectProperty:
            return objectProperty(arguments);
        case SessionFunction::ColLength:
            return columnLength(arguments);
        case SessionFunction::SchemaName:
        case SessionFunction::UserName:
            return std::string("dbo");
        case SessionFunction::LoginName:
            return m_login;
        case SessionFunction::HostName:
            return hostName();
        case SessionFunction::AppName:
            return std::string("tsqlbox");
        case SessionFunction::ServerProperty:
            return serverProperty(textAt(arguments, 0));
        case SessionFunction::DatabaseProperty:
            return databaseProperty(arguments);
        case SessionFunction::IsServerRoleMember:
            return std::int64_t{1};
        case SessionFunction::ScopeIdentity:
            return optionalNumber(m_frames.empty() ? std::nullopt : m_frames.back()->identity);
        case SessionFunction::IdentCurrent:
            return identityOf(textAt(arguments, 0));
        case SessionFunction::XactState:
            return std::int64_t{m_doomed ? -1 : m_transactions > 0};
        case SessionFunction::CursorStatus:
            return cursorStatus(textAt(arguments, 0), textAt(arguments, 1));
        default:
            return errorFact(function);
    }
}

}  // namespace tsql
