#include "Utf8.h"

#include <utility>

namespace {

// Length of the character that begins with `lead`; 0 for an invalid lead byte.
std::size_t lengthByLead(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

bool isValidUtf8(std::string_view text) {
    char32_t character = 0;
    while (!text.empty())
        if (!decodeUtf8(text, character)) return false;
    return true;
}

}  // namespace

bool decodeUtf8(std::string_view& text, char32_t& character) {
    // The smallest code of each length; below it a shorter form exists.
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lengthByLead(lead);
    const std::string_view rest = text.substr(1, length == 0 ? 0 : length - 1);
    text.remove_prefix(1);
    if (length == 0 || rest.size() + 1 < length) return false;
    char32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    for (const char c : rest) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U) return false;
        code = code << 6U | (byte & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kSmallest[length] || isSurrogate || code > 0x10FFFF) return false;
    text.remove_prefix(rest.size());
    character = code;
    return true;
}

void repairUtf8(std::string& text) {
    if (isValidUtf8(text)) return;
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::string valid;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view before = rest;
        char32_t character = 0;
        const bool isValid = decodeUtf8(rest, character);
        valid += isValid ? before.substr(0, before.size() - rest.size()) : kReplacement;
    }
    text = std::move(valid);
}
