#include "report/Html.h"

#include <array>
#include <cstdio>

#include "console/TextWidth.h"

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : withoutControls(text)) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string fillTemplate(std::string_view pattern, std::initializer_list<std::string> values) {
    std::string text;
    for (const std::string& value : values) {
        const std::size_t place = pattern.find("{}");
        text.append(pattern.substr(0, place)).append(value);
        pattern.remove_prefix(place + 2);
    }
    return text.append(pattern);
}

std::string numberText(std::int64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t i = digits.size(); i > 3 && i - 3 > 0; i -= 3) digits.insert(i - 3, 1, ',');
    return digits;
}

std::string countText(std::int64_t number, const char* noun) {
    return numberText(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string percentText(double fraction) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.4g%%", fraction * 100);
    return text.data();
}
