// Translation of T-SQL syntax trees to SQLite's SQL, with the type of every value. Variables become bound
// parameters.
#pragma once

#include "catalogue/Catalogue.h"
#include "functions/Functions.h"
#include "functions/Operators.h"
#include "syntax/Ast.h"
#include "types/Finally.h"
#include "types/SqlType.h"
#include "types/Text.h"

namespace tsql {

// A stored view or function.
struct StoredModule {
    std::string database;
    std::string schemaName;
    std::string name;
    std::shared_ptr<const void> text;  // owns `module`
    const ast::CreateModule* module = nullptr;
    std::int64_t id = 0;
};

// Resolves the names in a statement: variables, tables, views and functions.
class NameResolver {
  public:
    virtual ~NameResolver() = default;
    virtual SqlType variableType(std::string_view name) = 0;  // @@names included; throws SqlError 137
    virtual std::int64_t mostRows() const = 0;                // SET ROWCOUNT; 0: no limit
    virtual std::optional<TableInfo> findTable(const ast::ObjectName& name) = 0;
    virtual TableInfo table(const ast::ObjectName& name) = 0;  // throws SqlError 208
    virtual std::optional<SystemView> view(const ast::ObjectName& name) = 0;
    virtual std::optional<StoredModule> module(const ast::ObjectName& name, std::string_view type) = 0;
    // NEXT VALUE FOR, of a sequence that the statement changes. Throws SqlError 208 and 11726.
    virtual Typed nextValue(const ast::ObjectName& sequence) = 0;
    // Runs `work` with names resolved as inside the view or function. Throws SqlError 217 (nesting too deep)
    // and 4429 (it contains itself).
    virtual void within(const StoredModule& query, const std::function<void()>& work) = 0;
};

constexpr std::string_view kOldValue = "the old value of a changed column in the OUTPUT of UPDATE";
struct SourceColumn {
    std::string name;
    std::string sql;  // empty: kOldValue
    SqlType type;
    bool nullable = true;
    bool identity = false;
};

// A table of a FROM clause. It has its own alias in SQLite.
struct Source {
    std::string exposed;  // name in the T-SQL text
    std::string database;
    std::string schemaName;  // empty: an alias, or not a stored table
    std::string rowid;       // SQL of the row id; empty: not a stored table
    std::string table;       // qualified name in SQLite; empty likewise
    std::vector<SourceColumn> columns;
};

struct OutputColumn {
    Column column;
    std::string alias;  // in SQLite; c1, c2 ... for a SELECT
    bool nullLiteral = false;
    std::optional<ast::Identity> newIdentity = {};  // IDENTITY() of SELECT INTO
};

struct QueryText {
    std::string sql;
    std::vector<OutputColumn> columns;
    bool oneRow = false;    // returns at most one row
    bool compound = false;  // a UNION to which a branch can be appended
    bool collated = false;  // a UNION whose first branch, which decides on equality, names the collation
};

// A variable that a SELECT assigns: SELECT @a = ..., @b += ...
struct Assignment {
    std::string variable;
    SqlType type;  // of the value
};

// Condition of a CHECK constraint or value of a computed column, with unqualified column names, and the
// columns it uses.
struct CheckText {
    std::string sql;
    std::set<std::string> columns;
    SqlType type = {};  // of a value
};

class Translator {
  public:
    explicit Translator(NameResolver& names) : m_names(names) {}

    QueryText query(const ast::Query& query);
    Typed value(const ast::Expr& expr);
    std::string condition(const ast::Expr& expr);

