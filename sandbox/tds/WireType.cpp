#include "WireType.h"

#include <algorithm>
#include <bit>

#include "WireTime.h"

namespace tds {
namespace {

using tsql::CellView;
using tsql::SqlType;
using tsql::TypeId;

// SQL_Latin1_General_CP1_CI_AS, 2.2.5.1.2
constexpr ByteView kCollation("\x09\x04\xD0\x00\x34", 5);

constexpr std::uint64_t kNullLength16 = 0xFFFF;
constexpr std::uint64_t kNullLength64 = ~std::uint64_t{0};
constexpr std::uint64_t kUnboundedLength16 = 0xFFFF;  // of a (max) type
constexpr std::size_t kTextPointerSize = 16;

enum WireId : std::uint8_t {
    kImage = 0x22,
    kGuid = 0x24,
    kIntN = 0x26,
    kDate = 0x28,
    kTime = 0x29,
    kDateTime2 = 0x2A,
    kDateTimeOffset = 0x2B,
    kNText = 0x63,
    kBitN = 0x68,
    kDecimalN = 0x6A,
    kFloatN = 0x6D,
    kMoneyN = 0x6E,
    kDateTimeN = 0x6F,
    kBigVarBinary = 0xA5,
    kBigBinary = 0xAD,
    kNVarChar = 0xE7,
    kNChar = 0xEF,
    kXml = 0xF1,
};

// How the length of a value is given.
enum class Framing { Byte, Short, Unbounded, TextPointer };

struct WireForm {
    WireId id;
    Framing framing;
    std::size_t size;  // of a value; 0 where it depends
};

// In the order of TypeId.
constexpr WireForm kForms[] = {{kBitN, Framing::Byte, 1},           {kIntN, Framing::Byte, 1},
                               {kIntN, Framing::Byte, 2},           {kIntN, Framing::Byte, 4},
                               {kIntN, Framing::Byte, 8},           {kDecimalN, Framing::Byte, 0},
                               {kMoneyN, Framing::Byte, 4},         {kMoneyN, Framing::Byte, 8},
                               {kFloatN, Framing::Byte, 4},         {kFloatN, Framing::Byte, 8},
                               {kNChar, Framing::Short, 0},         {kNVarChar, Framing::Short, 0},
                               {kNChar, Framing::Short, 0},         {kNVarChar, Framing::Short, 0},
                               {kNText, Framing::TextPointer, 0},   {kNText, Framing::TextPointer, 0},
                               {kXml, Framing::Unbounded, 0},       {kDate, Framing::Byte, 3},
                               {kTime, Framing::Byte, 0},           {kDateTimeN, Framing::Byte, 8},
                               {kDateTimeN, Framing::Byte, 4},      {kDateTime2, Framing::Byte, 0},
                               {kDateTimeOffset, Framing::Byte, 0}, {kGuid, Framing::Byte, 16},
                               {kBigBinary, Framing::Short, 0},     {kBigVarBinary, Framing::Short, 0},
                               {kImage, Framing::TextPointer, 0}};
static_assert(std::size(kForms) == static_cast<std::size_t>(TypeId::Image) + 1);

WireForm formOf(const SqlType& type) {
    WireForm form = kForms[static_cast<std::size_t>(type.id)];
    if (form.framing == Framing::Short && type.length == SqlType::kMax) form.framing = Framing::Unbounded;
    return form;
}

// No column is declared narrower than one, not even an empty literal's.
std::uint64_t declaredLength(const SqlType& type) {
    return static_cast<std::uint64_t>(std::max(type.length, 1));
}

std::size_t decimalMagnitudeSize(int precision) {
    return precision <= 9 ? 4 : precision <= 19 ? 8 : precision <= 28 ? 12 : 16;
}

std::size_t timeSize(int scale) {
    return scale <= 2 ? 3 : scale <= 4 ? 4 : 5;
}

std::int64_t powerOfTen(int exponent) {
    std::int64_t power = 1;
    while (exponent-- > 0) power *= 10;
    return power;
}

// ---- Values going out -------------------------------------------------------------------------

template <typename T>
const T& as(const CellView& value, const char* what) {
    if (const T* held = std::get_if<T>(&value)) return *held;
    throw ValueError(std::string("a value does not have the form of its column's type, ") + what);
}

double asDouble(const CellView& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
    return as<double>(value, "a floating-point number");
}

ByteView asText(const CellView& value) {
    return as<std::string_view>(value, "text");
}

void writeInteger(ByteWriter& out, const CellView& value, std::size_t size, bool isSigned) {
    const auto number = as<std::int64_t>(value, "an integer");
    const std::int64_t limit = std::int64_t{1} << (8 * size - (isSigned ? 1 : 0)) % 64;
    const bool fits = size == 8 || (number < limit && number >= (isSigned ? -limit : 0));
    if (!fits) throw ValueError("the number " + std::to_string(number) + " is out of its column's range");
    out.u8(size);
    out.number(static_cast<std::uint64_t>(number), size);
}

void writeMoney(ByteWriter& out, const CellView& value) {
    const auto number = static_cast<std::uint64_t>(as<std::int64_t>(value, "money"));
    out.u8(8);
    out.u32(number >> 32);
    out.u32(number);
}

void writeDecimal(ByteWriter& out, const SqlType& type, const CellView& value) {
    const auto number = as<std::int64_t>(value, "a decimal number");
    const std::uint64_t magnitude =
        number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    const std::size_t size = decimalMagnitudeSize(type.precision);
    if (size == 4 && magnitude >> 32 != 0) throw ValueError("a decimal number is out of its column's range");
    out.u8(1 + size);
    out.u8(number < 0 ? 0 : 1);
    out.number(magnitude, std::min<std::size_t>(size, 8));
    if (size > 8) out.number(0, size - 8);
}

void writeFloat(ByteWriter& out, const CellView& value, std::size_t size) {
    const double number = asDouble(value);
    out.u8(size);
    if (size == 8) return out.u64(std::bit_cast<std::uint64_t>(number));
    out.u32(std::bit_cast<std::uint32_t>(static_cast<float>(number)));
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The first three groups of a uniqueidentifier are numbers, so they are turned round; the rest are bytes.
constexpr std::size_t kGuidOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

void writeGuid(ByteWriter& out, ByteView text) {
    Bytes inOrder;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        if (text[i] == '-') ++i;
        const int high = hexDigit(text[i]);
        const int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0) break;
        inOrder += static_cast<char>(high << 4 | low);
    }
    if (inOrder.size() != 16) throw ValueError("'" + Bytes(text) + "' is no uniqueidentifier");
    out.u8(16);
    for (const std::size_t i : kGuidOrder) out.u8(static_cast<unsigned char>(inOrder[i]));
}

void writeDateTime(ByteWriter& out, const DateTimeParts& parts) {
    constexpr std::int64_t kTicksPerThreeHundredths = kTicksPerSecond / 100;  // three 1/300 s
    constexpr std::int64_t kUnitsPerDay = 25'920'000;
    std::int64_t days = parts.days - kDaysTo1900;
    std::int64_t units = (3 * parts.ticks + kTicksPerThreeHundredths / 2) / kTicksPerThreeHundredths;
    if (units == kUnitsPerDay) {
        units = 0;
        ++days;
    }
    out.u8(8);
    out.u32(static_cast<std::uint64_t>(days));
    out.u32(static_cast<std::uint64_t>(units));
}

void writeSmallDateTime(ByteWriter& out, const DateTimeParts& parts) {
    const std::int64_t days = parts.days - kDaysTo1900;
    if (days < 0 || days > 0xFFFF) throw ValueError("a smalldatetime is out of its range");
    out.u8(4);
    out.u16(static_cast<std::uint64_t>(days));
    out.u16(static_cast<std::uint64_t>(parts.ticks / kTicksPerMinute));
}

void writeTicks(ByteWriter& out, std::int64_t ticks, int scale) {
    out.number(static_cast<std::uint64_t>(ticks / powerOfTen(7 - scale)), timeSize(scale));
}

void writeDateTimeOffset(ByteWriter& out, const DateTimeParts& parts, int scale) {
    std::int64_t days = parts.days;
    std::int64_t ticks = parts.ticks - parts.offsetMinutes * kTicksPerMinute;
    if (ticks < 0) --days, ticks += kTicksPerDay;
    if (ticks >= kTicksPerDay) ++days, ticks -= kTicksPerDay;
    out.u8(timeSize(scale) + 5);
    writeTicks(out, ticks, scale);
    out.number(static_cast<std::uint64_t>(days), 3);
    out.u16(static_cast<std::uint64_t>(parts.offsetMinutes));
}

// Unbounded values go out as one chunk of known length, 2.2.5.2.3.
void writeFramed(ByteWriter& out, Framing framing, ByteView data) {
    if (framing == Framing::Unbounded) {
        out.u64(data.size());
        if (!data.empty()) out.u32(data.size());
        out.bytes(data);
        out.u32(0);
    } else if (framing == Framing::TextPointer) {
        out.u8(kTextPointerSize);
        out.bytes(Bytes(kTextPointerSize, '\0'));
        out.u64(0);  // timestamp
        out.u32(data.size());
        out.bytes(data);
    } else {
        if (data.size() >= kNullLength16) throw ValueError("a value is longer than its column's type allows");
        out.u16(data.size());
        out.bytes(data);
    }
}

void writeNull(ByteWriter& out, Framing framing) {
    switch (framing) {
        case Framing::Byte:
        case Framing::TextPointer:
            return out.u8(0);
        case Framing::Short:
            return out.u16(kNullLength16);
        case Framing::Unbounded:
            return out.u64(kNullLength64);
    }
}

void writeBinary(ByteWriter& out, Framing framing, const CellView& value) {
    const tsql::Blob blob = as<tsql::Blob>(value, "bytes");
    writeFramed(out, framing, ByteView(reinterpret_cast<const char*>(blob.data()), blob.size()));
}

}  // namespace

