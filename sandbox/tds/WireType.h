// Data types on the wire, [MS-TDS] 2.2.5.4, with their TYPE_INFO, 2.2.5.6, and their values, 2.2.5.5.1.
#pragma once

#include "ByteWriter.h"
#include "Protocol.h"
#include "types/Values.h"

namespace tds {

// SQL_Latin1_General_CP1_CI_AS, [MS-TDS] 2.2.5.1.2.
inline constexpr ByteView kCollation("\x09\x04\xD0\x00\x34", 5);

// A value that its type cannot hold. what() gives the reason.
struct ValueError : tsql::SqlError {
    explicit ValueError(const std::string& reason) : SqlError(tsql::kConversionError, reason) {}
};
struct OddUnicode final : ValueError {
    OddUnicode() : ValueError("Unicode data has an odd number of bytes") {}
};

constexpr std::size_t kTextTimestampSize = 8;  // behind the pointer of text, ntext and image

// Width in bytes of a value's length field.
enum class Framing : std::uint8_t {
    Fixed = 0,
    Byte = 1,    // 0 is NULL
    Short = 2,   // 0xFFFF is NULL
    Long = 4,    // behind a text pointer and a timestamp
    Chunks = 8,  // PLP: the total length, then chunks with 4 bytes of length each
};

// A row of the table of wire types.
struct WireForm {
    std::uint8_t id;  // in TYPE_INFO
    Framing framing;
    std::uint8_t size;  // of a value, in bytes; 0: variable
    tsql::TypeId type;
    std::uint8_t fixedId = 0;  // id of the form without a length, which only clients send; 0: none
};

struct WireType {
    WireForm form;
    tsql::SqlType type;
    bool utf8 = false;  // char data in UTF-8 instead of code page 1252

    // Whether COLMETADATA has a table name behind the type's TYPE_INFO: text, ntext and image.
    bool carriesTableName() const { return form.framing == Framing::Long; }
};

// Size in bytes of a value of a decimal, date or time type.
inline std::size_t sizeOf(const tsql::SqlType& type) {
    return static_cast<std::size_t>(tsql::maxLength(type));
}
// Returns the wire type for `type`. Types that the client's version lacks are replaced. Throws ValueError for
// a type that has no wire form.
WireType wireType(tsql::SqlType type, Version version);
void writeTypeInfo(ByteWriter& out, const WireType& type);
// Reads a parameter's type and maps it to a type that variables can have: varchar for char, for example.
// Throws ProtocolError for an invalid type, tsql::SqlError for one that is not supported.
WireType readTypeInfo(ByteReader& in);

// Writes a value that is in its storage form, or NULL. Throws ValueError and leaves `out` partly written.
void writeValue(ByteWriter& out, const WireType& type, const tsql::CellView& value);
// Reads a parameter's value and returns its storage form. Throws ProtocolError for malformed data, ValueError
// and tsql::SqlError for a value outside the range of its type.
tsql::Value readValue(ByteReader& in, const WireType& type);

}  // namespace tds
