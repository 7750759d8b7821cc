// Folders of the installation, and the instance in focus.
#pragma once

#include <string>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT VTPI_Base {
  public:
    // The folder for temporary files, without a slash at its end ("/tmp" when the store has none).
    std::string getZephraTempDirectory() const;
};

class VT_PLATFORM_EXPORT VTPI_EventManager {
  public:
    explicit VTPI_EventManager(const VTPI_Base& base) : m_base(base) {}
    // The folder for log files, without a slash at its end (the temporary folder when the store has none).
    std::string getLogFilesDirectory() const;

  private:
    const VTPI_Base& m_base;
};

class VT_PLATFORM_EXPORT VTPI_Focus {
  public:
    // Makes an instance the process's default instance; null or empty clears the focus.
    static void setFocus(const char* instance);
    static std::string getFocus();  // empty: no instance is in focus
};
