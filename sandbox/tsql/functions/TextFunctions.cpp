// T-SQL's string functions, as SQLite functions.
#include <openssl/evp.h>

#include <cmath>
#include <cstdio>

#include "functions/Functions.h"
#include "types/Text.h"
#include "types/Work.h"

namespace tsql {
namespace {

constexpr std::size_t kLongest = 8000;            // result of SPACE and STR
constexpr std::int64_t kMostOfMax = 100'000'000;  // of REPLICATE and REPLACE; SQL Server's limit is 2 GB

// Varying-length type of the first argument's kind.
SqlType varying(const SqlType& type, int length) {
    if (length <= 0) length = SqlType::kMax;
    if (isBinary(type.id)) return {TypeId::VarBinary, length > 8000 ? SqlType::kMax : length, 0, 0};
    return isNational(type.id) ? nvarcharType(length) : varcharType(length);
}

SqlType varyingText(Pieces pieces) {
    return varying(pieces[0].type, pieces[0].type.length);
}

// Type of a substring: a literal argument gives its length.
SqlType partOfText(Pieces pieces) {
    const int whole = pieces[0].type.length;
    const auto given = pieces.back().integer;
    const bool shorter = given && *given >= 0 && *given <= 8000 && (whole <= 0 || *given < whole);
    return varying(pieces[0].type, shorter ? std::max(1, static_cast<int>(*given)) : whole);
}

// Type of the concatenation of all arguments, of which the first one may separate the others.
template <bool isSeparated>
SqlType joinedText(Pieces pieces) {
    std::vector<Typed> joined(pieces.begin(), pieces.end());
    if (isSeparated) joined.insert(joined.end(), pieces.size() - 3, pieces[0]);
    std::erase_if(joined, [](const Typed& piece) { return piece.nullLiteral; });
    SqlType type = joined.empty() ? varcharType(1) : varyingText(joined);
    for (std::size_t i = 1; i < joined.size(); ++i) type = operatorType(BinaryOp::Add, type, joined[i].type);
    return type;
}

SqlType strText(Pieces pieces) {
    const auto length = pieces.size() > 1 ? pieces[1].integer.value_or(10) : 10;
    return varcharType(static_cast<int>(std::clamp<std::int64_t>(length, 1, 8000)));
}

template <std::size_t place>  // of the string whose characters are counted
SqlType countType(Pieces pieces) {
    return simpleType(pieces[place].type.length < 0 ? TypeId::BigInt : TypeId::Int);
}

template <auto function>
Value runOnText(const SqlCall& call) {
    return std::string(function(call.text(0)));
}

// (value, type); size in bytes in SQL Server
Value runDataLength(const SqlCall& call) {
    const SqlType type = call.type(1);
    if (isBinary(type.id)) return static_cast<std::int64_t>(std::get<Blob>(call[0]).size());
    if (!isText(type.id)) return std::int64_t{maxLength(type)};
    const auto count = static_cast<std::int64_t>(characterCount(call.text(0)));
    return isNational(type.id) ? 2 * count : count;
}

// Positions before the first character count towards the length.
Value runSubstring(const SqlCall& call) {
    if (call.integer(2) < 0) throw sqlError(kInvalidLengthOfSubstring);
    const std::int64_t start = std::max<std::int64_t>(call.integer(1) - 1, 0);
    const std::int64_t end = std::max(call.integer(1) - 1 + call.integer(2), start);
    const auto first = static_cast<std::size_t>(start), count = static_cast<std::size_t>(end - start);
    const auto* bytes = std::get_if<Blob>(&call[0]);
    if (bytes) return Bytes(bytes->substr(std::min(first, bytes->size()), count));
    return std::string(characters(call.text(0), first, count));
}

template <bool right>
Value runSide(const SqlCall& call) {
    if (call.integer(1) < 0)
        throw sqlError(right ? kInvalidLengthOfFunction : kInvalidLengthOfSubstring, {"right"});
    const std::size_t count = characterCount(call.text(0));
    const std::size_t kept = std::min(static_cast<std::size_t>(call.integer(1)), count);
    return std::string(characters(call.text(0), right ? count - kept : 0, kept));
}

// (string, part, replacement, result type)
Value runReplace(const SqlCall& call) {
    const std::string_view text = call.text(0), part = call.text(1);
    const std::size_t partLength = characterCount(part);
    const bool bounded = call.resultType().length != SqlType::kMax;
    std::string result;
    std::size_t from = 0;
    for (std::size_t at; (at = findText(text, part, from)) != std::string_view::npos;) {
        result.append(text.substr(from, at - from)).append(call.text(2));
        from = at + byteOffset(text.substr(at), partLength);  // upper and lower case may differ in bytes
        if (!bounded && std::ssize(result) > kMostOfMax)
            throw unsupported("REPLACE beyond 100,000,000 bytes");
    }
    return convertValue(result.append(text.substr(from)), call.resultType(), call.resultType());
}

// (string, characters, their replacements)
Value runTranslate(const SqlCall& call) {
    std::string_view from = call.text(1), to = call.text(2);
    if (characterCount(from) != characterCount(to)) throw sqlError(kTranslationLengthsDiffer);
    std::map<char32_t, char32_t> replacements;
    while (!from.empty() && !to.empty())
        replacements.emplace(foldCase(nextCharacter(from)), nextCharacter(to));
    std::string result;
    for (std::string_view rest = call.text(0); !rest.empty();) {
        const char32_t character = nextCharacter(rest);
        const auto found = replacements.find(foldCase(character));
        appendCharacter(result, found == replacements.end() ? character : found->second);
    }
    return convertValue(result, call.resultType(), call.resultType());
}

// (string, start, length, replacement, result type)
Value runStuff(const SqlCall& call) {
    if (isNull(call[0]) || isNull(call[1]) || isNull(call[2])) return Null{};
    const std::string_view text = call.text(0);
    const std::int64_t start = call.integer(1) - 1, length = call.integer(2);
    if (start < 0 || length < 0 || start >= static_cast<std::int64_t>(characterCount(text))) return Null{};
    const auto first = static_cast<std::size_t>(start);
    std::string result(characters(text, 0, first));
    if (!isNull(call[3])) result += call.text(3);
    result += characters(text, first + static_cast<std::size_t>(length), std::string_view::npos);
    return convertValue(result, call.resultType(), call.resultType());
}

// (part, string[, start])
Value runCharIndex(const SqlCall& call) {
    const std::string_view text = call.text(1);
    const std::int64_t start = call.count() > 2 ? std::max<std::int64_t>(call.integer(2) - 1, 0) : 0;
    const std::size_t at = findText(text, call.text(0), byteOffset(text, static_cast<std::size_t>(start)));
    if (at == std::string_view::npos) return std::int64_t{0};
    return static_cast<std::int64_t>(characterCount(text.substr(0, at))) + 1;
}

// (pattern, string, type of the string); only a leading % lets the pattern match after the first character
Value runPatIndex(const SqlCall& call) {
    const EndBlanks blanks = isNational(call.type(2).id) ? EndBlanks::Counted : EndBlanks::Ignored;
    std::string_view pattern = call.text(0), text = call.text(1);
    const bool anywhere = pattern.starts_with('%') && pattern.size() > 1;
    if (anywhere) pattern.remove_prefix(1);
    for (; !matchesLike(text, pattern, blanks); nextCharacter(text))
        if (!anywhere || text.empty()) return std::int64_t{0};
    return static_cast<std::int64_t>(characterCount(call.text(1)) - characterCount(text)) + 1;
}

// (string, count, result type), cut to the length of the type; NULL for a negative count
Value runReplicate(const SqlCall& call) {
    const std::string_view text = call.text(0);
    const auto count = static_cast<std::size_t>(call.integer(1)), characters = characterCount(text);
    const int length = call.resultType().length;
    const auto most = static_cast<std::size_t>(length == SqlType::kMax ? kMostOfMax : length);
    if (call.integer(1) < 0) return Null{};
    if (length == SqlType::kMax && characters > 0 && count > most / characters)
        throw unsupported("REPLICATE beyond 100,000,000 characters");
    const std::size_t times = text.empty() ? 0 : std::min(count, most / characters + 1);
    std::string result;
    result.reserve(times * text.size());
    for (std::size_t i = 0; i < times; ++i) {
        spendWork(text.size());
        result += text;
    }
    result.resize(byteOffset(result, most));
    return result;
}

template <auto codeOf>
Value runCode(const SqlCall& call) {
    std::string_view text = call.text(0);
    return text.empty() ? Value(Null{}) : Value(std::int64_t{codeOf(nextCharacter(text))});
}

std::string fixedPoint(double value, std::int64_t decimals) {
    const double power = std::pow(10.0, static_cast<double>(decimals));
    const double rounded = std::fabs(value) < 1e15 ? std::round(value * power) / power : value;
    std::array<char, 400> digits{};
    std::snprintf(digits.data(), digits.size(), "%.*f", static_cast<int>(decimals), rounded + 0.0);
    return digits.data();
}

// (number[, length[, decimals]]); right-aligned; asterisks if the integer part does not fit
Value runStr(const SqlCall& call) {
    const auto length = call.count() > 1 ? call.integer(1) : 10;
    auto decimals = call.count() > 2 ? std::min<std::int64_t>(call.integer(2), 16) : 0;
    if (length < 1 || length > static_cast<std::int64_t>(kLongest) || decimals < 0) return Null{};
    const auto width = static_cast<std::size_t>(length);
    std::string text = fixedPoint(call.real(0), decimals);
    while (text.size() > width && decimals > 0) text = fixedPoint(call.real(0), --decimals);
    return text.size() > width ? std::string(width, '*') : std::string(width - text.size(), ' ') + text;
}

// CONCAT and CONCAT_WS leave out NULL, the latter with its separator.
template <bool isSeparated>
std::string writeConcat(const FunctionInfo&, Pieces pieces, const SqlType& result) {
    const std::string separator = isSeparated ? "ifnull(" + pieces[0].sql + ",'')" : "''";
    std::string sql;
    for (const Typed& piece : pieces.subspan(isSeparated))
        sql += (sql.empty() ? "(" : "||") + ("ifnull(" + separator + "||" + piece.sql + ",'')");
    sql += ")";
    // Of text, substr() and length() see no more than is before a NUL.
    if (isSeparated)
        sql = "ifnull(CAST(substr(CAST(" + sql + " AS BLOB),length(CAST(" + separator +
              " AS BLOB))+1) AS TEXT),'')";
    const bool isCut = result.length >= (isNational(result.id) ? 4000 : 8000);
    return isCut ? emitConvert({sql, varying(result, SqlType::kMax)}, result, nullptr, Conversion::Cast).sql
                 : sql;
}

// ([characters, ]string)
std::string writeTrim(const FunctionInfo&, Pieces pieces, const SqlType&) {
    const std::string& first = pieces[0].sql;
    if (pieces.size() == 1) return "trim(" + first + ")";
    return "trim(" + pieces[1].sql + ",ts_upper(" + first + ")||ts_lower(" + first + "))";
}

Value runQuoteName(const SqlCall& call) {
    constexpr std::string_view kQuotes = "[]()<>{}''\"\"``";
    const char wanted = call.count() > 1 && !call.text(1).empty() ? call.text(1)[0] : '[';
    const auto found = kQuotes.find(wanted);
    if (found == std::string_view::npos || characterCount(call.text(0)) > 128) return Null{};
    const char left = kQuotes[found & ~std::size_t{1}], right = kQuotes[found | 1];
    std::string result(1, left);
    for (const char c : call.text(0)) result.append(c == right ? 2 : 1, c);
    return result += right;
}

// (a.b.c.d, number of the part from the right); NULL if the string has no such part or is no name
Value runParseName(const SqlCall& call) {
    constexpr std::size_t kMostParts = 4;
    std::vector<std::string> parts(1);
    char close = '\0';  // of the quoted part that is being read
    const std::string_view text = call.text(0);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool ends = close && text[i] == close;
        const bool doubled = ends && text.substr(i + 1).starts_with(close);
        if (ends && !doubled)
            close = '\0';
        else if (!close && text[i] == '.')
            parts.emplace_back();
        else if (!close && parts.back().empty() && (text[i] == '[' || text[i] == '"'))
            close = text[i] == '[' ? ']' : '"';
        else
            parts.back() += text[i += doubled];
    }
    const auto part = static_cast<std::size_t>(std::max<std::int64_t>(call.integer(1), 0));
    if (close || part < 1 || part > parts.size() || parts.size() > kMostParts) return Null{};
    const std::string& name = parts[parts.size() - part];
    return name.empty() ? Value(Null{}) : Value(name);
}

// (algorithm, string, its type); NULL for an unknown algorithm
Value runHashBytes(const SqlCall& call) {
    std::string name = lowerAscii(call.text(0));
    if (hasWord("md2 md4", name)) throw unsupported("HASHBYTES with MD2 and MD4");
    if (!hasWord("md5 sha sha1 sha2_256 sha2_512", name)) return Null{};
    std::ranges::replace(name, '_', '-');  // OpenSSL's name
    const SqlType binary{TypeId::VarBinary, SqlType::kMax, 0, 0};
    const auto bytes = std::get<Bytes>(convertValue(call[1], call.type(2), binary));
    Bytes hash(EVP_MAX_MD_SIZE, std::byte{0});
    std::size_t size = 0;
    EVP_Q_digest(nullptr, name == "sha" ? "sha1" : name.c_str(), nullptr, bytes.data(), bytes.size(),
                 reinterpret_cast<unsigned char*>(hash.data()), &size);
    return hash.substr(0, size);
}

}  // namespace

