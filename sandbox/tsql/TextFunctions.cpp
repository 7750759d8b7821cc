// T-SQL's text functions, as SQLite functions.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "FunctionImpl.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {
namespace {

constexpr std::size_t kMaxRepeated = 8000;  // REPLICATE and SPACE stop here, as in SQL Server

[[noreturn]] void invalidLength(std::string_view function) {
    throw SqlError(537, "Invalid length parameter passed to the " + std::string(function) + " function.");
}

std::size_t lengthArgument(const Call& call, std::size_t i, std::string_view function) {
    if (call.integer(i) < 0) invalidLength(function);
    return static_cast<std::size_t>(call.integer(i));
}

Value runLen(const Call& call) {
    return static_cast<std::int64_t>(characterCount(trimRight(call.text(0))));
}

// (value, type): bytes that SQL Server would keep it in
Value runDataLength(const Call& call) {
    const SqlType type = call.type(1);
    if (call.isBlob(0)) return static_cast<std::int64_t>(std::get<Blob>(call[0]).size());
    if (!isText(type.id)) return std::int64_t{maxLength(type)};
    const auto count = static_cast<std::int64_t>(characterCount(call.text(0)));
    return isNational(type.id) ? 2 * count : count;
}

template <typename View, typename Cut>
Value substring(View source, std::int64_t start, std::int64_t length, Cut cut) {
    if (length < 0) invalidLength("SUBSTRING");
    const std::int64_t size = static_cast<std::int64_t>(source.size());
    const std::int64_t first = std::clamp<std::int64_t>(start - 1, 0, size);
    const std::int64_t end =
        std::clamp<std::int64_t>(start - 1 + std::min(length, std::int64_t{INT32_MAX}), first, INT32_MAX);
    return cut(source, static_cast<std::size_t>(first), static_cast<std::size_t>(end - first));
}

Value runSubstring(const Call& call) {
    if (call.isBlob(0))
        return substring(
            std::get<Blob>(call[0]), call.integer(1), call.integer(2),
            [](Blob source, std::size_t at, std::size_t count) { return Bytes(source.substr(at, count)); });
    return substring(call.text(0), call.integer(1), call.integer(2),
                     [](std::string_view source, std::size_t at, std::size_t count) {
                         return std::string(characters(source, at, count));
                     });
}

Value runLeft(const Call& call) {
    return std::string(characters(call.text(0), 0, lengthArgument(call, 1, "left")));
}

Value runRight(const Call& call) {
    const std::size_t wanted = lengthArgument(call, 1, "right"), count = characterCount(call.text(0));
    return std::string(call.text(0).substr(byteOffset(call.text(0), count - std::min(count, wanted))));
}

Value runUpper(const Call& call) {
    return toUpper(call.text(0));
}
Value runLower(const Call& call) {
    return toLower(call.text(0));
}
Value runLTrim(const Call& call) {
    return std::string(trimLeft(call.text(0)));
}
Value runRTrim(const Call& call) {
    return std::string(trimRight(call.text(0)));
}
Value runTrim(const Call& call) {
    return std::string(trimmed(call.text(0)));
}

Value runReplace(const Call& call) {
    const std::string_view text = call.text(0), part = call.text(1);
    const std::size_t partLength = characterCount(part);
    std::string result;
    std::size_t from = 0;
    for (std::size_t at; (at = findText(text, part, from)) != std::string_view::npos;) {
        result.append(text.substr(from, at - from)).append(call.text(2));
        from = at + byteOffset(text.substr(at), partLength);  // case pairs may differ in bytes
    }
    return result.append(text.substr(from));
}

// (text, start, length, replacement)
Value runStuff(const Call& call) {
    if (isNull(call[0]) || isNull(call[1]) || isNull(call[2])) return Null{};
    const std::string_view text = call.text(0);
    const std::int64_t start = call.integer(1), length = call.integer(2);
    if (start < 1 || length < 0 || start > static_cast<std::int64_t>(characterCount(text))) return Null{};
    const std::size_t first = byteOffset(text, static_cast<std::size_t>(start - 1));
    const std::string_view tail = text.substr(first);
    std::string result(text.substr(0, first));
    if (!isNull(call[3])) result.append(call.text(3));
    return result.append(tail.substr(byteOffset(tail, static_cast<std::size_t>(length))));
}

// (part, text[, start])
Value runCharIndex(const Call& call) {
    const std::string_view text = call.text(1);
    const std::int64_t start = call.count() > 2 ? std::max<std::int64_t>(call.integer(2), 1) : 1;
    const std::size_t at =
        findText(text, call.text(0), byteOffset(text, static_cast<std::size_t>(start - 1)));
    if (at == std::string_view::npos) return std::int64_t{0};
    return static_cast<std::int64_t>(characterCount(text.substr(0, at))) + 1;
}

// The pattern's leading % is what lets it begin anywhere.
Value runPatIndex(const Call& call) {
    std::string_view pattern = trimRight(call.text(0)), text = call.text(1);
    if (pattern.empty() || pattern[0] != '%') return std::int64_t{matchesLike(text, pattern)};
    pattern.remove_prefix(1);
    for (std::int64_t position = 1; !text.empty(); ++position) {
        if (matchesLike(text, pattern)) return position;
        nextCharacter(text);
    }
    return std::int64_t{0};
}

std::string repeated(std::string_view text, std::int64_t count, std::size_t limit) {
    std::string result;
    if (text.empty()) return result;
    const std::size_t length = characterCount(text);
    const std::size_t times = std::min(static_cast<std::size_t>(count), limit / length + 1);
    result.reserve(times * text.size());
    for (std::size_t i = 0; i < times; ++i) result += text;
    if (times * length > limit) result.resize(byteOffset(result, limit));
    return result;
}

// (text, count, characters at most)
Value runReplicate(const Call& call) {
    if (call.integer(1) < 0) return Null{};
    return repeated(call.text(0), call.integer(1), static_cast<std::size_t>(call.integer(2)));
}

Value runSpace(const Call& call) {
    if (call.integer(0) < 0) return Null{};
    return repeated(" ", call.integer(0), kMaxRepeated);
}

Value runReverse(const Call& call) {
    std::string result;
    for (std::string_view rest = call.text(0); !rest.empty();) {
        const std::string_view before = rest;
        nextCharacter(rest);
        result.insert(0, before.substr(0, before.size() - rest.size()));
    }
    return result;
}

template <std::int64_t most>
Value runCharacter(const Call& call) {
    const std::int64_t code = call.integer(0);
    if (code < 0 || code > most || (code >= 0xD800 && code < 0xE000)) return Null{};
    std::string result;
    appendCharacter(result, static_cast<char32_t>(code));
    return result;
}

Value runUnicode(const Call& call) {
    std::string_view text = call.text(0);
    if (text.empty()) return Null{};
    return static_cast<std::int64_t>(nextCharacter(text));
}

// (number[, length[, decimals]]): right-aligned; stars when the whole part has no room
Value runStr(const Call& call) {
    const auto length = call.count() > 1 ? call.integer(1) : 10;
    const auto decimals = call.count() > 2 ? std::clamp<std::int64_t>(call.integer(2), 0, 16) : 0;
    if (length < 1 || length > static_cast<std::int64_t>(kMaxRepeated) || decimals < 0) return Null{};
    char digits[400];
    const auto format = [&](std::int64_t places) {
        const double power = std::pow(10.0, static_cast<double>(places));
        const double rounded =
            std::fabs(call.real(0)) < 1e15 ? std::round(call.real(0) * power) / power : call.real(0);
        return std::string(digits, static_cast<std::size_t>(std::snprintf(
                                       digits, sizeof digits, "%.*f", static_cast<int>(places), rounded)));
    };
    const auto width = static_cast<std::size_t>(length);
    std::string text = format(decimals);
    const std::size_t whole = std::min(text.find('.'), text.size());
    if (whole > width) return std::string(width, '*');
    if (text.size() > width)
        text = format(width > whole + 1 ? static_cast<std::int64_t>(width - whole - 1) : 0);
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

// (separator, text...): NULLs are left out
Value runConcatWs(const Call& call) {
    const std::string_view separator = isNull(call[0]) ? std::string_view{} : call.text(0);
    std::string result;
    bool first = true;
    for (std::size_t i = 1; i < call.count(); ++i) {
        if (isNull(call[i])) continue;
        if (!first) result += separator;
        result += call.text(i);
        first = false;
    }
    return result;
}

// (text, separator): the pieces as a JSON array, which SQLite makes rows of
Value runSplit(const Call& call) {
    if (characterCount(call.text(1)) != 1) throw sqlError(214, {"separator", "nchar(1)/nvarchar(1)"});
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string result = "[\"";
    for (std::string_view rest = call.text(0); !rest.empty();) {
        if (rest.starts_with(call.text(1))) {
            result += "\",\"";
            rest.remove_prefix(call.text(1).size());
            continue;
        }
        const auto c = static_cast<unsigned char>(rest.front());
        if (c < ' ' || c == '"' || c == '\\')
            result.append("\\u00").append({kHex[c >> 4U], kHex[c & 15U]});
        else
            result += rest.front();
        rest.remove_prefix(1);
    }
    return result + "\"]";
}

// How a value of the type is converted to its XML text.
int xmlStyle(const SqlType& type) {
    constexpr int kIso8601 = 126, kSixteenDigits = 2, kEightDigits = 1, kFourDecimals = 2;
    if (isDateTime(type.id)) return kIso8601;
    if (isMoney(type.id)) return kFourDecimals;
    if (type.id == TypeId::Real) return kEightDigits;
    return type.id == TypeId::Float ? kSixteenDigits : kNoStyle;
}

// (value, type, whether in an attribute)
Value runXml(const Call& call) {
    const SqlType type = call.type(1);
    Value value = convertValue(call[0], type, nvarcharType(SqlType::kMax), xmlStyle(type));
    if (type.id == TypeId::Xml) return value;
    const bool attribute = call.integer(2) != 0;
    std::string result;
    for (const char c : std::get<std::string>(value)) {
        const auto code = static_cast<unsigned char>(c);
        const bool space = c == '\n' || c == '\t';
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"' && attribute)
            result += "&quot;";
        else if (code < ' ' && (attribute || !space))
            result.append("&#x").append(code < 16 ? "0" : "1").append(1, "0123456789ABCDEF"[code & 15U]) +=
                ';';
        else
            result += c;
    }
    return result;
}

// (xml, whether its elements' text counts): the text of xml
Value runXmlValue(const Call& call) {
    constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&#x0D;", '\r'}};
    std::string result;
    for (std::string_view rest = call.text(0); !rest.empty();) {
        if (rest.front() == '<') {
            if (call.integer(1) == 0) throw unsupported(".value('text()[1]', ...) of xml with elements");
            rest.remove_prefix(std::min(rest.find('>'), rest.size() - 1) + 1);
            continue;
        }
        std::size_t taken = 1;
        char c = rest.front();
        for (const auto& [entity, stands] : kEntities)
            if (rest.starts_with(entity)) taken = entity.size(), c = stands;
        result += c;
        rest.remove_prefix(taken);
    }
    return result;
}

// (depth, most): one deeper; 0: without a bound
Value runDeeper(const Call& call) {
    if (call.integer(1) > 0 && call.integer(0) >= call.integer(1))
        throw sqlError(530, {std::to_string(call.integer(1))});
    return call.integer(0) + 1;
}

// (rows asked for, least, error)
Value runRows(const Call& call) {
    if (isNull(call[0])) throw sqlError(1060);
    if (call.integer(0) < call.integer(1)) throw sqlError(static_cast<int>(call.integer(2)));
    return call.integer(0);
}

Value runQuoteName(const Call& call) {
    constexpr std::string_view kQuotes = "[]()<>{}''\"\"``";
    const char wanted = call.count() > 1 && !call.text(1).empty() ? call.text(1)[0] : '[';
    const auto found = kQuotes.find(wanted);
    if (found == std::string_view::npos || characterCount(call.text(0)) > 128) return Null{};
    const char left = kQuotes[found & ~std::size_t{1}], right = kQuotes[found | 1];
    std::string result(1, left);
    for (const char c : call.text(0)) result.append(c == right ? 2 : 1, c);
    return result += right;
}

constexpr ScalarFunction kFunctions[] = {
    {"ts_len", runLen},
    {"ts_datalength", runDataLength},
    {"ts_substring", runSubstring},
    {"ts_left", runLeft},
    {"ts_right", runRight},
    {"ts_upper", runUpper},
    {"ts_lower", runLower},
    {"ts_ltrim", runLTrim},
    {"ts_rtrim", runRTrim},
    {"ts_trim", runTrim},
    {"ts_replace", runReplace},
    {"ts_stuff", runStuff, Nulls::Reach},
    {"ts_charindex", runCharIndex},
    {"ts_patindex", runPatIndex},
    {"ts_replicate", runReplicate},
    {"ts_space", runSpace},
    {"ts_reverse", runReverse},
    {"ts_char", runCharacter<255>},
    {"ts_nchar", runCharacter<0x10FFFF>},
    {"ts_unicode", runUnicode},
    {"ts_str", runStr},
    {"ts_concat_ws", runConcatWs, Nulls::Reach},
    {"ts_split", runSplit},
    {"ts_xml", runXml},
    {"ts_xml_value", runXmlValue},
    {"ts_deeper", runDeeper},
    {"ts_rows", runRows, Nulls::Reach},
    {"ts_quotename", runQuoteName},
};

}  // namespace

std::span<const ScalarFunction> textFunctions() {
    return kFunctions;
}

}  // namespace tsql
