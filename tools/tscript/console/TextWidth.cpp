#include "console/TextWidth.h"

#include <cwchar>

namespace {

constexpr const char* kEllipsis = "…";

struct Glyph {
    std::size_t bytes;
    std::size_t width;
    bool control;
    wchar_t character;  // 0 for a byte that starts none
};

// Embeddings, overrides and isolates, which show the text behind them in another order.
bool isDirectionControl(wchar_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// Decodes the first character. A byte that starts no valid character counts as a control character, and so
// does a direction control.
Glyph glyphAt(std::string_view text) {
    wchar_t c = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&c, text.data(), text.size(), &state);
    if (length == 0 || length > text.size()) return {1, 1, true, 0};
    const int width = wcwidth(c);
    if (width < 0 || isDirectionControl(c)) return {length, 1, true, c};
    return {length, static_cast<std::size_t>(width), false, c};
}

// Longest prefix of at most `width` columns.
std::string_view prefixOf(std::string_view text, std::size_t width) {
    std::size_t at = 0;
    while (at < text.size()) {
        const Glyph glyph = glyphAt(text.substr(at));
        if (glyph.width > width) break;
        width -= glyph.width;
        at += glyph.bytes;
    }
    return text.substr(0, at);
}

}  // namespace

bool isUtf8(std::string_view text) {
    std::mbstate_t state{};
    for (std::size_t at = 0; at < text.size();) {
        const bool ascii = static_cast<unsigned char>(text[at]) < 0x80;
        const std::size_t length =
            ascii ? 1 : std::mbrtowc(nullptr, text.data() + at, text.size() - at, &state);
        if (length > text.size()) return false;  // (size_t)-1: invalid, -2: incomplete
        at += length;
    }
    return true;
}

bool hasDirectionControl(std::string_view text) {
    constexpr char kFirstByte = '\xE2';  // of each of them
    for (std::size_t at = 0; (at = text.find(kFirstByte, at)) != text.npos;) {
        const Glyph glyph = glyphAt(text.substr(at));
        if (isDirectionControl(glyph.character)) return true;
        at += glyph.bytes;
    }
    return false;
}

std::string withoutControls(std::string_view text, std::string_view kept) {
    std::string clean;
    for (std::size_t at = 0; at < text.size();) {
        const Glyph glyph = glyphAt(text.substr(at));
        const bool stays = !glyph.control || kept.find(text[at]) != std::string_view::npos;
        clean += stays ? text.substr(at, glyph.bytes) : std::string_view(" ");
        at += glyph.bytes;
    }
    return clean;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Glyph glyph = glyphAt(text.substr(at));
        width += glyph.width;
        at += glyph.bytes;
    }
    return width;
}

std::string truncated(const std::string& text, std::size_t width) {
    if (displayWidth(text) <= width) return text;
    return std::string(prefixOf(text, width - 1)) + kEllipsis;
}
