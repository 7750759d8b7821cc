// CREATE, ALTER and DROP.

#include "syntax/Parser.h"

namespace tsql {

namespace {

// ---- tables

[[noreturn]] void throwUnsupportedObject(const Parser& in, const std::string& verb) {
    if (in.peek().kind != TokenKind::Word) in.throwSyntaxError();
    in.throwUnsupported(verb + " " + toUpper(in.near()));
}

// a, b DESC
std::vector<std::pair<std::string, bool>> indexColumns(Parser& in) {
    return in.inList([&] {
        std::string name = in.expectName();
        return std::pair(std::move(name), in.acceptDescending());
    });
}

// ON filegroup, which has no effect.
void fileGroup(Parser& in) {
    while (in.acceptAny({"ON", "TEXTIMAGE_ON", "FILESTREAM_ON"})) {
        in.expectName();
        in.throwIfAt("(", "partitions");
    }
}

// WITH (option = value, ...) of an index. Two of the options would change the effect of statements.
void indexStorage(Parser& in) {
    const auto option = [&] {
        for (const auto word : {"IGNORE_DUP_KEY = ON", "DROP_EXISTING = ON"}) in.throwIfAt(word, word);
        if (!in.acceptAny({"PAD_INDEX", "FILLFACTOR", "SORT_IN_TEMPDB", "IGNORE_DUP_KEY",
                           "STATISTICS_NORECOMPUTE", "STATISTICS_INCREMENTAL", "DROP_EXISTING", "ONLINE",
                           "RESUMABLE", "ALLOW_ROW_LOCKS", "ALLOW_PAGE_LOCKS", "OPTIMIZE_FOR_SEQUENTIAL_KEY",
                           "MAXDOP", "DATA_COMPRESSION", "LOB_COMPACTION"}))
            in.throwUnsupported("the option " + toUpper(in.near()) + " of an index");
        in.expect("=");
        return in.takeToken().kind;
    };
    if (in.accept("WITH FILLFACTOR =")) in.expectInteger();
    if (in.at("WITH (") && in.accept("WITH")) in.inList(option);
    fileGroup(in);
}

void references(Parser& in, Constraint& constraint) {
    in.expect("REFERENCES");
    constraint.references = in.objectName();
    if (!constraint.references.database.empty()) in.throwUnsupported("a foreign key to another database");
    if (in.at("(")) constraint.referencedColumns = in.columnNames();
    while (in.accept("ON")) {
        const bool onDelete = in.expectAny({"DELETE", "UPDATE"}) == "DELETE";
        (onDelete ? constraint.onDelete : constraint.onUpdate) =
            in.expectAny({kNoAction, "CASCADE", "SET NULL", "SET DEFAULT"});
    }
}

// Stored form of a default, which the catalogue shows in one more pair of parentheses: 1 and ((1)) are stored
// as (1), (f()) as f().
std::string storedDefault(std::string text) {
    if (text.starts_with('(')) text = text.substr(1, text.size() - 2);
    const auto first = text.find_first_not_of('('), last = text.find_last_not_of(')');
    const std::string number = text.substr(first, last - first + 1);
    return number.find_first_not_of("+-.0123456789") == std::string::npos ? "(" + number + ")" : text;
}

// Operators may follow without parentheses, but no condition: NOT would be that of NOT NULL.
void defaultValue(Parser& in, Constraint& constraint, bool ofTable) {
    const std::size_t begin = in.position();
    const ExprPtr value = in.scalar(&Parser::unary);
    if (const auto* column = std::get_if<ColumnRef>(&value->node))
        in.throwError(kNameNotPermittedHere, {column->path.back()}, value->line);
    bool operates = false;
    for (; in.acceptAny({"+", "-", "*", "/", "%", "&", "|", "^"}); operates = true) in.scalar(&Parser::unary);
    const std::string text = in.textSince(begin);
    constraint.text = storedDefault(operates ? "(" + text + ")" : text);
    if (!ofTable) return;
    in.expect("FOR");
    constraint.columns = {in.expectName()};
    in.accept("WITH VALUES");  // no effect on an existing column
}

ColumnDefinition columnDefinition(Parser& in, std::vector<Constraint>& constraints) {
    ColumnDefinition column{in.expectName(), {}};
    const auto option = [&] {
        for (const auto word : {"GENERATED", "MASKED", "ENCRYPTED", "FILESTREAM", "HIDDEN", "INDEX"})
            in.throwIfAt(word, "the option " + std::string(word) + " of a column");
        if (auto constraint = in.acceptConstraint(/*ofTable=*/false)) {
            if (constraint->columns.empty()) constraint->columns = {column.name};
            constraints.push_back(std::move(*constraint));
        } else if (const auto null = in.acceptFirst({"NOT NULL", "NULL"}); !null.empty()) {
            column.nullable = null == "NULL";
        } else if (in.at("COLLATE")) {
            in.collation();
        } else if (in.accept("IDENTITY")) {
            column.identity = in.at("(") ? in.parenthesized([&] { return in.identity(); }) : Identity{};
        } else if (in.accept("WITH VALUES")) {
            column.withValues = true;
        } else {
            return in.acceptAny({"ROWGUIDCOL", "SPARSE", "NOT FOR REPLICATION"});
        }
        return true;
    };
    if (in.accept("AS")) {
        const std::size_t begin = in.position();
        in.scalar(&Parser::expression);
        column.computed = in.textSince(begin);
        column.persisted = in.accept("PERSISTED");
        while (!in.at("IDENTITY") && !in.at("DEFAULT") && option()) continue;
        return column;
    }
    UserType user;
    const bool isNameless = sameWord(column.name, "timestamp") && !in.atName();
    column.type = isNameless ? simpleType(TypeId::RowVersion) : in.type(TypeUse::Declaration, &user);
    if (user.table) in.throwError(kColumnOfTableType, {column.name});
    column.userType = user.id;
    if (!user.nullable) column.nullable = false;
    while (option()) continue;
    return column;
}

// Filters compare columns with constants.
bool isFilter(const Expr& expr) {
    const auto isColumn = [](const ExprPtr& part) { return std::holds_alternative<ColumnRef>(part->node); };
    const auto isConstant = [](const ExprPtr& part) { return std::holds_alternative<Literal>(part->node); };
    if (const auto* logic = std::get_if<Logic>(&expr.node))
        return logic->isAnd && isFilter(*logic->left) && isFilter(*logic->right);
    if (const auto* compare = std::get_if<Compare>(&expr.node))
        return isColumn(compare->left) && isConstant(compare->right);
    if (const auto* in = std::get_if<InList>(&expr.node))
        return isColumn(in->operand) && std::ranges::all_of(in->items, isConstant);
    if (const auto* null = std::get_if<IsNull>(&expr.node)) return isColumn(null->operand);
    const auto* negated = std::get_if<Not>(&expr.node);
    return negated && std::holds_alternative<IsNull>(negated->operand->node) && isFilter(*negated->operand);
}

// (columns) [INCLUDE (columns)] [WHERE filter] and the storage of an index
void indexBody(Parser& in, CreateIndex& index) {
    index.columns = indexColumns(in);
    if (in.accept("INCLUDE")) index.included = in.columnNames();
    if (in.accept("WHERE")) {
        const std::size_t begin = in.position();
        index.filter = in.scalar(&Parser::condition);
        index.filterText = in.textSince(begin);
        if (!isFilter(*index.filter))
            in.throwError(kBadIndexFilter, {index.name, index.table.name}, in.faulty().line);
    }
    indexStorage(in);
}

void tableElement(Parser& in, CreateTable& table) {
    if (in.accept("INDEX")) {
        CreateIndex& index = table.indexes.emplace_back(CreateIndex{in.expectName(), table.table});
        index.unique = in.accept("UNIQUE");
        in.acceptAny({"CLUSTERED", "NONCLUSTERED"});
        return indexBody(in, index);
    }
    if (auto constraint = in.acceptConstraint(/*ofTable=*/true))
        table.constraints.push_back(std::move(*constraint));
    else
        table.columns.push_back(columnDefinition(in, table.constraints));
}

// A trailing comma is allowed.
CreateTable tableElements(Parser& in, ObjectName name) {
    CreateTable table{std::move(name), {}, {}};
    in.expect("(");
    do tableElement(in, table);
    while (in.accept(",") && !in.at(")"));
    in.expect(")");
    return table;
}

Statement::Node createTable(Parser& in) {
    CreateTable node = tableElements(in, in.objectName());
    fileGroup(in);
    for (const auto word : {"AS EDGE", "AS FILETABLE", "AS NODE"}) in.throwIfAt(word, word);
    in.throwIfAt("WITH (", "options of CREATE TABLE");
    return node;
}

Statement::Node createIndex(Parser& in, bool unique) {
    CreateIndex node{in.expectName()};
    node.unique = unique;
    in.expect("ON");
    node.table = in.objectName();
    indexBody(in, node);
    return node;
}

// A bare name is a constraint.
void dropParts(Parser& in, AlterTable& table) {
    bool columns = false;
    do {
        columns = in.accept("COLUMN") || (columns && !in.accept("CONSTRAINT"));
        if (!columns) in.accept("CONSTRAINT");
        table.ifExists = in.accept("IF EXISTS") || table.ifExists;
        (columns ? table.dropColumns : table.dropConstraints).push_back(in.expectName());
        if (!columns) indexStorage(in);
    } while (in.accept(","));
}

Statement::Node alterTable(Parser& in) {
    AlterTable node{{in.objectName(), {}, {}}, {}, {}, {}};
    if (const auto verb = in.acceptFirst({"ENABLE TRIGGER", "DISABLE TRIGGER"}); !verb.empty())
        return parseTriggerSwitch(in, verb == "ENABLE TRIGGER", &node.added.table);
    if (const auto with = in.acceptFirst({"WITH CHECK", "WITH NOCHECK"}); !with.empty())
        node.checksRows = with == "WITH CHECK";
    if (const auto verb = in.acceptFirst({"CHECK CONSTRAINT", "NOCHECK CONSTRAINT"}); !verb.empty()) {
        node.enables = verb == "CHECK CONSTRAINT";
        if (!in.accept("ALL")) node.switched = in.list([&] { return in.expectName(); });
    } else if (in.accept("ADD")) {
        in.throwIfAt("INDEX", "ALTER TABLE ... ADD INDEX");
        do tableElement(in, node.added);
        while (in.accept(",") && !in.at("INDEX"));
    } else if (!node.checksRows && in.accept("DROP")) {
        dropParts(in, node);
    } else if (!node.checksRows && in.accept("ALTER COLUMN")) {
        const int line = in.peek().line;
        node.altered = columnDefinition(in, node.added.constraints);
        if (node.altered->identity || !node.added.constraints.empty())
            throw SyntaxError(unsupported("ALTER COLUMN with an identity or a constraint"), line);
    } else if (!in.acceptAny({"SET ( LOCK_ESCALATION = TABLE )", "SET ( LOCK_ESCALATION = AUTO )",
                              "SET ( LOCK_ESCALATION = DISABLE )"})) {  // no effect
        throwUnsupportedObject(in, "ALTER TABLE");
    }
    return node;
}

// ---- modules

// Options of modules that change no result.
void moduleOptions(Parser& in) {
    if (!in.accept("WITH")) return;
    do {
        in.accept("EXEC");
        if (!in.acceptAny({"RECOMPILE", "SCHEMABINDING", "VIEW_METADATA", "CALLED ON NULL INPUT",
                           "EXECUTE AS CALLER", "EXECUTE AS OWNER", "EXECUTE AS SELF"}))
            in.throwUnsupported("WITH " + toUpper(in.near()) + " of a procedure, function, view or trigger");
    } while (in.accept(","));
}

// The query of a view, RETURN query of a function. It extends to the end of the batch.
void moduleQuery(Parser& in, CreateModule& module) {
    if (module.function) in.expect("RETURN");
    module.query = in.subquery();
    module.checksRows = in.accept("WITH CHECK OPTION");
    in.accept(";");
    if (in.peek().kind != TokenKind::End) in.throwSyntaxError();
}

void parameters(Parser& in, CreateModule& module) {
    const bool bracket = in.accept("(");
    if (module.function && !bracket) in.throwSyntaxError();
    if (in.atVariable()) module.parameters = in.list([&] { return in.declaration(true); });
    if (bracket) in.expect(")");
    if (module.function && !std::ranges::all_of(module.parameters, std::not_fn(&Declaration::table)))
        in.throwUnsupported("table-valued parameters of functions");
}

// The body of a module extends to the end of the batch.
void moduleBody(Parser& in, CreateModule& module) {
    if (module.function && !in.at("BEGIN")) in.throwSyntaxError();
    const Temporarily inside(in.m_module, &module);
    module.body = in.statements("");
    if (!module.function) return;
    const auto* body = std::get_if<Compound>(&module.body.front()->node);
    if (!body || !std::holds_alternative<Return>(body->statements.back()->node))
        in.throwError(kFunctionWithoutFinalReturn, {}, 0, 2);
}

// ON table [WITH options] FOR | AFTER | INSTEAD OF event, ...
void triggerEvents(Parser& in, CreateModule& trigger) {
    in.expect("ON");
    trigger.table = in.objectName();
    moduleOptions(in);
    trigger.insteadOf = in.expectAny({"INSTEAD OF", "FOR", "AFTER"}) == "INSTEAD OF";
    trigger.events = in.list([&] { return std::string(in.expectAny({"INSERT", "UPDATE", "DELETE"})); });
    in.accept("NOT FOR REPLICATION");
}

Statement::Node createModule(Parser& in, CreateModule module, std::string_view kind) {
    module.function = kind == "FUNCTION";
    module.name = in.objectName();
    const bool isGlobal = module.name.name.starts_with("##");
    if (isGlobal || (module.name.name.starts_with('#') && kind != "PROCEDURE"))
        in.throwUnsupported((isGlobal ? "global temporary " : "temporary ") + lowerAscii(kind) + "s");
    if (!module.name.database.empty()) in.throwError(kDatabaseInModuleName, {kind}, module.name.line);
    if (kind == "PROCEDURE") in.throwIfAt(";", "numbered procedures");
    in.m_procedure = module.name.name;
    bool isQuery = kind == "VIEW";
    if (!isQuery)
        kind == "TRIGGER" ? triggerEvents(in, module) : parameters(in, module);
    else if (in.at("("))
        module.columns = in.columnNames();
    if (module.function) {
        in.expect("RETURNS");
        if (in.atVariable()) module.rows = in.declaration(false);
        if (module.rows && !module.rows->table) in.throwSyntaxError();
        isQuery = !module.rows && in.accept("TABLE");
        if (!isQuery && !module.rows) module.returns = in.type(TypeUse::Declaration);
    }
    moduleOptions(in);
    if (!in.accept("AS") && !module.function) in.throwSyntaxError();
    isQuery ? moduleQuery(in, module) : moduleBody(in, module);
    module.locals = std::move(in.m_locals);
    return module;
}

// The server itself places the files of a database, whatever ON and LOG ON say.
Statement::Node createDatabase(Parser& in) {
    CreateDatabase node{in.expectName()};
    const auto file = [&] {
        if (in.accept("FILEGROUP")) in.expectName();
        if (!in.at("(")) in.throwSyntaxError();
        return in.skipParenthesized();
    };
    in.accept("CONTAINMENT = NONE");
    if (in.accept("ON PRIMARY") || in.accept("ON")) in.list(file);
    if (in.accept("LOG ON")) in.list(file);
    if (in.at("COLLATE")) in.collation();
    for (const auto word : {"CONTAINMENT", "FOR", "WITH", "AS"})
        in.throwIfAt(word, "CREATE DATABASE ... " + std::string(word));
    return node;
}

// Settings that have no effect with any value: the database has one writer and no statistics, and clients
// state the ANSI settings themselves.
constexpr std::string_view kIdleSettings =
    "ACCELERATED_DATABASE_RECOVERY ALLOW_SNAPSHOT_ISOLATION ANSI_NULL_DEFAULT ANSI_NULLS ANSI_PADDING "
    "ANSI_WARNINGS ARITHABORT AUTO_CLOSE AUTO_CREATE_STATISTICS AUTO_SHRINK AUTO_UPDATE_STATISTICS "
    "AUTO_UPDATE_STATISTICS_ASYNC COMPATIBILITY_LEVEL CONCAT_NULL_YIELDS_NULL CURSOR_CLOSE_ON_COMMIT "
    "DATE_CORRELATION_OPTIMIZATION DB_CHAINING DELAYED_DURABILITY HONOR_BROKER_PRIORITY NUMERIC_ROUNDABORT "
    "OPTIMIZED_LOCKING PAGE_VERIFY PARAMETERIZATION QUERY_STORE QUOTED_IDENTIFIER READ_COMMITTED_SNAPSHOT "
    "RECOVERY TARGET_RECOVERY_TIME TRUSTWORTHY";

// name value, name = value or name = value (options)
bool acceptIdleSetting(Parser& in) {
    if (!hasWord(kIdleSettings, toUpper(in.peek().raw))) return false;
    in.takeToken();
    in.accept("=");
    if (in.peek().kind == TokenKind::End) in.throwSyntaxError();
    if (!in.at("(")) in.takeToken();
    in.acceptAny({"SECONDS", "MINUTES"});
    if (in.at("(")) in.skipParenthesized();
    return true;
}

Statement::Node alterDatabase(Parser& in) {
    AlterDatabase node{in.accept("CURRENT") ? "" : in.expectName(), {}};
    if (in.accept("MODIFY NAME =")) return AlterDatabase{node.name, in.expectName()};
    if (!in.accept("SET")) throwUnsupportedObject(in, "ALTER DATABASE ...");
    do
        if (in.acceptAny({"SINGLE_USER", "RESTRICTED_USER"}))
            node.excludes = true;
        else if (!acceptIdleSetting(in) &&  // else a state that every database is in
                 !in.acceptAny({"MULTI_USER", "READ_WRITE", "ONLINE", "RECURSIVE_TRIGGERS OFF",
                                "CURSOR_DEFAULT GLOBAL", "DISABLE_BROKER"}))
            throwUnsupportedObject(in, "ALTER DATABASE ... SET");
    while (in.accept(","));
    in.acceptAny({"WITH ROLLBACK IMMEDIATE", "WITH NO_WAIT"});
    return node;
}

// REBUILD and REORGANIZE change no rows.
Statement::Node alterIndex(Parser& in) {
    AlterIndex node{in.accept("ALL") ? "" : in.expectName(), {}};
    in.expect("ON");
    node.table = in.objectName();
    if (!in.acceptAny({"REBUILD", "REORGANIZE"})) throwUnsupportedObject(in, "ALTER INDEX ...");
    in.accept("PARTITION = ALL");
    indexStorage(in);
    return node;
}

// i ON t, or t.i
AlterIndex droppedIndex(Parser& in) {
    const ObjectName name = in.objectName();  // s.t.i is parsed as database.schema.name
    if (!in.accept("ON")) return {name.name, {{}, name.database, name.schema, name.line}};
    AlterIndex index{name.name, in.objectName()};
    indexStorage(in);
    return index;
}

Statement::Node transferObject(Parser& in) {
    TransferObject node{in.expectName(), {}};
    in.expect("TRANSFER");
    if (!in.accept("OBJECT ::") && in.at("::", 1)) in.throwUnsupported("TRANSFER " + toUpper(in.near()));
    node.object = in.objectName();
    return node;
}

Statement::Node defineSequence(Parser& in, bool alter) {
    DefineSequence node{in.objectName(), alter, simpleType(TypeId::BigInt)};
    if (!alter && in.accept("AS")) node.type = in.type(TypeUse::Declaration);
    for (;;) {
        const auto option = in.acceptFirst({"START WITH", "RESTART WITH", "INCREMENT BY", "MINVALUE",
                                            "MAXVALUE", "NO MINVALUE", "NO MAXVALUE", "NO CYCLE", "NO CACHE",
                                            "CYCLE", "RESTART", "CACHE"});
        if (option.empty()) return node;
        auto& value = node.options[option];
        const bool isFlag = option.starts_with("NO ") || hasWord("CYCLE RESTART CACHE", std::string(option));
        if (!isFlag || in.peek().kind == TokenKind::Number) value = in.expectInteger();
    }
}

}  // namespace

// CREATE of a module must be the first statement of the batch, at its top level.
Statement::Node parseDefinition(Parser& in, bool create) {
    const bool first = in.position() == 1 && in.m_depth == 1;
    CreateModule module;
    module.create = create;
    module.alter = !create || in.accept("OR ALTER");
    const int line = in.peek().line;
    const auto word = in.acceptFirst({"PROCEDURE", "PROC", "FUNCTION", "VIEW", "TRIGGER"});
    const std::string kind(word == "PROC" ? "PROCEDURE" : word);
    if (!kind.empty()) {
        if (first) return createModule(in, std::move(module), kind);
        const char* const verb = kind == "PROCEDURE" ? "CREATE/ALTER " : create ? "CREATE " : "ALTER ";
        in.throwError(kMustBeFirstInBatch, {verb + kind}, line);
    }
    if (!create && in.accept("TABLE")) return alterTable(in);
    if (!create && in.accept("DATABASE")) return alterDatabase(in);
    if (!create && in.accept("INDEX")) return alterIndex(in);
    if (!create && in.accept("SCHEMA")) return transferObject(in);
    if (!(create && module.alter) && in.accept("SEQUENCE")) return defineSequence(in, !create);
    const bool orAlter = create && module.alter;
    if (create && in.at("SCHEMA") && !first) in.throwError(kMustBeFirstInBatch, {"CREATE SCHEMA"});
    auto principal = orAlter ? std::nullopt : parsePrincipal(in, create ? "create" : "alter");
    if (principal) return std::move(*principal);
    if (!create || orAlter) throwUnsupportedObject(in, orAlter ? "CREATE OR ALTER" : "ALTER");
    if (in.accept("TABLE")) return createTable(in);
    if (in.accept("TYPE")) return in.definition({in.objectName(), 0, {}});
    if (in.accept("DATABASE")) return createDatabase(in);
    const bool unique = in.accept("UNIQUE");
    in.acceptAny({"CLUSTERED", "NONCLUSTERED"});
    if (in.accept("INDEX")) return createIndex(in, unique);
    throwUnsupportedObject(in, "CREATE");
}

Statement::Node parseDrop(Parser& in) {
    std::string kind = lowerAscii(in.acceptFirst({"TABLE", "PROCEDURE", "PROC", "FUNCTION", "INDEX",
                                                  "DATABASE", "VIEW", "SEQUENCE", "TRIGGER", "TYPE"}));
    if (auto found = kind.empty() ? parsePrincipal(in, "drop") : std::nullopt) return std::move(*found);
    if (kind.empty()) throwUnsupportedObject(in, "DROP");
    if (kind == "proc") kind = "procedure";
    Drop node{kind, {}, {}, in.accept("IF EXISTS")};
    if (kind == "index")
        node.indexes = in.list([&] { return droppedIndex(in); });
    else
        node.names = in.list([&] {
            return kind == "database" ? ObjectName{{}, {}, in.expectName()} : in.objectName();
        });
    return node;
}

Statement::Node parseTriggerSwitch(Parser& in, bool enables, const ObjectName* altered) {
    std::vector<ObjectName> names(1);  // one without a name: all triggers
    if (!in.accept("ALL")) names = in.list([&] { return in.objectName(); });
    if (!altered) in.expect("ON");
    const ObjectName table = altered ? *altered : in.objectName();
    SystemStatement node{{table.database, "sys", "sp_switch_trigger"}};
    for (const auto& trigger : names)
        node.calls.push_back({{"@state", enables ? "" : "NOCHECK "},
                              {"@schema", table.schema},
                              {"@table", table.name},
                              {"@name", trigger.name},
                              {"@verb", altered ? "ALTER" : ""}});
    return node;
}

std::optional<Constraint> Parser::acceptConstraint(bool ofTable) {
    constexpr std::pair<std::string_view, std::string_view> kTypes[] = {{"PRIMARY KEY", kPrimaryKey},
                                                                        {"UNIQUE", kUnique},
                                                                        {"CHECK", kCheck},
                                                                        {"DEFAULT", kDefault},
                                                                        {"FOREIGN KEY", kForeignKey}};
    Constraint constraint{};
    const bool named = accept("CONSTRAINT");
    if (named) constraint.name = expectName();
    const std::size_t begin = position();
    const auto* type = acceptOneOf(kTypes);
    // The name of NULL or NOT NULL has no effect.
    if (!type && (!named || at("NULL") || at("NOT NULL")) && !at("REFERENCES")) return std::nullopt;
    constraint.type = type ? *type : kForeignKey;
    if (constraint.type == kCheck) {
        accept("NOT FOR REPLICATION");
        constraint.check = parenthesized([this] { return scalar(&Parser::condition); });
    } else if (constraint.type == kDefault) {
        defaultValue(*this, constraint, ofTable);
    } else if (constraint.type == kForeignKey) {
        if (type && at("(")) constraint.columns = columnNames();
        references(*this, constraint);
        accept("NOT FOR REPLICATION");
    } else {
        acceptAny({"CLUSTERED", "NONCLUSTERED"});
        if (ofTable || at("("))
            for (const auto& [name, descending] : indexColumns(*this)) constraint.columns.push_back(name);
        indexStorage(*this);
    }
    constraint.source = textSince(begin);
    return constraint;
}

// FROM type [NULL | NOT NULL], or AS TABLE (...)
UserType Parser::definition(UserType made) {
    const std::size_t begin = position();
    throwIfAt("EXTERNAL", "CREATE TYPE ... EXTERNAL NAME");
    if (accept("AS")) {
        made.type = simpleType(TypeId::Xml);  // has the size that the catalogue shows
        made.table = std::make_shared<CreateTable>(tableVariable("@" + made.name.name));
        throwIfAt("WITH", "options of CREATE TYPE");
    } else {
        expect("FROM");
        UserType base;
        made.type = type(TypeUse::Declaration, &base);
        if (base.id) throwError(kInvalidBaseType, {base.name.name}, faulty().line);
        made.nullable = accept("NULL") || !accept("NOT NULL");
    }
    made.text = textSince(begin);
    return made;
}

CreateTable Parser::tableVariable(const std::string& name) {
    const int line = peek().line;
    expect("TABLE");
    CreateTable table = tableElements(*this, {{}, {}, name, line});
    if (std::ranges::count(table.constraints, kForeignKey, &Constraint::type))
        throwUnsupported("a foreign key of a table variable");
    return table;
}

}  // namespace tsql
