// Where a command's result goes: standard output, or a file that is either whole or not touched.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "system/ScratchFile.h"

class ResultFile {
  public:
    // Empty or "/dev/stdout": standard output. Throws Failure (installation) when the folder cannot be
    // written.
    explicit ResultFile(const std::string& file);
    bool isStandardOutput() const { return m_target.empty(); }
    // Once. A file is written beside its place and then put there; a device or pipe is written as it is.
    // Throws Failure (installation), and leaves what stood there before, when that fails.
    void write(std::string_view text);

  private:
    std::string m_target;
    std::optional<ScratchFile> m_scratch;  // none for a device
};
