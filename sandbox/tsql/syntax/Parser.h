// Recursive-descent parser of a batch. Productions that only one source file uses are functions of that file.
#pragma once

#include "syntax/Ast.h"
#include "syntax/Lexer.h"
#include "types/Finally.h"
#include "types/Text.h"

namespace tsql {

struct Batch {
    Block statements;
    std::vector<Local> locals = {};
};

// Returns the name, id and text of a user-defined type, if there is one of that name.
using FindType = std::function<std::optional<UserType>(const ObjectName& name)>;
// Throws SyntaxError; nothing of the batch may run then. `quotedIdentifiers`: "x" is a name, else a string.
std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers, FindType find = {});
// A stored expression, such as the default of a column.
ExprPtr parseExpression(std::string_view text);
Constraint parseConstraint(std::string_view text);  // ObjectInfo::source
ObjectName parseObjectName(std::string_view text);
SqlType parseType(std::string_view text);

class Parser {
  public:
    Parser(std::string_view text, bool quotedIdentifiers, FindType findType = {});

    // ---- tokens (Parser.cpp). A phrase is keywords and symbols separated by blanks: "ORDER BY".
    const Token& peek(std::size_t ahead = 0) const {
        return m_tokens[std::min(m_next + ahead, m_tokens.size() - 1)];
    }
    const Token& last() const { return m_tokens[m_next - 1]; }  // that was consumed
    const Token& takeToken();
    bool at(std::string_view phrase, std::size_t ahead = 0) const { return match(phrase, ahead) > 0; }
    bool accept(std::string_view phrase);
    // Consumes and returns the first phrase that matches; empty if none does.
    std::string_view acceptFirst(std::initializer_list<std::string_view> phrases) {
        const auto* found = std::ranges::find_if(phrases, [this](auto each) { return accept(each); });
        return found == phrases.end() ? std::string_view() : *found;
    }
    bool acceptAny(std::initializer_list<std::string_view> phrases) { return !acceptFirst(phrases).empty(); }
    void expect(std::string_view phrase) { expectAny({phrase}); }
    std::string_view expectAny(std::initializer_list<std::string_view> phrases) {
        const std::string_view phrase = acceptFirst(phrases);
        if (phrase.empty()) throwSyntaxError();
        return phrase;
    }
    bool acceptDescending() { return acceptFirst({"DESC", "ASC"}) == "DESC"; }
    // Consumes the first phrase of `table` that matches. Returns its value, or null if none matches.
    auto acceptOneOf(const auto& table) -> decltype(&std::begin(table)->second) {
        const auto found = std::ranges::find_if(table, [this](const auto& row) { return accept(row.first); });
        return found == std::end(table) ? nullptr : &found->second;
    }
    std::int64_t expectInteger();
    bool isString(const Token& token) const;
    std::string expectString();
    bool atName(std::size_t ahead = 0) const;
    std::string expectName();
    std::string takeName();  // of any token. Throws SyntaxError 103 above 128 characters.
    bool atVariable() const { return peek().kind == TokenKind::Variable; }
    bool atTableVariable() const { return atVariable() && m_declaredTables.contains(peek().raw); }
    bool atCursorVariable() const { return atVariable() && m_declaredCursors.contains(peek().raw); }
    std::string expectVariable(int state = 1);  // state of the error
    ObjectName objectName();
    SqlType type(TypeUse use, UserType* user = nullptr);  // receives a user-defined type; null: no tables
    Identity identity();                                  // seed, increment
    void collation();
    WordSet skipParenthesized();                     // returns the tokens
    std::string textSince(std::size_t token) const;  // as written, from that token to the last consumed one
    std::size_t position() const { return m_next; }
    const Token& faulty() const;                             // token that an error refers to
    std::string near() const { return unquoted(faulty()); }  // as errors quote it
    [[noreturn]] void throwSyntaxError() const;
    void throwIfUnsupported() const;  // for a construct at the next token
    // Throws the error of that number. line: 0 for that of the next token; state: 0 for the usual one.
    [[noreturn]] void throwError(int number, std::initializer_list<std::string_view> values = {},
                                 int line = 0, int state = 0) const {
        throw SyntaxError(sqlError(number, values, state), line ? line : peek().line);
    }
    [[noreturn]] void throwUnsupported(std::string_view construct) const {
        throw SyntaxError(unsupported(construct), faulty().line);
    }
    void throwIfAt(std::string_view phrase, std::string_view construct) const {
        if (at(phrase)) throwUnsupported(construct);
    }

