// Transaction manager requests: [MS-TDS] 2.2.6.9.
#pragma once

#include <string>

#include "ByteReader.h"

namespace tds {

// Returns the T-SQL batch equivalent to a request, such as "COMMIT TRANSACTION". `body` is the request
// without its headers. Throws ProtocolError, and tsql::SqlError for distributed transactions.
std::string transactionBatch(ByteView body);

}  // namespace tds
