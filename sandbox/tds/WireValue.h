// Values on the wire: [MS-TDS] 2.2.5.5.1.
#pragma once

#include "WireType.h"

namespace tds {

// Writes a value that is in its storage form, or NULL. Throws ValueError and leaves `out` partly written.
void writeValue(ByteWriter& out, const WireType& type, const tsql::CellView& value);
// Reads a parameter's value and returns its storage form. Throws ProtocolError for malformed data, ValueError
// and tsql::SqlError for a value outside the range of its type.
tsql::Value readValue(ByteReader& in, const WireType& type);

}  // namespace tds
