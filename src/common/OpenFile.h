// A file read or written through the C library's streams.
#pragma once

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

#include "FileDescriptor.h"

// Owner of a stream; closes at the end. Children do not inherit the file.
class OpenFile {
  public:
    // Modes as of fopen; !isOpen() and errno on failure.
    OpenFile(const char* path, const char* mode)
        : m_stream(std::fopen(path, (std::string(mode) + "e").c_str())) {}

    // On a file that is open already. A stream that cannot be had closes the file.
    OpenFile(FileDescriptor file, const char* mode) : m_stream(::fdopen(file.get(), mode)) {
        if (isOpen()) file.release();
    }

    bool isOpen() const { return m_stream != nullptr; }
    std::FILE* get() const { return m_stream.get(); }
    // False when what was written has not all reached the file: the answer to a full disk comes here at last.
    bool close() { return std::fclose(m_stream.release()) == 0; }

  private:
    struct Closer {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };
    std::unique_ptr<std::FILE, Closer> m_stream;
};
