// Syntax tree of a batch: expressions, queries, statements. Queries for several grouping sets share nodes.
#pragma once

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "types/SqlTypes.h"
#include "types/Values.h"

namespace tsql {

struct Expr;
struct Query;
struct Statement;
struct Window;
struct CreateTable;
using ExprPtr = std::shared_ptr<const Expr>;
using QueryPtr = std::shared_ptr<Query>;
using StatementPtr = std::unique_ptr<Statement>;

// Object types, with the values of sysobjects.xtype.
inline constexpr std::string_view kTable = "U", kView = "V", kProcedure = "P", kFunction = "FN",
                                  kTableFunction = "IF", kRowsFunction = "TF", kPrimaryKey = "PK",
                                  kUnique = "UQ", kForeignKey = "F", kCheck = "C", kDefault = "D",
                                  kIndex = "IX", kTrigger = "TR", kSequence = "SO", kAliasType = "TYPE",
                                  kTableType = "TT";

// [database .] [schema .] name; `database..name` leaves the schema empty. The parser refuses server names.
struct ObjectName {
    std::string database;
    std::string schema;
    std::string name;
    int line = 1;
};

// A translation that the executor keeps for a node.
using Translation = std::weak_ptr<const struct Translated>;

// ---- expressions: values ---------------------------------------------------------------------------------
struct Literal {
    TypedValue constant;
};
struct VariableRef {
    std::string name;  // "@x", or "@@x" for a global
};
struct ColumnRef {
    std::vector<std::string> path;  // [database .] [schema .] [table .] column
};
struct Unary {
    bool isBitNot;  // else minus
    ExprPtr operand;
};
struct Binary {
    BinaryOp op;
    ExprPtr left, right;
};
struct Case {
    std::vector<std::pair<ExprPtr, ExprPtr>> branches;
    ExprPtr otherwise;  // may be null
};
struct Cast {
    ExprPtr operand;
    SqlType type;
    ExprPtr style;  // may be null
    Conversion kind = Conversion::Cast;
};
struct OrderItem {
    ExprPtr value;
    bool descending = false;
};
struct Call {
    ObjectName name;
    std::vector<ExprPtr> arguments;
    bool distinct = false;
    bool star = false;                   // COUNT(*)
    std::unique_ptr<Window> over = {};   // null without OVER
    std::vector<OrderItem> within = {};  // WITHIN GROUP (ORDER BY ...)
};
struct ScalarQuery {
    QueryPtr query;
};
struct NextValue {  // NEXT VALUE FOR
    ObjectName sequence;
};

// ---- expressions: conditions -----------------------------------------------------------------------------
struct Compare {
    CompareOp op;
    ExprPtr left, right;
};
struct Logic {
    bool isAnd;
    ExprPtr left, right;
};
struct Not {
    ExprPtr operand;
};
struct IsNull {
    ExprPtr operand;
};
struct InList {
    ExprPtr operand;
    std::vector<ExprPtr> items;
};
// operand op ALL | ANY (query), or operand IN (query), which is = ANY
struct CompareQuery {
    CompareOp op;
    bool all;
    ExprPtr operand;
    QueryPtr query;
};
struct Like {
    ExprPtr operand, pattern, escape;  // escape may be null
};
struct Exists {
    QueryPtr query;
};

struct Expr {
    using Node = std::variant<Literal, VariableRef, ColumnRef, Unary, Binary, Case, Cast, Call, ScalarQuery,
                              NextValue, Compare, Logic, Not, IsNull, InList, CompareQuery, Like, Exists>;
    static constexpr std::size_t kFirstCondition = 10;  // Compare and what follows it

