#include "execute/Executor.h"

namespace tsql {

Executor::Executor(Storage& storage, AppLocks& locks, Client client, std::string_view database, int spid)
    : m_storage(storage),
      m_locks(locks),
      m_connection(
          storage, [this] { return isCancelled(); },
          [this] { changeEntry([](auto& entry) { entry.waited = std::chrono::system_clock::now(); }); }),
      m_client(std::move(client)),
      m_spid(spid) {
    registerFunctions(m_connection.handle(), *this);
    m_database = storage.canonicalName(database);
    if (m_database.empty()) throw sqlError(kCannotOpenDatabase, {database});
    m_connection.attach(m_database);
    changeEntry([this](SessionEntry& entry) {
        entry = {m_client, m_database, std::chrono::system_clock::now()};
    });
}

Executor::~Executor() {
    m_storage.withSessions([this](auto& entries) { entries.erase(m_spid); });
    m_locks.releaseAll(this);
}

// Runs a request of the client to its end or to the error that ends it. Returns false if it ends the session.
bool Executor::run(ResultSink& sink, Frame& frame, const std::function<void()>& work) {
    const Temporarily toClient(m_sink, &sink);
    const Temporarily cancellable(isBatchCancelled, [this] { return isCancelled(); });
    bool sessionContinues = true;
    changeEntry([](SessionEntry& entry) { entry.isRunning = true; });
    try {
        work();
    } catch (const SyntaxError& error) {
        m_error = error.number;
        report(asMessage(error, error.line, error.procedure));
    } catch (const SqliteFailure& failure) {  // while the types that the text names were looked up
        report(asMessage({kUserDefined, failure.what()}));
    } catch (const ScopeEnd&) {
    } catch (const BatchEnd&) {
        frame.isAborted = true;
    } catch (const SessionEnd&) {
        sessionContinues = false;
    }
    // SQLite rolls back a transaction when a change in it is interrupted. XACT_ABORT demands this of every
    // cancelled request.
    const bool aborts =
        (m_settings.abortOnError || std::exchange(m_abortsCancelled, false)) && m_transactions > 0;
    if (transactionLost() || (aborts && isCancelled())) rollBack();
    if (m_doomed) {
        report(asMessage(sqlError(kDoomedAtEndOfBatch)));
        rollBack();
    }
    frame.temporary.clear();  // #tables of a batch belong to the session
    dropTemporary(frame);
    if (!m_connection.inTransaction()) m_connection.detachAllBut(m_database);
    changeEntry([this](SessionEntry& entry) {
        entry.isRunning = false;
        entry.database = m_database;
        entry.hasTransaction = m_connection.inTransaction();
    });
    return sessionContinues;
}

bool Executor::runBatch(std::string_view text, ResultSink& sink) {
    Frame frame;
    frame.identity = m_batchIdentity;
    return run(sink, frame, [&] {
        const Finally keepIdentity([&] { m_batchIdentity = frame.identity; });
        m_text = text;
        const auto batch = parsed(m_text, m_database);
        frame.declare(batch->locals);
        runFrame(batch->statements, frame);
    });
}

// Runs the call as EXEC @ = procedure @name = value, @name = @1 OUTPUT ... SQL text cannot name these
// variables.
bool Executor::call(ProcedureCall& call, ResultSink& sink) {
    Frame frame;
    const auto variable = [](std::size_t i) { return '@' + std::to_string(i); };
    const bool sessionContinues = run(sink, frame, [&] {
        Execute execute{"@", parseObjectName(call.procedure), {}, {}, nullptr};
        frame.variables["@"] = {Null{}, simpleType(TypeId::Int)};
        const auto runCall = [&] {
            for (std::size_t i = execute.arguments.size(); i < call.arguments.size(); ++i) {
                auto& argument = call.arguments[i];
                auto& given = execute.arguments.emplace_back(Argument{argument.name, nullptr, false});
                if (argument.isDefault) continue;
                if (argument.rows) receiveTable(given.table = variable(i), argument);
                if (argument.rows) continue;
                frame.variables[variable(i)] = {std::move(argument.value), argument.type};
                given.value = std::make_unique<Expr>(Expr{1, VariableRef{variable(i)}});
                given.output = argument.output;
            }
            return isSkipping() ? Flow::Next : this->run(execute);
        };
        inFrame(frame, [&] { guarded(1, runCall); });
    });
    for (std::size_t i = 0; i < call.arguments.size(); ++i)
        if (call.arguments[i].output && frame.variables.contains(variable(i)))
            call.arguments[i].value = frame.variables[variable(i)].value;
    if (const auto* status = std::get_if<std::int64_t>(&frame.variables["@"].value))
        call.status = static_cast<int>(*status);
    call.aborted = frame.isAborted;
    return sessionContinues;
}

bool Executor::insertBulk(const RowSource& sendRows, ResultSink& sink) {
    Frame frame;
    return run(sink, frame, [&] {
        if (!m_bulk) throw SyntaxError(unsupported("rows without INSERT BULK"), 1);
        InsertBulk bulk = *std::exchange(m_bulk, std::nullopt);
        bulk.sendRows = sendRows;
        inFrame(frame, [&] { guarded(1, [&] { return this->run(bulk); }); });
    });
}

Flow Executor::runBlock(const Block& block) {
    for (auto next = block.begin(); next != block.end();) {
        const Flow flow = runStatement(**next++);
        if (flow == Flow::Next) continue;
        next = std::ranges::find_if(block, [&](const StatementPtr& statement) {
            const auto* label = std::get_if<Label>(&statement->node);
            return label && flow == Flow::Goto && sameWord(label->name, m_goto);
        });
        if (next == block.end()) return flow;
    }
    return Flow::Next;
}

Flow Executor::runStatement(const Statement& statement) {
    return guarded(statement.line, [&] {
        if (isSkipping() && !std::holds_alternative<SetOption>(statement.node)) return Flow::Next;
        return std::visit(
            [this]<typename Node>(const Node& node) {
                constexpr bool defines =
                    isOneOf<Node, AlterTable, CreateIndex, AlterIndex, Drop, Truncate, Maintenance>;
                std::string& schemaName = m_frames.back()->schemaName;  // definitions use the caller's: dbo
                const Temporarily outside(schemaName, defines ? std::string() : schemaName);
                // SET FMTONLY ON: nothing executes, and queries return column metadata only.
                constexpr bool describes =
                    isOneOf<Node, SelectStatement, SetOption, Declare, Compound, If, Execute>;
                if (m_settings.describeOnly && !describes) return Flow::Next;
                if constexpr (!std::is_void_v<decltype(run(node))>) return run(node);
                run(node);
                return finished();
            },
            statement.node);
    });
}

// Runs a statement. An error in it is reported, or leaves as Raised.
Flow Executor::guarded(int line, const std::function<Flow()>& work) {
    std::optional<Flow> flow;
    while (!flow) flow = attempted(line, work);
    return *flow;
}

// Empty: the definitions have changed since the names in the statement were looked up.
std::optional<Flow> Executor::attempted(int line, const std::function<Flow()>& work) {
    if (isCancelled()) throw BatchEnd{};
    m_line = line;
    beginStatement();
    m_hadSnapshot = m_hadSnapshot && m_connection.inTransaction();
    if (m_transactions == 0) m_givenIdentities.clear();
    const bool isStable = m_isCalledByQuery || m_connection.inTransaction();
    const std::optional version = isStable ? std::nullopt : std::optional(m_storage.catalogueVersion());
    const Temporarily translated(m_translated, version);
    try {
        return work();
    } catch (const SyntaxError& error) {  // in dynamic SQL, which ends without its caller
        afterError(asMessage(error, error.line, error.procedure), !m_settings.abortOnError);
    } catch (const SqlError& error) {
        fail(error, line);
    } catch (const SqliteFailure& failure) {
        if (failure.code != SQLITE_AUTH) return fail(errorOf(failure), line), Flow::Next;
        forget();
        // In a transaction SQLite does so itself; reading would keep the transaction from waiting for
        // writers.
        if (!m_connection.inTransaction()) m_connection.readSchemas();
        m_change.verb.clear();
        return std::nullopt;
    } catch (const std::bad_alloc&) {
        fail(sqlError(kInsufficientMemory), line);
    }
    return Flow::Next;
}

// raised: the error is one of RAISERROR, which by itself ends nothing.
void Executor::afterError(const Message& message, bool raised) {
    m_error = message.number;
    m_rowCount = 0;
    beginStatement();
    const bool inFunction = m_frames.back()->isFunction;
    const std::string verb = std::exchange(m_change.verb, {});
    if (transactionLost()) rollBack();
    try {  // identities and values of sequences are not given again
        skipIdentities();
    } catch (const SqliteFailure&) {  // the disk is full: they may be reused
    }
    // A constraint that no row has broken ends the batch.
    const bool badDefinition = message.number == kConstraintNotCreated && verb.empty();
    const bool endsBatch =
        !raised && (m_settings.abortOnError || endOf(message.number) == Ends::Batch || badDefinition);
    const bool endsHere = !raised && endOf(message.number) == Ends::Scope;
    const bool refused = !raised && message.number == kUserDefined;  // the statement is not supported
    const Frame* const blind = endsHere && !inFunction ? m_frames.back() : nullptr;
    if (message.severity < kFatalSeverity && (m_tries > (blind ? blind->tries : 0) || inFunction)) {
        m_doomed = m_doomed || (endsBatch && m_transactions > 0);
        if (verb == "INSERT" || verb == "UPDATE" || verb == "DELETE") done(0);  // before CATCH's results
        throw Raised{message, blind};
    }
    report(message);
    if (message.severity >= kFatalSeverity) throw SessionEnd{};
    if (endsBatch) {
        rollBack();
        throw BatchEnd{};
    }
    if (!raised && !verb.empty() && !endsHere && !refused)
        report(asMessage(sqlError(kStatementTerminated), message.line, message.procedure));
    done(-1);  // separates the error from the next statement's rows
    if (endsHere) throw ScopeEnd{};
    if (refused) throw BatchEnd{};
}

void Executor::warnOfNulls() {
    if (takeNullLeftOut() && !m_frames.back()->isFunction) inform(kNullEliminated);
}

// Under NOCOUNT, procedures report only their result sets and errors.
Flow Executor::done(std::int64_t count, StatementKind kind) {
    if (!m_sink || m_frames.back()->isFunction) return Flow::Next;
    warnOfNulls();
    const bool isReported = !m_settings.noCount || m_frames.size() == 1 || kind == StatementKind::Select;
    if (!m_rowHandler && (isReported || m_error != 0))
        m_sink->statementDone(m_settings.noCount ? -1 : count, kind);
    return Flow::Next;
}

Flow Executor::finished(std::int64_t rowCount, StatementKind kind) {
    m_error = 0;
    m_rowCount = rowCount;
    return done(kind == StatementKind::Other ? -1 : rowCount, kind);
}

// ---- what SQLite refused, in T-SQL's terms

SqlError Executor::errorOf(const SqliteFailure& failure) {
    if (isCancelled()) throw BatchEnd{};
    if (const auto error = takeError()) return *error;
    const std::string text = failure.what();
    const int code = failure.code & 0xFF;
    if (code == SQLITE_CONSTRAINT) return brokenConstraint(m_connection, m_change, failure);
    if (failure.code == SQLITE_BUSY_SNAPSHOT) return sqlError(kDeadlockVictim, {std::to_string(m_spid)});
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) return sqlError(kLockTimeout);
    if (code == SQLITE_FULL && m_change.verb == "INSERT" && m_change.target.identityColumn() &&
        lastIdentity(m_change.target) == std::numeric_limits<std::int64_t>::max())
        return sqlError(kArithmeticOverflow, {"IDENTITY", "bigint"}, 1);
    if (code == SQLITE_FULL) return sqlError(kDiskFull);
    if (code == SQLITE_NOMEM) return sqlError(kInsufficientMemory);
    if (text.find("too large (maximum depth") != std::string::npos ||
        text.find("stack overflow") != std::string::npos)
        return sqlError(kNestedTooDeeply);
    // Files of databases are closed, or not opened, if there are too many of them.
    constexpr std::string_view kManyDatabases = "a statement or transaction over more than 10 databases";
    constexpr std::pair<std::string_view, std::string_view> kLimits[] = {
        {"no such table: ", kManyDatabases},
        {"too many attached databases", kManyDatabases},
        {"prohibited in generated columns",
         "a computed column with a user-defined function or one like GETDATE"},
        {"too many arguments on function ts_pack", "APPLY of a query with more than 127 columns"},
        {"misuse of aggregate", "an aggregate of columns of an outer query in this place"}};
    for (const auto& [part, construct] : kLimits)
        if (text.find(part) != std::string::npos) return unsupported(construct);
    return {kUserDefined, "tsqlbox could not run the statement: " + text + "."};
}

