// Names, families and precedence of the types, and the type that an operator's operands meet in.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "types/SqlType.h"

namespace tsql {

// Where a type's name stands decides the length that "varchar" alone means: 1 in a declaration, 30 in CAST.
enum class TypeUse { Declaration, Cast };

// "varchar", {20} -> varchar(20). `arguments` are what the parentheses hold; SqlType::kMax stands for "max".
// Synonyms (integer, dec, national character varying ...) are known, one blank between words.
// Throws SqlError: 2715 unknown type, 1001/1002/2750/131 a length, precision or scale out of its range.
SqlType makeType(std::string_view name, std::span<const int> arguments, TypeUse use);

std::string_view baseName(TypeId id);          // "varchar"
std::string displayName(const SqlType& type);  // "varchar(20)", "decimal(18,2)", "nvarchar(max)"

// A type as one integer, to be an argument of the functions registered in SQLite.
std::int64_t encodeType(const SqlType& type);
SqlType decodeType(std::int64_t code);

bool isInteger(TypeId id);  // Bit to BigInt
bool isMoney(TypeId id);
bool isWide(const SqlType& type);  // a decimal that 64 bits do not hold
bool isExact(TypeId id);           // integers, decimal, money: kept as scaled integers
bool isApproximate(TypeId id);     // real, float
inline bool isNumber(TypeId id) {
    return isExact(id) || isApproximate(id);
}
bool isText(TypeId id);         // char to xml
bool isNational(TypeId id);     // two bytes a character: nchar, nvarchar, ntext, xml
bool isDateTime(TypeId id);     // date to datetime2
bool hasLength(TypeId id);      // char to nvarchar, binary, varbinary
bool isClassicDate(TypeId id);  // datetime, smalldatetime: numbers of days, too
bool isBinary(TypeId id);       // binary, varbinary, image
bool isLob(TypeId id);          // text, ntext, image, xml: not to be compared

SqlType varcharType(int length);  // shorthands; above 8000 or 4000: (max)
SqlType nvarcharType(int length);
SqlType decimalType(int precision, int scale);
SqlType simpleType(TypeId id);  // a type without arguments, with its fixed precision and scale

// Bytes of the largest value, as sys.columns.max_length tells it; -1 for (max).
int maxLength(const SqlType& type);
// Decimal digits that an exact type may hold: int 10, bigint 19, money 19.
int precisionOf(const SqlType& type);

// Where a value's type does not fit it is converted by itself, or only by CAST, or by nothing.
enum class ConversionRule { Implicit, Explicit, Never };
ConversionRule conversionRule(TypeId from, TypeId to);
// Throws SqlError 206 or 257 for a conversion that does not happen by itself.
void requireImplicit(const SqlType& from, const SqlType& to);

// The type in which CASE, COALESCE, UNION and comparisons meet: the higher precedence, the longer length.
// Throws SqlError 206, or 402 where an operator of this name does not take such operands.
SqlType commonType(const SqlType& left, const SqlType& right, std::string_view operatorName = {});

enum class CompareOp { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

enum class BinaryOp { Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };
// The result type of `left op right`. Throws SqlError 402/8117 for types that the operator does not take.
SqlType operatorType(BinaryOp op, const SqlType& left, const SqlType& right);

}  // namespace tsql
