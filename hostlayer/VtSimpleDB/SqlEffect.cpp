#include "SqlEffect.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace hostlayer {
namespace {

// Words that begin statements of kSession, or mark such an effect within a query.
constexpr std::string_view kSessionWords[] = {"DECLARE", "INSERT", "INTO", "SET"};

// First words of batches that may share the database; another one may be a procedure's name. Sorted.
constexpr std::string_view kSharingWords[] = {
    "ALTER",     "BEGIN",  "CREATE", "DECLARE",  "DELETE", "DROP", "IF",      "INSERT", "MERGE", "PRINT",
    "RAISERROR", "SELECT", "SET",    "TRUNCATE", "UPDATE", "USE",  "WAITFOR", "WHILE",  "WITH"};
static_assert(std::is_sorted(std::begin(kSharingWords), std::end(kSharingWords)));

// Words of batches that may need the database alone or run other code, and of the query tool's commands.
// Sorted.
constexpr std::string_view kExclusiveWords[] = {"!",          ":",           "BACKUP",  "DATABASE",
                                                "DBCC",       "EXEC",        "EXECUTE", "KILL",
                                                "OPENROWSET", "RECONFIGURE", "RESTORE", "SHUTDOWN"};
static_assert(std::is_sorted(std::begin(kExclusiveWords), std::end(kExclusiveWords)));

// The reserved words of T-SQL that begin or belong to any other statement. Sorted.
constexpr std::string_view kServerWords[] = {
    "@@OPTIONS",  "ADD",         "ALTER",         "AUTHORIZATION",  "BACKUP",    "BEGIN",
    "BREAK",      "BROWSE",      "BULK",          "CHECKPOINT",     "CLOSE",     "COMMIT",
    "COMPUTE",    "CONTINUE",    "CREATE",        "CURSOR",         "DATABASE",  "DBCC",
    "DEALLOCATE", "DENY",        "DISK",          "DROP",           "DUMP",      "ENABLE",
    "EXEC",       "EXECUTE",     "EXIT",          "EXTERNAL",       "FETCH",     "GOTO",
    "GRANT",      "IF",          "KILL",          "LINENO",         "LOAD",      "MERGE",
    "MOVE",       "OPEN",        "OPENCONNECTOR", "OPENDATASOURCE", "OPENQUERY", "OPENROWSET",
    "OPENXML",    "PRINT",       "PROC",          "PROCEDURE",      "RAISERROR", "READTEXT",
    "RECEIVE",    "RECONFIGURE", "RESTORE",       "RETURN",         "REVERT",    "REVOKE",
    "ROLLBACK",   "SAVE",        "SEND",          "SETUSER",        "SHUTDOWN",  "THROW",
    "TRAN",       "TRANSACTION", "TRUNCATE",      "UPDATETEXT",     "USE",       "WAITFOR",
    "WHILE",      "WRITETEXT"};
static_assert(std::is_sorted(std::begin(kServerWords), std::end(kServerWords)));

template <std::size_t kCount>
bool contains(const std::string_view (&words)[kCount], std::string_view word) {
    return std::binary_search(std::begin(words), std::end(words), word);
}

bool isSpace(char c) {
    return std::string_view(" \t\r\n\f\v").find(c) != std::string_view::npos;
}

// Of ASCII, whatever the host program's locale.
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isWordCharacter(char c) {
    const char upper = upperCase(c);
    return isDigit(c) || (upper >= 'A' && upper <= 'Z') || c == '_' || c == '@' || c == '$' || c == '#';
}

// Splits a batch into words, in upper case, and single characters. Strings and quoted names yield one
// character, their opening quote; comments and spaces yield nothing.
class Words {
  public:
    explicit Words(std::string_view sql) : m_rest(sql) {}

    // Returns an empty string at the end of the batch.
    std::string next();

    // False if the batch has an unclosed string or a notation that the server may split differently.
    bool isCertain() const { return m_isCertain; }

  private:
    // Removes everything up to and including `end`, and returns what was before it.
    std::string_view skipPast(std::string_view end) {
        const std::size_t at = m_rest.find(end);
        const std::string_view skipped = m_rest.substr(0, at);
        if (at == std::string_view::npos) m_isCertain = false;
        m_rest.remove_prefix(std::min(m_rest.size(), skipped.size() + end.size()));
        return skipped;
    }
    void skipSpaceAndComments();

