// Names, families and precedence of types; common types of operands.
#pragma once

#include <span>

#include "types/SqlType.h"

namespace tsql {

// Context of a type name. It decides the length of a bare "varchar": 1 in a declaration, 30 in CAST.
enum class TypeUse { Declaration, Cast };

// "varchar", {20} -> varchar(20). `arguments` are the values in parentheses; SqlType::kMax is "max". Accepts
// synonyms (integer, dec, national character varying ...) with one blank between words. Throws SqlError 2715
// for an unknown type, 1001, 1002, 2750 or 131 for a length, precision or scale out of range.
SqlType makeType(std::string_view name, std::span<const int> arguments, TypeUse use);

std::string_view baseName(TypeId id);          // "varchar"
int systemId(TypeId id);                       // sys.types.system_type_id
std::string displayName(const SqlType& type);  // "varchar(20)", "decimal(18,2)", "nvarchar(max)"

// A type as one integer, the form in which it is passed to functions registered in SQLite.
std::int64_t encodeType(const SqlType& type);
SqlType decodeType(std::int64_t code);

// A family of types, which follow each other in TypeId.
struct TypeFamily {
    TypeId first, last;
    constexpr bool operator()(TypeId id) const { return id >= first && id <= last; }
};
inline constexpr TypeFamily isInteger{TypeId::Bit, TypeId::BigInt};
inline constexpr TypeFamily isMoney{TypeId::SmallMoney, TypeId::Money};
inline constexpr TypeFamily isExact{TypeId::Bit, TypeId::Money};  // stored as scaled integers
inline constexpr TypeFamily isApproximate{TypeId::Real, TypeId::Float};
inline constexpr TypeFamily isNumber{TypeId::Bit, TypeId::Float};
inline constexpr TypeFamily isText{TypeId::Char, TypeId::Xml};
inline constexpr TypeFamily isClassicDate{TypeId::DateTime, TypeId::SmallDateTime};  // also days as numbers
inline constexpr TypeFamily isBinary{TypeId::Binary, TypeId::RowVersion};
constexpr bool isDateTime(TypeId id) {
    return (id >= TypeId::Date && id <= TypeId::DateTime2) || id == TypeId::DateTimeOffset;
}
constexpr bool isWide(const SqlType& type) {  // a decimal that does not fit in 64 bits
    return type.precision > 18;
}
constexpr bool isNational(TypeId id) {  // UTF-16 in SQL Server
    return id == TypeId::NChar || id == TypeId::NVarChar || id == TypeId::NText || id == TypeId::Xml;
}
constexpr bool isLob(TypeId id) {  // not comparable
    return (id >= TypeId::Text && id <= TypeId::Xml) || id == TypeId::Image;
}
constexpr bool hasScale(TypeId id) {  // of its fraction of a second
    return id == TypeId::Time || id == TypeId::DateTime2 || id == TypeId::DateTimeOffset;
}
constexpr bool hasLength(TypeId id) {  // char to nvarchar, binary, varbinary
    return (isText(id) || isBinary(id)) && !isLob(id) && id != TypeId::RowVersion;
}
constexpr bool isPadded(TypeId id) {  // to its length
    return id == TypeId::Char || id == TypeId::NChar || id == TypeId::Binary || id == TypeId::RowVersion;
}

SqlType varcharType(int length);  // (max) above 8000 or 4000
SqlType nvarcharType(int length);
SqlType decimalType(int precision, int scale);
SqlType simpleType(TypeId id);  // a type without arguments, with its fixed precision and scale

// sys.columns.max_length: bytes of the largest value; -1 for (max).
int maxLength(const SqlType& type);
// Decimal digits of an exact type: int 10, bigint 19, money 19. Of others as sys.types shows them.
int precisionOf(const SqlType& type);

// Whether a conversion happens implicitly, only by CAST, or never.
enum class ConversionRule : char { Implicit = 'i', Explicit = 'e', Never = '-' };
ConversionRule conversionRule(TypeId from, TypeId to);
// Throws SqlError 206 or 257 unless the conversion is implicit.
void requireImplicit(const SqlType& from, const SqlType& to);

// Common type of CASE, COALESCE, UNION and comparisons: the type of higher precedence, the longer length.
// Throws SqlError 206, or 402 if `operatorName` does not accept these operands.
SqlType commonType(const SqlType& left, const SqlType& right, std::string_view operatorName = {});

enum class CompareOp { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

enum class BinaryOp { Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };
// Result type of `left op right`. Throws SqlError 402 or 8117 for types that the operator does not accept.
SqlType operatorType(BinaryOp op, const SqlType& left, const SqlType& right);

}  // namespace tsql