// ---- values

std::vector<Value> Executor::parameterValues(const Translator& translator) {
    std::vector<Value> values;
    values.reserve(translator.parameters().size());
    for (const auto& [variable, constant] : translator.parameters())
        values.push_back(constant ? *constant : variableValue(variable));
    return values;
}

Value Executor::compute(const std::string& sql, const Translator& translator) {
    const auto values = parameterValues(translator);
    PreparedStatement statement(m_connection, sql, values, m_translated);
    statement.step();
    warnOfNulls();
    return ownedValue(statement.cell(0));
}

TypedValue Executor::evaluate(const Expr& expr, const std::optional<SqlType>& type) {
    const auto* variable = std::get_if<VariableRef>(&expr.node);
    if (variable && (!type || *type == variableType(variable->name)))
        return {variableValue(variable->name), variableType(variable->name)};
    const auto* literal = std::get_if<Literal>(&expr.node);
    if (literal && (!type || *type == literal->constant.type)) return literal->constant;
    const auto made = translated(expr, type);
    return {compute(made->text.sql, made->translator), made->columns.front().type};
}

std::string Executor::evaluateText(const Expr& expr) {
    const SqlType text = nvarcharType(SqlType::kMax);
    return textOf(viewOf(evaluate(expr, text)), text);
}

int Executor::evaluateInteger(const Expr& expr, TypeId type) {
    const Value value = evaluate(expr, simpleType(type));
    return isNull(value) ? 0 : static_cast<int>(std::get<std::int64_t>(value));
}

bool Executor::holds(const Expr& condition) {
    const Value truth = evaluate(condition).value;
    return !isNull(truth) && std::get<std::int64_t>(truth) != 0;
}

void Executor::setVariable(const std::string& name, const CellView& value, const SqlType& type) {
    TypedValue& variable = local(name);
    if (!isNull(value)) requireImplicit(type, variable.type);
    variable.value = convertValue(value, type, variable.type);
}

}  // namespace tsql
