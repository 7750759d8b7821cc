// Transaction manager requests: [MS-TDS] 2.2.6.9.
#pragma once

#include <string>

#include "ByteReader.h"

namespace tds {

// A transaction manager request as a batch.
std::string transactionBatch(ByteView body);

}  // namespace tds
