// T-SQL's functions about the session and the server, as SQLite functions.
#include <sodium.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "functions/Functions.h"
#include "syntax/Parser.h"

namespace tsql {
namespace {

// A random (version 4) identifier.
Value runNewId(const SqlCall&) {
    std::array<std::byte, 16> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    bytes[7] = (bytes[7] & std::byte{0x0F}) | std::byte{0x40};
    bytes[8] = (bytes[8] & std::byte{0x3F}) | std::byte{0x80};
    const SqlType binary{TypeId::Binary, 16, 0, 0};
    return convertValue(Blob(bytes.data(), bytes.size()), binary, simpleType(TypeId::UniqueIdentifier));
}

// Ascends in the order of strings, also across restarts of the server.
Value runNewSequentialId(const SqlCall& call) {
    static std::atomic<unsigned long long> last{
        static_cast<unsigned long long>(std::chrono::system_clock::now().time_since_epoch().count())};
    static const std::string random = std::get<std::string>(runNewId(call)).substr(18);
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llX", ++last);
    const std::string time(digits.data());
    return time.substr(0, 8) + "-" + time.substr(8, 4) + "-" + time.substr(12) + random;
}

// Properties as "name = value; name = value ...".
constexpr std::string_view kDatabaseProperties =
    "Status = ONLINE; IsAutoClose = 0; IsAutoShrink = 0; IsInStandBy = 0; Recovery = SIMPLE; "
    "Updateability = READ_WRITE; UserAccess = MULTI_USER; Collation = SQL_Latin1_General_CP1_CI_AS";
constexpr std::string_view kServerProperties =
    "ProductVersion = 15.0.2000.5; ProductLevel = RTM; ProductMajorVersion = 15; ProductMinorVersion = 0; "
    "ProductBuild = 2000; Edition = tsqlbox; EngineEdition = 3; IsClustered = 0; IsHadrEnabled = 0; "
    "IsFullTextInstalled = 0; IsIntegratedSecurityOnly = 0; IsSingleUser = 0; "
    "Collation = SQL_Latin1_General_CP1_CI_AS";

Value propertyIn(std::string_view properties, std::string_view name) {
    for (const std::string& each : listItems(properties))
        if (sameWord(each.substr(0, each.find(' ')), name)) return each.substr(each.find('=') + 2);
    return Null{};
}

template <typename T>
Value orNull(const std::optional<T>& value) {
    return value ? Value(*value) : Value(Null{});
}

// Returns the name of the database whose number is that argument, or of the current one without it.
std::optional<std::string> databaseArgument(const SqlCall& call, std::size_t position) {
    if (call.count() <= position) return call.session().databaseOf({});
    for (const auto& name : call.session().storage().databases())
        if (databaseId(call.session().storage(), name) == call.integer(position)) return name;
    return std::nullopt;
}

Value databaseNumber(const SqlCall& call) {
    return orNull(databaseId(call.session().storage(),
                             call.count() ? std::string(call.text(0)) : call.session().databaseOf({})));
}

Value serverProperty(const SqlCall& call) {
    for (const auto name : {"ServerName", "MachineName", "ComputerNamePhysicalNetBIOS"})
        if (sameWord(name, call.text(0))) return hostName();
    return propertyIn(kServerProperties, call.text(0));
}

Value objectId(const SqlCall& call) {
    const auto name = parseObjectName(call.text(0));
    const auto found = call.session().object(name);
    if (!found || (call.count() > 1 && !sameWord(found->type, trimmed(call.text(1))))) return Null{};
    return name.name.starts_with('#') ? -found->id : found->id;
}

// (id [, database number])
std::optional<ObjectInfo> objectArgument(const SqlCall& call) {
    const auto database = databaseArgument(call, 1);
    if (!database) return std::nullopt;
    return call.session().catalogue({*database, {}, {}}).findById(call.integer(0));
}

template <std::string ObjectInfo::*fact>
Value ofObject(const SqlCall& call) {
    const auto found = objectArgument(call);
    return found ? Value((*found).*fact) : Null{};
}

Value objectProperty(const SqlCall& call) {
    constexpr std::string_view kTypes =
        "IsUserTable = U; IsTable = U; IsProcedure = P; IsView = V; IsInlineFunction = IF; IsScalarFunction "
        "= FN; "
        "IsPrimaryKey = PK; IsTrigger = TR; IsMSShipped = none";
    const auto found = call.session().catalogue({}).findById(call.integer(0));
    if (!found) return Null{};
    if (const Value type = propertyIn(kTypes, call.text(1)); !isNull(type))
        return std::int64_t{type == Value(found->type)};
    if (!sameWord(call.text(1), "TableHasIdentity"))
        throw unsupported("OBJECTPROPERTY's '" + std::string(call.text(1)) + "'");
    if (found->type != kTable) return Null{};
    return std::int64_t{call.session().catalogue({}).tableOf(*found).identityColumn() != nullptr};
}

Value objectDefinition(const SqlCall& call) {
    const auto found = call.session().catalogue({}).findById(call.integer(0));
    const bool isModule = found && found->type != kTable && (found->parent == 0 || found->type == kTrigger);
    return isModule ? Value(found->source) : Value(Null{});
}

Value schemaNumber(const SqlCall& call) {
    const auto found = call.session().catalogue({}).schemaNamed(call.count() ? call.text(0) : kDefaultSchema);
    return found ? Value(found->id) : Value(Null{});
}

Value schemaName(const SqlCall& call) {
    if (call.count() == 0) return std::string(kDefaultSchema);
    for (const auto& schema : call.session().catalogue({}).schemas())
        if (schema.id == call.integer(0)) return schema.name;
    return Null{};
}

Value columnLength(const SqlCall& call) {
    const auto name = parseObjectName(call.text(0));
    const auto found = call.session().object(name);
    if (!found) return Null{};
    const TableInfo table = call.session().catalogue(name).tableOf(*found);
    const TableColumn* column = table.column(call.text(1));
    return column ? Value(std::int64_t{maxLength(column->type)}) : Value(Null{});
}

Value columnName(const SqlCall& call) {
    for (const auto& column : call.session().catalogue({}).columns(call.integer(0)))
        if (column.id == call.integer(1)) return column.name;
    return Null{};
}

Value columnProperty(const SqlCall& call) {
    for (const auto& column : call.session().catalogue({}).columns(call.integer(0))) {
        if (!sameText(column.name, call.text(1))) continue;
        if (sameWord(call.text(2), "IsIdentity")) return std::int64_t{column.identity};
        if (sameWord(call.text(2), "AllowsNull")) return std::int64_t{column.nullable};
        if (sameWord(call.text(2), "IsComputed")) return std::int64_t{!column.computed.empty()};
        throw unsupported("COLUMNPROPERTY's '" + std::string(call.text(2)) + "'");
    }
    return Null{};
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
template <auto Message::*fact>
Value caught(const SqlCall& call) {
    const Message* error = call.session().caughtError();
    if (!error) return Null{};
    const auto& value = error->*fact;
    if constexpr (std::is_same_v<decltype(value), const int&>)
        return std::int64_t{value};
    else
        return fact == &Message::procedure && value.empty() ? Value(Null{}) : Value(value);
}

template <const std::string& (FunctionSession::*name)() const>
Value client(const SqlCall& call) {
    return (call.session().*name)();
}
Value owner(const SqlCall&) {
    return "dbo";
}
Value isMember(const SqlCall&) {
    return 1;
}
const SqlType kName = nvarcharType(128);
constexpr auto kNulls = Nulls::GiveNull;
constexpr auto kVarying = Purity::Varying;

const FunctionInfo kSessionTable[] = {
    {"newid", "", TypeId::UniqueIdentifier, runNewId, kNulls, kVarying},
    {"newsequentialid", "", TypeId::UniqueIdentifier, runNewSequentialId, kNulls, kVarying},
    {"db_name", "[I", kName, [](const SqlCall& call) { return orNull(databaseArgument(call, 0)); }, kNulls,
     kVarying},
    {"db_id", "[T", TypeId::Int, databaseNumber, kNulls, kVarying},
    {"object_id", "T[T", TypeId::Int, objectId, kNulls, kVarying},
    {"object_name", "I[I", kName, ofObject<&ObjectInfo::name>, kNulls, kVarying},
    {"objectproperty", "IT", TypeId::Int, objectProperty, kNulls, kVarying},
    {"object_schema_name", "I[I", kName, ofObject<&ObjectInfo::schemaName>, kNulls, kVarying},
    {"object_definition", "I", nvarcharType(SqlType::kMax), objectDefinition, kNulls, kVarying},
    {"has_dbaccess", "T", TypeId::Int,
     [](const SqlCall& call) { return call.session().storage().exists(call.text(0)) ? Value(1) : Null{}; },
     kNulls, kVarying},
    {"col_length", "TT", TypeId::SmallInt, columnLength, kNulls, kVarying},
    {"col_name", "II", kName, columnName, kNulls, kVarying},
    {"columnproperty", "ITT", TypeId::Int, columnProperty, kNulls, kVarying},
    {"type_name", "I", kName, "ts_name_of_type"},
    {"type_id", "T", TypeId::Int, "ts_id_of_type"},
    {"schema_id", "[T", TypeId::Int, schemaNumber, kNulls, kVarying},
    {"schema_name", "[I", kName, schemaName, kNulls, kVarying},
    {"user_name", "[I", kName, owner, kNulls, kVarying},
    {"current_user", "", kName, owner, kNulls, kVarying},
    {"session_user", "", kName, owner, kNulls, kVarying},
    {"user", "", kName, owner, kNulls, kVarying},
    {"suser_sname", "[A", kName, client<&FunctionSession::loginName>, kNulls, kVarying},
    {"suser_name", "[A", kName, client<&FunctionSession::loginName>, kNulls, kVarying},
    {"system_user", "", kName, client<&FunctionSession::loginName>, kNulls, kVarying},
    {"original_login", "", kName, client<&FunctionSession::loginName>, kNulls, kVarying},
    {"host_name", "", kName, client<&FunctionSession::clientHost>, kNulls, kVarying},
    {"app_name", "", kName, client<&FunctionSession::clientProgram>, kNulls, kVarying},
    {"serverproperty", "T", kName, serverProperty, kNulls, kVarying},
    {"databasepropertyex", "TT", kName,
     [](const SqlCall& call) {
         const bool exists = call.session().storage().exists(call.text(0));
         return exists ? propertyIn(kDatabaseProperties, call.text(1)) : Value(Null{});
     },
     kNulls, kVarying},
    {"is_srvrolemember", "T[T", TypeId::Int, isMember, kNulls, kVarying},
    {"is_member", "T", TypeId::Int, isMember, kNulls, kVarying},
    {"scope_identity", "", decimalType(38, 0),
     [](const SqlCall& call) { return identityValue(call.session().scopeIdentity()); }, kNulls, kVarying},
    {"ident_current", "T", decimalType(38, 0), currentIdentity, kNulls, kVarying},
    {"ident_seed", "T", decimalType(38, 0), ofIdentity<&TableInfo::seed>, kNulls, kVarying},
    {"ident_incr", "T", decimalType(38, 0), ofIdentity<&TableInfo::increment>, kNulls, kVarying},
    {"min_active_rowversion", "", TypeId::RowVersion,
     [](const SqlCall& call) { return call.session().leastActiveRowVersion(); }, kNulls, kVarying},
    {"error_number", "", TypeId::Int, caught<&Message::number>, kNulls, kVarying},
    {"error_severity", "", TypeId::Int, caught<&Message::severity>, kNulls, kVarying},
    {"error_state", "", TypeId::Int, caught<&Message::state>, kNulls, kVarying},
    {"error_line", "", TypeId::Int, caught<&Message::line>, kNulls, kVarying},
    {"error_procedure", "", kName, caught<&Message::procedure>, kNulls, kVarying},
    {"error_message", "", nvarcharType(4000), caught<&Message::text>, kNulls, kVarying},
    {"cursor_status", "TT", TypeId::SmallInt,
     [](const SqlCall& call) { return call.session().cursorStatus(call.text(0), call.text(1)); }, kNulls,
     kVarying},
    {"update", "T", TypeId::Int,  // UPDATE(column)
     [](const SqlCall& call) -> Value { return call.session().isUpdated(call.text(0)); }, kNulls, kVarying},
    {"xact_state", "", TypeId::SmallInt,
     [](const SqlCall& call) -> Value { return call.session().transactionState(); }, kNulls, kVarying},
};

}  // namespace

std::string hostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "localhost";
}

Value identityValue(const std::optional<std::int64_t>& identity) {
    return identity ? exactCell(*identity, decimalType(kMostDigits, 0)) : Value(Null{});
}

const std::span<const FunctionInfo> kSessionFunctions = kSessionTable;

}  // namespace tsql
