// Procedures, functions and views: stored as text, parsed when they are used.

#include "execute/Executor.h"
#include "execute/SecurityProcedures.h"

namespace tsql {

namespace {

// System procedures that SQL Server has and tsqlbox has not.
constexpr std::string_view kMissingProcedures =
    "sp_addlinkedserver sp_addlogin sp_addmessage sp_addtype sp_adduser sp_attach_db sp_bindefault "
    "sp_bindrule sp_changedbowner sp_configure sp_dboption sp_depends sp_detach_db sp_help sp_helpconstraint "
    "sp_helpdb sp_helpuser sp_lock sp_msforeachdb sp_msforeachtable sp_recompile sp_refreshview sp_renamedb "
    "sp_send_dbmail sp_spaceused sp_tableoption sp_updatestats sp_who2 sp_xml_preparedocument xp_cmdshell "
    "xp_fileexist xp_instance_regread xp_msver xp_regread";

constexpr std::size_t kKeptTexts = 256, kLongestKept = 32'768;  // bytes
constexpr std::size_t kDeepestCall = 33;                        // the batch, and 32 calls

// Type of the object that a module becomes.
std::string_view typeOf(const CreateModule& module) {
    if (module.isTrigger()) return kTrigger;
    if (module.rows) return kRowsFunction;
    if (module.function) return module.query ? kTableFunction : kFunction;
    return module.query ? kView : kProcedure;
}

std::vector<TableColumn> parameterColumns(const CreateModule& module) {
    std::vector<TableColumn> columns;
    if (module.function && !module.query && !module.rows) columns.push_back({{"", module.returns}, {}, true});
    for (const auto& each : module.parameters)
        columns.push_back({{each.name, each.type}, {}, each.output, each.userType.id});
    return columns;
}

}  // namespace

void Executor::within(const StoredModule& query, const std::function<void()>& work) {
    for (const Frame* frame : m_frames)
        if (query.id != 0 && frame->procedureId == query.id && frame->database == query.database)
            throw sqlError(kSelfReference, {query.name});
    Frame frame(query);
    frame.isQuery = true;
    inFrame(frame, work);
}

// Returns a view or table-valued function as a table without storage. Its rows are known if its query has no
// variables.
TableInfo Executor::viewTable(const StoredModule& view) {
    TableInfo table{view.id, view.database,  view.name, m_connection.attach(view.database), {}, 1, 1,
                    {},      view.schemaName};
    within(view, [&] {
        Translator translator(*this);
        QueryText text = translator.query(*view.module->query);
        Translator::rename(text, view.module->columns, view.name, kUnnamedViewColumn, kRepeatedViewColumn);
        for (const auto& column : text.columns)
            table.columns.push_back({{column.name, column.type, column.nullable}});
        const auto named = [](auto& column) { return column.alias + " AS " + quotedName(column.name); };
        if (translator.parameters().empty())
            table.rows = "SELECT " + commaList(text.columns, named) + " FROM (" + text.sql + ")";
    });
    return table;
}

// Stores the whole batch as the text of the module, with CREATE instead of ALTER.
Flow Executor::run(const CreateModule& module) try {
    const std::string_view type = typeOf(module);
    const auto table = module.isTrigger() ? std::optional(tableOfTrigger(module)) : std::nullopt;
    ObjectName name = module.name;
    if (table) name.schema = table->schemaName;
    const auto before = object(name);
    StoredModule own{databaseOf(name), name.schema, name.name, nullptr, &module, before ? before->id : 0};
    const auto columns = module.query ? viewTable(own).columns : std::vector<TableColumn>();
    const Firing firing{table.value_or(TableInfo()), {}, {}};
    Frame frame;
    frame.procedure = module.name.name;
    frame.schemaName = module.name.schema;
    if (table) frame.firing = &firing;
    frame.declare(module.locals);
    inFrame(frame, [&] {
        if (module.rows) declareTable(*module.rows);
        for (const auto& each : module.parameters) bindTable(each, nullptr, frame);
        check(module.body);
    });
    dropTemporary(frame);
    define(module.name, [&](Catalogue& owner) {
        const auto existing = this->object(name);
        if (existing && (!module.alter || existing->type != type))
            throw sqlError(kObjectExists, {module.name.name}, 3);
        if (!existing && !module.create) throw sqlError(kInvalidObjectName, {asWritten(module.name)}, 6);
        ObjectInfo object = existing ? *existing : newObject(owner, name, type);
        if (table) bindTrigger(owner, module, *table, object);
        object.source = m_text;
        const std::string_view verb = tokenize(m_text).front().raw;
        const auto at = static_cast<std::size_t>(verb.data() - m_text.data());
        if (!module.create) object.source.replace(at, verb.size(), "CREATE");
        if (type == kView) object.stored = module.checksRows ? "CASCADE" : "";
        owner.save(object);
        owner.replaceColumns(object.id, type == kView ? columns : parameterColumns(module));
        if (!owner.isTemporary()) return;
        const auto ofProcedure = std::ranges::find_if(
            m_frames.rbegin(), m_frames.rend(), [](const Frame* each) { return !each->procedure.empty(); });
        if (ofProcedure != m_frames.rend()) (*ofProcedure)->temporary.push_back(owner.tableOf(object));
    });
    return finished();
} catch (const SqlError& error) {  // reported with the name of the module
    afterError(asMessage(error, m_line, module.name.name), /*raised=*/false);
    return Flow::Next;
}

// A text with user-defined types is parsed for each use, since another session may replace them.
std::shared_ptr<const Batch> Executor::parsed(const std::string& text, const std::string& database) {
    const std::string key = (m_settings.quotedIdentifiers ? "" : "\"") + text;
    const auto found = m_parsed.find(key);
    if (found != m_parsed.end()) return found->second;
    bool usesTypes = false;
    const auto typeNamed = [&](const ObjectName& name) -> std::optional<UserType> {
        usesTypes = true;
        const std::string place = databaseOf({database, {}, {}});
        const auto type = catalogue({place, {}, {}}).find(storedName(name.schema, name.name), kUserTypes);
        if (!type) return std::nullopt;
        return UserType{{place, type->schemaName, type->name}, type->id, type->source};
    };
    auto batch = parseBatch(text, m_settings.quotedIdentifiers, typeNamed);
    if (usesTypes || text.size() > kLongestKept) return batch;
    if (m_parsed.size() >= kKeptTexts) m_parsed.clear();
    return m_parsed[key] = std::move(batch);
}

// The sp_ procedures of master and temporary procedures use the caller's database.
std::optional<StoredModule> Executor::module(const ObjectName& name, std::string_view type) {
    const bool isTemporary = isTemporaryName(name.name);
    if ((isTemporary && type != kProcedure) || namesChangedRows(name)) return std::nullopt;
    const auto known = this->known();
    const auto variant = std::string(type) + (m_settings.quotedIdentifiers ? "" : "\"");
    const Known::Name place{
        databaseOf({}), m_frames.back()->schemaName, name.database, name.schema, name.name, variant};
    if (const auto found = known->modules.find(place); found != known->modules.end()) return found->second;
    ObjectName key = name;
    if (isTemporary) key.database.clear();
    auto found = visibleObject(key);
    if ((!found || found->type != type) && name.database.empty() && lowerAscii(key.name).starts_with("sp_")) {
        key.database = "master";
        found = object(key);
    }
    if (!found || found->type != type) return std::nullopt;
    const auto batch = parsed(found->source, databaseOf(key));
    return known->modules[place] = {databaseOf(key), found->schemaName, found->name,
                                    batch,           &moduleOf(*batch), found->id};
}

void Executor::inFrame(Frame& frame, const std::function<void()>& work) {
    if (m_frames.size() >= kDeepestCall) throw sqlError(kCallsNestedTooDeeply);
    m_frames.push_back(&frame);
    const Finally leave([this] { m_frames.pop_back(); });
    work();
}

void Executor::runFrame(const Block& body, Frame& frame) {
    inFrame(frame, [&] {
        const bool isModule = !frame.procedure.empty();
        const auto holdsOthers = []<typename Node>(const Node&) {
            return isOneOf<Node, Compound, TryCatch, If, While>;
        };
        const bool isAlone = body.size() == 1 && !std::visit(holdsOthers, body.front()->node);
        if (!isModule && !m_settings.parseOnly && (!isAlone || m_settings.checkOnly)) check(body);
        if (runBlock(body) == Flow::Goto) fail(unsupported("GOTO into a block"), m_line);
    });
}

// Runs the body of a procedure or dynamic SQL, then drops its temporary tables and restores the settings.
// Returns false if an error ended it.
bool Executor::runScope(const Block& body, Frame& frame) {
    const Finally settingsAgain([this, before = m_settings] {
        m_abortsCancelled = m_abortsCancelled || (m_settings.abortOnError && isCancelled());
        set(before);
    });
    bool whole = true;
    try {
        runFrame(body, frame);
    } catch (const ScopeEnd&) {
        whole = false;
    } catch (...) {
        dropTemporary(frame);
        throw;
    }
    dropTemporary(frame);
    return whole;
}

Flow Executor::run(const Execute& execute) {
    if (m_frames.back()->isFunction) throw sqlError(kProcedureCallInFunction);
    const int transactions = m_transactions;
    if (execute.text) {
        runText(evaluateText(*execute.text), m_frames.back()->database);
        checkTransactions(transactions, "");
        return Flow::Next;
    }
    const ObjectName name = execute.procedureVariable.empty()
                                ? execute.procedure
                                : parseObjectName(evaluateText({1, VariableRef{execute.procedureVariable}}));
    const bool known = name.database.empty() || m_storage.exists(name.database);
    const bool system = name.schema.empty() || sameWord(name.schema, "sys") || sameWord(name.schema, "dbo");
    const std::string database = name.database.empty() ? m_frames.back()->database : databaseOf(name);
    if (known && system && callOfDriver(name.name, execute, database))
        checkTransactions(transactions, "");
    else
        callProcedure(execute, name, known && system ? systemProcedure(name.name) : nullptr);
    return Flow::Next;
}

// Reports error 266 if a call has changed the number of open transactions.
void Executor::checkTransactions(int before, const std::string& procedure) {
    if (m_transactions == before || m_settings.implicitTransactions) return;
    const SqlError error =
        sqlError(kTransactionCountMismatch, {std::to_string(before), std::to_string(m_transactions)});
    afterError(asMessage(error, 0, procedure), /*raised=*/true);
}

void Executor::runText(const std::string& text, const std::string& inside) {
    const Temporarily inner(m_text, text);
    const auto batch = parsed(m_text, inside);
    Frame frame;
    frame.declare(batch->locals);
    frame.database = inside;
    const std::string database = m_database;
    runScope(batch->statements, frame);
    if (m_database != database) useDatabase(database);
}

void Executor::asCall(const std::function<std::int32_t()>& work) {
    if (m_frames.size() > 1 || m_rowHandler) {
        work();
        return static_cast<void>(done(-1));
    }
    m_sink->procedureBegan();
    try {
        m_sink->procedureEnded(work());
    } catch (const Raised&) {
        m_sink->procedureEnded(std::nullopt);
        throw;
    }
}

std::optional<StoredModule> Executor::moduleOf(const SystemProcedure& procedure, const ObjectName& name) {
    const std::string own(procedure.name);
    std::string text(procedure.text);
    if (text.starts_with("$TABLE")) text.replace(0, std::string_view("$TABLE").size(), kOfTable);
    const auto head = parsed("CREATE PROCEDURE " + own + " " + std::string(procedure.parameters) +
                                 " AS DECLARE @procedure sysname = '" + own +
                                 "', @database sysname = DB_NAME() " + text,
                             m_database);
    return StoredModule{databaseOf(name), "sys", own, head, &moduleOf(*head)};
}

// The procedure runs as a function, whose errors are those of its caller. Clients cannot call it: after an
// error, its statements must not go on.
void Executor::run(const SystemStatement& statement) {
    define(statement.procedure, [&](Catalogue&) {
        const auto* procedure =
            std::ranges::find(kSecurityProcedures, statement.procedure.name, &SystemProcedure::name);
        const auto called = moduleOf(*procedure, statement.procedure);
        for (const auto& values : statement.calls) {
            Frame frame(*called);
            frame.isFunction = true;
            for (const auto& [name, value] : values) frame.variables[name].value = value;
            const auto run = [&] { runFunction(*called->module, frame); };
            called->name == "sp_create_schema" ? failingAs(sqlError(kSchemaNotCreated), run) : run();
        }
    });
}

void Executor::callProcedure(const Execute& execute, const ObjectName& name, const SystemProcedure* system) {
    const auto procedure = system ? moduleOf(*system, name) : Executor::module(name, kProcedure);
    if (!procedure && Executor::module(name, kFunction)) throw unsupported("EXECUTE of a function");
    if (!procedure && hasWord(kMissingProcedures, lowerAscii(name.name))) throw unsupported(name.name);
    if (!procedure) throw sqlError(kProcedureNotFound, {asWritten(name)});
    const CreateModule& module = *procedure->module;
    Frame frame(*procedure);
    frame.returned = std::int64_t{0};
    const int transactions = m_transactions;
    Arguments arguments;
    try {
        arguments = bindArguments(module, execute.arguments, name.name, frame);
    } catch (const SqlError& error) {  // reported for the procedure with line 0
        return afterError(asMessage(error, 0, frame.procedure), /*raised=*/false);
    }
    asCall([&] {
        if (system && system->body) try {
                frame.returned = std::int64_t{(this->*system->body)(frame)};
            } catch (const SqlError& error) {
                afterError(messageOf(error, m_line), /*raised=*/error.number != kUserDefined);
                frame.returned = std::int64_t{system->failed};
            }
        else if (!runScope(module.body, frame))
            frame.returned = std::int64_t{-6};
        returnOutputs(module, arguments, execute, frame);
        checkTransactions(transactions, frame.procedure);
        return static_cast<std::int32_t>(std::get<std::int64_t>(frame.returned));
    });
}

Executor::Arguments Executor::bindArguments(const CreateModule& module, std::span<const Argument> given,
                                            const std::string& name, Frame& frame) {
    frame.declare(module.locals);
    Arguments arguments(module.parameters.size());
    const Argument* unknown = nullptr;
    for (std::size_t i = 0; i < given.size(); ++i) {
        const Argument& argument = given[i];
        std::size_t at = i;
        if (arguments.empty()) throw sqlError(kProcedureWithoutParameters, {frame.procedure});
        const auto isNamed = [&](const Declaration& each) { return sameWord(each.name, argument.name); };
        if (!argument.name.empty())
            at = static_cast<std::size_t>(std::ranges::find_if(module.parameters, isNamed) -
                                          module.parameters.begin());
        if (at < arguments.size() && arguments[at]) throw sqlError(kParameterSuppliedTwice, {argument.name});
        if (at >= arguments.size() && argument.name.empty())
            throw sqlError(kTooManyArguments, {frame.procedure});
        (at < arguments.size() ? arguments[at] : unknown) = &argument;
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Declaration& parameter = module.parameters[i];
        const Argument* argument = arguments[i];
        if (bindTable(parameter, argument, frame)) continue;
        const Expr* value = argument && argument->value ? argument->value.get() : parameter.value.get();
        if (!value && !m_settings.describeOnly)
            throw sqlError(frame.procedure.empty() ? kParameterNotSupplied : kMissingParameter,
                           {name, parameter.name});
        if (argument && argument->output && !parameter.output)
            throw sqlError(kNotAnOutputParameter, {parameter.name});
        const auto [cell, type] = value ? evaluate(*value) : TypedValue{};
        try {
            frame.variables[parameter.name] = {convertValue(viewOf(cell), type, parameter.type),
                                               parameter.type};
        } catch (const SqlError&) {
            throw sqlError(kConversionError, {baseName(type.id), baseName(parameter.type.id)});
        }
    }
    if (unknown) throw sqlError(kNotAParameter, {unknown->name, frame.procedure});
    return arguments;
}

void Executor::returnOutputs(const CreateModule& module, const Arguments& arguments, const Execute& execute,
                             const Frame& frame) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (!arguments[i] || !arguments[i]->output) continue;
        const TypedValue& value = frame.variables.at(module.parameters[i].name);
        setVariable(std::get<VariableRef>(arguments[i]->value->node).name, viewOf(value.value), value.type);
    }
    if (!execute.resultVariable.empty())
        setVariable(execute.resultVariable, viewOf(frame.returned), simpleType(TypeId::Int));
}

