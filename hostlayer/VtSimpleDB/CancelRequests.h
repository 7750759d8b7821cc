// Cancelling requests to servers. Exported by libVtSimpleDB.so; for the command line tool.
#pragma once

#include <chrono>

#include "PlatformExport.h"

namespace hostlayer {

// Cancels all requests of this process that began before `begunBefore` and wait for their server: their
// connections are closed, and they fail. With time_point::max() every later request fails as well. May be
// called from any thread, but not from a signal handler. Weak: a suite may have its own libVtSimpleDB.so.
VT_PLATFORM_EXPORT __attribute__((weak)) void cancelRequests(
    std::chrono::steady_clock::time_point begunBefore) noexcept;

// Sets the function that another thread calls, possibly several times, when the driver has not returned ten
// seconds after its connection was closed because of a limit. unixODBC, for example, never returns from a
// login during which the server sent a message of more than 512 characters. Weak, too.
VT_PLATFORM_EXPORT __attribute__((weak)) void callWhenStuck(void (*function)()) noexcept;

}  // namespace hostlayer
