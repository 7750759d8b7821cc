// Executor of a session's statements. Executor.cpp has the control of flow; each family of statements has its
// own file.
#pragma once

#include <chrono>
#include <map>

#include "catalogue/Constraints.h"
#include "execute/Engine.h"
#include "execute/Known.h"
#include "execute/RowRecord.h"
#include "functions/FunctionSession.h"
#include "storage/Backup.h"
#include "storage/Connection.h"
#include "syntax/Parser.h"
#include "types/Work.h"

namespace tsql {

struct SystemProcedure;
struct StatementCall;

enum class Flow { Next, Break, Continue, Return, Goto };

// Exceptions that end the execution of statements early.
struct Raised {  // an error on its way to a CATCH block
    Message message;
    const Frame* within = nullptr;  // frame whose CATCH blocks ignore it
};
struct ScopeEnd {};    // ends the procedure, or the batch outside a procedure
struct SessionEnd {};  // ends the session: severity 20 and above

// Options of SET. They are restored at the end of a procedure or of dynamic SQL.
struct Settings {
    bool noCount = false;
    bool abortOnError = false;  // XACT_ABORT
    bool implicitTransactions = false;
    bool quotedIdentifiers = true;
    bool padding = true;              // ANSI_PADDING: new columns keep trailing blanks
    bool describeOnly = false;        // FMTONLY
    bool parseOnly = false;           // only SET executes, and nothing is checked
    bool checkOnly = false;           // NOEXEC: only SET executes
    std::string identityInsert = {};  // full name of the table that accepts identities
    std::int64_t mostRows = 0;        // ROWCOUNT; 0: no limit
    int lockTimeout = -1;             // milliseconds; negative: the default

    // @@OPTIONS: the bits of the settings that are on.
    int bits() const {
        // ANSI_WARNINGS, ANSI_NULLS, ARITHABORT, ANSI_NULL_DFLT_ON, CONCAT_NULL_YIELDS_NULL
        constexpr int kAlwaysOn = 8 + 32 + 64 + 1024 + 4096;
        return kAlwaysOn + implicitTransactions * 2 + padding * 16 + quotedIdentifiers * 256 + noCount * 512 +
               abortOnError * 16384;
    }
};

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
    std::optional<TableInfo> findTable(const ObjectName& name) override;
    TableInfo table(const ObjectName& name) override { return table(name, kInvalidObjectName); }
    std::optional<SystemView> view(const ObjectName& name) override;
    std::int64_t mostRows() const override { return m_settings.mostRows; }
    std::optional<StoredModule> module(const ObjectName& name, std::string_view type) override;
    Typed nextValue(const ObjectName& sequence) override;
    void within(const StoredModule& query, const std::function<void()>& work) override;
    bool hasTriggers(const StoredModule& view) override {
        return !catalogue({view.database, {}, {}}).triggersOf(view.id).empty();
    }
    TableInfo calledTable(const StoredModule& function, const std::vector<std::string>& arguments,
                          const Translator& translator) override;
    // FunctionSession
    Value variableValue(std::string_view name) override;
    Value callFunction(std::string_view database, std::string_view key, Cells arguments) override;
    const Storage& storage() const override { return m_storage; }
    std::string databaseOf(const ObjectName& name) const override;
    Catalogue catalogue(const ObjectName& name) override;
    Value lookUp(std::string_view query, const std::string& database, Cells arguments) override;
    std::optional<ObjectInfo> object(const ObjectName& name) override;
    std::optional<std::int64_t> lastIdentity(const TableInfo& table) override;
    std::optional<std::int64_t> scopeIdentity() const override { return m_frames.back()->identity; }
    std::int64_t nextIdentity(std::string_view schema, std::string_view table, std::int64_t step) override;
    Value nextValue(std::string_view database, std::int64_t id) override;
    Value leastActiveRowVersion() override;
    int transactionState() const override { return m_doomed ? -1 : m_transactions > 0; }
    Value cursorStatus(std::string_view scope, std::string_view name) override;
    bool isUpdated(std::string_view column) const override;
    const Message* caughtError() const override { return m_caught.empty() ? nullptr : &m_caught.back(); }
    const Client& client() const override { return m_client; }

    void changeEntry(const std::function<void(SessionEntry&)>& change) {
        m_storage.withSessions([&](auto& entries) { change(entries[m_spid]); });
    }
    bool isCancelled() const { return m_sink && m_sink->cancelled(); }

