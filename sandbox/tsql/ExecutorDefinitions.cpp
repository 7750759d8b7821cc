// CREATE, ALTER and DROP of tables and indexes.
#include <algorithm>

#include "Atomic.h"
#include "Executor.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {

using namespace ast;

namespace {

std::string_view storageClass(const SqlType& type) {
    if (isExact(type.id)) return "INTEGER";
    if (isApproximate(type.id)) return "REAL";
    if (isBinary(type.id)) return "BLOB";
    return "TEXT COLLATE ts_ci";
}

bool isOfKind(std::string_view type, ObjectKind kind) {
    if (kind == ObjectKind::Procedure) return type == objectType::kProcedure;
    if (kind == ObjectKind::View) return type == objectType::kView;
    return type == objectType::kFunction || type == objectType::kTableFunction;
}

std::string nameList(const std::vector<std::string>& names) {
    std::string list;
    for (const auto& name : names) list += (list.empty() ? "" : ", ") + quotedName(name);
    return list;
}

// "a, b" as they stand in the catalogue.
std::vector<std::string> columnList(std::string_view keys) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at <= keys.size(); at = std::min(keys.find(", ", at), keys.size()) + 2)
        names.emplace_back(keys.substr(at, std::min(keys.find(", ", at), keys.size()) - at));
    return names;
}

bool names(const KeyInfo& key, std::string_view column) {
    const auto columns = columnList(key.columns);
    return std::any_of(columns.begin(), columns.end(),
                       [&](const auto& name) { return compareText(name, column) == 0; });
}

bool isUniqueKey(const KeyInfo& key) {
    return key.type == objectType::kPrimaryKey || key.type == objectType::kUnique;
}

// The identity is SQLite's own key already.
bool needsIndex(const KeyInfo& key, const TableInfo& table) {
    const TableColumn* identity = table.identityColumn();
    return isUniqueKey(key) && (!identity || compareText(identity->name, key.columns) != 0);
}

std::string indexName(const std::string& name, std::int64_t table, std::string_view suffix = {}) {
    return quotedName(name + "@" + std::to_string(table) + std::string(suffix));
}

// In a unique key of T-SQL one NULL equals another, in SQLite's none does: the rows that hold one have an
// index of their own.
struct NullableKey {
    NullableKey(const TableInfo& table, const std::vector<std::string>& columns) {
        for (const auto& name : columns) {
            const TableColumn& column = *table.column(name);
            const std::string isNull = quotedName(name) + " IS NULL";
            list += (list.empty() ? "" : ", ") + isNull + ", " +
                    collated({"ifnull(" + quotedName(name) + ", 0)", column.type});
            if (column.nullable) condition += (condition.empty() ? "" : " OR ") + isNull;
        }
    }
    std::string list;
    std::string condition;  // empty: no column takes NULL
};

// "PK__Orders__42" when the statement gives no name.
std::string constraintName(const Constraint& constraint, std::string_view prefix, const TableInfo& table,
                           std::int64_t number) {
    if (!constraint.name.empty()) return constraint.name;
    return std::string(prefix) + "__" + table.name.substr(0, 9) + "__" + std::to_string(table.id) + "_" +
           std::to_string(number);
}

struct ConstraintFacts {
    std::string_view type, prefix;  // of a name that is made up
};
constexpr ConstraintFacts kConstraints[] = {
    {objectType::kPrimaryKey, "PK"},  // in the order of ConstraintKind
    {objectType::kUnique, "UQ"},
    {objectType::kCheck, "CK"},
    {objectType::kForeignKey, "FK"},
    {objectType::kDefault, "DF"}};

std::vector<const Constraint*> allConstraints(const CreateTable& create) {
    std::vector<const Constraint*> all;
    for (const auto& column : create.columns)
        for (const auto& constraint : column.constraints) all.push_back(&constraint);
    for (const auto& constraint : create.constraints) all.push_back(&constraint);
    return all;
}

bool isKeyColumn(const CreateTable& create, std::string_view name) {
    for (const auto* constraint : allConstraints(create))
        if (constraint->kind == ConstraintKind::PrimaryKey)
            for (const auto& column : constraint->columns)
                if (compareText(column, name) == 0) return true;
    return false;
}