SqlType wireType(const SqlType& type, Version version) {
    const auto unicodeText = [](int length) { return SqlType{TypeId::NVarChar, length, 0, 0}; };
    if (version < Version::V73A) {
        if (type.id == TypeId::Date) return unicodeText(10);
        if (type.id == TypeId::Time) return unicodeText(16);
        if (type.id == TypeId::DateTime2) return unicodeText(27);
        if (type.id == TypeId::DateTimeOffset) return unicodeText(34);
    }
    if (version < Version::V72) {
        if (type.id == TypeId::Xml) return {TypeId::NText, SqlType::kMax, 0, 0};
        if (type.length == SqlType::kMax)
            return {type.id == TypeId::VarBinary ? TypeId::Image : TypeId::NText, SqlType::kMax, 0, 0};
    }
    return type;
}

bool carriesTableName(const SqlType& type) {
    return formOf(type).framing == Framing::TextPointer;
}

void writeTypeInfo(ByteWriter& out, const SqlType& type) {
    const WireForm form = formOf(type);
    out.u8(form.id);
    switch (form.id) {
        case kDate:
            return;
        case kTime:
        case kDateTime2:
        case kDateTimeOffset:
            return out.u8(type.scale);
        case kDecimalN:
            out.u8(1 + decimalMagnitudeSize(type.precision));
            out.u8(type.precision);
            return out.u8(type.scale);
        case kNChar:
        case kNVarChar:
            out.u16(form.framing == Framing::Unbounded ? kUnboundedLength16 : 2 * declaredLength(type));
            return out.bytes(kCollation);
        case kBigBinary:
        case kBigVarBinary:
            return out.u16(form.framing == Framing::Unbounded ? kUnboundedLength16 : declaredLength(type));
        case kNText:
            out.u32(0x7FFFFFFE);
            return out.bytes(kCollation);
        case kImage:
            return out.u32(0x7FFFFFFF);
        case kXml:
            return out.u8(0);  // no schema
        default:
            return out.u8(form.size);
    }
}

