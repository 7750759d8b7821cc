// Notice of child processes that are about to start. Exported by libVtLib.so.
#pragma once

#include "PlatformExport.h"

namespace hostlayer {

// Sets the function that VtProcess calls before it starts a program; null for none. The direct connection
// closes its idle logins there: the program may need exclusive use of a database.
VT_PLATFORM_EXPORT void callBeforeProcessStart(void (*function)());

// Calls that function.
void announceProcessStart();

}  // namespace hostlayer