TableColumn columnOf(const ColumnDefinition& definition, bool inKey) {
    TableColumn column{
        definition.name, definition.type, definition.nullable.value_or(true), definition.identity, {}};
    if (definition.identity || inKey) column.nullable = false;
    for (const auto& constraint : definition.constraints)
        if (constraint.kind == ConstraintKind::Default) column.byDefault = constraint.text;
    return column;
}

std::string columnText(const TableColumn& column) {
    if (column.identity) return quotedName(column.name) + " INTEGER PRIMARY KEY AUTOINCREMENT";
    return quotedName(column.name) + " " + std::string(storageClass(column.type)) +
           (column.nullable ? "" : " NOT NULL");
}

void checkDefinition(const CreateTable& create) {
    std::vector<std::string> names;
    bool identity = false;
    for (const auto& column : create.columns) {
        for (const auto& name : names)
            if (compareText(name, column.name) == 0) throw sqlError(2705, {column.name, create.table.name});
        names.push_back(column.name);
        if (column.identity && !isExact(column.type.id)) throw sqlError(2749, {column.name});
        if (column.identity && identity) throw sqlError(2744, {create.table.name});
        identity = identity || column.identity;
    }
}

}  // namespace

Flow Executor::run(const CreateTable& create) {
    refuseInFunction();
    createTable(create);
    m_error = 0;
    done(-1);
    return Flow::Next;
}

TableInfo Executor::createTable(const CreateTable& create) {
    checkDefinition(create);
    Catalogue target = catalogue(create.table);
    beforeWrite();
    Atomic atomic(m_connection, target.schema());
    const auto existing = target.find(create.table.name);
    if (existing && !isTemporaryName(create.table.name)) throw sqlError(2714, {create.table.name});
    TableInfo table;
    table.name = create.table.name;
    table.id = target.add(table.name, objectType::kTable, 0, "");
    if (target.isTemporary()) target.setStored(table.id, table.name + "@" + std::to_string(table.id));
    for (const auto& definition : create.columns) {
        table.columns.push_back(columnOf(definition, isKeyColumn(create, definition.name)));
        if (definition.identity) target.setSeed(table.id, definition.seed);
    }
    target.addColumns(table.id, table.columns);
    table = *target.table(table.name);
    for (const auto* constraint : allConstraints(create)) noteConstraint(target, table, *constraint);
    table = *target.table(table.name);
    m_connection.run("CREATE TABLE " + table.sqlName() + " (" + tableBody(target, table) + ")");
    for (const auto& key : target.keysOf(table.id)) makeKeyIndex(table, key);
    startIdentity(table);
    atomic.commit();
    return table;
}

// What the identity's next value follows.
void Executor::startIdentity(const TableInfo& table) {
    if (!table.identityColumn()) return;
    const Value start[] = {table.stored, table.seed - 1};
    m_connection.run("DELETE FROM " + table.schema + ".sqlite_sequence WHERE name = ?1", {start, 1});
    if (table.seed != 1)
        m_connection.run("INSERT INTO " + table.schema + ".sqlite_sequence (name, seq) VALUES (?1, ?2)",
                         start);
}

// Enters the constraint into the catalogue, and its default into the column.
KeyInfo Executor::noteConstraint(Catalogue& catalogue, TableInfo& table, const Constraint& constraint) {
    KeyInfo key;
    for (const auto& name : constraint.columns) {
        const TableColumn* column = table.column(name);
        if (!column) throw sqlError(1911, {name});
        if (constraint.kind == ConstraintKind::PrimaryKey && column->nullable)
            throw sqlError(8111, {table.name});
        key.columns += (key.columns.empty() ? "" : ", ") + column->name;
    }
    const ConstraintFacts& facts = kConstraints[static_cast<int>(constraint.kind)];
    key.type = facts.type;
    key.name = constraintName(constraint, facts.prefix, table, catalogue.lastId() + 1);
    key.source = constraint.source;
    if (catalogue.find(key.name) && !catalogue.isTemporary()) throw sqlError(2714, {key.name}, 5);
    if (constraint.kind == ConstraintKind::PrimaryKey &&
        !catalogue.keysOfType(table.stored, objectType::kPrimaryKey).empty())
        throw sqlError(1779, {table.name});
    if (constraint.kind == ConstraintKind::Default) {
        TableColumn column = *table.column(key.columns);
        for (const auto& other : catalogue.keysOf(table.id))
            if (other.type == objectType::kDefault && other.columns == key.columns) throw sqlError(1781);
        column.byDefault = constraint.text;
        catalogue.setColumn(table.id, column);
    }
    key.id = catalogue.add(key.name, key.type, table.id, key.columns);
    catalogue.setSource(key.id, key.source);
    if (constraint.kind == ConstraintKind::ForeignKey) {
        key.references = constraint.references;
        if (!catalogue.table(key.references)) throw sqlError(1767, {key.name, key.references});
        catalogue.setStored(key.id, key.references);
    }
    return key;
}

