// Translation of T-SQL syntax trees to SQLite's SQL with typed values. Variables become bound parameters.
#pragma once

#include <set>

#include "catalogue/Catalogue.h"
#include "functions/Functions.h"
#include "functions/Operators.h"
#include "syntax/Ast.h"
#include "types/Finally.h"
#include "types/Text.h"

namespace tsql {

// A stored view or function.
struct StoredModule {
    std::string database;
    std::string schemaName;
    std::string name;
    std::shared_ptr<const void> text;  // owns `module`
    const CreateModule* module = nullptr;
    std::int64_t id = 0;
    std::string key() const { return database + "." + schemaName + kSchemaEnd + name; }
};

// Resolves the names in a statement: variables, tables, views and functions.
class NameResolver {
  public:
    virtual ~NameResolver() = default;
    virtual SqlType variableType(std::string_view name) = 0;  // @@names included; throws SqlError 137
    virtual std::int64_t mostRows() const = 0;                // SET ROWCOUNT; 0: no limit
    virtual std::optional<TableInfo> findTable(const ObjectName& name) = 0;
    virtual TableInfo table(const ObjectName& name) = 0;  // throws SqlError 208
    virtual std::optional<SystemView> view(const ObjectName& name) = 0;
    virtual std::optional<StoredModule> module(const ObjectName& name, std::string_view type) = 0;
    // NEXT VALUE FOR, of a sequence that the statement changes. Throws SqlError 208 and 11726.
    virtual Typed nextValue(const ObjectName& sequence) = 0;
    virtual bool hasTriggers(const StoredModule& view) = 0;
    // Runs `work` with names resolved as inside the query. Throws SqlError 217 and 4429 (it contains itself).
    virtual void within(const StoredModule& query, const std::function<void()>& work) = 0;
    // Returns the rows of a function of statements. The arguments are SQL with parameters of the translator.
    virtual TableInfo calledTable(const StoredModule& function, const std::vector<std::string>& arguments,
                                  const class Translator& translator) = 0;
};

struct SourceColumn : Column {
    std::string sql;
};

// A table of a FROM clause. It has its own alias in SQLite.
struct Source {
    std::string exposed;  // name in the T-SQL text
    std::string database;
    std::string schemaName;  // empty: an alias, or not a stored table
    std::string rowid;       // SQL of the row id; empty: not a stored table
    std::string table;       // qualified name in SQLite; empty likewise
    std::vector<SourceColumn> columns;
    std::string systemView = {};  // its name; empty: not a view of the catalogue
    std::string shown(const std::string& column) const {
        return exposed.empty() ? column : exposed + "." + column;
    }
};

struct OutputColumn : Column {
    std::string alias = {};  // in SQLite; c1, c2 ... for a SELECT
    bool nullLiteral = false;
    std::optional<Identity> newIdentity = {};  // IDENTITY() of SELECT INTO
    Typed typed(const std::string& prefix = {}) const { return {prefix + alias, type, nullLiteral}; }
};

struct QueryText {
    std::string sql;
    std::vector<OutputColumn> columns = {};
    bool oneRow = false;    // returns at most one row
    bool compound = false;  // a UNION to which a branch can be appended
    bool collated = false;  // a UNION whose first branch, which decides on equality, names the collation
    std::vector<Column> shown() const { return {columns.begin(), columns.end()}; }
};

// Condition of a CHECK constraint or value of a computed column, with unqualified names, and its columns.
struct CheckText : Typed {
    std::set<std::string> columns = {};
};

class Translator {
  public:
    // binds: keys in WHERE become parameters, so that texts with other keys reuse the prepared statement.
    explicit Translator(NameResolver& names, bool binds = false) : m_names(names), m_binds(binds) {}

    QueryText query(const Query& query);
    Typed value(const Expr& expr);
    std::string condition(const Expr& expr);

    // Returns the values of a row. Those after `cells` are defaults.
    std::string rowText(const TableInfo& target, const ColumnList& columns, Pieces cells);
    // Return SQLite's statement that changes `target`. record: temporary table with the rows, for OUTPUT.
    std::string change(const TableInfo& target, const Insert& insert, const ColumnList& columns);
    std::string change(const TableInfo& target, const Update& update, const std::string& record);
    std::string change(const TableInfo& target, const Delete& statement);
    std::string limited(const std::string& sql, const ExprPtr& top = nullptr);
    // Rows of a query with as many columns.
    std::string insertSelected(const TableInfo& target, const ColumnList& columns, const QueryText& text,
                               const ExprPtr& top = nullptr);
    // For one row: values of the types of `row`, bound as ?1, ?2 ...
    std::string insertParameters(const TableInfo& target, const ColumnList& columns,
                                 const std::vector<TypedValue>& row);
    // Returns the table that `change` changes through a query. Throws SqlError 4403 and 4426 (there is none).
    TableInfo tableBehind(const TableRef& query, const Change& change);
    // The last UPDATE as several statements, for rows that take over each other's keys.
    std::vector<std::string> updateInSteps() const { return m_steps; }
    // Common table expressions for error messages. The last one, `incoming`, has the rows that the change
    // produces; ts_row is the row id of a row that exists already.
    const std::string& newRows() const { return m_newRows; }
    // Creates temp.tsqlbox_merged, the rows of a MERGE: the row id of the target, the number of the clause
    // and the columns of the source. Rows to insert come first.
    std::string merge(const TableInfo& target, const Merge& merge);
    // Makes changes that are translated afterwards those of this clause.
    void begin(const MergeClause& clause) { m_clause = &clause; }
    // RETURNING for the OUTPUT clause: values of the row after the change or before its deletion. With a
    // record of the changed rows, OUTPUT is a query of it instead.
    std::string returning(const TableInfo& target, const std::optional<Output>& output,
                          const std::string& exposed, const std::string& record = {});
    CheckText check(const TableInfo& table, const Expr& condition);
    Typed defaultOf(const TableInfo& target, const TableColumn& column);

