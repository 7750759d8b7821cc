// Expressions and conditions.

#include "syntax/Parser.h"

namespace tsql {

namespace {

// Precedence levels, lowest first.
enum Level { kOr, kAnd, kNot, kPredicate, kAdditive, kMultiplicative, kOperand };
enum class Predicate { IsNull, In, Like, Between };

// The meaning of AND and OR is empty: their level identifies them.
struct Operator {
    std::string_view phrase;
    Level level;
    std::variant<std::monostate, Predicate, CompareOp, BinaryOp> meaning;
};
constexpr Operator kOperators[] = {
    {"OR", kOr, {}},
    {"AND", kAnd, {}},
    {"IS NULL", kPredicate, Predicate::IsNull},
    {"IS NOT NULL", kPredicate, Predicate::IsNull},
    {"IN", kPredicate, Predicate::In},
    {"LIKE", kPredicate, Predicate::Like},
    {"BETWEEN", kPredicate, Predicate::Between},
    {"=", kPredicate, CompareOp::Equal},
    {"<>", kPredicate, CompareOp::NotEqual},
    {"!=", kPredicate, CompareOp::NotEqual},
    {"<", kPredicate, CompareOp::Less},
    {"<=", kPredicate, CompareOp::LessOrEqual},
    {"!>", kPredicate, CompareOp::LessOrEqual},
    {">", kPredicate, CompareOp::Greater},
    {">=", kPredicate, CompareOp::GreaterOrEqual},
    {"!<", kPredicate, CompareOp::GreaterOrEqual},
    {"+", kAdditive, BinaryOp::Add},
    {"-", kAdditive, BinaryOp::Subtract},
    {"&", kAdditive, BinaryOp::BitAnd},
    {"|", kAdditive, BinaryOp::BitOr},
    {"^", kAdditive, BinaryOp::BitXor},
    {"*", kMultiplicative, BinaryOp::Multiply},
    {"/", kMultiplicative, BinaryOp::Divide},
    {"%", kMultiplicative, BinaryOp::Modulo},
};

// Functions without parentheses, and functions whose names are reserved words.
constexpr std::string_view kNiladic = "CURRENT_TIMESTAMP CURRENT_USER SYSTEM_USER SESSION_USER USER";
constexpr std::string_view kReservedFunctions = "COALESCE NULLIF LEFT RIGHT";

ExprPtr asValue(const Parser& in, ExprPtr expr) {
    if (expr->isCondition()) in.throwSyntaxError();
    return expr;
}

ExprPtr asCondition(const Parser& in, ExprPtr expr) {
    if (expr->isCondition()) return expr;
    in.throwError(kConditionExpected, {in.near()}, in.faulty().line);
}

Expr::Node predicate(Parser& in, Predicate kind, ExprPtr left) {
    const auto operand = [&in] { return asValue(in, in.operators(kAdditive)); };
    if (kind == Predicate::IsNull) return IsNull{left};
    if (kind == Predicate::In)
        return in.parenthesized([&]() -> Expr::Node {
            if (in.atQuery()) return CompareQuery{CompareOp::Equal, /*all=*/false, left, in.subquery()};
            return InList{left, in.expressions()};
        });
    ExprPtr first = operand();
    if (kind == Predicate::Like)
        return Like{left, first, in.accept("ESCAPE") ? asValue(in, in.primary()) : nullptr};
    in.expect("AND");
    first = makeExpr(left->line, Compare{CompareOp::GreaterOrEqual, left, first});
    return Logic{true, first, makeExpr(left->line, Compare{CompareOp::LessOrEqual, left, operand()})};
}

// Parses the right side of an operator that is already consumed.
Expr::Node operation(Parser& in, const Operator& op, ExprPtr left) {
    if (const auto* kind = std::get_if<Predicate>(&op.meaning)) return predicate(in, *kind, left);
    if (const auto* compare = std::get_if<CompareOp>(&op.meaning)) {
        const bool all = in.accept("ALL");
        if (all || in.acceptAny({"ANY", "SOME"}))
            return CompareQuery{*compare, all, left, in.parenthesized([&] { return in.subquery(); })};
    }
    ExprPtr right = in.operators(op.level + 1);
    if (op.level <= kAnd) return Logic{op.level == kAnd, left, asCondition(in, right)};
    right = asValue(in, right);
    if (const auto* compare = std::get_if<CompareOp>(&op.meaning)) return Compare{*compare, left, right};
    return Binary{std::get<BinaryOp>(op.meaning), left, right};
}

TypedValue valueOf(const Token& token) {
    if (token.kind == TokenKind::Number) return numericLiteral(token.raw);
    if (token.kind == TokenKind::Binary) return binaryLiteral(token.raw.substr(2));
    if (token.kind == TokenKind::Word) return {};
    return textLiteral(unquoted(token), token.kind == TokenKind::NationalText);
}

// (SELECT ... FOR XML PATH(''), TYPE).value('.', 'nvarchar(max)') is the text content of the XML.
ExprPtr xmlValue(Parser& in, QueryPtr query) {
    constexpr std::string_view kWhole = ". (.)[1]", kText = "TEXT()[1] (./TEXT())[1]";
    const int line = in.peek().line;
    if (!query->xml || !query->xml->typed) in.throwSyntaxError();
    in.expect(". VALUE (");
    const std::string path = in.expectString();
    const bool whole = hasWord(kWhole, path);
    if (!whole && !hasWord(kText, toUpper(path))) in.throwUnsupported("the path '" + path + "' in .value()");
    in.expect(",");
    const SqlType type = Parser(in.expectString(), /*quotedIdentifiers=*/true).type(TypeUse::Cast);
    in.expect(")");
    Call call{
        {"", "", "xml.value", line},
        {makeExpr(line, ScalarQuery{query}), makeExpr(line, Literal{numericLiteral(whole ? "1" : "0")})}};
    return makeExpr(line, Cast{makeExpr(line, std::move(call)), type, nullptr});
}

ExprPtr inParentheses(Parser& in) {
    const int line = in.peek().line;
    if (!in.at("( SELECT") && !in.at("( WITH"))
        return in.parenthesized([&] { return in.expressionOrCondition(); });
    QueryPtr query = in.parenthesized([&] { return in.subquery(); });
    if (in.at(". VALUE")) return xmlValue(in, query);
    return makeExpr(line, ScalarQuery{query});
}

ExprPtr caseOf(Parser& in) {
    const int line = in.takeToken().line;
    Case node;
    const ExprPtr input = in.at("WHEN") ? nullptr : in.expression();
    while (in.accept("WHEN")) {
        ExprPtr when = input ? in.expression() : in.condition();
        if (input) when = makeExpr(when->line, Compare{CompareOp::Equal, input, when});
        in.expect("THEN");
        node.branches.emplace_back(when, in.expression());
    }
    if (node.branches.empty()) in.throwSyntaxError();
    if (in.accept("ELSE")) node.otherwise = in.expression();
    in.expect("END");
    return makeExpr(line, std::move(node));
}

// IIF(condition, a, b) is CASE WHEN condition THEN a ELSE b END.
ExprPtr iif(Parser& in) {
    const int line = in.takeToken().line;
    in.expect("(");
    const ExprPtr when = in.condition();
    in.expect(",");
    const auto values = in.expressions();
    if (values.size() != 2) in.throwSyntaxError();
    in.expect(")");
    return makeExpr(line, Case{{{when, values[0]}}, values[1]});
}

// CAST(value AS type), CONVERT(type, value [, style]); either with TRY_.
ExprPtr conversion(Parser& in) {
    const bool convert = in.at("CONVERT") || in.at("TRY_CONVERT");
    const Token& word = in.takeToken();
    Cast node{{}, {}, {}, toUpper(word.raw).starts_with("TRY_") ? Conversion::Try : Conversion::Cast};
    in.expect("(");
    if (!convert) node.operand = in.expression();
    if (!convert) in.expect("AS");
    node.type = in.type(TypeUse::Cast);
    if (convert) in.expect(",");
    if (convert) node.operand = in.expression();
    if (convert && in.accept(",")) node.style = in.expression();
    in.expect(")");
    return makeExpr(word.line, std::move(node));
}

// ROWS or RANGE, in the syntax common to T-SQL and SQLite.
std::string frame(Parser& in, bool ordered) {
    const std::size_t begin = in.position();
    const bool range = in.accept("RANGE");
    if (!range && !in.accept("ROWS")) return {};
    if (!ordered) in.throwError(kFrameWithoutOrderBy);
    const bool between = in.accept("BETWEEN");
    for (int bound = 0; bound <= between; ++bound) {
        if (bound > 0) in.expect("AND");
        if (in.peek().kind == TokenKind::Number && range) in.throwError(kRangeFrameLimits);
        if (in.accept("CURRENT ROW")) continue;
        if (!in.accept("UNBOUNDED")) in.expectInteger();
        in.expectAny({"PRECEDING", "FOLLOWING"});
    }
    return in.textSince(begin);
}

Window window(Parser& in) {
    Window window;
    if (in.accept("PARTITION BY")) window.partition = in.expressions();
    if (in.at("ORDER")) window.order = in.orderBy();
    window.frame = frame(in, !window.order.empty());
    return window;
}

// Only built-in functions, which have no schema, take DISTINCT, WITHIN GROUP or OVER.
ExprPtr call(Parser& in, ObjectName name) {
    const bool builtIn = name.schema.empty();
    const int line = name.line;
    const bool differs = builtIn && (sameWord(name.name, "RAND") || sameWord(name.name, "NEWID"));
    if (differs && in.m_module && in.m_module->function)
        in.throwError(kSideEffectInFunction, {lowerAscii(name.name)}, line, 1);
    Call call{std::move(name), {}};
    call.star = builtIn && hasWord("COUNT COUNT_BIG", toUpper(call.name.name)) && in.accept("( * )");
    call.distinct = builtIn && in.at("( DISTINCT");
    if (!call.star) call.arguments = in.argumentsOf(call.name);
    if (builtIn && in.accept("WITHIN GROUP")) call.within = in.parenthesized([&] { return in.orderBy(); });
    if (builtIn && in.accept("OVER"))
        call.over = std::make_unique<Window>(in.parenthesized([&] { return window(in); }));
    return makeExpr(line, std::move(call));
}

// UPDATE(column) in a trigger
ExprPtr updated(Parser& in) {
    const int line = in.takeToken().line;
    if (!in.m_module || !in.m_module->isTrigger()) in.throwSyntaxError();
    const std::string column = in.parenthesized([&] { return in.expectName(); });
    Call call{{"", "", "update", line}, {makeExpr(line, Literal{textLiteral(column, /*national=*/true)})}};
    return makeExpr(line, Compare{CompareOp::Equal, makeExpr(line, std::move(call)),
                                  makeExpr(line, Literal{numericLiteral("1")})});
}

// Column or function call.
ExprPtr named(Parser& in) {
    const Token& first = in.peek();
    const std::string word = first.kind == TokenKind::Word ? toUpper(first.raw) : "";
    const bool niladic = hasWord(kNiladic, word);
    if (niladic || (hasWord(kReservedFunctions, word) && in.at("(", 1))) {
        ObjectName name{"", "", std::string(in.takeToken().raw), first.line};
        return niladic ? makeExpr(first.line, Call{std::move(name), {}}) : call(in, std::move(name));
    }
    ColumnRef column;
    column.path.push_back(in.expectName());
    while (in.accept(".")) column.path.push_back(in.at(".") ? std::string() : in.expectName());
    if (column.path.size() > (in.at("(") ? 3U : 4U)) in.throwSyntaxError();
    if (!in.at("(")) return makeExpr(first.line, std::move(column));
    column.path.insert(column.path.begin(), 3 - column.path.size(), std::string());
    return call(in, {column.path[0], column.path[1], column.path[2], first.line});
}

}  // namespace

ExprPtr Parser::expression() {
    return asValue(*this, expressionOrCondition());
}

ExprPtr Parser::scalar(ExprPtr (Parser::*read)()) {
    const Temporarily scalarOnly(m_scalarOnly, true);
    return (this->*read)();
}

ExprPtr Parser::condition() {
    return asCondition(*this, expressionOrCondition());
}

ExprPtr Parser::expressionOrCondition() {
    const Temporarily deeper(m_depth, nextDepth());
    return operators(kOr);
}

// Only built-in functions accept DISTINCT or ALL; only those with a schema accept DEFAULT, a null pointer.
std::vector<ExprPtr> Parser::argumentsOf(const ObjectName& function) {
    const bool builtIn = function.schema.empty();
    expect("(");
    if (builtIn) acceptAny({"DISTINCT", "ALL"});
    const auto argument = [&] { return !builtIn && accept("DEFAULT") ? ExprPtr() : expression(); };
    const bool isTrim = builtIn && sameWord(function.name, "TRIM");  // TRIM(characters FROM string)
    auto arguments = at(")") ? std::vector<ExprPtr>() : list(argument, isTrim ? "FROM" : ",");
    expect(")");
    return arguments;
}

// Precedence climbing: operators of at least the level `loosest`, and their operands.
ExprPtr Parser::operators(int loosest) {
    ExprPtr left;
    if (loosest <= kNot && at("NOT")) {
        const Temporarily deeper(m_depth, nextDepth());
        const int line = takeToken().line;
        left = makeExpr(line, Not{asCondition(*this, operators(kNot))});
    } else {
        left = unary();
    }
    Level level = kOperand;
    for (int chain = 0;; checkChain(++chain)) {
        const bool negated = at("NOT IN") || at("NOT LIKE") || at("NOT BETWEEN");
        const auto* next =
            std::ranges::find_if(kOperators, [&](const auto& each) { return at(each.phrase, negated); });
        if (next == std::end(kOperators) || next->level < loosest) return left;
        if (next->level != std::exchange(level, next->level)) chain = 0;
        const int line = peek().line;
        left = next->level <= kAnd ? asCondition(*this, left) : asValue(*this, left);
        accept("NOT");
        accept(next->phrase);
        left = makeExpr(line, operation(*this, *next, left));
        if (negated || next->phrase == "IS NOT NULL") left = makeExpr(line, Not{left});
    }
}

ExprPtr Parser::unary() {
    const int line = peek().line;
    if (at("-") || at("~") || at("+")) {
        const Temporarily deeper(m_depth, nextDepth());
        const std::string_view sign = takeToken().raw;
        ExprPtr operand = asValue(*this, unary());
        return sign == "+" ? operand : makeExpr(line, Unary{sign == "~", operand});
    }
    ExprPtr operand = primary();
    for (; at("COLLATE"); collation()) operand = asValue(*this, operand);
    return operand;
}

ExprPtr Parser::primary() {
    const Token& token = peek();
    if (isString(token) || token.kind == TokenKind::Number || token.kind == TokenKind::Binary || at("NULL"))
        return makeExpr(token.line, Literal{valueOf(takeToken())});
    if (token.kind == TokenKind::Variable) {
        ExprPtr variable = makeExpr(token.line, VariableRef{expectVariable(2)});
        throwIfAt(".", "methods of xml");
        return variable;
    }
    if (token.kind == TokenKind::Global)
        return makeExpr(token.line, VariableRef{std::string(takeToken().raw)});
    if (at("(")) return inParentheses(*this);
    if (at("PARSE (") || at("TRY_PARSE (")) throwUnsupported(toUpper(token.raw));
    if (at("::", 1)) throwUnsupported("methods of " + lowerAscii(token.raw));
    if (at("CASE")) return caseOf(*this);
    if (accept("NEXT VALUE FOR")) {
        ExprPtr next = makeExpr(token.line, NextValue{objectName()});
        throwIfAt("OVER", "NEXT VALUE FOR ... OVER");
        return next;
    }
    if (at("CAST (") || at("TRY_CAST (") || at("CONVERT") || at("TRY_CONVERT")) return conversion(*this);
    if (at("IIF (")) return iif(*this);
    if (at("UPDATE (")) return updated(*this);
    if (accept("EXISTS")) return makeExpr(token.line, Exists{parenthesized([this] { return subquery(); })});
    return named(*this);
}

}  // namespace tsql
