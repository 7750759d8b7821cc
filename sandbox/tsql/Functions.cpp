// The table of T-SQL's built-in functions and how a call of each is written in SQLite.
#include "Functions.h"

#include <algorithm>
#include <map>
#include <vector>

#include "Text.h"

namespace tsql {

// One letter an argument, the last one for all that follow:
//   T text        other types are converted    I int, B bigint, F float
//   S text or binary, as it is                  N number, text becomes float
//   D date or time, text becomes datetime2(7), numbers datetime; E the same, but text becomes datetime, too
//   P the bare name of a date part              A any type
//   C any type, M a number, each followed by the code of its type
struct FunctionInfo {
    std::string_view name;
    int least;
    int most;
    std::string_view arguments;
    SqlType (*resultType)(std::span<const Typed> arguments);
    std::string_view target;  // the SQLite function
    // Writes the call where naming the target is not enough; the arguments are converted already.
    std::string (*write)(const FunctionInfo& function, std::span<const Typed> arguments,
                         const SqlType& result) = nullptr;
    FunctionKind kind = FunctionKind::Scalar;
};

namespace {

using Pieces = std::span<const Typed>;
constexpr int kAnyNumber = 100;

// --- result types

template <TypeId id>
SqlType always(Pieces) {
    return simpleType(id);
}
template <int length>
SqlType national(Pieces) {
    return nvarcharType(length);
}
template <int length>
SqlType narrow(Pieces) {
    return varcharType(length);
}
template <TypeId id>
SqlType oneCharacter(Pieces) {
    return {id, 1, 0, 0};
}
template <TypeId id, int scale>
SqlType scaledTime(Pieces) {
    return {id, 0, 0, scale};
}
SqlType identityValue(Pieces) {
    return decimalType(38, 0);
}

SqlType sameAsFirst(Pieces pieces) {
    return pieces[pieces[0].nullLiteral ? 1 : 0].type;
}
SqlType common(Pieces pieces) {
    return commonType(pieces);
}
SqlType commonOfRest(Pieces pieces) {
    return commonType(pieces.subspan(1));
}

// Text of varying length in the first argument's kind.
SqlType varying(const SqlType& type, int length) {
    if (isBinary(type.id)) return {TypeId::VarBinary, length > 8000 ? SqlType::kMax : length, 0, 0};
    return isNational(type.id) ? nvarcharType(length) : varcharType(length);
}
int lengthOf(const SqlType& type) {
    return type.length <= 0 ? SqlType::kMax : type.length;
}

SqlType sameText(Pieces pieces) {
    return varying(pieces[0].type, lengthOf(pieces[0].type));
}

// A part of a text: as long as a literal length says.
SqlType partOfText(Pieces pieces) {
    const int whole = lengthOf(pieces[0].type);
    const auto literal = pieces.back().integer;
    const bool shorter =
        literal && *literal >= 0 && *literal <= 8000 && (whole == SqlType::kMax || *literal < whole);
    return varying(pieces[0].type, shorter ? std::max(1, static_cast<int>(*literal)) : whole);
}

// REPLACE, STUFF, REPLICATE: 8000 bytes, or (max) when the first argument is.
SqlType grownText(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (type.length <= 0) return varying(type, SqlType::kMax);
    return varying(type, isNational(type.id) ? 4000 : 8000);
}

SqlType joinedText(Pieces pieces) {
    bool wide = false;
    int length = 0;
    for (const Typed& piece : pieces) {
        wide = wide || isNational(piece.type.id);
        length = length < 0 || piece.type.length <= 0 ? SqlType::kMax : length + piece.type.length;
    }
    const int most = wide ? 4000 : 8000;
    return wide ? nvarcharType(std::min(length, most)) : varcharType(std::min(length, most));
}

SqlType strText(Pieces pieces) {
    return varcharType(pieces.size() > 1 && pieces[1].integer
                           ? static_cast<int>(std::clamp<std::int64_t>(*pieces[1].integer, 1, 8000))
                           : 10);
}

SqlType countType(Pieces pieces) {
    return simpleType(pieces[0].type.length < 0 ? TypeId::BigInt : TypeId::Int);
}

// ABS, ROUND, SIGN, POWER work in int at least.
SqlType numberType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (type.id < TypeId::Int) return simpleType(TypeId::Int);
    if (type.id == TypeId::SmallMoney) return simpleType(TypeId::Money);
    return type.id == TypeId::Real ? simpleType(TypeId::Float) : type;
}
SqlType wholeType(Pieces pieces) {
    const SqlType type = numberType(pieces);
    return type.id == TypeId::Decimal ? decimalType(type.precision, 0) : type;
}

SqlType powerType(Pieces pieces) {
    const SqlType type = numberType(pieces);
    return type.id == TypeId::Decimal ? decimalType(38, type.scale) : type;
}

SqlType dateSumType(Pieces pieces) {
    return pieces[2].type;
}

void refuseOperand(const SqlType& type, std::string_view function) {
    throw SqlError(8117, "Operand data type " + std::string(baseName(type.id)) + " is invalid for " +
                             std::string(function) + " operator.");
}

SqlType sumType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (!isNumber(type.id) || type.id == TypeId::Bit) refuseOperand(type, "sum");
    return type.id == TypeId::Decimal ? decimalType(38, type.scale) : numberType(pieces);
}

