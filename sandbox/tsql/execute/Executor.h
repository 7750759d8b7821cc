// Executor of a session's statements. Executor.cpp has the control of flow; each family of statements has its
// own file.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "catalogue/Catalogue.h"
#include "catalogue/Constraints.h"
#include "execute/Engine.h"
#include "execute/Frame.h"
#include "functions/FunctionSession.h"
#include "storage/Backup.h"
#include "storage/Connection.h"
#include "syntax/Ast.h"
#include "syntax/Parser.h"
#include "translate/Translator.h"
#include "types/Work.h"

namespace tsql {

// FirstLabel + n: GOTO the label of number n.
enum class Flow { Next, Break, Continue, Return, FirstLabel };

template <typename Node, typename... Others>
inline constexpr bool isOneOf = (std::is_same_v<Node, Others> || ...);

// Exceptions that end the execution of statements early.
struct Raised {  // an error on its way to a CATCH block
    Message message;
    const Frame* within = nullptr;  // frame whose CATCH blocks ignore it
};
struct ScopeEnd {};    // ends the procedure, or the batch outside a procedure
struct SessionEnd {};  // ends the session: severity 20 and above

// How a request of the client ended.
enum class RequestEnd { Whole, Aborted, SessionEnded };

// Options of SET. They are restored at the end of a procedure or of dynamic SQL.
struct Settings {
    bool noCount = false;
    bool abortOnError = false;  // XACT_ABORT
    bool implicitTransactions = false;
    bool quotedIdentifiers = true;
    bool describeOnly = false;        // FMTONLY
    bool parseOnly = false;           // only SET executes, and nothing is checked
    bool checkOnly = false;           // NOEXEC: only SET executes
    std::string identityInsert = {};  // full name of the table that accepts identities
    std::int64_t mostRows = 0;        // ROWCOUNT; 0: no limit
    int lockTimeout = -1;             // milliseconds; negative: the default

    // @@OPTIONS: the bits of the settings that are on.
    int bits() const {
        // ANSI_WARNINGS, ANSI_PADDING, ANSI_NULLS, ARITHABORT, ANSI_NULL_DFLT_ON, CONCAT_NULL_YIELDS_NULL
        constexpr int kAlwaysOn = 8 + 16 + 32 + 64 + 1024 + 4096;
        return kAlwaysOn + implicitTransactions * 2 + quotedIdentifiers * 256 + noCount * 512 +
               abortOnError * 16384;
    }
};

using RowHandler = std::function<void(std::span<const Column>, std::span<const CellView>)>;

class Executor final : public Session, public NameResolver, public FunctionSession {
  public:
    Executor(Storage& storage, AppLocks& locks, Client client, std::string_view database, int spid);
    ~Executor() override;

    // Session
    bool runBatch(std::string_view text, ResultSink& sink) override;
    bool call(ProcedureCall& call, ResultSink& sink) override;
    bool insertBulk(const RowSource& sendRows, ResultSink& sink) override;
    bool resetAroundTransaction(std::string_view database) override;
    const std::string& database() const override { return m_database; }

    // NameResolver
    SqlType variableType(std::string_view name) override;
    std::optional<TableInfo> findTable(const ast::ObjectName& name) override;
    TableInfo table(const ast::ObjectName& name) override { return table(name, message::kInvalidObjectName); }
    std::optional<SystemView> view(const ast::ObjectName& name) override;
    std::int64_t mostRows() const override { return m_settings.mostRows; }
    std::optional<StoredModule> module(const ast::ObjectName& name, std::string_view type) override;
    Typed nextValue(const ast::ObjectName& sequence) override;
    void within(const StoredModule& query, const std::function<void()>& work) override;
    // FunctionSession
    Value variableValue(std::string_view name) override;
    Value callFunction(std::string_view database, std::string_view key,
                       std::span<const CellView> arguments) override;
    const Storage& storage() const override { return m_storage; }
    std::string databaseOf(const ast::ObjectName& name) const override;
    Catalogue catalogue(const ast::ObjectName& name) override;
    std::optional<ObjectInfo> object(const ast::ObjectName& name) override;
    std::optional<std::int64_t> lastIdentity(const TableInfo& table) override;
    std::optional<std::int64_t> scopeIdentity() const override;
    std::int64_t nextIdentity(std::string_view schema, std::string_view table,
                              std::int64_t increment) override;
    Value nextValue(std::string_view database, std::int64_t id) override;
    int transactionState() const override { return m_doomed ? -1 : m_transactions > 0; }
    Value cursorStatus(std::string_view scope, std::string_view name) override;
    const Message* caughtError() const override { return m_caught.empty() ? nullptr : &m_caught.back(); }
    const std::string& loginName() const override { return m_client.login; }
    const std::string& clientHost() const override { return m_client.host; }
    const std::string& clientProgram() const override { return m_client.program; }

