// Control of flow, variables, settings, calls, transactions, backup.
#include "Messages.h"
#include "Parser.h"
#include "Text.h"

namespace tsql {

using namespace ast;

namespace {

ExprPtr textExpr(const std::string& text, int line) {
    return std::make_unique<Expr>(Expr{line, Literal{textLiteral(text, true)}});
}

struct AssignmentSymbol {
    std::string_view text;
    BinaryOp op;
};
constexpr AssignmentSymbol kAssignments[] = {
    {"+=", BinaryOp::Add},    {"-=", BinaryOp::Subtract}, {"*=", BinaryOp::Multiply},
    {"/=", BinaryOp::Divide}, {"%=", BinaryOp::Modulo},   {"&=", BinaryOp::BitAnd},
    {"|=", BinaryOp::BitOr},  {"^=", BinaryOp::BitXor},
};

// Constructs that begin with a reserved word of their own and that are not there.
constexpr std::pair<std::string_view, std::string_view> kUnsupported[] = {
    {"MERGE", "MERGE"},
    {"GOTO", "GOTO"},
    {"DBCC", "DBCC"},
    {"GRANT", "GRANT"},
    {"REVOKE", "REVOKE"},
    {"DENY", "DENY"},
    {"KILL", "KILL"},
    {"BULK", "BULK INSERT"},
    {"SHUTDOWN", "SHUTDOWN"},
    {"CHECKPOINT", "CHECKPOINT"},
    {"RECONFIGURE", "RECONFIGURE"},
};

}  // namespace

Block Parser::batch() {
    Block statements;
    if (atName() && !at("THROW") && !at(":", 1)) {  // a procedure's name alone, first in the batch
        const int line = peek().line;
        statements.push_back(std::make_unique<Statement>(Statement{line, parseExecute()}));
    }
    for (;;) {
        while (accept(";")) continue;
        if (peek().kind == TokenKind::End) return statements;
        statements.push_back(parseStatement());
    }
}

StatementPtr Parser::parseStatement() {
    const Nesting nesting(*this);
    while (accept(";")) continue;
    auto statement = std::make_unique<Statement>();
    statement->line = peek().line;
    statement->node = parseStatementNode();
    accept(";");
    return statement;
}

Statement::Node Parser::parseStatementNode() {
    using Production = Statement::Node (Parser::*)();
    static constexpr std::pair<std::string_view, Production> kProductions[] = {
        {"DECLARE", &Parser::parseDeclare},
        {"SET", &Parser::parseSet},
        {"OPEN", &Parser::parseChangeCursor},
        {"CLOSE", &Parser::parseChangeCursor},
        {"DEALLOCATE", &Parser::parseChangeCursor},
        {"FETCH", &Parser::parseFetch},
        {"IF", &Parser::parseIf},
        {"WHILE", &Parser::parseWhile},
        {"BEGIN", &Parser::parseBegin},
        {"RETURN", &Parser::parseReturn},
        {"RAISERROR", &Parser::parseRaiseError},
        {"THROW", &Parser::parseThrow},
        {"WAITFOR", &Parser::parseWaitFor},
        {"EXEC", &Parser::parseExecute},
        {"EXECUTE", &Parser::parseExecute},
        {"COMMIT", &Parser::parseTransaction},
        {"ROLLBACK", &Parser::parseTransaction},
        {"SAVE", &Parser::parseTransaction},
        {"BACKUP", &Parser::parseBackup},
        {"RESTORE", &Parser::parseRestore},
        {"INSERT", &Parser::parseInsert},
        {"UPDATE", &Parser::parseUpdate},
        {"DELETE", &Parser::parseDelete},
        {"CREATE", &Parser::parseCreate},
        {"ALTER", &Parser::parseAlter},
        {"DROP", &Parser::parseDrop},
    };
    for (const auto& [word, production] : kProductions)
        if (at(word)) return (this->*production)();
    for (const auto& [word, construct] : kUnsupported)
        if (at(word)) unsupported(construct);
    if (at("WITH")) return parseCommonTables();
    if (atQuery()) return SelectStatement{parseQuery()};
    if (accept("PRINT")) return Print{expression()};
    if ((at("BREAK") || at("CONTINUE")) && m_loops == 0) throw SyntaxError(sqlError(135), peek().line);
    if (accept("BREAK")) return Break{};
    if (accept("CONTINUE")) return Continue{};
    if (acceptAll({"TRUNCATE", "TABLE"})) return Truncate{objectName()};
    if (accept("USE")) return Use{expectName()};
    syntaxError();
}

Block Parser::parseBlock() {
    Block statements;
    for (;;) {
        while (accept(";")) continue;
        if (accept("END")) return statements;
        statements.push_back(parseStatement());
    }
}

std::optional<BinaryOp> Parser::parseAssignmentOperator() {
    for (const auto& symbol : kAssignments)
        if (accept(symbol.text)) return symbol.op;
    expect("=");
    return std::nullopt;
}

Statement::Node Parser::parseDeclare() {
    take();
    if (atName()) return parseDeclareCursor();
    return Declare{list([this] {
        if (peek().kind != TokenKind::Variable) syntaxError();
        const Token& name = take();
        accept("AS");
        if (at("CURSOR")) unsupported("cursor variables");
        Declaration declaration{std::string(name.raw), {}, nullptr};
        if (at("TABLE"))
            declaration.table = parseTableVariable(name);
        else
            declaration.type = type(TypeUse::Declaration);
        if (accept("=")) declaration.value = expression();
        auto& declared = declaration.table ? m_declaredTables : m_declared;
        const auto& others = declaration.table ? m_declared : m_declaredTables;
        if (others.contains(lowerAscii(name.raw)) || !declared.insert(lowerAscii(name.raw)).second)
            throw SyntaxError(sqlError(134, {name.raw}), name.line);
        return declaration;
    })};
}

Statement::Node Parser::parseSet() {
    take();
    if (peek().kind != TokenKind::Variable) return parseSetOption();
    Assign assign;
    assign.name = expectVariable();
    assign.op = parseAssignmentOperator();
    if (at("CURSOR")) unsupported("cursor variables");
    assign.value = expression();
    return assign;
}

// Rows are read when the cursor is opened: what would follow later changes is refused.
Statement::Node Parser::parseDeclareCursor() {
    DeclareCursor node{expectName(), nullptr};
    node.counted = accept("INSENSITIVE");
    node.scroll = accept("SCROLL");
    expect("CURSOR");
    bool forward = false;
    while (!accept("FOR")) {
        for (const auto word : {"DYNAMIC", "KEYSET", "SCROLL_LOCKS", "OPTIMISTIC"})
            if (at(word)) unsupported(std::string(word) + " cursors");
        if (accept("LOCAL"))
            node.local = true;
        else if (accept("STATIC"))
            node.counted = true;
        else if (accept("SCROLL"))
            node.scroll = true;
        else if (accept("FORWARD_ONLY") || accept("FAST_FORWARD"))
            forward = true;
        else if (!accept("GLOBAL") && !accept("READ_ONLY") && !accept("TYPE_WARNING"))
            syntaxError();
    }
    if (forward && node.scroll) throw SyntaxError(sqlError(1048, {"FORWARD_ONLY", "SCROLL"}), peek().line);
    node.scroll = node.scroll || (node.counted && !forward);
    node.query = parseQuery();
    if (at("FOR") && at("UPDATE", 1)) unsupported("FOR UPDATE of a cursor");
    if (accept("FOR") && !acceptAll({"READ", "ONLY"})) syntaxError();
    return node;
}

CursorName Parser::parseCursorName() {
    if (peek().kind == TokenKind::Variable) unsupported("cursor variables");
    const bool global = at("GLOBAL") && atName(1) && accept("GLOBAL");
    return {expectName(), global};
}

Statement::Node Parser::parseChangeCursor() {
    if (accept("OPEN")) return ChangeCursor{CursorVerb::Open, parseCursorName()};
    if (accept("CLOSE")) return ChangeCursor{CursorVerb::Close, parseCursorName()};
    take();
    return ChangeCursor{CursorVerb::Deallocate, parseCursorName()};
}

Statement::Node Parser::parseFetch() {
    take();
    Fetch node;
    constexpr std::string_view kWords[] = {"NEXT", "PRIOR", "FIRST", "LAST", "ABSOLUTE", "RELATIVE"};
    for (std::size_t i = 0; i < std::size(kWords); ++i) {
        const auto from = static_cast<FetchFrom>(i);
        const bool counted = from >= FetchFrom::Absolute;
        if (!at(kWords[i]) || !(counted || at("FROM", 1))) continue;
        take();
        node.from = from;
        if (counted) node.offset = parseUnary();
        if (!at("FROM")) syntaxError();
        break;
    }
    accept("FROM");
    node.cursor = parseCursorName();
    if (accept("INTO")) node.into = list([this] { return expectVariable(); });
    return node;
}

Statement::Node Parser::parseSetOption() {
    SetOption option;
    const auto word = [this] {
        if (peek().kind != TokenKind::Word) syntaxError();
        return toUpper(take().raw);
    };
    if (acceptAll({"TRANSACTION", "ISOLATION", "LEVEL"})) {
        option.names = {"TRANSACTION ISOLATION LEVEL"};
        if (word() == "READ" || at("READ")) word();
        return option;
    }
    option.names = list(word);
    const std::string& name = option.names.front();
    if (name == "STATISTICS") word();
    if (name == "IDENTITY_INSERT") option.table = objectName();
    if (at("ON") || at("OFF"))
        for (const auto& each : option.names)  // what follows is read with the new meaning of "x"
            if (each == "QUOTED_IDENTIFIER") m_quotedIdentifiers = at("ON");
    if (accept("ON")) return option;
    if (accept("OFF"))
        option.on = false;
    else if (peek().kind == TokenKind::Number || at("-"))
        option.number = expectInteger();
    else if (name == "DATEFORMAT" || name == "LANGUAGE" || name == "DEADLOCK_PRIORITY")
        option.names.push_back(toUpper(isString(peek()) ? unquoted(take()) : expectName()));
    else
        syntaxError();
    return option;
}

Statement::Node Parser::parseIf() {
    take();
    If node{condition(), parseStatement(), nullptr};
    if (accept("ELSE")) node.otherwise = parseStatement();
    return node;
}

Statement::Node Parser::parseWhile() {
    take();
    While node{condition(), nullptr};
    ++m_loops;
    node.body = parseStatement();
    --m_loops;
    return node;
}

Statement::Node Parser::parseBegin() {
    if (at("TRAN", 1) || at("TRANSACTION", 1)) return parseTransaction();
    take();
    if (at("DISTRIBUTED")) unsupported("distributed transactions");
    if (!accept("TRY")) return Compound{parseBlock()};
    TryCatch node;
    node.attempt = parseAttempt("TRY");
    if (!acceptAll({"BEGIN", "CATCH"})) syntaxError();
    node.handler = parseAttempt("CATCH");
    return node;
}

Block Parser::parseAttempt(std::string_view word) {
    Block block = parseBlock();
    expect(word);
    accept(";");
    return block;
}

bool Parser::atExpression() const {
    const Token& token = peek();
    if (token.kind == TokenKind::End || at(";") || at(")")) return false;
    return !token.reserved || at("CASE") || at("NULL") || at("CONVERT") || at("COALESCE") || at("NULLIF") ||
           ((at("LEFT") || at("RIGHT")) && at("(", 1));
}

Statement::Node Parser::parseReturn() {
    take();
    return Return{atExpression() ? expression() : nullptr};
}

Statement::Node Parser::parseRaiseError() {
    take();
    if (!at("(")) unsupported("RAISERROR without parentheses");
    RaiseError node;
    expect("(");
    node.message = expression();
    expect(",");
    node.severity = expression();
    expect(",");
    node.state = expression();
    if (accept(",")) node.arguments = expressions();
    expect(")");
    if (!accept("WITH")) return node;
    do {
        if (accept("LOG"))
            node.log = true;
        else if (accept("SETERROR"))
            node.setError = true;
        else if (accept("NOWAIT"))
            node.noWait = true;
        else
            syntaxError();
    } while (accept(","));
    return node;
}

Statement::Node Parser::parseThrow() {
    take();
    Throw node;
    if (peek().kind != TokenKind::Number && peek().kind != TokenKind::Variable) return node;
    node.number = expression();
    expect(",");
    node.message = expression();
    expect(",");
    node.state = expression();
    return node;
}

Statement::Node Parser::parseWaitFor() {
    take();
    const bool until = accept("TIME");
    if (!until) expect("DELAY");
    return WaitFor{expression(), until};
}

Statement::Node Parser::parseExecute() {
    if (!accept("EXEC")) accept("EXECUTE");
    Execute node;
    if (accept("(")) {
        node.text = expression();
        expect(")");
        if (at("AT")) unsupported("EXECUTE ... AT");
        return node;
    }
    if (peek().kind == TokenKind::Variable && at("=", 1)) {
        node.resultVariable = expectVariable();
        take();
    }
    if (peek().kind == TokenKind::Variable)
        node.procedureVariable = expectVariable();
    else
        node.procedure = objectName();
    const Token& token = peek();
    const bool argument = isString(token) || atName() || at("-") || at("NULL") || at("DEFAULT") || at("ON") ||
                          token.kind == TokenKind::Variable || token.kind == TokenKind::Global ||
                          token.kind == TokenKind::Number || token.kind == TokenKind::Binary;
    if (argument && !(at("THROW"))) node.arguments = list([this] { return parseArgument(); });
    if (acceptAll({"WITH", "RECOMPILE"})) return node;
    return node;
}

Argument Parser::parseArgument() {
    Argument argument;
    if (peek().kind == TokenKind::Variable && at("=", 1)) {
        argument.name = std::string(take().raw);
        take();
    }
    if (accept("DEFAULT")) return argument;
    const int line = peek().line;
    if (atName() || at("ON"))
        argument.value = textExpr(unquoted(take()), line);  // a bare word is a text
    else
        argument.value = parseUnary();
    if (accept("OUTPUT") || accept("OUT")) {
        if (!std::holds_alternative<VariableRef>(argument.value->node)) syntaxError();
        argument.output = true;
    }
    return argument;
}

Statement::Node Parser::parseTransaction() {
    Transaction node{TransactionVerb::Begin, {}, {}};
    if (accept("COMMIT"))
        node.verb = TransactionVerb::Commit;
    else if (accept("ROLLBACK"))
        node.verb = TransactionVerb::Rollback;
    else if (accept("SAVE"))
        node.verb = TransactionVerb::Save;
    else
        expect("BEGIN");
    if (!accept("TRAN") && !accept("TRANSACTION")) {
        accept("WORK");
        return node;
    }
    if (peek().kind == TokenKind::Variable)
        node.variable = expectVariable();
    else if (atName())
        node.name = expectName();
    else if (node.verb == TransactionVerb::Save)
        syntaxError();
    return node;
}

ExprPtr Parser::parseNameOrVariable() {
    const int line = peek().line;
    return peek().kind == TokenKind::Variable ? parsePrimary() : textExpr(expectName(), line);
}

// DISK = 'path'
ExprPtr Parser::parseFileName() {
    if (!at("DISK")) unsupported("a backup device other than DISK");
    take();
    expect("=");
    ExprPtr file = parsePrimary();
    if (at(",")) unsupported("a backup in several files");
    return file;
}

Statement::Node Parser::parseBackup() {
    take();
    if (at("LOG")) unsupported("BACKUP LOG");
    expect("DATABASE");
    Backup node{parseNameOrVariable(), nullptr};
    expect("TO");
    node.file = parseFileName();
    if (!accept("WITH")) return node;
    do {  // how to name and format the backup's media; each backup is a file of its own here
        for (const auto option : {"DIFFERENTIAL", "NOINIT", "EXPIREDATE", "RETAINDAYS", "ENCRYPTION"})
            if (at(option)) unsupported("BACKUP WITH " + std::string(option));
        constexpr std::string_view kOptions[] = {
            "INIT",        "FORMAT",           "NOFORMAT",    "SKIP",           "NOSKIP",       "CHECKSUM",
            "NO_CHECKSUM", "COPY_ONLY",        "COMPRESSION", "NO_COMPRESSION", "NAME",         "DESCRIPTION",
            "MEDIANAME",   "MEDIADESCRIPTION", "NOREWIND",    "NOUNLOAD",       "STOP_ON_ERROR"};
        if (parseStats(node.stats)) continue;
        bool known = false;
        for (const auto option : kOptions) known = known || accept(option);
        if (!known) syntaxError();
        if (accept("=")) parsePrimary();
    } while (accept(","));
    return node;
}

// STATS [= percentage]
bool Parser::parseStats(std::int64_t& stats) {
    constexpr std::int64_t kDefault = 10;
    if (!accept("STATS")) return false;
    stats = accept("=") ? expectInteger() : kDefault;
    return true;
}

Statement::Node Parser::parseRestore() {
    take();
    Restore node;
    if (accept("FILELISTONLY")) {
        node.kind = RestoreKind::FileList;
    } else if (accept("HEADERONLY")) {
        node.kind = RestoreKind::Header;
    } else if (accept("VERIFYONLY")) {
        node.kind = RestoreKind::Verify;
    } else {
        if (!accept("DATABASE")) unsupported("this form of RESTORE");
        node.database = parseNameOrVariable();
    }
    expect("FROM");
    node.file = parseFileName();
    if (!accept("WITH")) return node;
    do {
        if (accept("MOVE")) {
            ExprPtr logical = parsePrimary();
            expect("TO");
            node.moves.push_back({std::move(logical), parsePrimary()});
        } else if (accept("REPLACE")) {
            node.replace = true;
        } else if (at("NORECOVERY") || at("STANDBY")) {
            unsupported("RESTORE WITH NORECOVERY or STANDBY");
        } else if (accept("FILE")) {
            expect("=");
            if (expectInteger() != 1) unsupported("a backup file with several backups");
        } else if (!parseStats(node.stats) && !accept("RECOVERY") && !accept("NOUNLOAD") &&
                   !accept("CHECKSUM") && !accept("NO_CHECKSUM") && !accept("STOP_ON_ERROR")) {
            syntaxError();
        }
    } while (accept(","));
    return node;
}

}  // namespace tsql
