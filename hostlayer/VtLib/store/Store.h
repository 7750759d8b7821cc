// The process's configuration store: a TOML 1.0 file, parsed again when it has changed. For any number of
// threads.
#pragma once

#include <memory>
#include <string>

#include "store/StoreContent.h"

namespace hostlayer {

constexpr std::size_t kMaxStoreBytes = std::size_t{4} << 20;  // a larger file is not read

// Immutable state of the store's file.
struct StoreState {
    std::string path;
    // The file's content; the last good content if the file cannot be read or parsed; null if there is none.
    std::shared_ptr<const StoreContent> content;
    std::string problem;  // why the file cannot be read or parsed, with line and column; empty: no problem
};

// Path of the store's file: the environment variable ZEPHRA_REGISTRY (ignored in set-user-ID programs),
// else /etc/zephra/registry.toml.
std::string storePath();

// Returns the current state, never null. An unchanged file costs one stat(2). A new problem is logged to the
// debug log.
std::shared_ptr<const StoreState> currentStore();

}  // namespace hostlayer