    template <typename Change>
    void changeEntry(Change change) {
        m_storage.withSessions([&](auto& entries) { change(entries[m_spid]); });
    }
    bool isCancelled() const { return m_sink && m_sink->cancelled(); }

  private:
    // ---- flow, variables, errors (Executor.cpp)
    template <typename Work>
    RequestEnd run(ResultSink& sink, Frame& frame, Work work);
    Flow runBlock(const ast::Block& block);
    Flow runStatement(const ast::Statement& statement);
    Flow guarded(int line, const std::function<Flow()>& work);
    static Flow flowTo(int label) { return static_cast<Flow>(static_cast<int>(Flow::FirstLabel) + label); }
    bool isSkipping() const { return m_settings.parseOnly || m_settings.checkOnly; }
    static bool isAlone(const ast::Block& block);
    void check(const ast::Block& block);
    void check(const ast::Statement& statement);
    template <typename Node>
    void checkNode(const Node& node);
    Flow describe(const ast::Statement& statement);
    Flow run(const ast::Declare& declare);
    Flow run(const ast::Assign& assign);
    Flow run(const ast::If& node);
    Flow run(const ast::While& node);
    Flow run(const ast::Break&) { return Flow::Break; }
    Flow run(const ast::Continue&) { return Flow::Continue; }
    Flow run(const ast::Label&) { return Flow::Next; }
    Flow run(const ast::Goto& node) { return flowTo(node.label); }
    Flow run(const ast::Return& node);
    Flow run(const ast::Compound& node) { return runBlock(node.statements); }
    Flow run(const ast::TryCatch& node);
    Flow run(const ast::Print& print);
    Flow run(const ast::RaiseError& raise);
    Flow run(const ast::Throw& node);
    Flow run(const ast::WaitFor& wait);
    void fail(const SqlError& error, int line);
    void afterError(const Message& message, bool raised);
    void report(const Message& message) const;
    void inform(int number, std::initializer_list<std::string_view> values = {}) const;
    Message messageOf(const SqlError& error, int line) const;
    static Message messageOf(const SqlError& error, int line, const std::string& procedure);
    SqlError errorOf(const SqliteFailure& failure);
    void done(std::int64_t count, StatementKind kind = StatementKind::Other);
    void warnOfNulls();
    Flow finished(std::int64_t rowCount = 0);  // ends a statement without rows
    void failingAs(const SqlError& failure, const std::function<void()>& work);
    Value compute(const std::string& sql, const Translator& translator);
    std::optional<TypedValue> knownValue(const ast::Expr& expr);
    TypedValue evaluate(const ast::Expr& expr);
    Value evaluate(const ast::Expr& expr, const SqlType& type);
    std::string evaluateText(const ast::Expr& expr);
    bool holds(const ast::Expr& condition);
    std::vector<Value> parameterValues(const Translator& translator);
    void setVariable(const std::string& name, const CellView& value, const SqlType& type);

    // ---- cursors (ExecutorCursors.cpp)
    Flow run(const ast::DeclareCursor& declare);
    Flow run(const ast::ChangeCursor& change);
    Flow run(const ast::Fetch& fetch);
    void openCursor(Cursor& cursor);
    Cursors& cursorsWith(const ast::CursorName& cursor);