  private:
    // ---- flow, variables, errors (Executor.cpp)
    bool run(ResultSink& sink, Frame& frame, const std::function<void()>& work);
    Flow runBlock(const Block& block);
    Flow runStatement(const Statement& statement);
    Flow guarded(int line, const std::function<Flow()>& work);
    std::optional<Flow> attempted(int line, const std::function<Flow()>& work);
    bool isSkipping() const { return m_settings.parseOnly || m_settings.checkOnly; }
    void check(const Block& block);
    void check(const StatementPtr& statement);  // null: no statement
    template <typename Node>
    void checkNode(const Node& node);
    void checkCall(const Execute& call);
    Flow run(const Declare& declare);
    Flow run(const Assign& assign);
    Flow run(const If& node);
    Flow run(const While& node);
    Flow run(const Jump& jump) { return jump.again ? Flow::Continue : Flow::Break; }
    Flow run(const Label&) { return Flow::Next; }
    Flow run(const Goto& node) {
        m_goto = node.label;
        return Flow::Goto;
    }
    Flow run(const Return& node);
    Flow run(const Compound& node) { return runBlock(node.statements); }
    Flow run(const TryCatch& node);
    Flow run(const Print& print);
    Flow run(const RaiseError& raise);
    Flow run(const Throw& node);
    void run(const WaitFor& wait);
    void fail(const SqlError& error, int line) { afterError(messageOf(error, line), /*raised=*/false); }
    void afterError(const Message& message, bool raised);
    void report(const Message& message) const { m_sink->message(message); }
    void inform(int number, std::initializer_list<std::string_view> values = {}) const {
        report(messageOf(sqlError(number, values), m_line));
    }
    Message messageOf(const SqlError& error, int line) const {
        return asMessage(error, line, m_frames.back()->procedure);
    }
    SqlError errorOf(const SqliteFailure& failure);
    Flow done(std::int64_t count, StatementKind kind = StatementKind::Other);
    void warnOfNulls();
    // Ends a statement without an error. The client learns the row count unless the kind is Other.
    Flow finished(std::int64_t rowCount = 0, StatementKind kind = StatementKind::Other);
    void failingAs(const SqlError& failure, const std::function<void()>& work);
    Value compute(const std::string& sql, const Translator& translator);
    TypedValue evaluate(const Expr& expr, const std::optional<SqlType>& type = {});
    Value evaluate(const Expr& expr, const SqlType& type) { return evaluate(expr, MaybeType(type)).value; }
    std::string evaluateText(const Expr& expr);                        // empty for NULL
    int evaluateInteger(const Expr& expr, TypeId type = TypeId::Int);  // 0 for NULL
    bool holds(const Expr& condition);
    std::vector<Value> parameterValues(const Translator& translator);
    void setVariable(const std::string& name, const CellView& value, const SqlType& type);

    // ---- cursors (ExecutorCursors.cpp)
    Flow run(const DeclareCursor& declare);
    void run(const ChangeCursor& change);
    Flow run(const Fetch& fetch);
    std::shared_ptr<Cursor>& cursorNamed(const CursorName& cursor);

    // ---- queries and changes of rows (ExecutorQueries.cpp)
    Flow run(const SelectStatement& statement);
    Flow run(const Insert& insert) { return runChange(insert, StatementKind::Insert); }
    Flow run(const InsertBulk& bulk);
    Flow run(const Update& update) { return runChange(update, StatementKind::Update); }
    Flow run(const Delete& remove) { return runChange(remove, StatementKind::Delete); }
    Flow run(const Merge& merge) { return runChange(merge, StatementKind::Merge); }
    void run(const Truncate& truncate);
    // Runs a change and the triggers that it fires.
    template <typename Node>
    Flow runChange(const Node& node, StatementKind kind);
    void apply(const Insert& insert, const TableInfo& target, Translator* merge = nullptr);
    void apply(const Update& update, const TableInfo& target, Translator* merge = nullptr);
    void apply(const Delete& remove, const TableInfo& target, Translator* merge = nullptr);
    void apply(const Merge& merge, const TableInfo& target);
    using ChangeRows = std::function<void(const TableInfo& target)>;
    std::int64_t sendRows(PreparedStatement& statement, std::span<const Column> columns,
                          std::int64_t most = 0);
    std::int64_t assignRows(PreparedStatement& statement, const std::vector<Column>& variables,
                            std::int64_t most = 0);
    void beginRows(std::span<const Column> columns) {
        if (!m_rowHandler) m_sink->columns(columns);
    }
    void sendRow(std::span<const Column> columns, Cells cells) {
        m_rowHandler ? (*m_rowHandler)(columns, cells) : m_sink->row(cells);
    }
    Flow selectInto(const Query& query, const ObjectName& name);
    ColumnList insertColumns(const TableInfo& target, const std::vector<std::string>& names,
                             bool defaultValues) const;
    void insertRow(const TableInfo& target, const ColumnList& columns, const std::vector<TypedValue>& cells);
    void insertRowsOf(const TableInfo& target, const ColumnList& columns, int misfit,  // state of error 213
                      const std::function<void()>& work);
    TableInfo changedTable(const Change& change, std::string_view verb);
    void updateInSteps(const TableInfo& target, const Translator& translator);
    void change(const TableInfo& target, std::string_view verb, const std::string& sql,
                const Translator& translator);
    void insertAll(const TableInfo& target, const std::function<std::int64_t()>& insertRows);
    void withIdentities(const TableInfo& target, const std::function<void()>& insert);
    void skipIdentities();
    void noteHighest(const TableInfo& target);
    void renumber(Catalogue& catalogue, const TableInfo& table);

