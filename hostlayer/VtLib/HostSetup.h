// Inspecting and changing the configuration store and the cipher key file. For the command line tool;
// exported by libVtLib.so.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "KeyFileChoice.h"
#include "PlatformExport.h"

namespace hostlayer {

// State of the configuration store as this process reads it.
struct StoreReport {
    std::string path;                   // of the file in use
    bool isInForce = false;             // values can be read: from the file, or from its last good content
    std::string problem;                // why the file cannot be read or parsed; empty: no problem
    std::vector<std::string> oddities;  // entries that are ignored because of their place or type
    std::map<std::string, std::string> settings;  // [host]
    std::map<std::string, std::string> programs;  // [host.programs]
    // instance -> key -> value name -> value
    std::map<std::string,
             std::map<std::string, std::map<std::string, std::variant<std::string, std::int64_t>>>>
        instances;
};

// Reads the store again if its file has changed. The maps are empty unless isInForce.
VT_PLATFORM_EXPORT StoreReport inspectStore();

// Sets one value in the store's file; comments, order, mode and owner stay. The file is replaced by
// rename(2): readers see the old content or the new one. A missing file is created with mode 0640. `table` is
// {instance, key}, {"host"} or {"host", "programs"}. False, with the reason in `problem`, when the value was
// not set.
VT_PLATFORM_EXPORT bool setStoreValue(const std::vector<std::string>& table, const std::string& valueName,
                                      const std::variant<std::string, std::int64_t>& value,
                                      std::string& problem);

struct StoreChange {
    std::vector<std::string> table;
    std::string valueName;
    std::variant<std::string, std::int64_t> value;
};

// Sets all of the values that `changes` returns, at once. It is called with the store locked against
// setStoreValue() and changeStore() of other processes, and again if the file was changed in another way; it
// must not call them. Without a change the file stays as it is.
VT_PLATFORM_EXPORT bool changeStore(const std::function<std::vector<StoreChange>()>& changes,
                                    std::string& problem);

// Creates a file with a new random key, mode 0600. An existing file is never overwritten. False, with the
// reason in `problem`, on a failure; no partly written file is left.
VT_PLATFORM_EXPORT bool createCipherKeyFile(const std::string& path, std::string& problem);

// Path of the program that starts when the library runs the query tool. A name without a slash: not on PATH.
VT_PLATFORM_EXPORT std::string queryToolPath();

// Describes an error number of VTPassword and what to do about it. Never null; not to be freed.
VT_PLATFORM_EXPORT const char* cipherErrorText(long error);

}  // namespace hostlayer
