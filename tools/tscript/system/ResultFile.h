// Destination of a command's result: standard output, or a file that is written completely or not at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "system/ScratchFile.h"

class ResultFile {
  public:
    // An empty name or "/dev/stdout" means standard output. Throws Failure (kInstallation) if no file can be
    // created in the folder.
    explicit ResultFile(const std::string& file);
    bool isStandardOutput() const { return m_target.empty(); }
    // May be called once. A regular file is written under another name and then renamed; a device or pipe is
    // written directly. Throws Failure (kInstallation); an existing file is then unchanged.
    void write(std::string_view text);

  private:
    std::string m_target;
    std::optional<ScratchFile> m_scratch;  // empty for a device
};
