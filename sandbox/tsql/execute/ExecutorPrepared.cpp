// Calls of drivers: statements with parameters, which sp_prepare and its like keep for the session, and
// cursors over them, which are T-SQL cursors named for their handles.
#include <bit>

#include "execute/Executor.h"

namespace tsql {

constexpr std::size_t kAbsent = 99;
// Places of the arguments of a call.
struct StatementCall {
    std::string_view name;
    std::size_t handle, declarations, statement;  // of the prepared statement
    std::size_t firstValue;                       // kAbsent: the statement is only prepared
    std::size_t cursor = kAbsent,
                options = kAbsent;  // outputs: its handle; its kind, locks and number of rows
};

namespace {

constexpr std::size_t kMostStatements = 10'000;
constexpr std::size_t kOptionAt = 3;         // place of sp_prepare's option
constexpr std::int64_t kReturnMetadata = 1;  // a bit of it
// Every cursor is static and read-only, whatever the client asks for.
constexpr std::int64_t kStatic = 0x8, kReadOnly = 1, kAutoFetch = 0x2000;
constexpr std::int64_t kUsualFetch = 0x2, kUsualRows = 20;
constexpr std::uint64_t kRelative = 0x20, kRefresh = 0x80, kPosition = 0x100;

constexpr StatementCall kStatementCalls[] = {
    {"sp_executesql", kAbsent, 1, 0, 2},
    {"sp_prepare", 0, 1, 2, kAbsent},
    {"sp_prepexec", 0, 1, 2, 3},
    {"sp_execute", 0, kAbsent, kAbsent, 1},
    {"sp_cursoropen", kAbsent, 5, 1, 6, 0, 2},
    {"sp_cursorprepare", 0, 1, 2, kAbsent},
    {"sp_cursorprepexec", 0, 2, 3, 7, 1, 4},
    {"sp_cursorexecute", 0, kAbsent, kAbsent, 5, 1, 2},
};
constexpr std::string_view kHandleCalls[] = {"sp_unprepare",    "sp_cursorunprepare", "sp_cursorfetch",
                                             "sp_cursoroption", "sp_cursorclose",     "sp_cursor"};

std::string cursorName(std::int64_t handle) {
    return "tsqlbox cursor " + std::to_string(handle);
}

const Argument* argumentAt(const Execute& call, std::size_t at) {
    return at < call.arguments.size() && call.arguments[at].value ? &call.arguments[at] : nullptr;
}

}  // namespace

// Runs a procedure that has any number of arguments. Returns false for another one.
bool Executor::callOfDriver(std::string_view name, const Execute& call, const std::string& database) {
    const auto isMeant = [&](std::string_view each) { return sameWord(each, name); };
    const auto* known = std::ranges::find_if(kStatementCalls, isMeant, &StatementCall::name);
    const bool ofStatement = known != std::end(kStatementCalls);
    if (!ofStatement && std::ranges::none_of(kHandleCalls, isMeant)) return false;
    asCall([&] {
        ofStatement ? callStatement(*known, call, database) : callHandle(lowerAscii(name), call);
        return m_error;
    });
    return true;
}

void Executor::callStatement(const StatementCall& places, const Execute& call, const std::string& database) {
    PreparedText text = statementOf(places, call);
    m_error = 0;
    if (places.firstValue == kAbsent && (integerArgument(call, kOptionAt) & kReturnMetadata))
        describe(text, database);
    if (places.handle != kAbsent && places.statement != kAbsent) {
        m_prepared.erase(integerArgument(call, places.handle));
        if (m_prepared.size() >= kMostStatements) throw sqlError(kInsufficientMemory);
        returnArgument(call, places.handle, ++m_lastHandle);
        m_prepared[m_lastHandle] = text;
    }
    if (places.firstValue == kAbsent) return;
    if (places.cursor == kAbsent) return runStatement(text, call, places.firstValue, database);
    const auto verb = tokenize(text.statement).front().raw;
    if (!sameWord(verb, "SELECT") && !sameWord(verb, "WITH")) throw sqlError(kCursorNotAllowed);
    const std::string name = cursorName(++m_lastHandle);
    text.statement.insert(0, "DECLARE " + quotedName(name) + " CURSOR GLOBAL STATIC FOR ");
    runStatement(text, call, places.firstValue, database);
    if (m_error != 0) return;
    run(ChangeCursor{CursorVerb::Open, {name, true}});
    Cursor& cursor = *cursorNamed({name, true});
    const bool fetches = integerArgument(call, places.options) & kAutoFetch;
    sendTable(cursor.query, cursor.move(fetches ? FetchFrom::Next : FetchFrom::Absolute, 0,
                                        fetches ? integerArgument(call, places.options + 2) : 0));
    returnArgument(call, places.cursor, m_lastHandle);
    returnArgument(call, places.options, kStatic);
    returnArgument(call, places.options + 1, kReadOnly);
    returnArgument(call, places.options + 2, static_cast<std::int64_t>(cursor.rows.size()));
}

// The text among the arguments, or that of the prepared statement.
Executor::PreparedText Executor::statementOf(const StatementCall& places, const Execute& call) {
    if (places.statement != kAbsent) {
        const std::string_view parameter = &places == kStatementCalls ? "@statement" : "@stmt";
        if (!argumentAt(call, places.statement))
            throw sqlError(kMissingParameter, {places.name, parameter}, 10);
        return {textArgument(call, places.statement, parameter),
                textArgument(call, places.declarations, "@params")};
    }
    const std::int64_t handle = integerArgument(call, places.handle);
    const auto found = m_prepared.find(handle);
    if (found != m_prepared.end()) return found->second;
    throw sqlError(kPreparedStatementNotFound, {std::to_string(handle)});
}

// parameter: its name in errors.
std::string Executor::textArgument(const Execute& call, std::size_t at, std::string_view parameter) {
    const Argument* argument = argumentAt(call, at);
    TypedValue given = argument ? evaluate(*argument->value) : TypedValue();
    if (isNull(given.value)) return {};
    if (!isNational(given.type.id))
        throw sqlError(kWrongParameterType, {parameter, "ntext/nchar/nvarchar"},
                       parameter == "@params" ? 3 : 2);
    return std::move(std::get<std::string>(given.value));
}

std::int64_t Executor::integerArgument(const Execute& call, std::size_t at, std::int64_t usual) {
    const Argument* argument = argumentAt(call, at);
    return argument ? evaluateInteger(*argument->value) : usual;
}

// Sets an argument if it is an output.
void Executor::returnArgument(const Execute& call, std::size_t at, std::int64_t value) {
    if (const Argument* argument = argumentAt(call, at); argument && argument->output)
        setVariable(std::get<VariableRef>(argument->value->node).name, value, simpleType(TypeId::Int));
}

// Returns the metadata of the columns, for which the statement must be valid.
void Executor::describe(const PreparedText& text, const std::string& database) {
    const Temporarily describing(m_settings.describeOnly, true);
    try {
        runStatement(text, {}, 0, database);
    } catch (const SyntaxError& error) {
        report(asMessage(error, error.line, error.procedure));
        m_error = error.number;
    }
    if (m_error != 0) throw sqlError(kStatementNotPrepared);
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
    std::string head = "CREATE PROCEDURE []";  // of one line, without comments
    for (const Token& token : tokenize(declarations)) head.append(" ").append(token.raw);
    const auto batch = parsed(head + "AS " + statement, database);
    const CreateModule& module = moduleOf(*batch);
    frame.database = database;
    const auto values = std::span(call.arguments).subspan(std::min(firstValue, call.arguments.size()));
    const auto arguments = bindArguments(module, values, "(" + declarations + ")" + statement, frame);
    inFrame(own, [&] { runScope(module.body, frame); });
    frame.returned = std::int64_t{m_error};
    returnOutputs(module, arguments, call, frame);
}

// sp_cursoroption, for names of cursors and the like, has no effect.
void Executor::callHandle(const std::string& name, const Execute& call) {
    const std::int64_t handle = integerArgument(call, 0);
    m_error = 0;
    if (name == "sp_cursor") throw unsupported("sp_cursor, changes through a cursor");
    if (name.ends_with("unprepare")) return static_cast<void>(m_prepared.erase(handle));
    const auto cursor = m_cursors.find(cursorName(handle));
    if (cursor == m_cursors.end() || !cursor->second)
        throw sqlError(kCursorHandleNotFound, {name, std::to_string(handle)});
    if (name == "sp_cursorfetch") fetchBlock(*cursor->second, call);
    if (name == "sp_cursorclose") m_cursors.erase(cursor);
}

void Executor::fetchBlock(Cursor& cursor, const Execute& call) {
    // By the bits of the types.
    constexpr FetchFrom kFetches[] = {FetchFrom::First, FetchFrom::Next,     FetchFrom::Prior,
                                      FetchFrom::Last,  FetchFrom::Absolute, FetchFrom::Relative};
    const auto type = static_cast<std::uint64_t>(integerArgument(call, 1, kUsualFetch));
    const bool again = type == kRefresh;
    if (type == kPosition) {
        returnArgument(call, 2, cursor.at);
        returnArgument(call, 3, static_cast<std::int64_t>(cursor.rows.size()));
        return;
    }
    const auto bit = static_cast<std::size_t>(std::countr_zero(again ? kRelative : type));
    if (!std::has_single_bit(type) || bit >= std::size(kFetches))
        throw unsupported("sp_cursorfetch of type " + std::to_string(type));
    sendTable(cursor.query, cursor.move(kFetches[bit], again ? 0 : integerArgument(call, 2),
                                        integerArgument(call, 3, kUsualRows)));
}

}  // namespace tsql
