// An enciphered package, record by record.
#pragma once

#include <cstddef>
#include <fstream>
#include <string>

class RecordReader {
  public:
    // Throws Failure (usage) for what is no file, cannot be read or is larger than 2 GiB.
    explicit RecordReader(const std::string& file);

    // The next line that holds a record; false at the end. A line that cannot be one, for its length or a NUL
    // byte, is handed out as an empty text. Throws Failure (installation) when reading fails.
    bool next(std::string& record);
    std::size_t line() const { return m_line; }  // of the last record, from 1
    std::uintmax_t size() const { return m_size; }

  private:
    std::string m_file;
    std::ifstream m_in;
    std::uintmax_t m_size = 0;
    std::size_t m_line = 0;
};
