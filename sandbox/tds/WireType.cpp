#include "WireType.h"

namespace tds {
namespace {

using tsql::SqlType;
using tsql::TypeId;

// Data types, [MS-TDS] 2.2.5.4. A type is sent in its first form. The other forms are only accepted from
// clients.
constexpr WireForm kForms[] = {
    {0x68, Framing::Byte, 1, TypeId::Bit},                // BITN
    {0x26, Framing::Byte, 1, TypeId::TinyInt},            // INTN
    {0x26, Framing::Byte, 2, TypeId::SmallInt},           // INTN
    {0x26, Framing::Byte, 4, TypeId::Int},                // INTN
    {0x26, Framing::Byte, 8, TypeId::BigInt},             // INTN
    {0x6A, Framing::Byte, 0, TypeId::Decimal},            // DECIMALN
    {0x6C, Framing::Byte, 0, TypeId::Decimal},            // NUMERICN
    {0x6E, Framing::Byte, 4, TypeId::SmallMoney},         // MONEYN
    {0x6E, Framing::Byte, 8, TypeId::Money},              // MONEYN
    {0x6D, Framing::Byte, 4, TypeId::Real},               // FLOATN
    {0x6D, Framing::Byte, 8, TypeId::Float},              // FLOATN
    {0x28, Framing::Byte, 0, TypeId::Date},               // DATEN
    {0x29, Framing::Byte, 0, TypeId::Time},               // TIMEN
    {0x2A, Framing::Byte, 0, TypeId::DateTime2},          // DATETIME2N
    {0x6F, Framing::Byte, 4, TypeId::SmallDateTime},      // DATETIMEN
    {0x6F, Framing::Byte, 8, TypeId::DateTime},           // DATETIMEN
    {0x24, Framing::Byte, 16, TypeId::UniqueIdentifier},  // GUID
    {0xEF, Framing::Short, 0, TypeId::NChar},             // NCHAR
    {0xE7, Framing::Short, 0, TypeId::NVarChar},          // NVARCHAR
    {0xAF, Framing::Short, 0, TypeId::Char},              // BIGCHAR
    {0xA7, Framing::Short, 0, TypeId::VarChar},           // BIGVARCHAR
    {0xAD, Framing::Short, 0, TypeId::Binary},            // BIGBINARY
    {0xA5, Framing::Short, 0, TypeId::VarBinary},         // BIGVARBINARY
    {0x63, Framing::Long, 0, TypeId::NText},              // NTEXT
    {0x23, Framing::Long, 0, TypeId::Text},               // TEXT
    {0x22, Framing::Long, 0, TypeId::Image},              // IMAGE
    {0xF1, Framing::Chunks, 0, TypeId::Xml},              // XML
    {0x1F, Framing::Fixed, 0, TypeId::Int},               // NULL, an untyped NULL
    {0x32, Framing::Fixed, 1, TypeId::Bit},               // BIT
    {0x30, Framing::Fixed, 1, TypeId::TinyInt},           // INT1
    {0x34, Framing::Fixed, 2, TypeId::SmallInt},          // INT2
    {0x38, Framing::Fixed, 4, TypeId::Int},               // INT4
    {0x7F, Framing::Fixed, 8, TypeId::BigInt},            // INT8
    {0x7A, Framing::Fixed, 4, TypeId::SmallMoney},        // MONEY4
    {0x3C, Framing::Fixed, 8, TypeId::Money},             // MONEY
    {0x3B, Framing::Fixed, 4, TypeId::Real},              // FLOAT4
    {0x3E, Framing::Fixed, 8, TypeId::Float},             // FLOAT8
    {0x3A, Framing::Fixed, 4, TypeId::SmallDateTime},     // DATETIME4
    {0x3D, Framing::Fixed, 8, TypeId::DateTime},          // DATETIME
};

constexpr unsigned char kCollationUtf8 = 0x04;  // in the fourth byte of a collation

constexpr std::uint64_t kMaxLengthMark = 0xFFFF;   // length of a (max) type
constexpr std::uint64_t kLongLength = 0x7FFFFFFF;  // length of text, ntext and image
constexpr std::uint64_t kMaxSizedBytes = 8000;     // of a type that is not (max)

constexpr int kMaxTimeScale = 7;
// Lengths of dates and times as strings, for clients without these types.
constexpr int kDateCharacters = 10, kTimeCharacters = 16, kDateTime2Characters = 27;

bool hasScaledTime(TypeId id) {
    return id == TypeId::Time || id == TypeId::DateTime2;
}

// Returns null when there is no such type of that size. size: 0 when TYPE_INFO has none.
const WireForm* findForm(std::uint8_t id, std::size_t size) {
    for (const WireForm& form : kForms)
        if (form.id == id && (form.size == size || form.size == 0 || form.framing == Framing::Fixed))
            return &form;
    return nullptr;
}

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

}  // namespace

WireType wireType(SqlType type, Version version) {
    if (version < Version::V73A && (type.id == TypeId::Date || hasScaledTime(type.id)))
        type = tsql::nvarcharType(type.id == TypeId::Date   ? kDateCharacters
                                  : type.id == TypeId::Time ? kTimeCharacters
                                                            : kDateTime2Characters);
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

bool carriesTableName(const WireType& type) {
    return type.form.framing == Framing::Long;
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
    if (id == TypeId::Decimal || hasScaledTime(id)) return out.u8(type.type.scale);
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
    const WireForm* form = findForm(id, 0);
    const bool hasSize = form == nullptr && std::any_of(std::begin(kForms), std::end(kForms),
                                                        [id](const WireForm& each) { return each.id == id; });
    if (hasSize) {
        form = findForm(id, in.u8());
        if (form == nullptr) throw ProtocolError("the size of a parameter does not fit its type");
    }
    if (form == nullptr) throw tsql::unsupported("parameters of TDS type " + std::to_string(id));
    WireType type{*form, tsql::simpleType(variableType(form->type))};
    if (form->framing == Framing::Short || form->framing == Framing::Long) readLength(in, type);
    if (form->type == TypeId::Xml) {
        if (in.u8() != 0) throw tsql::unsupported("xml parameters with a schema");
        type.type.length = SqlType::kMax;
    }
    if (form->type == TypeId::Decimal || hasScaledTime(form->type)) readPrecision(in, type.type);
    return type;
}

}  // namespace tds
