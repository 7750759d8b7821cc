// RPC requests: [MS-TDS] 2.2.6.6.
#pragma once

#include <vector>

#include "ByteReader.h"
#include "execute/Client.h"

namespace tds {

// Parses the procedure calls of a request. `body` is the request without its headers. Calls by number get
// the procedure's name. Throws ProtocolError, and tsql::SqlError for a parameter that is not supported or
// whose value is invalid.
std::vector<tsql::ProcedureCall> parseRpc(ByteView body);

}  // namespace tds
