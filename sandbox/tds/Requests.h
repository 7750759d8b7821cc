// Bodies of requests, behind their headers. All functions throw ProtocolError, and tsql::SqlError for what is
// not supported and for invalid values.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"
#include "execute/Client.h"

namespace tds {

// Parses the procedure calls of a request, [MS-TDS] 2.2.6.6. Calls by number get the procedure's name.
std::vector<tsql::ProcedureCall> parseRpc(ByteView body);

// Passes the rows of a client's bulk load, [MS-TDS] 2.2.6.1.
void sendBulkRows(ByteView data, Version version, const tsql::RowHandler& handler);

// Returns the T-SQL batch equivalent to a transaction manager request, [MS-TDS] 2.2.6.9, such as "COMMIT
// TRANSACTION".
std::string transactionBatch(ByteView body);

}  // namespace tds
