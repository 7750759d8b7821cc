// T-SQL's functions about the session and the server, as SQLite functions.
#include <unistd.h>

#include <atomic>
#include <boost/endian/conversion.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include "functions/Functions.h"
#include "syntax/Parser.h"

namespace tsql {
namespace {

Value runNewId(const SqlCall&) {
    return toUpper(boost::uuids::to_string(boost::uuids::random_generator()()));
}

// Ascends in the order of strings, also across restarts of the server.
Value runNewSequentialId(const SqlCall& call) {
    static std::atomic<std::uint64_t> last{
        static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count())};
    static const std::string random = std::get<std::string>(runNewId(call)).substr(18);
    const std::uint64_t time = boost::endian::native_to_big(++last);
    std::string digits = hexDigits(std::as_bytes(std::span(&time, 1)));
    return digits.insert(12, 1, '-').insert(8, 1, '-') + random;
}

// Properties as "name = value; name = value ...".
constexpr std::string_view kDatabaseProperties =
    "Status = ONLINE; IsAutoClose = 0; IsAutoShrink = 0; IsInStandBy = 0; Recovery = SIMPLE; "
    "Updateability = READ_WRITE; UserAccess = MULTI_USER; Collation = SQL_Latin1_General_CP1_CI_AS";
constexpr std::string_view kServerProperties =
    R"(ProductVersion = 15.0.2000.5; ProductLevel = RTM; ProductMajorVersion = 15; ProductMinorVersion = 0; ProductBuild
= 2000; Edition = tsqlbox; EngineEdition = 3; IsClustered = 0; IsHadrEnabled = 0; IsFullTextInstalled = 0;
IsIntegratedSecurityOnly = 0; IsSingleUser = 0; Collation = SQL_Latin1_General_CP1_CI_AS)";

Value propertyIn(std::string_view properties, std::string_view name) {
    for (const std::string& each : listItems(properties))
        if (sameWord(each.substr(0, each.find(' ')), name)) return each.substr(each.find('=') + 2);
    return Null{};
}

// Returns the name of the database whose number is that argument, or of the current one without it.
std::optional<std::string> databaseArgument(const SqlCall& call, std::size_t position) {
    if (call.count() <= position) return call.session().databaseOf({});
    const auto names = call.session().storage().databases();
    const auto place = static_cast<std::size_t>(call.integer(position) - 1);
    return place < names.size() ? std::optional(names[place]) : std::nullopt;
}

Value objectId(const SqlCall& call) {
    const auto name = parseObjectName(call.text(0));
    const auto found = call.session().object(name);
    if (!found || (call.count() > 1 && !sameWord(found->type, trimmed(call.text(1))))) return Null{};
    return name.name.starts_with('#') ? -found->id : found->id;
}

// Queries of the catalogue with the placeholders of system views. ?1, ?2 ... are arguments.
constexpr std::string_view
    kObjectName = "SELECT ts_bare_name(name) FROM $o WHERE id = ?1 AND type NOT IN ('IX', 'SCHEMA', 'TYPE')",
    kSchemaOf = "SELECT ts_schema_of(name) FROM $o WHERE id = ?1 AND type NOT IN ('IX', 'SCHEMA', 'TYPE')",
    kDefinition = "SELECT source FROM $o WHERE id = ?1 AND type IN ('P', 'FN', 'IF', 'TF', 'V', 'TR')",
    kColumnName = "SELECT name FROM $c WHERE object = ?1 AND ordinal = ?2",
    kSchemaId = "SELECT id FROM $SCHEMAS WHERE name = ifnull(?1, 'dbo') COLLATE ts_ci",
    kSchemaName = "SELECT name FROM $SCHEMAS WHERE id = ifnull(?1, 1)",
    kOfObject = " FROM $o o WHERE id = ?1 AND type NOT IN ('IX', 'SCHEMA', 'TYPE')",
    kOfColumn = " FROM $c WHERE object = ?1 AND name = ?2 COLLATE ts_ci";
constexpr std::string_view kObjectProperties =
    R"(IsUserTable = type = 'U'; IsTable = type = 'U'; IsProcedure = type = 'P'; IsView = type = 'V'; IsInlineFunction =
