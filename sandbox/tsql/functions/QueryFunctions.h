// Functions of SQLite that the translator and the system's views call; T-SQL has none of them.
#pragma once

#include <span>

#include "functions/SqliteFunction.h"

namespace tsql {

std::span<const ScalarFunction> queryFunctions();

}  // namespace tsql
