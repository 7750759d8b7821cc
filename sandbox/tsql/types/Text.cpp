#include "types/Text.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/locale/utf.hpp>
#include <clocale>
#include <cwctype>

#include "types/Work.h"

namespace tsql {
namespace {

namespace utf = boost::locale::utf;

constexpr std::size_t kFoldTable = 0x10000;  // pairs above the basic plane are rare and not cached

// Maps case with the C library's Unicode tables, independently of the process's locale.
using CaseMap = wint_t (*)(wint_t, locale_t);
char32_t mapped(char32_t c, CaseMap map) {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale ? static_cast<char32_t>(map(static_cast<wint_t>(c), locale)) : c;
}

std::string mapped(std::string_view text, CaseMap map) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) appendCharacter(result, mapped(nextCharacter(text), map));
    return result;
}

// Length in bytes of the first character; 1 for a byte that is not valid UTF-8.
std::size_t sequenceLength(std::string_view text) {
    std::string_view rest = text;
    nextCharacter(rest);
    return text.size() - rest.size();
}

struct Place {
    std::size_t bytes = 0, units = 0;
};

// Returns the end of the longest prefix of whole characters that has at most `most` UTF-16 units.
Place walk(std::string_view text, std::size_t most) {
    constexpr std::size_t kPair = 4;  // UTF-8 length of a character of two units
    Place place;
    while (place.units < most && place.bytes < text.size()) {
        const std::size_t length = sequenceLength(text.substr(place.bytes));
        const std::size_t units = length == kPair ? 2 : 1;
        if (units > most - place.units) break;
        place.bytes += length;
        place.units += units;
    }
    return place;
}

// Base letters of U+00E0 to U+017F in lower case; a blank where there is none.
constexpr std::string_view kBaseLetters =
    "aaaaaa ceeeeiiiidnooooo ouuuuy yaaaaaaccccccccddddeeeeeeeeeegggg"
    "gggghhhhiiiiiiiiii  jjkk llllllllllnnnnnnn  oooooo  rrrrrrssssss"
    "ssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
constexpr char32_t kFirstAccented = 0xE0, kFirstUpperAccented = 0xC0;

// Sort weight of a folded character. Punctuation sorts before digits and digits before letters; an accented
// letter sorts next to its base letter.
char32_t sortWeight(char32_t c) {
    c = baseLetter(c);
    const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z');
    return alphanumeric ? c + 0x80 : c < 0x80 ? c : c + 0x100;
}

// Takes a character of a pattern, which `escape` makes a plain one.
char32_t takeCharacter(std::string_view& pattern, char32_t escape) {
    const char32_t c = nextCharacter(pattern);
    return foldCase(escape != 0 && c == escape && !pattern.empty() ? nextCharacter(pattern) : c);
}

// Matches `c` against a [set] whose opening bracket is consumed, and consumes the rest of the set. A set that
// is never closed matches nothing.
bool takeSet(std::string_view& pattern, char32_t c, char32_t escape) {
    const auto place = [](char32_t each) { return std::pair(sortWeight(each), each); };
    const bool negated = pattern.starts_with('^');
    if (negated) pattern.remove_prefix(1);
    bool found = false;
    while (!pattern.empty() && pattern[0] != ']') {
        const char32_t low = takeCharacter(pattern, escape);
        const bool isRange = pattern.size() > 1 && pattern[0] == '-' && pattern[1] != ']';
        if (isRange) pattern.remove_prefix(1);
        const char32_t high = isRange ? takeCharacter(pattern, escape) : low;
        found = found || c == low || (place(c) >= place(low) && place(c) <= place(high));
    }
    if (pattern.empty()) return false;
    pattern.remove_prefix(1);
    return found != negated;
}

// Consumes one element of the pattern (not %). Returns whether it matches `c` (folded).
bool takeElement(std::string_view& pattern, char32_t c, char32_t escape) {
    const char32_t p = nextCharacter(pattern);
    if (escape != 0 && p == escape && !pattern.empty()) return foldCase(nextCharacter(pattern)) == c;
    if (p == U'_') return true;
    if (p == U'[') return takeSet(pattern, c, escape);
    return foldCase(p) == c;
}

}  // namespace

std::string lowerAscii(std::string_view text) {
    return boost::to_lower_copy(std::string(text), std::locale::classic());
}