type = 'IF'; IsScalarFunction = type = 'FN'; IsTableFunction = type IN ('IF', 'TF'); IsPrimaryKey = type = 'PK';
IsForeignKey = type = 'F'; IsTrigger = type = 'TR'; IsMSShipped = 0; TableHasIdentity = CASE type WHEN 'U' THEN EXISTS
(SELECT 1 FROM $c WHERE object = o.id AND identity = 1) END)";
constexpr std::string_view kColumnProperties =
    "IsIdentity = identity = 1; AllowsNull = nullable; IsComputed = computed <> ''; ColumnId = ordinal";

// The first arguments, `used` of them, are those of the query. The next may be the number of a database.
template <const std::string_view& query, std::size_t used, bool ofDatabase = false>
Value lookedUp(const SqlCall& call) {
    const auto database = databaseArgument(call, ofDatabase ? used : call.count());
    if (!database) return Null{};
    return call.session().lookUp(query, *database, call.arguments().first(std::min(used, call.count())));
}

// The last argument is the name of a property.
template <const std::string_view& properties, const std::string_view& from>
Value propertyOf(const SqlCall& call) {
    const std::size_t last = call.count() - 1;
    const Value fact = propertyIn(properties, call.text(last));
    if (isNull(fact)) throw unsupported("the property '" + std::string(call.text(last)) + "'");
    return call.session().lookUp("SELECT " + std::get<std::string>(fact) + std::string(from),
                                 call.session().databaseOf({}), call.arguments().first(last));
}

Value columnLength(const SqlCall& call) {
    const auto name = parseObjectName(call.text(0));
    const auto found = call.session().object(name);
    if (!found) return Null{};
    const TableInfo table = call.session().catalogue(name).tableOf(*found);
    return orNull(table.column(call.text(1)), [](auto& column) { return maxLength(column.type); });
}

Value typeNumber(const SqlCall& call) {
    const ObjectName name = parseObjectName(call.text(0));
    const auto ofSystem = systemTypes().find(name.name);
    if (ofSystem != systemTypes().end()) return ofSystem->second;
    const auto found = call.session().catalogue({}).find(storedName(name.schema, name.name), kUserTypes);
    return orNull(found, [](auto& type) { return kBuiltInTypes + type.id; });
}

Value currentIdentity(const SqlCall& call) {
    const TableInfo info = call.session().table(parseObjectName(call.text(0)));
    if (!info.identityColumn()) return Null{};
    const auto last = call.session().lastIdentity(info);
    return identityValue(!last || *last == info.seed - info.increment ? info.seed : *last);
}

template <std::int64_t TableInfo::*fact>
Value ofIdentity(const SqlCall& call) {
    const TableInfo info = call.session().table(parseObjectName(call.text(0)));
    return identityValue(info.identityColumn() ? std::optional(info.*fact) : std::nullopt);
}

// Property of the error that the enclosing CATCH block handles.
template <auto fact>
Value caught(const SqlCall& call) {
    return orNull(call.session().caughtError(), fact);
}
Value procedureOf(const Message& error) {
    return error.procedure.empty() ? Value(Null{}) : Value(error.procedure);
}

template <std::string Client::*fact>
Value ofClient(const SqlCall& call) {
    return call.session().client().*fact;
}
constexpr auto owner = [](const SqlCall&) -> Value { return "dbo"; };
constexpr auto isMember = [](const SqlCall&) -> Value { return 1; };
const SqlType kName = nvarcharType(128);

}  // namespace

