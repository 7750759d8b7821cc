#include "console/MetricsText.h"

#include <array>
#include <cstdio>

namespace {

std::string quoted(std::string_view text) {
    std::string value = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') value += '\\';
        value += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return value + '"';
}

// Whole seconds since 1970 without an exponent.
std::string numberText(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.15g", value);
    return text.data();
}

}  // namespace

void MetricsText::add(std::string_view name, std::string_view type, std::string_view help) {
    m_name = name;
    m_heading =
        "# HELP " + m_name + " " + std::string(help) + "\n# TYPE " + m_name + " " + std::string(type) + "\n";
}

void MetricsText::sample(double value, const Labels& labels, std::string_view suffix) {
    m_text += std::exchange(m_heading, {}) + m_name + std::string(suffix);
    char separator = '{';
    for (const auto& [name, text] : labels) {
        m_text += separator + std::string(name) + "=" + quoted(text);
        separator = ',';
    }
    m_text += (labels.empty() ? " " : "} ") + numberText(value) + "\n";
}