std::string_view trimRight(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string_view trimLeft(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

bool hasWord(std::string_view words, const std::string& word) {
    return (" " + std::string(words) + " ").find(" " + word + " ") != std::string::npos;
}

std::vector<std::string> listItems(std::string_view text) {
    std::string line(text);
    std::ranges::replace(line, '\n', ' ');
    std::vector<std::string> items;
    boost::split(items, line, [](char c) { return c == ';'; });
    for (auto& item : items) item = trimmed(item);
    return items;
}

std::size_t characterCount(std::string_view text) {
    return walk(text, std::string_view::npos).units;
}

std::size_t byteOffset(std::string_view text, std::size_t count) {
    return walk(text, count).bytes;
}

std::string_view characters(std::string_view text, std::size_t first, std::size_t count) {
    const Place start = walk(text, first);
    text.remove_prefix(start.bytes);
    if (start.units == first) return text.substr(0, byteOffset(text, count));
    if (text.empty() || count == 0) return {};
    text.remove_prefix(sequenceLength(text));  // `first` points into the middle of a surrogate pair
    return text.substr(0, byteOffset(text, count - 1));
}

char32_t nextCharacter(std::string_view& text) {
    const auto* end = text.begin();
    const char32_t c = utf::utf_traits<char>::decode(end, text.end());
    const bool isValid = utf::is_valid_codepoint(c);
    text.remove_prefix(isValid ? static_cast<std::size_t>(end - text.begin()) : 1);
    return isValid ? c : kReplacement;
}

void appendCharacter(std::string& text, char32_t c) {
    utf::utf_traits<char>::encode(c, std::back_inserter(text));
}

std::string toUpper(std::string_view text) {
    return mapped(text, towupper_l);
}
std::string toLower(std::string_view text) {
    const bool isAscii = std::ranges::all_of(text, [](char c) { return (c & 0x80) == 0; });
    return isAscii ? lowerAscii(text) : mapped(text, towlower_l);
}

char32_t foldCase(char32_t c) {
    const auto fold = [](char32_t each) { return mapped(mapped(each, towupper_l), towlower_l); };
    static const auto table = [fold] {
        std::vector<char32_t> folds(kFoldTable);
        for (char32_t i = 0; i < kFoldTable; ++i) folds[i] = fold(i);
        return folds;
    }();
    return c < kFoldTable ? table[c] : fold(c);
}

char32_t baseLetter(char32_t c) {
    if (c < kFirstUpperAccented) return c;
    const char32_t folded = foldCase(c), place = folded - kFirstAccented;
    if (place >= kBaseLetters.size() || kBaseLetters[place] == ' ') return c;
    const char letter = kBaseLetters[place];
    return static_cast<unsigned char>(folded == c ? letter : upperAscii(letter));
}

int compareText(std::string_view left, std::string_view right) {
    const auto next = [](auto& text) { return foldCase(text.empty() ? U' ' : nextCharacter(text)); };
    int accents = 0;  // first difference between letters with the same base letter
    while (!left.empty() || !right.empty()) {
        const char32_t a = next(left), b = next(right);
        if (a == b) continue;
        const char32_t heavy = sortWeight(a), light = sortWeight(b);
        if (heavy != light) return heavy < light ? -1 : 1;
        if (accents == 0) accents = a < b ? -1 : 1;
    }
    return accents;
}

std::size_t findText(std::string_view text, std::string_view part, std::size_t from) {
    for (std::size_t at = from; at < text.size(); at += sequenceLength(text.substr(at))) {
        std::string_view here = text.substr(at), wanted = part;
        while (!wanted.empty() && !here.empty() &&
               foldCase(nextCharacter(here)) == foldCase(nextCharacter(wanted)))
            if (wanted.empty()) return at;
        spendWork(1 + part.size() - wanted.size());
    }
    return std::string_view::npos;
}

bool matchesLike(std::string_view text, std::string_view pattern, EndBlanks blanks, char32_t escape) {
    // Position of the last %. On a mismatch it matches one more character.
    std::string_view afterPercent, textAtPercent;
    bool percent = false;
    while (!text.empty() || !pattern.empty()) {
        if (!pattern.empty() && pattern[0] == '%' && escape != U'%') {
            pattern.remove_prefix(1);
            afterPercent = pattern, textAtPercent = text, percent = true;
            continue;
        }
        if (!text.empty() && !pattern.empty()) {
            std::string_view restOfText = text, restOfPattern = pattern;
            const bool matches = takeElement(restOfPattern, foldCase(nextCharacter(restOfText)), escape);
            spendWork(pattern.size() - restOfPattern.size());
            if (matches) {
                text = restOfText, pattern = restOfPattern;
                continue;
            }
        }
        if (pattern.empty()) spendWork(text.size());  // its trailing blanks are looked at
        if (pattern.empty() && blanks == EndBlanks::Ignored && trimRight(text).empty()) return true;
        if (!percent || textAtPercent.empty()) return false;
        nextCharacter(textAtPercent);
        text = textAtPercent, pattern = afterPercent;
    }
    return true;
}

}  // namespace tsql