    // ---- definitions (ExecutorDefinitions.cpp)
    void run(const CreateTable& create) { createTable(create); }
    void run(const AlterTable& alter);
    void run(const CreateIndex& create);
    void run(const AlterIndex& alter);
    void run(const Drop& drop);
    void define(const ObjectName& name, const std::function<void(Catalogue&)>& work);
    TableInfo createTable(const CreateTable& create);
    void startIdentity(const TableInfo& table);
    void setCounter(const std::string& schema, const std::string& name, std::int64_t value);
    std::optional<std::int64_t> counter(const std::string& schema, const std::string& name);
    Value rowVersion(int ahead);  // of the current database; 0: the last one
    std::vector<ObjectInfo> noteConstraints(Catalogue& catalogue, TableInfo table, const CreateTable& create);
    ObjectInfo constraintOf(Catalogue& catalogue, const TableInfo& table, const Constraint& constraint);
    std::string tableBody(Catalogue& catalogue, const TableInfo& table);
    CheckText computed(const TableInfo& table, const TableColumn& column);
    void makeIndex(const TableInfo& table, const ObjectInfo& index, const std::string& list,
                   const std::string& filter = {});
    void addIndex(Catalogue& catalogue, const TableInfo& table, const CreateIndex& create);
    void dropIndex(const TableInfo& table, const std::string& name);
    void dropIndex(const AlterIndex& index, bool ifExists);
    void renameIndex(const TableInfo& table, const std::string& name, const std::string& newName);
    std::set<std::string> filterColumns(const TableInfo& table, const ObjectInfo& index);
    void changeSchema(const TableInfo& table, const std::string& change, std::initializer_list<Value> values);
    void redefine(Catalogue& catalogue, const TableInfo& table);
    void checkRows(Catalogue& catalogue, const TableInfo& table, const ObjectInfo& key);
    void switchConstraints(Catalogue& catalogue, const TableInfo& table, const AlterTable& alter);
    void addColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& given,
                   const CreateTable& added);
    void fillColumn(const TableInfo& table, const TableColumn& column, const Typed& value);
    void refuseDependents(const TableInfo& table, std::string_view column, std::string_view verb,
                          const std::vector<ObjectInfo>& keys);
    void alterColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& definition);
    void dropConstraint(Catalogue& catalogue, const TableInfo& table, const std::string& name, bool ifExists);
    void dropObject(const ObjectName& name, const Drop& drop);
    void run(const DefineSequence& define);
    void dropTemporary(Frame& frame);
    void dropTemporary();
    void dropTable(const TableInfo& table);  // or temporary procedure
    void declareTable(const Declaration& declaration);
    // Runs `rollback` and preserves the rows of table variables.
    void keepTables(const std::function<void()>& rollback);

    // ---- user-defined types (ExecutorTypes.cpp)
    void run(const UserType& create);
    bool bindTable(const Declaration& parameter, const Argument* argument, Frame& frame);
    void receiveTable(const std::string& variable, const ProcedureCall::Argument& sent);

    // ---- new names (ExecutorRename.cpp)
    void run(const TransferObject& transfer);
    void place(Catalogue& owner, ObjectInfo object, const std::string& schema, const std::string& name);
    void renameObject(Catalogue& owner, const ObjectInfo& object, const std::string& newName);
    void renameColumn(Catalogue& owner, const TableInfo& table, TableColumn column, const std::string& name);

    // ---- triggers (ExecutorTriggers.cpp)
    TableInfo tableOfTrigger(const CreateModule& trigger);
    static void bindTrigger(const Catalogue& owner, const CreateModule& trigger, const TableInfo& table,
                            ObjectInfo& object);
    // Runs changes of a table and the triggers that they fire.
    Flow withTriggers(const std::vector<Firing>& changes, StatementKind kind,
                      const std::optional<Output>& output, const ChangeRows& change);
    std::vector<ObjectInfo> enabledTriggers(const TableInfo& table, std::string_view verb);
    void addFiring(Firing firing, std::vector<Firing>& all);
    void changeAndFire(const TableInfo& target, std::vector<Firing> firings, const ChangeRows& change);
    void fire(const ObjectInfo& trigger, const Firing& firing);
    bool namesChangedRows(const ObjectName& name) const;
    SystemView changedRows(const ObjectName& name);

    // ---- procedures of the system (ExecutorSystem.cpp)
    static const SystemProcedure* systemProcedure(std::string_view name);  // that clients may call
    int rename(const Frame& frame);
    int getAppLock(const Frame& frame);
    int releaseAppLock(const Frame& frame);
    AppLocks::Lock appLock(const Frame& frame, std::string_view mode);

    // ---- procedures and functions (ExecutorModules.cpp)
    Flow run(const CreateModule& module);
    Flow run(const Execute& execute);
    std::shared_ptr<const Batch> parsed(const std::string& text, const std::string& database);
    static const CreateModule& moduleOf(const Batch& batch) {
        return std::get<CreateModule>(batch.statements.front()->node);
    }
    // inside: database in which the text runs; empty: the session's.
    void runText(const std::string& text, const std::string& inside);
    // Passes the end of a procedure that the batch itself calls to the client.
    void asCall(const std::function<std::int32_t()>& work);
    std::optional<StoredModule> moduleOf(const SystemProcedure& procedure, const ObjectName& name);
    void run(const SystemStatement& statement);
    void callProcedure(const Execute& execute, const ObjectName& name, const SystemProcedure* system);
    void checkTransactions(int before, const std::string& procedure);
    // Arguments of a call in the order of the parameters; null: not given.
    using Arguments = std::vector<const Argument*>;
    Arguments bindArguments(const CreateModule& module, std::span<const Argument> given,
                            const std::string& name, Frame& frame);
    void returnOutputs(const CreateModule& module, const Arguments& arguments, const Execute& execute,
                       const Frame& frame);
    void inFrame(Frame& frame, const std::function<void()>& work);
    void runFrame(const Block& body, Frame& frame);
    void runFunction(const CreateModule& function, Frame& frame);
    bool runScope(const Block& body, Frame& frame);
    TableInfo viewTable(const StoredModule& view);

    // ---- calls of drivers (ExecutorPrepared.cpp)
    struct PreparedText {
        std::string statement, declarations;
    };
    // database: in which the statement runs; empty: the session's.
    bool callOfDriver(std::string_view name, const Execute& call, const std::string& database);
    void callStatement(const StatementCall& places, const Execute& call, const std::string& database);
    PreparedText statementOf(const StatementCall& places, const Execute& call);
    void describe(const PreparedText& text, const std::string& database);
    void runStatement(const PreparedText& text, const Execute& call, std::size_t firstValue,
                      const std::string& database);
    void callHandle(const std::string& name, const Execute& call);
    void fetchBlock(Cursor& cursor, const Execute& call);
    std::string textArgument(const Execute& call, std::size_t at, std::string_view parameter);
    std::int64_t integerArgument(const Execute& call, std::size_t at, std::int64_t usual = 0);
    void returnArgument(const Execute& call, std::size_t at, std::int64_t value);

    // ---- transactions (ExecutorTransactions.cpp)
    void run(const Transaction& transaction);
    void beforeWrite();
    // Locks the database that a statement changes, before its names are looked up: after the transaction has
    // read it, SQLite no longer waits for another writer.
    void claim(const ObjectName& name) {
        if (m_connection.inTransaction() && !isTemporaryName(name.name)) m_connection.lock(databaseOf(name));
    }
    void begin(const std::string& name);
    // IMPLICIT_TRANSACTIONS ON: the first use of a table begins a transaction, and so do definitions, BEGIN
    // TRANSACTION, which then begins two, OPEN and FETCH.
    bool awaitsTransaction() const {
        return m_settings.implicitTransactions && m_transactions == 0 && !m_checking &&
               !m_settings.describeOnly;
    }
    void beginImplicitly() {
        if (awaitsTransaction()) begin({});
    }
    void commit();
    void rollBack();
    void inTransaction(const std::function<void()>& work);
    void endTransaction(TransactionEvent event);
    bool transactionLost() { return m_begun && !m_connection.inTransaction(); }

    // ---- settings, databases, backup (ExecutorAdministration.cpp)
    void run(const SetOption& option);
    void run(const Use& use);
    void run(const CreateDatabase& create);
    void run(const AlterDatabase& alter);
    void run(const Backup& backup);
    Flow run(const Restore& restore);
    void run(const Maintenance& maintenance);
    void checkIdentity(const TableInfo& table, const Maintenance& check);
    void set(const Settings& settings);
    void useDatabase(const std::string& name);
    void releaseDatabase(std::string_view name, const SqlError& inUse);
    void dropDatabase(const std::string& name, bool ifExists);
    void informDone(std::string_view verb, const BackupHeader& header, std::string_view database,
                    std::chrono::steady_clock::time_point start) const;
    Progress progress(const Options& options = {});
    void runMedia(std::string_view verb, const std::function<void()>& work);
    Flow sendTable(const QueryText& table, std::span<const std::vector<Value>> rows);
    void restoreFrom(const std::string& file, const Restore& restore);

    // ---- names (ExecutorNames.cpp)
    std::shared_ptr<Known> known();
    void forget() { m_known = std::make_shared<Known>(Known{m_known->number + 1}); }
    struct Global;
    static const Global& global(std::string_view name);
    std::optional<ObjectInfo> visibleObject(const ObjectName& name);
    static std::string asWritten(const ObjectName& name);
    static ObjectInfo newObject(const Catalogue& owner, const ObjectName& name, std::string_view type);
    TableInfo table(const ObjectName& name, int missing, int state = 0, std::string_view verb = {});
    Catalogue temporary() { return {m_connection, "tempdb", std::string(kTempSchema)}; }
    TypedValue& local(std::string_view name);

    // ---- translations (ExecutorTranslations.cpp)
    using MaybeType = std::optional<SqlType>;
    using Translate = std::function<QueryText(Translator&)>;
    TranslatedPtr translated(Translation& place, const Translate& translate, const MaybeType& type = {},
                             Translator* merge = nullptr);
    TranslatedPtr translated(const Expr& expr, const MaybeType& type);  // to which it is converted
    TranslatedPtr translated(const Query& query);
    // merge: translator of the MERGE that a change belongs to, whose clauses are translated each time.
    template <typename Node, typename... Given>
    TranslatedPtr translated(const Node& node, Translator* merge, const TableInfo& target,
                             const Given&... given) {
        const auto translate = [&](Translator& translator) {
            return QueryText{translator.change(target, node, given...)};
        };
        return translated(node.translation, translate, {}, merge);
    }

    Storage& m_storage;
    AppLocks& m_locks;
    Connection m_connection;
    Client m_client;
    std::string m_database;
    int m_spid;
    ResultSink* m_sink = nullptr;
    const RowHandler* m_rowHandler = nullptr;  // receives the rows instead of the client
    std::vector<Frame*> m_frames;
    std::unordered_map<std::string, std::shared_ptr<const Batch>> m_parsed;
    std::vector<Message> m_caught;      // errors of the CATCH blocks being executed
    RowChange m_change;                 // change being executed, for its error messages
    std::optional<TableInfo> m_shadow;  // stands for the table whose change INSTEAD OF triggers receive
    std::shared_ptr<Known> m_known = std::make_shared<Known>();
    std::uint64_t m_knownVersion = 0;
    bool m_hadSnapshot = false;                 // when it was last looked at
    bool m_defined = false;                     // the open transaction has changed a catalogue
    std::optional<std::uint64_t> m_translated;  // version for which a statement is; empty in transactions
    std::string m_text;                         // current batch
    int m_line = 1;                             // line of the current statement
    int m_tries = 0;                            // number of TRY blocks around it
    int m_error = 0;                            // @@ERROR
    std::int64_t m_rowCount = 0;                // @@ROWCOUNT
    std::optional<std::int64_t> m_identity;
    std::optional<std::int64_t> m_batchIdentity;  // SCOPE_IDENTITY() of the batches, all one scope
    // Last identities generated in the transaction, by schema and stored name of the table.
    std::map<std::pair<std::string, std::string>, std::int64_t> m_givenIdentities;
    Cursors m_cursors;                                // GLOBAL cursors
    std::map<std::int64_t, PreparedText> m_prepared;  // by handle
    std::int64_t m_lastHandle = 0;
    bool m_checking = false;           // statements are checked, not executed
    bool m_ownTransaction = false;     // the open transaction is the statement's own
    int m_fewestTransactions = 0;      // COMMIT is an error at this number
    std::string m_goto;                // label, while the flow is Goto
    bool m_isCalledByQuery = false;    // a scalar function is running
    std::optional<InsertBulk> m_bulk;  // expects its rows
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
