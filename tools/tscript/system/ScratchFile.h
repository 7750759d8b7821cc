// A private file for a program's output, removed with its object.
#pragma once

#include <optional>
#include <string>

#include "system/Interrupt.h"

class ScratchFile {
  public:
    // In the system's temporary folder, mode 0600. `beside`: next to that file instead, for a later rename;
    // signals wait until it is there or gone. Throws Failure (installation).
    ScratchFile();
    explicit ScratchFile(const std::string& beside);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return m_path; }
    std::string content() const;  // at most 64 KiB
    // Puts the file, on disk and with the rights of an ordinary new file, in the place of another one.
    void moveTo(const std::string& target);
    // The same, with the rights and the owner of the file that is there. Throws Failure.
    void replace(const std::string& target);

  private:
    void create(std::string pattern);
    void renameTo(const std::string& target);
    std::optional<InterruptDelay> m_delay;
    std::string m_path;
};
