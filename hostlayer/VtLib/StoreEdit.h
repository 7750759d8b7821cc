// Changes to a configuration store's text that keep its comments and order.
#pragma once

#include <string>
#include <vector>

#include "StoreContent.h"

namespace hostlayer {

// Sets one value of a table (named from the outside in). The edited text differs in that value alone; where
// the text has a form in which that cannot be done, the result is false and the problem says so.
bool editStore(const std::string& text, const std::vector<std::string>& table, const std::string& valueName,
               const StoreValue& value, std::string& edited, std::string& problem);

}  // namespace hostlayer
