// Causes of failures, passed from the platform layer to a listener of the same thread. This header is
// optional: libDVUtilities also runs with platform libraries that do not define these functions, and then
// knows less about a failure.
#pragma once

#include <string>

#include "PlatformExport.h"

// What is known about one failure. Numbers that do not apply are 0, strings empty. Never a password or the
// value of an SQL parameter.
struct VtCause {
    enum Place {
        kConnection = 1,
        kStatement = 2,
        kQueryTool = 3,
        kFile = 4,
        kPackage = 5,
        kConfiguration = 6
    };

    Place place = kConnection;
    std::string sqlState{};
    int serverError = 0;  // the server's error number
    int state = 0;
    int severity = 0;
    int line = 0;
    std::string procedure{};
    std::string server{};
    int systemError = 0;    // errno
    int exitCode = -1;      // of the query tool; -1: it did not exit by itself
    int signal = 0;         // that ended the query tool
    std::string subject{};  // path, program, or key and name of a configuration value
    std::string text{};
};

using VtCauseListener = void (*)(const VtCause& cause);

// Makes `listener` (null: none) the calling thread's listener and returns the one before.
VT_PLATFORM_EXPORT __attribute__((weak)) VtCauseListener VtListenToCauses(VtCauseListener listener) noexcept;

// Passes a cause to the calling thread's listener; without one it is dropped.
VT_PLATFORM_EXPORT __attribute__((weak)) void VtNoteCause(const VtCause& cause) noexcept;
