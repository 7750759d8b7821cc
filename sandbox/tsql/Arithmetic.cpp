// Exact arithmetic of T-SQL's numbers, declared in Values.h.
#include <algorithm>
#include <cmath>

#include "Messages.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

// What is the same for integers and floats.
template <typename Number>
Number basic(BinaryOp op, Number left, Number right) {
    if (op == BinaryOp::Add) return left + right;
    if (op == BinaryOp::Subtract) return left - right;
    if (op == BinaryOp::Multiply) return left * right;
    if (right == 0) throw sqlError(8134);
    return left / right;
}

Value floatResult(BinaryOp op, double left, double right, const SqlType& type) {
    const double result = basic(op, left, right);
    if (!std::isfinite(result)) overflow(type);
    return convertValue(result, simpleType(TypeId::Float), type);
}

Int128 modulo(Int128 left, Int128 right) {
    if (right == 0) throw sqlError(8134);
    return left % right;
}

Value integerResult(BinaryOp op, Int128 left, Int128 right, const SqlType& type) {
    const Int128 result = op == BinaryOp::Modulo   ? modulo(left, right)
                          : op == BinaryOp::BitAnd ? left & right
                          : op == BinaryOp::BitOr  ? left | right
                          : op == BinaryOp::BitXor ? left ^ right
                                                   : basic(op, left, right);
    if (result > INT64_MAX || result < INT64_MIN) overflow(type);
    try {
        return convertValue(static_cast<std::int64_t>(result), simpleType(TypeId::BigInt), type);
    } catch (const SqlError&) {
        overflow(type);
    }
}

// left * 10^shift / right, cut towards zero; in two steps where the numerator may need more than 128 bits.
Int128 quotient(Int128 left, Int128 right, int shift, const SqlType& type) {
    if (right == 0) throw sqlError(8134);
    if (shift < 0) return left / (right * powerOfTen(-shift));
    const int first = std::min(shift, 18), second = shift - first;
    const Int128 numerator = left * powerOfTen(first);
    const Int128 whole = numerator / right;
    if (second == 0) return whole;
    if (whole > INT64_MAX || whole < INT64_MIN) overflow(type);
    return whole * powerOfTen(second) + numerator % right * powerOfTen(second) / right;
}

Value scaledResult(BinaryOp op, Int128 left, int leftScale, Int128 right, int rightScale,
                   const SqlType& type) {
    int scale = std::max(leftScale, rightScale);
    const Int128 a = rescaled(left, leftScale, scale, Rounding::Truncate);
    const Int128 b = rescaled(right, rightScale, scale, Rounding::Truncate);
    Int128 result = 0;
    if (op == BinaryOp::Multiply)
        result = left * right, scale = leftScale + rightScale;
    else if (op == BinaryOp::Divide)
        result = quotient(left, right, type.scale + rightScale - leftScale, type), scale = type.scale;
    else
        result = op == BinaryOp::Modulo ? modulo(a, b) : basic(op, a, b);
    result = rescaled(result, scale, type.scale, Rounding::HalfAway);
    if (!fitsScaled(result, type)) overflow(type);
    return static_cast<std::int64_t>(result);
}

// datetime + number: the number is days, and so is a datetime, since 1900.
Value dateResult(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type) {
    const auto ticks = [&](const CellView& value, const SqlType& from) {
        const Value stored = convertValue(value, from, type);
        const DateTime at = fromStorage(std::get<std::string>(stored));
        return (at.days - DateTime::kDay1900) * static_cast<Int128>(DateTime::kTicksPerDay) + at.ticks;
    };
    const Int128 sum = op == BinaryOp::Add ? ticks(left, leftType) + ticks(right, rightType)
                                           : ticks(left, leftType) - ticks(right, rightType);
    const Int128 total = sum + DateTime::kDay1900 * static_cast<Int128>(DateTime::kTicksPerDay);
    if (total < 0) overflow(type);
    return toStorage({static_cast<std::int64_t>(total / DateTime::kTicksPerDay),
                      static_cast<std::int64_t>(total % DateTime::kTicksPerDay)},
                     type);
}

}  // namespace

Value arithmetic(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type) {
    if (isNull(left) || isNull(right)) return Null{};
    if (isDateTime(type.id)) return dateResult(op, left, leftType, right, rightType, type);
    const auto operand = [&](const CellView& value, const SqlType& from) {
        if (isApproximate(type.id)) return convertValue(value, from, simpleType(TypeId::Float));
        return isExact(from.id) ? ownedValue(value)
                                : convertValue(value, from, commonType(leftType, rightType));
    };
    const Value a = operand(left, leftType), b = operand(right, rightType);
    if (isApproximate(type.id)) return floatResult(op, std::get<double>(a), std::get<double>(b), type);
    const auto x = std::get<std::int64_t>(a), y = std::get<std::int64_t>(b);
    if (isInteger(type.id)) return integerResult(op, x, y, type);
    const SqlType common = commonType(leftType, rightType);
    const auto scaleOf = [&](const SqlType& from) { return isExact(from.id) ? from.scale : common.scale; };
    return scaledResult(op, x, scaleOf(leftType), y, scaleOf(rightType), type);
}

int compareScaled(std::int64_t left, int leftScale, std::int64_t right, int rightScale) {
    const int scale = std::max(leftScale, rightScale);
    const Int128 a = rescaled(left, leftScale, scale, Rounding::Truncate);
    const Int128 b = rescaled(right, rightScale, scale, Rounding::Truncate);
    return a < b ? -1 : a > b ? 1 : 0;
}

TypedValue numericLiteral(std::string_view text) {
    const SqlType asText = varcharType(SqlType::kMax);
    if (text.find_first_of("eE") != std::string_view::npos) {
        const SqlType type = simpleType(TypeId::Float);
        return {convertValue(text, asText, type), type};
    }
    const auto point = text.find('.');
    const auto scale = point == std::string_view::npos ? 0 : text.size() - point - 1;
    const auto firstDigit = std::min(text.find_first_not_of('0'), text.size());
    const auto whole = (point == std::string_view::npos ? text.size() : point) -
                       std::min(firstDigit, std::min(point, text.size()));
    if (whole + scale > 19 || scale > 18) throw sqlError(1007, {text});
    const SqlType type =
        decimalType(static_cast<int>(std::max<std::size_t>(1, whole + scale)), static_cast<int>(scale));
    const Value value = convertValue(text, asText, type);
    if (point == std::string_view::npos && std::get<std::int64_t>(value) <= INT32_MAX)
        return {value, simpleType(TypeId::Int)};
    return {value, type};
}

TypedValue textLiteral(std::string_view text, bool national) {
    const int length = static_cast<int>(std::clamp<std::size_t>(characterCount(text), 1, 8001));
    return {std::string(text), national ? nvarcharType(length) : varcharType(length)};
}

TypedValue binaryLiteral(std::string_view hex) {
    const Bytes bytes = *parseHex((hex.size() % 2 != 0 ? "0" : "") + std::string(hex));
    SqlType type = simpleType(TypeId::VarBinary);
    type.length = bytes.size() > 8000 ? SqlType::kMax : std::max(static_cast<int>(bytes.size()), 1);
    return {bytes, type};
}

}  // namespace tsql
