#include "files/OutputReader.h"

#include <string.h>

#include <filesystem>
#include <vector>

#include "CVoFile.h"
#include "Causes.h"

namespace {

constexpr std::size_t kClosingMessages = 1024;  // room for later additions without a copy of a long text

void reserveFor(const std::string& path, std::string& text) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (!error) text.reserve(text.size() + size + kClosingMessages);
}

}  // namespace

void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text) {
    reserveFor(path, text);
    std::vector<char> buffer(chunk);
    std::size_t count = 0;
    CVoError error;
    while (!(error = file.Read(buffer.data(), chunk, &count)).IsError() && count > 0)
        text.append(buffer.data(), ::strnlen(buffer.data(), count));
    if (error.IsError()) reportFileFailure(path, error.GetErrorCode());
}
