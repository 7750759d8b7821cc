// Values in their storage form: conversion between all types with T-SQL's rules, and exact arithmetic.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "messages/SqlError.h"
#include "types/DateTime.h"
#include "types/Decimal.h"
#include "types/SqlType.h"
#include "types/SqlTypes.h"

namespace tsql {

CellView viewOf(const Value& value);
Value ownedValue(const CellView& view);
inline bool isNull(const CellView& view) {
    return std::holds_alternative<Null>(view);
}
inline bool isNull(const Value& value) {
    return std::holds_alternative<Null>(value);
}

enum class Conversion {
    Cast,    // CAST, CONVERT, SET @variable: too long a text is cut in silence
    Try,     // TRY_CAST, TRY_CONVERT: what fails is NULL
    Assign,  // a column of a table: too long a text is error 8152
};

// Throws SqlError 245, 8114, 8115, 241, 242, 8152, 220, 529 ... as SQL Server numbers the failure.
// NULL stays NULL. `style` is CONVERT's third argument.
Value convertValue(const CellView& value, const SqlType& from, const SqlType& to, int style = kNoStyle,
                   Conversion kind = Conversion::Cast);

// The text of a value as PRINT and a conversion to varchar show it; empty for NULL.
std::string textOf(const CellView& value, const SqlType& type);

// `left op right` for operands of any number types, in the form of `type`: operatorType(op, left, right).
// Throws SqlError 8115 (overflow) and 8134 (divide by zero). NULL in, NULL out.
Value arithmetic(BinaryOp op, const CellView& left, const SqlType& leftType, const CellView& right,
                 const SqlType& rightType, const SqlType& type);

struct TypedValue {
    Value value = Null{};
    SqlType type;
};
// Constants of T-SQL's text. A number as written: 12 is int, 3000000000 and 1.50 are decimal, 1e3 is float,
// $1.5 is money. Throws SqlError 1007 for more than 38 digits.
TypedValue numericLiteral(std::string_view text);
TypedValue textLiteral(std::string_view text, bool national);
TypedValue binaryLiteral(std::string_view hex);  // the digits after 0x

// The storage form of a number of an exact type. Throws SqlError 8115 when it is too large for it.
Value checkedCell(Int128 number, const SqlType& type);
[[noreturn]] void throwOverflow(const SqlType& type);  // error 8115: an expression is too large for its type

std::string hexDigits(std::span<const std::byte> bytes);  // "0A1B"
// Pairs of hexadecimal digits; nothing when they are not.
std::optional<Bytes> parseHex(std::string_view digits);

}  // namespace tsql
