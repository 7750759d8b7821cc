#include "OutputReader.h"

#include <filesystem>
#include <vector>

#include "CVoFile.h"

namespace {

void reserveFor(const std::string& path, std::string& text) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (!error) text.reserve(text.size() + size);
}

}  // namespace

void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text) {
    reserveFor(path, text);
    std::vector<char> buffer(chunk);
    std::size_t count = 0;
    while (!file.Read(buffer.data(), chunk, &count).IsError() && count > 0) text.append(buffer.data(), count);
}
