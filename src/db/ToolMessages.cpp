#include "ToolMessages.h"

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

std::string endOfFile(const std::string& path) {
    const FileDescriptor file(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    std::string text;
    const off_t size = file.isOpen() ? ::lseek(file.get(), 0, SEEK_END) : -1;
    if (size <= 0) return text;
    text.resize(std::min(kEndBytes, static_cast<std::size_t>(size)));
    const ssize_t count =
        ::pread(file.get(), text.data(), text.size(), size - static_cast<off_t>(text.size()));
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
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