const std::vector<FunctionInfo> kSessionFunctions = {
    {"newid", "~", TypeId::UniqueIdentifier, runNewId},
    {"newsequentialid", "~", TypeId::UniqueIdentifier, runNewSequentialId},
    {"db_name", "~[I", kName, [](const SqlCall& call) { return orNull(databaseArgument(call, 0)); }},
    {"db_id", "~[T", TypeId::Int,
     [](const SqlCall& call) {
         const auto name = call.count() ? std::string(call.text(0)) : call.session().databaseOf({});
         return orNull(databaseId(call.session().storage(), name));
     }},
    {"object_id", "~T[T", TypeId::Int, objectId},
    {"object_name", "~I[I", kName, lookedUp<kObjectName, 1, /*ofDatabase=*/true>},
    {"objectproperty", "~IT", TypeId::Int, propertyOf<kObjectProperties, kOfObject>},
    {"object_schema_name", "~I[I", kName, lookedUp<kSchemaOf, 1, /*ofDatabase=*/true>},
    {"object_definition", "~I", nvarcharType(SqlType::kMax), lookedUp<kDefinition, 1>},
    {"has_dbaccess", "~T", TypeId::Int,
     [](const SqlCall& call) { return call.session().storage().exists(call.text(0)) ? Value(1) : Null{}; }},
    {"col_length", "~TT", TypeId::SmallInt, columnLength},
    {"col_name", "~II", kName, lookedUp<kColumnName, 2>},
    {"columnproperty", "~ITT", TypeId::Int, propertyOf<kColumnProperties, kOfColumn>},
    {"type_name", "~I", kName,
     [](const SqlCall& call) -> Value {
         for (const auto& [name, number] : systemTypes())
             if (number == call.integer(0)) return name;
         const std::int64_t id = call.integer(0) - kBuiltInTypes;
         return orNull(call.session().catalogue({}).findById(id, kUserTypes), &ObjectInfo::name);
     }},
    {"type_id", "~T", TypeId::Int, typeNumber},
    {"schema_id", "~[T", TypeId::Int, lookedUp<kSchemaId, 1>},
    {"schema_name", "~[I", kName, lookedUp<kSchemaName, 1>},
    {"user_name", "~[I", kName, owner},
    {"current_user", "~", kName, owner},
    {"session_user", "~", kName, owner},
    {"user", "~", kName, owner},
    {"suser_sname", "~[A", kName, ofClient<&Client::login>},
    {"suser_name", "~[A", kName, ofClient<&Client::login>},
    {"system_user", "~", kName, ofClient<&Client::login>},
    {"original_login", "~", kName, ofClient<&Client::login>},
    {"host_name", "~", kName, ofClient<&Client::host>},
    {"app_name", "~", kName, ofClient<&Client::program>},
    {"serverproperty", "~T", kName,
     [](const SqlCall& call) -> Value {
         for (const auto name : {"ServerName", "MachineName", "ComputerNamePhysicalNetBIOS"})
             if (sameWord(name, call.text(0))) return hostName();
         return propertyIn(kServerProperties, call.text(0));
     }},
    {"databasepropertyex", "~TT", kName,
     [](const SqlCall& call) {
         const bool exists = call.session().storage().exists(call.text(0));
         return exists ? propertyIn(kDatabaseProperties, call.text(1)) : Value(Null{});
     }},
    {"is_srvrolemember", "~T[T", TypeId::Int, isMember},
    {"is_member", "~T", TypeId::Int, isMember},
    {"fulltextserviceproperty", "~T", TypeId::Int, [](const SqlCall&) -> Value { return 0; }},
    {"scope_identity", "~", decimalType(38, 0),
     [](const SqlCall& call) { return identityValue(call.session().scopeIdentity()); }},
    {"ident_current", "~T", decimalType(38, 0), currentIdentity},
    {"ident_seed", "~T", decimalType(38, 0), ofIdentity<&TableInfo::seed>},
    {"ident_incr", "~T", decimalType(38, 0), ofIdentity<&TableInfo::increment>},
    {"min_active_rowversion", "~", TypeId::RowVersion,
     [](const SqlCall& call) { return call.session().leastActiveRowVersion(); }},
    {"error_number", "~", TypeId::Int, caught<&Message::number>},
    {"error_severity", "~", TypeId::Int, caught<&Message::severity>},
    {"error_state", "~", TypeId::Int, caught<&Message::state>},
    {"error_line", "~", TypeId::Int, caught<&Message::line>},
    {"error_procedure", "~", kName, caught<procedureOf>},
    {"error_message", "~", nvarcharType(4000), caught<&Message::text>},
    {"cursor_status", "~TT", TypeId::SmallInt,
     [](const SqlCall& call) { return call.session().cursorStatus(call.text(0), call.text(1)); }},
    {"update", "~T", TypeId::Int,  // UPDATE(column)
     [](const SqlCall& call) -> Value { return call.session().isUpdated(call.text(0)); }},
    {"xact_state", "~", TypeId::SmallInt,
     [](const SqlCall& call) -> Value { return call.session().transactionState(); }},
};

std::string hostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "localhost";
}

const WordMap<std::int64_t>& systemTypes() {
    static const auto all = [] {
        WordMap<std::int64_t> types = {{"numeric", 108}, {"sysname", kBuiltInTypes}};
        for (int i = 0; i <= static_cast<int>(TypeId::DateTimeOffset); ++i)
            types.emplace(baseName(static_cast<TypeId>(i)), systemId(static_cast<TypeId>(i)));
        return types;
    }();
    return all;
}

Value identityValue(const std::optional<std::int64_t>& identity) {
    return identity ? exactCell(*identity, decimalType(kMostDigits, 0)) : Value(Null{});
}

}  // namespace tsql
