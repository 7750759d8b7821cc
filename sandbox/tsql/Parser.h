// A batch's tokens to its syntax tree: one parse... function a production.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Ast.h"
#include "Lexer.h"

namespace tsql {

struct Batch {
    ast::Block statements;
};

// Throws SyntaxError; then nothing of the batch may run. `quotedIdentifiers`: whether "x" is a name.
std::shared_ptr<const Batch> parseBatch(std::string_view text, bool quotedIdentifiers);
// An expression that stands alone, as a column's default does.
ast::ExprPtr parseExpression(std::string_view text);
ast::ExprPtr parseCondition(std::string_view text);
ast::Constraint parseConstraint(std::string_view text);
ast::ObjectName parseObjectName(std::string_view text);
SqlType parseType(std::string_view text);

class Parser {
  public:
    Parser(std::string_view text, bool quotedIdentifiers);

    ast::Block batch();
    ast::ExprPtr expression();
    ast::ExprPtr condition();
    ast::ObjectName objectName();
    SqlType type(TypeUse use);
    bool parseConstraint(ast::Constraint& constraint, bool ofTable);

  private:
    // ---- tokens (Parser.cpp)
    const Token& peek(std::size_t ahead = 0) const;
    const Token& take();
    bool at(std::string_view word, std::size_t ahead = 0) const;  // a keyword or symbol
    bool accept(std::string_view word);
    bool acceptAll(std::initializer_list<std::string_view> words);
    void expect(std::string_view word);
    std::int64_t expectInteger();
    bool atName(std::size_t ahead = 0) const;
    std::string expectName();
    std::string expectVariable();
    bool isString(const Token& token) const;
    std::vector<int> typeArguments();
    std::string textSince(const Token& first) const;
    [[noreturn]] void syntaxError() const;
    [[noreturn]] void unsupported(std::string_view construct) const;
    void parseCollation();
    void checkDeclared(const Token& variable) const;

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
    ast::ExprPtr parseOr();
    ast::ExprPtr parseAnd();
    ast::ExprPtr parseNot();
    ast::ExprPtr parsePredicate();
    ast::ExprPtr parseIn(ast::ExprPtr operand, bool negated);
    ast::ExprPtr parseLike(ast::ExprPtr operand, bool negated);
    ast::ExprPtr parseAdditive();
    ast::ExprPtr parseMultiplicative();
    ast::ExprPtr parseUnary();
    ast::ExprPtr parsePrimary();
    ast::ExprPtr parseLiteral();
    ast::ExprPtr parseParenthesized();
    ast::ExprPtr parseCase();
    ast::ExprPtr parseIif();
    ast::ExprPtr parseCast();
    ast::ExprPtr parseConvert();
    ast::ExprPtr parseNamed();
    ast::ExprPtr parseCall(ast::ObjectName name);
    ast::Window parseWindow();
    ast::ExprPtr parseXmlValue(ast::ExprPtr xml);
    ast::ExprPtr value(ast::ExprPtr expr) const;  // refuses a condition
    std::vector<ast::ExprPtr> expressions();
    std::vector<ast::ExprPtr> argumentsOf(const ast::ObjectName& function);

    // ---- queries (ParserQueries.cpp)
    bool atQuery() const;
    ast::QueryPtr parseQuery();
    ast::QueryPtr parseQueryBehind(std::vector<ast::CommonTable> with);
    ast::ObjectName tableName();
    void parseOptions(ast::Query* query);
    std::optional<ast::ForXml> parseForXml();
    ast::QueryPtr parseSubquery();
    ast::QueryPtr parseRowValues();
    ast::QueryPtr parseUnion();
    ast::QueryPtr parseIntersect();
    ast::QueryPtr parseQueryTerm();
    ast::Select parseSelect();
    std::vector<ast::CommonTable> parseWith();
    std::optional<ast::Top> parseTop();
    ast::SelectItem parseSelectItem();
    bool parseAssignmentItem(ast::SelectItem& item);
    std::string parseAlias();
    std::vector<ast::TableRefPtr> parseFrom();
    ast::TableRefPtr parseJoins();
    ast::TableRefPtr parseTablePrimary();
    bool parseJoinKind(ast::JoinKind& kind);
    void parseTableHints();
    std::vector<ast::OrderItem> parseOrderBy();
    void parseOffset(ast::Query& query);
    std::vector<std::string> parseColumnNames();

    // ---- statements (ParserStatements.cpp)
    ast::StatementPtr parseStatement();
    ast::Statement::Node parseStatementNode();
    ast::Block parseBlock();  // up to END
    ast::Statement::Node parseDeclare();
    ast::Statement::Node parseDeclareCursor();
    ast::Statement::Node parseChangeCursor();
    ast::Statement::Node parseFetch();
    ast::CursorName parseCursorName();
    ast::Statement::Node parseSet();
    ast::Statement::Node parseSetOption();
    ast::Statement::Node parseIf();
    ast::Statement::Node parseWhile();
    ast::Statement::Node parseBegin();
    ast::Statement::Node parseReturn();
    ast::Statement::Node parseRaiseError();
    ast::Statement::Node parseThrow();
    ast::Statement::Node parseWaitFor();
    ast::Statement::Node parseExecute();
    ast::Argument parseArgument();
    ast::Statement::Node parseTransaction();
    ast::Statement::Node parseBackup();
    ast::Statement::Node parseRestore();
    std::optional<BinaryOp> parseAssignmentOperator();
    bool atExpression() const;
    ast::Block parseAttempt(std::string_view word);
    ast::ExprPtr parseFileName();
    bool parseStats(std::int64_t& stats);
    ast::ExprPtr parseNameOrVariable();
    bool acceptIfExists();

    // ---- changes of data and schema (ParserDefinitions.cpp)
    ast::Statement::Node parseInsert();
    ast::Statement::Node parseUpdate();
    ast::Statement::Node parseDelete();
    ast::SetClause parseSetClause();
    ast::Statement::Node parseCommonTables();
    std::optional<ast::Output> parseOutput();
    std::shared_ptr<const ast::CreateTable> parseTableVariable(const Token& name);
    ast::Statement::Node parseCreate();
    ast::Statement::Node parseAlter();
    ast::Statement::Node parseDrop();
    ast::Statement::Node parseCreateTable();
    ast::Statement::Node parseCreateIndex(bool unique);
    ast::Statement::Node parseAlterTable();
    void parseTableElement(ast::CreateTable& table);
    ast::ColumnDefinition parseColumnDefinition();
    bool parseColumnOption(ast::ColumnDefinition& column);
    void parseDropped(ast::AlterTable& table);
    void parseReferences(ast::Constraint& constraint);
    void parseIndexColumns(ast::Constraint& constraint, bool ofTable);
    ast::Statement::Node parseModule(bool create, bool alter);
    bool atModule() const;
    void parseModuleOptions();
    ast::Statement::Node parseView(bool create, bool alter);
    ast::Statement::Node parseModuleQuery(ast::CreateModule module);
    ast::Parameter parseParameter();
    ast::ExprPtr parseDefaultConstant();

    std::vector<Token> m_tokens;
    std::size_t m_next = 0;
    bool m_quotedIdentifiers;
    bool m_checkVariables = true;
    int m_depth = 0;
    int m_loops = 0;
    std::set<std::string> m_declared;  // variables' names in lower case
    std::set<std::string> m_declaredTables;
};

}  // namespace tsql
