// How types and their values travel, both ways: [MS-TDS] 2.2.5.4 (data types), 2.2.5.5.1 (values), 2.2.5.6
// (TYPE_INFO).
//
// All text goes out in the Unicode types, whose length counts characters, so that UTF-8 survives every
// client.
#pragma once

#include "ByteWriter.h"
#include "Protocol.h"
#include "types/Values.h"

namespace tds {

// SQL_Latin1_General_CP1_CI_AS, 2.2.5.1.2
inline constexpr ByteView kCollation("\x09\x04\xD0\x00\x34", 5);

// A value that its type cannot hold; the text says why.
class ValueError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// How a value's length is given.
enum class Framing : std::uint8_t { Fixed, Byte, Short, Long, Chunks };

struct WireForm {
    std::uint8_t id;  // of the type, as TYPE_INFO names it
    Framing framing;
    std::uint8_t size;  // of a value; 0 where it depends
    tsql::TypeId type;
};

struct WireType {
    WireForm form;
    tsql::SqlType type;
    bool utf8 = false;  // single-byte text whose collation is a UTF-8 one
};

// Bytes of a decimal value with its sign.
std::size_t decimalSize(int precision);
// The type in which a client of this version is sent values of `type`: older ones lack some.
WireType wireType(tsql::SqlType type, Version version);
void writeTypeInfo(ByteWriter& out, const WireType& type);
// In COLMETADATA the types text, ntext and image carry a table name behind their TYPE_INFO.
bool carriesTableName(const WireType& type);
// What a parameter's TYPE_INFO and value say, the type as a variable may have it. Both throw ProtocolError
// for what no client may send, ValueError for a value that is none of its type, tsql::SqlError for what is
// not taken here.
WireType readTypeInfo(ByteReader& in);

}  // namespace tds
