// Values in their storage form: T-SQL's conversions, and arithmetic.
#pragma once

#include "messages/Messages.h"
#include "types/DateTime.h"
#include "types/Decimal.h"

namespace tsql {

CellView viewOf(const Value& value);
Value ownedValue(const CellView& view);
template <typename Cell>  // CellView or Value
bool isNull(const Cell& cell) {
    return std::holds_alternative<Null>(cell);
}

enum class Conversion {
    Cast,    // CAST, CONVERT, SET @variable: strings are truncated silently
    Try,     // TRY_CAST, TRY_CONVERT: failures result in NULL
    Assign,  // a column of a table: a string that is too long is error 8152
};

// Converts a value; NULL stays NULL. `style` is CONVERT's third argument. Throws SqlError 245, 8114, 8115,
// 241, 242, 8152, 220, 529 ... as SQL Server does.
Value convertValue(const CellView& value, const SqlType& from, const SqlType& to, int style = kNoStyle,
                   Conversion kind = Conversion::Cast);

// String form of a value, as PRINT and a conversion to varchar return it; empty for NULL.
std::string textOf(const CellView& value, const SqlType& type);

// `left op right` for operands of any number types, in the form of `type`, which is operatorType(op, left,
// right). NULL if an operand is NULL. Throws SqlError 8115 (overflow) and 8134 (division by zero).
Value arithmetic(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type);

struct TypedValue {
    Value value = Null{};
    SqlType type;
};
// Values of literals. The type of a number depends on its form: 12 is int, 3000000000 and 1.50 are decimal,
// 1e3 is float, $1.5 is money. Throws SqlError 1007 for more than 38 digits.
TypedValue numericLiteral(std::string_view text);
TypedValue textLiteral(std::string_view text, bool national);
TypedValue binaryLiteral(std::string_view hex);  // the digits after 0x

// Storage form of a number of an exact type. Throws SqlError 8115 if it is too large.
Value checkedCell(Int128 number, const SqlType& type);
[[noreturn]] void throwOverflow(const SqlType& type);  // error 8115: an expression is too large for its type

std::string hexDigits(std::span<const std::byte> bytes);  // "0A1B"
// Parses pairs of hexadecimal digits; empty if there are others.
std::optional<Bytes> parseHex(std::string_view digits);

}  // namespace tsql