    // ---- queries and changes of rows (ExecutorQueries.cpp)
    Flow run(const ast::SelectStatement& statement);
    Flow run(const ast::Insert& insert);
    Flow run(const ast::InsertBulk& bulk);
    Flow run(const ast::Update& update);
    Flow run(const ast::Delete& statement);
    Flow run(const ast::Truncate& truncate);
    std::int64_t sendRows(PreparedStatement& statement, const QueryText& text, std::int64_t most = 0);
    std::int64_t assignRows(PreparedStatement& statement, const std::vector<Assignment>& assignments,
                            std::int64_t most = 0);
    // Passes the rows that `work` sends to `handler` instead of the client.
    void divert(const RowHandler& handler, const std::function<void()>& work);
    void selectInto(const ast::Query& query, const ast::ObjectName& name);
    ColumnList insertColumns(const TableInfo& target, const std::vector<std::string>& names,
                             bool defaultValues) const;
    std::string insertText(const TableInfo& target, const ColumnList& columns, const ast::Insert& insert,
                           Translator& translator);
    void insertRow(const TableInfo& target, const ColumnList& columns, const std::vector<SqlType>& types,
                   std::vector<Value> cells);
    void insertRowsOf(const TableInfo& target, const ColumnList& columns, const std::function<void()>& work);
    void changeWithOutput(const TableInfo& target, std::string_view verb, const std::string& sql,
                          const Translator& translator, const std::optional<ast::Output>& output);
    TableInfo changedTable(const ast::Change& change, Translator& translator);
    void updateInSteps(const TableInfo& target, const Translator& translator,
                       const std::optional<ast::Output>& output);
    void change(const TableInfo& target, std::string_view verb, const std::string& sql,
                const Translator& translator);
    void insertAll(const TableInfo& target, const std::function<std::int64_t()>& insertRows);
    void withIdentities(const TableInfo& target, const std::function<void()>& insert);
    void loseIdentity(const TableInfo& target);
    void skipIdentities();
    void noteHighest(const TableInfo& target);
    void renumber(Catalogue& catalogue, const TableInfo& table);
    void keepIdentities();

    // ---- definitions (ExecutorDefinitions.cpp)
    Flow run(const ast::CreateTable& create);
    Flow run(const ast::AlterTable& alter);
    Flow run(const ast::CreateIndex& create);
    Flow run(const ast::AlterIndex& alter);
    Flow run(const ast::Drop& drop);
    void define(const ast::ObjectName& name, const std::function<void(Catalogue&)>& work);
    void checkDefaults(const ast::CreateTable& definition);
    TableInfo createTable(const ast::CreateTable& create);
    bool isOwn(const ObjectInfo& temporaryTable) const;
    void startIdentity(const TableInfo& table);
    void setCounter(const std::string& schema, const std::string& name, std::int64_t value);
    std::int64_t counter(const Catalogue& owner, std::int64_t sequence);
    std::vector<ObjectInfo> noteConstraints(Catalogue& catalogue, const TableInfo& table,
                                            const ast::CreateTable& definition);
    ObjectInfo constraintOf(Catalogue& catalogue, const TableInfo& table, const ast::Constraint& constraint);
    std::string tableBody(Catalogue& catalogue, const TableInfo& table);
    CheckText computed(const TableInfo& table, const TableColumn& column);
    void makeIndex(const TableInfo& table, const ObjectInfo& index, const std::string& list,
                   const std::string& filter = {});
    void addIndex(Catalogue& catalogue, const TableInfo& table, const ast::CreateIndex& create);
    void dropIndex(const TableInfo& table, const std::string& name);
    void dropIndex(const ast::AlterIndex& index, bool ifExists);
    void redefine(Catalogue& catalogue, const TableInfo& table);
    void checkRows(Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key);
    void switchConstraints(Catalogue& catalogue, const TableInfo& table, const ast::AlterTable& alter);
    void addColumn(Catalogue& catalogue, TableInfo& table, const ast::ColumnDefinition& definition);
    void fillColumn(const TableInfo& table, const TableColumn& column, const Typed& value);
    void refuseDependents(const TableInfo& table, std::string_view column, std::string_view verb,
                          const std::vector<ObjectInfo>& keys);
    void alterColumn(Catalogue& catalogue, TableInfo& table, const ast::ColumnDefinition& definition);
    void dropConstraint(Catalogue& catalogue, const TableInfo& table, const std::string& name, bool ifExists);
    void dropObject(const ast::ObjectName& name, const ast::Drop& drop);
    Flow run(const ast::DefineSequence& define);
    Flow run(const ast::CreateSchema& create);
    Flow run(const ast::TransferObject& transfer);
    void dropSchema(const std::string& name, bool ifExists);
    void dropTemporaryTables(Frame& frame);
    void dropTemporaryTables();
    void dropTable(const TableInfo& table);
    void declareTable(const ast::Declaration& declaration);
    // Runs `rollback` and preserves the rows of table variables.
    void keepTables(const std::function<void()>& rollback);

