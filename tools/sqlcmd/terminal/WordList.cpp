#include "terminal/WordList.h"

#include <algorithm>
#include <iterator>

#include "text/Text.h"

namespace sqlcmd {
namespace {

constexpr std::size_t kShortestName = 3;

constexpr const char* kKeywords[] = {
    "ALTER",      "BACKUP",   "BEGIN",      "BETWEEN",    "BREAK",    "CASE",        "CAST",      "CATCH",
    "COLUMN",     "COMMIT",   "CONVERT",    "CONSTRAINT", "CREATE",   "CROSS",       "DATABASE",  "DATETIME",
    "DECIMAL",    "DECLARE",  "DEFAULT",    "DELETE",     "DISTINCT", "DROP",        "ELSE",      "EXEC",
    "EXECUTE",    "EXISTS",   "FOREIGN",    "FROM",       "FUNCTION", "GROUP",       "HAVING",    "IDENTITY",
    "INDEX",      "INNER",    "INSERT",     "INTO",       "JOIN",     "LEFT",        "LIKE",      "NOCOUNT",
    "NVARCHAR",   "ORDER",    "OUTER",      "PRIMARY",    "PRINT",    "PROCEDURE",   "RAISERROR", "RESTORE",
    "RETURN",     "RIGHT",    "ROLLBACK",   "SELECT",     "TABLE",    "TRANSACTION", "TRUNCATE",  "UNION",
    "UNIQUE",     "UPDATE",   "VALUES",     "VARCHAR",    "VIEW",     "WAITFOR",     "WHERE",     "WHILE",
    "WITH",       ":connect", ":ed",        ":error",     ":exit",    ":help",       ":list",     ":listvar",
    ":on error",  ":out",     ":perftrace", ":quit",      ":r",       ":reset",      ":setvar",   ":xml",
    ":serverlist"};

bool isKeyword(const std::string& word) {
    return std::find(std::begin(kKeywords), std::end(kKeywords), word) != std::end(kKeywords);
}

}  // namespace

bool WordList::IgnoringCase::operator()(const std::string& a, const std::string& b) const {
    return lowerCase(a) < lowerCase(b);
}

WordList::WordList() : m_words(std::begin(kKeywords), std::end(kKeywords)) {}

void WordList::addWordsOf(std::string_view line) {
    while (!line.empty()) {
        const auto end = std::find_if_not(line.begin(), line.end(), isCompletable);
        const auto length = static_cast<std::size_t>(end - line.begin());
        if (length >= kShortestName && !isDigit(line.front())) m_words.emplace(line.substr(0, length));
        line.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

std::vector<std::string> WordList::completionsOf(std::string_view prefix) const {
    const bool isLowerCase = lowerCase(prefix) == prefix;
    std::vector<std::string> result;
    for (const std::string& word : m_words)
        if (equalsIgnoringCase(std::string_view(word).substr(0, prefix.size()), prefix))
            result.push_back(isLowerCase && isKeyword(word) ? lowerCase(word) : word);
    return result;
}

std::string commonPrefix(const std::vector<std::string>& words) {
    std::string prefix = words.empty() ? std::string() : words.front();
    for (const std::string& word : words) {
        std::size_t length = 0;
        while (length < std::min(prefix.size(), word.size()) &&
               lowerCase(prefix[length]) == lowerCase(word[length]))
            ++length;
        prefix.resize(length);
    }
    return prefix;
}

bool isCompletable(char c) {
    return isWordCharacter(c) || c == '@' || c == '#' || c == '$' || c == ':';
}

}  // namespace sqlcmd
