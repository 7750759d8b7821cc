// Owner of a file that is deleted at the end of a scope.
#pragma once

#include <string>
#include <utility>

#include "CVoFile.h"

class RemovedAtEnd {
  public:
    explicit RemovedAtEnd(std::string path = {}) : m_path(std::move(path)) {}
    ~RemovedAtEnd() {
        if (!m_path.empty())
            CVoFile::Delete(m_path.c_str(), /*missingIsFine=*/false);  // a failure cannot be reported here
    }
    RemovedAtEnd(RemovedAtEnd&& other) noexcept : m_path(std::exchange(other.m_path, {})) {}
    RemovedAtEnd& operator=(RemovedAtEnd&& other) noexcept {
        m_path.swap(other.m_path);
        return *this;
    }

    void keep() { m_path.clear(); }

  private:
    std::string m_path;
};