// What stands between the brackets of SQLite's CREATE TABLE; keys are indexes of their own.
std::string Executor::tableBody(Catalogue& catalogue, const TableInfo& table) {
    std::string body;
    for (const auto& column : table.columns) body += (body.empty() ? "" : ", ") + columnText(column);
    for (const auto& key : catalogue.keysOf(table.id)) {
        const std::string name = ", CONSTRAINT " + quotedName(key.name);
        if (key.type == objectType::kCheck)
            body +=
                name + " CHECK (" + Translator(*this).check(table, *parseConstraint(key.source).check) + ")";
        if (key.type != objectType::kForeignKey) continue;
        body += name + " FOREIGN KEY (" + nameList(columnList(key.columns)) + ") REFERENCES " +
                quotedName(key.references) + " (" + nameList(referencedColumns(catalogue, key)) + ")" +
                (parseConstraint(key.source).cascade ? " ON DELETE CASCADE" : "");
    }
    return body;
}

std::vector<std::string> Executor::referencedColumns(const Catalogue& catalogue, const KeyInfo& key) {
    const auto given = parseConstraint(key.source).referencedColumns;
    const TableInfo referenced = *catalogue.table(key.references);
    for (const auto& candidate : catalogue.keysOf(referenced.id)) {
        auto columns = columnList(candidate.columns);
        const bool fits =
            given.empty() ? candidate.type == objectType::kPrimaryKey
                          : std::equal(given.begin(), given.end(), columns.begin(), columns.end(),
                                       [](const auto& a, const auto& b) { return compareText(a, b) == 0; });
        if (fits && (isUniqueKey(candidate) || candidate.type == objectType::kIndex)) return columns;
    }
    if (given.empty()) throw sqlError(1773, {key.name, key.references});
    throw sqlError(1776, {key.references, key.name});
}

void Executor::makeKeyIndex(const TableInfo& table, const KeyInfo& key) {
    if (needsIndex(key, table))
        makeIndex(table, key.name, nameList(columnList(key.columns)), columnList(key.columns));
}

// `unique`: the columns of a unique index, none for another.
void Executor::makeIndex(const TableInfo& table, const std::string& name, const std::string& list,
                         const std::vector<std::string>& unique) {
    m_target = table;
    m_verb = "CREATE INDEX";
    m_indexName = name;
    m_newRows = "incoming AS (SELECT *, _rowid_ AS ts_row FROM " + table.sqlName() + ")";
    m_changeValues.clear();
    const std::string on = " ON " + quotedName(table.stored) + " (";
    m_connection.run(std::string("CREATE ") + (unique.empty() ? "" : "UNIQUE ") + "INDEX " + table.schema +
                     "." + indexName(name, table.id) + on + list + ")");
    if (const NullableKey key(table, unique); !key.condition.empty())
        m_connection.run("CREATE UNIQUE INDEX " + table.schema + "." +
                         indexName(name, table.id, kNullsSuffix) + on + key.list + ") WHERE " +
                         key.condition);
    m_verb.clear();
}

void Executor::dropIndex(const TableInfo& table, const std::string& name) {
    m_connection.run("DROP INDEX " + table.schema + "." + indexName(name, table.id));
    m_connection.run("DROP INDEX IF EXISTS " + table.schema + "." + indexName(name, table.id, kNullsSuffix));
}

// ---- ALTER TABLE

