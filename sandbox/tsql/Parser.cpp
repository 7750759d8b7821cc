#include "Parser.h"

#include <charconv>

#include "Messages.h"
#include "Text.h"

namespace tsql {
namespace {

constexpr int kDeepestNesting = 150;
constexpr int kLongestChain = 400;  // of operators on one level; SQLite's trees end at a depth of 1000

[[noreturn]] void tooDeep(int line) {
    throw SyntaxError(sqlError(191), line);
}

}  // namespace

std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers) {
    return std::make_shared<Batch>(Batch{Parser(text, quotedIdentifiers).batch()});
}

ast::ExprPtr parseExpression(std::string_view text) {
    return Parser(text, true).expression();
}

ast::ExprPtr parseCondition(std::string_view text) {
    return Parser(text, true).condition();
}

ast::Constraint parseConstraint(std::string_view text) {
    ast::Constraint constraint{};
    Parser(text, true).parseConstraint(constraint, false);
    return constraint;
}

ast::ObjectName parseObjectName(std::string_view text) {
    return Parser(text, true).objectName();
}

SqlType parseType(std::string_view text) {
    return Parser(text, true).type(TypeUse::Declaration);
}

Parser::Parser(std::string_view text, bool quotedIdentifiers)
    : m_tokens(tokenize(text)), m_quotedIdentifiers(quotedIdentifiers) {}

const Token& Parser::peek(std::size_t ahead) const {
    return m_tokens[std::min(m_next + ahead, m_tokens.size() - 1)];
}

const Token& Parser::take() {
    const Token& token = peek();
    if (token.kind != TokenKind::End) ++m_next;
    return token;
}

bool Parser::at(std::string_view word, std::size_t ahead) const {
    const Token& token = peek(ahead);
    return (token.kind == TokenKind::Word || token.kind == TokenKind::Symbol) && sameWord(token.raw, word);
}

bool Parser::accept(std::string_view word) {
    if (!at(word)) return false;
    take();
    return true;
}

bool Parser::acceptAll(std::initializer_list<std::string_view> words) {
    std::size_t ahead = 0;
    for (const auto word : words)
        if (!at(word, ahead++)) return false;
    m_next += words.size();
    return true;
}

void Parser::expect(std::string_view word) {
    if (!accept(word)) syntaxError();
}

std::int64_t Parser::expectInteger() {
    const bool negative = accept("-");
    const Token& token = peek();
    std::int64_t number = 0;
    const auto* end = token.raw.data() + token.raw.size();
    const auto parsed = std::from_chars(token.raw.data(), end, number);
    if (token.kind != TokenKind::Number || parsed.ec != std::errc() || parsed.ptr != end) syntaxError();
    take();
    return negative ? -number : number;
}

bool Parser::isString(const Token& token) const {
    return token.kind == TokenKind::Text || token.kind == TokenKind::NationalText ||
           (token.kind == TokenKind::DoubleQuoted && !m_quotedIdentifiers);
}

bool Parser::atName(std::size_t ahead) const {
    const Token& token = peek(ahead);
    return (token.kind == TokenKind::Word && !token.reserved) || token.kind == TokenKind::Bracketed ||
           (token.kind == TokenKind::DoubleQuoted && m_quotedIdentifiers);
}

std::string Parser::expectName() {
    if (!atName()) syntaxError();
    return unquoted(take());
}

std::string Parser::expectVariable() {
    if (peek().kind != TokenKind::Variable) syntaxError();
    checkDeclared(peek());
    return std::string(take().raw);
}

// database.schema.name, where the parts in between may be left out.
ast::ObjectName Parser::objectName() {
    ast::ObjectName name;
    name.line = peek().line;
    std::vector<std::string> parts{expectName()};
    while (accept(".")) parts.push_back(at(".") ? std::string() : expectName());
    if (parts.size() > 3) unsupported("a name with a linked server");
    name.name = parts.back();
    if (parts.size() > 1) name.schema = parts[parts.size() - 2];
    if (parts.size() > 2) name.database = parts.front();
    return name;
}

SqlType Parser::type(TypeUse use) {
    const int line = peek().line;
    if ((atName() && at(".", 1))) {  // [sys].[int], dbo.int
        take();
        take();
    }
    const bool keyword = at("NATIONAL") || at("DOUBLE");
    if (!keyword && !atName()) syntaxError();
    std::string name = unquoted(take());
    for (const auto word : {"PRECISION", "CHARACTER", "CHAR", "TEXT", "VARYING"})
        if (at(word)) name += " " + lowerAscii(take().raw);
    try {
        if (at("CURSOR") || sameWord(name, "table")) unsupported("a variable or parameter of type " + name);
        return makeType(name, typeArguments(), use);
    } catch (const SyntaxError&) {
        throw;
    } catch (const SqlError& error) {
        throw SyntaxError(error, line);
    }
}

std::vector<int> Parser::typeArguments() {
    if (!accept("(")) return {};
    auto arguments = list([this] {
        constexpr std::int64_t kTooLarge = 1'000'000;
        return accept("MAX") ? SqlType::kMax : static_cast<int>(std::min(expectInteger(), kTooLarge));
    });
    expect(")");
    return arguments;
}

// The batch's own text from `first` to the token taken last.
std::string Parser::textSince(const Token& first) const {
    const std::string_view last = m_tokens[m_next - 1].raw;
    return {first.raw.data(), last.data() + last.size()};
}

void Parser::syntaxError() const {
    const Token& token = peek();
    if (token.kind == TokenKind::End) {
        const std::string_view last = m_next > 0 ? m_tokens[m_next - 1].raw : std::string_view();
        throw SyntaxError(102, "Incorrect syntax near '" + std::string(last) + "'.",
                          m_next > 0 ? m_tokens[m_next - 1].line : token.line);
    }
    if (token.reserved)
        throw SyntaxError(156, "Incorrect syntax near the keyword '" + std::string(token.raw) + "'.",
                          token.line);
    throw SyntaxError(102, "Incorrect syntax near '" + unquoted(token) + "'.", token.line);
}

void Parser::unsupported(std::string_view construct) const {
    throw SyntaxError(tsql::unsupported(construct), peek().line);
}

// There is one collation, which disregards case and regards accents.
void Parser::parseCollation() {
    expect("COLLATE");
    const bool same = at("DATABASE_DEFAULT") || toUpper(peek().raw).find("_CI_AS") != std::string::npos;
    if (!same) unsupported("a collation other than those named ..._CI_AS");
    expectName();
}

void Parser::checkDeclared(const Token& variable) const {
    if (m_checkVariables && !m_declared.contains(lowerAscii(variable.raw)))
        throw SyntaxError(sqlError(137, {variable.raw}), variable.line);
}

Parser::Nesting::Nesting(Parser& parser) : m_parser(parser) {
    if (++m_parser.m_depth > kDeepestNesting) {
        --m_parser.m_depth;
        tooDeep(parser.peek().line);
    }
}

void Parser::checkChain(int length) const {
    if (length > kLongestChain) tooDeep(peek().line);
}

}  // namespace tsql