    std::string_view m_rest;
    bool m_isCertain = true;
};

void Words::skipSpaceAndComments() {
    for (;;) {
        while (!m_rest.empty() && isSpace(m_rest.front())) m_rest.remove_prefix(1);
        if (m_rest.starts_with("--")) {
            const std::string_view comment = m_rest.substr(0, m_rest.find('\n'));
            if (comment.substr(0, comment.size() - 1).find('\r') != std::string_view::npos)
                m_isCertain = false;
            m_rest.remove_prefix(comment.size());
        } else if (m_rest.starts_with("/*")) {
            m_rest.remove_prefix(2);
            if (skipPast("*/").find("/*") != std::string_view::npos) m_isCertain = false;  // comments nest
        } else {
            return;
        }
    }
}

std::string Words::next() {
    skipSpaceAndComments();
    if (m_rest.empty()) return "";
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), isWordCharacter);
    std::string word(m_rest.begin(), end == m_rest.begin() ? end + 1 : end);
    m_rest.remove_prefix(word.size());
    const bool isJoined = isDigit(word.front()) &&  // "1FROM" is two words
                          word.find_first_not_of("0123456789") != std::string::npos;
    const bool isDoubledBracket = word == "]";
    const bool mayBeSpace = static_cast<unsigned char>(word.front()) >= 0x80;
    if (isJoined || isDoubledBracket || mayBeSpace) m_isCertain = false;
    // A doubled quote begins another string, which changes nothing here.
    if (word == "'" || word == "\"") skipPast(word);
    if (word == "[") skipPast("]");
    std::transform(word.begin(), word.end(), word.begin(), upperCase);
    return word;
}

// Effect of one word that is not the batch's first. `isPart`: SET of an UPDATE, INTO of an INSERT.
SqlEffect effectOfWord(std::string_view word, bool isPart) {
    if (contains(kServerWords, word)) return SqlEffect::kServer;
    const bool isChange = word == "UPDATE" || word == "DELETE";  // a second statement
    const bool isSession = (contains(kSessionWords, word) && !isPart) || word.front() == '#';
    return isChange || isSession ? SqlEffect::kSession : SqlEffect::kNone;
}

SqlEffect effectOfFirstWord(std::string_view word) {
    if (word == "SELECT" || word == "UPDATE" || word == "DELETE") return SqlEffect::kNone;
    if (word == "INSERT") return SqlEffect::kIdentity;
    return word.empty() || contains(kSessionWords, word) ? SqlEffect::kSession : SqlEffect::kServer;
}

// Skips SET NOCOUNT ON or OFF at the beginning. A batch that sets something else is left as it is.
void skipNoCount(Words& words) {
    Words ahead = words;
    if (ahead.next() != "SET" || ahead.next() != "NOCOUNT") return;
    const std::string value = ahead.next();
    if (value == "ON" || value == "OFF") words = ahead;
}

}  // namespace

SqlEffect effectOf(std::string_view sql) {
    Words words(sql);
    skipNoCount(words);
    const std::string first = words.next();
    SqlEffect effect = effectOfFirstWord(first);
    std::string_view expected = first == "UPDATE" ? "SET" : first == "INSERT" ? "INTO" : "";
    bool hasEnded = false;  // after a semicolon
    for (std::string word = words.next(); !word.empty(); word = words.next()) {
        if (hasEnded) effect = SqlEffect::kServer;
        hasEnded = word == ";";
        effect = std::max(effect, effectOfWord(word, word == expected));
        if (word == expected) expected = "";
    }
    return words.isCertain() ? effect : SqlEffect::kServer;
}

bool mayReadIdentity(std::string_view sql) {
    Words words(sql);
    for (std::string word = words.next(); !word.empty(); word = words.next())
        if (word.find("IDENTITY") != std::string::npos) return true;
    return !words.isCertain();
}

bool mayNeedDatabaseAlone(std::string_view script) {
    if (script.find("$(") != std::string_view::npos) return true;  // a variable, also in a string
    Words words(script);
    bool isFirst = true;
    for (std::string word = words.next(); !word.empty(); word = words.next()) {
        if (contains(kExclusiveWords, word)) return true;
        const bool endsBatch = word == "GO";
        if (isFirst && !endsBatch && !contains(kSharingWords, word)) return true;
        isFirst = endsBatch;
    }
    return !words.isCertain();
}

}  // namespace hostlayer
