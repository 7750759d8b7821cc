#include "WireType.h"

#include <algorithm>

namespace tds {
namespace {

using tsql::SqlType;
using tsql::TypeId;

// Each type is sent in the first form that has it; the others are taken from clients only.
constexpr WireForm kForms[] = {
    {0x68, Framing::Byte, 1, TypeId::Bit},
    {0x26, Framing::Byte, 1, TypeId::TinyInt},
    {0x26, Framing::Byte, 2, TypeId::SmallInt},
    {0x26, Framing::Byte, 4, TypeId::Int},
    {0x26, Framing::Byte, 8, TypeId::BigInt},
    {0x6A, Framing::Byte, 0, TypeId::Decimal},
    {0x6C, Framing::Byte, 0, TypeId::Decimal},
    {0x6E, Framing::Byte, 4, TypeId::SmallMoney},
    {0x6E, Framing::Byte, 8, TypeId::Money},
    {0x6D, Framing::Byte, 4, TypeId::Real},
    {0x6D, Framing::Byte, 8, TypeId::Float},
    {0x28, Framing::Byte, 0, TypeId::Date},
    {0x29, Framing::Byte, 0, TypeId::Time},
    {0x2A, Framing::Byte, 0, TypeId::DateTime2},
    {0x6F, Framing::Byte, 4, TypeId::SmallDateTime},
    {0x6F, Framing::Byte, 8, TypeId::DateTime},
    {0x24, Framing::Byte, 16, TypeId::UniqueIdentifier},
    {0xEF, Framing::Short, 0, TypeId::NChar},
    {0xE7, Framing::Short, 0, TypeId::NVarChar},
    {0xAF, Framing::Short, 0, TypeId::VarChar},
    {0xA7, Framing::Short, 0, TypeId::VarChar},
    {0xAD, Framing::Short, 0, TypeId::Binary},
    {0xA5, Framing::Short, 0, TypeId::VarBinary},
    {0x63, Framing::Long, 0, TypeId::NText},
    {0x23, Framing::Long, 0, TypeId::VarChar},
    {0x22, Framing::Long, 0, TypeId::Image},
    {0xF1, Framing::Chunks, 0, TypeId::Xml},
    {0x1F, Framing::Fixed, 0, TypeId::Int},  // a bare NULL
    {0x32, Framing::Fixed, 1, TypeId::Bit},
    {0x30, Framing::Fixed, 1, TypeId::TinyInt},
    {0x34, Framing::Fixed, 2, TypeId::SmallInt},
    {0x38, Framing::Fixed, 4, TypeId::Int},
    {0x7F, Framing::Fixed, 8, TypeId::BigInt},
    {0x7A, Framing::Fixed, 4, TypeId::SmallMoney},
    {0x3C, Framing::Fixed, 8, TypeId::Money},
    {0x3B, Framing::Fixed, 4, TypeId::Real},
    {0x3E, Framing::Fixed, 8, TypeId::Float},
    {0x3A, Framing::Fixed, 4, TypeId::SmallDateTime},
    {0x3D, Framing::Fixed, 8, TypeId::DateTime},
};

constexpr unsigned char kCollationUtf8 = 0x04;  // in the collation's fourth byte

constexpr std::uint64_t kUnbounded = 0xFFFF;  // the length of a (max) type
constexpr std::uint64_t kLongestLong = 0x7FFFFFFF;
constexpr std::uint64_t kMostSizedBytes = 8000;

bool hasScaledTime(TypeId id) {
    return id == TypeId::Time || id == TypeId::DateTime2;
}

const WireForm* findForm(std::uint8_t id, std::size_t size) {
    for (const WireForm& form : kForms)
        if (form.id == id && (form.size == size || form.size == 0 || form.framing == Framing::Fixed))
            return &form;
    return nullptr;
}

// A variable has none of the types that are for columns alone.
TypeId variableId(TypeId id) {
    if (tsql::isBinary(id)) return TypeId::VarBinary;
    return !tsql::isText(id) ? id : tsql::isNational(id) ? TypeId::NVarChar : TypeId::VarChar;
}

// The length in bytes of a text or binary type, which also decides how its values are framed.
void readLength(ByteReader& in, WireType& type) {
    const std::uint64_t most = type.form.framing == Framing::Long ? in.u32() : in.u16();
    if (type.form.framing == Framing::Short && most == kUnbounded) type.form.framing = Framing::Chunks;
    const int units =
        static_cast<int>(most <= kMostSizedBytes ? most : 0) / (type.type.id == TypeId::NVarChar ? 2 : 1);
    type.type.length = most <= kMostSizedBytes ? std::max(units, 1) : SqlType::kMax;
    if (!tsql::isText(type.type.id)) return;
    type.utf8 = (static_cast<unsigned char>(in.bytes(kCollation.size())[3]) & kCollationUtf8) != 0;
}

void readPrecision(ByteReader& in, SqlType& type) {
    if (type.id == TypeId::Decimal) {
        in.skip(1);  // most bytes
        type.precision = in.u8();
        if (type.precision < 1 || type.precision > tsql::kMostDigits)
            throw ProtocolError("a decimal parameter has an impossible precision");
    }
    type.scale = in.u8();
    if (type.scale > (type.id == TypeId::Decimal ? type.precision : 7))
        throw ProtocolError("a parameter has an impossible scale");
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
        type = tsql::nvarcharType(type.id == TypeId::Date ? 10 : type.id == TypeId::Time ? 16 : 27);
    if (version < Version::V72 && (type.length == SqlType::kMax || type.id == TypeId::Xml))
        type = {tsql::isBinary(type.id) ? TypeId::Image : TypeId::NText, SqlType::kMax, 0, 0};
    for (WireForm form : kForms) {
        if (form.type != type.id) continue;
        if (form.framing == Framing::Short && type.length == SqlType::kMax) form.framing = Framing::Chunks;
        return {form, type};
    }
    throw ValueError("a column has a type that clients cannot be sent");
}

bool carriesTableName(const WireType& type) {
    return type.form.framing == Framing::Long;
}

void writeTypeInfo(ByteWriter& out, const WireType& type) {
    const TypeId id = type.type.id;
    out.u8(type.form.id);
    if (type.form.size > 0) return out.u8(type.form.size);
    if (id == TypeId::Xml) return out.u8(0);  // no schema
    if (id == TypeId::Decimal) {
        out.u8(decimalSize(type.type.precision));
        out.u8(type.type.precision);
    }
    if (id == TypeId::Decimal || hasScaledTime(id)) return out.u8(type.type.scale);
    if (id == TypeId::Date) return;
    // No column is declared narrower than one, not even an empty literal's.
    const auto units = static_cast<std::uint64_t>(std::max(type.type.length, 1));
    if (type.form.framing == Framing::Long)
        out.u32(kLongestLong);
    else
        out.u16(type.form.framing == Framing::Chunks ? kUnbounded : tsql::isText(id) ? 2 * units : units);
    if (tsql::isText(id)) out.bytes(kCollation);
}

WireType readTypeInfo(ByteReader& in) {
    const std::uint8_t id = in.u8();
    const WireForm* form = findForm(id, 0);
    const bool sized = form == nullptr && std::any_of(std::begin(kForms), std::end(kForms),
                                                      [id](const WireForm& each) { return each.id == id; });
    if (sized && (form = findForm(id, in.u8())) == nullptr)
        throw ProtocolError("a parameter's size is none that its type can have");
    if (form == nullptr)
        throw tsql::SqlError(50000, "tsqlbox does not support parameters of the type that TDS numbers " +
                                        std::to_string(id) + ".");
    WireType type{*form, tsql::simpleType(variableId(form->type))};
    if (form->framing == Framing::Short || form->framing == Framing::Long) readLength(in, type);
    if (form->type == TypeId::Xml) {
        if (in.u8() != 0) throw tsql::SqlError(50000, "tsqlbox does not support xml with a schema.");
        type.type.length = SqlType::kMax;
    }
    if (form->type == TypeId::Decimal || hasScaledTime(form->type)) readPrecision(in, type.type);
    return type;
}

}  // namespace tds
