// Syntax tree to SQLite's SQL, with the type of every value. Variables become bound parameters.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "catalogue/SystemViews.h"
#include "functions/Functions.h"
#include "functions/Operators.h"
#include "syntax/Ast.h"
#include "types/Column.h"
#include "types/Finally.h"
#include "types/Text.h"

namespace tsql {

// A view or a function of a database.
struct StoredModule {
    std::string database;
    std::string name;
    std::shared_ptr<const void> text;  // keeps `module`
    const ast::CreateModule* module = nullptr;
    std::int64_t id = 0;
};

// What names mean where the statement stands.
class NameResolver {
  public:
    virtual ~NameResolver() = default;
    virtual SqlType variableType(std::string_view name) = 0;  // also of @@names; throws SqlError 137
    virtual std::optional<TableInfo> findTable(const ast::ObjectName& name) = 0;
    virtual TableInfo table(const ast::ObjectName& name) = 0;  // throws SqlError 208
    virtual std::optional<SystemView> view(const ast::ObjectName& name) = 0;
    virtual std::optional<StoredModule> module(const ast::ObjectName& name, std::string_view type) = 0;
    // Does `work` where names mean what they mean to the view or function. Throws SqlError 217 and 4429.
    virtual void within(const StoredModule& query, const std::function<void()>& work) = 0;
};

struct SourceColumn {
    std::string name;
    std::string sql;
    SqlType type;
    bool nullable = true;
    bool identity = false;
};

// One table of a FROM clause, under an alias of its own in SQLite.
struct Source {
    std::string exposed;  // the name that T-SQL text uses
    std::string database;
    std::string rowid;  // empty for what is no table
    std::string table;  // in SQLite; the same
    std::vector<SourceColumn> columns;
};

struct OutputColumn {
    Column column;
    std::string alias;  // in SQLite; SELECT's columns are c1, c2 ...
    bool nullLiteral = false;
};

struct QueryText {
    std::string sql;
    std::vector<OutputColumn> columns;
    bool oneRow = false;    // never more than one row
    bool compound = false;  // SELECT ... UNION ... SELECT, which another branch may follow
};

// SELECT @a = ..., @b += ...
struct Assignment {
    std::string variable;
    SqlType type;  // of the value
};

// A CHECK's condition, its columns without a table, and which they are.
struct CheckText {
    std::string sql;
    std::set<std::string> columns;
};

class Translator {
  public:
    explicit Translator(NameResolver& names) : m_names(names) {}

    QueryText query(const ast::Query& query);
    Typed value(const ast::Expr& expr);
    std::string condition(const ast::Expr& expr);

    // Statements that change `target`.
    std::string insertRows(const TableInfo& target, const std::vector<const TableColumn*>& columns,
                           const ast::Insert& insert);
    std::string insertQuery(const TableInfo& target, const std::vector<const TableColumn*>& columns,
                            const ast::Insert& insert);
    // One row of values of the given types, bound as ?1, ?2 ...
    std::string insertParameters(const TableInfo& target, const std::vector<const TableColumn*>& columns,
                                 const std::vector<SqlType>& types);
    // What WITH names in front of a change of `target`.
    void useCommonTables(const ast::Change& change, const ast::ObjectName& target);
    std::string update(const TableInfo& target, const ast::Update& update);
    // The same in steps, for rows that take over each other's keys.
    std::vector<std::string> updateInSteps() const { return m_steps; }
    // Common tables of which the last, `incoming`, has the rows that the change makes, with the row ids
    // (ts_row) of those that are there already. For the texts of errors.
    const std::string& newRows() const { return m_newRows; }
    std::string remove(const TableInfo& target, const ast::Delete& statement);
    CheckText check(const TableInfo& table, const ast::Expr& condition);

    // What ?1, ?2 ... stand for.
    struct Parameter {
        std::string variable;             // empty: a constant
        const Value* constant = nullptr;  // of the syntax tree
    };
    const std::vector<Parameter>& parameters() const { return m_parameters; }
    const std::vector<Assignment>& assignments() const { return m_assignments; }
    // The columns of a change's OUTPUT clause.
    const QueryText& output() const { return m_output; }
    // Throws SqlError 8158 and 8159.
    static void rename(QueryText& text, const std::vector<std::string>& names, const std::string& of);
    // The table that UPDATE or DELETE changes: `name` may be an alias of `from`.
    static const ast::ObjectName& targetName(const ast::ObjectName& name,
                                             const std::vector<ast::TableRefPtr>& from);

  private:
    struct Scope {
        Scope* outer = nullptr;
        std::vector<Source> sources;
        std::set<std::string> groupKeys;
        std::vector<std::string> loose;  // columns outside of aggregates and GROUP BY, as messages name them
        bool sawAggregate = false;
        int aggregateDepth = 0;
        bool windows = false;  // in the select list or ORDER BY: windows are allowed
    };
    struct CommonTable {
        const ast::CommonTable* table;
        std::string recursive = {};  // its name in SQLite, inside of its recursive part
        std::vector<OutputColumn> columns = {};
    };

