// Control flow, variables, settings, calls, cursors, transactions, backup.
#include "syntax/Parser.h"

namespace tsql {

namespace {

// ---- cursors, variables, settings

// Rows are read when the cursor is opened, so cursors that show later changes are refused.
Statement::Node cursorDefinition(Parser& in, DeclareCursor node) {
    bool isCursor = false, forward = false, nothing = false;
    const std::pair<std::string_view, bool*> kOptions[] = {
        {"INSENSITIVE", &node.counted}, {"SCROLL", &node.scroll}, {"LOCAL", &node.local},
        {"STATIC", &node.counted},      {"GLOBAL", &nothing},     {"FORWARD_ONLY", &forward},
        {"FAST_FORWARD", &forward},     {"READ_ONLY", &nothing},  {"TYPE_WARNING", &nothing},
        {"CURSOR", &isCursor}};
    while (bool* const* option = in.acceptOneOf(kOptions)) **option = true;
    for (const auto word : {"DYNAMIC", "KEYSET", "SCROLL_LOCKS", "OPTIMISTIC"})
        in.throwIfAt(word, std::string(word) + " cursors");
    if (!isCursor) in.throwSyntaxError();
    in.expect("FOR");
    if (forward && node.scroll) in.throwError(kConflictingCursorOptions, {"FORWARD_ONLY", "SCROLL"});
    node.counted = node.counted || node.scroll;
    node.scroll = node.counted && !forward;
    node.query = in.query();
    if (in.at("FOR") && !in.accept("FOR READ ONLY")) in.throwSyntaxError();
    return node;
}

Statement::Node declare(Parser& in) {
    if (!in.atName()) return Declare{in.list([&] { return in.declaration(false); })};
    return cursorDefinition(in, {in.expectName(), nullptr});
}

CursorName cursorName(Parser& in) {
    if (in.atCursorVariable()) return {in.takeName()};
    if (in.atVariable()) in.throwError(kNotACursorVariable, {in.expectVariable()}, in.last().line);
    const bool global = in.at("GLOBAL") && in.atName(1) && in.accept("GLOBAL");
    return {in.expectName(), global};
}

// @variable = CURSOR FOR query, or another cursor
Statement::Node setCursor(Parser& in) {
    const std::string name = in.takeName();
    in.expect("=");
    if (in.at("CURSOR")) return cursorDefinition(in, {name, nullptr, /*local=*/true});
    return ChangeCursor{CursorVerb::Assign, cursorName(in), name};
}

template <CursorVerb verb>
Statement::Node changeCursor(Parser& in) {
    return ChangeCursor{verb, cursorName(in)};
}

Statement::Node fetch(Parser& in) {
    constexpr std::pair<std::string_view, FetchFrom> kPlaces[] = {
        {"NEXT FROM", FetchFrom::Next}, {"PRIOR FROM", FetchFrom::Prior},  {"FIRST FROM", FetchFrom::First},
        {"LAST FROM", FetchFrom::Last}, {"ABSOLUTE", FetchFrom::Absolute}, {"RELATIVE", FetchFrom::Relative},
        {"FROM", FetchFrom::Next}};
    Fetch node;
    if (const FetchFrom* from = in.acceptOneOf(kPlaces)) node.from = *from;
    if (node.from >= FetchFrom::Absolute) {
        node.offset = in.unary();
        in.expect("FROM");
    }
    node.cursor = cursorName(in);
    if (in.accept("INTO")) node.into = in.list([&] { return in.expectVariable(); });
    return node;
}

// Accepted values (# for any number, * for anything) and the settings that accept them. Most settings that
// accept both ON and OFF affect only speed, locks or warnings, and have no effect here.
constexpr std::pair<std::string_view, std::string_view> kSettings[] = {
    {"ON OFF",
     "NOCOUNT XACT_ABORT IMPLICIT_TRANSACTIONS QUOTED_IDENTIFIER IDENTITY_INSERT FMTONLY STATISTICS NOEXEC "
     "PARSEONLY ANSI_PADDING ARITHABORT ARITHIGNORE CURSOR_CLOSE_ON_COMMIT FORCEPLAN NO_BROWSETABLE "
     "REMOTE_PROC_TRANSACTIONS"},
    {"ON", "ANSI_NULLS ANSI_NULL_DFLT_ON ANSI_WARNINGS CONCAT_NULL_YIELDS_NULL"},
    {"OFF", "ANSI_NULL_DFLT_OFF NUMERIC_ROUNDABORT SHOWPLAN_ALL SHOWPLAN_TEXT SHOWPLAN_XML"},
    {"#", "LOCK_TIMEOUT ROWCOUNT TEXTSIZE QUERY_GOVERNOR_COST_LIMIT"},
    {"*", "DEADLOCK_PRIORITY"},
    {"7", "DATEFIRST"},
    {"MDY", "DATEFORMAT"},
    {"US_ENGLISH ENGLISH", "LANGUAGE"},
    {"", "ANSI_DEFAULTS FIPS_FLAGGER OFFSETS"},  // no value is accepted
};

Statement::Node set(Parser& in) {
    if (in.atCursorVariable()) return setCursor(in);
    if (in.atVariable()) {
        const std::string name = in.expectVariable();
        return Assign{name, in.assignedValue(name)};
    }
    if (in.accept("TRANSACTION ISOLATION LEVEL")) {  // no effect: the storage provides every level
        in.expectAny({"READ UNCOMMITTED", "READ COMMITTED", "REPEATABLE READ", "SERIALIZABLE", "SNAPSHOT"});
        return SetOption{};
    }
    const auto word = [&] {
        if (in.peek().kind != TokenKind::Word) in.throwSyntaxError();
        return toUpper(in.takeToken().raw);
    };
    const int line = in.peek().line;
    SetOption option;
    option.names = in.list(word);
    const std::string& first = option.names.front();
    if (first == "STATISTICS") in.list(word);
    if (first == "ROWCOUNT" && in.atVariable()) in.throwUnsupported("SET ROWCOUNT @variable");
    if (first == "IDENTITY_INSERT") option.table = in.objectName();
    const bool isNumber = (in.at("-") && first != "ROWCOUNT") || in.peek().kind == TokenKind::Number;
    if (isNumber) option.number = in.expectInteger();
    const std::string value = isNumber                 ? std::to_string(*option.number)
                              : in.isString(in.peek()) ? toUpper(in.expectString())
                                                       : word();
    option.on = value == "ON";
    for (const auto& name : option.names) {
        const auto* setting =
            std::ranges::find_if(kSettings, [&](const auto& each) { return hasWord(each.second, name); });
        if (setting == std::end(kSettings)) in.throwError(kUnknownSetOption, {name}, line);
        if (!hasWord(setting->first, value) && setting->first != "*" && !(setting->first == "#" && isNumber))
            throw SyntaxError(unsupported("SET " + name + " " + value), line);
        // The rest of the batch is parsed with the new meaning of "x".
        if (name == "QUOTED_IDENTIFIER") in.m_quotedIdentifiers = option.on;
    }
    return option;
}

// ---- flow

Block block(Parser& in) {
    if (in.at("END")) in.throwSyntaxError();
    return in.statements("END");
}

Statement::Node ifElse(Parser& in) {
    If node{in.condition(), in.statement(), nullptr};
    if (in.accept("ELSE")) node.otherwise = in.statement();
    return node;
}

Statement::Node label(Parser& in) {
    const int line = in.peek().line;
    if (in.peek().reserved) in.throwSyntaxError();
    const Label label{in.takeName()};
    in.expect(":");
    if (!in.m_labels.insert(label.name).second) in.throwError(kLabelExists, {label.name}, line);
    return label;
}

Statement::Node whileLoop(Parser& in) {
    While node{in.condition(), nullptr};
    const Temporarily inner(in.m_loops, in.m_loops + 1);
    node.body = in.statement();
    return node;
}

// COMMIT and ROLLBACK may be followed by TRANSACTION, WORK or nothing.
template <TransactionVerb verb>
Statement::Node transaction(Parser& in) {
    Transaction node{verb, nullptr};
    if (in.acceptAny({"TRANSACTION", "TRAN"}) && (in.atVariable() || in.atName()))
        node.name = in.wordOrConstant();
    else if (verb == TransactionVerb::Save)
        in.throwSyntaxError();
    else
        in.accept("WORK");
    if (verb == TransactionVerb::Commit)  // no effect: a commit is always durable
        in.acceptAny({"WITH ( DELAYED_DURABILITY = ON )", "WITH ( DELAYED_DURABILITY = OFF )"});
    return node;
}

Statement::Node compound(Parser& in) {
    if (in.at("TRANSACTION") || in.at("TRAN")) return transaction<TransactionVerb::Begin>(in);
    return Compound{block(in)};
}

Statement::Node tryCatch(Parser& in) {
    TryCatch node{block(in), {}};
    in.expect("TRY");
    in.accept(";");
    in.expect("BEGIN CATCH");
    node.handler = in.statements("END");
    in.expect("CATCH");
    return node;
}

Statement::Node returnValue(Parser& in) {
    const bool ends = in.peek().kind == TokenKind::End || in.at(";") || in.at(")") || in.at(":", 1);
    constexpr std::string_view kBegins =
        "CASE NULL CONVERT TRY_CONVERT COALESCE NULLIF LEFT RIGHT CURRENT_TIMESTAMP";
    if (ends || (in.peek().reserved && !hasWord(kBegins, toUpper(in.peek().raw)))) return Return{};
    if (in.m_procedure.empty() || in.m_module->isTrigger() || in.m_module->rows)
        in.throwError(kReturnWithValueHere);
    return Return{in.expression()};
}

// WITH option, option. Options that are not among the phrases are refused.
Options withOptions(Parser& in, const std::string& verb, std::initializer_list<std::string_view> phrases) {
    Options options;
    if (!in.accept("WITH")) return options;
    do {
        const auto phrase = in.acceptFirst(phrases);
        if (phrase.empty()) in.throwUnsupported(verb + " WITH " + toUpper(in.near()));
        const bool hasValue = phrase.ends_with('=') || phrase == "MOVE" || phrase == "SAMPLE";
        options.emplace(phrase, hasValue ? in.constant() : nullptr);
        if (phrase == "SAMPLE") in.expectAny({"PERCENT", "ROWS"});
        if (phrase == "MOVE") in.expect("TO");
        if (phrase == "MOVE") in.constant();  // has no effect: the files of databases are in the data folder
    } while (in.accept(","));
    return options;
}

Statement::Node raiseError(Parser& in) {
    if (!in.at("(")) in.throwUnsupported("RAISERROR without parentheses");
    RaiseError node{in.inList([&] { return in.constant(); })};
    if (node.values.size() < 3) in.throwError(kSyntaxErrorNear, {")"}, in.last().line);
    node.options = withOptions(in, "RAISERROR", {"LOG", "SETERROR", "NOWAIT"});
    return node;
}

Statement::Node throwStatement(Parser& in) {
    Throw node;
    if (in.peek().kind == TokenKind::Number || in.atVariable())
        node.values = in.list([&] { return in.constant(); });
    if (!node.values.empty() && node.values.size() != 3) in.throwSyntaxError();
    return node;
}

// ---- calls

Argument argument(Parser& in, const std::vector<Argument>& before) {
    Argument argument;
    if (!before.empty() && !before.back().name.empty() && !in.at("=", 1))
        in.throwError(kPositionalArgumentAfterNamed, {std::to_string(before.size() + 1)});
    if (in.atVariable() && in.at("=", 1)) {
        argument.name = std::string(in.takeToken().raw);
        in.takeToken();
    }
    if (in.accept("DEFAULT")) return argument;
    if (in.atTableVariable()) {
        argument.table = in.takeToken().raw;
        return argument;
    }
    argument.value = in.wordOrConstant();
    argument.output = in.acceptAny({"OUTPUT", "OUT"});
    if (argument.output && !std::holds_alternative<VariableRef>(argument.value->node))
        in.throwError(kOutputOfConstant, {}, argument.value->line);
    return argument;
}

Statement::Node execute(Parser& in) {
    Execute node;
    if (in.accept("(")) {  // 'text' + @variable ...; functions are not allowed
        for (ExprPtr& text = node.text = in.constant(); in.accept("+");)
            text = makeExpr(text->line, Binary{BinaryOp::Add, text, in.constant()});
        in.expect(")");
        if (in.at("AT") || in.at("AS")) in.throwUnsupported("EXECUTE (...) " + toUpper(in.near()));
        return node;
    }
    if (in.atVariable() && in.at("=", 1)) {
        node.resultVariable = in.expectVariable();
        in.takeToken();
    }
    if (in.atVariable())
        node.procedureVariable = in.expectVariable(2);
    else
        node.procedure = in.objectName();
    if (!in.accept("; 1") && in.at(";") && in.peek(1).kind == TokenKind::Number)
        in.throwUnsupported("numbered procedures");
    bool goesOn = in.atConstant() || in.atName() || in.at("DEFAULT") || in.at("ON");
    for (; goesOn; goesOn = in.accept(",")) node.arguments.push_back(argument(in, node.arguments));
    in.accept("WITH RECOMPILE");
    return node;
}

// ---- backup

ExprPtr nameOrVariable(Parser& in) {
    if (!in.atName() && !in.atVariable()) in.throwSyntaxError();
    return in.wordOrConstant();
}

// DISK = 'path'
ExprPtr fileName(Parser& in) {
    if (!in.accept("DISK")) in.throwUnsupported("a backup device other than DISK");
    in.expect("=");
    ExprPtr file = in.primary();
    in.throwIfAt(",", "a backup in several files");
    return file;
}

Statement::Node backup(Parser& in) {
    in.expect("DATABASE");
    Backup node{nameOrVariable(in), nullptr};
    in.expect("TO");
    node.file = fileName(in);
    // Options of media have no effect: each backup is a file.
    node.options =
        withOptions(in, "BACKUP",
                    {"STATS =", "STATS", "NAME =", "DESCRIPTION =", "INIT", "FORMAT", "NOFORMAT", "SKIP",
                     "NOSKIP", "CHECKSUM", "NO_CHECKSUM", "COPY_ONLY", "COMPRESSION", "NO_COMPRESSION",
                     "MEDIANAME =", "MEDIADESCRIPTION =", "NOREWIND", "NOUNLOAD", "STOP_ON_ERROR"});
    return node;
}

Statement::Node restore(Parser& in) {
    Restore node{in.acceptFirst({"DATABASE", "FILELISTONLY", "HEADERONLY", "VERIFYONLY"}), nullptr, nullptr};
    if (node.what.empty()) in.throwUnsupported("RESTORE " + toUpper(in.near()));
    if (node.what == "DATABASE") node.database = nameOrVariable(in);
    in.expect("FROM");
    node.file = fileName(in);
    node.options = withOptions(in, "RESTORE",
                               {"MOVE", "REPLACE", "STATS =", "STATS", "FILE = 1", "RECOVERY", "NOUNLOAD",
                                "CHECKSUM", "NO_CHECKSUM", "STOP_ON_ERROR"});
    return node;
}

// What SQL Server does in these statements has no counterpart in SQLite, or nobody can see it.
constexpr std::string_view kWithoutEffect =
    "CLEANTABLE DBREINDEX DROPCLEANBUFFERS FREEPROCCACHE FREESESSIONCACHE FREESYSTEMCACHE SHRINKDATABASE "
    "SHRINKFILE TRACEOFF TRACEON UPDATEUSAGE";

Statement::Node dbcc(Parser& in) {
    Maintenance node;
    const std::string& verb = node.dbcc = toUpper(in.near());
    if (!hasWord("CHECKDB CHECKIDENT", verb) && !hasWord(kWithoutEffect, verb))
        in.throwUnsupported("DBCC " + verb);
    in.takeToken();
    if (verb == "CHECKIDENT") {  // (table [, NORESEED | , RESEED [, seed]])
        in.expect("(");
        node.table = in.isString(in.peek()) ? parseObjectName(in.expectString()) : in.objectName();
        node.reseeds = !in.accept(", NORESEED");
        if (in.accept(", RESEED") && in.accept(",")) node.seed = in.constant();
        in.expect(")");
    } else if (verb == "CHECKDB" && in.at("(")) {
        node.database = in.parenthesized([&] { return in.wordOrConstant(); });
    } else if (in.at("(")) {
        in.inList([&] { return in.expression(); });
    }
    const auto options = withOptions(in, "DBCC " + verb, {"NO_INFOMSGS", "ALL_ERRORMSGS", "PHYSICAL_ONLY"});
    node.onlyFaults = options.contains("NO_INFOMSGS");
    return node;
}

Statement::Node updateStatistics(Parser& in) {
    Maintenance node;
    node.table = in.objectName();
    const bool several = in.accept("(");  // indexes
    if (several || in.atName()) in.list([&] { return in.expectName(); });
    if (several) in.expect(")");
    withOptions(in, "UPDATE STATISTICS",
                {"FULLSCAN", "RESAMPLE", "NORECOMPUTE", "ALL", "COLUMNS", "INDEX", "SAMPLE"});
    return node;
}

// First words of statements, and the parsers of the rest.
constexpr std::pair<std::string_view, Statement::Node (*)(Parser&)> kStatements[] = {
    {"DECLARE", declare},
    {"SET", set},
    {"OPEN", changeCursor<CursorVerb::Open>},
    {"CLOSE", changeCursor<CursorVerb::Close>},
    {"DEALLOCATE", changeCursor<CursorVerb::Deallocate>},
    {"FETCH", fetch},
    {"IF", ifElse},
    {"WHILE", whileLoop},
    {"BREAK", [](Parser&) -> Statement::Node { return Jump{}; }},
    {"CONTINUE", [](Parser&) -> Statement::Node { return Jump{/*again=*/true}; }},
    {"GOTO",
     [](Parser& in) -> Statement::Node {
         in.m_gotos.emplace_back(in.near(), in.peek().line);
         return Goto{in.expectName()};
     }},
    {"COMMIT", transaction<TransactionVerb::Commit>},
    {"ROLLBACK", transaction<TransactionVerb::Rollback>},
    {"SAVE", transaction<TransactionVerb::Save>},
    {"BEGIN TRY", tryCatch},
    {"BEGIN", compound},
    {"RETURN", returnValue},
    {"RAISERROR", raiseError},
    {"THROW", throwStatement},
    {"WAITFOR DELAY", [](Parser& in) -> Statement::Node { return WaitFor{in.constant()}; }},
    {"WAITFOR TIME",
     [](Parser& in) -> Statement::Node {
         return WaitFor{in.constant(), /*until=*/true};
     }},
    {"EXEC", execute},
    {"EXECUTE", execute},
    {"BACKUP", backup},
    {"RESTORE", restore},
    {"DBCC", dbcc},
    {"UPDATE STATISTICS", updateStatistics},
    {"CHECKPOINT",
     [](Parser& in) -> Statement::Node {
         if (in.peek().kind == TokenKind::Number) in.expectInteger();  // its duration
         return Maintenance{};
     }},
    {"CREATE", [](Parser& in) { return parseDefinition(in, /*create=*/true); }},
    {"ALTER", [](Parser& in) { return parseDefinition(in, /*create=*/false); }},
    {"DROP", parseDrop},
    {"ENABLE TRIGGER", [](Parser& in) { return parseTriggerSwitch(in, /*enables=*/true); }},
    {"DISABLE TRIGGER", [](Parser& in) { return parseTriggerSwitch(in, /*enables=*/false); }},
    {"PRINT", [](Parser& in) -> Statement::Node { return Print{in.scalar(&Parser::expression)}; }},
    {"GRANT", [](Parser& in) { return parsePermissions(in, "G"); }},
    {"DENY", [](Parser& in) { return parsePermissions(in, "D"); }},
    {"REVOKE", [](Parser& in) { return parsePermissions(in, "R"); }},
    {"TRUNCATE TABLE", [](Parser& in) -> Statement::Node { return Truncate{in.objectName()}; }},
    {"USE", [](Parser& in) -> Statement::Node { return Use{in.expectName()}; }},
};

// Functions may not have side effects, except on their table variables.
void checkInFunction(const Statement& statement, const std::string& verb) {
    const auto isTraceless = []<typename Node>(const Node& node) {
        if constexpr (std::is_base_of_v<Change, Node>) {
            const TableRef target = targetOf(node);
            const auto* named = std::get_if<NamedTable>(&target.node);
            return named && named->name.name.starts_with('@') && (!node.output || node.output->into);
        }
        return isOneOf<Node, Declare, Assign, If, While, Jump, Label, Goto, Compound, Return,
                       Execute, DeclareCursor, ChangeCursor, Fetch>;
    };
    if (std::visit(isTraceless, statement.node)) return;
    const auto* select = std::get_if<SelectStatement>(&statement.node);
    const auto* body = select ? std::get_if<Select>(&select->query->body) : nullptr;
    if (select && (!body || body->items.front().variable.empty() || select->into))
        throw SyntaxError(sqlError(kSelectInFunction), statement.line);
    if (select) return;
    const bool option = std::holds_alternative<SetOption>(statement.node);
    throw SyntaxError(sqlError(kSideEffectInFunction, {option ? "SET COMMAND" : verb}), statement.line);
}

}  // namespace

Block Parser::batch() {
    try {
        Block all = statements("");
        for (const auto& [name, line] : m_gotos)
            if (!m_labels.contains(name)) throwError(kUnknownLabel, {name}, line);
        return all;
    } catch (const SqlError& error) {  // without a line: of a type or constant
        const auto* placed = dynamic_cast<const SyntaxError*>(&error);
        SyntaxError failure(error, placed ? placed->line : last().line);
        failure.procedure = m_procedure;
        throw failure;
    }
}

// Parses statements up to `end`, which is consumed, or to the end of the text. THROW and WITH need a
// semicolon before them: they could continue the previous statement.
Block Parser::statements(std::string_view end) {
    Block statements;
    for (;;) {
        while (accept(";")) continue;
        if (end.empty() ? peek().kind == TokenKind::End : accept(end)) return statements;
        const bool open = !statements.empty() && last().raw != ";";
        if (open && at("THROW")) throwSyntaxError();
        if (open && at("WITH")) throwIfUnsupported();
        if (open && at("WITH")) throwError(kMissingSemicolonBeforeWith);
        statements.push_back(statement());
    }
}

StatementPtr Parser::statement() {
    const Temporarily deeper(m_depth, nextDepth());
    while (accept(";")) continue;
    const int line = peek().line;
    const std::string verb = toUpper(peek().raw);
    if (m_loops == 0 && (at("BREAK") || at("CONTINUE")))
        throwError(at("BREAK") ? kBreakOutsideWhile : kContinueOutsideWhile, {}, line);
    const bool mayBeCall = m_next == 0 && atName();  // a procedure call without EXEC
    const auto other = at(":", 1) ? label : mayBeCall ? execute : parseRows;
    const auto* read = acceptOneOf(kStatements);
    auto statement = std::make_unique<Statement>(Statement{line, (read ? *read : other)(*this)});
    if (m_module && m_module->function) checkInFunction(*statement, verb);
    accept(";");
    // A batch or module may create a temporary table only once, even in separate branches or after a DROP.
    const auto* create = std::get_if<CreateTable>(&statement->node);
    const auto* select = std::get_if<SelectStatement>(&statement->node);
    const ObjectName* made = create ? &create->table : select && select->into ? &*select->into : nullptr;
    if (made && made->name.starts_with('#') && !m_temporary.insert(made->name).second)
        throwError(kObjectExists, {made->name}, faulty().line, 1);
    return statement;
}

// @name [AS] type [= value] of a variable or parameter.
Declaration Parser::declaration(bool isParameter) {
    if (!atVariable()) throwSyntaxError();
    const Token& name = peek();
    Declaration node{takeName(), {}, nullptr};
    accept("AS");
    if (isParameter) throwIfAt("CURSOR", "CURSOR parameters");
    node.isCursor = accept("CURSOR");
    if (at("TABLE") && !isParameter)
        node.table = std::make_shared<const CreateTable>(tableVariable(node.name));
    else if (!node.isCursor)
        node.type = type(TypeUse::Declaration, &node.userType);
    if (node.userType.table) {
        node.userType.table->table.name = node.name;
        node.table = node.userType.table;
    }
    if (node.table && m_module && m_module->function && !m_module->rows)
        throwUnsupported("table variables inside scalar functions");
    if (!isParameter && isLob(node.type.id) && node.type.id != TypeId::Xml)
        throwError(kLobVariable, {}, name.line);
    if (!node.isCursor && accept("=")) node.value = isParameter ? wordOrConstant() : expression();
    node.output = isParameter && acceptAny({"OUTPUT", "OUT"});
    if (accept("READONLY") != (isParameter && node.table))
        throwError(node.table ? kNotReadOnly : kReadOnlyScalar, {name.raw}, name.line);
    if (m_declared.contains(name.raw) || m_declaredTables.contains(name.raw) ||
        m_declaredCursors.contains(name.raw))
        throwError(kVariableAlreadyDeclared, {name.raw}, name.line);
    (node.isCursor ? m_declaredCursors : node.table ? m_declaredTables : m_declared).insert(node.name);
    if (!node.table && !node.isCursor) m_locals.emplace_back(node.name, node.type);
    return node;
}

bool Parser::atConstant() const {
    const std::size_t sign = at("-") || at("+");
    const Token& token = peek(sign);
    return token.kind == TokenKind::Number ||
           (!sign && (isString(token) || at("NULL") || token.kind == TokenKind::Variable ||
                      token.kind == TokenKind::Global || token.kind == TokenKind::Binary));
}

// A constant or variable; other expressions are not allowed.
ExprPtr Parser::constant() {
    if (!atConstant()) throwSyntaxError();
    return unary();
}

// As constant(); a bare word is a string.
ExprPtr Parser::wordOrConstant() {
    if (!atName() && !at("ON")) return constant();
    const Token& word = takeToken();
    return makeExpr(word.line, Literal{textLiteral(unquoted(word), /*national=*/true)});
}

}  // namespace tsql
