// A configuration store of a test's own, in force as long as it lives.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

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