SqlType averageType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (!isNumber(type.id) || type.id == TypeId::Bit) refuseOperand(type, "avg");
    return type.id == TypeId::Decimal ? decimalType(38, std::max<int>(type.scale, 6)) : numberType(pieces);
}

SqlType extremeType(Pieces pieces) {
    if (pieces[0].type.id == TypeId::Bit) refuseOperand(pieces[0].type, "max");
    return pieces[0].type;
}

SqlType aggregatedText(Pieces pieces) {
    return varying(pieces[0].type, isNational(pieces[0].type.id) ? 4000 : 8000);
}

// --- ways of writing

std::string listed(std::string_view function, Pieces pieces, std::string_view last = {}) {
    std::string sql(function);
    sql += '(';
    for (const Typed& piece : pieces) sql.append(sql.back() == '(' ? "" : ",").append(piece.sql);
    if (!last.empty()) sql.append(sql.back() == '(' ? "" : ",").append(last);
    return sql + ')';
}

std::string code(const SqlType& type) {
    return std::to_string(encodeType(type));
}

std::string writeWithResult(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    return listed(function.target, pieces, code(result));
}

std::string writePower(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    const Typed floats[] = {coerce(pieces[0], simpleType(TypeId::Float)), pieces[1]};
    return listed(function.target, floats, code(result));
}

std::string writeIsNull(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    return "ifnull(" + pieces[0].sql + "," + coerce(pieces[1], result).sql + ")";
}

std::string writeCoalesce(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    std::vector<Typed> converted;
    for (const Typed& piece : pieces) converted.push_back(coerce(piece, result));
    return listed("coalesce", converted);
}

std::string writeNullIf(const FunctionInfo&, Pieces pieces, const SqlType&) {
    return "CASE WHEN " + emitCompare(CompareOp::Equal, pieces[0], pieces[1]) + " THEN NULL ELSE " +
           pieces[0].sql + " END";
}

std::string writeChoose(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    std::string sql = "CASE " + pieces[0].sql;
    for (std::size_t i = 1; i < pieces.size(); ++i)
        sql += " WHEN " + std::to_string(i) + " THEN " + coerce(pieces[i], result).sql;
    return sql + " END";
}

// NULL counts as the empty text.
std::string writeConcat(const FunctionInfo&, Pieces pieces, const SqlType&) {
    std::string sql = "(";
    for (const Typed& piece : pieces)
        sql.append(sql.size() > 1 ? "||" : "").append("ifnull(" + piece.sql + ",'')");
    return sql + ")";
}

std::string writeReplicate(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    constexpr int kMaxLimit = 100'000'000;  // where SQL Server goes on to 2 GB
    return listed(function.target, pieces,
                  std::to_string(result.length == SqlType::kMax ? kMaxLimit : result.length));
}

template <SessionFunction function>
std::string writeSession(const FunctionInfo&, Pieces pieces, const SqlType&) {
    std::string sql = "ts_session(" + std::to_string(static_cast<int>(function));
    for (const Typed& piece : pieces) sql += "," + piece.sql;
    return sql + ")";
}

std::string writePi(const FunctionInfo&, Pieces, const SqlType&) {
    return "3.141592653589793";
}

std::string writeSum(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    const std::string kind(baseName(result.id));
    return "ts_sum_" + kind + "(" + pieces[0].sql + ")";
}

