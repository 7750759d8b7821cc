// Rows of a bulk load: [MS-TDS] 2.2.6.1.
#pragma once

#include "ByteReader.h"
#include "Protocol.h"
#include "execute/Client.h"

namespace tds {

// Sends the columns and rows of a client's bulk load to a sink. Throws ProtocolError, and tsql::SqlError for
// a type that is not supported or an invalid value.
void sendBulkRows(ByteView data, Version version, tsql::ResultSink& sink);

}  // namespace tds
