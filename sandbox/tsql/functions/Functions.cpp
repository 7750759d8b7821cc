#include "functions/Functions.h"

#include <sqlite3.h>

#include <cstring>

#include "types/Work.h"

namespace tsql {
namespace {

SqlType resultType(const FunctionInfo& function, Pieces pieces) {
    if (const auto* rule = std::get_if<TypeRule>(&function.result)) return (*rule)(pieces);
    const auto* id = std::get_if<TypeId>(&function.result);
    return id ? simpleType(*id) : std::get<SqlType>(function.result);
}
SqlType sameAsFirst(Pieces pieces) {
    return pieces[pieces[0].nullLiteral ? 1 : 0].type;
}
SqlType coalescedType(Pieces pieces) {
    if (std::ranges::all_of(pieces, &Typed::nullLiteral)) throw sqlError(kCoalesceOfNulls);
    return commonType(pieces);
}
SqlType nullIfType(Pieces pieces) {
    if (pieces[0].nullLiteral) throw sqlError(kNullIfOfNull);
    return pieces[0].type;
}

constexpr bool isArgument(char letter) {
    return letter >= 'A' && letter <= 'Z';
}

// NAME(argument, ...) with the function's name in SQLite and the type codes of the pattern.
std::string writeCall(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    const auto* inSqlite = std::get_if<const char*>(&function.body);
    std::string sql = std::holds_alternative<SqlFunction>(function.body) ? "ts_" : "";
    sql += inSqlite ? *inSqlite : function.name;
    const auto add = [&](const std::string& text) { sql.append(sql.back() == '(' ? "" : ",").append(text); };
    sql += '(';
    std::size_t next = 0;
    for (const char letter : function.arguments) {
        if (letter == '#') add(std::to_string(encodeType(pieces[next - 1].type)));
        if (isArgument(letter) && next < pieces.size()) add(pieces[next++].sql);
    }
    while (next < pieces.size()) add(pieces[next++].sql);
    if (function.arguments.ends_with('=')) add(std::to_string(encodeType(result)));
    return sql + ')';
}

std::string writeNullIf(const FunctionInfo&, Pieces pieces, const SqlType&) {
    return "CASE WHEN " + emitCompare(CompareOp::Equal, pieces[0], pieces[1]) + " THEN NULL ELSE " +
           pieces[0].sql + " END";
}

std::string writeChoose(const FunctionInfo&, Pieces pieces, const SqlType&) {
    std::string sql = "CASE " + pieces[0].sql;
    for (std::size_t i = 1; i < pieces.size(); ++i)
        sql += " WHEN " + std::to_string(i) + " THEN " + pieces[i].sql;
    return sql + " END";
}

// Wraps an argument of SQLite's own aggregates, which skip NULLs without a warning.
Typed noted(const Typed& value) {
    return value.nullable ? Typed{"ts_noted(" + value.sql + ")", value.type} : value;
}

std::string writeCount(const FunctionInfo&, Pieces pieces, const SqlType&) {
    return "count(" + comparable(noted(pieces[0])) + ")";
}

std::string writeExtreme(const FunctionInfo& function, Pieces pieces, const SqlType&) {
    return std::string(function.name) + "(" + collated(noted(pieces[0])) + ")";
}

// SQLite passes one argument only to an aggregate with DISTINCT, hence a name for each type and number of
// digits that are added.
std::string writeTotal(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    const std::string name(function.name);
    if (isApproximate(result.id)) return name + "(" + noted(pieces[0]).sql + ")";
    const int digits = result.scale - pieces[0].type.scale;
    return "ts_" + name + "_" + std::string(baseName(result.id)) + std::to_string(digits) + "(" +
           pieces[0].sql + ")";
}

std::string writeStringAgg(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    return "ts_string_agg(" + pieces[0].sql + ",ifnull(" + pieces[1].sql + ",'')," +
           std::to_string(result.length) + ")";
}

std::string writeShifted(const FunctionInfo& function, Pieces pieces, const SqlType& result) {
    std::vector<Typed> converted(pieces.begin(), pieces.end());
    if (converted.size() > 1) converted[1].sql = checkedRowCount(converted[1].sql, 0, kNegativeOffset);
    return writeCall(function, converted, result);
}

constexpr auto kAggregate = FunctionKind::Aggregate, kRanking = FunctionKind::Ranking,
               kFramed = FunctionKind::Framed;

// Functions that SQLite has, or that are written with other functions.
const std::vector<FunctionInfo> kWritten = {
    {"isnull", "AR", sameAsFirst, "ifnull"},
    {"coalesce", "RR*", coalescedType, "coalesce"},
    {"nullif", "AA", nullIfType, writeNullIf},
    {"choose", "IR*", [](Pieces pieces) { return commonType(pieces.subspan(1)); }, writeChoose},
    {"xml.value", "AA", nvarcharType(SqlType::kMax), "ts_xml_value"},  // (SELECT ... FOR XML).value()
    {"count", "Q", TypeId::Int, writeCount, kAggregate},
    {"count_big", "Q", TypeId::BigInt, writeCount, kAggregate},
    {"sum", "U", totalType<0>, writeTotal, kAggregate},
    {"avg", "U", totalType<6>, writeTotal, kAggregate},
    {"min", "O", sameAsFirst, writeExtreme, kAggregate},
    {"max", "O", sameAsFirst, writeExtreme, kAggregate},
    {"stdev", "G", TypeId::Float, "ts_stdev", kAggregate},
    {"stdevp", "G", TypeId::Float, "ts_stdevp", kAggregate},
    {"var", "G", TypeId::Float, "ts_var", kAggregate},
    {"varp", "G", TypeId::Float, "ts_varp", kAggregate},
    {"string_agg", "VC", grownText, writeStringAgg, kAggregate},
    // window functions; aggregates other than STRING_AGG also allow OVER
    {"row_number", "", TypeId::BigInt, "row_number", kRanking},
    {"rank", "", TypeId::BigInt, "rank", kRanking},
    {"dense_rank", "", TypeId::BigInt, "dense_rank", kRanking},
    {"cume_dist", "", TypeId::Float, "cume_dist", kRanking},
    {"percent_rank", "", TypeId::Float, "percent_rank", kRanking},
    {"ntile", "I", TypeId::BigInt,
     [](const FunctionInfo&, Pieces pieces, const SqlType&) {
         return "ntile(" + checkedRowCount(pieces[0].sql, 1, kNtileNotPositive) + ")";
     },
     kRanking},
    {"lag", "A[IR", sameAsFirst, writeShifted, kRanking},
    {"lead", "A[IR", sameAsFirst, writeShifted, kRanking},
    {"first_value", "A", sameAsFirst, "first_value", kFramed},
    {"last_value", "A", sameAsFirst, "last_value", kFramed},
};

// Functions that SQL Server has and tsqlbox has not.
constexpr std::string_view kMissingFunctions =
    "approx_count_distinct applock_mode applock_test binary_checksum checksum checksum_agg "
    "collationproperty columns_updated compress connectionproperty context_info current_request_id "
    "current_timezone current_transaction_id datetimeoffsetfromparts decompress decryptbypassphrase "
    "difference encryptbypassphrase eventdata file_id file_name filegroup_name fileproperty formatmessage "
    "has_perms_by_name host_id index_col indexproperty is_rolemember isjson json_modify json_query "
    "json_value objectpropertyex parse percentile_cont percentile_disc pwdcompare pwdencrypt rowcount_big "
    "session_context soundex sql_variant_property stats_date string_escape suser_id suser_sid "
    "trigger_nestlevel try_parse typeproperty user_id";

const WordMap<const FunctionInfo*>& allFunctions() {
    static const auto all = [] {
        WordMap<const FunctionInfo*> table;
        for (const auto* part :
             {&kTextFunctions, &kMathFunctions, &kDateFunctions, &kSessionFunctions, &kWritten})
            for (const FunctionInfo& function : *part) table.emplace(function.name, &function);
        return table;
    }();
    return all;
}

// String type for every value of the type, as wide as SQL Server's.
SqlType textTypeFor(const Typed& value) {
    constexpr int kWidths[] = {1, 4, 6, 12, 24, 41};  // of bit to decimal
    const SqlType& type = value.type;
    if (value.nullLiteral) return varcharType(1);
    if (isText(type.id) || isBinary(type.id)) return isText(type.id) ? type : varcharType(type.length);
    if (type.id <= TypeId::Decimal) return varcharType(kWidths[static_cast<std::size_t>(type.id)]);
    return varcharType(isApproximate(type.id) ? 23 : 40);
}

// Type to which an argument with this pattern letter is converted.
SqlType wantedType(char letter, const Typed& value) {
    const SqlType& type = value.type;
    if (std::strchr("CHLT", letter)) return textTypeFor(value);
    if (letter == 'V') return isText(type.id) ? type : nvarcharType(textTypeFor(value).length);
    if (std::strchr("IJW", letter)) return simpleType(TypeId::Int);
    const bool isQuantity = isNumber(type.id) && type.id != TypeId::Bit;
    if (std::strchr("FG", letter) || (letter == 'N' && !isQuantity)) return simpleType(TypeId::Float);
    if (!std::strchr("DEM", letter) || isDateTime(type.id)) return type;
    return simpleType(letter != 'E' && isText(type.id) ? TypeId::DateTimeOffset : TypeId::DateTime);
}

// Whether an argument with this pattern letter may have a type that can be converted.
bool accepts(char letter, const Typed& value) {
    const TypeId type = value.type.id;
    const auto is = [letter](const char* letters) { return std::strchr(letters, letter) != nullptr; };
    if (value.nullLiteral) return !is("GJOQSUV");
    return !((is("GOUWX") && type == TypeId::Bit) || (is("GJUW") && !isNumber(type)) ||
             (is("W") && (isMoney(type) || isApproximate(type))) || (is("M") && isNumber(type)) ||
             (is("X") && !isNumber(type) && !isDateTime(type)) ||
             (is("CS") && !isText(type) && !isBinary(type)) || (is("V") && isBinary(type)) ||
             (is("CHOQTV") && isLob(type)) || (is("H") && isDateTime(type) && !isClassicDate(type)));
}

Typed argument(const FunctionInfo& function, std::size_t i, char letter, const Typed& value) {
    if (letter == 'P') {
        const auto part = findDatePart(value.sql);
        if (!part) throw sqlError(kUnknownOption, {value.sql, function.name});
        return literal({std::int64_t{int(*part)}, simpleType(TypeId::Int)});
    }
    const SqlType wanted = wantedType(letter, value);
    const std::string_view type = value.nullLiteral ? "NULL" : baseName(value.type.id);
    if (conversionRule(value.type.id, wanted.id) != ConversionRule::Implicit || !accepts(letter, value))
        throw std::strchr("GOQU", letter)
            ? sqlError(kInvalidOperandType, {type, function.name})
            : sqlError(kInvalidArgumentType, {type, std::to_string(i + 1), function.name});
    return coerce(value, wanted);
}

void checkCount(const FunctionInfo& function, std::size_t letters, std::size_t count) {
    constexpr std::size_t kAnyNumber = 254;
    const std::string_view pattern = function.arguments, required = pattern.substr(0, pattern.find('['));
    const auto least = static_cast<std::size_t>(std::ranges::count_if(required, isArgument));
    const std::size_t most = pattern.find('*') == std::string_view::npos ? letters : kAnyNumber;
    if (count >= least && count <= most) return;
    throw least == most
        ? sqlError(kFunctionNeedsArguments, {function.name, std::to_string(least)})
        : sqlError(kFunctionTakesArguments, {function.name, std::to_string(least), std::to_string(most)});
}

void callScalar(sqlite3_context* call, int count, sqlite3_value** values) {
    const auto& binding = *static_cast<const Binding<ScalarFunction>*>(sqlite3_user_data(call));
    try {
        const SqlCall arguments(binding.session, count, values);
        for (const CellView& each : arguments.arguments()) {
            if (isNull(each) && !binding.function.has('0')) return sqlite3_result_null(call);
            if (const auto* text = std::get_if<std::string_view>(&each)) spendWork(text->size());
        }
        giveResult(call, binding.function.run(arguments));
    } catch (...) {
        reportError(binding.session, call);
    }
}

void registerScalar(sqlite3* connection, FunctionSession& session, const ScalarFunction& function) {
    const int flags = SQLITE_UTF8 | (function.has('~') ? 0 : SQLITE_DETERMINISTIC);
    const int code = sqlite3_create_function_v2(connection, function.name.c_str(), -1, flags,
                                                new Binding<ScalarFunction>{session, function}, callScalar,
                                                nullptr, nullptr, Binding<ScalarFunction>::destroy);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection));
}

