// A batch's tokens to its syntax tree. A production that is used in its own file alone is a function there.
#pragma once

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "syntax/Ast.h"
#include "syntax/Lexer.h"

namespace tsql {

struct Batch {
    ast::Block statements;
    std::vector<ast::Local> locals = {};
};

// Throws SyntaxError; then nothing of the batch may run. `quotedIdentifiers`: whether "x" is a name.
std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers);
// An expression that stands alone, as a column's default does.
ast::ExprPtr parseExpression(std::string_view text);
ast::Constraint parseConstraint(std::string_view text);
ast::ObjectName parseObjectName(std::string_view text);
SqlType parseType(std::string_view text);

class Parser {
  public:
    Parser(std::string_view text, bool quotedIdentifiers);

    // ---- tokens (Parser.cpp). A phrase is keywords and symbols with a blank between: "ORDER BY".
    const Token& peek(std::size_t ahead = 0) const {
        return m_tokens[std::min(m_next + ahead, m_tokens.size() - 1)];
    }
    const Token& takeToken();
    bool at(std::string_view phrase, std::size_t ahead = 0) const { return match(phrase, ahead) > 0; }
    bool accept(std::string_view phrase);
    bool acceptAny(std::initializer_list<std::string_view> phrases);
    void expect(std::string_view phrase);
    // Takes the first phrase of `table` that comes next. What it stands for, or null.
    template <typename Table>
    auto acceptOneOf(const Table& table) -> decltype(&std::begin(table)->second) {
        const auto found = std::find_if(std::begin(table), std::end(table),
                                        [this](const auto& each) { return accept(each.first); });
        return found == std::end(table) ? nullptr : &found->second;
    }
    std::int64_t expectInteger();
    bool isString(const Token& token) const;
    std::string expectString();
    bool atName(std::size_t ahead = 0) const;
    std::string expectName();
    bool atVariable() const { return peek().kind == TokenKind::Variable; }
    std::string expectVariable(int undeclaredState = 1);  // of the error
    ast::ObjectName objectName();
    std::vector<std::string> columnNames();  // in parentheses
    SqlType type(TypeUse use);
    void collation();
    void skipParenthesized();
    std::string textSince(std::size_t token) const;  // as written, from the token to the one taken last
    std::size_t position() const { return m_next; }
    const Token& faulty() const;  // the token that an error is about
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

    // Phrases that must come next, and what `read` reads between them.
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

    // Bounds the nesting of what calls itself.
    class Nesting {
      public:
        explicit Nesting(Parser& parser);
        ~Nesting() { --m_parser.m_depth; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

      private:
        Parser& m_parser;
    };
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
    ast::ObjectName tableName();
    void tableHints();
    std::vector<ast::TableRefPtr> from();
    std::vector<ast::OrderItem> orderBy();
    std::optional<std::int64_t> options();  // the MAXRECURSION among them

    // ---- statements (ParserStatements.cpp)
    ast::Block batch();
    ast::Block statements(std::string_view end);
    ast::StatementPtr statement();
    void noteTemporary(const ast::Statement& statement);
    ast::Declaration declaration(bool isParameter);
    bool atConstant() const;
    ast::ExprPtr constant();
    ast::ExprPtr wordOrConstant();
    bool atBatchBegin() const { return m_next == 1 && m_depth == 1; }  // behind its first word

    // ---- changes of data and schema (ParserDefinitions.cpp)
    bool acceptConstraint(ast::Constraint& constraint, bool ofTable);
    ast::CreateTable tableVariable(const Token& name);

    // What the statements before and around say to the next one.
    bool m_quotedIdentifiers;
    int m_loops = 0;
    std::optional<ast::ObjectName>* m_into = nullptr;  // the next SELECT may have INTO, which is kept there
    const ast::CreateModule* m_module = nullptr;       // whose body is read
    std::string m_procedure;                           // that the text defines
    std::vector<ast::Local> m_locals;

  private:
    // The number of tokens that the phrase takes; 0 where it does not stand, as most show by their initial.
    std::size_t match(std::string_view phrase, std::size_t ahead) const {
        return peek(ahead).initial == phrase.front() ? matchWhole(phrase, ahead) : 0;
    }
    std::size_t matchWhole(std::string_view phrase, std::size_t ahead) const;
    std::vector<int> typeArguments();

    std::vector<Token> m_tokens;
    std::size_t m_next = 0;
    int m_depth = 0;
    bool m_scalarOnly = false;
    WordSet m_declared;  // variables
    WordSet m_declaredTables;
    WordSet m_temporary;  // tables that the text makes
};

// ---- statements of ParserDefinitions.cpp; the word in their names is taken already
ast::Statement::Node parseRows(Parser& in);  // SELECT, INSERT, UPDATE, DELETE, WITH before one of them
ast::Statement::Node parseCreate(Parser& in);
ast::Statement::Node parseAlter(Parser& in);
ast::Statement::Node parseDrop(Parser& in);

// Those of the columns, and those of the table.
std::vector<const ast::Constraint*> allConstraints(const ast::CreateTable& create);

}  // namespace tsql
