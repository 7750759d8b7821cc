#include "querytool/ToolMessages.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "Causes.h"
#include "FileDescriptor.h"

namespace {

constexpr std::size_t kEndBytes =
    std::size_t{64} * 1024;              // the tool stops at the first error: messages are last
constexpr int kHighestInformation = 10;  // severity
constexpr std::string_view kMessage = "Msg ";
constexpr std::string_view kUtf16Message("M\0s\0g\0 ",
                                         7);  // as the tool writes it with -u: no byte order mark

std::string_view cutLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// Returns the value of "NAME value" in a list whose entries are separated by ", "; empty without the name.
std::string_view valueOf(std::string_view name, std::string_view list) {
    while (!list.empty()) {
        const std::size_t end = list.find(", ");
        const std::string_view entry = list.substr(0, end);
        if (entry.starts_with(name)) return entry.substr(name.size());
        list.remove_prefix(end == list.npos ? list.size() : end + 2);
    }
    return {};
}

int numberOf(std::string_view name, std::string_view list) {
    const std::string_view text = valueOf(name, list);
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void appendUtf8(std::string& text, char32_t c) {
    constexpr char32_t kSixBits = 0x3F;
    const auto append = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (c < 0x80) return append(c);
    if (c < 0x800) {
        append(0xC0 | (c >> 6U));
    } else {
        if (c < 0x10000) append(0xE0 | (c >> 12U));
        if (c >= 0x10000) append(0xF0 | (c >> 18U));
        if (c >= 0x10000) append(0x80 | ((c >> 12U) & kSixBits));
        append(0x80 | ((c >> 6U) & kSixBits));
    }
    append(0x80 | (c & kSixBits));
}

// Converts little-endian UTF-16. A half without its other half becomes U+FFFD: the end of a file may begin in
// a pair.
std::string utf8Of(std::string_view utf16) {
    constexpr char32_t kReplacement = 0xFFFD;
    std::string text;
    char32_t high = 0;  // first half of a pair; 0: none
    for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
        const char32_t unit = static_cast<unsigned char>(utf16[i]) |
                              static_cast<char32_t>(static_cast<unsigned char>(utf16[i + 1])) << 8U;
        const bool isFirstHalf = unit >= 0xD800 && unit < 0xDC00;
        const bool isSecondHalf = unit >= 0xDC00 && unit < 0xE000;
        if (high != 0 && isSecondHalf) {
            appendUtf8(text, 0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
        } else {
            if (high != 0) appendUtf8(text, kReplacement);
            if (!isFirstHalf) appendUtf8(text, isSecondHalf ? kReplacement : unit);
        }
        high = isFirstHalf ? unit : 0;
    }
    return text;
}

std::string endOfFile(const std::string& path) {
    const FileDescriptor file(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    std::string text;
    const off_t size = file.isOpen() ? ::lseek(file.get(), 0, SEEK_END) : -1;
    if (size <= 0) return text;
    text.resize(std::min(kEndBytes, static_cast<std::size_t>(size)));
    const ssize_t count =
        ::pread(file.get(), text.data(), text.size(), size - static_cast<off_t>(text.size()));
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text.find(kUtf16Message) != text.npos ? utf8Of(text) : text;
}

void noteMessages(std::string_view output) {
    while (!output.empty()) {
        const std::string_view line = cutLine(output);
        if (!line.starts_with(kMessage)) continue;
        DVUCause_t cause{.where = kDVUQueryTool,
                         .serverError = numberOf(kMessage, line),
                         .state = numberOf("State ", line),
                         .severity = numberOf("Level ", line),
                         .line = numberOf("Line ", line),
                         .procedure = std::string(valueOf("Procedure ", line)),
                         .server = std::string(valueOf("Server ", line))};
        if (cause.serverError == 0 || cause.severity <= kHighestInformation) continue;
        cause.text = cutLine(output);
        noteCause(std::move(cause));
    }
}

}  // namespace

void noteToolMessages(const std::string& path) {
    noteMessages(endOfFile(path));
}
