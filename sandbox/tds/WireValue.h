// Values on the wire: [MS-TDS] 2.2.5.5.1.
#pragma once

#include "WireType.h"

namespace tds {

// A value in its storage form, Null included. Throws ValueError with `out` partly written.
void writeValue(ByteWriter& out, const WireType& type, const tsql::CellView& value);

tsql::Value readValue(ByteReader& in, const WireType& type);

}  // namespace tds