void writeValue(ByteWriter& out, const SqlType& type, const CellView& value) {
    const WireForm form = formOf(type);
    if (std::holds_alternative<tsql::Null>(value)) return writeNull(out, form.framing);
    switch (form.id) {
        case kBitN:
            return writeInteger(out, value, 1, false);
        case kIntN:
            return writeInteger(out, value, form.size, type.id != TypeId::TinyInt);
        case kMoneyN:
            return form.size == 8 ? writeMoney(out, value) : writeInteger(out, value, 4, true);
        case kDecimalN:
            return writeDecimal(out, type, value);
        case kFloatN:
            return writeFloat(out, value, form.size);
        case kGuid:
            return writeGuid(out, asText(value));
        case kNChar:
        case kNVarChar:
        case kNText:
        case kXml:
            return writeFramed(out, form.framing, utf16FromUtf8(asText(value)));
        case kBigBinary:
        case kBigVarBinary:
        case kImage:
            return writeBinary(out, form.framing, value);
        default:
            break;
    }
    const DateTimeParts parts = parseDateTime(asText(value));
    switch (form.id) {
        case kDateTimeN:
            return form.size == 8 ? writeDateTime(out, parts) : writeSmallDateTime(out, parts);
        case kDateTimeOffset:
            return writeDateTimeOffset(out, parts, type.scale);
        case kDate:
            out.u8(3);
            break;
        case kTime:
            out.u8(timeSize(type.scale));
            break;
        default:
            out.u8(timeSize(type.scale) + 3);
            break;
    }
    if (form.id != kDate) writeTicks(out, parts.ticks, type.scale);
    if (form.id != kTime) out.number(static_cast<std::uint64_t>(parts.days), 3);
}

}  // namespace tds
