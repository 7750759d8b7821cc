// Notice of child processes that are about to start. Exported by libVtLib.so.
#pragma once

#include <string>
#include <vector>

#include "PlatformExport.h"

namespace hostlayer {

// Sets the function that VtProcess calls before it starts a program, with the program's path and arguments;
// null for none. The direct connection closes its idle logins there: the program may need exclusive use of a
// database.
using BeforeProcessStart = void (*)(const std::vector<std::string>& arguments);
VT_PLATFORM_EXPORT void callBeforeProcessStart(BeforeProcessStart function);

// Calls that function.
void announceProcessStart(const std::vector<std::string>& arguments);

}  // namespace hostlayer