const std::vector<FunctionInfo> kTextFunctions = {
    {"len", "T", countType<0>,
     [](const SqlCall& call) -> Value { return std::int64_t(characterCount(trimRight(call.text(0)))); }},
    {"datalength", "A#", countType<0>, runDataLength},
    {"substring", "SWW", partOfText, runSubstring},
    {"left", "TW", partOfText, runSide<false>},
    {"right", "TW", partOfText, runSide<true>},
    {"upper", "T", varyingText, runOnText<toUpper>},
    {"lower", "T", varyingText, runOnText<toLower>},
    {"ltrim", "T", varyingText, runOnText<trimLeft>},
    {"rtrim", "T", varyingText, runOnText<trimRight>},
    {"Trim", "C[C", [](Pieces pieces) { return varyingText(pieces.last(1)); }, writeTrim},
    {"replace", "TTT=", grownText, runReplace},
    {"translate", "TTC=", grownText, runTranslate},
    {"stuff", "0TWWT=", grownText, runStuff},
    {"charindex", "CL[W", countType<1>, runCharIndex},
    {"patindex", "TS#", countType<1>, runPatIndex},
    {"replicate", "TW=", grownText, runReplicate},
    {"space", "I", varcharType(kLongest),
     [](const FunctionInfo&, Pieces pieces, const SqlType& type) {
         return "ts_replicate(' '," + pieces[0].sql + "," + std::to_string(encodeType(type)) + ")";
     }},
    {"reverse", "T", varyingText,
     [](const SqlCall& call) -> Value {
         std::u32string characters;
         for (std::string_view rest = call.text(0); !rest.empty();) characters += nextCharacter(rest);
         std::string result;
         for (; !characters.empty(); characters.pop_back()) appendCharacter(result, characters.back());
         return result;
     }},
    {"char", "I", SqlType{TypeId::Char, 1, 0, 0},
     [](const SqlCall& call) -> Value {
         if (call.integer(0) < 0 || call.integer(0) > 255) return Null{};
         return utf8FromCodePage1252(std::string(1, static_cast<char>(call.integer(0))));
     }},
    {"nchar", "I", SqlType{TypeId::NChar, 1, 0, 0},
     [](const SqlCall& call) -> Value {
         const std::int64_t unit = call.integer(0);
         if (unit < 0 || unit > 0xFFFF) return Null{};
         if (unit >= 0xD800 && unit < 0xE000) throw unsupported("NCHAR of half a character");
         std::string result;
         appendCharacter(result, static_cast<char32_t>(unit));
         return result;
     }},
    {"ascii", "T", TypeId::Int, runCode<codePage1252>},
    {"unicode", "T", TypeId::Int,  // the first UTF-16 unit of the character
     runCode<[](char32_t c) { return c < 0x10000 ? c : 0xD7C0 + c / 0x400; }>},
    {"str", "F[II", strText, runStr},
    {"concat", "TT*", joinedText<false>, writeConcat<false>},
    {"concat_ws", "TTT*", joinedText<true>, writeConcat<true>},
    {"quotename", "T[T", nvarcharType(258), runQuoteName},
    {"parsename", "TI", nvarcharType(128), runParseName},
    {"hashbytes", "TS#", SqlType{TypeId::VarBinary, 8000, 0, 0}, runHashBytes},
};

SqlType grownText(Pieces pieces) {
    const bool isBounded = pieces[0].type.length > 0;
    if (std::ranges::any_of(pieces, [](const Typed& piece) { return isNational(piece.type.id); }))
        return nvarcharType(isBounded ? 4000 : SqlType::kMax);
    return varcharType(isBounded ? 8000 : SqlType::kMax);
}

}  // namespace tsql
