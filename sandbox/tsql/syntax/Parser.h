// Recursive-descent parser of a batch. Productions that only one source file uses are functions of that file.
#pragma once

#include <type_traits>

#include "syntax/Ast.h"
#include "syntax/Lexer.h"
#include "types/Text.h"

namespace tsql {

struct Batch {
    ast::Block statements;
    std::vector<ast::Local> locals = {};
};

// Throws SyntaxError; nothing of the batch may run then. `quotedIdentifiers`: "x" is a name, else a string.
std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers);
// A stored expression, such as the default of a column.
ast::ExprPtr parseExpression(std::string_view text);
ast::Constraint parseConstraint(std::string_view text);  // ObjectInfo::source
ast::ObjectName parseObjectName(std::string_view text);
SqlType parseType(std::string_view text);

class Parser {
  public:
    Parser(std::string_view text, bool quotedIdentifiers);

    // ---- tokens (Parser.cpp). A phrase is keywords and symbols separated by blanks: "ORDER BY".
    const Token& peek(std::size_t ahead = 0) const {
        return m_tokens[std::min(m_next + ahead, m_tokens.size() - 1)];
    }
    const Token& takeToken();
    bool at(std::string_view phrase, std::size_t ahead = 0) const { return match(phrase, ahead) > 0; }
    bool accept(std::string_view phrase);
    bool acceptAny(std::initializer_list<std::string_view> phrases);
    void expect(std::string_view phrase);
    // Consumes the first phrase of `table` that matches. Returns its value, or null if none matches.
    template <typename Table>
    auto acceptOneOf(const Table& table) -> decltype(&std::begin(table)->second) {
        const auto found =
            std::ranges::find_if(table, [this](const auto& each) { return accept(each.first); });
        return found == std::end(table) ? nullptr : &found->second;
    }
    std::int64_t expectInteger();
    bool isString(const Token& token) const;
    std::string expectString();
    bool atName(std::size_t ahead = 0) const;
    std::string expectName();
    bool atVariable() const { return peek().kind == TokenKind::Variable; }
    std::string expectVariable(int undeclaredState = 1);  // state of the error
    ast::ObjectName objectName();
    std::vector<std::string> columnNames();  // in parentheses
    SqlType type(TypeUse use);
    ast::Identity identity();  // seed, increment
    void collation();
    void skipParenthesized();
    std::string textSince(std::size_t token) const;  // as written, from that token to the last consumed one
    std::size_t position() const { return m_next; }
    const Token& faulty() const;  // token that an error refers to
    std::string near() const;     // as errors quote it
    [[noreturn]] void throwSyntaxError() const;
    [[noreturn]] void throwUnsupported(std::string_view construct) const;
    void throwIfAt(std::string_view phrase, std::string_view construct) const;

    template <typename Item>
    auto list(Item item) {
        std::vector<decltype(item())> items;
        do items.push_back(item());
        while (accept(","));
        return items;
    }
    template <typename Item>
    auto parenthesized(Item item) {
        expect("(");
        auto inner = item();
        expect(")");
        return inner;
    }

    // Requires the phrases among `parts`, and reads an expression with `read` into each of the others.
    template <typename... Parts>
    void sequence(ast::ExprPtr (Parser::*read)(), Parts&&... parts) {
        const auto part = [&](auto& each) {
            if constexpr (std::is_same_v<decltype(each), ast::ExprPtr&>)
                each = (this->*read)();
            else
                expect(each);
        };
        (part(parts), ...);
    }

    // m_depth inside a recursive production. Throws SyntaxError 191 beyond the limit.
    int nextDepth() const;
    void checkChain(int length) const;

    // ---- expressions (ParserExpressions.cpp)
    ast::ExprPtr expression();
    ast::ExprPtr condition();
    ast::ExprPtr scalar(ast::ExprPtr (Parser::*read)());  // without subqueries
    ast::ExprPtr expressionOrCondition();
    ast::ExprPtr operators(int loosest);
    ast::ExprPtr unary();
    ast::ExprPtr primary();
    std::vector<ast::ExprPtr> expressions();
    std::vector<ast::ExprPtr> argumentsOf(const ast::ObjectName& function);  // in parentheses

    // ---- queries (ParserQueries.cpp)
    bool atQuery() const;
    ast::QueryPtr query();
    ast::QueryPtr queryBehind(std::vector<ast::CommonTable> with);
    ast::QueryPtr subquery();
    std::vector<ast::CommonTable> commonTables();
    ast::ExprPtr top(bool mayBeBare = false);
    ast::SelectItem selectItem();
    std::optional<BinaryOp> assignmentOperator();
    ast::ExprPtr assignedValue(const std::string& variable);
    ast::ObjectName tableName();
    void tableHints();
    std::vector<ast::TableRefPtr> from();
    std::vector<ast::OrderItem> orderBy();
    std::optional<std::int64_t> options();  // returns MAXRECURSION

    // ---- statements (ParserStatements.cpp)
    ast::Block batch();
    ast::Block statements(std::string_view end);
    ast::StatementPtr statement();
    ast::StatementPtr label();
    struct LabelUse {
        int number = 0;
        int line = 0;  // of the first GOTO or of the label
        bool isDeclared = false;
    };
    LabelUse& useOfLabel();
    void noteTemporary(const ast::Statement& statement);
    ast::Declaration declaration(bool isParameter);
    bool atConstant() const;
    ast::ExprPtr constant();
    ast::ExprPtr wordOrConstant();
    bool atBatchBegin() const { return m_next == 1 && m_depth == 1; }  // after the first word

    // ---- changes of data and schema (ParserDefinitions.cpp)
    bool acceptConstraint(ast::Constraint& constraint, bool ofTable);
    ast::CreateTable tableVariable(const Token& name);

    // State that earlier and enclosing statements pass on.
    bool m_quotedIdentifiers;
    int m_loops = 0;
    int m_depth = 0;
    std::optional<ast::ObjectName>* m_into =
        nullptr;                                  // receives the INTO of the next SELECT, if it may have one
    const ast::CreateModule* m_module = nullptr;  // module whose body is being parsed
    std::string m_procedure;                      // procedure that the text defines
    std::vector<ast::Local> m_locals;

  private:
    // Number of tokens that the phrase matches; 0 for no match. The first character rules out most phrases.
    std::size_t match(std::string_view phrase, std::size_t ahead) const {
        return peek(ahead).initial == phrase.front() ? matchWhole(phrase, ahead) : 0;
    }
    std::size_t matchWhole(std::string_view phrase, std::size_t ahead) const;

    std::vector<Token> m_tokens;
    std::size_t m_next = 0;
    bool m_scalarOnly = false;
    WordMap<LabelUse> m_labels;
    WordSet m_declared;  // variables
    WordSet m_declaredTables;
    WordSet m_temporary;  // tables that the text creates
};

// ---- statements of ParserDefinitions.cpp; the caller has consumed the keyword in their names
ast::Statement::Node parseRows(Parser& in);  // SELECT, INSERT, UPDATE, DELETE, WITH before one of them
ast::Statement::Node parseDefinition(Parser& in, bool create);  // CREATE or ALTER
ast::Statement::Node parseDrop(Parser& in);

// Constraints of the columns and of the table.
std::vector<const ast::Constraint*> allConstraints(const ast::CreateTable& create);

}  // namespace tsql
