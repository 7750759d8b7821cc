// A column of a result set.
#pragma once

#include <string>

#include "types/SqlType.h"

namespace tsql {

struct Column {
    std::string name;  // empty for an unnamed expression
    SqlType type;
    bool nullable = true;
    bool identity = false;
};

}  // namespace tsql