    // Return the SQLite statement that changes `target`.
    std::string insertRows(const TableInfo& target, const ColumnList& columns, const ast::Insert& insert);
    std::string limited(const std::string& sql, const ast::ExprPtr& top = nullptr);
    std::string insertQuery(const TableInfo& target, const ColumnList& columns, const ast::Insert& insert);
    // Rows of a query with as many columns.
    std::string insertSelected(const TableInfo& target, const ColumnList& columns, const QueryText& text,
                               const ast::ExprPtr& top = nullptr);
    // For one row: values of the given types, bound as ?1, ?2 ...
    std::string insertParameters(const TableInfo& target, const ColumnList& columns,
                                 const std::vector<SqlType>& types);
    // Makes the common table expressions of a change known. To be called before the change is translated.
    void useCommonTables(const ast::Change& change, const ast::ObjectName& target);
    std::string update(const TableInfo& target, const ast::Update& update);
    // The last update() as several statements, for rows that take over each other's keys.
    std::vector<std::string> updateInSteps() const { return m_steps; }
    // Common table expressions for error messages. The last one, `incoming`, has the rows that the change
    // produces; ts_row is the row id of a row that exists already.
    const std::string& newRows() const { return m_newRows; }
    std::string remove(const TableInfo& target, const ast::Delete& statement);
    CheckText check(const TableInfo& table, const ast::Expr& condition);

    // Source of the value of a parameter, in the order ?1, ?2 ...
    struct Parameter {
        std::string variable;             // empty: a constant
        const Value* constant = nullptr;  // owned by the syntax tree
    };
    const std::vector<Parameter>& parameters() const { return m_parameters; }
    const std::vector<Assignment>& assignments() const { return m_assignments; }
    // Columns of the OUTPUT clause of a change.
    const QueryText& output() const { return m_output; }
    // Renames the columns of `text` to `names`, if there are any. `of`: the query's name for messages. Throws
    // SqlError 8158 (too few names) and 8159 (too many).
    static void rename(QueryText& text, const std::vector<std::string>& names, const std::string& of);
    // Returns the table that UPDATE or DELETE changes. `name` may be an alias in `from`.
    static const ast::ObjectName& targetName(const ast::ObjectName& name,
                                             const std::vector<ast::TableRefPtr>& from);

  private:
    struct Scope {
        Scope* outer = nullptr;
        std::vector<Source> sources;
        std::set<std::string> groupKeys;
        std::vector<std::string> loose;  // columns outside aggregates and GROUP BY, as named in messages
        bool sawAggregate = false;
        int aggregateDepth = 0;
        bool windows = false;  // window functions are allowed
    };
    struct CommonTable {
        const ast::CommonTable* table;
        std::string recursive = {};  // name in SQLite inside its recursive part
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
    Typed node(const ast::NextValue& next);
    std::string test(const ast::Compare& compare);
    std::string test(const ast::Logic& logic);
    std::string test(const ast::Not& negation);
    std::string test(const ast::IsNull& isNull);
    std::string test(const ast::Between& between);
    std::string test(const ast::InList& in);
    std::string test(const ast::InQuery& in);
    std::string test(const ast::CompareQuery& compare);
    std::string test(const ast::Like& like);
    std::string test(const ast::Exists& exists);
    Typed userCall(const ast::Call& call);
    Typed aggregateCall(const FunctionInfo& function, const ast::Call& call);
    Typed windowCall(const FunctionInfo& function, const ast::Call& call);
    std::string sortKeys(const std::vector<ast::OrderItem>& items);
    std::vector<Typed> callArguments(const ast::Call& call, bool datePart);
    std::vector<Typed> values(const std::vector<ast::ExprPtr>& exprs);
    static std::string liveValue(const std::string& key);
    static bool isNamed(const Source& source, std::span<const std::string> qualifier);
    const SourceColumn* findColumn(const ast::ColumnRef& column, Scope& scope, const Source*& source);

