// PRELOGIN, the negotiation before a login: [MS-TDS] 2.2.6.5.
#pragma once

#include "ByteReader.h"

namespace tds {

// Returns the reply to a PRELOGIN message: encryption and MARS are not supported.
// Throws ProtocolError for an option that points outside the message.
Bytes preloginReply(ByteView request);

}  // namespace tds
