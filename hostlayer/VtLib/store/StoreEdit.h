// Changing a value in the text of a configuration store (TOML 1.0).
#pragma once

#include <string>
#include <vector>

#include "store/StoreContent.h"

namespace hostlayer {

// Sets one value and keeps comments and order: parsed again, `edited` differs from `text` in that value only.
// `table` names the table from the outermost to the innermost. False, with the reason in `problem`, if the
// text is not TOML or is written in a form that does not permit such a change.
bool editStore(const std::string& text, const std::vector<std::string>& table, const std::string& valueName,
               const StoreValue& value, std::string& edited, std::string& problem);

}  // namespace hostlayer
