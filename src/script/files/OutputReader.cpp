#include "files/OutputReader.h"

#include <string.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "CVoFile.h"
#include "Causes.h"

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;  // read at once, less what is no whole chunk
constexpr std::size_t kClosingMessages = 1024;  // room for later additions without a copy of a long text

void reserveFor(const std::string& path, std::string& text) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (!error) text.reserve(text.size() + size + kClosingMessages);
}

void appendChunks(std::string_view block, std::size_t chunk, std::string& text) {
    for (; !block.empty(); block.remove_prefix(std::min(chunk, block.size())))
        text.append(block.data(), ::strnlen(block.data(), std::min(chunk, block.size())));
}

}  // namespace

void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text) {
    reserveFor(path, text);
    std::vector<char> block(std::max<std::size_t>(kBlockSize / chunk, 1) * chunk);
    std::size_t count = 0;
    CVoError error;
    do {
        error = file.Read(block.data(), block.size(), &count);
        appendChunks({block.data(), count}, chunk, text);
    } while (!error.IsError() && count > 0);
    if (error.IsError()) reportFileFailure(path, error.GetErrorCode());
}