    int line = 1;
    Node node;
    mutable Translation translation = {};
    bool isCondition() const { return node.index() >= kFirstCondition; }
};
inline ExprPtr makeExpr(int line, Expr::Node node) {
    return std::make_shared<const Expr>(Expr{line, std::move(node)});
}

// ---- queries ---------------------------------------------------------------------------------------------
struct TableRef;
using TableRefPtr = std::shared_ptr<TableRef>;
struct NamedTable {
    ObjectName name;                                     // a table variable's begins with @
    std::optional<std::vector<ExprPtr>> arguments = {};  // of a table function
};
struct DerivedTable {
    QueryPtr query;
    std::vector<std::string> columns;  // (SELECT ...) alias(columns)
};
struct Join {
    std::string_view kind;  // INNER, LEFT, RIGHT, FULL or CROSS
    TableRefPtr left, right;
    ExprPtr on;            // null for CROSS JOIN and APPLY
    bool applies = false;  // APPLY: the right side sees the columns of the left one
};
struct TableRef {
    std::variant<NamedTable, DerivedTable, Join> node;
    std::string alias;  // empty without alias, and for a join
    int line = 1;
};

struct Identity {
    std::int64_t seed = 1, increment = 1;
};
struct SelectItem {
    ExprPtr value;                                              // null for *; of SELECT @v += 1: @v + 1
    std::vector<std::string> starOf;                            // qualifier of t.*
    std::string alias;                                          // empty if there is none
    std::string variable;                                       // SELECT @v = value
    std::optional<std::pair<SqlType, Identity>> identity = {};  // IDENTITY(), with the value NULL
    std::vector<std::string> replaced = {};  // columns that the * of a PIVOT or UNPIVOT leaves out
};
struct Window {
    std::vector<ExprPtr> partition;
    std::vector<OrderItem> order;
    std::string frame;  // "ROWS ...", the same in T-SQL and SQLite; empty if there is none
};
struct Select {
    bool distinct = false;
    ExprPtr top;  // may be null
    bool percent = false, ties = false;
    bool placesRows() const { return percent || ties; }  // LIMIT of SQLite cannot express it
    std::vector<SelectItem> items;
    std::vector<TableRefPtr> from;
    ExprPtr where;
    std::vector<ExprPtr> groupBy;
    bool pivots = false;             // also grouped by the columns of its *, the first item
    std::vector<ExprPtr> ungrouped;  // keys of other grouping sets, which are NULL
    std::size_t sets = 1;            // grouping sets, each of which has a Select of its own
    ExprPtr having;
};
inline constexpr std::string_view kUnion = "UNION", kUnionAll = "UNION ALL", kExcept = "EXCEPT";
struct SetOperation {
    std::string_view op;  // or INTERSECT; the same in T-SQL and SQLite
    QueryPtr left, right;
};
struct CommonTable {
    std::string name;
    std::vector<std::string> columns;
    QueryPtr query;
};
// FOR XML RAW or PATH
struct ForXml {
    bool path = false;
    bool elements = false;  // columns are elements, else attributes
    bool typed = false;     // TYPE
    std::string row = "row";
    std::string root;  // empty if there is none
};
struct Query {
    std::vector<CommonTable> with;
    std::variant<Select, SetOperation> body;
    std::vector<OrderItem> orderBy;
    ExprPtr offset, fetch;  // OFFSET n ROWS FETCH NEXT m ROWS ONLY
    std::optional<ForXml> xml;
    std::optional<std::int64_t> maxRecursion;  // OPTION (MAXRECURSION n)
    int line = 1;
    mutable Translation translation = {};
};

// ---- statements ------------------------------------------------------------------------------------------
using Block = std::vector<StatementPtr>;

// CREATE TYPE, and the type as a declaration uses it.
struct UserType {
    ObjectName name;
    std::int64_t id = 0;  // of its object; 0: none
    std::string text;     // definition behind the name
    SqlType type = {};    // of an alias type
    bool nullable = true;
    std::shared_ptr<CreateTable> table = {};  // of a table type
};
// Declaration of a variable or parameter. Parameters with a table are READONLY.
struct Declaration {
    std::string name;
    SqlType type;
    ExprPtr value;                                  // may be null
    std::shared_ptr<const CreateTable> table = {};  // DECLARE @t TABLE (...)
    UserType userType = {};                         // without an id: another type
    bool output = false;
    bool isCursor = false;  // DECLARE @c CURSOR
};
// Parameter, or variable declared anywhere in a batch or module: it exists from the beginning, as NULL.
using Local = std::pair<std::string, SqlType>;
struct Declare {
    std::vector<Declaration> variables;
};
struct Assign {
    std::string name;
    ExprPtr value;  // of SET @x += 1: @x + 1
};
struct SetOption {
    std::vector<std::string> names;  // in upper case
    bool on = false;
    std::optional<ObjectName> table;     // IDENTITY_INSERT
    std::optional<std::int64_t> number;  // LOCK_TIMEOUT, ROWCOUNT
};
struct If {
    ExprPtr condition;
    StatementPtr then, otherwise;
};
struct While {
    ExprPtr condition;
    StatementPtr body;
};
struct Jump {
    bool again = false;  // CONTINUE, else BREAK
};
struct Label {
    std::string name;
};
struct Goto {
    std::string label;
};
struct Return {
    ExprPtr value;  // may be null
};
struct Compound {
    Block statements;
};
struct TryCatch {
    Block attempt, handler;
};
struct Print {
    ExprPtr value;
};
// Options behind WITH, by their phrases, and their values: null without one.
using Options = std::multimap<std::string_view, ExprPtr>;
struct RaiseError {
    std::vector<ExprPtr> values;  // message, severity, state, arguments
    Options options = {};
};
struct Throw {
    std::vector<ExprPtr> values;  // number, message, state; empty: THROW without arguments
};
struct WaitFor {
    ExprPtr time;
    bool until = false;  // WAITFOR TIME
};
struct Use {
    std::string database;
};

// DECLARE name CURSOR FOR query, or SET @name = CURSOR FOR query
struct DeclareCursor {
    std::string name;
    QueryPtr query;
    bool local = false;
    bool scroll = false;
    bool counted = false;  // STATIC or SCROLL: @@CURSOR_ROWS is the number of rows
};
enum class CursorVerb { Open, Close, Deallocate, Assign };
struct CursorName {
    std::string name;  // of a variable: with @
    bool global = false;
};
struct ChangeCursor {
    CursorVerb verb;
    CursorName cursor;
    std::string variable = {};  // SET @variable = cursor
};
enum class FetchFrom { Next, Prior, First, Last, Absolute, Relative };
struct Fetch {
    FetchFrom from = FetchFrom::Next;
    ExprPtr offset;  // for Absolute and Relative
    CursorName cursor;
    std::vector<std::string> into;  // empty: the row is a result set
};

struct SelectStatement {
    QueryPtr query;
    std::optional<ObjectName> into;
};
// OUTPUT items [INTO table [(columns)]]
struct Output {
    std::vector<SelectItem> items;
    std::optional<ObjectName> into;
    std::vector<std::string> columns;
};
// Common parts of INSERT, UPDATE and DELETE.
struct Change {
    ObjectName table;  // or the alias of a table in `from`
    std::vector<CommonTable> with;
    std::optional<Output> output;
    ExprPtr top;  // `top` and `where` may be null
    std::vector<TableRefPtr> from;
    ExprPtr where;
    std::optional<std::int64_t> maxRecursion;  // OPTION (MAXRECURSION n)
    mutable Translation translation = {};
};
struct Insert : Change {
    std::vector<std::string> columns;
    std::vector<std::vector<ExprPtr>> rows;  // null: DEFAULT
    QueryPtr query;                          // source of the rows instead of VALUES: a query or a procedure
    StatementPtr execute;
    bool defaultValues = false;
    static constexpr std::string_view kVerb = "INSERT";
};
// INSERT BULK, whose rows the client sends after the batch.
struct InsertBulk {
    ObjectName table;
    std::vector<std::string> columns;
    bool keepsNulls = false;  // else NULL becomes the default of its column
    bool firesTriggers = false;
    RowSource sendRows{};  // null until the rows have arrived
};
struct SetClause {
    std::string table;  // may be empty
    std::string column;
    std::string variable;        // SET @v = value, or SET @v = column = value
    std::optional<BinaryOp> op;  // SET column += value
    ExprPtr value;               // null: DEFAULT
};
struct Update : Change {
    std::vector<SetClause> sets;
    static constexpr std::string_view kVerb = "UPDATE";
};
struct Delete : Change {
    static constexpr std::string_view kVerb = "DELETE";
};
// Words of WHEN: rows of both tables, of the source only, of the target only.
inline constexpr std::string_view kMatchedRows = "MATCHED", kNewRows = "NOT MATCHED",
                                  kOldRows = "NOT MATCHED BY SOURCE";
struct MergeClause {
    std::string_view rows;
    ExprPtr condition;  // may be null
    std::variant<Delete, Update, Insert> change;
    std::string_view verb() const { return std::array{"DELETE", "UPDATE", "INSERT"}[change.index()]; }
};
struct Merge : Change {  // `where` is the condition of ON
    std::string alias;   // of the table
    std::vector<TableRefPtr> source;
    std::vector<MergeClause> clauses;
    static constexpr std::string_view kVerb = "MERGE";
};
struct Truncate {
    ObjectName table;
};

inline constexpr std::string_view kNoAction = "NO ACTION";
struct Constraint {
    std::string_view type;  // kPrimaryKey, kUnique, kCheck, kForeignKey or kDefault
    std::string name;       // empty: generated
    std::vector<std::string> columns;
    ExprPtr check;
    std::string text;    // of the DEFAULT value
    std::string source;  // whole text without the name, for parseConstraint()
    ObjectName references = {};
    std::vector<std::string> referencedColumns;
    std::string onDelete{kNoAction}, onUpdate{kNoAction};  // of a foreign key
    bool does(std::string_view action) const { return onDelete == action || onUpdate == action; }
};
struct ColumnDefinition {
    std::string name;
    SqlType type;
    std::optional<bool> nullable = {};
    std::optional<Identity> identity = {};
    std::string computed = {};  // text of its expression; `type` is not known then
    bool persisted = false;
    bool withValues = false;  // ALTER TABLE ADD: existing rows get the default
    std::int64_t userType = 0;
};
struct CreateIndex {
    std::string name;
    ObjectName table = {};
    std::vector<std::pair<std::string, bool>> columns = {};  // name, descending
    std::vector<std::string> included = {};
    bool unique = false;
    ExprPtr filter = {};  // null: every row
    std::string filterText = {};
};
struct CreateTable {
    ObjectName table;
    std::vector<ColumnDefinition> columns;
    std::vector<Constraint> constraints;  // also those of columns
    std::vector<CreateIndex> indexes = {};
};
struct AlterTable {
    CreateTable added;  // columns and constraints to add to the table named in it
    std::optional<ColumnDefinition> altered;
    std::vector<std::string> dropColumns, dropConstraints;
    bool ifExists = false;
    std::optional<bool> checksRows = {};     // WITH CHECK or NOCHECK
    std::optional<bool> enables = {};        // CHECK or NOCHECK CONSTRAINT
    std::vector<std::string> switched = {};  // names of these constraints; empty: ALL
};
struct AlterIndex {
    std::string name;  // empty: all
    ObjectName table;
};
struct Drop {
    std::string kind;  // table, view, procedure ...
    std::vector<ObjectName> names;
    std::vector<AlterIndex> indexes;  // instead of names
    bool ifExists = false;
};
// ALTER SCHEMA schema TRANSFER object
struct TransferObject {
    std::string schema;
    ObjectName object;
};
// CREATE or ALTER SEQUENCE with its options by name. NO MINVALUE and its like have no value.
struct DefineSequence {
    ObjectName name;
    bool alter = false;
    SqlType type;
    std::map<std::string_view, std::optional<std::int64_t>> options = {};
};
struct CreateDatabase {
    std::string name;
};
struct AlterDatabase {
    std::string name;       // empty: the session's database
    std::string newName;    // empty: a setting that has no effect
    bool excludes = false;  // other sessions: SINGLE_USER, RESTRICTED_USER
};

// CREATE or ALTER PROCEDURE, FUNCTION, VIEW or TRIGGER. The whole text of the batch is stored.
struct CreateModule {
    ObjectName name;
    bool function = false;
    bool alter = false, create = true;  // both: CREATE OR ALTER
    std::vector<Declaration> parameters;
    SqlType returns;
    Block body;
    std::vector<Local> locals;
    QueryPtr query;                    // of a view, or of a function that returns a table
    std::vector<std::string> columns;  // CREATE VIEW name (columns)
    bool checksRows = false;           // WITH CHECK OPTION
    std::vector<std::string> events;   // of a trigger: INSERT, UPDATE, DELETE
    ObjectName table = {};             // of a trigger
    bool insteadOf = false;
    std::optional<Declaration> rows = {};  // table variable that a function of statements returns
    bool isTrigger() const { return !events.empty(); }
};
struct Argument {
    std::string name;  // "@x"; empty for a positional argument
    ExprPtr value;     // null: DEFAULT or a table
    bool output = false;
    std::string table = {};  // table variable
};
struct Execute {
    std::string resultVariable;
    ObjectName procedure;
    std::string procedureVariable = {};  // EXEC @name
    std::vector<Argument> arguments;
    ExprPtr text;  // EXEC ('...')
};
// A statement that a system procedure executes.
struct SystemStatement {
    ObjectName procedure;
    std::vector<std::map<std::string, std::string>> calls = {};  // values of parameters; the others are NULL
};

enum class TransactionVerb { Begin, Commit, Rollback, Save };
struct Transaction {
    TransactionVerb verb;
    ExprPtr name;  // null if not given
};
struct Backup {
    ExprPtr database, file;
    Options options = {};
};
struct Restore {
    std::string_view what;  // DATABASE, FILELISTONLY, HEADERONLY or VERIFYONLY
    ExprPtr database, file;
    Options options = {};
};

// UPDATE STATISTICS, CHECKPOINT and DBCC. Most need no more than a message here.
struct Maintenance {
    std::string dbcc;                 // CHECKDB, CHECKIDENT ...; empty: not DBCC
    bool onlyFaults = false;          // NO_INFOMSGS
    std::optional<ObjectName> table;  // must exist
    ExprPtr database;                 // of CHECKDB; null: the current one
    bool reseeds = false;             // CHECKIDENT
    ExprPtr seed;                     // null: the highest value of the column
};

template <typename Node, typename... Others>
inline constexpr bool isOneOf = (std::is_same_v<Node, Others> || ...);

struct Statement {
    using Node = std::variant<Declare, Assign, SetOption, If, While, Jump, Label, Goto, Return, Compound,
                              TryCatch, Print, RaiseError, Throw, WaitFor, Use, SelectStatement, Insert,
                              InsertBulk, Update, Delete, Merge, Truncate, CreateTable, AlterTable,
                              CreateIndex, Drop, CreateDatabase, AlterDatabase, AlterIndex, TransferObject,
                              DefineSequence, UserType, CreateModule, Execute, SystemStatement, Transaction,
                              Backup, Restore, Maintenance, DeclareCursor, ChangeCursor, Fetch>;
    int line = 1;
    Node node;
};

}  // namespace tsql
