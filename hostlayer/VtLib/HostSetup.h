// Setting up a host and looking at its set-up: for the command line tool. libVtLib.so exports it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "PlatformExport.h"

namespace hostlayer {

// What the process sees of the configuration store at this moment.
struct StoreReport {
    std::string path;                   // the file in use
    bool isInForce = false;             // whether there is content to read values from
    std::string problem;                // why the file cannot be read, with line and column; empty: it can
    std::vector<std::string> oddities;  // what stands in it where no value is looked for
    std::map<std::string, std::string> settings;  // [host]
    std::map<std::string, std::string> programs;  // [host.programs]
    // instance -> key -> value name -> value
    std::map<std::string,
             std::map<std::string, std::map<std::string, std::variant<std::string, std::int64_t>>>>
        instances;
};
VT_PLATFORM_EXPORT StoreReport inspectStore();

// Sets one value and keeps the file's comments, order, mode and owner; the file is replaced as a whole, so a
// reader sees the old one or the new one, or is made (mode 0640) when there is none. `table` is instance and
// key, or "host", or "host" and "programs". False and the reason when nothing was changed.
VT_PLATFORM_EXPORT bool setStoreValue(const std::vector<std::string>& table, const std::string& valueName,
                                      const std::variant<std::string, std::int64_t>& value,
                                      std::string& problem);

// Makes a file with a new random key, mode 0600. False and the reason, always when there is a file of that
// name.
VT_PLATFORM_EXPORT bool createCipherKeyFile(const std::string& path, std::string& problem);

// While it lives, a VTPassword object whose first use falls into it, on this thread, takes the key of that
// file instead of the store's. `file` outlives it; choices end in the reverse order of their making.
class VT_PLATFORM_EXPORT KeyFileChoice {
  public:
    explicit KeyFileChoice(const std::string& file);
    ~KeyFileChoice();
    KeyFileChoice(const KeyFileChoice&) = delete;
    KeyFileChoice& operator=(const KeyFileChoice&) = delete;

  private:
    const std::string* m_before;
};

// What an error number of VTPassword means and what to do about it.
VT_PLATFORM_EXPORT const char* cipherErrorText(long error);

}  // namespace hostlayer