    // ---- expressions (TranslatorExpressions.cpp)
    Typed node(const ast::Literal& literal);
    Typed node(const ast::VariableRef& variable);
    Typed node(const ast::ColumnRef& column);
    Typed node(const ast::Unary& unary);
    Typed node(const ast::Binary& binary);
    Typed node(const ast::Case& choice);
    Typed node(const ast::Cast& cast);
    Typed node(const ast::Call& call);
    Typed node(const ast::ScalarQuery& query);
    std::string test(const ast::Compare& compare);
    std::string test(const ast::Logic& logic);
    std::string test(const ast::Not& negation);
    std::string test(const ast::IsNull& isNull);
    std::string test(const ast::Between& between);
    std::string test(const ast::InList& in);
    std::string test(const ast::InQuery& in);
    std::string test(const ast::Like& like);
    std::string test(const ast::Exists& exists);
    Typed userCall(const ast::Call& call);
    Typed aggregateCall(const FunctionInfo& function, const ast::Call& call);
    Typed windowCall(const FunctionInfo& function, const ast::Call& call);
    std::string sortKeys(const std::vector<ast::OrderItem>& items);
    std::vector<Typed> callArguments(const ast::Call& call, bool datePart);
    std::vector<Typed> values(const std::vector<ast::ExprPtr>& exprs);
    Typed parameter(std::string_view name);
    static std::string liveValue(const std::string& key);
    const SourceColumn* findColumn(const ast::ColumnRef& column, Scope& scope, const Source*& source);

    // ---- queries (TranslatorQueries.cpp)
    QueryText body(const ast::Query& query);
    QueryText select(const ast::Select& select, const ast::Query& query);
    QueryText assignInOrder(const ast::Select& select, const ast::Query& query, const std::string& rows);
    void refuseInRecursion(const ast::Select& select) const;
    QueryText setOperation(const ast::SetOperation& operation, const ast::Query& query);
    void selectItem(const ast::SelectItem& item, QueryText& text, std::string& list, bool collate);
    void star(const ast::SelectItem& item, QueryText& text, std::string& list, bool collate);
    void addOutput(QueryText& text, std::string& list, Column column, const std::string& sql);
    std::string from(const std::vector<ast::TableRefPtr>& tables);
    std::string tableRef(const ast::TableRef& table);
    std::string namedTable(const ast::NamedTable& table, const std::string& alias);
    std::string storedTable(const StoredModule& stored, const ast::NamedTable& table,
                            const std::string& alias);
    // The values of the function's parameters, each in its type.
    std::vector<std::string> argumentsOf(const StoredModule& function,
                                         const std::vector<ast::ExprPtr>& arguments);
    std::string tableFunction(const ast::NamedTable& table, const std::string& alias);
    std::string derivedTable(const ast::Query& query, const std::vector<std::string>& names,
                             const std::string& alias);
    std::string recursiveTable(const ast::CommonTable& table, const std::string& alias);
    std::string recursiveReference(const CommonTable& table, const std::string& alias);
    std::string join(const ast::Join& join);
    // ---- FOR XML (TranslatorXml.cpp)
    QueryText forXml(const QueryText& rows, const ast::ForXml& xml) const;

    std::string groupBy(const ast::Select& select);
    // `distinctList`: of SELECT DISTINCT, which must have what it is ordered by.
    std::string orderBy(const std::vector<ast::OrderItem>& items, const QueryText& text, bool outputOnly,
                        const std::string* distinctList = nullptr);
    std::string rowCount(const ast::Expr& expr, int least, int error);
    std::optional<std::size_t> outputPosition(const ast::Expr& expr, const QueryText& text) const;
    std::string limit(const ast::Select* select, const ast::Query& query);
    void refuseLooseColumns(int error, bool grouped);
    std::string singleValue(const QueryText& text);
    std::string nextAlias();
    void addSource(const TableInfo& table, const std::string& exposed, const std::string& alias);
    std::string addSource(const std::vector<OutputColumn>& columns, const std::string& exposed);
    // A derived table and the arguments of a function do not see the tables beside them, but those of the
    // queries around.
    template <typename Work>
    auto blind(Work work) {
        const Finally seeing([this, beside = std::exchange(m_scope, m_scope->outer)] { m_scope = beside; });
        return work();
    }

    // ---- changes (TranslatorChanges.cpp)
    std::string insertText(const TableInfo& target, const std::vector<const TableColumn*>& columns,
                           const std::string& rows);
    Typed defaultOf(const TableColumn& column);
    Typed cell(const ast::Expr& expr);
    std::string assigned(const Typed& value, const TableInfo& target, const TableColumn& column);
    std::vector<const TableColumn*> absentDefaults(const TableInfo& target,
                                                   const std::vector<const TableColumn*>& columns) const;
    Typed setValue(const std::string& rowid, const ast::SetClause& clause, const TableColumn& column);
    std::string returning(const TableInfo& target, const std::optional<ast::Output>& output,
                          const std::string& exposed);
    std::string returnedToVariables(const TableInfo& target, const ast::Update& update);
    std::string filter(const ast::Change& change);  // its WHERE
    std::string joinedSources(const TableInfo& target, const ast::ObjectName& name,
                              const std::vector<ast::TableRefPtr>& from, std::string& rowid);

    NameResolver& m_names;
    Scope* m_scope = nullptr;
    std::vector<CommonTable> m_with;
    std::vector<Parameter> m_parameters;
    std::vector<Assignment> m_assignments;
    // What stands for a variable that the statement itself assigns, by its name in lower case: its value
    // before the row, then the value of the assignment to the left.
    WordMap<std::string> m_live;
    bool m_sorted = false;  // then rows are computed before their order is known
    int m_aliases = 0;
    std::string m_depth;  // of the recursion: the column that the recursive part must add
    std::int64_t m_maxRecursion = 100;
    QueryText m_output;
    std::vector<std::string> m_steps;
    std::string m_newRows;
    bool m_topLevel = true;
};

}  // namespace tsql