// Gives SQLite the table's definition anew where its rows stay as they are.
void Executor::redefine(Catalogue& catalogue, const TableInfo& table) {
    const Value values[] = {
        table.stored, "CREATE TABLE " + quotedName(table.stored) + " (" + tableBody(catalogue, table) + ")"};
    m_connection.run("PRAGMA writable_schema = ON");
    m_connection.run(
        "UPDATE " + table.schema + ".sqlite_master SET sql = ?2 WHERE type = 'table' AND name = ?1", values);
    std::int64_t version = 0;
    {
        PreparedStatement query(m_connection, "PRAGMA " + table.schema + ".schema_version");
        query.step();
        version = query.integer(0);
    }
    m_connection.run("PRAGMA " + table.schema + ".schema_version = " + std::to_string(version + 1));
    m_connection.run("PRAGMA writable_schema = RESET");
}

// Rows that are there already must keep to a new constraint.
void Executor::checkRows(Catalogue& catalogue, const TableInfo& table, const KeyInfo& key) {
    std::string broken;
    if (key.type == objectType::kCheck)
        broken = "NOT (" + Translator(*this).check(table, *parseConstraint(key.source).check) + ")";
    if (key.type == objectType::kForeignKey)
        broken = orphans(catalogue, table, key, quotedName(table.stored));
    if (broken.empty()) return;
    PreparedStatement query(m_connection,
                            "SELECT 1 FROM " + table.sqlName() + " WHERE " + broken + " LIMIT 1");
    if (!query.step()) return;
    m_verb = "ALTER TABLE";
    const SqlError error =
        key.type == objectType::kCheck ? conflict("CHECK", table, key) : foreignKeyConflict(catalogue, key);
    m_verb.clear();
    throw error;
}

// The condition that a row of `rows` refers to none: SQL over the table or the rows that were to come.
std::string Executor::orphans(const Catalogue& catalogue, const TableInfo& table, const KeyInfo& key,
                              const std::string& rows) {
    const auto columns = columnList(key.columns), referenced = referencedColumns(catalogue, key);
    std::string present, match;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string column = rows + "." + quotedName(columns[i]);
        present += column + " IS NOT NULL AND ";
        match += (i ? " AND " : "") + ("parent." + quotedName(referenced[i])) + " = " + column;
    }
    return present + "NOT EXISTS (SELECT 1 FROM " + table.schema + "." + quotedName(key.references) +
           " AS parent WHERE " + match + ")";
}

void Executor::addColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& definition) {
    TableColumn column = columnOf(definition, false);
    if (table.column(column.name)) throw sqlError(2705, {column.name, table.name});
    if (column.identity) throw unsupported("ALTER TABLE ADD of an identity");
    const bool filled = !column.byDefault.empty() && !column.nullable;
    if (!column.nullable && !filled) {
        PreparedStatement rows(m_connection, "SELECT 1 FROM " + table.sqlName() + " LIMIT 1");
        if (rows.step()) throw sqlError(4901, {column.name, table.name});
    }
    const std::string fallback = std::exchange(column.byDefault, {});
    m_connection.run("ALTER TABLE " + table.sqlName() + " ADD COLUMN " + quotedName(column.name) + " " +
                     std::string(storageClass(column.type)));
    catalogue.addColumns(table.id, {column});
    table = *catalogue.table(table.name);
    if (filled) fillColumn(table, column, Translator(*this).value(*parseExpression(fallback)));
}

void Executor::fillColumn(const TableInfo& table, const TableColumn& column, const Typed& value) {
    m_connection.run("UPDATE " + table.sqlName() + " SET " + quotedName(column.name) + " = " +
                     emitAssign(value, column.type, table.fullName(), column.name).sql);
}

// SQL Server's two messages: what is in the way, and what failed for it.
void Executor::refuseDependents(const TableInfo& table, std::string_view column, std::string_view verb,
                                const std::vector<KeyInfo>& keys) {
    for (const auto& key : keys) {
        if (!names(key, column)) continue;
        report(messageOf(
            sqlError(5074, {key.type == objectType::kIndex ? "index" : "object", key.name, column}), m_line));
        throw sqlError(4922, {verb, column});
    }
    if (!table.column(column)) throw sqlError(4924, {verb, column, table.name});
}

