// Reader of the installation's configuration store.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "PlatformExport.h"

// A value is addressed by an instance, a key ("Database", "InstalledPackages\803") and a value name.
// Every operation returns nonzero for success and leaves its outputs unchanged on failure. Objects are cheap:
// the process parses the store once, and again when its file has changed.
class VT_PLATFORM_EXPORT VTPlatformInfo {
  public:
    // The instance in focus (VTPI_Focus), else "Instance001".
    VTPlatformInfo();
    // A named instance; null or empty means the same as the default constructor.
    explicit VTPlatformInfo(const char* instance);

    // Returns a string value, or a number in decimal digits.
    int getString(const char* key, const char* valueName, std::string* value) const;
    // Returns a number value, or the number in a string that is a decimal or 0x number as a whole.
    int getNumber(const char* key, const char* valueName, std::uint64_t* value) const;

    enum ValueType : unsigned long { kText = 1, kBinary = 3, kNumber = 4 };
    // Returns the value's bytes: a string with its NUL if that fits, a number as 4 or 8 little-endian bytes.
    // `size` is the buffer's size in bytes; a value that does not fit is a failure.
    // `type` may be null.
    int getRegValue(const char* key, const char* valueName, unsigned long* type, char* buffer,
                    unsigned long size) const;
    // Returns all values under a key as strings. For the root of the installation ("SOFTWARE\Veltrane
    // Systems\Zephra") the names are the instances and the values are empty.
    int getRegValues(const char* key, std::map<std::string, std::string>* values) const;

  private:
    std::string m_instance;  // empty: the default instance at the time of the read
};
