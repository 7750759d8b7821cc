// SELECT and its clauses.
#include <boost/algorithm/string/replace.hpp>
#include <limits>

#include "syntax/Parser.h"

namespace tsql {

namespace {

QueryPtr queryOf(int line, std::variant<Select, SetOperation> body) {
    return std::make_unique<Query>(Query{{}, std::move(body), {}, {}, {}, {}, {}, line});
}

TableRefPtr tableOf(int line, std::variant<NamedTable, DerivedTable, Join> node) {
    return std::make_unique<TableRef>(TableRef{std::move(node), {}, line});
}

// Appends a query to a set operation, which is null before the first one.
void append(QueryPtr& all, std::string_view op, const QueryPtr& next) {
    all = all ? queryOf(next->line, SetOperation{op, std::move(all), next}) : next;
}

using GroupingSets = std::vector<std::vector<std::size_t>>;  // by numbers of keys

// ROLLUP: the first ones of the units, always fewer. CUBE: all subsets of them.
GroupingSets combined(const Parser& in, const GroupingSets& units, bool isCube) {
    constexpr std::size_t kMostUnits = 8;
    if (units.size() > kMostUnits) in.throwUnsupported("CUBE or ROLLUP of more than 8 columns");
    GroupingSets sets;
    const std::size_t all = (std::size_t{1} << units.size()) - 1;
    for (std::size_t left = 0; left <= all; ++left) {  // a bit for each unit that is left out, the last is 1
        if (!isCube && (left & (left + 1)) != 0) continue;
        auto& set = sets.emplace_back();
        for (std::size_t i = 0; i < units.size(); ++i)
            if (!(left >> (units.size() - 1 - i) & 1)) std::ranges::copy(units[i], std::back_inserter(set));
    }
    return sets;
}

// Returns the sets of an element of GROUP BY or GROUPING SETS.
GroupingSets groupingSets(Parser& in, std::vector<ExprPtr>& keys, bool isNested) {
    const auto key = [&] {
        keys.push_back(in.expression());
        return keys.size() - 1;
    };
    const auto unit = [&] { return in.at("(") ? in.inList(key) : std::vector{key()}; };
    if (in.accept("( )")) return {{}};
    const Temporarily deeper(in.m_depth, in.nextDepth());
    GroupingSets sets;
    if (in.accept("GROUPING SETS")) {
        for (auto& each : in.inList([&] { return groupingSets(in, keys, /*isNested=*/true); }))
            std::ranges::move(each, std::back_inserter(sets));
        return sets;
    }
    const bool isCube = in.at("CUBE (");
    if (!isCube && !in.at("ROLLUP (")) return {isNested ? unit() : std::vector{key()}};
    in.takeToken();
    return combined(in, in.inList(unit), isCube);
}

GroupingSets groupBy(Parser& in, std::vector<ExprPtr>& keys) {
    GroupingSets sets{{}};
    do {
        GroupingSets product;
        const auto next = groupingSets(in, keys, /*isNested=*/false);
        for (const auto& left : sets)
            for (const auto& right : next)
                std::ranges::copy(right, std::back_inserter(product.emplace_back(left)));
        in.checkChain(static_cast<int>(product.size()));
        sets = std::move(product);
    } while (in.accept(","));
    if (const auto with = in.acceptFirst({"WITH ROLLUP", "WITH CUBE"}); !with.empty()) {
        GroupingSets units(keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i) units[i] = {i};
        sets = combined(in, units, with == "WITH CUBE");
    }
    return sets;
}

// A UNION of one query for each grouping set.
QueryPtr selects(Parser& in) {
    const int line = in.peek().line;
    in.expect("SELECT");
    auto* const into = std::exchange(in.m_into, nullptr);
    Select select;
    select.distinct = in.acceptFirst({"DISTINCT", "ALL"}) == "DISTINCT";
    select.top = in.top(&select);
    select.items = in.list([&] { return in.selectItem(); });
    if (into && in.accept("INTO"))
        *into = in.objectName();
    else if (std::ranges::any_of(select.items, [](const auto& item) { return item.identity.has_value(); }))
        in.throwError(kIdentityWithoutInto, {}, in.faulty().line);
    if (in.accept("FROM")) select.from = in.from();
    if (in.accept("WHERE")) select.where = in.condition();
    std::vector<ExprPtr> keys;
    const auto sets = in.accept("GROUP BY") ? groupBy(in, keys) : GroupingSets{{}};
    if (in.accept("HAVING")) select.having = in.condition();
    select.sets = sets.size();
    if (sets.size() > 1 && select.top) in.throwUnsupported("TOP with GROUPING SETS, CUBE or ROLLUP");
    QueryPtr query;
    for (const auto& set : sets) {
        Select one = select;
        for (std::size_t i = 0; i < keys.size(); ++i)
            (std::ranges::count(set, i) ? one.groupBy : one.ungrouped).push_back(keys[i]);
        append(query, select.distinct ? kUnion : kUnionAll, queryOf(line, std::move(one)));
    }
    return query;
}

// INTERSECT binds more tightly than the others.
QueryPtr setOperations(Parser& in, bool intersect) {
    const auto operand = [&] {
        if (!intersect) return setOperations(in, /*intersect=*/true);
        if (!in.at("(")) return selects(in);
        return in.parenthesized([&] { return in.query(); });
    };
    QueryPtr left = operand();
    for (int chain = 0; in.at("INTERSECT") == intersect; in.checkChain(++chain)) {
        const int line = in.peek().line;
        const auto op = in.acceptFirst({kUnionAll, kUnion, kExcept, "INTERSECT"});
        if (op.empty()) break;
        left = queryOf(line, SetOperation{op, left, operand()});
    }
    return left;
}

// FOR XML RAW | PATH [('row')] [, ELEMENTS] [, ROOT [('root')]] [, TYPE]
std::optional<ForXml> forXml(Parser& in) {
    if (!in.accept("FOR XML")) return std::nullopt;
    const auto name = [&](std::string& into) {
        if (in.at("(")) into = in.parenthesized([&] { return in.expectString(); });
    };
    ForXml xml;
    if (in.at("AUTO") || in.at("EXPLICIT")) in.throwUnsupported("FOR XML AUTO and EXPLICIT");
    xml.path = xml.elements = in.accept("PATH");
    if (!xml.path) in.expect("RAW");
    name(xml.row);
    while (in.accept(",")) {
        in.throwIfAt("ELEMENTS XSINIL", "ELEMENTS XSINIL in FOR XML");
        const auto option = in.acceptFirst({"ROOT", "TYPE", "ELEMENTS"});
        xml.typed = xml.typed || option == "TYPE";
        xml.elements = xml.elements || option == "ELEMENTS";
        if (option == "ROOT") name(xml.root = "root");
        if (option.empty()) in.throwUnsupported("the option " + toUpper(in.near()) + " of FOR XML");
    }
    return xml;
}

// An alias may be a string. Without AS, it must not be a keyword of the next clause.
std::string alias(Parser& in, bool isRequired = false) {
    const bool as = in.accept("AS");
    if (in.atName()) return in.expectName();
    return as || isRequired || in.isString(in.peek()) ? in.expectString() : std::string();
}

// VALUES (...), (...) becomes a UNION ALL of one SELECT per row; the alias names the columns. A chain of
// blocks has more rows than a chain of rows may have.
QueryPtr rowValues(Parser& in) {
    constexpr int kBlock = 100;
    QueryPtr rows, block;
    std::size_t width = 0;
    in.expect("VALUES");
    for (int count = 0; count == 0 || in.accept(","); in.checkChain(++count / kBlock)) {
        const int line = in.peek().line;
        Select select;
        for (auto& cell : in.parenthesized([&] { return in.expressions(); }))
            select.items.push_back({cell, {}, {}, {}});
        if (count > 0 && select.items.size() != width) in.throwError(kRowLengthsDiffer, {}, line);
        width = select.items.size();
        if (count > 0 && count % kBlock == 0) append(rows, kUnionAll, std::exchange(block, nullptr));
        append(block, kUnionAll, queryOf(line, std::move(select)));
    }
    append(rows, kUnionAll, block);
    return rows;
}

// Hints may lack WITH.
bool atHints(const Parser& in) {
    constexpr std::string_view kHints =
        "NOLOCK HOLDLOCK UPDLOCK ROWLOCK PAGLOCK TABLOCK TABLOCKX XLOCK READPAST INDEX";
    return in.at("WITH (") || (in.at("(") && hasWord(kHints, toUpper(in.peek(1).raw)));
}

TableRefPtr joins(Parser& in);

TableRefPtr tableRef(Parser& in) {
    for (const auto word : {"INSERT", "UPDATE", "DELETE", "MERGE"})
        in.throwIfAt(word, std::string(word) + " as a source of rows");
    const bool values = in.at("( VALUES");
    if (in.at("(") && !values && !in.atQuery()) return in.parenthesized([&] { return joins(in); });
    TableRefPtr table = tableOf(in.peek().line, {});
    if (in.at("(")) {
        DerivedTable derived{in.parenthesized([&] { return values ? rowValues(in) : in.subquery(); }), {}};
        table->alias = alias(in, /*isRequired=*/true);
        if (in.at("(")) derived.columns = in.columnNames();
        table->node = std::move(derived);
        return table;
    }
    NamedTable named{in.tableName()};
    if (in.at("(") && !atHints(in)) named.arguments = in.argumentsOf(named.name);
    table->node = std::move(named);
    in.tableHints();
    table->alias = alias(in);
    in.tableHints();
    return table;
}

std::string quoted(const std::string& name, const std::string& open, const std::string& close) {
    return open + boost::replace_all_copy(name, close, close + close) + close;
}

// Text of a query of the table `pivoted`. PIVOT (aggregate(value) FOR key IN (names)): SELECT *,
// aggregate(CASE key WHEN 'name' THEN value END) AS name ... UNPIVOT (value FOR key IN (names)), with an
// empty aggregate: SELECT * FROM pivoted CROSS APPLY the rows (name, 'name') whose first value is not NULL.
std::string pivotText(const std::string& aggregate, const std::string& value, const std::string& key,
                      const std::vector<std::string>& names) {
    const std::string ofValue = quoted(value, "[", "]"), ofKey = quoted(key, "[", "]");
    std::string text;
    for (const auto& name : names) {
        const std::string column = quoted(name, "[", "]"), constant = quoted(name, "N'", "'");
        if (aggregate.empty())
            text += (text.empty() ? "SELECT " : " UNION ALL SELECT ") + column + ", CAST(" + constant +
                    " AS sysname) WHERE " + column + " IS NOT NULL";
        else
            text += ", " + aggregate + "(CASE " + ofKey + " WHEN " + constant + " THEN " + ofValue +
                    " END) AS " + column;
    }
    if (!aggregate.empty()) return "SELECT *" + text + " FROM pivoted";
    return "SELECT * FROM pivoted CROSS APPLY (" + text + ") AS [ ] (" + ofValue + ", " + ofKey + ")";
}

// The * of PIVOT, by which it groups, leaves out value and key, that of UNPIVOT the names.
TableRefPtr pivoted(Parser& in, TableRefPtr table) {
    const bool pivots = in.at("PIVOT");
    if (!pivots && !in.at("UNPIVOT")) return table;
    const Temporarily deeper(in.m_depth, in.nextDepth());
    const int line = in.takeToken().line;
    in.expect("(");
    const auto name = [&] { return in.expectName(); };
    const std::string aggregate = pivots ? quoted(name(), "[", "]") : "";
    const std::string value = pivots ? in.parenthesized(name) : name();
    in.expect("FOR");
    const std::string key = name();
    in.expect("IN");
    const auto names = in.columnNames();
    in.expect(")");
    if (!pivots) in.checkChain(static_cast<int>(names.size()));
    QueryPtr query = Parser(pivotText(aggregate, value, key, names), /*quotedIdentifiers=*/true).query();
    Select& select = std::get<Select>(query->body);
    select.pivots = pivots;
    select.items.front().replaced = pivots ? std::vector{value, key} : names;
    TableRefPtr& from = select.from.front();
    (pivots ? from : std::get<Join>(from->node).left) = std::move(table);
    table = tableOf(line, DerivedTable{std::move(query), {}});
    table->alias = alias(in, /*isRequired=*/true);
    return pivoted(in, std::move(table));
}

TableRefPtr joins(Parser& in) {
    const Temporarily deeper(in.m_depth, in.nextDepth());
    TableRefPtr left = pivoted(in, tableRef(in));
    for (int chain = 0;; in.checkChain(++chain)) {
        const auto begin =
            in.acceptFirst({"CROSS APPLY", "OUTER APPLY", "JOIN", "CROSS", "INNER", "LEFT OUTER", "LEFT",
                            "RIGHT OUTER", "RIGHT", "FULL OUTER", "FULL"});
        if (begin.empty()) return left;
        const bool applies = begin.ends_with("APPLY"), isWhole = applies || begin == "JOIN";
        const auto kind = begin == "JOIN"          ? "INNER"
                          : begin == "OUTER APPLY" ? "LEFT"
                                                   : begin.substr(0, begin.find(' '));
        if (!isWhole) in.acceptAny({"LOOP", "HASH", "MERGE", "REMOTE"});  // hints have no effect
        if (!isWhole) in.expect("JOIN");
        const int line = in.peek().line;
        const bool hasOn = !applies && kind != "CROSS";  // a JOIN b JOIN c ON ... ON ...
        Join join{kind, left, hasOn ? joins(in) : tableRef(in), nullptr, applies};
        if (hasOn) in.expect("ON");
        if (hasOn) join.on = in.condition();
        left = pivoted(in, tableOf(line, std::move(join)));
    }
}

}  // namespace

bool Parser::atQuery() const {
    std::size_t ahead = 0;
    while (at("(", ahead)) ++ahead;
    return at("SELECT", ahead) || (ahead == 0 && at("WITH"));
}

QueryPtr Parser::queryBehind(std::vector<CommonTable> with) {
    const Temporarily deeper(m_depth, nextDepth());
    const int line = peek().line;
    QueryPtr query = setOperations(*this, /*intersect=*/false);
    query->line = line;
    const bool whole = !query->orderBy.empty() || query->xml;  // possible for a query in parentheses
    if (whole && (at("ORDER") || at("FOR XML"))) throwSyntaxError();
    query->with.insert(query->with.begin(), std::move_iterator(with.begin()), std::move_iterator(with.end()));
    if (at("ORDER")) query->orderBy = orderBy();
    if (!query->orderBy.empty() && accept("OFFSET")) {
        query->offset = expression();
        expectAny({"ROWS", "ROW"});
        if (acceptAny({"FETCH NEXT", "FETCH FIRST"})) {
            query->fetch = expression();
            expectAny({"ROWS ONLY", "ROW ONLY"});
        }
    }
    if (auto xml = forXml(*this)) query->xml = std::move(xml);
    if (const auto most = options()) query->maxRecursion = most;
    return query;
}

// Nested query: ORDER BY needs TOP, OFFSET or FOR XML.
QueryPtr Parser::subquery() {
    if (m_scalarOnly) throwError(kSubqueryNotAllowedHere);
    QueryPtr query = this->query();
    const auto* select = std::get_if<Select>(&query->body);
    if (!query->orderBy.empty() && !(select && select->top) && !query->offset && !query->xml)
        throwError(kOrderByNotAllowedHere, {}, query->orderBy.front().value->line);
    return query;
}

std::vector<CommonTable> Parser::commonTables() {
    if (!accept("WITH")) return {};
    throwIfAt("XMLNAMESPACES", "WITH XMLNAMESPACES");
    std::set<std::string> names;
    return list([this, &names] {
        CommonTable table{expectName(), {}, nullptr};
        if (!names.insert(toLower(table.name)).second) throwError(kRepeatedCommonTableName, {table.name});
        if (at("(")) table.columns = columnNames();
        expect("AS");
        table.query = parenthesized([this] { return subquery(); });
        return table;
    });
}

ExprPtr Parser::top(Select* select) {
    if (!accept("TOP")) return nullptr;
    if (!at("(") && !(select && peek().kind == TokenKind::Number)) throwSyntaxError();
    ExprPtr count = primary();
    const auto* literal = std::get_if<Literal>(&count->node);
    if (literal && literal->constant.value == Value(std::int64_t{100}) && accept("PERCENT"))  // all rows
        count = makeExpr(count->line,
                         Literal{{std::numeric_limits<std::int64_t>::max(), simpleType(TypeId::BigInt)}});
    if (!select) throwIfAt("PERCENT", "TOP ... PERCENT of a change");
    if (select) select->percent = accept("PERCENT");
    if (select) select->ties = accept("WITH TIES");
    return count;
}

SelectItem Parser::selectItem() {
    SelectItem item;
    std::size_t ahead = 0;  // of * or t.*
    while (atName(ahead) && at(".", ahead + 1)) ahead += 2;
    if (at("*", ahead)) {
        for (; !accept("*"); accept(".")) item.starOf.push_back(expectName());
        return item;
    }
    if (atVariable() && peek(1).raw.ends_with('=')) {
        item.variable = expectVariable();
        item.value = assignedValue(item.variable);
        return item;
    }
    if ((atName() || isString(peek())) && at("=", 1)) {
        item.alias = alias(*this);
        takeToken();
    }
    if (const int line = peek().line; accept("IDENTITY (")) {
        item.identity.emplace(type(TypeUse::Declaration), Identity{});
        if (accept(",")) item.identity->second = identity();
        expect(")");
        item.value = makeExpr(line, Literal{});
    } else {
        item.value = expression();
    }
    if (item.alias.empty()) item.alias = alias(*this);
    return item;
}

std::optional<BinaryOp> Parser::assignmentOperator() {
    constexpr std::string_view kSigns = "+-*/%&|^";  // in the order of BinaryOp
    const std::string_view word = peek().raw;
    const auto sign = word.size() == 2 && word[1] == '=' ? kSigns.find(word[0]) : kSigns.npos;
    expect(sign == kSigns.npos ? "=" : word);
    return sign == kSigns.npos ? std::nullopt : std::optional(static_cast<BinaryOp>(sign));
}

// = value, or += value, of a variable
ExprPtr Parser::assignedValue(const std::string& variable) {
    const int line = peek().line;
    const auto op = assignmentOperator();
    ExprPtr value = expression();
    if (!op) return value;
    return makeExpr(line, Binary{*op, makeExpr(line, VariableRef{variable}), std::move(value)});
}

ObjectName Parser::tableName() {
    for (const auto word : {"OPENROWSET", "OPENDATASOURCE", "OPENQUERY", "OPENJSON", "OPENXML", "CHANGETABLE",
                            "FN_LISTEXTENDEDPROPERTY"})
        if (at(word) || (at("SYS .") && at(word, 2))) throwUnsupported(word);
    if (!atVariable()) return objectName();
    const Token& name = takeToken();
    throwIfAt(".", "methods of xml");
    if (!m_declaredTables.contains(name.raw)) throwError(kUndeclaredTableVariable, {name.raw}, name.line);
    return {{}, {}, std::string(name.raw), name.line};
}

// Hints choose locks and indexes. They do not change the rows.
void Parser::tableHints() {
    if (!atHints(*this)) return;
    accept("WITH");
    skipParenthesized();
}

std::vector<TableRefPtr> Parser::from() {
    return list([this] { return joins(*this); });
}

std::vector<OrderItem> Parser::orderBy() {
    expect("ORDER");
    expect("BY");
    return list([this] { return OrderItem{expression(), acceptDescending()}; });
}

// Of the query hints, only MAXRECURSION changes a result.
std::optional<std::int64_t> Parser::options() {
    constexpr std::int64_t kMost = 32767;
    std::optional<std::int64_t> most;
    if (!accept("OPTION")) return most;
    expect("(");
    while (!accept(")")) {
        if (accept("MAXRECURSION"))
            most = expectInteger();
        else if (at("("))
            skipParenthesized();
        else if (takeToken().kind == TokenKind::End)
            throwSyntaxError();
        if (most > kMost) throwError(kMaxRecursionTooLarge, {std::to_string(*most)}, last().line);
    }
    return most;
}

}  // namespace tsql
