#include "execute/RaiseErrorText.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <new>

#include "messages/Messages.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr std::size_t kLongestMessage = 2047;
constexpr std::string_view kEllipsis = "...";

// Formats one argument with SQLite's printf.
template <typename Argument>
std::string written(const std::string& format, Argument argument) {
    const std::unique_ptr<char, void (*)(void*)> text(sqlite3_mprintf(format.c_str(), argument),
                                                      sqlite3_free);
    if (!text) throw std::bad_alloc();
    return text.get();
}

// Substitutes the arguments in order.
class Formatter {
  public:
    Formatter(std::string_view format, std::span<const TypedValue> arguments)
        : m_format(format), m_arguments(arguments) {}

    std::string run() {
        std::string text;
        for (std::size_t at; (at = m_format.find('%')) != std::string_view::npos;) {
            text.append(m_format.substr(0, at));
            m_format.remove_prefix(at);
            text.append(substitution());
        }
        return text.append(m_format);
    }

  private:
    // %% or: %, flags, width, precision, size and type
    std::string substitution() {
        const std::string_view whole = m_format.substr(0, 20);
        m_format.remove_prefix(1);
        if (accept("%")) return "%";
        std::string flags(take("-+0# ", std::string_view::npos));
        const std::string width = number();
        const bool precise = accept(".");
        const std::string size = width + (precise ? "." + number() : "");
        if (!accept("h") && !accept("l")) accept("I64");
        const std::string type(take("diouxXs", 1));
        if (type.empty()) throw sqlError(message::kInvalidFormat, {whole});
        const bool left = flags.find('-') != std::string::npos;
        if (left || precise) std::erase(flags, '0');
        const std::string side = left ? "%-!" : "%!";
        const std::size_t index = m_next++;
        if (index >= m_arguments.size() || isNull(m_arguments[index].value))
            return written(side + width + "s", "(null)");
        const auto& [value, valueType] = m_arguments[index];
        const auto* text = std::get_if<std::string>(&value);
        if (!isText(valueType.id) && !isInteger(valueType.id) && !isBinary(valueType.id))
            throw sqlError(message::kInvalidSubstitutionType,
                           {baseName(valueType.id), std::to_string(index + 4)});  // parameter of RAISERROR
        if ((type == "s") != (text != nullptr) || isBinary(valueType.id))
            throw sqlError(message::kSubstitutionTypeMismatch, {std::to_string(index + 1)});
        if (text) return written(side + size + "s", text->c_str());
        // Unsigned conversions show negative numbers as 32-bit ones.
        const auto number = static_cast<long long>(std::get<std::int64_t>(value));
        const bool isSigned = type == "d" || type == "i";
        return written("%" + flags + size + "ll" + type,
                       isSigned || number >= 0 ? number : number & 0xFFFFFFFF);
    }

    bool accept(std::string_view word) {
        const bool found = m_format.starts_with(word);
        if (found) m_format.remove_prefix(word.size());
        return found;
    }

    // Removes and returns the next characters that are in `set`, at most `most`.
    std::string_view take(std::string_view set, std::size_t most) {
        const std::string_view taken = m_format.substr(0, std::min(m_format.find_first_not_of(set), most));
        m_format.remove_prefix(taken.size());
        return taken;
    }

    // Width or precision: up to four digits, or * for the next argument.
    std::string number() {
        constexpr std::int64_t kWidest = 2047;
        std::int64_t value = 0;
        if (accept("*")) {
            const std::size_t index = m_next++;
            const auto* given =
                index < m_arguments.size() ? std::get_if<std::int64_t>(&m_arguments[index].value) : nullptr;
            value = given ? *given : 0;
        } else if (const std::string digits(take("0123456789", 4)); !digits.empty()) {
            value = std::stoi(digits);
        }
        return std::to_string(std::clamp<std::int64_t>(value, 0, kWidest));
    }

    std::string_view m_format;  // what is left of it
    std::span<const TypedValue> m_arguments;
    std::size_t m_next = 0;
};

}  // namespace

std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments) {
    std::string text = Formatter(format, arguments).run();
    if (characterCount(text) <= kLongestMessage) return text;
    return std::string(characters(text, 0, kLongestMessage - kEllipsis.size())).append(kEllipsis);
}

}  // namespace tsql
