// Arithmetic operators of all types, declared in Values.h.
#include <cmath>

#include "types/Text.h"
#include "types/Values.h"

namespace tsql {
namespace {

Value floatResult(BinaryOp op, double left, double right, const SqlType& type) {
    if (op == BinaryOp::Divide && right == 0) throw sqlError(kDivideByZero);
    const double result = op == BinaryOp::Add        ? left + right
                          : op == BinaryOp::Subtract ? left - right
                          : op == BinaryOp::Multiply ? left * right
                                                     : left / right;
    if (!std::isfinite(result)) throwOverflow(type);
    return convertValue(result, simpleType(TypeId::Float), type);
}

// datetime plus or minus a number: the number counts days; a datetime counts as its days since 1900.
Value dateResult(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type) {
    const auto ticks = [&](const CellView& value, const SqlType& from) {
        return fromStorage(std::get<std::string>(convertValue(value, from, type))).at - kDay1900;
    };
    const Ticks first = ticks(left, leftType), second = ticks(right, rightType);
    const DateTime result{kDay1900 + first + (op == BinaryOp::Add ? second : -second)};
    if (!isInRange(result, type)) throwOverflow(type);
    return toStorage(result, type);
}

// Cut to the length of the type.
Value concatenated(const CellView& left, const CellView& right, const SqlType& type) {
    Value both = ownedValue(left);
    if (auto* text = std::get_if<std::string>(&both))
        text->append(std::get<std::string_view>(right));
    else
        std::get<Bytes>(both).append(std::get<Blob>(right));
    return convertValue(viewOf(both), type, type);
}

// The type of an exact literal has exactly the precision and scale that are written.
SqlType typeOfNumber(std::string_view text) {
    if (text.starts_with('$')) return simpleType(TypeId::Money);
    if (text.find_first_of("eE") != std::string_view::npos) return simpleType(TypeId::Float);
    const auto point = std::min(text.find('.'), text.size());
    const auto scale = point == text.size() ? 0 : text.size() - point - 1;
    const auto whole = point - std::min(text.find_first_not_of('0'), point);
    if (whole + scale > kMostDigits) throw sqlError(kNumberTooLong, {text});
    return decimalType(static_cast<int>(std::max<std::size_t>(1, whole + scale)), static_cast<int>(scale));
}

}  // namespace

Value arithmetic(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type) {
    if (isNull(left) || isNull(right)) return Null{};
    if (isText(type.id) || isBinary(type.id)) return concatenated(left, right, type);
    if (isDateTime(type.id)) return dateResult(op, left, leftType, right, rightType, type);
    if (isApproximate(type.id)) {
        const SqlType wide = simpleType(TypeId::Float);
        const auto real = [&](const CellView& value, const SqlType& from) {
            return std::get<double>(convertValue(value, from, wide));
        };
        return floatResult(op, real(left, leftType), real(right, rightType), type);
    }
    // A string operand of a number is converted to their common type.
    const SqlType common = commonType(leftType, rightType);
    const SqlType a = isExact(leftType.id) ? leftType : common,
                  b = isExact(rightType.id) ? rightType : common;
    const Int128 x = exactOf(a == leftType ? left : viewOf(convertValue(left, leftType, a)));
    const Int128 y = exactOf(b == rightType ? right : viewOf(convertValue(right, rightType, b)));
    const Int128 result = op == BinaryOp::BitAnd   ? x & y
                          : op == BinaryOp::BitOr  ? x | y
                          : op == BinaryOp::BitXor ? x ^ y
                                                   : exactResult(op, x, a, y, b, type.scale);
    return checkedCell(result, type);
}

Value checkedCell(Int128 number, const SqlType& type) {
    if (!fits(number, type)) throwOverflow(type);
    return exactCell(number, type);
}

TypedValue numericLiteral(std::string_view text) {
    const SqlType type = typeOfNumber(text);
    Value value = convertValue(text, varcharType(SqlType::kMax), type, kNoStyle, Conversion::Try);
    if (isNull(value)) throw sqlError(type.id == TypeId::Float ? kFloatOutOfRange : kNumberTooLong, {text});
    const auto* integer = std::get_if<std::int64_t>(&value);
    const bool isInt = integer && type.id == TypeId::Decimal && *integer <= INT32_MAX &&
                       text.find('.') == std::string_view::npos;
    return {std::move(value), isInt ? simpleType(TypeId::Int) : type};
}

TypedValue textLiteral(std::string_view text, bool national) {
    const int length = static_cast<int>(std::clamp<std::size_t>(characterCount(text), 1, 8001));
    return {std::string(text), national ? nvarcharType(length) : varcharType(length)};
}

TypedValue binaryLiteral(std::string_view hex) {
    const Bytes bytes = *parseHex((hex.size() % 2 != 0 ? "0" : "") + std::string(hex));
    const int length = bytes.size() > 8000 ? SqlType::kMax : std::max(static_cast<int>(bytes.size()), 1);
    return {bytes, {TypeId::VarBinary, length, 0, 0}};
}

}  // namespace tsql
