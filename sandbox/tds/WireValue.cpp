// Values on the wire, declared in WireType.h.
#include <cmath>

#include "WireType.h"

namespace tds {
namespace {

using tsql::CellView;
using tsql::DateTime;
using tsql::Int128;
using tsql::SqlType;
using tsql::TypeId;
using tsql::Value;

constexpr std::size_t kTextPointerSize = 16;
constexpr std::size_t kTimeStampSize = 8;
constexpr std::size_t kDateSize = 3;
constexpr std::size_t kChunkedTotalWidth = 8, kChunkWidth = 4;  // length fields of PLP

constexpr std::int64_t kUnitsPerSecond = 300;  // of a datetime
constexpr std::int64_t kTicksPerMinute = 60 * DateTime::kTicksPerSecond;
constexpr int kTickDigits = 7;  // decimal digits of a second in DateTime::ticks

const SqlType kGuidBytes{TypeId::Binary, 16, 0, 0};  // form of a uniqueidentifier on the wire

// Width in bytes of a value's length field.
std::size_t lengthWidth(Framing framing) {
    constexpr std::size_t kWidths[] = {0, 1, 2, 4, kChunkedTotalWidth};
    return kWidths[static_cast<std::size_t>(framing)];
}

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
    const std::int64_t days = value.days - DateTime::kDay1900;
    const bool isSmall = size == 4;
    if (isSmall && (days < 0 || days > 0xFFFF)) throwOutOfRange("a smalldatetime");
    const std::int64_t rounded = value.ticks * kUnitsPerSecond + DateTime::kTicksPerSecond / 2;
    out.number(static_cast<std::uint64_t>(days), size / 2);
    out.number(static_cast<std::uint64_t>(isSmall ? value.ticks / kTicksPerMinute
                                                  : rounded / DateTime::kTicksPerSecond),
               size / 2);
}

void encodeScaled(ByteWriter& out, const DateTime& value, const SqlType& type) {
    const std::size_t dateBytes = type.id == TypeId::Time ? 0 : kDateSize;
    const std::int64_t time = value.ticks / tsql::powerOfTen(kTickDigits - type.scale);
    out.number(static_cast<std::uint64_t>(time), sizeOf(type) - dateBytes);
    out.number(static_cast<std::uint64_t>(value.days), dateBytes);
}

void encode(ByteWriter& out, const WireType& type, const CellView& value) {
    const std::size_t size = type.form.size;
    const TypeId id = type.type.id;
    if (id == TypeId::Money) {  // the upper half first
        const auto number = static_cast<std::uint64_t>(storedAs<std::int64_t>(value));
        out.u32(number >> 32);
        out.u32(number);
    } else if (id == TypeId::Decimal) {
        encodeDecimal(out, value, type.type);
    } else if (tsql::isExact(id)) {
        encodeInteger(out, value, size, id > TypeId::TinyInt);
    } else if (id == TypeId::Real) {
        out.u32(std::bit_cast<std::uint32_t>(static_cast<float>(asDouble(value))));
    } else if (id == TypeId::Float) {
        out.u64(std::bit_cast<std::uint64_t>(asDouble(value)));
    } else if (id == TypeId::UniqueIdentifier) {
        out.bytes(std::get<tsql::Bytes>(tsql::convertValue(value, type.type, kGuidBytes)));
    } else if (tsql::isBinary(id)) {
        out.bytes(storedAs<tsql::Blob>(value));
    } else if (tsql::isText(id)) {
        tsql::isNational(id) ? out.utf16(storedAs<std::string_view>(value))
                             : out.codePage1252(storedAs<std::string_view>(value));
    } else {
        const DateTime moment = tsql::fromStorage(storedAs<std::string_view>(value));
        size > 0 ? encodeDateTime(out, moment, size) : encodeScaled(out, moment, type.type);
    }
}

DateTime decodeDateTime(ByteReader in) {
    const std::size_t half = in.remaining() / 2;
    const bool isSmall = half == 2;  // unsigned days and minutes
    const auto days = isSmall ? in.u16() : in.signedNumber(half);
    const auto time = isSmall ? in.u16() * kTicksPerMinute
                              : in.signedNumber(half) * DateTime::kTicksPerSecond / kUnitsPerSecond;
    return {days + DateTime::kDay1900, time};
}

DateTime decodeScaled(ByteReader in, const SqlType& type) {
    if (in.remaining() != sizeOf(type)) throw ProtocolError("invalid length of a date or time parameter");
    const std::size_t dateBytes = type.id == TypeId::Time ? 0 : kDateSize;
    const auto time = static_cast<std::int64_t>(in.number(in.remaining() - dateBytes));
    return {static_cast<std::int64_t>(in.number(dateBytes)),
            time * tsql::powerOfTen(kTickDigits - type.scale)};
}

Value decodeDecimal(ByteReader in, const SqlType& type) {
    if (in.remaining() > sizeOf(tsql::decimalType(tsql::kMostDigits, 0)))
        throw ProtocolError("invalid length of a decimal parameter");
    const bool negative = in.u8() == 0;
    const std::uint64_t low = in.number(std::min<std::size_t>(in.remaining(), 8));
    const std::uint64_t high = in.number(in.remaining());
    const Int128 magnitude = static_cast<Int128>(high) << 64 | low;
    if (high > INT64_MAX || !tsql::fits(magnitude, type))
        throw tsql::sqlError(tsql::message::kArithmeticOverflow, {"numeric", "numeric"});
    return tsql::exactCell(negative ? -magnitude : magnitude, type);
}

Value decodeFloat(double value) {
    if (!std::isfinite(value)) throw ValueError("a number is not finite");
    return value;
}

tsql::Blob blobOf(ByteView data) {
    return {reinterpret_cast<const std::byte*>(data.data()), data.size()};
}

Value decode(const WireType& type, ByteView data) {
    ByteReader in(data);
    switch (const TypeId id = type.type.id) {
        case TypeId::Bit:
            return std::int64_t{in.u8() != 0};
        case TypeId::TinyInt:
            return std::int64_t{in.u8()};
        case TypeId::Money: {
            const std::uint64_t high = in.u32();
            return static_cast<std::int64_t>(high << 32 | in.u32());
        }
        case TypeId::Decimal:
            return decodeDecimal(in, type.type);
        case TypeId::Real:
            return decodeFloat(std::bit_cast<float>(in.u32()));
        case TypeId::Float:
            return decodeFloat(std::bit_cast<double>(in.number(8)));
        case TypeId::UniqueIdentifier:
            return tsql::convertValue(blobOf(data), kGuidBytes, type.type);
        case TypeId::VarBinary:
            return tsql::Bytes(blobOf(data));
        case TypeId::NVarChar:
            if (data.size() % 2 != 0) throw OddUnicode();
            return utf8FromUtf16(data);
        case TypeId::VarChar:
            return type.utf8 ? Bytes(data) : utf8FromCodePage1252(data);
        default:
            if (!tsql::isDateTime(id)) return in.signedNumber(data.size());
    }
    const DateTime value = type.form.size > 0 ? decodeDateTime(in) : decodeScaled(in, type.type);
    if (value.ticks < 0 || value.ticks >= DateTime::kTicksPerDay || !tsql::isInRange(value, type.type))
        throw ValueError("a date or time is out of range");
    return tsql::toStorage(value, type.type);
}

// Partially length-prefixed data (PLP) behind its total length: chunks up to an empty one,
// [MS-TDS] 2.2.5.2.3.
Bytes readChunks(ByteReader& in) {
    Bytes data;
    while (const std::uint32_t length = in.u32()) data += in.bytes(length);
    return data;
}

}  // namespace