    // Source of the value of a parameter, in the order ?1, ?2 ...
    struct Parameter {
        std::string variable;             // empty: a constant
        const Value* constant = nullptr;  // owned by the syntax tree
    };
    const std::vector<Parameter>& parameters() const { return m_parameters; }
    // Variables that a SELECT assigns (SELECT @a = ..., @b += ...), with the types of their values.
    const std::vector<Column>& assignments() const { return m_assignments; }
    // OUTPUT clause of a change: its columns, and its query if the change itself does not return the rows.
    const QueryText& output() const { return m_output; }
    // Whether another translation would be the same until a definition changes.
    bool isLasting() const { return m_isLasting; }
    // Renames the columns of `text` to `names`, if there are any. `of`: the query's name for messages. Throws
    // SqlError 8158 (too few names), 8159 (too many), `unnamed` (a column without a name) and `repeated`.
    static void rename(QueryText& text, const std::vector<std::string>& names, const std::string& of,
                       int unnamed = kUnnamedColumn, int repeated = kColumnSpecifiedTwice);

  private:
    struct Scope {
        Scope* outer = nullptr;
        std::vector<Source> sources = {};
        std::size_t firstSource = 0;  // that is visible: ON and APPLY do not see tables before a comma
        std::set<std::string> groupKeys = {};
        std::set<std::string> nullKeys = {};  // of other grouping sets
        std::vector<std::string> loose = {};  // columns outside aggregates and GROUP BY, as named in messages
        bool sawAggregate = false;
        int aggregateDepth = 0;
        bool windows = false;  // window functions are allowed
        int outerSources = 0;  // number of aliases given before its own
        bool isNullKey(const std::string& sql) const { return aggregateDepth == 0 && nullKeys.contains(sql); }
    };
    struct NamedQuery {
        const CommonTable* table;
        std::string recursive = {};  // name in SQLite inside its recursive part
        std::vector<OutputColumn> columns = {};
    };

    // ---- expressions (TranslatorExpressions.cpp)
    Typed node(const Literal& literal) { return tsql::literal(literal.constant); }
    Typed node(const VariableRef& variable);
    Typed node(const ColumnRef& column);
    Typed node(const Unary& unary) {
        return (unary.isBitNot ? emitBitNot : emitNegate)(value(*unary.operand));
    }
    Typed node(const Binary& binary) {
        const Typed left = value(*binary.left);
        return emitBinary(binary.op, left, value(*binary.right));
    }
    Typed node(const Case& choice);
    Typed node(const Cast& cast);
    Typed node(const Call& call);
    Typed node(const ScalarQuery& query);
    Typed node(const NextValue& next);
    std::string test(const Compare& compare);
    std::string test(const Logic& logic);
    std::string test(const Not& negation) { return "(NOT " + condition(*negation.operand) + ")"; }
    std::string test(const IsNull& isNull) { return "(" + value(*isNull.operand).sql + " IS NULL)"; }
    std::string test(const InList& in);
    std::string test(const CompareQuery& compare);
    std::string test(const Like& like);
    std::string test(const Exists& exists) { return "EXISTS (" + query(*exists.query).sql + ")"; }
    Typed userCall(const Call& call);
    Typed aggregateCall(const FunctionInfo& function, const Call& call);
    Typed windowCall(const FunctionInfo& function, const Call& call);
    Typed grouping(const Call& call);
    Typed plainCall(const FunctionInfo& function, const Call& call);
    std::vector<Typed> values(const std::vector<ExprPtr>& exprs);
    static std::string liveValue(const std::string& key) { return "ts_variable(" + quotedText(key) + ")"; }
    static bool isNamed(const Source& source, std::span<const std::string> qualifier);
    const SourceColumn* findColumn(const ColumnRef& column, Scope& scope, const Source*& source);

    // ---- queries (TranslatorQueries.cpp)
    QueryText select(const Select& select, const Query& query);
    void requireRecursive(const Select& select, bool aggregates) const;
    QueryText assignInOrder(const Select& select, const Query& query, const std::string& rows);
    QueryText setOperation(const SetOperation& operation, const Query& query);
    std::string selectList(const Select& select, bool topLevel, int nextValue, QueryText& text);
    void selectItem(const SelectItem& item, QueryText& text, std::string& list, bool collate);
    void star(const SelectItem& item, QueryText& text, std::string& list, bool collate);
    void addOutput(QueryText& text, std::string& list, Column column, const Typed& value, bool collate);

