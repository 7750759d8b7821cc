// C stream.
#pragma once

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

#include "FileDescriptor.h"

// Owner of a stream; closes it. Child processes do not inherit the file.
class OpenFile {
  public:
    // Modes of fopen(); !isOpen() and errno on failure.
    OpenFile(const char* path, const char* mode)
        : m_stream(std::fopen(path, (std::string(mode) + "e").c_str())) {}

    // Wraps an open descriptor; if fdopen() fails, the descriptor is closed. One that is not open keeps
    // errno.
    OpenFile(FileDescriptor file, const char* mode)
        : m_stream(file.isOpen() ? ::fdopen(file.get(), mode) : nullptr) {
        if (isOpen()) file.release();
    }

    bool isOpen() const { return m_stream != nullptr; }
    std::FILE* get() const { return m_stream.get(); }
    // False when not everything has been written: a full disk may show here only.
    bool close() { return std::fclose(m_stream.release()) == 0; }

  private:
    struct Closer {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<std::FILE, Closer> m_stream;
};
