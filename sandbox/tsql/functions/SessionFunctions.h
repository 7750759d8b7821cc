// Facts of the server and the session that functions and variables of T-SQL show.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "types/SqlType.h"

namespace tsql {

std::string hostName();
Value identityValue(const std::optional<std::int64_t>& identity);  // a decimal(38,0)

}  // namespace tsql
