// INSERT, UPDATE, DELETE, MERGE.

#include "syntax/Parser.h"

namespace tsql {

namespace {

std::optional<Output> output(Parser& in) {
    if (!in.accept("OUTPUT")) return std::nullopt;
    Output output{in.list([&] { return in.selectItem(); }), {}, {}};
    if (!in.accept("INTO")) return output;
    output.into = in.tableName();
    if (in.at("(")) output.columns = in.columnNames();
    in.throwIfAt("OUTPUT", "OUTPUT INTO together with OUTPUT");
    return output;
}

std::vector<ExprPtr> insertedRow(Parser& in) {
    return in.inList([&] { return in.accept("DEFAULT") ? ExprPtr() : in.expression(); });
}

Insert insert(Parser& in) {
    Insert node;
    node.top = in.top();
    in.accept("INTO");
    node.table = in.tableName();
    in.tableHints();
    if (in.at("(") && !in.at("( SELECT") && !in.at("( (")) node.columns = in.columnNames();
    node.output = output(in);
    if (in.accept("VALUES")) {
        const int line = in.peek().line;
        constexpr std::size_t kMostRows = 1000;
        node.rows = in.list([&] { return insertedRow(in); });
        if (node.rows.size() > kMostRows) in.throwError(kTooManyInsertRows);
        for (const auto& row : node.rows)
            if (row.size() != node.rows.front().size()) in.throwError(kRowLengthsDiffer, {}, line);
    } else if (in.at("EXEC") || in.at("EXECUTE")) {
        if (node.top) in.throwUnsupported("INSERT TOP ... EXECUTE");
        if (node.output) in.throwUnsupported("INSERT ... OUTPUT ... EXECUTE");
        node.execute = in.statement();
    } else if (in.atQuery()) {
        node.query = in.query();
    } else {
        in.expect("DEFAULT VALUES");
        node.defaultValues = true;
    }
    return node;
}

// INSERT BULK table (column type, ...) [WITH (option, ...)]
InsertBulk insertBulk(Parser& in) {
    InsertBulk node{in.tableName(), {}};
    node.columns = in.inList([&] {
        std::string name = in.expectName();
        in.type(TypeUse::Cast);
        if (in.at("COLLATE")) in.collation();
        return name;
    });
    if (!in.accept("WITH")) return node;
    const WordSet options = in.skipParenthesized();
    node.keepsNulls = options.contains("KEEP_NULLS");
    node.firesTriggers = options.contains("FIRE_TRIGGERS");
    return node;
}

SetClause setClause(Parser& in) {
    SetClause clause;
    if (in.atVariable()) {
        clause.variable = in.expectVariable();
        in.expect("=");
        if (!in.atName() || !in.at("=", 1))
            in.throwUnsupported("UPDATE ... SET @variable = value without a column");
    }
    clause.column = in.expectName();
    while (in.accept(".")) clause.table = std::exchange(clause.column, in.expectName());
    clause.op = in.assignmentOperator();
    if (!in.accept("DEFAULT")) clause.value = in.expression();
    return clause;
}

// UPDATE or DELETE
template <typename Node>
Node changeOfRows(Parser& in) {
    Node node;
    node.top = in.top();
    if constexpr (std::is_same_v<Node, Delete>) in.accept("FROM");
    node.table = in.tableName();
    in.tableHints();
    if constexpr (std::is_same_v<Node, Update>) {
        in.expect("SET");
        node.sets = in.list([&] { return setClause(in); });
    }
    node.output = output(in);
    if (in.accept("FROM")) node.from = in.from();
    if (in.accept("WHERE")) node.where = in.condition();
    node.maxRecursion = in.options();
    return node;
}

// What follows WHEN.
MergeClause mergeClause(Parser& in, const std::vector<MergeClause>& before) {
    const int line = in.peek().line;
    const auto rows = in.expectAny({kMatchedRows, kOldRows, kNewRows});
    if (rows == kNewRows) in.accept("BY TARGET");
    MergeClause clause{rows, in.accept("AND") ? in.condition() : nullptr, {}};
    in.expect("THEN");
    if (rows == kNewRows) {
        in.expect("INSERT");
        auto& insert = clause.change.emplace<Insert>();
        if (in.at("(")) insert.columns = in.columnNames();
        in.throwIfAt("DEFAULT", "DEFAULT VALUES in MERGE");
        in.expect("VALUES");
        insert.rows.push_back(insertedRow(in));
    } else if (in.accept("UPDATE SET")) {
        clause.change.emplace<Update>().sets = in.list([&] { return setClause(in); });
    } else {
        in.expect("DELETE");
    }
    const std::string words = "WHEN " + std::string(rows);
    for (const auto& each : before) {
        if (each.rows != rows) continue;
        if (each.verb() == clause.verb()) in.throwError(kMergeActionRepeated, {words, each.verb()}, line);
        if (!each.condition) in.throwError(kMergeClauseUnreachable, {words, words}, line);
    }
    return clause;
}

// MERGE [INTO] table [AS alias] USING source ON condition WHEN ...
Merge merge(Parser& in) {
    Merge node;
    in.accept("INTO");
    node.table = in.tableName();
    in.tableHints();
    node.alias = in.accept("AS") || !in.at("USING") ? in.expectName() : node.table.name;
    in.expect("USING");
    node.source = in.from();
    if (node.source.size() > 1) in.throwSyntaxError();
    in.expect("ON");
    node.where = in.condition();
    while (in.accept("WHEN")) node.clauses.push_back(mergeClause(in, node.clauses));
    if (node.clauses.empty()) in.throwSyntaxError();
    node.output = output(in);
    node.maxRecursion = in.options();
    if (!in.at(";")) in.throwError(kMergeWithoutSemicolon, {}, in.faulty().line);
    return node;
}

const TableRef* findTarget(const TableRef& table, std::string_view name) {
    if (const auto* join = std::get_if<Join>(&table.node)) {
        const TableRef* left = findTarget(*join->left, name);
        return left ? left : findTarget(*join->right, name);
    }
    const bool isNamed = table.alias.empty();
    const std::string& exposed = isNamed ? std::get<NamedTable>(table.node).name.name : table.alias;
    return sameText(exposed, name) ? &table : nullptr;
}

}  // namespace

TableRef targetOf(const Change& change) {
    for (const auto& table : change.from)
        if (const auto* found = findTarget(*table, change.table.name); found && change.table.schema.empty())
            return *found;
    return {NamedTable{change.table}, {}};
}

Statement::Node parseRows(Parser& in) {
    if (in.accept("INSERT BULK")) return insertBulk(in);
    auto with = in.commonTables();
    const auto change = [&](auto node) -> Statement::Node {
        node.with = std::move(with);
        return node;
    };
    if (in.accept("INSERT")) return change(insert(in));
    if (in.accept("UPDATE")) return change(changeOfRows<Update>(in));
    if (in.accept("DELETE")) return change(changeOfRows<Delete>(in));
    if (in.accept("MERGE")) return change(merge(in));
    if (!in.atQuery()) in.throwSyntaxError();
    SelectStatement statement;
    in.m_into = &statement.into;
    statement.query = in.queryBehind(std::move(with));
    return statement;
}

}  // namespace tsql
