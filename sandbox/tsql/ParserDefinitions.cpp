// INSERT, UPDATE, DELETE; CREATE, ALTER and DROP.
#include "Messages.h"
#include "Parser.h"
#include "Text.h"

namespace tsql {

using namespace ast;

Statement::Node Parser::parseInsert() {
    take();
    Insert node;
    if (at("TOP")) unsupported("INSERT TOP");
    accept("INTO");
    node.table = tableName();
    parseTableHints();
    if (at("(") && !at("SELECT", 1) && !at("(", 1)) node.columns = parseColumnNames();
    node.output = parseOutput();
    if (acceptAll({"DEFAULT", "VALUES"})) {
        node.defaultValues = true;
    } else if (accept("VALUES")) {
        const auto cell = [this] { return accept("DEFAULT") ? ExprPtr() : expression(); };
        node.rows = list([&] { return parenthesized([&] { return list(cell); }); });
    } else if (at("EXEC") || at("EXECUTE")) {
        node.execute = parseStatement();
    } else if (atQuery()) {
        node.query = parseQuery();
    } else {
        syntaxError();
    }
    return node;
}

// WITH ... before a query or a change.
Statement::Node Parser::parseCommonTables() {
    auto with = parseWith();
    const auto change = [&](Statement::Node node) {
        std::visit(
            [&](auto& each) {
                if constexpr (requires { each.with; }) each.with = std::move(with);
            },
            node);
        return node;
    };
    if (at("INSERT")) return change(parseInsert());
    if (at("UPDATE")) return change(parseUpdate());
    if (at("DELETE")) return change(parseDelete());
    return SelectStatement{parseQueryBehind(std::move(with))};
}

std::optional<Output> Parser::parseOutput() {
    if (!accept("OUTPUT")) return std::nullopt;
    Output output{list([this] { return parseSelectItem(); }), {}, {}};
    if (!accept("INTO")) return output;
    output.into = tableName();
    if (at("(")) output.columns = parseColumnNames();
    return output;
}

std::shared_ptr<const CreateTable> Parser::parseTableVariable(const Token& name) {
    expect("TABLE");
    CreateTable table{{{}, {}, std::string(name.raw), name.line}, {}, {}};
    parenthesized([&] {
        do parseTableElement(table);
        while (accept(","));
        return 0;
    });
    return std::make_shared<const CreateTable>(std::move(table));
}

SetClause Parser::parseSetClause() {
    SetClause clause;
    if (peek().kind == TokenKind::Variable) {
        clause.variable = expectVariable();
        expect("=");
        if (!atName() || !at("=", 1)) unsupported("UPDATE ... SET @variable = value without a column");
    }
    clause.column = expectName();
    while (accept(".")) clause.column = expectName();
    clause.op = parseAssignmentOperator();
    if (!accept("DEFAULT")) clause.value = expression();
    return clause;
}

Statement::Node Parser::parseUpdate() {
    take();
    Update node;
    if (at("STATISTICS")) unsupported("UPDATE STATISTICS");
    node.top = parseTop();
    node.table = tableName();
    parseTableHints();
    expect("SET");
    node.sets = list([this] { return parseSetClause(); });
    const std::size_t output = m_next;
    node.output = parseOutput();
    for (std::size_t i = output; i < m_next; ++i)
        if (sameWord(m_tokens[i].raw, "deleted")) unsupported("deleted rows in the OUTPUT of UPDATE");
    if (accept("FROM")) node.from = parseFrom();
    if (at("WHERE") && at("CURRENT", 1)) unsupported("WHERE CURRENT OF");
    if (accept("WHERE")) node.where = condition();
    parseOptions(nullptr);
    return node;
}

Statement::Node Parser::parseDelete() {
    take();
    Delete node;
    node.top = parseTop();
    accept("FROM");
    node.table = tableName();
    parseTableHints();
    node.output = parseOutput();
    if (accept("FROM")) node.from = parseFrom();
    if (at("WHERE") && at("CURRENT", 1)) unsupported("WHERE CURRENT OF");
    if (accept("WHERE")) node.where = condition();
    return node;
}

Statement::Node Parser::parseCreate() {
    take();
    const bool alter = acceptAll({"OR", "ALTER"});
    if (atModule()) return parseModule(true, alter);
    if (at("TABLE")) return parseCreateTable();
    if (accept("DATABASE")) {
        CreateDatabase node{expectName()};
        if (at("ON") || at("COLLATE") || at("LOG")) unsupported("options of CREATE DATABASE");
        return node;
    }
    const bool unique = accept("UNIQUE");
    if (!accept("CLUSTERED")) accept("NONCLUSTERED");
    if (at("INDEX")) return parseCreateIndex(unique);
    if (peek().kind != TokenKind::Word) syntaxError();
    unsupported("CREATE " + toUpper(peek().raw));
}

bool Parser::atModule() const {
    return at("PROCEDURE") || at("PROC") || at("FUNCTION") || at("VIEW");
}

Statement::Node Parser::parseAlter() {
    take();
    if (atModule()) return parseModule(false, true);
    if (at("TABLE")) return parseAlterTable();
    if (peek().kind != TokenKind::Word) syntaxError();
    unsupported("ALTER " + toUpper(peek().raw));
}

bool Parser::acceptIfExists() {
    return acceptAll({"IF", "EXISTS"});
}

Statement::Node Parser::parseDrop() {
    take();
    constexpr std::pair<std::string_view, ObjectKind> kKinds[] = {
        {"TABLE", ObjectKind::Table},    {"PROCEDURE", ObjectKind::Procedure},
        {"PROC", ObjectKind::Procedure}, {"FUNCTION", ObjectKind::Function},
        {"INDEX", ObjectKind::Index},    {"DATABASE", ObjectKind::Database},
        {"VIEW", ObjectKind::View},
    };
    for (const auto& [word, kind] : kKinds) {
        if (!accept(word)) continue;
        Drop node{kind, {}, acceptIfExists()};
        node.names = list([this] { return objectName(); });
        if (kind == ObjectKind::Index && accept("ON")) node.names.front().schema = objectName().name;
        return node;
    }
    if (peek().kind != TokenKind::Word) syntaxError();
    unsupported("DROP " + toUpper(peek().raw));
}

Statement::Node Parser::parseCreateTable() {
    take();
    CreateTable node{objectName(), {}, {}};
    expect("(");
    do {
        if (at(")") && !node.columns.empty()) break;  // a comma may close the list
        parseTableElement(node);
    } while (accept(","));
    expect(")");
    if (accept("ON")) expectName();  // a file group: there is one
    if (at("TEXTIMAGE_ON")) {
        take();
        expectName();
    }
    return node;
}

void Parser::parseTableElement(CreateTable& table) {
    Constraint constraint{};
    if (parseConstraint(constraint, true))
        table.constraints.push_back(std::move(constraint));
    else
        table.columns.push_back(parseColumnDefinition());
}

ColumnDefinition Parser::parseColumnDefinition() {
    ColumnDefinition column;
    column.name = expectName();
    if (at("AS")) unsupported("computed columns");
    column.type = type(TypeUse::Declaration);
    while (parseColumnOption(column)) continue;
    return column;
}

bool Parser::parseColumnOption(ColumnDefinition& column) {
    Constraint constraint{};
    if (acceptAll({"NOT", "NULL"}))
        column.nullable = false;
    else if (accept("NULL"))
        column.nullable = true;
    else if (at("COLLATE"))
        parseCollation();
    else if (accept("ROWGUIDCOL"))
        return true;
    else if (acceptAll({"NOT", "FOR", "REPLICATION"}))
        return true;
    else if (accept("IDENTITY")) {
        column.identity = true;
        if (!accept("(")) return true;
        column.seed = expectInteger();
        expect(",");
        if (expectInteger() != 1) unsupported("an IDENTITY increment other than 1");
        expect(")");
    } else if (parseConstraint(constraint, false)) {
        if (constraint.columns.empty()) constraint.columns = {column.name};
        column.constraints.push_back(std::move(constraint));
    } else {
        return false;
    }
    return true;
}

bool Parser::parseConstraint(Constraint& constraint, bool ofTable) {
    const bool named = accept("CONSTRAINT");
    if (named) constraint.name = expectName();
    const Token& begin = peek();
    if (acceptAll({"PRIMARY", "KEY"})) {
        constraint.kind = ConstraintKind::PrimaryKey;
        parseIndexColumns(constraint, ofTable);
    } else if (accept("UNIQUE")) {
        constraint.kind = ConstraintKind::Unique;
        parseIndexColumns(constraint, ofTable);
    } else if (accept("CHECK")) {
        constraint.kind = ConstraintKind::Check;
        const Token& first = peek();
        constraint.check = parenthesized([this] { return condition(); });
        constraint.text = textSince(first);
    } else if (accept("DEFAULT")) {
        constraint.kind = ConstraintKind::Default;
        const Token& first = peek();
        parseUnary();
        constraint.text = textSince(first);
        if (ofTable && accept("FOR")) constraint.columns = {expectName()};
    } else if (acceptAll({"FOREIGN", "KEY"})) {
        constraint.columns = at("(") ? parseColumnNames() : std::vector<std::string>();
        parseReferences(constraint);
    } else if (at("REFERENCES")) {
        parseReferences(constraint);
    } else {
        if (named) syntaxError();
        return false;
    }
    constraint.source = textSince(begin);
    return true;
}

void Parser::parseIndexColumns(Constraint& constraint, bool ofTable) {
    if (!accept("CLUSTERED")) accept("NONCLUSTERED");
    if (ofTable || at("("))
        constraint.columns = parenthesized([this] {
            return list([this] {
                std::string name = expectName();
                if (!accept("ASC")) accept("DESC");
                return name;
            });
        });
    parseTableHints();  // WITH (PAD_INDEX = ...): storage options
    if (accept("ON")) expectName();
}

void Parser::parseReferences(Constraint& constraint) {
    constraint.kind = ConstraintKind::ForeignKey;
    expect("REFERENCES");
    constraint.references = objectName().name;
    if (at("(")) constraint.referencedColumns = parseColumnNames();
    while (accept("ON")) {
        const bool onDelete = accept("DELETE");
        if (!onDelete) expect("UPDATE");
        if (acceptAll({"NO", "ACTION"})) continue;
        if (!onDelete || !at("CASCADE")) unsupported("this action of a foreign key");
        take();
        constraint.cascade = true;
    }
}

Statement::Node Parser::parseCreateIndex(bool unique) {
    take();
    CreateIndex node;
    node.unique = unique;
    node.name = expectName();
    expect("ON");
    node.table = objectName();
    node.columns = parenthesized([this] {
        return list([this] {
            std::string name = expectName();
            const bool descending = accept("DESC");
            if (!descending) accept("ASC");
            return std::pair(std::move(name), descending);
        });
    });
    if (accept("INCLUDE")) parseColumnNames();
    if (at("WHERE")) unsupported("filtered indexes");
    parseTableHints();
    return node;
}

Statement::Node Parser::parseAlterTable() {
    take();
    AlterTable node{{objectName(), {}, {}}, {}, {}, {}};
    const auto checked = acceptAll({"WITH", "CHECK"});
    if (at("NOCHECK") || at("NOCHECK", 1)) unsupported("constraints that are not checked");
    if (!checked && acceptAll({"CHECK", "CONSTRAINT"})) {  // each constraint is in force already
        if (!accept("ALL")) list([this] { return expectName(); });
    } else if (accept("DROP")) {
        parseDropped(node);
    } else if (acceptAll({"ALTER", "COLUMN"})) {
        node.altered = parseColumnDefinition();
    } else if (accept("ADD")) {
        do parseTableElement(node.added);
        while (accept(","));
    } else {
        if (peek().kind != TokenKind::Word) syntaxError();
        unsupported("ALTER TABLE " + toUpper(peek().raw));
    }
    return node;
}

// CONSTRAINT is what a bare name means.
void Parser::parseDropped(AlterTable& table) {
    bool columns = false;
    do {
        if (accept("COLUMN"))
            columns = true;
        else if (accept("CONSTRAINT"))
            columns = false;
        table.ifExists = acceptIfExists() || table.ifExists;
        (columns ? table.dropColumns : table.dropConstraints).push_back(expectName());
    } while (accept(","));
}

// The rest of the batch is the module's body.
Statement::Node Parser::parseModule(bool create, bool alter) {
    if (m_next > (create && alter ? 3U : 1U) || m_depth > 1)
        throw SyntaxError(sqlError(111, {(at("VIEW") ? " " : "/ALTER ") + toUpper(peek().raw)}), peek().line);
    if (accept("VIEW")) return parseView(create, alter);
    CreateModule module;
    module.create = create;
    module.alter = alter;
    module.function = sameWord(take().raw, "FUNCTION");
    module.name = objectName();
    if (!module.name.database.empty())
        throw SyntaxError(sqlError(166, {module.function ? "FUNCTION" : "PROCEDURE"}), module.name.line);
    const bool bracket = accept("(");
    if (peek().kind == TokenKind::Variable) module.parameters = list([this] { return parseParameter(); });
    if (bracket)
        expect(")");
    else if (module.function)
        syntaxError();
    if (module.function) {
        expect("RETURNS");
        if (peek().kind == TokenKind::Variable) unsupported("table-valued functions of several statements");
        if (accept("TABLE")) {
            parseModuleOptions();
            accept("AS");
            expect("RETURN");
            return parseModuleQuery(std::move(module));
        }
        module.returns = type(TypeUse::Declaration);
    }
    parseModuleOptions();
    if (!module.function)
        expect("AS");
    else
        accept("AS");
    if (module.function && !at("BEGIN")) syntaxError();
    module.body = batch();
    return module;
}

// RECOMPILE, SCHEMABINDING: change no result.
void Parser::parseModuleOptions() {
    if (accept("WITH")) list([this] { return take().raw; });
}

Statement::Node Parser::parseView(bool create, bool alter) {
    CreateModule module;
    module.create = create;
    module.alter = alter;
    module.name = objectName();
    if (at("(")) module.columns = parseColumnNames();
    parseModuleOptions();
    expect("AS");
    return parseModuleQuery(std::move(module));
}

// The query is the rest of the batch.
Statement::Node Parser::parseModuleQuery(CreateModule module) {
    const bool bracket = at("(") && accept("(");
    module.query = parseSubquery();
    if (bracket) expect(")");
    acceptAll({"WITH", "CHECK", "OPTION"});  // for changes through the view, which are refused
    accept(";");
    if (peek().kind != TokenKind::End) syntaxError();
    return module;
}

Parameter Parser::parseParameter() {
    const Token& name = take();
    if (name.kind != TokenKind::Variable) syntaxError();
    accept("AS");
    Parameter parameter{std::string(name.raw), type(TypeUse::Declaration), nullptr, false};
    if (accept("=")) parameter.byDefault = parseDefaultConstant();
    if (accept("OUTPUT") || accept("OUT")) parameter.output = true;
    if (at("READONLY")) unsupported("table-valued parameters");
    if (!m_declared.insert(lowerAscii(name.raw)).second)
        throw SyntaxError(sqlError(134, {name.raw}), name.line);
    return parameter;
}

ExprPtr Parser::parseDefaultConstant() {
    if (!atName()) return parseUnary();
    const Token& word = take();
    return std::make_unique<Expr>(Expr{word.line, Literal{textLiteral(unquoted(word), true)}});
}

}  // namespace tsql