std::string writeAverage(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    if (isApproximate(result.id)) return "ts_avg_float(" + pieces[0].sql + ")";
    return "ts_avg_exact" + std::to_string(result.scale - pieces[0].type.scale) + "(" + pieces[0].sql + ")";
}

std::string writeCollated(const FunctionInfo& function, Pieces pieces, const SqlType&) {
    return std::string(function.target) + "(" + collated(pieces[0]) + ")";
}

std::string writeStringAgg(const FunctionInfo& function, Pieces pieces, const SqlType&) {
    return std::string(function.target) + "(" + pieces[0].sql + ",ifnull(" + pieces[1].sql + ",''))";
}

// LAG, LEAD: what stands for the rows that are not there has the value's type.
std::string writeShifted(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    std::vector<Typed> converted(pieces.begin(), pieces.end());
    if (converted.size() > 2) converted[2] = coerce(converted[2], result);
    return listed(function.target, converted);
}

using S = SessionFunction;
constexpr auto kInt = always<TypeId::Int>;
constexpr auto kFloat = always<TypeId::Float>;
constexpr auto kDateTime = scaledTime<TypeId::DateTime, 3>;
constexpr auto kDateTime2 = scaledTime<TypeId::DateTime2, 7>;
constexpr auto kName = national<128>;
constexpr auto kBigInt = always<TypeId::BigInt>;
constexpr auto kAggregate = FunctionKind::Aggregate, kRanking = FunctionKind::Ranking;