// Order of two datetimeoffset values.
int compareUtc(std::string_view left, std::string_view right) {
    const LocalTime a = fromStorage(left).utc(), b = fromStorage(right).utc();
    return (a > b) - (a < b);
}

template <int (*order)(std::string_view, std::string_view)>
int collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
    return order({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                 {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
}

}  // namespace

SqlType numberType(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (type.id < TypeId::Int) return simpleType(TypeId::Int);
    if (type.id == TypeId::SmallMoney) return simpleType(TypeId::Money);
    return type.id == TypeId::Real ? simpleType(TypeId::Float) : type;
}

const FunctionInfo& functionNamed(const std::string& name) {
    const auto found = allFunctions().find(name);
    if (found != allFunctions().end()) return *found->second;
    if (hasWord(kMissingFunctions, lowerAscii(name))) throw unsupported(toUpper(name));
    throw SqlError(kUnknownSetOption, "'" + name + "' is not a recognized built-in function name.", 15, 10);
}

Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct) {
    std::string letters;
    std::ranges::copy_if(function.arguments, std::back_inserter(letters), isArgument);
    const auto letterOf = [&](std::size_t i) { return letters[std::min(i, letters.size() - 1)]; };
    checkCount(function, letters.size(), arguments.size());
    if (function.kind == FunctionKind::Aggregate && arguments[0].sql == "*")
        return {"count(*)", resultType(function, arguments)};
    std::vector<Typed> pieces;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        pieces.push_back(argument(function, i, letterOf(i), arguments[i]));
    if (function.takesDatePart()) checkDatePart(pieces, function.name);
    // A datetime counts 1/300 s, which parts finer than milliseconds show.
    if (function.takesDatePart() && pieces[0].integer > int(DatePart::Millisecond))
        for (Typed& piece : pieces)
            if (piece.type.id == TypeId::DateTime) piece = coerce(piece, simpleType(TypeId::DateTime2));
    const SqlType type = resultType(function, pieces);
    for (std::size_t i = 0; i < pieces.size(); ++i)
        if (letterOf(i) == 'R') pieces[i] = coerce(pieces[i], type);
    const auto* writer = std::get_if<Writer>(&function.body);
    std::string sql = (writer ? *writer : writeCall)(function, pieces, type);
    if (distinct) sql.insert(sql.find('(') + 1, "DISTINCT ");
    Typed result{sql, type};
    if (function.name == "isnull") result.nullable = pieces[0].nullable && pieces[1].nullable;
    if (function.name.starts_with("concat")) result.nullable = false;
    return result;
}

