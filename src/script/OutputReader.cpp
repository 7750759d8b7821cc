#include "OutputReader.h"

#include <filesystem>
#include <vector>

#include "CVoFile.h"

namespace {

constexpr std::size_t kClosingWords = 1024;  // what is added to a long text later is not to move it

void reserveFor(const std::string& path, std::string& text) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (!error) text.reserve(text.size() + size + kClosingWords);
}

}  // namespace

void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text) {
    reserveFor(path, text);
    std::vector<char> buffer(chunk);
    std::size_t count = 0;
    while (!file.Read(buffer.data(), chunk, &count).IsError() && count > 0) text.append(buffer.data(), count);
}
