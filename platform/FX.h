// String, path and file helpers of the platform.
#pragma once

#include <string>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT FXString {
  public:
    // Formats like printf() into a string of any length.
    static std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
};

class VT_PLATFORM_EXPORT FXPath {
  public:
    // Appends a component with exactly one "/" between.
    static void Append(std::string& path, const char* component);
};

class VT_PLATFORM_EXPORT FXFile {
  public:
    static bool Exists(const char* path);
    // Deletes a file. True if it does not exist afterwards.
    static bool Remove(const char* path);
};
