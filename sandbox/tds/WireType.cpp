#include "WireType.h"

#include <algorithm>

#include "ServerMessages.h"

namespace tds {
namespace {

using tsql::SqlType;
using tsql::TypeId;

// Data types, [MS-TDS] 2.2.5.4.
enum : std::uint8_t {
    kNullType = 0x1F,
    kImageType = 0x22,
    kTextType = 0x23,
    kGuidType = 0x24,
    kIntNType = 0x26,
    kDateNType = 0x28,
    kTimeNType = 0x29,
    kDateTime2NType = 0x2A,
    kInt1Type = 0x30,
    kBitType = 0x32,
    kInt2Type = 0x34,
    kInt4Type = 0x38,
    kDateTime4Type = 0x3A,
    kFloat4Type = 0x3B,
    kMoneyType = 0x3C,
    kDateTimeType = 0x3D,
    kFloat8Type = 0x3E,
    kNTextType = 0x63,
    kBitNType = 0x68,
    kDecimalNType = 0x6A,
    kNumericNType = 0x6C,
    kFloatNType = 0x6D,
    kMoneyNType = 0x6E,
    kDateTimeNType = 0x6F,
    kMoney4Type = 0x7A,
    kInt8Type = 0x7F,
    kBigVarBinaryType = 0xA5,
    kBigVarCharType = 0xA7,
    kBigBinaryType = 0xAD,
    kBigCharType = 0xAF,
    kNVarCharType = 0xE7,
    kNCharType = 0xEF,
    kXmlType = 0xF1,
};

// A type is sent in its first form. The other forms are only accepted from clients.
constexpr WireForm kForms[] = {
    {kBitNType, Framing::Byte, 1, TypeId::Bit},
    {kIntNType, Framing::Byte, 1, TypeId::TinyInt},
    {kIntNType, Framing::Byte, 2, TypeId::SmallInt},
    {kIntNType, Framing::Byte, 4, TypeId::Int},
    {kIntNType, Framing::Byte, 8, TypeId::BigInt},
    {kDecimalNType, Framing::Byte, 0, TypeId::Decimal},
    {kNumericNType, Framing::Byte, 0, TypeId::Decimal},
    {kMoneyNType, Framing::Byte, 4, TypeId::SmallMoney},
    {kMoneyNType, Framing::Byte, 8, TypeId::Money},
    {kFloatNType, Framing::Byte, 4, TypeId::Real},
    {kFloatNType, Framing::Byte, 8, TypeId::Float},
    {kDateNType, Framing::Byte, 0, TypeId::Date},
    {kTimeNType, Framing::Byte, 0, TypeId::Time},
    {kDateTime2NType, Framing::Byte, 0, TypeId::DateTime2},
    {kDateTimeNType, Framing::Byte, 4, TypeId::SmallDateTime},
    {kDateTimeNType, Framing::Byte, 8, TypeId::DateTime},
    {kGuidType, Framing::Byte, 16, TypeId::UniqueIdentifier},
    {kNCharType, Framing::Short, 0, TypeId::NChar},
    {kNVarCharType, Framing::Short, 0, TypeId::NVarChar},
    {kBigCharType, Framing::Short, 0, TypeId::VarChar},
    {kBigVarCharType, Framing::Short, 0, TypeId::VarChar},
    {kBigBinaryType, Framing::Short, 0, TypeId::Binary},
    {kBigVarBinaryType, Framing::Short, 0, TypeId::VarBinary},
    {kNTextType, Framing::Long, 0, TypeId::NText},
    {kTextType, Framing::Long, 0, TypeId::VarChar},
    {kImageType, Framing::Long, 0, TypeId::Image},
    {kXmlType, Framing::Chunks, 0, TypeId::Xml},
    {kNullType, Framing::Fixed, 0, TypeId::Int},  // an untyped NULL
    {kBitType, Framing::Fixed, 1, TypeId::Bit},
    {kInt1Type, Framing::Fixed, 1, TypeId::TinyInt},
    {kInt2Type, Framing::Fixed, 2, TypeId::SmallInt},
    {kInt4Type, Framing::Fixed, 4, TypeId::Int},
    {kInt8Type, Framing::Fixed, 8, TypeId::BigInt},
    {kMoney4Type, Framing::Fixed, 4, TypeId::SmallMoney},
    {kMoneyType, Framing::Fixed, 8, TypeId::Money},
    {kFloat4Type, Framing::Fixed, 4, TypeId::Real},
    {kFloat8Type, Framing::Fixed, 8, TypeId::Float},
    {kDateTime4Type, Framing::Fixed, 4, TypeId::SmallDateTime},
    {kDateTimeType, Framing::Fixed, 8, TypeId::DateTime},
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

std::size_t decimalSize(int precision) {
    return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

WireType wireType(SqlType type, Version version) {
    if (type.id == TypeId::Char) type.id = TypeId::NChar;
    if (type.id == TypeId::VarChar) type.id = TypeId::NVarChar;
    if (type.id == TypeId::Text) type.id = TypeId::NText;
    if (version < Version::V73A && (type.id == TypeId::Date || hasScaledTime(type.id)))
        type = tsql::nvarcharType(type.id == TypeId::Date   ? kDateCharacters
                                  : type.id == TypeId::Time ? kTimeCharacters
                                                            : kDateTime2Characters);
    if (version < Version::V72 && (type.length == SqlType::kMax || type.id == TypeId::Xml))
        type = {tsql::isBinary(type.id) ? TypeId::Image : TypeId::NText, SqlType::kMax, 0, 0};
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
        out.u8(decimalSize(type.type.precision));
        out.u8(type.type.precision);
    }
    if (id == TypeId::Decimal || hasScaledTime(id)) return out.u8(type.type.scale);
    if (id == TypeId::Date) return;
    // At least 1, even for the column of an empty literal.
    const auto units = static_cast<std::uint64_t>(std::max(type.type.length, 1));
    if (type.form.framing == Framing::Long)
        out.u32(kLongLength);
    else
        out.u16(type.form.framing == Framing::Chunks ? kMaxLengthMark : tsql::isText(id) ? 2 * units : units);
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
    if (form == nullptr) throw parameterTypeNotSupported(id);
    WireType type{*form, tsql::simpleType(variableType(form->type))};
    if (form->framing == Framing::Short || form->framing == Framing::Long) readLength(in, type);
    if (form->type == TypeId::Xml) {
        if (in.u8() != 0) throw xmlSchemaNotSupported();
        type.type.length = SqlType::kMax;
    }
    if (form->type == TypeId::Decimal || hasScaledTime(form->type)) readPrecision(in, type.type);
    return type;
}

}  // namespace tds
