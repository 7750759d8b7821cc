// Reader for the encrypted records of a package.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

class RecordReader {
  public:
    // Throws Failure (kUsage) if the file is not a regular one, cannot be read or is larger than 2 GiB.
    explicit RecordReader(const std::string& file);

    // Reads the next record; false at the end of the file. A line that is too long or holds a NUL byte gives
    // an empty record. Throws Failure (kInstallation) if reading fails.
    bool next(std::string& record);
    // Line breaks of the empty lines between the last record and the one before it.
    const std::string& blankLines() const { return m_blankLines; }
    const std::string& lineEnd() const { return m_lineEnd; }  // of the last record
    std::size_t line() const { return m_line; }               // of the last record, from 1
    std::uintmax_t size() const { return m_size; }

  private:
    std::string m_file;
    std::ifstream m_in;
    std::uintmax_t m_size = 0;
    std::size_t m_line = 0;
    std::string m_blankLines;
    std::string m_lineEnd;
};