// clang-format off
const FunctionInfo kFunctions[] = {
    // text
    {"len", 1, 1, "T", countType, "ts_len"},
    {"datalength", 1, 1, "C", countType, "ts_datalength"},
    {"substring", 3, 3, "SII", partOfText, "ts_substring"},
    {"left", 2, 2, "TI", partOfText, "ts_left"},
    {"right", 2, 2, "TI", partOfText, "ts_right"},
    {"upper", 1, 1, "T", sameText, "ts_upper"},
    {"lower", 1, 1, "T", sameText, "ts_lower"},
    {"ltrim", 1, 1, "T", sameText, "ts_ltrim"},
    {"rtrim", 1, 1, "T", sameText, "ts_rtrim"},
    {"trim", 1, 1, "T", sameText, "ts_trim"},
    {"replace", 3, 3, "T", grownText, "ts_replace"},
    {"stuff", 4, 4, "TIIT", grownText, "ts_stuff"},
    {"charindex", 2, 3, "TTI", kInt, "ts_charindex"},
    {"patindex", 2, 2, "T", kInt, "ts_patindex"},
    {"replicate", 2, 2, "TI", grownText, "ts_replicate", writeReplicate},
    {"space", 1, 1, "I", narrow<8000>, "ts_space"},
    {"reverse", 1, 1, "T", sameText, "ts_reverse"},
    {"char", 1, 1, "I", oneCharacter<TypeId::Char>, "ts_char"},
    {"nchar", 1, 1, "I", oneCharacter<TypeId::NChar>, "ts_nchar"},
    {"ascii", 1, 1, "T", kInt, "ts_unicode"},
    {"unicode", 1, 1, "T", kInt, "ts_unicode"},
    {"str", 1, 3, "FII", strText, "ts_str"},
    {"concat", 2, kAnyNumber, "T", joinedText, "", writeConcat},
    {"concat_ws", 3, kAnyNumber, "T", joinedText, "ts_concat_ws"},
    {"quotename", 1, 2, "T", national<258>, "ts_quotename"},
    {"xml.value", 2, 2, "A", national<SqlType::kMax>, "ts_xml_value"},  // (SELECT ... FOR XML).value()
    // numbers
    {"abs", 1, 1, "N", numberType, "ts_abs", writeWithResult},
    {"sign", 1, 1, "N", numberType, "ts_sign", writeWithResult},
    {"ceiling", 1, 1, "M", wholeType, "ts_ceiling"},
    {"floor", 1, 1, "M", wholeType, "ts_floor"},
    {"round", 2, 3, "MII", numberType, "ts_round"},
    {"power", 2, 2, "NF", powerType, "ts_power", writePower},
    {"sqrt", 1, 1, "F", kFloat, "ts_sqrt"},
    {"square", 1, 1, "F", kFloat, "ts_square"},
    {"exp", 1, 1, "F", kFloat, "ts_exp"},
    {"log", 1, 2, "F", kFloat, "ts_log"},
    {"log10", 1, 1, "F", kFloat, "ts_log10"},
    {"sin", 1, 1, "F", kFloat, "ts_sin"},
    {"cos", 1, 1, "F", kFloat, "ts_cos"},
    {"tan", 1, 1, "F", kFloat, "ts_tan"},
    {"cot", 1, 1, "F", kFloat, "ts_cot"},
    {"asin", 1, 1, "F", kFloat, "ts_asin"},
    {"acos", 1, 1, "F", kFloat, "ts_acos"},
    {"atan", 1, 1, "F", kFloat, "ts_atan"},
    {"atn2", 2, 2, "F", kFloat, "ts_atn2"},
    {"degrees", 1, 1, "F", kFloat, "ts_degrees"},
    {"radians", 1, 1, "F", kFloat, "ts_radians"},
    {"pi", 0, 0, "", kFloat, "", writePi},
    {"rand", 0, 1, "I", kFloat, "ts_rand"},
    {"isnumeric", 1, 1, "C", kInt, "ts_isnumeric"},
    // NULL and choice
    {"isnull", 2, 2, "A", sameAsFirst, "", writeIsNull},
    {"coalesce", 2, kAnyNumber, "A", common, "", writeCoalesce},
    {"nullif", 2, 2, "A", sameAsFirst, "", writeNullIf},
    {"choose", 2, kAnyNumber, "IA", commonOfRest, "", writeChoose},
    {"newid", 0, 0, "", always<TypeId::UniqueIdentifier>, "ts_newid"},
    // dates
    {"getdate", 0, 0, "", kDateTime, "ts_now", writeWithResult},
    {"current_timestamp", 0, 0, "", kDateTime, "ts_now", writeWithResult},
    {"getutcdate", 0, 0, "", kDateTime, "ts_now_utc", writeWithResult},
    {"sysdatetime", 0, 0, "", kDateTime2, "ts_now", writeWithResult},
    {"sysutcdatetime", 0, 0, "", kDateTime2, "ts_now_utc", writeWithResult},
    {"dateadd", 3, 3, "PIE", dateSumType, "ts_dateadd", writeWithResult},
    {"datediff", 3, 3, "PDD", kInt, "ts_datediff"},
    {"datediff_big", 3, 3, "PDD", always<TypeId::BigInt>, "ts_datediff_big"},
    {"datepart", 2, 2, "PD", kInt, "ts_datepart"},
    {"datename", 2, 2, "PD", national<30>, "ts_datename"},
    {"eomonth", 1, 2, "DI", always<TypeId::Date>, "ts_eomonth"},
    {"datefromparts", 3, 3, "I", always<TypeId::Date>, "ts_fromparts", writeWithResult},
    {"datetimefromparts", 7, 7, "I", kDateTime, "ts_fromparts", writeWithResult},
    {"isdate", 1, 1, "T", kInt, "ts_isdate"},
    // session
    {"db_name", 0, 1, "I", kName, "", writeSession<S::DbName>},
    {"db_id", 0, 1, "T", kInt, "", writeSession<S::DbId>},
    {"object_id", 1, 2, "T", kInt, "", writeSession<S::ObjectId>},
    {"object_name", 1, 1, "I", kName, "", writeSession<S::ObjectName>},
    {"objectproperty", 2, 2, "IT", kInt, "", writeSession<S::ObjectProperty>},
    {"col_length", 2, 2, "T", always<TypeId::SmallInt>, "", writeSession<S::ColLength>},
    {"schema_name", 0, 1, "I", kName, "", writeSession<S::SchemaName>},
    {"user_name", 0, 1, "I", kName, "", writeSession<S::UserName>},
    {"current_user", 0, 0, "", kName, "", writeSession<S::UserName>},
    {"session_user", 0, 0, "", kName, "", writeSession<S::UserName>},
    {"user", 0, 0, "", kName, "", writeSession<S::UserName>},
    {"suser_sname", 0, 1, "A", kName, "", writeSession<S::LoginName>},
    {"suser_name", 0, 1, "A", kName, "", writeSession<S::LoginName>},
    {"system_user", 0, 0, "", kName, "", writeSession<S::LoginName>},
    {"original_login", 0, 0, "", kName, "", writeSession<S::LoginName>},
    {"host_name", 0, 0, "", kName, "", writeSession<S::HostName>},
    {"app_name", 0, 0, "", kName, "", writeSession<S::AppName>},
    {"serverproperty", 1, 1, "T", kName, "", writeSession<S::ServerProperty>},
    {"databasepropertyex", 2, 2, "T", kName, "", writeSession<S::DatabaseProperty>},
    {"is_srvrolemember", 1, 2, "T", kInt, "", writeSession<S::IsServerRoleMember>},
    {"is_member", 1, 1, "T", kInt, "", writeSession<S::IsServerRoleMember>},
    {"scope_identity", 0, 0, "", identityValue, "", writeSession<S::ScopeIdentity>},
    {"ident_current", 1, 1, "T", identityValue, "", writeSession<S::IdentCurrent>},
    {"error_number", 0, 0, "", kInt, "", writeSession<S::ErrorNumber>},
    {"error_severity", 0, 0, "", kInt, "", writeSession<S::ErrorSeverity>},
    {"error_state", 0, 0, "", kInt, "", writeSession<S::ErrorState>},
    {"error_line", 0, 0, "", kInt, "", writeSession<S::ErrorLine>},
    {"error_procedure", 0, 0, "", kName, "", writeSession<S::ErrorProcedure>},
    {"error_message", 0, 0, "", national<4000>, "", writeSession<S::ErrorMessage>},
    {"cursor_status", 2, 2, "T", always<TypeId::SmallInt>, "", writeSession<S::CursorStatus>},
    {"xact_state", 0, 0, "", always<TypeId::SmallInt>, "", writeSession<S::XactState>},
    // aggregates
    {"count", 1, 1, "A", kInt, "count", writeCollated, kAggregate},
    {"count_big", 1, 1, "A", always<TypeId::BigInt>, "count", writeCollated, kAggregate},
    {"sum", 1, 1, "A", sumType, "", writeSum, kAggregate},
    {"avg", 1, 1, "A", averageType, "", writeAverage, kAggregate},
    {"min", 1, 1, "A", extremeType, "min", writeCollated, kAggregate},
    {"max", 1, 1, "A", extremeType, "max", writeCollated, kAggregate},
    {"stdev", 1, 1, "F", kFloat, "ts_stdev", nullptr, kAggregate},
    {"stdevp", 1, 1, "F", kFloat, "ts_stdevp", nullptr, kAggregate},
    {"var", 1, 1, "F", kFloat, "ts_var", nullptr, kAggregate},
    {"varp", 1, 1, "F", kFloat, "ts_varp", nullptr, kAggregate},
    {"string_agg", 2, 2, "T", aggregatedText, "ts_string_agg", writeStringAgg, kAggregate},
    // windows; the aggregates but STRING_AGG take OVER, too
    {"row_number", 0, 0, "", kBigInt, "row_number", nullptr, kRanking},
    {"rank", 0, 0, "", kBigInt, "rank", nullptr, kRanking},
    {"dense_rank", 0, 0, "", kBigInt, "dense_rank", nullptr, kRanking},
    {"ntile", 1, 1, "B", kBigInt, "ntile", nullptr, kRanking},
    {"lag", 1, 3, "AIA", sameAsFirst, "lag", writeShifted, kRanking},
    {"lead", 1, 3, "AIA", sameAsFirst, "lead", writeShifted, kRanking},
    {"first_value", 1, 1, "A", sameAsFirst, "first_value", nullptr, FunctionKind::Framed},
    {"last_value", 1, 1, "A", sameAsFirst, "last_value", nullptr, FunctionKind::Framed},
};

