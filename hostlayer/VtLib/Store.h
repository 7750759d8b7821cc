// The configuration store of the process: its file, parsed once and read again when it has changed.
#pragma once

#include <memory>
#include <string>

#include "StoreContent.h"

namespace hostlayer {

// One state of the store's file. Never changed once made, so threads share it.
struct StoreState {
    std::string path;
    // The file's content, or the last good one when the file no longer parses; null when there never was one.
    std::shared_ptr<const StoreContent> content;
    std::string problem;  // why the file could not be read, with line and column; empty: it could
};

// The path in use: ZEPHRA_REGISTRY, else /etc/zephra/registry.toml.
std::string storePath();

// The present state. Costs one stat as long as the file is the same. A new problem goes to the debug log.
std::shared_ptr<const StoreState> currentStore();

constexpr std::size_t kMaxStoreBytes = std::size_t{4} << 20;

}  // namespace hostlayer
