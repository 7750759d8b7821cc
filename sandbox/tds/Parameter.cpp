#include "Parameter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>

#include "Utf16.h"
#include "WireTime.h"

namespace tds {
namespace {

using tsql::SqlType;
using tsql::TypeId;

constexpr std::uint8_t kFlagByReference = 0x01;
constexpr std::uint32_t kNullLength32 = 0xFFFFFFFF;
constexpr std::uint64_t kNullLength64 = ~std::uint64_t{0};
constexpr std::uint16_t kUnbounded = 0xFFFF;
constexpr std::size_t kCollationSize = 5;
constexpr unsigned char kCollationUtf8 = 0x04;  // in the collation's fourth byte
constexpr int kMostSizedBytes = 8000;
constexpr int kMostOffsetMinutes = 14 * 60;

// Types whose TYPE_INFO is their number alone, or a number and a size; rows of size 0 take a given one.
struct SimpleType {
    std::uint8_t wireId;
    std::uint8_t size;
    bool fixed;
    TypeId id;
};
constexpr SimpleType kSimpleTypes[] = {
    {0x30, 1, true, TypeId::TinyInt},       {0x32, 1, true, TypeId::Bit},
    {0x34, 2, true, TypeId::SmallInt},      {0x38, 4, true, TypeId::Int},
    {0x3A, 4, true, TypeId::SmallDateTime}, {0x3B, 4, true, TypeId::Real},
    {0x3C, 8, true, TypeId::Money},         {0x3D, 8, true, TypeId::DateTime},
    {0x3E, 8, true, TypeId::Float},         {0x7A, 4, true, TypeId::SmallMoney},
    {0x7F, 8, true, TypeId::BigInt},        {0x24, 16, false, TypeId::UniqueIdentifier},
    {0x26, 1, false, TypeId::TinyInt},      {0x26, 2, false, TypeId::SmallInt},
    {0x26, 4, false, TypeId::Int},          {0x26, 8, false, TypeId::BigInt},
    {0x68, 1, false, TypeId::Bit},          {0x6D, 4, false, TypeId::Real},
    {0x6D, 8, false, TypeId::Float},        {0x6E, 4, false, TypeId::SmallMoney},
    {0x6E, 8, false, TypeId::Money},        {0x6F, 4, false, TypeId::SmallDateTime},
    {0x6F, 8, false, TypeId::DateTime},
};

const SimpleType& simpleType(std::uint8_t wireId, std::size_t size) {
    for (const SimpleType& type : kSimpleTypes)
        if (type.wireId == wireId && type.size == size) return type;
    throw ProtocolError("a parameter's size is none that its type can have");
}

// ---- Values as T-SQL writes them ----------------------------------------------------------------

std::string scaled(std::string digits, bool negative, int scale) {
    const auto places = static_cast<std::size_t>(scale);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    if (places > 0) digits.insert(digits.size() - places, 1, '.');
    return negative ? "-" + digits : digits;
}

std::string moneyText(std::int64_t value) {
    const std::string digits = std::to_string(value);
    return value < 0 ? scaled(digits.substr(1), true, 4) : scaled(digits, false, 4);
}

std::string integerText(std::int64_t value) {
    std::string digits = std::to_string(value);
    if (value == static_cast<std::int32_t>(value)) return digits;
    return "CAST('" + digits + "' AS bigint)";  // a bare number of this size would be a decimal
}

std::string floatText(double value) {
    if (!std::isfinite(value)) throw ProtocolError("a parameter is no finite number");
    char text[40];
    std::snprintf(text, sizeof text, "%.16e", value);
    return text;
}

std::string guidText(ByteView bytes) {
    constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string text = "'";
    for (std::size_t i = 0; i < std::size(kOrder); ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X",
                      static_cast<unsigned>(static_cast<unsigned char>(bytes[kOrder[i]])));
        text += pair;
        if (i == 3 || i == 5 || i == 7 || i == 9) text += '-';
    }
    return text + "'";
}

std::string quoted(const std::string& dateTime) {
    return "'" + dateTime + "'";
}

std::string checkedDate(std::int64_t days) {
    constexpr std::int64_t kLastDay = 3'652'058;  // 9999-12-31
    if (days < 0 || days > kLastDay) throw ProtocolError("a date parameter is out of range");
    return dateText(days);
}

std::string checkedTime(std::int64_t ticks, int scale) {
    if (ticks < 0 || ticks >= kTicksPerDay) throw ProtocolError("a time parameter is out of range");
    return timeText(ticks, scale);
}

std::string dateTimeText(ByteReader& in) {
    const std::int64_t days = in.signedNumber(4) + kDaysTo1900;
    const std::int64_t milliseconds = (10 * in.signedNumber(4) + 1) / 3;
    return quoted(checkedDate(days) + " " + checkedTime(10'000 * milliseconds, 3));
}

std::string smallDateTimeText(ByteReader& in) {
    const auto days = static_cast<std::int64_t>(in.u16()) + kDaysTo1900;
    return quoted(checkedDate(days) + " " + checkedTime(kTicksPerMinute * in.u16(), 0));
}

std::string simpleText(TypeId id, ByteView bytes) {
    ByteReader in(bytes);
    switch (id) {
        case TypeId::Bit:
            return in.u8() != 0 ? "1" : "0";
        case TypeId::TinyInt:
            return std::to_string(in.u8());
        case TypeId::Real:
            return floatText(std::bit_cast<float>(in.u32()));
        case TypeId::Float:
            return floatText(std::bit_cast<double>(in.number(8)));
        case TypeId::SmallMoney:
            return moneyText(in.signedNumber(4));
        case TypeId::Money: {
            const std::uint64_t high = in.u32();
            return moneyText(static_cast<std::int64_t>(high << 32 | in.u32()));
        }
        case TypeId::DateTime:
            return dateTimeText(in);
        case TypeId::SmallDateTime:
            return smallDateTimeText(in);
        case TypeId::UniqueIdentifier:
            return guidText(bytes);
        default:
            return integerText(in.signedNumber(bytes.size()));
    }
}

// ---- The families of types ------------------------------------------------------------------------

void readSimple(ByteReader& in, std::uint8_t wireId, Parameter& parameter) {
    for (const SimpleType& type : kSimpleTypes) {
        if (type.wireId != wireId || !type.fixed) continue;
        parameter.type.id = type.id;
        parameter.value = simpleText(type.id, in.bytes(type.size));
        return;
    }
    parameter.type.id = simpleType(wireId, in.u8()).id;
    const std::size_t length = in.u8();
    if (length != 0) parameter.value = simpleText(simpleType(wireId, length).id, in.bytes(length));
}

// The digits of a little-endian number of up to 16 bytes.
std::string decimalDigits(ByteView magnitude) {
    std::string digits;
    Bytes rest(magnitude);
    while (std::any_of(rest.begin(), rest.end(), [](char c) { return c != 0; })) {
        unsigned remainder = 0;
        for (std::size_t i = rest.size(); i-- > 0;) {
            const unsigned part = remainder << 8 | static_cast<unsigned char>(rest[i]);
            rest[i] = static_cast<char>(part / 10);
            remainder = part % 10;
        }
        digits.insert(digits.begin(), static_cast<char>('0' + remainder));
    }
    return digits.empty() ? "0" : digits;
}

void readDecimal(ByteReader& in, Parameter& parameter) {
    in.skip(1);  // most bytes
    const std::uint8_t precision = in.u8();
    const std::uint8_t scale = in.u8();
    if (precision < 1 || precision > 38 || scale > precision)
        throw ProtocolError("a decimal parameter has an impossible precision");
    parameter.type = {TypeId::Decimal, 0, precision, scale};
    const std::size_t length = in.u8();
    if (length == 0) return;
    if (length > 17) throw ProtocolError("a decimal parameter is too long");
    const bool negative = in.u8() == 0;
    parameter.value = scaled(decimalDigits(in.bytes(length - 1)), negative, scale);
}

// An instant at the server's zone, from one that travelled as UTC.
std::string zonedText(std::int64_t days, std::int64_t ticks, std::int64_t offsetMinutes, int scale) {
    if (std::abs(offsetMinutes) > kMostOffsetMinutes)
        throw ProtocolError("a time zone offset is out of range");
    ticks += offsetMinutes * kTicksPerMinute;
    if (ticks < 0) --days, ticks += kTicksPerDay;
    if (ticks >= kTicksPerDay) ++days, ticks -= kTicksPerDay;
    const std::string zone = timeText(std::abs(offsetMinutes) * kTicksPerMinute, 0).substr(0, 5);
    return checkedDate(days) + " " + checkedTime(ticks, scale) + (offsetMinutes < 0 ? " -" : " +") + zone;
}

void readDateOrTime(ByteReader& in, TypeId id, Parameter& parameter) {
    const bool hasTime = id != TypeId::Date;
    const bool hasZone = id == TypeId::DateTimeOffset;
    const std::uint8_t scale = hasTime ? in.u8() : std::uint8_t{0};
    if (scale > 7) throw ProtocolError("a time parameter has an impossible scale");
    parameter.type = {id, 0, 0, scale};
    const std::size_t length = in.u8();
    if (length == 0) return;
    const std::size_t timeLength = !hasTime ? 0 : scale <= 2 ? 3 : scale <= 4 ? 4 : 5;
    const std::size_t dateLength = id == TypeId::Time ? 0 : 3;
    if (length != timeLength + dateLength + (hasZone ? 2 : 0))
        throw ProtocolError("a date or time parameter has a wrong length");
    auto ticks = static_cast<std::int64_t>(in.number(timeLength));
    for (int i = scale; i < 7; ++i) ticks *= 10;
    const auto days = static_cast<std::int64_t>(in.number(dateLength));
    if (hasZone)
        parameter.value = quoted(zonedText(days, ticks, in.signedNumber(2), scale));
    else if (!hasTime)
        parameter.value = quoted(checkedDate(days));
    else
        parameter.value = quoted((dateLength > 0 ? checkedDate(days) + " " : "") + checkedTime(ticks, scale));
}

// Partially length-prefixed data: a total, then chunks up to an empty one, 2.2.5.2.3.
std::optional<Bytes> readChunks(ByteReader& in) {
    if (in.number(8) == kNullLength64) return std::nullopt;
    Bytes data;
    while (const std::uint32_t length = in.u32()) data += in.bytes(length);
    return data;
}

std::optional<Bytes> readLong(ByteReader& in) {
    const std::uint32_t length = in.u32();
    if (length == kNullLength32) return std::nullopt;
    return Bytes(in.bytes(length));
}

enum class Encoding : std::uint8_t { Unicode, SingleByte, Binary };

struct StringType {
    std::uint8_t wireId;
    TypeId id;
    Encoding encoding;
    bool isLong;  // lengths of four bytes
};
constexpr StringType kStringTypes[] = {
    {0xE7, TypeId::NVarChar, Encoding::Unicode, false},   {0xEF, TypeId::NChar, Encoding::Unicode, false},
    {0xA7, TypeId::VarChar, Encoding::SingleByte, false}, {0xAF, TypeId::Char, Encoding::SingleByte, false},
    {0xA5, TypeId::VarBinary, Encoding::Binary, false},   {0xAD, TypeId::Binary, Encoding::Binary, false},
    {0x63, TypeId::NVarChar, Encoding::Unicode, true},    {0x23, TypeId::VarChar, Encoding::SingleByte, true},
    {0x22, TypeId::VarBinary, Encoding::Binary, true},
};

std::optional<Bytes> decoded(std::optional<Bytes> data, Encoding encoding, bool isUtf8) {
    if (!data || encoding == Encoding::Binary || (encoding == Encoding::SingleByte && isUtf8)) return data;
    return encoding == Encoding::Unicode ? utf8FromUtf16(*data) : utf8FromCodePage1252(*data);
}

void readString(ByteReader& in, const StringType& type, Parameter& parameter) {
    const std::uint32_t mostBytes = type.isLong ? in.u32() : in.u16();
    bool isUtf8 = false;
    if (type.encoding != Encoding::Binary)
        isUtf8 = (static_cast<unsigned char>(in.bytes(kCollationSize)[3]) & kCollationUtf8) != 0;
    std::optional<Bytes> data;
    if (type.isLong) {
        data = readLong(in);
    } else if (mostBytes == kUnbounded) {
        data = readChunks(in);
    } else if (const std::uint16_t length = in.u16(); length != 0xFFFF) {
        data = Bytes(in.bytes(length));
    }
    const bool sized = mostBytes <= kMostSizedBytes;
    const int units = static_cast<int>(sized ? mostBytes : 0) / (type.encoding == Encoding::Unicode ? 2 : 1);
    parameter.type = {type.id, sized ? std::max(units, 1) : SqlType::kMax, 0, 0};
    parameter.value = decoded(std::move(data), type.encoding, isUtf8);
}

void readXml(ByteReader& in, Parameter& parameter) {
    if (in.u8() != 0) throw ProtocolError("an xml parameter with a schema cannot be taken");
    parameter.type = {TypeId::NVarChar, SqlType::kMax, 0, 0};
    parameter.value = decoded(readChunks(in), Encoding::Unicode, false);
}

void readTyped(ByteReader& in, Parameter& parameter) {
    const std::uint8_t wireId = in.u8();
    for (const StringType& type : kStringTypes)
        if (type.wireId == wireId) return readString(in, type, parameter);
    switch (wireId) {
        case 0x1F:
            parameter.type.id = TypeId::Int;
            return;  // a bare NULL
        case 0x28:
            return readDateOrTime(in, TypeId::Date, parameter);
        case 0x29:
            return readDateOrTime(in, TypeId::Time, parameter);
        case 0x2A:
            return readDateOrTime(in, TypeId::DateTime2, parameter);
        case 0x2B:
            return readDateOrTime(in, TypeId::DateTimeOffset, parameter);
        case 0x6A:
        case 0x6C:
            return readDecimal(in, parameter);
        case 0xF1:
            return readXml(in, parameter);
        default:
            break;
    }
    for (const SimpleType& type : kSimpleTypes)
        if (type.wireId == wireId) return readSimple(in, wireId, parameter);
    throw ProtocolError("a parameter has type " + std::to_string(wireId) + ", which cannot be taken");
}

// ---- T-SQL --------------------------------------------------------------------------------------------

std::string textLiteral(ByteView text) {
    std::string result = "N'";
    for (const char c : text) {
        if (c == '\n' || c == '\r' || c == '\0') {
            result += "'+NCHAR(" + std::to_string(static_cast<int>(c)) + ")+N'";
        } else {
            result.append(c == '\'' ? 2 : 1, c);
        }
    }
    return result + "'";
}

std::string binaryLiteral(ByteView bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string result = "0x";
    for (const char c : bytes) {
        result += kDigits[static_cast<unsigned char>(c) >> 4];
        result += kDigits[static_cast<unsigned char>(c) & 0x0F];
    }
    return result;
}

constexpr const char* kTypeNames[] = {"bit",           "tinyint",   "smallint",       "int",
                                      "bigint",        "decimal",   "smallmoney",     "money",
                                      "real",          "float",     "char",           "varchar",
                                      "nchar",         "nvarchar",  "text",           "ntext",
                                      "xml",           "date",      "time",           "datetime",
                                      "smalldatetime", "datetime2", "datetimeoffset", "uniqueidentifier",
                                      "binary",        "varbinary", "image"};
static_assert(std::size(kTypeNames) == static_cast<std::size_t>(TypeId::Image) + 1);

}  // namespace

Parameter readParameter(ByteReader& in) {
    Parameter parameter;
    const std::size_t nameLength = in.u8();
    parameter.name = utf8FromUtf16(in.bytes(2 * nameLength));
    parameter.output = (in.u8() & kFlagByReference) != 0;
    readTyped(in, parameter);
    return parameter;
}

std::string typeName(const SqlType& type) {
    std::string name = kTypeNames[static_cast<std::size_t>(type.id)];
    const std::string scale = std::to_string(type.scale);
    switch (type.id) {
        case TypeId::Decimal:
            return name + "(" + std::to_string(type.precision) + "," + scale + ")";
        case TypeId::Time:
        case TypeId::DateTime2:
        case TypeId::DateTimeOffset:
            return name + "(" + scale + ")";
        case TypeId::Char:
        case TypeId::VarChar:
        case TypeId::NChar:
        case TypeId::NVarChar:
        case TypeId::Binary:
        case TypeId::VarBinary:
            return name + "(" + (type.length == SqlType::kMax ? "max" : std::to_string(type.length)) + ")";
        default:
            return name;
    }
}

std::string literal(const Parameter& parameter) {
    if (!parameter.value) return "NULL";
    switch (parameter.type.id) {
        case TypeId::Char:
        case TypeId::VarChar:
        case TypeId::NChar:
        case TypeId::NVarChar:
            return textLiteral(*parameter.value);
        case TypeId::Binary:
        case TypeId::VarBinary:
            return binaryLiteral(*parameter.value);
        default:
            return *parameter.value;
    }
}

}  // namespace tds