void Executor::alterColumn(Catalogue& catalogue, TableInfo& table, const ColumnDefinition& definition) {
    refuseDependents(table, definition.name, "ALTER", {});
    TableColumn column = *table.column(definition.name);
    const SqlType before = column.type;
    if (column.identity || !definition.constraints.empty()) throw unsupported("this form of ALTER COLUMN");
    const bool longer =
        before.id == definition.type.id &&
        (before.length <= definition.type.length || definition.type.length == SqlType::kMax) &&
        before.scale == definition.type.scale && before.precision <= definition.type.precision;
    if (!longer) refuseDependents(table, column.name, "ALTER", catalogue.keysOf(table.id));
    column.type = definition.type;
    column.nullable = definition.nullable.value_or(true);
    catalogue.setColumn(table.id, column);
    table = *catalogue.table(table.name);
    if (!column.nullable) {
        PreparedStatement null(m_connection, "SELECT 1 FROM " + table.sqlName() + " WHERE " +
                                                 quotedName(column.name) + " IS NULL LIMIT 1");
        if (null.step()) throw sqlError(515, {column.name, table.fullName(), "UPDATE"});
    }
    redefine(catalogue, table);
    if (!longer) fillColumn(table, column, {quotedName(column.name), before});
}

void Executor::dropConstraint(Catalogue& catalogue, TableInfo& table, const std::string& name,
                              bool ifExists) {
    const auto keys = catalogue.keysOf(table.id);
    const auto key = std::find_if(keys.begin(), keys.end(), [&](const KeyInfo& each) {
        return each.type != objectType::kIndex && compareText(each.name, name) == 0;
    });
    if (key == keys.end() && ifExists) return;
    const auto because = [&](const SqlError& error) {
        report(messageOf(error, m_line));
        throw sqlError(3727);
    };
    if (key == keys.end()) because(sqlError(3728, {name}));
    for (const auto& foreign : catalogue.keysTo(table.name))
        if (isUniqueKey(*key) && referencedColumns(catalogue, foreign) == columnList(key->columns))
            because(sqlError(3725, {name, foreign.table, foreign.name}));
    if (key->type == objectType::kDefault) {
        TableColumn column = *table.column(key->columns);
        column.byDefault.clear();
        catalogue.setColumn(table.id, column);
    }
    if (needsIndex(*key, table)) dropIndex(table, key->name);
    catalogue.remove(key->id);
}

Flow Executor::run(const AlterTable& alter) {
    refuseInFunction();
    TableInfo target = table(alter.added.table);
    Catalogue owner = catalogue(alter.added.table);
    beforeWrite();
    Atomic atomic(m_connection, owner.schema());
    for (const auto& key : owner.keysOf(target.id))  // SQLite's own definition holds what is not known here
        if (key.type != objectType::kIndex && key.source.empty())
            throw unsupported("ALTER TABLE of a table that an earlier version of it has made");
    for (const auto& definition : alter.added.columns) addColumn(owner, target, definition);
    for (const auto* constraint : allConstraints(alter.added)) {
        const KeyInfo key = noteConstraint(owner, target, *constraint);
        checkRows(owner, target, key);
        makeKeyIndex(target, key);
    }
    for (const auto& name : alter.dropConstraints) dropConstraint(owner, target, name, alter.ifExists);
    if (!alter.dropConstraints.empty()) redefine(owner, target);
    for (const auto& name : alter.dropColumns) {
        if (alter.ifExists && !target.column(name)) continue;
        refuseDependents(target, name, "DROP", owner.keysOf(target.id));
        m_connection.run("ALTER TABLE " + target.sqlName() + " DROP COLUMN " + quotedName(name));
        owner.removeColumn(target.id, name);
    }
    target = *owner.table(target.name);
    if (alter.altered)
        alterColumn(owner, target, *alter.altered);
    else
        redefine(owner, target);
    atomic.commit();
    m_error = 0;
    done(-1);
    return Flow::Next;
}

Flow Executor::run(const CreateIndex& create) {
    refuseInFunction();
    const TableInfo target = table(create.table);
    Catalogue owner = catalogue(create.table);
    if (owner.index(target.id, create.name)) throw sqlError(1913, {create.name, target.name});
    std::string list, keys;
    std::vector<std::string> unique;
    for (const auto& [name, descending] : create.columns) {
        const TableColumn* column = target.column(name);
        if (!column) throw sqlError(1911, {name});
        list += (list.empty() ? "" : ", ") + quotedName(column->name) + (descending ? " DESC" : "");
        keys += (keys.empty() ? "" : ", ") + column->name;
        if (create.unique) unique.push_back(column->name);
    }
    beforeWrite();
    Atomic atomic(m_connection, owner.schema());
    makeIndex(target, create.name, list, unique);
    owner.add(create.name, objectType::kIndex, target.id, keys);
    atomic.commit();
    m_error = 0;
    done(-1);
    return Flow::Next;
}

