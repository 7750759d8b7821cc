#include "syntax/Parser.h"

#include <boost/algorithm/string/erase.hpp>
#include <boost/lexical_cast/try_lexical_convert.hpp>

namespace tsql {
namespace {

constexpr int kDeepestNesting = 150;
constexpr int kLongestChain = 400;  // operators in a row; SQLite limits the depth of expressions to 1000

// Constructs that the parser does not know, by words at which it stops.
constexpr std::string_view kUnsupported =
    R"(ADD COUNTER SIGNATURE; ADD ROWGUIDCOL; ADD SENSITIVITY; ADD SIGNATURE; ADD SPARSE; AT TIME ZONE; BACKUP CERTIFICATE;
BACKUP LOG; BACKUP MASTER KEY; BACKUP SERVICE; BEGIN ATOMIC; BEGIN CONVERSATION; BEGIN DIALOG; BEGIN DISTRIBUTED; BULK
INSERT; CLOSE ALL; CLOSE MASTER KEY; CLOSE SYMMETRIC KEY; COLUMNSTORE; COLUMN_SET FOR; COMPUTE; CONTAINS; END
CONVERSATION; EXEC AS; EXECUTE AS; FILE =; FILEGROUP =; FOR ASYMMETRIC KEY; FOR BROWSE; FOR CERTIFICATE; FOR JSON; FOR
REPLICATION; FOR SYSTEM_TIME; FOR UPDATE; FREETEXT; FROM ASYMMETRIC KEY; FROM CERTIFICATE; GET CONVERSATION; GROUP BY
ALL; HASH (; HASH WITH; IDENTITYCOL; KILL; LINENO; MERGE TOP; MIRROR TO; . MODIFY; MOVE CONVERSATION; ON ALL SERVER;
ON DATABASE; OPEN MASTER KEY; OPEN SYMMETRIC KEY; PERIOD FOR SYSTEM_TIME; % % PHYSLOC % %; READTEXT; REBUILD PARTITION;
RECEIVE *; RECEIVE TOP; RECONFIGURE; REVERT; ROWGUIDCOL; SEND ON; SET CONTEXT_INFO; SETUSER; SHUTDOWN; TABLESAMPLE; TRIM
( BOTH; TRIM ( LEADING; TRIM ( TRAILING; UPDATETEXT; WAITFOR ( RECEIVE; WHERE CURRENT OF; WITH ( DELAYED_DURABILITY;
WITH ( PARTITIONS; WITH MARK; WITH RECOVERY; WITH RESULT SETS; . WRITE; WRITETEXT)";

ObjectName nameOf(std::vector<std::string> parts, int line) {
    parts.insert(parts.begin(), 2, std::string());
    return {parts[parts.size() - 3], parts[parts.size() - 2], parts.back(), line};
}

}  // namespace

std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers, FindType findType) {
    Parser parser(text, quotedIdentifiers, std::move(findType));
    return std::make_shared<const Batch>(Batch{parser.batch(), std::move(parser.m_locals)});
}

ExprPtr parseExpression(std::string_view text) {
    return Parser(text, /*quotedIdentifiers=*/true).expression();
}

Constraint parseConstraint(std::string_view text) {
    Parser parser(text, /*quotedIdentifiers=*/true);
    parser.acceptAny({"NOCHECK", "WITH NOCHECK"});
    return *parser.acceptConstraint(/*ofTable=*/false);
}

// Accepts reserved words as names. A string that is no name is returned as it is; no object has it as name.
ObjectName parseObjectName(std::string_view text) {
    std::vector<std::string> parts(1);
    for (const Token& token : tokenize(text))
        if (token.raw == ".")
            parts.emplace_back();
        else if (token.kind != TokenKind::End && !std::exchange(parts.back(), unquoted(token)).empty())
            return {{}, {}, std::string(text)};
    return nameOf(parts, 1);
}

SqlType parseType(std::string_view text) {
    return Parser(text, /*quotedIdentifiers=*/true).type(TypeUse::Declaration);
}

Parser::Parser(std::string_view text, bool quotedIdentifiers, FindType findType)
    : m_quotedIdentifiers(quotedIdentifiers), m_tokens(tokenize(text)), m_findType(std::move(findType)) {}

const Token& Parser::takeToken() {
    const Token& token = peek();
    if (token.kind != TokenKind::End) ++m_next;
    return token;
}

std::size_t Parser::matchWhole(std::string_view phrase, std::size_t ahead) const {
    for (std::size_t count = 0;; ++count) {
        const Token& token = peek(ahead + count);
        const std::size_t size = token.raw.size();
        const bool isWord = size == phrase.size() || (size < phrase.size() && phrase[size] == ' ');
        if (!isWord || !sameWord(token.raw, phrase.substr(0, size))) return 0;
        if (size == phrase.size()) return count + 1;
        phrase.remove_prefix(size + 1);
    }
}

bool Parser::accept(std::string_view phrase) {
    const std::size_t count = match(phrase, 0);
    m_next += count;
    return count > 0;
}

std::int64_t Parser::expectInteger() {
    const std::string sign = accept("-") ? "-" : "";
    std::int64_t number = 0;
    const bool fits = boost::conversion::try_lexical_convert(sign + std::string(peek().raw), number);
    if (peek().kind != TokenKind::Number || !fits) throwSyntaxError();
    takeToken();
    return number;
}

bool Parser::isString(const Token& token) const {
    return token.kind == TokenKind::Text || token.kind == TokenKind::NationalText ||
           (token.kind == TokenKind::DoubleQuoted && !m_quotedIdentifiers);
}

std::string Parser::expectString() {
    if (!isString(peek())) throwSyntaxError();
    return unquoted(takeToken());
}

// A word before a colon is a label.
bool Parser::atName(std::size_t ahead) const {
    const Token& token = peek(ahead);
    if (at(":", ahead + 1)) return false;
    return (token.kind == TokenKind::Word && !token.reserved) || token.kind == TokenKind::Bracketed ||
           (token.kind == TokenKind::DoubleQuoted && m_quotedIdentifiers);
}

std::string Parser::expectName() {
    if (!atName()) throwSyntaxError();
    return takeName();
}

std::string Parser::takeName() {
    std::string name = unquoted(peek());
    if (characterCount(name) > kLongestName)
        throwError(kNameTooLong, {"identifier", characters(name, 0, kLongestName)});
    takeToken();
    return name;
}

std::string Parser::expectVariable(int state) {
    if (!atVariable()) throwSyntaxError();
    const Token& name = takeToken();
    if (m_declaredCursors.contains(name.raw)) throwError(kMisplacedCursorVariable, {name.raw}, name.line);
    if (!m_declared.contains(name.raw)) throwError(kUndeclaredVariable, {name.raw}, name.line, state);
    return std::string(name.raw);
}

ObjectName Parser::objectName() {
    const int line = peek().line;
    std::vector<std::string> parts{at(".") ? std::string() : expectName()};  // ..name, .schema.name
    while (accept(".")) parts.push_back(at(".") ? std::string() : expectName());
    if (parts.size() > 3) throwUnsupported("a name with a linked server");
    return nameOf(parts, line);
}

SqlType Parser::type(TypeUse use, UserType* user) {
    const int line = peek().line;
    const std::string schema = atName() && at(".", 1) ? expectName() : "";  // [sys].[int], dbo.int
    accept(".");
    if (!at("NATIONAL") && !at("DOUBLE") && !atName()) throwSyntaxError();
    std::string name = unquoted(takeToken());
    for (const auto word : {"PRECISION", "CHARACTER", "CHAR", "TEXT", "VARYING"})
        if (at(word)) name += " " + lowerAscii(takeToken().raw);
    const auto argument = [this] {
        constexpr std::int64_t kTooLarge = 1'000'000;
        return accept("MAX") ? SqlType::kMax : static_cast<int>(std::min(expectInteger(), kTooLarge));
    };
    std::vector<int> arguments;
    if (at("(")) arguments = inList(argument);
    if (user && sameWord(name, "sysname")) user->nullable = false;
    try {
        return makeType(name, arguments, use);
    } catch (const SqlError& error) {
        const bool isUnknown = m_findType && error.number == kUnknownType;
        auto found = isUnknown ? m_findType({{}, schema, name, line}) : std::nullopt;
        if (!found) throw;
        if (!arguments.empty()) throwError(kTypeWithoutWidth, {name}, line);
        found = Parser(found->text, /*quotedIdentifiers=*/true, m_findType).definition(*found);
        if (found->table && !user) throw;
        return (user ? *user = std::move(*found) : *found).type;
    }
}

Identity Parser::identity() {
    const std::int64_t seed = expectInteger();
    expect(",");
    return {seed, expectInteger()};
}

// There is only one collation: case-insensitive, accent-sensitive.
void Parser::collation() {
    expect("COLLATE");
    const bool same = at("DATABASE_DEFAULT") || toUpper(peek().raw).find("_CI_AS") != std::string::npos;
    if (!same) throwUnsupported("a collation other than those named ..._CI_AS");
    expectName();
}

WordSet Parser::skipParenthesized() {
    WordSet words;
    int depth = 0;
    do {
        if (peek().kind == TokenKind::End) throwSyntaxError();
        depth += at("(") - at(")");
        words.emplace(takeToken().raw);
    } while (depth > 0);
    return words;
}

std::string Parser::textSince(std::size_t token) const {
    return {m_tokens[token].raw.data(), last().raw.data() + last().raw.size()};
}

// At the end of the text, errors name the last token.
const Token& Parser::faulty() const {
    return peek().kind == TokenKind::End && m_next > 0 ? last() : peek();
}

// The words begin up to three tokens before the place of the error. They reach it or, if there are several,
// end just before it.
void Parser::throwIfUnsupported() const {
    static const auto constructs = listItems(kUnsupported);
    for (const auto& words : constructs)
        for (std::size_t back = 0; back <= std::min<std::size_t>(m_next, 3); ++back)
            if (const auto count = match(words, -back); count >= back && count > (back == 1))
                throwUnsupported(words.find_first_of("%.") ? words : boost::erase_all_copy(words, " "));
}

void Parser::throwSyntaxError() const {
    throwIfUnsupported();
    throwError(peek().reserved ? kSyntaxErrorNearKeyword : kSyntaxErrorNear, {near()}, faulty().line);
}

int Parser::nextDepth() const {
    if (m_depth >= kDeepestNesting) throwError(kNestedTooDeeply);
    return m_depth + 1;
}

void Parser::checkChain(int length) const {
    if (length > kLongestChain) throwError(kNestedTooDeeply);
}

}  // namespace tsql
