// A temporary file, deleted with its object.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "system/Interrupt.h"

class ScratchFile {
  public:
    // Creates an empty file, mode 0600, in $TMPDIR or /tmp. Throws Failure (kInstallation).
    ScratchFile();
    // Creates it in the folder of `target` for a later moveTo() or replace(). Signals stay blocked
    // (InterruptDelay) as long as the object lives. Throws Failure (kInstallation), also if `target` exists
    // and is not a regular file.
    explicit ScratchFile(const std::string& target);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return m_path; }
    std::string content() const;  // its first 64 KiB
    // Writes what the file is to hold; may be called once. Throws Failure (kInstallation).
    void write(std::string_view text) const;
    // Both sync the file and rename it to `target`. Throw Failure (kInstallation).
    void moveTo(const std::string& target);   // with the mode of an ordinary new file
    void replace(const std::string& target);  // with mode and owner of the existing target

  private:
    void create(std::string pattern);
    void renameTo(const std::string& target);
    std::optional<InterruptDelay> m_delay;
    std::string m_path;
};
