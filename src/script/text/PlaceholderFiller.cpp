#include "text/PlaceholderFiller.h"

#include "TextAsFormat.h"

namespace {
constexpr std::size_t kPieceLength = 1 << 16;
}  // namespace

std::string blankPercentSignsInComments(std::string_view body) {
    std::string blanked(body);
    bool comment = false;
    for (std::size_t i = 0; i < blanked.size(); ++i) {
        const char next = i + 1 < blanked.size() ? blanked[i + 1] : '\0';
        if (blanked[i] == '/' && next == '*') comment = true;
        if (comment && blanked[i] == '%') blanked[i] = ' ';
        if (blanked[i] == '*' && next == '/') comment = false;
    }
    return blanked;
}

bool PlaceholderFiller::fill(std::string_view body, const std::vector<std::string>& values) {
    std::string_view rest = body;
    for (const std::string& value : values) {
        const std::size_t at = rest.find(kPlaceholder);
        if (at == std::string_view::npos) break;
        const std::string_view segment = rest.substr(0, at + kPlaceholder.size());
        if (!writeSegment(segment, m_escape(value))) return false;
        rest.remove_prefix(segment.size());
        join(value, &value == &values.front());
    }
    return m_write(rest);
}

// Writes pieces, so that memory does not grow with the segment. A piece never ends with a percent sign, which
// belongs to the character behind it; the placeholder is in the last piece.
bool PlaceholderFiller::writeSegment(std::string_view segment, std::string_view value) {
    while (!segment.empty()) {
        const std::size_t last = segment.find_first_not_of('%', kPieceLength);
        const std::string_view piece = segment.substr(0, last == std::string_view::npos ? last : last + 1);
        if (!m_write(textAsFormat(piece, {value}))) return false;
        segment.remove_prefix(piece.size());
    }
    return true;
}

void PlaceholderFiller::join(const std::string& value, bool first) {
    if (!first) m_joined += ", ";
    m_joined += value;
}
