// Check of a package's seal while the package is read. This header is optional: libDVUtilities also runs with
// platform libraries that do not define the function, and then checks records only.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT VtSealCheck {
  public:
    virtual ~VtSealCheck() = default;
    // Takes the next line of the package: the encrypted record, its line end ("\n", "\r\n" or none) and the
    // text of the record. Record and text are empty for a blank line. False if the line is a seal: its text
    // is no part of the package's content.
    virtual bool addLine(std::string_view record, std::string_view lineEnd, std::string_view plain) = 0;
    // Returns, after the last line, why the package must not be used; empty if it may be. `name` is the
    // package's file name without ".sql".
    virtual std::string problem(const std::string& name) = 0;
};

// Starts the check of a package. Never null.
VT_PLATFORM_EXPORT __attribute__((weak)) std::unique_ptr<VtSealCheck> VtStartSealCheck();
