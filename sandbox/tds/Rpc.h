// Remote procedure calls, read from the wire.
// [MS-TDS] 2.2.6.6.
#pragma once

#include <vector>

#include "ByteReader.h"
#include "execute/Client.h"

namespace tds {

// `body` is the request behind its headers; calls by number get the procedure's name. Throws ProtocolError,
// and tsql::SqlError for a parameter that is not taken here.
std::vector<tsql::ProcedureCall> parseRpc(ByteView body);

}  // namespace tds
