// Configuration store of a test, in force as long as the object lives.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

#include "EvDebug.h"
#include "TempDir.h"

class TestStore {
  public:
    explicit TestStore(std::string_view content) {
        write(content);
        ::setenv("ZEPHRA_REGISTRY", path().c_str(), 1);
    }
    ~TestStore() { ::unsetenv("ZEPHRA_REGISTRY"); }
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    void write(std::string_view content) const { support::writeFile(path(), content); }
    std::filesystem::path path() const { return folder / "registry.toml"; }

    support::TempDir folder;
};

// Content of the process-wide debug log. The first call opens it, which works once in a process and before a
// test makes its own store.
inline std::string defaultDebugLog() {
    static const support::TempDir folder;
    static const bool isOpen = [] {
        const TestStore store("[Instance001.EventManager]\ndEVLOGDIR = '" + folder.path().string() + "'\n");
        return EvDebug().initialize(0, 0, false, "");
    }();
    return isOpen ? support::readFile(folder / "ZephraDebug.log") : "";
}