    // ---- procedures of the system (ExecutorSystem.cpp)
    struct SystemProcedure {
        std::string_view name;
        std::string_view parameters;
        int (Executor::*body)(const Frame& frame);  // null: `text` is the body
        std::string_view text = "RETURN";           // T-SQL
    };
    static const SystemProcedure* systemProcedure(std::string_view name);
    int helpText(const Frame& frame);
    int getAppLock(const Frame& frame);
    int releaseAppLock(const Frame& frame);
    std::optional<AppLocks::Lock> appLock(const Frame& frame, std::string_view mode);

    // ---- procedures and functions (ExecutorModules.cpp)
    Flow run(const ast::CreateModule& module);
    Flow run(const ast::Execute& execute);
    void checkBody(const ast::CreateModule& module);
    void reportMissingDependency(const ast::ObjectName& procedure);
    std::shared_ptr<const Batch> parsed(const std::string& text);
    // inside: database in which the text runs; empty: the session's.
    void runText(const std::string& text, const std::string& inside);
    void executeSql(const ast::Execute& execute, const std::string& database);
    // Passes the end of a procedure that the batch itself calls to the client.
    void asCall(const std::function<std::int32_t()>& work);
    void callProcedure(const ast::Execute& execute, const ast::ObjectName& name,
                       const SystemProcedure* system);
    void checkTransactions(int before, const std::string& procedure);
    // Arguments of a call in the order of the parameters; null: not given.
    using Arguments = std::vector<const ast::Argument*>;
    Arguments bindArguments(const ast::CreateModule& module, const ast::Execute& execute,
                            const std::string& name, Frame& frame);
    Value argumentValue(const ast::Expr& argument, const SqlType& type);
    void returnOutputs(const ast::CreateModule& module, const Arguments& arguments,
                       const ast::Execute& execute, const Frame& frame);
    void inFrame(Frame& frame, const std::function<void()>& work);
    void runFrame(const ast::Block& body, Frame& frame);
    bool runScope(const ast::Block& body, Frame& frame);
    std::vector<TableColumn> viewColumns(const ast::CreateModule& module);

    // ---- transactions (ExecutorTransactions.cpp)
    Flow run(const ast::Transaction& transaction);
    void beforeWrite();
    void claim(const ast::ObjectName& target);
    void begin(const std::string& name);
    bool awaitsTransaction() const;
    bool beginsImplicitly(const ast::Statement& statement) const;
    void save(const std::string& name);
    void commit();
    void rollBack();
    void undoTransaction();
    void rollBackTo(const std::string& name);
    void inTransaction(const std::function<void()>& work);
    void endTransaction(TransactionEvent event);
    bool transactionLost() { return m_begun && !m_connection.inTransaction(); }

