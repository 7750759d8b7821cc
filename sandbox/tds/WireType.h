// How values of each SQL type travel: [MS-TDS] 2.2.5.4 (data types), 2.2.5.6 (TYPE_INFO), 2.2.5.5.1 (values).
//
// All text goes out in the Unicode types, whose length counts characters, so that UTF-8 survives every
// client.
#pragma once

#include "ByteWriter.h"
#include "Protocol.h"
#include "SqlType.h"

namespace tds {

// A value that its column's wire type cannot hold; the text says why.
class ValueError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The type in which a client of this version is sent values of `type`: older ones lack some.
tsql::SqlType wireType(const tsql::SqlType& type, Version version);

void writeTypeInfo(ByteWriter& out, const tsql::SqlType& wireType);
// In COLMETADATA the types text, ntext and image carry a table name behind their TYPE_INFO.
bool carriesTableName(const tsql::SqlType& wireType);
// A value in its storage form, Null included. Throws ValueError with `out` partly written.
void writeValue(ByteWriter& out, const tsql::SqlType& wireType, const tsql::CellView& value);

}  // namespace tds