// YEAR(x) is DATEPART(year, x).
struct PartFunction {
    FunctionInfo info;
    std::string_view part;
};
const PartFunction kPartFunctions[] = {
    {{"year", 1, 1, "D", kInt, "ts_datepart"}, "year"},
    {{"month", 1, 1, "D", kInt, "ts_datepart"}, "month"},
    {{"day", 1, 1, "D", kInt, "ts_datepart"}, "day"},
};
// clang-format on

// --- arguments

// Wide enough for the text of any value of the type.
SqlType textTypeFor(const SqlType& type) {
    if (isText(type.id)) return type;
    if (isBinary(type.id)) return varcharType(type.length);
    if (type.id == TypeId::Decimal) return varcharType(type.precision + 3);
    return varcharType(type.id == TypeId::UniqueIdentifier ? 36 : 30);
}

Typed dateArgument(const Typed& value, TypeId ofText) {
    if (isDateTime(value.type.id)) return value;
    return coerce(value, simpleType(isText(value.type.id) ? ofText : TypeId::DateTime));
}

Typed datePartArgument(const Typed& value, std::string_view function) {
    const auto part = findDatePart(value.word);
    if (!part)
        throw SqlError(155, "'" + value.word + "' is not a recognized " + std::string(function) + " option.",
                       15);
    return {std::to_string(static_cast<int>(*part)), simpleType(TypeId::Int), false, {}, {}};
}