    // ---- settings, databases, backup (ExecutorAdministration.cpp)
    Flow run(const ast::SetOption& option);
    Flow run(const ast::Use& use);
    Flow run(const ast::CreateDatabase& create);
    Flow run(const ast::AlterDatabase& alter);
    Flow run(const ast::Backup& backup);
    Flow run(const ast::Restore& restore);
    Flow run(const ast::CheckDatabase& check);
    Flow run(const ast::Maintenance& maintenance);
    void checkIdentity(const TableInfo& table, const ast::Maintenance& check);
    void set(const Settings& settings);
    void useDatabase(const std::string& name);
    void releaseDatabase(std::string_view name, const SqlError& inUse);
    void dropDatabase(const std::string& name, bool ifExists);
    void informDone(std::string_view verb, const BackupHeader& header, std::string_view database,
                    std::chrono::steady_clock::time_point start) const;
    Progress progress(std::int64_t step) const;
    void runMedia(std::string_view verb, const std::function<void()>& work);
    Flow sendTable(std::span<const Column> columns, std::span<const std::vector<Value>> rows);
    void restoreFrom(const std::string& file, const ast::Restore& restore);
    void reportFilesInUse(const BackupHeader& header) const;

    // ---- names (ExecutorNames.cpp)
    struct Global;
    static const std::vector<Global>& globals();
    static const Global& global(std::string_view name);
    std::optional<ObjectInfo> visibleObject(const ast::ObjectName& name);
    static std::string asWritten(const ast::ObjectName& name);
    static ObjectInfo newObject(const Catalogue& owner, const ast::ObjectName& name, std::string_view type);
    TableInfo table(const ast::ObjectName& name, int missing, int state = 0);
    Catalogue temporary() { return {m_connection, "tempdb", std::string(kTempSchema)}; }
    Variable& local(std::string_view name);

    Storage& m_storage;
    AppLocks& m_locks;
    FunctionContext m_functions{this};
    Connection m_connection;
    Client m_client;
    std::string m_database;
    int m_spid;
    ResultSink* m_sink = nullptr;
    std::vector<Frame*> m_frames;
    std::unordered_map<std::string, std::shared_ptr<const Batch>> m_parsed;
    std::vector<Message> m_caught;  // errors of the CATCH blocks being executed
    RowChange m_change;             // change being executed, for its error messages
    // Tables that the transaction has looked up. They do not change until the transaction itself defines
    // something.
    std::unordered_map<std::string, TableInfo> m_knownTables;
    std::string m_text;           // current batch
    int m_line = 1;               // line of the current statement
    int m_tries = 0;              // number of TRY blocks around it
    int m_error = 0;              // @@ERROR
    std::int64_t m_rowCount = 0;  // @@ROWCOUNT
    std::optional<std::int64_t> m_identity;
    std::optional<std::int64_t> m_batchIdentity;  // SCOPE_IDENTITY() of the batches, all one scope
    // Last identities generated in the transaction, by schema and stored name of the table.
    std::map<std::pair<std::string, std::string>, std::int64_t> m_givenIdentities;
    Cursors m_cursors;                      // GLOBAL cursors
    bool m_checking = false;                // statements are checked, not executed
    bool m_ownTransaction = false;          // the open transaction is the statement's own
    int m_fewestTransactions = 0;           // COMMIT is an error at this number
    bool m_insertsRows = false;             // INSERT ... EXECUTE is running
    std::optional<ast::InsertBulk> m_bulk;  // expects its rows
    int m_fetchStatus = 0;
    std::int64_t m_cursorRows = 0;
    int m_transactions = 0;         // @@TRANCOUNT
    bool m_doomed = false;          // the transaction can only be rolled back
    bool m_begun = false;           // it has begun in SQLite, too
    bool m_outlivedReset = false;   // it survived a reset of the session
    std::string m_transactionName;  // of the outermost transaction
    Settings m_settings;
    bool m_abortsCancelled = false;  // XACT_ABORT was on where the request was cancelled
};

}  // namespace tsql
