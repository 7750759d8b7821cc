// PRELOGIN, the message before a login: [MS-TDS] 2.2.6.5.
#pragma once

#include "ByteReader.h"

namespace tds {

// Checks the client's options and gives the answer: encryption and MARS are not offered.
Bytes preloginReply(ByteView request);

}  // namespace tds
