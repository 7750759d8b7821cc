// UTF-8 text the way T-SQL sees it: counted in characters, compared without regard to case.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

constexpr char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr bool sameWord(std::string_view left, std::string_view right) {  // ASCII case aside
    return std::ranges::equal(left, right, {}, upperAscii, upperAscii);
}

// What names stand for, whatever their case.
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
std::string_view trimRight(std::string_view text);  // blanks only, as T-SQL's RTRIM
std::string_view trimLeft(std::string_view text);
std::string_view trimmed(std::string_view text);

// The items of "item; item"; line breaks in it are blanks.
std::vector<std::string> listItems(std::string_view text);

// What T-SQL counts: the units of UTF-16. A character above U+FFFF is two of them, which are never parted.
// A byte that is no UTF-8 counts as a character of its own (U+FFFD when it is looked at).
std::size_t characterCount(std::string_view text);
// The bytes of the first `count` units, as far as they are whole characters.
std::size_t byteOffset(std::string_view text, std::size_t count);
// Units [first, first + count), without the halves of characters.
std::string_view characters(std::string_view text, std::size_t first, std::size_t count);
// Takes the first character off the text, which is not empty.
char32_t nextCharacter(std::string_view& text);
void appendCharacter(std::string& text, char32_t character);

std::string toUpper(std::string_view text);
std::string toLower(std::string_view text);
char32_t foldCase(char32_t character);

// Below 0, 0, above 0; case aside, and the shorter text counts as padded with blanks.
int compareText(std::string_view left, std::string_view right);
inline bool sameText(std::string_view left, std::string_view right) {
    return compareText(left, right) == 0;
}
// Byte offset of `part` in `text`, case aside, at or behind `from`; npos when absent.
std::size_t findText(std::string_view text, std::string_view part, std::size_t from = 0);
// LIKE: %, _, [a-f], [^x]; `escape` is 0 for none. Blanks at the end of the text count or not.
enum class EndBlanks { Ignored, Counted };
bool matchesLike(std::string_view text, std::string_view pattern, EndBlanks blanks, char32_t escape = 0);

}  // namespace tsql
