// Values of the server and session that T-SQL's functions and variables return.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "types/SqlType.h"

namespace tsql {

std::string hostName();
Value identityValue(const std::optional<std::int64_t>& identity);  // a decimal(38,0)

}  // namespace tsql
