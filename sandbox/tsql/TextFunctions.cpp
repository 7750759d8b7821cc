// T-SQL's text functions, as SQLite functions.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "FunctionImpl.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {
namespace {

constexpr std::size_t kMaxRepeated = 8000;  // SPACE and STR stop here, as in SQL Server

// --- what they give

// Text of varying length in the first argument's kind.
SqlType varying(const SqlType& type, int length) {
    if (isBinary(type.id)) return {TypeId::VarBinary, length > 8000 ? SqlType::kMax : length, 0, 0};
    return isNational(type.id) ? nvarcharType(length) : varcharType(length);
}
int lengthOf(const SqlType& type) {
    return type.length <= 0 ? SqlType::kMax : type.length;
}

SqlType sameText(Pieces pieces) {
    return varying(pieces[0].type, lengthOf(pieces[0].type));
}

// A part of a text: as long as a literal length says.
SqlType partOfText(Pieces pieces) {
    const int whole = lengthOf(pieces[0].type);
    const auto literal = pieces.back().integer;
    const bool shorter =
        literal && *literal >= 0 && *literal <= 8000 && (whole == SqlType::kMax || *literal < whole);
    return varying(pieces[0].type, shorter ? std::max(1, static_cast<int>(*literal)) : whole);
}

// REPLACE, STUFF, REPLICATE: 8000 bytes, or (max) when the first argument is.
SqlType grownText(Pieces pieces) {
    const SqlType& type = pieces[0].type;
    if (type.length <= 0) return varying(type, SqlType::kMax);
    return varying(type, isNational(type.id) ? 4000 : 8000);
}

// All of them together.
SqlType joinedText(Pieces pieces) {
    bool wide = false;
    int length = 0;
    for (const Typed& piece : pieces) {
        wide = wide || isNational(piece.type.id);
        length = length < 0 || piece.type.length <= 0 ? SqlType::kMax : length + piece.type.length;
    }
    return wide ? nvarcharType(std::min(length, 4000)) : varcharType(std::min(length, 8000));
}

SqlType strText(Pieces pieces) {
    const auto length = pieces.size() > 1 ? pieces[1].integer.value_or(10) : 10;
    return varcharType(static_cast<int>(std::clamp<std::int64_t>(length, 1, 8000)));
}

SqlType countType(Pieces pieces) {
    return simpleType(pieces[0].type.length < 0 ? TypeId::BigInt : TypeId::Int);
}

// --- what they do

std::size_t lengthArgument(const Call& call, std::size_t i, std::string_view function) {
    if (call.integer(i) < 0) throw sqlError(537, {function});
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
    if (length < 0) throw sqlError(537, {"SUBSTRING"});
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

// (text, count, result type)
Value runReplicate(const Call& call) {
    constexpr std::size_t kMostOfMax = 100'000'000;  // where SQL Server goes on to 2 GB
    if (call.integer(1) < 0) return Null{};
    const int length = call.resultType().length;
    return repeated(call.text(0), call.integer(1),
                    length == SqlType::kMax ? kMostOfMax : static_cast<std::size_t>(length));
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

// CONCAT: NULL counts as the empty text.
std::string writeConcat(const FunctionInfo&, Pieces pieces, const SqlType&) {
    std::string sql = "(";
    for (const Typed& piece : pieces)
        sql.append(sql.size() > 1 ? "||" : "").append("ifnull(" + piece.sql + ",'')");
    return sql + ")";
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

const FunctionInfo kFunctions[] = {
    {"len", "T", countType, runLen},
    {"datalength", "A#", countType, runDataLength},
    {"substring", "SII", partOfText, runSubstring},
    {"left", "TI", partOfText, runLeft},
    {"right", "TI", partOfText, runRight},
    {"upper", "T", sameText, runUpper},
    {"lower", "T", sameText, runLower},
    {"ltrim", "T", sameText, runLTrim},
    {"rtrim", "T", sameText, runRTrim},
    {"trim", "T", sameText, runTrim},
    {"replace", "TTT", grownText, runReplace},
    {"stuff", "TIIT", grownText, runStuff, Nulls::Reach},
    {"charindex", "TT[I", TypeId::Int, runCharIndex},
    {"patindex", "TT", TypeId::Int, runPatIndex},
    {"replicate", "TI=", grownText, runReplicate},
    {"space", "I", varcharType(8000), runSpace},
    {"reverse", "T", sameText, runReverse},
    {"char", "I", SqlType{TypeId::Char, 1, 0, 0}, runCharacter<255>},
    {"nchar", "I", SqlType{TypeId::NChar, 1, 0, 0}, runCharacter<0x10FFFF>},
    {"ascii", "T", TypeId::Int, runUnicode},
    {"unicode", "T", TypeId::Int, runUnicode},
    {"str", "F[II", strText, runStr},
    {"concat", "TT*", joinedText, writeConcat},
    {"concat_ws", "TTT*", joinedText, runConcatWs, Nulls::Reach},
    {"quotename", "T[T", nvarcharType(258), runQuoteName},
};

}  // namespace

std::span<const FunctionInfo> textFunctions() {
    return kFunctions;
}

}  // namespace tsql
