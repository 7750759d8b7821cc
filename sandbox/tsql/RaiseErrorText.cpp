#include "RaiseErrorText.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "Messages.h"
#include "Text.h"

namespace tsql {
namespace {

constexpr std::size_t kLongestMessage = 2047;
constexpr std::string_view kEllipsis = "...";
constexpr std::size_t kWidest = 2047;

struct Substitution {
    std::string flags;
    bool has(char flag) const { return flags.find(flag) != std::string::npos; }
    std::size_t width = 0;
    std::size_t precision = std::string::npos;
    char type = 's';
};

// One message under construction.
class Formatter {
  public:
    Formatter(std::string_view format, std::span<const TypedValue> arguments)
        : m_format(format), m_arguments(arguments) {}

    std::string run() {
        for (; m_at < m_format.size(); ++m_at) {
            if (m_format[m_at] != '%')
                m_text += m_format[m_at];
            else if (m_format.substr(m_at).starts_with("%%"))
                m_text += m_format[m_at++];
            else
                addArgument(substitution());
        }
        if (characterCount(m_text) <= kLongestMessage) return m_text;
        return std::string(characters(m_text, 0, kLongestMessage - kEllipsis.size())).append(kEllipsis);
    }

  private:
    char next() { return ++m_at < m_format.size() ? m_format[m_at] : '\0'; }

    // Begins at the percent sign, ends at the type's letter.
    Substitution substitution() {
        const std::size_t begin = m_at;
        Substitution spec;
        char c = next();
        for (; c && std::string_view("-+0# ").find(c) != std::string_view::npos; c = next()) spec.flags += c;
        spec.width = number(c, 0);
        if (c == '.') spec.precision = number(c = next(), 0);
        while (c == 'l' || c == 'h' || c == 'I' || c == '6' || c == '4') c = next();
        spec.type = c;
        if (!c || std::string_view("diouxXs").find(c) == std::string_view::npos)
            throw sqlError(2787, {m_format.substr(begin, 20)});
        return spec;
    }

    // Digits, or * for the next argument.
    std::size_t number(char& c, std::size_t value) {
        if (c == '*') {
            const auto* given =
                m_next < m_arguments.size() ? std::get_if<std::int64_t>(&m_arguments[m_next].value) : nullptr;
            ++m_next;
            c = next();
            return given && *given > 0 ? std::min(static_cast<std::size_t>(*given), kWidest) : 0;
        }
        for (; std::isdigit(static_cast<unsigned char>(c)); c = next())
            value = std::min(value * 10 + static_cast<std::size_t>(c - '0'), kWidest);
        return value;
    }

    void addArgument(const Substitution& spec) {
        std::string text = "(null)";
        const std::size_t index = m_next++;
        if (index < m_arguments.size() && !isNull(m_arguments[index].value)) {
            const TypedValue& argument = m_arguments[index];
            if (isText(argument.type.id) != (spec.type == 's') ||
                !(isText(argument.type.id) || isInteger(argument.type.id)))
                throw sqlError(2786, {std::to_string(index + 1)});
            text = spec.type == 's'
                       ? std::string(characters(std::get<std::string>(argument.value), 0, spec.precision))
                       : integer(std::get<std::int64_t>(argument.value), spec);
        }
        const std::size_t length = characterCount(text);
        const std::size_t padding = spec.width > length ? spec.width - length : 0;
        m_text += spec.has('-') ? text + std::string(padding, ' ') : std::string(padding, ' ') + text;
    }

    static std::string integer(std::int64_t value, const Substitution& spec) {
        const bool isSigned = spec.type == 'd' || spec.type == 'i';
        const int base = spec.type == 'o' ? 8 : spec.type == 'x' || spec.type == 'X' ? 16 : 10;
        const bool negative = isSigned && value < 0;
        std::uint64_t magnitude = static_cast<std::uint64_t>(value);
        if (negative)
            magnitude = 0 - magnitude;
        else if (!isSigned && value < 0)
            magnitude &= 0xFFFFFFFFU;
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, magnitude, base).ptr;
        std::string text(digits, end);
        if (spec.type == 'X') text = toUpper(text);
        std::string sign = negative                    ? "-"
                           : spec.has('+') && isSigned ? "+"
                           : spec.has(' ') && isSigned ? " "
                                                       : "";
        if (spec.has('#') && base == 16 && value != 0) sign += spec.type == 'X' ? "0X" : "0x";
        const std::size_t wanted = spec.precision != std::string::npos ? spec.precision
                                   : spec.has('0') && !spec.has('-') && spec.width > sign.size()
                                       ? spec.width - sign.size()
                                       : 0;
        if (text.size() < wanted) text.insert(0, wanted - text.size(), '0');
        return sign + text;
    }

    std::string_view m_format;
    std::span<const TypedValue> m_arguments;
    std::size_t m_at = 0;
    std::size_t m_next = 0;
    std::string m_text;
};

}  // namespace

std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments) {
    return Formatter(format, arguments).run();
}

}  // namespace tsql
