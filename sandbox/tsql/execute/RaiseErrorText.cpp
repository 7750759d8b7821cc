#include "execute/RaiseErrorText.h"

#include <regex.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "messages/Messages.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr std::size_t kLongestMessage = 2047;
constexpr std::string_view kEllipsis = "...";

// Matches %% or %, flags, width, precision and type. A match without a type is an invalid conversion.
constexpr const char* kSubstitution =
    R"(%(%|([-+0# ]*)(\*|[0-9]{0,4})(\.(\*|[0-9]{0,4}))?(h|l|I64)?([diouxXs])?))";
enum Group { kAll, kWhole, kFlags, kWidth, kPrecision, kDigits, kSize, kType, kGroups };
using Match = std::array<std::string, kGroups>;  // of the groups; empty if a group has not matched

// Formats one argument with SQLite's printf.
template <typename Argument>
std::string written(const std::string& format, Argument argument) {
    const std::unique_ptr<char, void (*)(void*)> text(sqlite3_mprintf(format.c_str(), argument),
                                                      sqlite3_free);
    if (!text) throw std::bad_alloc();
    return text.get();
}

// Consumes the arguments in order.
class Formatter {
  public:
    explicit Formatter(std::span<const TypedValue> arguments) : m_arguments(arguments) {}

    // `format`: the match and the text behind it.
    std::string substituted(const Match& match, std::string_view format) {
        if (match[kWhole] == "%") return "%";
        if (match[kType].empty())
            throw sqlError(message::kInvalidFormat, {std::string(format.substr(0, 20))});
        std::string flags = match[kFlags];
        const bool left = flags.find('-') != std::string::npos, precise = !match[kPrecision].empty();
        if (left || precise) std::erase(flags, '0');
        const std::string side = left ? "%-!" : "%!", width = number(match[kWidth]);
        const std::string size = width + (precise ? "." + number(match[kPrecision].substr(1)) : "");
        const std::size_t index = m_next++;
        if (index >= m_arguments.size() || isNull(m_arguments[index].value))
            return written(side + width + "s", "(null)");
        const auto& [value, type] = m_arguments[index];
        const auto* text = std::get_if<std::string>(&value);
        if (!isText(type.id) && !isInteger(type.id) && !isBinary(type.id))
            throw sqlError(message::kInvalidSubstitutionType,
                           {baseName(type.id), std::to_string(index + 4)});  // parameter of RAISERROR
        if ((match[kType] == "s") != (text != nullptr) || isBinary(type.id))
            throw sqlError(message::kSubstitutionTypeMismatch, {std::to_string(index + 1)});
        if (text) return written(side + size + "s", text->c_str());
        return integer("%" + flags + size + "ll" + match[kType], std::get<std::int64_t>(value));
    }

  private:
    // Width or precision: digits, or * for the next argument.
    std::string number(const std::string& digits) {
        constexpr std::int64_t kWidest = 2047;
        std::int64_t value = 0;
        if (digits == "*") {
            const std::size_t index = m_next++;
            const auto* given =
                index < m_arguments.size() ? std::get_if<std::int64_t>(&m_arguments[index].value) : nullptr;
            value = given ? *given : 0;
        } else if (!digits.empty()) {
            value = std::stoi(digits);
        }
        return std::to_string(std::clamp<std::int64_t>(value, 0, kWidest));
    }

    // Unsigned conversions show negative numbers as 32-bit ones.
    static std::string integer(const std::string& format, std::int64_t value) {
        const bool isSigned = format.ends_with('d') || format.ends_with('i');
        return written(format, static_cast<long long>(isSigned || value >= 0 ? value : value & 0xFFFFFFFF));
    }

    std::span<const TypedValue> m_arguments;
    std::size_t m_next = 0;
};

}  // namespace

std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments) {
    static const regex_t substitution = [] {
        regex_t compiled;
        regcomp(&compiled, kSubstitution, REG_EXTENDED);
        return compiled;
    }();
    Formatter formatter(arguments);
    std::string text;
    regmatch_t groups[kGroups];
    const auto findNext = [&] {
        groups[kAll] = {0, static_cast<regoff_t>(format.size())};
        return regexec(&substitution, format.data(), kGroups, groups, REG_STARTEND) == 0;
    };
    const auto textOf = [&](const regmatch_t& group) {
        if (group.rm_so < 0) return std::string_view();
        return format.substr(static_cast<std::size_t>(group.rm_so),
                             static_cast<std::size_t>(group.rm_eo - group.rm_so));
    };
    while (findNext()) {
        Match match;
        std::ranges::transform(groups, match.begin(), textOf);
        const auto start = static_cast<std::size_t>(groups[kAll].rm_so);
        text.append(format.substr(0, start));
        text.append(formatter.substituted(match, format.substr(start)));
        format.remove_prefix(static_cast<std::size_t>(groups[kAll].rm_eo));
    }
    text.append(format);
    if (characterCount(text) <= kLongestMessage) return text;
    return std::string(characters(text, 0, kLongestMessage - kEllipsis.size())).append(kEllipsis);
}

}  // namespace tsql
