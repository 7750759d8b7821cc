#include "run/ToolTable.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr char kTabulator = '\t';

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(separator, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

// True for the line of dashes between headings and rows.
bool isSeparatorLine(std::string_view line) {
    return line.find('-') != line.npos && line.find_first_not_of("-\t") == line.npos;
}

Json valueOf(std::string_view text) {
    if (text == "NULL") return nullptr;
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end) return number;
    return std::string(text);
}

Json rowOf(const std::vector<std::string_view>& headings, std::string_view line) {
    const std::vector<std::string_view> values = split(line, kTabulator);
    Json row = Json::object();
    for (std::size_t i = 0; i < headings.size(); ++i)
        row[std::string(headings[i])] = i < values.size() ? valueOf(values[i]) : Json();
    return row;
}

}  // namespace

Json parseToolTable(std::string_view output) {
    const std::vector<std::string_view> lines = split(output, '\n');
    Json rows = Json::array();
    auto line = std::find_if(lines.begin(), lines.end(), isSeparatorLine);
    if (line == lines.begin() || line == lines.end()) return rows;
    const std::vector<std::string_view> headings = split(*(line - 1), kTabulator);
    for (++line; line != lines.end() && !line->empty(); ++line) rows.push_back(rowOf(headings, *line));
    return rows;
}
