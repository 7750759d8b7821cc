// Expressions and conditions, from the loosest operator to the tightest.
#include "Messages.h"
#include "Parser.h"
#include "Text.h"

namespace tsql {

using namespace ast;

namespace {

ExprPtr make(int line, Expr::Node node) {
    return std::make_unique<Expr>(Expr{line, std::move(node)});
}

struct CompareSymbol {
    std::string_view text;
    CompareOp op;
};
constexpr CompareSymbol kCompareSymbols[] = {
    {"=", CompareOp::Equal},   {"<>", CompareOp::NotEqual},       {"!=", CompareOp::NotEqual},
    {"<", CompareOp::Less},    {"<=", CompareOp::LessOrEqual},    {"!>", CompareOp::LessOrEqual},
    {">", CompareOp::Greater}, {">=", CompareOp::GreaterOrEqual}, {"!<", CompareOp::GreaterOrEqual},
};

struct BinarySymbol {
    std::string_view text;
    BinaryOp op;
};
constexpr BinarySymbol kAdditive[] = {
    {"+", BinaryOp::Add},   {"-", BinaryOp::Subtract}, {"&", BinaryOp::BitAnd},
    {"|", BinaryOp::BitOr}, {"^", BinaryOp::BitXor},
};
constexpr BinarySymbol kMultiplicative[] = {
    {"*", BinaryOp::Multiply},
    {"/", BinaryOp::Divide},
    {"%", BinaryOp::Modulo},
};

// Functions that are written without parentheses, and functions whose names are reserved words.
constexpr std::string_view kNiladic[] = {"CURRENT_TIMESTAMP", "CURRENT_USER", "SYSTEM_USER", "SESSION_USER",
                                         "USER"};
constexpr std::string_view kReservedFunctions[] = {"COALESCE", "NULLIF", "LEFT", "RIGHT"};

template <std::size_t N>
bool contains(const std::string_view (&words)[N], std::string_view word) {
    for (const auto each : words)
        if (sameWord(each, word)) return true;
    return false;
}

}  // namespace

ExprPtr Parser::value(ExprPtr expr) const {
    if (expr->isCondition()) syntaxError();
    return expr;
}

ExprPtr Parser::expression() {
    return value(parseOr());
}

ExprPtr Parser::condition() {
    ExprPtr expr = parseOr();
    if (expr->isCondition()) return expr;
    const Token& token = peek();
    const std::string near =
        token.kind == TokenKind::End ? std::string(m_tokens[m_next - 1].raw) : unquoted(token);
    throw SyntaxError(
        4145,
        "An expression of non-boolean type specified in a context where a condition is expected, near '" +
            near + "'.",
        token.line);
}

std::vector<ExprPtr> Parser::expressions() {
    return list([this] { return expression(); });
}

ExprPtr Parser::parseOr() {
    const Nesting nesting(*this);
    ExprPtr left = parseAnd();
    for (int chain = 0; at("OR"); checkChain(++chain)) {
        const int line = take().line;
        if (!left->isCondition()) syntaxError();
        ExprPtr right = parseAnd();
        if (!right->isCondition()) syntaxError();
        left = make(line, Logic{false, std::move(left), std::move(right)});
    }
    return left;
}

ExprPtr Parser::parseAnd() {
    ExprPtr left = parseNot();
    for (int chain = 0; at("AND"); checkChain(++chain)) {
        const int line = take().line;
        if (!left->isCondition()) syntaxError();
        ExprPtr right = parseNot();
        if (!right->isCondition()) syntaxError();
        left = make(line, Logic{true, std::move(left), std::move(right)});
    }
    return left;
}

ExprPtr Parser::parseNot() {
    if (!at("NOT")) return parsePredicate();
    const Nesting nesting(*this);
    const int line = take().line;
    ExprPtr operand = parseNot();
    if (!operand->isCondition()) syntaxError();
    return make(line, Not{std::move(operand)});
}

ExprPtr Parser::parsePredicate() {
    const int line = peek().line;
    if (accept("EXISTS")) return make(line, Exists{parenthesized([this] { return parseSubquery(); })});
    ExprPtr left = parseAdditive();
    if (left->isCondition()) return left;
    for (const auto& symbol : kCompareSymbols) {
        if (!at(symbol.text)) continue;
        take();
        if (at("ALL") || at("ANY") || at("SOME")) unsupported("a comparison with ALL, ANY or SOME");
        return make(line, Compare{symbol.op, std::move(left), value(parseAdditive())});
    }
    if (accept("IS")) {
        const bool negated = accept("NOT");
        expect("NULL");
        return make(line, IsNull{std::move(left), negated});
    }
    const bool negated = (at("IN", 1) || at("LIKE", 1) || at("BETWEEN", 1)) && accept("NOT");
    if (accept("IN")) return parseIn(std::move(left), negated);
    if (accept("LIKE")) return parseLike(std::move(left), negated);
    if (accept("BETWEEN")) {
        ExprPtr low = value(parseAdditive());
        expect("AND");
        return make(line, Between{std::move(left), std::move(low), value(parseAdditive()), negated});
    }
    return left;
}

ExprPtr Parser::parseIn(ExprPtr operand, bool negated) {
    const int line = operand->line;
    expect("(");
    ExprPtr in = atQuery() ? make(line, InQuery{std::move(operand), parseSubquery(), negated})
                           : make(line, InList{std::move(operand), expressions(), negated});
    expect(")");
    return in;
}

ExprPtr Parser::parseLike(ExprPtr operand, bool negated) {
    const int line = operand->line;
    ExprPtr pattern = value(parseAdditive());
    ExprPtr escape = accept("ESCAPE") ? value(parsePrimary()) : nullptr;
    return make(line, Like{std::move(operand), std::move(pattern), std::move(escape), negated});
}

ExprPtr Parser::parseAdditive() {
    ExprPtr left = parseMultiplicative();
    for (int chain = 0;; checkChain(++chain)) {
        const BinarySymbol* found = nullptr;
        for (const auto& symbol : kAdditive)
            if (at(symbol.text)) found = &symbol;
        if (!found) return left;
        const int line = take().line;
        ExprPtr right = value(parseMultiplicative());
        left = make(line, Binary{found->op, value(std::move(left)), std::move(right)});
    }
}

ExprPtr Parser::parseMultiplicative() {
    ExprPtr left = parseUnary();
    for (int chain = 0;; checkChain(++chain)) {
        const BinarySymbol* found = nullptr;
        for (const auto& symbol : kMultiplicative)
            if (at(symbol.text)) found = &symbol;
        if (!found) return left;
        const int line = take().line;
        ExprPtr right = value(parseUnary());
        left = make(line, Binary{found->op, value(std::move(left)), std::move(right)});
    }
}

ExprPtr Parser::parseUnary() {
    const int line = peek().line;
    if (at("-") || at("~") || at("+")) {
        const Nesting nesting(*this);
        const std::string_view sign = take().raw;
        ExprPtr operand = value(parseUnary());
        if (sign == "-") return make(line, Negate{std::move(operand)});
        if (sign == "~") return make(line, BitNot{std::move(operand)});
        return operand;
    }
    ExprPtr primary = parsePrimary();
    while (at("COLLATE")) {
        primary = value(std::move(primary));
        parseCollation();
    }
    return primary;
}

ExprPtr Parser::parsePrimary() {
    const Token& token = peek();
    if (isString(token) || token.kind == TokenKind::Number || token.kind == TokenKind::Binary || at("NULL"))
        return parseLiteral();
    if (token.kind == TokenKind::Variable) return make(token.line, VariableRef{expectVariable()});
    if (token.kind == TokenKind::Global) return make(token.line, VariableRef{std::string(take().raw)});
    if (at("(")) return parseParenthesized();
    if (at("CASE")) return parseCase();
    if (at("CAST", 0) && at("(", 1)) return parseCast();
    if (at("TRY_CAST") && at("(", 1)) return parseCast();
    if (at("CONVERT") || at("TRY_CONVERT")) return parseConvert();
    if (at("IIF") && at("(", 1)) return parseIif();
    return parseNamed();
}

ExprPtr Parser::parseLiteral() {
    const Token& token = take();
    try {
        switch (token.kind) {
            case TokenKind::Number:
                return make(token.line, Literal{numericLiteral(token.raw)});
            case TokenKind::Binary:
                return make(token.line, Literal{binaryLiteral(token.raw.substr(2))});
            case TokenKind::Word:
                return make(token.line, Literal{});
            default:
                return make(token.line,
                            Literal{textLiteral(unquoted(token), token.kind == TokenKind::NationalText)});
        }
    } catch (const SqlError& error) {
        throw SyntaxError(error.number, error.what(), token.line, error.severity);
    }
}

ExprPtr Parser::parseParenthesized() {
    const int line = take().line;
    const bool query = at("SELECT") || at("WITH");
    ExprPtr inner = query ? make(line, ScalarQuery{parseSubquery()}) : parseOr();
    expect(")");
    return query && at(".") && at("VALUE", 1) ? parseXmlValue(std::move(inner)) : std::move(inner);
}

// (SELECT ... FOR XML PATH(''), TYPE).value('.', 'nvarchar(max)'): the text of the XML.
ExprPtr Parser::parseXmlValue(ExprPtr xml) {
    constexpr std::string_view kWhole[] = {".", "(.)[1]"}, kText[] = {"text()[1]", "(./text())[1]"};
    const int line = peek().line;
    const auto& query = std::get<ScalarQuery>(xml->node).query;
    if (!query->xml || !query->xml->typed) syntaxError();
    take();
    take();
    expect("(");
    const std::string path = isString(peek()) ? unquoted(take()) : std::string();
    const bool whole = contains(kWhole, path);
    if (!whole && !contains(kText, path)) unsupported("the path '" + path + "' in .value()");
    expect(",");
    if (!isString(peek())) syntaxError();
    Cast cast;
    cast.type = Parser(unquoted(take()), true).type(TypeUse::Cast);
    expect(")");
    Call call{{"", "", "xml.value", line}, {}};
    call.arguments.push_back(std::move(xml));
    call.arguments.push_back(make(line, Literal{numericLiteral(whole ? "1" : "0")}));
    cast.operand = make(line, std::move(call));
    return make(line, std::move(cast));
}

ExprPtr Parser::parseCase() {
    const Nesting nesting(*this);
    const int line = take().line;
    Case node;
    if (!at("WHEN")) node.input = expression();
    while (accept("WHEN")) {
        ExprPtr when = node.input ? expression() : condition();
        expect("THEN");
        node.branches.emplace_back(std::move(when), expression());
    }
    if (node.branches.empty()) syntaxError();
    if (accept("ELSE")) node.otherwise = expression();
    expect("END");
    return make(line, std::move(node));
}

// IIF(condition, a, b) is CASE WHEN condition THEN a ELSE b END.
ExprPtr Parser::parseIif() {
    const Nesting nesting(*this);
    const int line = take().line;
    Case node;
    expect("(");
    ExprPtr when = condition();
    expect(",");
    node.branches.emplace_back(std::move(when), expression());
    expect(",");
    node.otherwise = expression();
    expect(")");
    return make(line, std::move(node));
}

ExprPtr Parser::parseCast() {
    const Token& word = take();
    Cast node;
    node.kind = sameWord(word.raw, "TRY_CAST") ? Conversion::Try : Conversion::Cast;
    expect("(");
    node.operand = expression();
    expect("AS");
    node.type = type(TypeUse::Cast);
    expect(")");
    return make(word.line, std::move(node));
}

ExprPtr Parser::parseConvert() {
    const Token& word = take();
    Cast node;
    node.kind = sameWord(word.raw, "TRY_CONVERT") ? Conversion::Try : Conversion::Cast;
    expect("(");
    node.type = type(TypeUse::Cast);
    expect(",");
    node.operand = expression();
    if (accept(",")) node.style = expression();
    expect(")");
    return make(word.line, std::move(node));
}

// A column or a function's call.
ExprPtr Parser::parseNamed() {
    const Token& first = peek();
    if (contains(kNiladic, first.raw) && first.kind == TokenKind::Word) {
        take();
        return make(first.line, Call{{"", "", std::string(first.raw), first.line}, {}});
    }
    if (contains(kReservedFunctions, first.raw) && first.kind == TokenKind::Word && at("(", 1)) {
        take();
        return parseCall({"", "", std::string(first.raw), first.line});
    }
    ColumnRef column;
    column.path.push_back(expectName());
    while (accept(".")) column.path.push_back(at(".") ? std::string() : expectName());
    if (!at("(")) {
        if (column.path.size() > 4) syntaxError();
        return make(first.line, std::move(column));
    }
    if (column.path.size() > 3) syntaxError();
    column.path.insert(column.path.begin(), 3 - column.path.size(), std::string());
    return parseCall({column.path[0], column.path[1], column.path[2], first.line});
}

// A null pointer stands for DEFAULT, which functions of a schema take.
std::vector<ExprPtr> Parser::argumentsOf(const ObjectName& function) {
    return list([&] {
        const bool byDefault = !function.schema.empty() && accept("DEFAULT");
        return byDefault ? ExprPtr() : expression();
    });
}

ExprPtr Parser::parseCall(ObjectName name) {
    const Nesting nesting(*this);
    const int line = name.line;
    Call call{std::move(name), {}};
    expect("(");
    if (accept("*"))
        call.star = true;
    else if (!at(")")) {
        call.distinct = accept("DISTINCT");
        if (!call.distinct) accept("ALL");
        call.arguments = argumentsOf(call.name);
    }
    expect(")");
    if (acceptAll({"WITHIN", "GROUP"})) call.within = parenthesized([this] { return parseOrderBy(); });
    if (accept("OVER")) call.over = std::make_unique<Window>(parenthesized([this] { return parseWindow(); }));
    return make(line, std::move(call));
}

Window Parser::parseWindow() {
    Window window;
    if (acceptAll({"PARTITION", "BY"})) window.partition = expressions();
    if (at("ORDER")) window.order = parseOrderBy();
    if (!at("ROWS") && !at("RANGE")) return window;
    const bool range = at("RANGE");
    if (window.order.empty()) throw SyntaxError(sqlError(10756), peek().line);
    window.frame = toUpper(take().raw);
    const auto bound = [&] {
        if (peek().kind == TokenKind::Number && range) throw SyntaxError(sqlError(4194), peek().line);
        if (acceptAll({"CURRENT", "ROW"})) {
            window.frame += " CURRENT ROW";
            return;
        }
        window.frame += accept("UNBOUNDED") ? " UNBOUNDED" : " " + std::to_string(expectInteger());
        if (!at("PRECEDING") && !at("FOLLOWING")) syntaxError();
        window.frame += " " + toUpper(take().raw);
    };
    const bool between = accept("BETWEEN");
    if (between) window.frame += " BETWEEN";
    bound();
    if (!between) return window;
    expect("AND");
    window.frame += " AND";
    bound();
    return window;
}

}  // namespace tsql
