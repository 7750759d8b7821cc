// Statements with parameters: sp_executesql, and those that sp_prepare and its like keep for the session.
#include "execute/Executor.h"

namespace tsql {

namespace {

constexpr std::size_t kMostStatements = 10'000;
constexpr std::int64_t kReturnMetadata = 1;  // bit of sp_prepare's option
// Places of arguments: of sp_prepare and sp_prepexec the handle, the declarations, the SQL text and the
// option or the first value; of sp_execute the handle and the first value.
constexpr std::size_t kHandleAt = 0, kDeclarationsAt = 1, kStatementAt = 2, kOptionAt = 3;

}  // namespace

// Returns the function of a procedure with any number of arguments; null: no such procedure.
Executor::StatementCall Executor::statementCall(std::string_view name) {
    static constexpr std::pair<std::string_view, StatementCall> kCalls[] = {
        {"sp_executesql", &Executor::executeSql},
        {"sp_prepare", &Executor::prepare},
        {"sp_prepexec", &Executor::prepareAndExecute},
        {"sp_execute", &Executor::executePrepared},
        {"sp_unprepare", &Executor::unprepare}};
    for (const auto& [known, call] : kCalls)
        if (sameWord(known, name)) return call;
    return nullptr;
}

// parameter: its name in errors.
std::string Executor::textArgument(const Execute& call, std::size_t at, std::string_view parameter) {
    if (call.arguments.size() <= at || !call.arguments[at].value) return {};
    TypedValue given = evaluate(*call.arguments[at].value);
    if (isNull(given.value)) return {};
    if (!isNational(given.type.id))
        throw sqlError(kWrongParameterType, {parameter, "ntext/nchar/nvarchar"},
                       parameter == "@params" ? 3 : 2);
    return std::move(std::get<std::string>(given.value));
}

// NULL and a missing argument are 0.
std::int64_t Executor::integerArgument(const Execute& call, std::size_t at) {
    if (call.arguments.size() <= at || !call.arguments[at].value) return 0;
    const Value value = evaluate(*call.arguments[at].value, simpleType(TypeId::BigInt));
    const auto* number = std::get_if<std::int64_t>(&value);
    return number ? *number : 0;
}

// sp_executesql @statement, @declarations, values ...
void Executor::executeSql(const Execute& call, const std::string& database) {
    if (call.arguments.empty() || !call.arguments.front().value)
        throw sqlError(kMissingParameter, {"sp_executesql", "@statement"}, 10);
    runStatement({textArgument(call, 0, "@statement"), textArgument(call, 1, "@params")}, call, 2, database);
}

// Runs the text as the body of an unnamed procedure. firstValue: place of its first argument in the call.
void Executor::runStatement(const PreparedText& text, const Execute& call, std::size_t firstValue,
                            const std::string& database) {
    const std::string &statement = text.statement, &declarations = text.declarations;
    Frame frame, own;                     // the called procedure and its text are a level each
    if (trimmed(declarations).empty()) {  // the text may define a module
        inFrame(own, [&] { runText(statement, database); });
        frame.returned = std::int64_t{m_error};
        returnOutputs({}, {}, call, frame);
        return;
    }
    const auto batch = parsed("CREATE PROCEDURE [] " + declarations + " AS " + statement);
    const CreateModule& module = moduleOf(*batch);
    frame.database = database;
    frame.skippedArguments = firstValue;
    const auto arguments = bindArguments(module, call, "(" + declarations + ")" + statement, frame);
    inFrame(own, [&] { runScope(module.body, frame); });
    frame.returned = std::int64_t{m_error};
    returnOutputs(module, arguments, call, frame);
}

Executor::PreparedText Executor::textToPrepare(const Execute& call) {
    if (call.arguments.size() <= kStatementAt)
        throw sqlError(kMissingParameter, {call.procedure.name, "@stmt"});
    return {textArgument(call, kStatementAt, "@stmt"), textArgument(call, kDeclarationsAt, "@params")};
}

// Keeps the statement and returns its handle in the first argument, whose statement it replaces.
const Executor::PreparedText& Executor::keepStatement(const Execute& call) {
    PreparedText text = textToPrepare(call);
    m_prepared.erase(integerArgument(call, kHandleAt));
    if (m_prepared.size() >= kMostStatements) throw sqlError(kInsufficientMemory);
    ++m_lastHandle;
    if (const Argument& handle = call.arguments[kHandleAt]; handle.output)
        setVariable(std::get<VariableRef>(handle.value->node).name, m_lastHandle, simpleType(TypeId::Int));
    return m_prepared[m_lastHandle] = std::move(text);
}

// With the option, the metadata of the columns is returned, for which the statement must be valid.
void Executor::prepare(const Execute& call, const std::string& database) {
    m_error = 0;
    if (integerArgument(call, kOptionAt) & kReturnMetadata) try {
            const Temporarily describing(m_settings.describeOnly, true);
            runStatement(textToPrepare(call), {}, 0, database);
        } catch (const SyntaxError& error) {
            report(messageOf(error, error.line, error.procedure));
            m_error = error.number;
        }
    if (m_error != 0) throw sqlError(kStatementNotPrepared);
    keepStatement(call);
}

void Executor::prepareAndExecute(const Execute& call, const std::string& database) {
    const PreparedText text = keepStatement(call);  // which it may unprepare
    runStatement(text, call, kOptionAt, database);
}

void Executor::executePrepared(const Execute& call, const std::string& database) {
    const std::int64_t handle = integerArgument(call, kHandleAt);
    const auto found = m_prepared.find(handle);
    if (found == m_prepared.end()) throw sqlError(kPreparedStatementNotFound, {std::to_string(handle)});
    const PreparedText text = found->second;
    runStatement(text, call, kHandleAt + 1, database);
}

void Executor::unprepare(const Execute& call, const std::string&) {
    m_prepared.erase(integerArgument(call, kHandleAt));
    m_error = 0;
}

}  // namespace tsql
