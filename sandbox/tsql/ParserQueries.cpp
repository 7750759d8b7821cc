// SELECT and what it is made of.
#include "Messages.h"
#include "Parser.h"
#include "Text.h"

namespace tsql {

using namespace ast;

bool Parser::atQuery() const {
    std::size_t ahead = 0;
    while (at("(", ahead)) ++ahead;
    return at("SELECT", ahead) || (ahead == 0 && at("WITH"));
}

QueryPtr Parser::parseQuery() {
    return parseQueryBehind(parseWith());
}

QueryPtr Parser::parseQueryBehind(std::vector<CommonTable> with) {
    const Nesting nesting(*this);
    const int line = peek().line;
    QueryPtr query = parseUnion();
    query->with = std::move(with);
    query->line = line;
    if (at("ORDER")) query->orderBy = parseOrderBy();
    parseOffset(*query);
    query->xml = parseForXml();
    if (at("COMPUTE")) unsupported("COMPUTE");
    parseOptions(query.get());
    return query;
}

// A query inside of something else, where an order has no meaning by itself.
QueryPtr Parser::parseSubquery() {
    QueryPtr query = parseQuery();
    const auto* select = std::get_if<Select>(&query->body);
    if (!query->orderBy.empty() && !(select && select->top) && !query->offset && !query->xml)
        throw SyntaxError(sqlError(1033), query->orderBy.front().value->line);
    return query;
}

// FOR XML RAW | PATH [('row')] [, ELEMENTS] [, ROOT [('root')]] [, TYPE]
std::optional<ForXml> Parser::parseForXml() {
    if (!at("FOR")) return std::nullopt;
    if (at("JSON", 1) || at("BROWSE", 1)) unsupported("SELECT ... FOR JSON/BROWSE");
    if (!acceptAll({"FOR", "XML"})) return std::nullopt;
    const auto name = [this](std::string& into) {
        if (!accept("(")) return;
        if (!isString(peek())) syntaxError();
        into = unquoted(take());
        expect(")");
    };
    ForXml xml;
    if (at("AUTO") || at("EXPLICIT")) unsupported("FOR XML AUTO and EXPLICIT");
    xml.path = xml.elements = accept("PATH");
    if (!xml.path) expect("RAW");
    name(xml.row);
    while (accept(",")) {
        if (accept("ROOT"))
            name(xml.root = "root");
        else if (accept("TYPE"))
            xml.typed = true;
        else if (at("ELEMENTS") && !at("XSINIL", 1))
            xml.elements = take().kind == TokenKind::Word;
        else
            unsupported("this option of FOR XML");
    }
    return xml;
}

// Hints to the optimizer change no result; MAXRECURSION does.
void Parser::parseOptions(Query* query) {
    if (!at("OPTION") || !at("(", 1)) return;
    for (take(); !accept(")"); take()) {
        if (peek().kind == TokenKind::End) syntaxError();
        if (!at("MAXRECURSION") || !query) continue;
        take();
        query->maxRecursion = expectInteger();
        --m_next;
    }
}

// The name of a table, or of a variable that is one.
ObjectName Parser::tableName() {
    if (peek().kind != TokenKind::Variable) return objectName();
    const Token& name = take();
    if (!m_declaredTables.contains(lowerAscii(name.raw)))
        throw SyntaxError(sqlError(1087, {name.raw}), name.line);
    return {{}, {}, std::string(name.raw), name.line};
}

std::vector<CommonTable> Parser::parseWith() {
    if (!accept("WITH")) return {};
    return list([this] {
        CommonTable table;
        table.name = expectName();
        if (at("(")) table.columns = parseColumnNames();
        expect("AS");
        table.query = parenthesized([this] { return parseSubquery(); });
        return table;
    });
}

std::vector<std::string> Parser::parseColumnNames() {
    return parenthesized([this] { return list([this] { return expectName(); }); });
}

QueryPtr Parser::parseUnion() {
    QueryPtr left = parseIntersect();
    for (int chain = 0; at("UNION") || at("EXCEPT"); checkChain(++chain)) {
        const int line = peek().line;
        SetOp op = SetOp::Except;
        if (!accept("EXCEPT")) {
            take();
            op = accept("ALL") ? SetOp::UnionAll : SetOp::Union;
        }
        auto query = std::make_unique<Query>();
        query->line = line;
        query->body = SetOperation{op, std::move(left), parseIntersect()};
        left = std::move(query);
    }
    return left;
}

QueryPtr Parser::parseIntersect() {
    QueryPtr left = parseQueryTerm();
    for (int chain = 0; accept("INTERSECT"); checkChain(++chain)) {
        auto query = std::make_unique<Query>();
        query->line = left->line;
        query->body = SetOperation{SetOp::Intersect, std::move(left), parseQueryTerm()};
        left = std::move(query);
    }
    return left;
}

QueryPtr Parser::parseQueryTerm() {
    if (accept("(")) {
        QueryPtr inner = parseQuery();
        expect(")");
        return inner;
    }
    auto query = std::make_unique<Query>();
    query->line = peek().line;
    query->body = parseSelect();
    return query;
}

Select Parser::parseSelect() {
    expect("SELECT");
    Select select;
    select.distinct = accept("DISTINCT");
    if (!select.distinct) accept("ALL");
    select.top = parseTop();
    select.items = list([this] { return parseSelectItem(); });
    if (accept("INTO")) select.into = objectName();
    if (accept("FROM")) select.from = parseFrom();
    if (accept("WHERE")) select.where = condition();
    if (acceptAll({"GROUP", "BY"})) {
        select.groupBy = expressions();
        if (at("WITH")) unsupported("GROUP BY ... WITH CUBE or ROLLUP");
    }
    if (accept("HAVING")) select.having = condition();
    return select;
}

std::optional<Top> Parser::parseTop() {
    if (!accept("TOP")) return std::nullopt;
    Top top{at("(") ? parenthesized([this] { return expression(); }) : parsePrimary()};
    if (at("PERCENT")) unsupported("TOP ... PERCENT");
    if (at("WITH") && at("TIES", 1)) unsupported("TOP ... WITH TIES");
    return top;
}

SelectItem Parser::parseSelectItem() {
    SelectItem item;
    if (accept("*")) return item;
    for (std::size_t ahead = 0; atName(ahead) && at(".", ahead + 1); ahead += 2) {
        if (!at("*", ahead + 2)) continue;
        for (; !at("*"); accept(".")) item.starOf.push_back(expectName());
        take();
        return item;
    }
    if (parseAssignmentItem(item)) return item;
    if ((atName() || isString(peek())) && at("=", 1)) {  // alias = value
        item.alias = unquoted(take());
        take();
        item.value = expression();
        return item;
    }
    item.value = expression();
    item.alias = parseAlias();
    return item;
}

bool Parser::parseAssignmentItem(SelectItem& item) {
    if (peek().kind != TokenKind::Variable || peek(1).kind != TokenKind::Symbol) return false;
    const std::string_view symbol = peek(1).raw;
    if (symbol != "=" &&
        !(symbol.size() == 2 && symbol[1] == '=' && symbol[0] != '<' && symbol[0] != '>' && symbol[0] != '!'))
        return false;
    item.variable = expectVariable();
    item.assignment = parseAssignmentOperator();
    item.value = expression();
    return true;
}

// An alias may be a text; without AS it must not be a word that begins something else.
std::string Parser::parseAlias() {
    const bool as = accept("AS");
    if (atName() || isString(peek())) return unquoted(take());
    if (as) syntaxError();
    return {};
}

std::vector<TableRefPtr> Parser::parseFrom() {
    return list([this] { return parseJoins(); });
}

TableRefPtr Parser::parseJoins() {
    const Nesting nesting(*this);
    TableRefPtr left = parseTablePrimary();
    JoinKind kind{};
    for (int chain = 0; parseJoinKind(kind); checkChain(++chain)) {
        const int line = peek().line;
        TableRefPtr right = parseTablePrimary();
        Join join{kind, std::move(left), std::move(right), nullptr};
        if (kind != JoinKind::Cross) {
            expect("ON");
            join.on = condition();
        }
        left = std::make_unique<TableRef>(TableRef{std::move(join), {}, line});
    }
    return left;
}

bool Parser::parseJoinKind(JoinKind& kind) {
    if (acceptAll({"CROSS", "JOIN"})) {
        kind = JoinKind::Cross;
        return true;
    }
    if ((at("CROSS") || at("OUTER")) && at("APPLY", 1)) unsupported("APPLY");
    constexpr std::pair<std::string_view, JoinKind> kOuter[] = {
        {"LEFT", JoinKind::Left}, {"RIGHT", JoinKind::Right}, {"FULL", JoinKind::Full}};
    for (const auto& [word, outer] : kOuter) {
        if (!accept(word)) continue;
        accept("OUTER");
        expect("JOIN");
        kind = outer;
        return true;
    }
    const bool inner = accept("INNER");
    if (inner)
        expect("JOIN");
    else if (!accept("JOIN"))
        return false;
    kind = JoinKind::Inner;
    return true;
}

TableRefPtr Parser::parseTablePrimary() {
    auto table = std::make_unique<TableRef>();
    table->line = peek().line;
    const bool values = at("(") && at("VALUES", 1);
    if (at("(") && !values && !atQuery()) return parenthesized([this] { return parseJoins(); });
    if (accept("(")) {
        DerivedTable derived{values ? parseRowValues() : parseSubquery(), {}};
        expect(")");
        table->alias = parseAlias();
        if (table->alias.empty()) syntaxError();
        if (at("(")) derived.columns = parseColumnNames();
        table->node = std::move(derived);
        return table;
    }
    NamedTable named{tableName()};
    if (at("(") && !at("NOLOCK", 1))
        named.arguments =
            parenthesized([&] { return at(")") ? std::vector<ExprPtr>() : argumentsOf(named.name); });
    table->node = std::move(named);
    parseTableHints();
    table->alias = parseAlias();
    parseTableHints();
    return table;
}

// VALUES (...), (...): a SELECT each, under names that the alias gives.
QueryPtr Parser::parseRowValues() {
    QueryPtr rows;
    take();
    for (int chain = 0; chain == 0 || accept(","); checkChain(++chain)) {
        auto row = std::make_unique<Query>();
        row->line = peek().line;
        Select select;
        for (auto& cell : parenthesized([this] { return expressions(); }))
            select.items.push_back({std::move(cell), {}, {}, {}, {}});
        row->body = std::move(select);
        if (rows) {
            auto both = std::make_unique<Query>();
            both->line = row->line;
            both->body = SetOperation{SetOp::UnionAll, std::move(rows), std::move(row)};
            row = std::move(both);
        }
        rows = std::move(row);
    }
    return rows;
}

// Hints say how to lock and which index to take; the rows are the same.
void Parser::parseTableHints() {
    const bool hints = (at("WITH") && at("(", 1)) || (at("(") && at("NOLOCK", 1));
    if (!hints) return;
    accept("WITH");
    expect("(");
    while (!accept(")")) {
        if (peek().kind == TokenKind::End) syntaxError();
        take();
    }
}

std::vector<OrderItem> Parser::parseOrderBy() {
    expect("ORDER");
    expect("BY");
    return list([this] {
        OrderItem item{expression(), false};
        if (accept("DESC"))
            item.descending = true;
        else
            accept("ASC");
        return item;
    });
}

void Parser::parseOffset(Query& query) {
    if (query.orderBy.empty() || !accept("OFFSET")) return;
    query.offset = expression();
    if (!accept("ROWS")) expect("ROW");
    if (!accept("FETCH")) return;
    if (!accept("NEXT")) expect("FIRST");
    query.fetch = expression();
    if (!accept("ROWS")) expect("ROW");
    expect("ONLY");
}

}  // namespace tsql