// SQLite calls this for every row of a query that contains the function.
Value Executor::callFunction(std::string_view database, std::string_view key, Cells arguments) {
    const ObjectName object{std::string(database), std::string(schemaOf(key)), std::string(bareName(key))};
    const auto function = Executor::module(object, kFunction);
    if (!function) throw sqlError(kInvalidObjectName, {object.name});
    const CreateModule& module = *function->module;
    Frame frame(*function);
    for (std::size_t i = 0; i < std::min(module.parameters.size(), arguments.size()); ++i)
        frame.variables[module.parameters[i].name].value = ownedValue(arguments[i]);
    const Temporarily called(m_isCalledByQuery, true);
    runFunction(module, frame);
    return frame.returned;
}

// The table is filled before the statement that reads it: SQLite cannot create tables while one runs.
TableInfo Executor::calledTable(const StoredModule& function, const std::vector<std::string>& arguments,
                                const Translator& translator) {
    const CreateModule& module = *function.module;
    const bool runs = !m_checking && !m_settings.describeOnly;
    if (m_isCalledByQuery) throw unsupported("a table function of several statements in a scalar function");
    Frame frame(function);
    auto& tables = (*std::ranges::find(m_frames.rbegin(), m_frames.rend(), false, &Frame::isQuery))->tables;
    const Finally dropWithCaller([&, last = sqlite3_last_insert_rowid(m_connection.handle())] {
        sqlite3_set_last_insert_rowid(m_connection.handle(), last);
        for (const auto& [name, table] : frame.tables) tables[name + std::to_string(tables.size())] = table;
    });
    for (std::size_t i = 0; runs && i < arguments.size(); ++i)
        frame.variables[module.parameters[i].name].value = compute("SELECT " + arguments[i], translator);
    inFrame(frame, [&] { declareTable(*module.rows); });
    if (runs) runFunction(module, frame);
    return frame.tables.at(module.rows->name)->info;
}

void Executor::runFunction(const CreateModule& function, Frame& frame) {
    const Temporarily afterwards(m_line, m_line);
    try {
        runFrame(function.body, frame);
    } catch (const Raised& error) {
        throw SqlError(error.message.number, error.message.text, error.message.severity, error.message.state);
    }
}

}  // namespace tsql