    // ---- queries (TranslatorQueries.cpp)
    QueryText select(const ast::Select& select, const ast::Query& query);
    QueryText assignInOrder(const ast::Select& select, const ast::Query& query, const std::string& rows);
    void refuseInRecursion(const ast::Select& select) const;
    QueryText setOperation(const ast::SetOperation& operation, const ast::Query& query);
    static std::string distinctSetOperation(ast::SetOp op, const std::string& left, const std::string& right,
                                            const QueryText& text);
    void selectItem(const ast::SelectItem& item, QueryText& text, std::string& list, bool collate);
    void star(const ast::SelectItem& item, QueryText& text, std::string& list, bool collate);
    void addOutput(QueryText& text, std::string& list, Column column, const std::string& sql);
    std::string from(const std::vector<ast::TableRefPtr>& tables);
    std::string tableRef(const ast::TableRef& table);
    std::string namedTable(const ast::NamedTable& table, const std::string& alias);
    std::string storedTable(const StoredModule& stored, const ast::NamedTable& table,
                            const std::string& alias);
    // Returns the SQL of the arguments, each converted to the type of its parameter.
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
    // distinctList: the select list of SELECT DISTINCT, which must contain the ORDER BY items; null without
    // DISTINCT. firstOfSet: the first SELECT of a set operation, whose list must contain them.
    std::string orderBy(const std::vector<ast::OrderItem>& items, const QueryText& text,
                        const std::string* distinctList = nullptr, const ast::Select* firstOfSet = nullptr);
    static std::string orderKeyOfDistinct(const Typed& item, const std::string& list, const QueryText& text);
    std::string rowCount(const ast::Expr& expr, int least, int error);
    std::string changeLimit(const ast::ExprPtr& top);
    std::optional<std::size_t> outputPosition(const ast::Expr& expr, const QueryText& text) const;
    std::string limit(const ast::Select* select, const ast::Query& query);
    void refuseLooseColumns(int error, bool grouped);
    std::string singleValue(const QueryText& text);
    std::string nextAlias();
    void addSource(const TableInfo& table, const std::string& exposed, const std::string& alias);
    std::string addSource(const std::vector<OutputColumn>& columns, const std::string& exposed);
    // Runs `work` without the sources of the current scope: derived tables and arguments of table functions
    // see outer queries, but not the tables beside them.
    template <typename Work>
    auto blind(Work work) {
        const Temporarily outside(m_scope, m_scope->outer);
        return work();
    }

    // ---- changes (TranslatorChanges.cpp)
    std::string insertText(const TableInfo& target, const ColumnList& columns, const std::string& rows);
    std::string insertCells(const TableInfo& target, ColumnList columns, std::vector<Typed> cells,
                            std::string_view before, std::string_view after);
    Typed defaultOf(const TableInfo& target, const TableColumn& column);
    Typed cell(const ast::Expr& expr);
    std::string assigned(const Typed& value, const TableInfo& target, const TableColumn& column);
    ColumnList absentDefaults(const TableInfo& target, const ColumnList& columns) const;
    Typed setValue(const std::string& rowid, const ast::SetClause& clause, const TableColumn& column);
    std::string returning(const TableInfo& target, const std::optional<ast::Output>& output,
                          const std::string& exposed, const std::vector<ast::SetClause>& sets = {});
    std::string returnedToVariables(const TableInfo& target, const ast::Update& update);
    std::string filter(const ast::Change& change);  // the WHERE clause
    std::string joinedSources(const TableInfo& target, const ast::ObjectName& name,
                              const std::vector<ast::TableRefPtr>& from, std::string& rowid);

    NameResolver& m_names;
    Scope* m_scope = nullptr;
    std::vector<CommonTable> m_with;
    std::vector<Parameter> m_parameters;
    std::vector<Assignment> m_assignments;
    // SQL for the variables that the statement itself assigns: the value before the row, then the value
    // assigned further left.
    WordMap<std::string> m_live;
    int m_nextValue = 0;    // error of NEXT VALUE FOR in this place; 0: none
    WordSet m_sequences;    // that have given a value for the row
    bool m_sorted = false;  // rows are computed before they are sorted
    int m_aliases = 0;
    std::string m_depth;  // depth column that the recursive part must return
    std::int64_t m_maxRecursion = 100;
    QueryText m_output;
    std::vector<std::string> m_steps;
    std::string m_newRows;
    bool m_topLevel = true;
};

}  // namespace tsql
