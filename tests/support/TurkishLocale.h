// Turkish locale, in which "i" and "I" are different letters, in force as long as the object lives. Stays the
// C locale on a host without the sources of locales.
#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include "Program.h"
#include "TempDir.h"

namespace support {

class TurkishLocale {
  public:
    TurkishLocale() {
        if (!std::filesystem::exists("/usr/share/i18n/locales/tr_TR")) return;
        runProgram({"localedef", "-i", "tr_TR", "-f", "UTF-8", m_folder / "tr_TR.UTF-8"});
        ::setenv("LOCPATH", m_folder.path().c_str(), /*replace=*/1);
        std::setlocale(LC_ALL, "tr_TR.UTF-8");
    }
    ~TurkishLocale() {
        std::setlocale(LC_ALL, "C");
        ::unsetenv("LOCPATH");
    }
    TurkishLocale(const TurkishLocale&) = delete;
    TurkishLocale& operator=(const TurkishLocale&) = delete;

  private:
    TempDir m_folder;
};

}  // namespace support
