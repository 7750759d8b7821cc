// UTF-8 strings with T-SQL's semantics: lengths in UTF-16 units, case-insensitive comparison. Conversions to
// the encodings of the wire, UTF-16LE and code page 1252.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

inline constexpr char32_t kReplacement = 0xFFFD;  // for what is no character

constexpr char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr bool sameWord(std::string_view left, std::string_view right) {  // ignores the case of ASCII letters
    return std::ranges::equal(left, right, {}, upperAscii, upperAscii);
}

// Containers of names, case-insensitive.
struct WordLess {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const {
        return std::ranges::lexicographical_compare(left, right, {}, upperAscii, upperAscii);
    }
};
template <typename T>
using WordMap = std::map<std::string, T, WordLess>;
using WordSet = std::set<std::string, WordLess>;

std::string lowerAscii(std::string_view text);
std::string_view trimRight(std::string_view text);  // only blanks, as T-SQL's RTRIM
std::string_view trimLeft(std::string_view text);
inline std::string_view trimmed(std::string_view text) {
    return trimLeft(trimRight(text));
}

// "a, b": the strings of the items.
template <typename Items, typename StringOf = std::identity>
std::string commaList(const Items& items, StringOf stringOf = {}) {
    std::string list;
    for (const auto& item : items) (list += list.empty() ? "" : ", ") += std::invoke(stringOf, item);
    return list;
}
// words: separated by blanks. An empty word is none of them.
bool hasWord(std::string_view words, const std::string& word);
// Splits "item; item". Line breaks count as blanks.
std::vector<std::string> listItems(std::string_view text);

// Length in UTF-16 units, as T-SQL counts. A character above U+FFFF has two units and is never split. A byte
// that is not valid UTF-8 counts as one character (read as U+FFFD).
std::size_t characterCount(std::string_view text);
// Number of bytes of the whole characters within the first `count` units.
std::size_t byteOffset(std::string_view text, std::size_t count);
// Substring of units [first, first + count), without halves of characters at its ends.
std::string_view characters(std::string_view text, std::size_t first, std::size_t count);
// Removes and returns the first character of a nonempty string.
char32_t nextCharacter(std::string_view& text);
void appendCharacter(std::string& text, char32_t character);

std::string toUpper(std::string_view text);
std::string toLower(std::string_view text);
char32_t foldCase(char32_t character);
// Letter without its accent, for letters of Latin-1 and Latin Extended-A. Other characters are returned as
// they are.
char32_t baseLetter(char32_t character);

// Case-insensitive order: negative, 0 or positive. The shorter string is padded with blanks.
int compareText(std::string_view left, std::string_view right);
inline bool sameText(std::string_view left, std::string_view right) {
    return compareText(left, right) == 0;
}
// Byte offset of the first `part` in `text` at or after `from`, case-insensitive; npos if there is none.
std::size_t findText(std::string_view text, std::string_view part, std::size_t from = 0);
// LIKE with %, _, [a-f] and [^x]. `escape` is 0 for none. `blanks`: whether trailing blanks of the text are
// significant.
enum class EndBlanks { Ignored, Counted };
bool matchesLike(std::string_view text, std::string_view pattern, EndBlanks blanks, char32_t escape = 0);

// Never fails: invalid UTF-8 and unpaired surrogates become U+FFFD.
void appendUtf16(std::string& wire, std::string_view utf8);
std::string utf16FromUtf8(std::string_view utf8);
// A trailing odd byte is ignored.
std::string utf8FromUtf16(std::string_view wire);
// Windows code page 1252, the encoding of char, varchar and text. It replaces letters that it lacks by their
// base letter, and other characters by '?'.
std::string utf8FromCodePage1252(std::string_view wire);
void appendCodePage1252(std::string& wire, std::string_view utf8);
unsigned char codePage1252(char32_t character);

}  // namespace tsql
