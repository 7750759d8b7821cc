#include "syntax/Lexer.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

#include "types/Text.h"

namespace tsql {
namespace {

// Reserved words: not identifiers unless they are quoted.
constexpr std::string_view kReserved =
    R"(ADD ALL ALTER AND ANY AS ASC AUTHORIZATION BACKUP BEGIN BETWEEN BREAK BROWSE BULK BY CASCADE CASE CHECK
CHECKPOINT CLOSE CLUSTERED COALESCE COLLATE COLUMN COMMIT COMPUTE CONSTRAINT CONTAINS CONTINUE CONVERT CREATE CROSS
CURRENT CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP CURRENT_USER CURSOR DATABASE DBCC DEALLOCATE DECLARE DEFAULT DELETE
DENY DESC DISTINCT DISTRIBUTED DOUBLE DROP ELSE END ERRLVL ESCAPE EXCEPT EXEC EXECUTE EXISTS EXIT EXTERNAL FETCH FILE
FILLFACTOR FOR FOREIGN FREETEXT FROM FULL FUNCTION GOTO GRANT GROUP HAVING HOLDLOCK IDENTITY IDENTITY_INSERT IDENTITYCOL
IF IN INDEX INNER INSERT INTERSECT INTO IS JOIN KEY KILL LEFT LIKE LINENO MERGE NATIONAL NOCHECK NONCLUSTERED NOT NULL
NULLIF OF OFF OFFSETS ON OPEN OPTION OR ORDER OUTER OVER PERCENT PIVOT PLAN PRIMARY PRINT PROC PROCEDURE PUBLIC
RAISERROR READ READTEXT RECONFIGURE REFERENCES REPLICATION RESTORE RESTRICT RETURN REVERT REVOKE RIGHT ROLLBACK ROWCOUNT
ROWGUIDCOL RULE SAVE SCHEMA SELECT SESSION_USER SET SETUSER SHUTDOWN SOME STATISTICS SYSTEM_USER TABLE TABLESAMPLE
TEXTSIZE THEN TO TOP TRAN TRANSACTION TRIGGER TRUNCATE TRY_CONVERT UNION UNIQUE UNPIVOT UPDATE UPDATETEXT USE USER
VALUES VARYING VIEW WAITFOR WHEN WHERE WHILE WITH WRITETEXT)";

constexpr std::string_view kPairs = "<= >= <> != !< !> += -= *= /= %= &= |= ^= ::";
constexpr std::string_view kSymbols = "<>=!+-*/%&|^~(),.;:";

constexpr auto isDigit = [](char c) { return c >= '0' && c <= '9'; };

bool isNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_' || c == '#' || (c & 0x80);
}
bool isNamePart(char c) {
    return isNameStart(c) || isDigit(c) || c == '@' || c == '$';
}
bool isReserved(std::string_view word) {
    static std::istringstream text{std::string(kReserved)};
    static const WordSet words(std::istream_iterator<std::string>(text), {});
    return words.contains(word);
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
            if (const char c = peek(); c > ' ' && c < '\x7F' && c != '-' && c != '/') return;
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
            if (m_at >= m_text.size()) throw SyntaxError(sqlError(kMissingEndOfComment), begin);
            const bool opens = startsWith("/*"), closes = !opens && startsWith("*/");
            depth += opens - closes;
            advance(opens || closes ? 2 : 1);
        } while (depth > 0);
    }

    Token next() {
        const char c = peek();
        if ((c == 'N' || c == 'n') && peek(1) == '\'') return quoted(TokenKind::NationalText, 1, '\'');
        if (c == '\'') return quoted(TokenKind::Text, 0, '\'');
        if (c == '"') return quoted(TokenKind::DoubleQuoted, 0, '"');
        if (c == '[') return quoted(TokenKind::Bracketed, 0, ']');
        if (c == '@' && peek(1) == '@') return takeToken(TokenKind::Global, past(isNamePart, 2));
        if (c == '@') return takeToken(TokenKind::Variable, past(isNamePart, 1));
        if (c == '0' && (peek(1) == 'x' || peek(1) == 'X'))
            return takeToken(TokenKind::Binary, past([](char x) { return isxdigit(x & 0xFF) != 0; }, 2));
        if (isDigit(c) || (c == '.' && isDigit(peek(1)))) return number(0);
        const std::size_t sign = peek(1) == '-';  // $-5
        if (c == '$' && (isDigit(peek(1 + sign)) || peek(1 + sign) == '.')) return number(1 + sign);
        if (isNameStart(c)) return takeToken(TokenKind::Word, past(isNamePart, 1));
        const std::string_view two = m_text.substr(m_at, 2);
        const bool isPair = two.size() == 2 && two[1] != ' ' && kPairs.find(two) != std::string_view::npos;
        if (kSymbols.find(c) != std::string_view::npos) return takeToken(TokenKind::Symbol, isPair ? 2 : 1);
        if (c == '{') throw SyntaxError(unsupported("an ODBC escape sequence such as {fn ...}"), m_line);
        const std::size_t end = past(isNamePart, 1);
        if (sameWord(m_text.substr(m_at, end), "$action")) return takeToken(TokenKind::Word, end);
        if (c == '$') throw SyntaxError(unsupported(m_text.substr(m_at, end)), m_line);
        throw SyntaxError(sqlError(kSyntaxErrorNear, {{&c, 1}}), m_line);
    }

    // End of the run of characters that satisfy `fits` from `from` on; both count from the token's start.
    std::size_t past(bool (*fits)(char), std::size_t from) const {
        while (fits(peek(from))) ++from;
        return from;
    }

    Token takeToken(TokenKind kind, std::size_t length) {
        const std::string_view raw = m_text.substr(m_at, length);
        const Token token{kind, kind == TokenKind::Word && isReserved(raw), m_line, raw};
        advance(length);
        return token;
    }

    Token quoted(TokenKind kind, std::size_t prefix, char close) {
        const std::size_t begin = m_at + prefix + 1;
        std::size_t end = m_text.find(close, begin);
        while (end < m_text.size() - 1 && m_text[end + 1] == close) end = m_text.find(close, end + 2);
        if (end == std::string_view::npos)
            throw SyntaxError(sqlError(kUnclosedQuotationMark, {m_text.substr(begin, kLongestName)}), m_line);
        return takeToken(kind, end + 1 - m_at);
    }

    Token number(std::size_t sign) {
        std::size_t length = past(isDigit, sign);
        if (peek(length) == '.') length = past(isDigit, length + 1);
        if (peek(length) == 'e' || peek(length) == 'E') {
            const char next = peek(length + 1);
            length = past(isDigit, length + (next == '+' || next == '-' ? 2 : 1));
        }
        return takeToken(TokenKind::Number, length);
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
    if (token.kind < TokenKind::Bracketed || token.kind > TokenKind::NationalText)
        return std::string(token.raw);
    const std::size_t prefix = token.kind == TokenKind::NationalText ? 2 : 1;
    std::string text;
    for (auto rest = token.raw.substr(prefix, token.raw.size() - prefix - 1); !rest.empty();) {
        const std::size_t continued = rest.starts_with("\\\r\n") ? 3 : rest.starts_with("\\\n") ? 2 : 0;
        if (continued == 0) text += rest.front();
        rest.remove_prefix(continued ? continued : rest.front() == token.raw.back() ? 2 : 1);
    }
    return text;
}

}  // namespace tsql
