// A temporary folder, deleted with its object and all it contains.
#pragma once

#include <filesystem>

class ScratchFolder {
  public:
    // Creates it in $TMPDIR or /tmp, for this user only. Throws Failure (kInstallation).
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};