void reportError(FunctionSession& session, sqlite3_context* call) {
    try {
        throw;
    } catch (const SqlError& error) {
        session.setError(error);
        sqlite3_result_error(call, error.what(), -1);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(call);
    } catch (const SqliteFailure& failure) {  // such as a lock of another session
        sqlite3_result_error_code(call, failure.code);
    } catch (const std::exception& error) {
        sqlite3_result_error(call, error.what(), -1);
    } catch (...) {  // a user-defined function ended the batch
        sqlite3_result_error_code(call, SQLITE_INTERRUPT);
    }
}

void registerFunctions(sqlite3* connection, FunctionSession& session) {
    for (const auto* functions : {&kOperatorFunctions, &kQueryFunctions})
        for (const ScalarFunction& function : *functions) registerScalar(connection, session, function);
    for (const auto& [name, function] : allFunctions())
        if (const auto* run = std::get_if<SqlFunction>(&function->body))
            registerScalar(connection, session, {"ts_" + name, function->arguments, *run});
    registerAggregates(connection, session);
    for (const auto& [name, order] :
         {std::pair(kCollation, &collate<compareText>), {kUtcCollation, &collate<compareUtc>}})
        if (sqlite3_create_collation(connection, name, SQLITE_UTF8, nullptr, order) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection));
}

}  // namespace tsql