void writeValue(ByteWriter& out, const WireType& type, const CellView& value) {
    const Framing framing = type.form.framing;
    const bool isLong = framing == Framing::Long;
    std::size_t width = lengthWidth(framing);
    if (tsql::isNull(value)) return isLong ? out.u8(0) : out.number(nullLength(width), width);
    if (isLong) {
        out.u8(kTextPointerSize);
        out.number(0, kTextPointerSize + kTimeStampSize);
    }
    // PLP with one chunk. An empty chunk is the end mark, hence none follows it.
    const bool isChunked = framing == Framing::Chunks;
    const std::size_t total = isChunked ? out.openLength(kChunkedTotalWidth) : 0;
    if (isChunked) width = kChunkWidth;
    const std::size_t place = out.openLength(width);
    encode(out, type, value);
    out.closeLength(place, width);
    const std::size_t length = out.size() - place;
    if (framing == Framing::Short && length >= nullLength(width))
        throw ValueError("a value is longer than its column type allows");
    if (!isChunked) return;
    out.fillIn(total, length, kChunkedTotalWidth);
    if (length > 0) out.u32(0);
}

Value readValue(ByteReader& in, const WireType& type) {
    const std::size_t width = lengthWidth(type.form.framing);
    const std::uint64_t length = width > 0 ? in.number(width) : type.form.size;
    if (length == nullLength(width)) return tsql::Null{};
    if (width == 1 && type.form.size != 0 && length != type.form.size)
        throw ProtocolError("the length of a parameter does not fit its type");
    if (type.form.framing == Framing::Chunks) return decode(type, readChunks(in));
    return decode(type, in.bytes(length));
}

}  // namespace tds
