// SQL Server's messages by their numbers: severity, state and text in one table.
#pragma once

#include <initializer_list>
#include <string_view>

#include "messages/Numbers.h"
#include "messages/SqlError.h"

namespace tsql {

// The error with its text, each %s in it replaced by the next of `values`. `state` other than 0: in place of
// the table's, where SQL Server has several for one number.
SqlError sqlError(int number, std::initializer_list<std::string_view> values = {}, int state = 0);

// Error 50000 for what the sandbox does not do.
SqlError unsupported(std::string_view construct);

}  // namespace tsql
