#include "WireType.h"

#include <cmath>

namespace tds {
namespace {

using tsql::CellView, tsql::DateTime, tsql::Int128, tsql::Ticks, tsql::SqlType, tsql::TypeId, tsql::Value;

// ---- types

// Data types, [MS-TDS] 2.2.5.4. A type is sent in its first form. The other forms are only accepted from
// clients.
constexpr WireForm kForms[] = {
    {0x68, Framing::Byte, 1, TypeId::Bit, 0x32},            // BITN, BIT
    {0x26, Framing::Byte, 1, TypeId::TinyInt, 0x30},        // INTN, INT1
    {0x26, Framing::Byte, 2, TypeId::SmallInt, 0x34},       // INTN, INT2
    {0x26, Framing::Byte, 4, TypeId::Int, 0x38},            // INTN, INT4
    {0x26, Framing::Byte, 8, TypeId::BigInt, 0x7F},         // INTN, INT8
    {0x6A, Framing::Byte, 0, TypeId::Decimal},              // DECIMALN
    {0x6C, Framing::Byte, 0, TypeId::Decimal},              // NUMERICN
    {0x6E, Framing::Byte, 4, TypeId::SmallMoney, 0x7A},     // MONEYN, MONEY4
    {0x6E, Framing::Byte, 8, TypeId::Money, 0x3C},          // MONEYN, MONEY
    {0x6D, Framing::Byte, 4, TypeId::Real, 0x3B},           // FLOATN, FLOAT4
    {0x6D, Framing::Byte, 8, TypeId::Float, 0x3E},          // FLOATN, FLOAT8
    {0x28, Framing::Byte, 0, TypeId::Date},                 // DATEN
    {0x29, Framing::Byte, 0, TypeId::Time},                 // TIMEN
    {0x2A, Framing::Byte, 0, TypeId::DateTime2},            // DATETIME2N
    {0x2B, Framing::Byte, 0, TypeId::DateTimeOffset},       // DATETIMEOFFSETN
    {0x6F, Framing::Byte, 4, TypeId::SmallDateTime, 0x3A},  // DATETIMEN, DATETIME4
    {0x6F, Framing::Byte, 8, TypeId::DateTime, 0x3D},       // DATETIMEN, DATETIME
    {0x24, Framing::Byte, 16, TypeId::UniqueIdentifier},    // GUID
    {0xEF, Framing::Short, 0, TypeId::NChar},               // NCHAR
    {0xE7, Framing::Short, 0, TypeId::NVarChar},            // NVARCHAR
    {0xAF, Framing::Short, 0, TypeId::Char},                // BIGCHAR
    {0xA7, Framing::Short, 0, TypeId::VarChar},             // BIGVARCHAR
    {0xAD, Framing::Short, 0, TypeId::Binary},              // BIGBINARY
    {0xA5, Framing::Short, 0, TypeId::VarBinary},           // BIGVARBINARY
    {0x63, Framing::Long, 0, TypeId::NText},                // NTEXT
    {0x23, Framing::Long, 0, TypeId::Text},                 // TEXT
    {0x22, Framing::Long, 0, TypeId::Image},                // IMAGE
    {0xF1, Framing::Chunks, 0, TypeId::Xml},                // XML
    {0x1F, Framing::Fixed, 0, TypeId::Int},                 // NULL, an untyped NULL
};

constexpr unsigned char kCollationUtf8 = 0x04;  // in the fourth byte of a collation

constexpr std::uint64_t kMaxLengthMark = 0xFFFF;   // length of a (max) type
constexpr std::uint64_t kLongLength = 0x7FFFFFFF;  // length of text, ntext and image
constexpr std::uint64_t kMaxSizedBytes = 8000;     // of a type that is not (max)

constexpr int kMaxTimeScale = 7;
constexpr int kFractionCharacters = 8;  // of a time as a string, for clients without the type

// Type of a variable that can hold values of type `id`.
TypeId variableType(TypeId id) {
    if (tsql::isBinary(id)) return TypeId::VarBinary;
    return !tsql::isText(id) ? id : tsql::isNational(id) ? TypeId::NVarChar : TypeId::VarChar;
}

// Reads the length of a character or binary type, which also determines the framing of its values, and the
// collation.
void readLength(ByteReader& in, WireType& type) {
    const std::uint64_t maxBytes = type.form.framing == Framing::Long ? in.u32() : in.u16();
    if (type.form.framing == Framing::Short && maxBytes == kMaxLengthMark)
        type.form.framing = Framing::Chunks;
    const int unitSize = type.type.id == TypeId::NVarChar ? 2 : 1;
    type.type.length =
        maxBytes <= kMaxSizedBytes ? std::max(static_cast<int>(maxBytes) / unitSize, 1) : SqlType::kMax;
    if (!tsql::isText(type.type.id)) return;
    type.utf8 = (static_cast<unsigned char>(in.bytes(kCollation.size())[3]) & kCollationUtf8) != 0;
}

void readPrecision(ByteReader& in, SqlType& type) {
    if (type.id == TypeId::Decimal) {
        in.skip(1);  // size in bytes
        type.precision = in.u8();
        if (type.precision < 1 || type.precision > tsql::kMostDigits)
            throw ProtocolError("invalid precision of a decimal parameter");
    }
    type.scale = in.u8();
    if (type.scale > (type.id == TypeId::Decimal ? type.precision : kMaxTimeScale))
        throw ProtocolError("invalid scale of a parameter");
}

// ---- values

constexpr std::size_t kTextPointerSize = 16;
constexpr std::size_t kDateSize = 3, kOffsetSize = 2;
constexpr std::size_t kChunkWidth = 4;  // of the length of a chunk

using DateTimeUnits = std::chrono::duration<std::int64_t, std::ratio<1, 300>>;
constexpr int kTickDigits = 7;  // decimal digits of a second in Ticks

const SqlType kGuidBytes{TypeId::Binary, 16, 0, 0};  // form of a uniqueidentifier on the wire

// Length that marks NULL.
std::uint64_t nullLength(std::size_t width) {
    return width <= 1 ? 0 : ~std::uint64_t{0} >> (64 - 8 * width);
}

[[noreturn]] void throwOutOfRange(const char* what) {
    throw ValueError(std::string(what) + " is out of range for its column");
}

template <typename T>
const T& storedAs(const CellView& value) {
    if (const T* held = std::get_if<T>(&value)) return *held;
    throw ValueError("a value does not match the type of its column");
}

double asDouble(const CellView& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
    return storedAs<double>(value);
}

void encodeInteger(ByteWriter& out, const CellView& value, std::size_t size, bool isSigned) {
    const auto number = storedAs<std::int64_t>(value);
    const std::int64_t limit = std::int64_t{1} << (8 * size - (isSigned ? 1 : 0)) % 64;
    if (size < 8 && (number >= limit || number < (isSigned ? -limit : 0))) throwOutOfRange("a number");
    out.number(static_cast<std::uint64_t>(number), size);
}

void encodeDecimal(ByteWriter& out, const CellView& value, const SqlType& type) {
    const Int128 number = tsql::exactOf(value), magnitude = number < 0 ? -number : number;
    if (!tsql::fits(number, type)) throwOutOfRange("a decimal number");
    out.u8(number < 0 ? 0 : 1);
    const std::size_t size = sizeOf(type) - 1, low = std::min<std::size_t>(size, 8);
    out.number(static_cast<std::uint64_t>(magnitude), low);
    out.number(static_cast<std::uint64_t>(magnitude >> 64), size - low);
}

void encodeDateTime(ByteWriter& out, const DateTime& value, std::size_t size) {
    const std::int64_t days = (value.day() - tsql::kDay1900).count();
    const bool isSmall = size == 4;
    if (isSmall && (days < 0 || days > 0xFFFF)) throwOutOfRange("a smalldatetime");
    const std::int64_t time = isSmall ? value.time() / std::chrono::minutes(1)
                                      : std::chrono::round<DateTimeUnits>(value.time()).count();
    out.number(static_cast<std::uint64_t>(days), size / 2);
    out.number(static_cast<std::uint64_t>(time), size / 2);
}

void encodeScaled(ByteWriter& out, const DateTime& value, const SqlType& type) {
    const std::size_t offsetBytes = type.id == TypeId::DateTimeOffset ? kOffsetSize : 0;
    const std::size_t dateBytes = type.id == TypeId::Time ? 0 : kDateSize;
    const DateTime utc{value.utc()};
    const std::int64_t time = utc.time().count() / tsql::powerOfTen(kTickDigits - type.scale);
    out.number(static_cast<std::uint64_t>(time), sizeOf(type) - dateBytes - offsetBytes);
    out.number(static_cast<std::uint64_t>((utc.day() - tsql::kFirstDay).count()), dateBytes);
    out.number(static_cast<std::uint64_t>(value.offset.count()), offsetBytes);
}

void encode(ByteWriter& out, const WireType& type, const CellView& value) {
    const std::size_t size = type.form.size;
    const TypeId id = type.type.id;
    if (id == TypeId::Money)  // the upper half first
        return out.u64(std::rotl(static_cast<std::uint64_t>(storedAs<std::int64_t>(value)), 32));
    if (id == TypeId::Decimal) return encodeDecimal(out, value, type.type);
    if (tsql::isExact(id)) return encodeInteger(out, value, size, id > TypeId::TinyInt);
    if (id == TypeId::Real) return out.u32(std::bit_cast<std::uint32_t>(static_cast<float>(asDouble(value))));
    if (id == TypeId::Float) return out.u64(std::bit_cast<std::uint64_t>(asDouble(value)));
    if (id == TypeId::UniqueIdentifier)
        return out.bytes(std::get<tsql::Bytes>(tsql::convertValue(value, type.type, kGuidBytes)));
    if (tsql::isBinary(id)) return out.bytes(storedAs<tsql::Blob>(value));
    const auto text = storedAs<std::string_view>(value);
    if (tsql::isText(id))
        return (tsql::isNational(id) ? tsql::appendUtf16 : tsql::appendCodePage1252)(out.data(), text);
    const DateTime moment = tsql::fromStorage(text);
    size > 0 ? encodeDateTime(out, moment, size) : encodeScaled(out, moment, type.type);
}

Value dateCell(tsql::LocalDay first, std::int64_t days, Ticks time, const SqlType& type,
               std::chrono::minutes offset = {}) {
    constexpr std::int64_t kMostDays = 4'000'000;  // leave the calendar in any case
    const DateTime utc{first + tsql::days(std::clamp(days, -kMostDays, kMostDays)) + time};
    const DateTime value{utc.at + offset, offset};
    if (time != utc.time() || !tsql::isInRange(value, type))
        throw ValueError("a date or time is out of range");
    return tsql::toStorage(value, type);
}

Value decodeDateTime(ByteReader in, const SqlType& type) {
    const std::size_t half = in.remaining() / 2;
    const bool isSmall = half == 2;  // unsigned days and minutes
    const auto days = isSmall ? in.u16() : in.signedNumber(half);
    const Ticks time = isSmall ? std::chrono::minutes(in.u16())
                               : std::chrono::duration_cast<Ticks>(DateTimeUnits(in.signedNumber(half)));
    return dateCell(tsql::kDay1900, days, time, type);
}

Value decodeScaled(ByteReader in, const SqlType& type) {
    if (in.remaining() != sizeOf(type)) throw ProtocolError("invalid length of a date or time parameter");
    const bool isZoned = type.id == TypeId::DateTimeOffset;
    const std::size_t dateBytes = type.id == TypeId::Time ? 0 : kDateSize;
    const auto time =
        static_cast<std::int64_t>(in.number(in.remaining() - dateBytes - (isZoned ? kOffsetSize : 0)));
    const auto day = static_cast<std::int64_t>(in.number(dateBytes));
    return dateCell(tsql::kFirstDay, day, Ticks(time * tsql::powerOfTen(kTickDigits - type.scale)), type,
                    std::chrono::minutes(isZoned ? in.signedNumber(kOffsetSize) : 0));
}

Value decodeDecimal(ByteReader in, const SqlType& type) {
    if (in.remaining() > sizeOf(tsql::decimalType(tsql::kMostDigits, 0)))
        throw ProtocolError("invalid length of a decimal parameter");
    const bool negative = in.u8() == 0;
    const std::uint64_t low = in.number(std::min<std::size_t>(in.remaining(), 8));
    const std::uint64_t high = in.number(in.remaining());
    const Int128 magnitude = static_cast<Int128>(high) << 64 | low;
    if (high > INT64_MAX || !tsql::fits(magnitude, type))
        throw tsql::sqlError(tsql::kArithmeticOverflow, {"numeric", "numeric"});
    return tsql::exactCell(negative ? -magnitude : magnitude, type);
}

Value decode(const WireType& type, ByteView data) {
    ByteReader in(data);
    const tsql::Blob bytes(reinterpret_cast<const std::byte*>(data.data()), data.size());
    const TypeId id = type.type.id;
    if (id == TypeId::Bit) return std::int64_t{in.u8() != 0};
    if (id == TypeId::TinyInt) return std::int64_t{in.u8()};
    if (id == TypeId::Money) return static_cast<std::int64_t>(std::rotl(in.number(8), 32));
    if (id == TypeId::Decimal) return decodeDecimal(in, type.type);
    if (tsql::isApproximate(id)) {
        const bool isReal = id == TypeId::Real;
        const double value = isReal ? std::bit_cast<float>(in.u32()) : std::bit_cast<double>(in.number(8));
        return std::isfinite(value) ? value : throw ValueError("a number is not finite");
    }
    if (id == TypeId::UniqueIdentifier) return tsql::convertValue(bytes, kGuidBytes, type.type);
    if (id == TypeId::VarBinary) return tsql::Bytes(bytes);
    if (id == TypeId::NVarChar && data.size() % 2 != 0) throw OddUnicode();
    if (id == TypeId::NVarChar) return utf8FromUtf16(data);
    if (id == TypeId::VarChar) return type.utf8 ? Bytes(data) : utf8FromCodePage1252(data);
    if (!tsql::isDateTime(id)) return in.signedNumber(data.size());
    return type.form.size > 0 ? decodeDateTime(in, type.type) : decodeScaled(in, type.type);
}

}  // namespace

WireType wireType(SqlType type, Version version) {
    if (type.id == TypeId::RowVersion) type.id = TypeId::Binary;
    if (version < Version::V73A && (type.id == TypeId::Date || tsql::hasScale(type.id)))
        type =
            tsql::nvarcharType(tsql::precisionOf(type) + (type.id == TypeId::Date ? 0 : kFractionCharacters));
    if (version < Version::V72 && (type.length == SqlType::kMax || type.id == TypeId::Xml))
        type = {tsql::isBinary(type.id)     ? TypeId::Image
                : tsql::isNational(type.id) ? TypeId::NText
                                            : TypeId::Text,
                SqlType::kMax, 0, 0};
    for (WireForm form : kForms) {
        if (form.type != type.id) continue;
        if (form.framing == Framing::Short && type.length == SqlType::kMax) form.framing = Framing::Chunks;
        return {form, type};
    }
    throw ValueError("the type of a column cannot be sent to clients");
}

void writeTypeInfo(ByteWriter& out, const WireType& type) {
    const TypeId id = type.type.id;
    out.u8(type.form.id);
    if (type.form.size > 0) return out.u8(type.form.size);
    if (id == TypeId::Xml) return out.u8(0);  // has no schema
    if (id == TypeId::Decimal) {
        out.u8(sizeOf(type.type));
        out.u8(type.type.precision);
    }
    if (id == TypeId::Decimal || tsql::hasScale(id)) return out.u8(type.type.scale);
    if (id == TypeId::Date) return;
    // At least 1, even for the column of an empty literal.
    const auto units = static_cast<std::uint64_t>(std::max(type.type.length, 1));
    if (type.form.framing == Framing::Long)
        out.u32(kLongLength);
    else
        out.u16(type.form.framing == Framing::Chunks ? kMaxLengthMark
                : tsql::isNational(id)               ? 2 * units
                                                     : units);
    if (tsql::isText(id)) out.bytes(kCollation);
}

WireType readTypeInfo(ByteReader& in) {
    const std::uint8_t id = in.u8();
    const bool hasSize =
        std::ranges::any_of(kForms, [&](const WireForm& each) { return each.id == id && each.size > 0; });
    const std::size_t size = hasSize ? in.u8() : 0;
    const auto* const form = std::ranges::find_if(kForms, [&](const WireForm& each) {
        return each.id == id ? each.size == size : each.fixedId == id && id != 0;
    });
    const bool isUnknown = form == std::end(kForms);
    if (isUnknown && hasSize) throw ProtocolError("the size of a parameter does not fit its type");
    if (isUnknown) throw tsql::unsupported("parameters of TDS type " + std::to_string(id));
    WireType type{*form, tsql::simpleType(variableType(form->type))};
    if (form->id != id) type.form.framing = Framing::Fixed;
    if (form->framing == Framing::Short || form->framing == Framing::Long) readLength(in, type);
    if (form->type == TypeId::Xml) {
        if (in.u8() != 0) throw tsql::unsupported("xml parameters with a schema");
        type.type.length = SqlType::kMax;
    }
    if (form->type == TypeId::Decimal || tsql::hasScale(form->type)) readPrecision(in, type.type);
    return type;
}

void writeValue(ByteWriter& out, const WireType& type, const CellView& value) {
    const Framing framing = type.form.framing;
    const bool isLong = framing == Framing::Long;
    std::size_t width = static_cast<std::size_t>(framing);
    if (tsql::isNull(value)) return isLong ? out.u8(0) : out.number(nullLength(width), width);
    if (isLong) {
        out.u8(kTextPointerSize);
        out.number(0, kTextPointerSize + kTextTimestampSize);
    }
    // PLP with one chunk. An empty chunk is the end mark, hence none follows it.
    const bool isChunked = framing == Framing::Chunks;
    const std::size_t total = isChunked ? out.openLength(width) : 0;
    if (isChunked) width = kChunkWidth;
    const std::size_t place = out.openLength(width);
    encode(out, type, value);
    out.closeLength(place, width);
    const std::size_t length = out.size() - place;
    if (framing == Framing::Short && length >= nullLength(width))
        throw ValueError("a value is longer than its column type allows");
    if (!isChunked) return;
    out.fillIn(total, length, static_cast<std::size_t>(framing));
    if (length > 0) out.u32(0);
}

Value readValue(ByteReader& in, const WireType& type) {
    const std::size_t width = static_cast<std::size_t>(type.form.framing);
    const std::uint64_t length = width > 0 ? in.number(width) : type.form.size;
    if (length == nullLength(width)) return tsql::Null{};
    if (width == 1 && type.form.size != 0 && length != type.form.size)
        throw ProtocolError("the length of a parameter does not fit its type");
    if (type.form.framing != Framing::Chunks) return decode(type, in.bytes(length));
    // Partially length-prefixed data (PLP): chunks up to an empty one, [MS-TDS] 2.2.5.2.3.
    Bytes data;
    while (const std::uint32_t size = in.u32()) data += in.bytes(size);
    return decode(type, data);
}

}  // namespace tds
