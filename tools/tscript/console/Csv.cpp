#include "console/Csv.h"

#include "console/TextWidth.h"

namespace {

constexpr const char* kLineEnd = "\r\n";

}  // namespace

std::string csvField(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : withoutControls(text)) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string csvHeading(const Json& object) {
    std::string line;
    for (const auto& [name, value] : object.members()) line += (line.empty() ? "" : ",") + name;
    return line + kLineEnd;
}

std::string csvLine(const Json& object) {
    std::string line;
    bool isFirst = true;
    for (const auto& [name, value] : object.members()) {
        if (!isFirst) line += ',';
        isFirst = false;
        if (const auto* text = std::get_if<std::string>(&value.value()))
            line += csvField(*text);
        else if (!value.isNull())
            line += jsonLine(value);
    }
    return line + kLineEnd;
}
