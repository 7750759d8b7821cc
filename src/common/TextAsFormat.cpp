#include "TextAsFormat.h"

namespace {

// Stops when `maxLength` is reached, so that the cost does not depend on the part that is cut.
template <typename Char>
std::basic_string<Char> interpret(std::basic_string_view<Char> text, std::size_t maxLength,
                                  std::initializer_list<std::basic_string_view<Char>> arguments) {
    constexpr Char kPercent = '%';
    std::basic_string<Char> result;
    const auto* argument = arguments.begin();
    while (!text.empty() && result.size() < maxLength) {
        const std::size_t percent = text.find(kPercent);
        result += text.substr(0, percent);
        if (percent == text.npos) break;
        text.remove_prefix(percent + 1);
        const Char conversion = text.empty() ? Char() : text.front();
        if (conversion == kPercent) {
            result += kPercent;
            text.remove_prefix(1);
        } else if (conversion == Char('s') && argument != arguments.end()) {
            result += *argument++;
            text.remove_prefix(1);
        } else {
            result += kPercent;
        }
    }
    if (result.size() > maxLength) result.resize(maxLength);
    return result;
}

}  // namespace

std::string textAsFormat(std::string_view text, std::size_t maxLength) {
    return interpret(text, maxLength, {});
}

std::wstring textAsFormat(std::wstring_view text, std::size_t maxLength) {
    return interpret(text, maxLength, {});
}

std::string textAsFormat(std::string_view text, std::initializer_list<std::string_view> arguments) {
    return interpret(text, std::string::npos, arguments);
}