Typed numberArgument(const Typed& value, std::string_view function, int position) {
    if (isText(value.type.id)) return coerce(value, simpleType(TypeId::Float));
    if (isNumber(value.type.id)) return value;
    throw SqlError(8116, "Argument data type " + std::string(baseName(value.type.id)) +
                             " is invalid for argument " + std::to_string(position) + " of " +
                             std::string(function) + " function.");
}

Typed argument(const FunctionInfo& function, std::size_t i, const Typed& value) {
    const char kind = function.arguments[std::min(i, function.arguments.size() - 1)];
    switch (kind) {
        case 'T':
            return coerce(value, textTypeFor(value.type));
        case 'S':
            return isBinary(value.type.id) ? value : coerce(value, textTypeFor(value.type));
        case 'I':
            return coerce(value, simpleType(TypeId::Int));
        case 'B':
            return coerce(value, simpleType(TypeId::BigInt));
        case 'F':
            return coerce(value, simpleType(TypeId::Float));
        case 'D':
            return dateArgument(value, TypeId::DateTime2);
        case 'E':
            return dateArgument(value, TypeId::DateTime);
        case 'P':
            return datePartArgument(value, function.name);
        case 'N':
        case 'M':
            return numberArgument(value, function.name, static_cast<int>(i) + 1);
        default:
            return value;
    }
}

[[noreturn]] void wrongCount(const FunctionInfo& function) {
    const std::string name(function.name);
    if (function.least == function.most)
        throw SqlError(
            174, "The " + name + " function requires " + std::to_string(function.least) + " argument(s).",
            15);
    throw SqlError(189,
                   "The " + name + " function requires " + std::to_string(function.least) + " to " +
                       std::to_string(function.most) + " arguments.",
                   15);
}

// The code of its own type follows an argument of kind C or M.
void appendTypeCodes(const FunctionInfo& function, std::vector<Typed>& pieces) {
    if (function.arguments.empty() ||
        std::string_view("CM").find(function.arguments[0]) == std::string_view::npos)
        return;
    pieces.insert(pieces.begin() + 1, Typed{code(pieces[0].type), simpleType(TypeId::BigInt), false, {}, {}});
}

}  // namespace

const FunctionInfo* findFunction(std::string_view name) {
    static const auto index = [] {
        std::map<std::string_view, const FunctionInfo*> table;
        for (const FunctionInfo& function : kFunctions) table.emplace(function.name, &function);
        for (const PartFunction& function : kPartFunctions) table.emplace(function.info.name, &function.info);
        return table;
    }();
    const auto found = index.find(lowerAscii(name));
    return found == index.end() ? nullptr : found->second;
}

FunctionKind kindOf(const FunctionInfo& function) {
    return function.kind;
}

bool takesDatePart(const FunctionInfo& function) {
    return !function.arguments.empty() && function.arguments[0] == 'P';
}

Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct) {
    const auto count = static_cast<int>(arguments.size());
    if (count < function.least || count > function.most) wrongCount(function);
    if (function.kind == FunctionKind::Aggregate && count == 1 && arguments[0].word == "*")
        return {"count(*)", function.resultType(arguments), false, {}, {}};
    std::vector<Typed> pieces;
    for (std::size_t i = 0; i < arguments.size(); ++i) pieces.push_back(argument(function, i, arguments[i]));
    const SqlType type = function.resultType(pieces);
    appendTypeCodes(function, pieces);
    for (const PartFunction& part : kPartFunctions)
        if (&function == &part.info)
            pieces.insert(pieces.begin(), datePartArgument(wordArgument(part.part), part.part));
    std::string sql =
        function.write ? function.write(function, pieces, type) : listed(function.target, pieces);
    if (distinct) sql.insert(sql.find('(') + 1, "DISTINCT ");
    return {sql, type, false, {}, {}};
}

}  // namespace tsql
