#include "Lexer.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>
#include <unordered_set>

#include "Messages.h"

namespace tsql {
namespace {

constexpr std::size_t kLongestName = 128;

// The words that cannot name anything unless they are quoted.
constexpr std::string_view kReserved =
    R"(ADD ALL ALTER AND ANY AS ASC AUTHORIZATION BACKUP BEGIN BETWEEN BREAK BROWSE BULK BY CASCADE CASE CHECK
CHECKPOINT CLOSE CLUSTERED COALESCE COLLATE COLUMN COMMIT COMPUTE CONSTRAINT CONTAINS CONTINUE CONVERT
CREATE CROSS CURRENT CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP CURRENT_USER CURSOR DATABASE DBCC
DEALLOCATE DECLARE DEFAULT DELETE DENY DESC DISTINCT DISTRIBUTED DOUBLE DROP ELSE END ERRLVL ESCAPE EXCEPT
EXEC EXECUTE EXISTS EXIT EXTERNAL FETCH FILE FILLFACTOR FOR FOREIGN FREETEXT FROM FULL FUNCTION GOTO GRANT
GROUP HAVING HOLDLOCK IDENTITY IDENTITY_INSERT IDENTITYCOL IF IN INDEX INNER INSERT INTERSECT INTO IS JOIN
KEY KILL LEFT LIKE LINENO MERGE NATIONAL NOCHECK NONCLUSTERED NOT NULL NULLIF OF OFF OFFSETS ON OPEN OPTION
OR ORDER OUTER OVER PERCENT PIVOT PLAN PRIMARY PRINT PROC PROCEDURE PUBLIC RAISERROR READ READTEXT
RECONFIGURE REFERENCES REPLICATION RESTORE RESTRICT RETURN REVERT REVOKE RIGHT ROLLBACK ROWCOUNT ROWGUIDCOL
RULE SAVE SCHEMA SELECT SESSION_USER SET SETUSER SHUTDOWN SOME STATISTICS SYSTEM_USER TABLE TABLESAMPLE
TEXTSIZE THEN TO TOP TRAN TRANSACTION TRIGGER TRUNCATE TRY_CONVERT UNION UNIQUE UNPIVOT UPDATE UPDATETEXT
USE USER VALUES VARYING VIEW WAITFOR WHEN WHERE WHILE WITH WRITETEXT)";

// Longest first.
constexpr std::string_view kSymbols[] = {
    "<=", ">=", "<>", "!=", "!<", "!>", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "::", "<", ">",
    "=",  "+",  "-",  "*",  "/",  "%",  "&",  "|",  "^",  "~",  "(",  ")",  ",",  ".",  ";",  ":",
};

bool isNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_' || c == '#' || (c & 0x80);
}
bool isNamePart(char c) {
    return isNameStart(c) || std::isdigit(static_cast<unsigned char>(c)) || c == '@' || c == '$';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

class Lexer {
  public:
    explicit Lexer(std::string_view text) : m_text(text) {}

    std::vector<Token> run() {
        std::vector<Token> tokens;
        for (skipBlanks(); m_at < m_text.size(); skipBlanks()) tokens.push_back(next());
        tokens.push_back({TokenKind::End, false, m_line, {}});
        return tokens;
    }

  private:
    char peek(std::size_t ahead = 0) const {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : '\0';
    }
    bool startsWith(std::string_view what) const { return m_text.substr(m_at).starts_with(what); }

    void advance(std::size_t count) {
        for (; count > 0; --count) m_line += m_text[m_at++] == '\n';
    }

    void skipBlanks() {
        while (m_at < m_text.size()) {
            if (std::isspace(static_cast<unsigned char>(peek())) || peek() == '\0')
                advance(1);
            else if (startsWith("\xC2\xA0"))
                advance(2);
            else if (startsWith("\xEF\xBB\xBF"))
                advance(3);
            else if (startsWith("--"))
                advance(std::min(m_text.find('\n', m_at), m_text.size()) - m_at);
            else if (startsWith("/*"))
                skipComment();
            else
                return;
        }
    }

    // Comments nest.
    void skipComment() {
        const int begin = m_line;
        int depth = 0;
        do {
            if (m_at >= m_text.size()) throw SyntaxError(sqlError(113), begin);
            const bool opens = startsWith("/*");
            const bool closes = !opens && startsWith("*/");
            depth += opens - closes;
            advance(opens || closes ? 2 : 1);
        } while (depth > 0);
    }

    Token next() {
        const char c = peek();
        if ((c == 'N' || c == 'n') && peek(1) == '\'') return quoted(TokenKind::NationalText, 1, '\'');
        if (c == '\'') return quoted(TokenKind::Text, 0, '\'');
        if (c == '"') return name(quoted(TokenKind::DoubleQuoted, 0, '"'));
        if (c == '[') return name(quoted(TokenKind::Bracketed, 0, ']'));
        if (c == '@') return variable();
        if (c == '0' && (peek(1) == 'x' || peek(1) == 'X')) return binary();
        if (isDigit(c) || (c == '.' && isDigit(peek(1)))) return number();
        if (isNameStart(c)) return word();
        return symbol();
    }

    Token take(TokenKind kind, std::size_t length) {
        const Token token{kind, false, m_line, m_text.substr(m_at, length)};
        advance(length);
        return token;
    }

    Token quoted(TokenKind kind, std::size_t prefix, char close) {
        std::size_t end = m_at + prefix + 1;
        for (;; end += 2) {
            end = m_text.find(close, end);
            if (end == std::string_view::npos)
                throw SyntaxError(sqlError(105, {m_text.substr(m_at + prefix + 1, kLongestName)}), m_line);
            if (end + 1 >= m_text.size() || m_text[end + 1] != close) break;
        }
        return take(kind, end + 1 - m_at);
    }

    Token variable() {
        const bool global = peek(1) == '@';
        std::size_t length = global ? 2 : 1;
        while (isNamePart(peek(length))) ++length;
        return name(take(global ? TokenKind::Global : TokenKind::Variable, length));
    }

    Token binary() {
        std::size_t length = 2;
        while (std::isxdigit(static_cast<unsigned char>(peek(length)))) ++length;
        return take(TokenKind::Binary, length);
    }

    Token number() {
        std::size_t length = 0;
        while (isDigit(peek(length))) ++length;
        if (peek(length) == '.') ++length;
        while (isDigit(peek(length))) ++length;
        if (peek(length) == 'e' || peek(length) == 'E') {
            ++length;
            if (peek(length) == '+' || peek(length) == '-') ++length;
            while (isDigit(peek(length))) ++length;
        }
        return take(TokenKind::Number, length);
    }

    Token word() {
        std::size_t length = 1;
        while (isNamePart(peek(length))) ++length;
        Token token = name(take(TokenKind::Word, length));
        token.reserved = isReserved(token.raw);
        return token;
    }

    Token symbol() {
        for (const auto text : kSymbols)
            if (startsWith(text)) return take(TokenKind::Symbol, text.size());
        throw SyntaxError(102, std::string("Incorrect syntax near '") + peek() + "'.", m_line);
    }

    static Token name(const Token& token) {
        if (token.raw.size() > kLongestName + 2)
            throw SyntaxError(103,
                              "The identifier that starts with '" +
                                  std::string(token.raw.substr(0, kLongestName)) +
                                  "' is too long. Maximum length is 128.",
                              token.line);
        return token;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    int m_line = 1;
};

}  // namespace

std::vector<Token> tokenize(std::string_view text) {
    return Lexer(text).run();
}

std::string unquoted(const Token& token) {
    const bool national = token.kind == TokenKind::NationalText;
    const bool isQuoted = national || token.kind == TokenKind::Text || token.kind == TokenKind::Bracketed ||
                          token.kind == TokenKind::DoubleQuoted;
    if (!isQuoted) return std::string(token.raw);
    const std::string_view raw = token.raw.substr(national ? 2 : 1, token.raw.size() - (national ? 3 : 2));
    const char close = token.raw.back();
    std::string text;
    text.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
        text += raw[i];
        if (raw[i] == close) ++i;
    }
    return text;
}

bool sameWord(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char a, unsigned char b) { return std::toupper(a) == std::toupper(b); });
}

bool isReserved(std::string_view word) {
    static const auto words = [] {
        std::istringstream text{std::string(kReserved)};
        return std::unordered_set<std::string>(std::istream_iterator<std::string>(text), {});
    }();
    std::string upper(word);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return words.contains(upper);
}

}  // namespace tsql
