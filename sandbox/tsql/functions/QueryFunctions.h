// SQLite functions for the SQL of the translator and the system views. T-SQL does not have them.
#pragma once

#include <span>

#include "functions/SqliteFunction.h"

namespace tsql {

std::span<const ScalarFunction> queryFunctions();

}  // namespace tsql
