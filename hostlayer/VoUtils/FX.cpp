#include "FX.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

std::string FXString::Format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the checker does not follow va_copy
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

void FXPath::Append(std::string& path, const char* component) {
    std::string_view tail(component != nullptr ? component : "");
    if (tail.empty()) return;
    if (!path.empty()) {
        tail.remove_prefix(std::min(tail.find_first_not_of('/'), tail.size()));
        path.erase(path.find_last_not_of('/') + 1);
        path += '/';
    }
    path += tail;
}

bool FXFile::Exists(const char* path) {
    return path != nullptr && ::access(path, F_OK) == 0;
}

bool FXFile::Remove(const char* path) {
    return path != nullptr && (::unlink(path) == 0 || errno == ENOENT);
}
