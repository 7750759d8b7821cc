#include "report/Html.h"

#include <array>
#include <cstdio>

#include "console/TextWidth.h"

std::string html(std::string_view text) {
    std::string escaped;
    for (const char c : cleaned(text)) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string filled(std::string_view form, std::initializer_list<std::string> values) {
    std::string text;
    for (const std::string& value : values) {
        const std::size_t place = form.find("{}");
        text.append(form.substr(0, place)).append(value);
        form.remove_prefix(place + 2);
    }
    return text.append(form);
}

std::string numberText(std::int64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t i = digits.size(); i > 3 && i - 3 > 0; i -= 3) digits.insert(i - 3, 1, ',');
    return digits;
}

std::string countText(std::int64_t number, const char* noun) {
    return numberText(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string percentText(double part) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.4g%%", part * 100);
    return text.data();
}