    // ---- sources of queries (TranslatorSources.cpp)
    std::string from(const std::vector<TableRefPtr>& tables);
    static int lastSource(std::string sql, int sources);
    // applied: by APPLY, so that the table may use columns of the tables before it.
    std::string tableRef(const TableRef& table, bool applied = false);
    std::string namedTable(const NamedTable& table, const std::string& alias, bool applied);
    std::string commonTable(std::size_t index, const std::string& alias);
    // values: SQL of the arguments.
    std::string storedTable(const StoredModule& stored, const std::vector<std::string>& values,
                            const std::string& alias, bool applied);
    // Returns the SQL of the arguments, each converted to the type of its parameter.
    std::vector<std::string> argumentsOf(const StoredModule& function, const std::vector<ExprPtr>& arguments);
    std::string splitText(const NamedTable& table, const std::string& alias, bool applied);
    // key: of the query, as in TableInfo::through.
    std::string derivedTable(const Query& query, const std::string& key,
                             const std::vector<std::string>& names, const std::string& alias,
                             bool applied = false);
    std::string packedTable(const std::string& rows, const std::vector<OutputColumn>& columns,
                            const std::string& alias);
    std::string recursiveTable(const CommonTable& table, const std::string& alias);
    std::string join(const Join& join);
    // ---- FOR XML (TranslatorXml.cpp)
    QueryText forXml(const QueryText& rows, const ForXml& xml) const;

    std::string where(const ExprPtr& condition, bool binds);
    std::string groupBy(const Select& select);
    // distinctList: the list of SELECT DISTINCT, which must contain the items; else null. firstOfSet: the
    // first SELECT of a set operation, whose list must contain them. keys: receives items for the select
    // list: those with columns of outer queries, which SQLite accepts there only, or all.
    std::string orderBy(const std::vector<OrderItem>& items, const QueryText& text,
                        const std::string* distinctList = nullptr, const Select* firstOfSet = nullptr,
                        std::string* keys = nullptr, bool all = false);
    std::string rowCount(const Expr& expr, int least, int error);
    std::string changeLimit(const ExprPtr& top);
    std::string placed(const Select& select, const QueryText& text, const std::string& order);
    std::string limit(const Select* select, const Query& query);
    void refuseLooseColumns(int error, bool grouped);
    std::string nextAlias();
    void addSource(const TableInfo& table, const std::string& exposed, const std::string& alias);
    std::string addSource(const std::vector<OutputColumn>& columns, const std::string& exposed);
    // Runs `work` for a derived table or arguments of a table function. Unless they are applied, they see
    // outer queries, but not the tables beside them.
    template <typename Work>
    auto beside(bool applied, Work work) {
        const Temporarily visible(m_scope, applied ? m_scope : m_scope->outer);
        const Temporarily ofItself(m_depth, std::string());
        return work();
    }

    // ---- changes (TranslatorChanges.cpp)
    void useCommonTables(const Change& change);
    std::string insertRows(const TableInfo& target, const ColumnList& columns, const Insert& insert);
    std::string insertText(const TableInfo& target, const ColumnList& columns, const std::string& rows);
    Typed cell(const Expr& expr);
    std::string assigned(const Typed& value, const TableInfo& target, const TableColumn& column);
    std::string mergedRows();
    std::string returnedToVariables(const TableInfo& target, const Update& update);
    std::string filter(const Change& change);  // WHERE and LIMIT
    std::pair<std::string, const Source*> joinedSources(const TableInfo& target, const Change& change);
    Typed assignedValue(const TableInfo& target, const Source& source, const SetClause& clause);

    NameResolver& m_names;
    bool m_binds;
    bool m_inWhere = false;  // whose constants are bound
    Scope* m_scope = nullptr;
    std::vector<NamedQuery> m_with;
    std::vector<Parameter> m_parameters;
    std::vector<Column> m_assignments;
    // SQL for the variables that the statement assigns: before the row, then what is assigned further left.
    WordMap<std::string> m_live;
    int m_nextValue = 0;    // error of NEXT VALUE FOR in this place; 0: none
    WordSet m_sequences;    // that have given a value for the row
    bool m_sorted = false;  // rows are computed before they are sorted
    int m_aliases = 0;
    std::string m_depth;          // depth column that the recursive part must return
    std::string m_through;        // TableInfo::through of the changed table, within the FROM of the change
    bool m_returnsRowId = false;  // of its query: the last column is to be the row id
    TableInfo m_behind;           // the table of such a query
    std::int64_t m_maxRecursion = 100;
    QueryText m_output;
    const Merge* m_merge = nullptr;
    const MergeClause* m_clause = nullptr;
    std::vector<Source> m_merged;  // the source of the MERGE, in the table of its rows
    std::vector<std::string> m_steps;
    std::string m_newRows;
    bool m_topLevel = true;
    bool m_isLasting = true;
};

}  // namespace tsql
