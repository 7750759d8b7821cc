// Key file that a thread's ciphers use in place of the store's. Exported by libVtLib.so.
#pragma once

#include <string>

#include "PlatformExport.h"

namespace hostlayer {

// Scope in which VTPassword objects of this thread load their key from another file than the store's. A
// VTPassword that has loaded its key before keeps it. `file` is not copied and must outlive the scope; scopes
// may nest.
class VT_PLATFORM_EXPORT KeyFileChoice {
  public:
    explicit KeyFileChoice(const std::string& file);
    ~KeyFileChoice();
    KeyFileChoice(const KeyFileChoice&) = delete;
    KeyFileChoice& operator=(const KeyFileChoice&) = delete;

  private:
    const std::string* m_before;
};

}  // namespace hostlayer
