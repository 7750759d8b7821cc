#include "functions/Operators.h"

#include <charconv>

#include "functions/SqliteFunction.h"

namespace tsql {
namespace {

// (value, type, target type, style)
template <Conversion kind>
Value runConvert(const SqlCall& call) {
    return convertValue(call[0], call.type(1), call.type(2), static_cast<int>(call.integer(3)), kind);
}

// (value, type, target type, table, column)
Value runAssign(const SqlCall& call) {
    const SqlType from = call.type(1), to = call.type(2);
    try {
        return convertValue(call[0], from, to, kNoStyle, Conversion::Assign);
    } catch (const SqlError& error) {
        if (error.number != kTruncation) throw;
        const std::string kept = textOf(viewOf(convertValue(call[0], from, to)), to);
        throw sqlError(kTruncationInColumn, {call.text(3), call.text(4), kept});
    }
}

// (left, left type[, operator, right, right type, result type]...); evaluated from left to right
Value runArithmetic(const SqlCall& call) {
    Value left = ownedValue(call[0]);
    SqlType type = call.type(1);
    for (std::size_t i = 2; i + 3 < call.count(); i += 4) {
        const auto op = static_cast<BinaryOp>(call.integer(i));
        const SqlType result = call.type(i + 3);
        left = arithmetic(op, viewOf(left), type, call[i + 1], call.type(i + 2), result);
        type = result;
    }
    return left;
}

// (value, pattern, are trailing blanks significant[, escape])
Value runLike(const SqlCall& call) {
    const EndBlanks blanks = call.integer(2) != 0 ? EndBlanks::Counted : EndBlanks::Ignored;
    char32_t escape = 0;
    if (call.count() == 4) {
        std::string_view text = call.text(3);
        if (characterCount(text) != 1) throw sqlError(kInvalidEscapeCharacter, {text});
        escape = nextCharacter(text);
    }
    return std::int64_t{matchesLike(call.text(0), call.text(1), blanks, escape)};
}

constexpr int kLongestChain = 30;  // operators of one ts_arithmetic call; SQLite limits its arguments
constexpr std::string_view kCompareSigns[] = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
constexpr std::string_view kCompareNames[] = {"equal to",     "not equal to",
                                              "less than",    "less than or equal to",
                                              "greater than", "greater than or equal to"};

std::string code(const SqlType& type) {
    return std::to_string(encodeType(type));
}

// Whether a number has the same storage form in both exact types.
bool sameScaling(const SqlType& left, const SqlType& right) {
    return left.scale == right.scale && isWide(left) == isWide(right);
}

// Whether the storage form of a value of `from` is already that of `to`.
bool sameForm(const SqlType& from, const SqlType& to) {
    if (from == to) return true;
    if (isInteger(from.id) && isInteger(to.id)) return to.id >= from.id && to.id != TypeId::Bit;  // widening
    if (isExact(from.id) && to.id == TypeId::Decimal)
        return sameScaling(from, to) && precisionOf(from) <= to.precision;
    const bool roomy = to.length <= 0 || (from.length > 0 && from.length <= to.length);
    if ((isText(from.id) && isText(to.id)) || (isBinary(from.id) && isBinary(to.id)))
        return roomy && !isPadded(to.id);
    return (from.id == TypeId::Real && to.id == TypeId::Float) ||
           (from.id == TypeId::SmallMoney && to.id == TypeId::Money);
}

// Type of an operand. An integer literal has the precision of its digits, not that of int.
SqlType literalType(const Typed& value) {
    if (!value.integer) return value.type;
    const auto digits = std::to_string(*value.integer < 0 ? -*value.integer : *value.integer).size();
    return decimalType(static_cast<int>(digits), 0);
}

SqlType operandType(const Typed& value, const SqlType& partner) {
    return partner.id == TypeId::Decimal ? literalType(value) : value.type;
}

// A NULL literal has the type of the other operand.
std::pair<Typed, Typed> withTypes(Typed left, Typed right) {
    if (left.nullLiteral) left.type = right.type;
    if (right.nullLiteral) right.type = left.type;
    return {left, right};
}

// Whether every number of the exact type `other` fits in `type`.
bool holds(const SqlType& type, const SqlType& other) {
    // Not every number of ten digits is an int, although the largest int has ten.
    const auto whole = [](const SqlType& each) { return precisionOf(each) - each.scale; };
    return other.scale <= type.scale && whole(other) <= whole(type) - (type.id == TypeId::Decimal ? 0 : 1);
}

std::string compared(const std::string& left, std::string_view sign, const std::string& right) {
    return "(" + left + std::string(sign) + right + ")";
}

// Compares numbers in the form of one side, so that its index can be used; else with a function.
std::string compareExact(std::string_view sign, const Typed& left, const Typed& right) {
    if (sameScaling(left.type, right.type)) return compared(left.sql, sign, right.sql);
    if (holds(left.type, literalType(right))) return compared(left.sql, sign, coerce(right, left.type).sql);
    if (holds(right.type, literalType(left))) return compared(coerce(left, right.type).sql, sign, right.sql);
    return compared(
        "ts_compare(" + left.sql + "," + code(left.type) + "," + right.sql + "," + code(right.type) + ")",
        sign, "0");
}

// Compares binary strings as if the shorter one were padded with zeros. A shorter string is padded to the
// type of a binary(n), so that its index can be used.
std::string compareBytes(std::string_view sign, const Typed& left, const Typed& right) {
    const auto padsTo = [](const Typed& from, const Typed& to) {
        return to.type.id == TypeId::Binary && from.type.length > 0 && from.type.length <= to.type.length;
    };
    if (padsTo(right, left)) return compared(left.sql, sign, coerce(right, left.type).sql);
    if (padsTo(left, right)) return compared(coerce(left, right.type).sql, sign, right.sql);
    return compared(comparable(left), sign, comparable(right));
}

}  // namespace

const std::vector<ScalarFunction> kOperatorFunctions = {
    {"ts_convert", "", runConvert<Conversion::Cast>},
    {"ts_try_convert", "", runConvert<Conversion::Try>},
    {"ts_assign", "", runAssign},
    {"ts_arithmetic", "0", runArithmetic},
    {"ts_compare", "",  // (left, left type, right, right type); negative, 0 or positive
     [](const SqlCall& call) -> Value {
         const SqlType left = call.type(1), right = call.type(3);
         const Int128 difference = exactResult(BinaryOp::Subtract, exactOf(call[0]), left, exactOf(call[2]),
                                               right, std::max(left.scale, right.scale));
         return (difference > 0) - (difference < 0);
     }},
    {"ts_like", "", runLike},
    {"ts_unpadded", "",  // (bytes), without the zeros at their end
     [](const SqlCall& call) {
         const auto bytes = std::get<Blob>(call[0]);
         return ownedValue(bytes.substr(0, bytes.find_last_not_of(std::byte{0}) + 1));
     }},
};

Typed typedConstant(std::string sql, const TypedValue& constant) {
    Typed result{std::move(sql), constant.type, isNull(constant.value)};
    result.nullable = result.nullLiteral;
    const auto* integer = std::get_if<std::int64_t>(&constant.value);
    if (integer && constant.type.id == TypeId::Int) result.integer = *integer;
    return result;
}

Typed literal(const TypedValue& constant) {
    struct ConstantWriter {
        std::string operator()(Null) const { return "NULL"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const {
            char digits[40];
            return {digits,
                    std::to_chars(digits, digits + sizeof digits, number, std::chars_format::scientific).ptr};
        }
        std::string operator()(const std::string& text) const {
            if (text.find('\0') == std::string::npos) return quotedText(text);
            // SQLite's parser stops at a NUL.
            return "CAST(x'" + hexDigits(std::as_bytes(std::span(text))) + "' AS TEXT)";
        }
        std::string operator()(const Bytes& bytes) const { return "x'" + hexDigits(bytes) + "'"; }
    };
    return typedConstant(std::visit(ConstantWriter{}, constant.value), constant);
}

Typed emitConvert(const Typed& value, const SqlType& to, const Typed* style, Conversion kind) {
    if (!value.nullLiteral && conversionRule(value.type.id, to.id) == ConversionRule::Never)
        throw sqlError(kNoExplicitConversion, {baseName(value.type.id), baseName(to.id)});
    Typed result{value.sql, to};  // not a literal any more: its type is fixed
    if (value.nullLiteral || (!style && sameForm(value.type, to))) return result;
    const std::string number = style ? coerce(*style, simpleType(TypeId::Int)).sql : std::to_string(kNoStyle);
    result.sql = std::string(kind == Conversion::Try ? "ts_try_convert(" : "ts_convert(") + value.sql + "," +
                 code(value.type) + "," + code(to) + "," + number + ")";
    return result;
}

Typed coerce(const Typed& value, const SqlType& to) {
    if (!value.nullLiteral) requireImplicit(value.type, to);
    Typed result = emitConvert(value, to, nullptr, Conversion::Cast);
    result.nullLiteral = value.nullLiteral;
    result.nullable = value.nullable;
    if (isInteger(to.id) && sameForm(value.type, to)) result.integer = value.integer;
    return result;
}

Typed emitAssign(const Typed& value, const SqlType& to, std::string_view table, std::string_view column) {
    if (value.nullLiteral || sameForm(value.type, to)) return coerce(value, to);
    requireImplicit(value.type, to);
    return {"ts_assign(" + value.sql + "," + code(value.type) + "," + code(to) + "," + quotedText(table) +
                "," + quotedText(column) + ")",
            to};
}

Typed emitIdentity(const std::string& number, const SqlType& type) {
    return {"ts_identity(" + number + "," + code(type) + ")", type};
}

SqlType commonType(std::span<const Typed> pieces) {
    std::optional<SqlType> type;
    for (const Typed& each : pieces) {
        if (each.nullLiteral) continue;
        type = type ? commonType(operandType({{}, *type}, each.type), operandType(each, *type)) : each.type;
    }
    return type.value_or(simpleType(TypeId::Int));
}

SqlType comparedType(std::span<const Typed> pieces) {
    const SqlType type = commonType(pieces);
    for (const Typed& piece : pieces)
        if (isLob(piece.type.id))
            commonType(piece.type, type, "equal to");
        else if (isExact(piece.type.id) && type.id == TypeId::Decimal && piece.type.scale > type.scale)
            throw unsupported("IN among decimals that 38 digits do not hold together");
    return type;
}

std::string collated(const Typed& value, int refusal) {
    if (isLob(value.type.id)) throw sqlError(refusal, {baseName(value.type.id)});
    const bool isZoned = value.type.id == TypeId::DateTimeOffset;
    if (!isText(value.type.id) && !isZoned) return value.sql;
    return "(" + value.sql + " COLLATE " + (isZoned ? kUtcCollation : kCollation) + ")";
}

std::string comparable(const Typed& value) {
    return isBinary(value.type.id) ? "ts_unpadded(" + value.sql + ")" : collated(value);
}

std::string checkedRowCount(const std::string& sql, int least, int error) {
    return "ts_rows(" + sql + "," + std::to_string(least) + "," + std::to_string(error) + ")";
}

Typed emitBinary(BinaryOp op, const Typed& leftPiece, const Typed& rightPiece) {
    const auto [left, right] = withTypes(leftPiece, rightPiece);
    const bool bits = op >= BinaryOp::BitAnd;
    const SqlType type = bits
                             ? operatorType(op, left.type, right.type)
                             : operatorType(op, operandType(left, right.type), operandType(right, left.type));
    // A chain of operators becomes one call, because SQLite's parser limits the nesting of calls.
    const bool joins = left.chain > 0 && left.chain < kLongestChain;
    const std::string chain =
        joins ? left.sql.substr(0, left.sql.size() - 1) : "ts_arithmetic(" + left.sql + "," + code(left.type);
    Typed result{chain + "," + std::to_string(static_cast<int>(op)) + "," + right.sql + "," +
                     code(right.type) + "," + code(type) + ")",
                 type};
    result.chain = joins ? left.chain + 1 : 1;
    return result;
}

Typed emitNegate(const Typed& value) {
    Typed result = value;
    result.chain = 0;
    if (value.nullLiteral) return result;
    if (!isNumber(value.type.id) || value.type.id == TypeId::Bit)
        throw sqlError(kInvalidOperandType, {baseName(value.type.id), "minus"});
    if (value.integer) return literal({-*value.integer, value.type});
    if (value.type.id == TypeId::TinyInt) result.type = simpleType(TypeId::SmallInt);
    const std::string subtract = std::to_string(static_cast<int>(BinaryOp::Subtract));
    result.sql = "ts_arithmetic(0," + code(simpleType(TypeId::Int)) + "," + subtract + "," + value.sql + "," +
                 code(value.type) + "," + code(result.type) + ")";
    return result;
}

Typed emitBitNot(const Typed& value) {
    if (!isInteger(value.type.id)) throw sqlError(kInvalidOperandType, {baseName(value.type.id), "'~'"});
    const int all = value.type.id == TypeId::Bit ? 1 : value.type.id == TypeId::TinyInt ? 255 : -1;
    return {"(" + std::to_string(all) + "- " + value.sql + ")", value.type, value.nullLiteral};
}

std::string emitCompare(CompareOp op, const Typed& leftPiece, const Typed& rightPiece) {
    const auto [left, right] = withTypes(leftPiece, rightPiece);
    const std::string_view sign = kCompareSigns[static_cast<std::size_t>(op)];
    if (isExact(left.type.id) && isExact(right.type.id)) return compareExact(sign, left, right);
    const SqlType type = commonType(left.type, right.type, kCompareNames[static_cast<std::size_t>(op)]);
    const SqlType text = isNational(type.id) ? nvarcharType(SqlType::kMax) : varcharType(SqlType::kMax);
    const SqlType loose = isText(type.id) ? text : type;
    if (isBinary(left.type.id) && isBinary(right.type.id)) return compareBytes(sign, left, right);
    return compared(collated(coerce(left, loose)), sign, coerce(right, loose).sql);
}

std::string emitLike(const Typed& value, const Typed& pattern, const Typed* escape) {
    const SqlType text = nvarcharType(SqlType::kMax);
    const bool national = isNational(value.type.id) || isNational(pattern.type.id);
    return "ts_like(" + coerce(value, text).sql + "," + coerce(pattern, text).sql + (national ? ",1" : ",0") +
           (escape ? "," + coerce(*escape, text).sql : "") + ")";
}

}  // namespace tsql