Flow Executor::run(const Drop& drop) {
    refuseInFunction();
    for (const auto& name : drop.names) {
        if (drop.kind == ObjectKind::Database) {
            dropDatabase(name.name, drop.ifExists);
            continue;
        }
        Catalogue owner =
            catalogue(drop.kind == ObjectKind::Index ? ObjectName{{}, {}, name.schema, 0} : name);
        beforeWrite();
        Atomic atomic(m_connection, owner.schema());
        if (drop.kind == ObjectKind::Table) {
            dropTable(owner, name, drop.ifExists);
        } else if (drop.kind == ObjectKind::Index) {
            const auto target = owner.table(name.schema);
            const auto index = target ? owner.index(target->id, name.name) : std::nullopt;
            if (!index && !drop.ifExists) throw sqlError(3701, {"index", name.schema + "." + name.name}, 7);
            if (!index) continue;
            dropIndex(*target, name.name);
            owner.remove(index->id);
        } else {
            const std::string_view kind = drop.kind == ObjectKind::Procedure  ? "procedure"
                                          : drop.kind == ObjectKind::Function ? "function"
                                                                              : "view";
            const auto module = owner.find(name.name);
            const bool fits = module && isOfKind(module->type, drop.kind);
            if (!fits && !drop.ifExists) throw sqlError(3701, {kind, name.name});
            if (fits) owner.remove(module->id);
        }
        atomic.commit();
    }
    m_error = 0;
    done(-1);
    return Flow::Next;
}

void Executor::dropTable(Catalogue& catalogue, const ObjectName& name, bool ifExists) {
    const auto target = catalogue.table(name.name);
    if (!target && ifExists) return;
    if (!target) throw sqlError(3701, {"table", name.name});
    for (const auto& key : catalogue.keysTo(target->name))
        if (compareText(key.table, target->name) != 0) throw sqlError(3726, {target->name});
    m_connection.run("DROP TABLE " + target->sqlName());
    catalogue.remove(target->id);
}

void Executor::dropTable(const TableInfo& table) {
    m_connection.run("DROP TABLE IF EXISTS " + table.sqlName());
    temporary().remove(table.id);
}

// What a procedure has made goes with it, what a batch has made only if it is a variable's.
void Executor::dropTemporaryTables(std::int64_t after, bool variables) {
    for (const auto& table : temporary().tablesAfter(after))
        if (!variables || table.name.starts_with('@')) dropTable(table);
}

// A second time, in a loop, it is what it was.
void Executor::declareTable(const Declaration& declaration) {
    auto& tables = m_frames.back()->tables;
    const std::string key = lowerAscii(declaration.name);
    if (tables.contains(key)) return;
    refuseInFunction();
    m_tableVariables = true;
    tables[key] = {declaration.table, createTable(*declaration.table)};
}

void Executor::keepTables(const std::function<void()>& rollback) {
    struct Kept {
        TableVariable& table;
        std::vector<std::vector<Value>> rows;
    };
    std::vector<Kept> kept;
    for (Frame* frame : m_frames)
        for (auto& [name, table] : frame->tables) {
            Kept& each = kept.emplace_back(Kept{table, {}});
            PreparedStatement query(m_connection, "SELECT * FROM " + table.info.sqlName());
            while (query.step()) {
                auto& row = each.rows.emplace_back();
                for (int i = 0; i < query.columnCount(); ++i) row.push_back(ownedValue(query.cell(i)));
            }
        }
    rollback();
    for (auto& [table, rows] : kept) {
        dropTable(table.info);
        table.info = createTable(*table.definition);
        std::string marks;
        for (std::size_t i = 1; i <= table.info.columns.size(); ++i)
            marks += (i > 1 ? ", ?" : "?") + std::to_string(i);
        for (const auto& row : rows)
            m_connection.run("INSERT INTO " + table.info.sqlName() + " VALUES (" + marks + ")", row);
    }
}

}  // namespace tsql