    auto list(auto item, std::string_view separator = ",") {
        std::vector<decltype(item())> items;
        do items.push_back(item());
        while (accept(separator));
        return items;
    }
    auto parenthesized(auto item) {
        expect("(");
        auto inner = item();
        expect(")");
        return inner;
    }
    // (item, item ...)
    auto inList(auto item) {
        return parenthesized([&] { return list(item); });
    }
    std::vector<std::string> columnNames() { return inList(std::bind_front(&Parser::expectName, this)); }

    // m_depth inside a recursive production. Throws SyntaxError 191 beyond the limit.
    int nextDepth() const;
    void checkChain(int length) const;

    // ---- expressions (ParserExpressions.cpp)
    ExprPtr expression();
    ExprPtr condition();
    ExprPtr scalar(ExprPtr (Parser::*read)());  // without subqueries
    ExprPtr expressionOrCondition();
    ExprPtr operators(int loosest);
    ExprPtr unary();
    ExprPtr primary();
    std::vector<ExprPtr> expressions() { return list(std::bind_front(&Parser::expression, this)); }
    std::vector<ExprPtr> argumentsOf(const ObjectName& function);  // in parentheses

    // ---- queries (ParserQueries.cpp)
    bool atQuery() const;
    QueryPtr query() { return queryBehind(commonTables()); }
    QueryPtr queryBehind(std::vector<CommonTable> with);
    QueryPtr subquery();
    std::vector<CommonTable> commonTables();
    ExprPtr top(Select* select = nullptr);  // null: of a change
    SelectItem selectItem();
    std::optional<BinaryOp> assignmentOperator();
    ExprPtr assignedValue(const std::string& variable);
    ObjectName tableName();
    void tableHints();
    std::vector<TableRefPtr> from();
    std::vector<OrderItem> orderBy();
    std::optional<std::int64_t> options();  // returns MAXRECURSION

    // ---- statements (ParserStatements.cpp)
    Block batch();
    Block statements(std::string_view end);
    StatementPtr statement();
    Declaration declaration(bool isParameter);
    bool atConstant() const;
    ExprPtr constant();
    ExprPtr wordOrConstant();

    // ---- changes of data and schema (ParserDefinitions.cpp)
    std::optional<Constraint> acceptConstraint(bool ofTable);
    CreateTable tableVariable(const std::string& name);
    UserType definition(UserType made);  // behind its name

    // State that earlier and enclosing statements pass on.
    bool m_quotedIdentifiers;
    int m_loops = 0;
    int m_depth = 0;
    std::optional<ObjectName>* m_into = nullptr;  // receives the INTO of the next SELECT, if it may have one
    const CreateModule* m_module = nullptr;       // module whose body is being parsed
    std::string m_procedure;                      // procedure that the text defines
    std::vector<Local> m_locals;
    WordSet m_labels;
    std::vector<std::pair<std::string, int>> m_gotos;  // labels, lines

  private:
    // Number of tokens that the phrase matches; 0 for no match.
    std::size_t match(std::string_view phrase, std::size_t ahead) const {
        const std::string_view word = peek(ahead).raw;
        const bool mayMatch =  // most phrases differ in the first letter
            word.empty() || phrase.empty() || upperAscii(word.front()) == upperAscii(phrase.front());
        return mayMatch ? matchWhole(phrase, ahead) : 0;
    }
    std::size_t matchWhole(std::string_view phrase, std::size_t ahead) const;

    std::vector<Token> m_tokens;
    FindType m_findType;
    std::size_t m_next = 0;
    bool m_scalarOnly = false;
    WordSet m_declared;  // variables
    WordSet m_declaredTables, m_declaredCursors;
    WordSet m_temporary;  // tables that the text creates
};

// ---- statements of ParserDefinitions.cpp; the caller has consumed the keyword in their names
Statement::Node parseRows(Parser& in);  // SELECT, INSERT, UPDATE, DELETE, MERGE, WITH before one of them
Statement::Node parseDefinition(Parser& in, bool create);  // CREATE or ALTER
Statement::Node parseDrop(Parser& in);
// altered: the table, if ALTER TABLE names it.
Statement::Node parseTriggerSwitch(Parser& in, bool enables, const ObjectName* altered = nullptr);
// Without a value if the next word is not SCHEMA, USER, ROLE or LOGIN.
std::optional<Statement::Node> parsePrincipal(Parser& in, const std::string& verb);
Statement::Node parsePermissions(Parser& in, const std::string& state);  // GRANT: G, DENY: D, REVOKE: R

// Returns the table that a statement changes: one of its FROM clause, by name or alias, or another one.
TableRef targetOf(const Change& change);

}  // namespace tsql
