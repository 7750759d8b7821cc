// Files whose every failure reaches the caller as a value.
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
    // The code's text. Valid as long as this object.
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

    // Modes as of fopen: "r", "w", "a", each with "+" and "b".
    CVoError Open(const char* path, const char* mode);
    // Flags and permission bits as of open(2). With O_CREAT (64) the file is made exclusively: one that
    // exists, or a link of that name, is an error and is not opened.
    CVoError Open(const char* path, int flags, int permissions);
    // At most `size` bytes; `bytesRead` is 0 at the end of the file. Interrupted and short reads are
    // carried on until the buffer is full or the file ends.
    CVoError Read(void* buffer, std::size_t size, std::size_t* bytesRead);
    // All of the bytes, or an error (ENOSPC on a full disk).
    CVoError Write(const void* data, std::size_t size);
    CVoError Close();
    // Removes a file. `missingIsFine`: one that is not there is no error.
    static CVoError Delete(const char* path, bool missingIsFine);

  private:
    int m_descriptor = -1;
};
