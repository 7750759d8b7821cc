// Files that return every failure as an error value.
#pragma once

#include <cstddef>
#include <string>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT CVoError {
  public:
    CVoError() = default;  // no error
    explicit CVoError(int code) : m_code(code) {}

    bool IsError() const { return m_code != 0; }
    int GetErrorCode() const { return m_code; }  // an errno value; 0 for none
    // Description of the code, valid as long as this object.
    const char* AsString() const;

  private:
    int m_code = 0;
    mutable std::string m_text;
};

class VT_PLATFORM_EXPORT CVoFile {
  public:
    CVoFile() = default;
    ~CVoFile();  // closes
    CVoFile(const CVoFile&) = delete;
    CVoFile& operator=(const CVoFile&) = delete;

    // Modes of fopen(): "r", "w", "a", each with "+" and "b".
    CVoError Open(const char* path, const char* mode);
    // Flags and permission bits of open(2). O_CREAT (64) creates the file exclusively: an existing file or
    // link of that name is an error and is not opened.
    CVoError Open(const char* path, int flags, int permissions);
    // Reads until the buffer is full or the file ends, after interrupted and short reads, too. `bytesRead` is
    // 0 at the end of the file.
    CVoError Read(void* buffer, std::size_t size, std::size_t* bytesRead);
    // Writes all bytes or returns an error (ENOSPC on a full disk).
    CVoError Write(const void* data, std::size_t size);
    CVoError Close();
    // Deletes a file. With `missingIsFine` a missing file is no error.
    static CVoError Delete(const char* path, bool missingIsFine);

  private:
    int m_descriptor = -1;
};
