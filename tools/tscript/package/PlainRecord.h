// Text of a package's record.
#pragma once

#include <string.h>

#include <array>
#include <string>

#include "VTPassword.h"

// Wiped by the destructor.
class PlainRecord {
  public:
    PlainRecord() = default;
    ~PlainRecord() { explicit_bzero(m_text.data(), m_text.size()); }
    PlainRecord(const PlainRecord&) = delete;
    PlainRecord& operator=(const PlainRecord&) = delete;

    // False, with the cipher's error, for a bad record.
    bool decrypt(VTPassword& cipher, const std::string& record) {
        unsigned long size = m_text.size();
        return cipher.decrypt(record.c_str(), m_text.data(), &size) != 0;
    }
    const char* text() const { return m_text.data(); }

  private:
    std::array<char, 511> m_text{};  // the library's buffer for a record's text
};
