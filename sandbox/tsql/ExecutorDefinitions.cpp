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

std::string indexName(const std::string& name, std::int64_t table) {
    return quotedName(name + "@" + std::to_string(table));
}

// "PK__Orders__0000002A" when the statement gives no name.
std::string constraintName(const Constraint& constraint, std::string_view type, const TableInfo& table,
                           std::size_t number) {
    if (!constraint.name.empty()) return constraint.name;
    return std::string(type) + "__" + table.name.substr(0, 9) + "__" + std::to_string(table.id) + "_" +
           std::to_string(number);
}

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
    table.stored = table.name;
    if (target.isTemporary()) target.setStored(table.id, table.stored += "@" + std::to_string(table.id));
    std::string body;
    for (const auto& definition : create.columns) {
        table.columns.push_back(columnOf(definition, isKeyColumn(create, definition.name)));
        body += (body.empty() ? "" : ", ") + columnText(table.columns.back());
    }
    for (const auto* constraint : allConstraints(create)) {
        const bool named = !constraint->columns.empty() && constraint->kind == ConstraintKind::Default;
        for (auto& column : table.columns)  // DEFAULT ... FOR column
            if (named && compareText(column.name, constraint->columns.front()) == 0)
                column.byDefault = constraint->text;
        addConstraint(target, table, *constraint, body);
    }
    target.addColumns(table.id, table.columns);
    table = *target.table(table.name);
    m_connection.run("CREATE TABLE " + table.sqlName() + " (" + body + ")");
    for (const auto& definition : create.columns)
        if (definition.identity && definition.seed != 1) {
            const Value start[] = {table.stored, definition.seed - 1};
            m_connection.run("INSERT INTO " + table.schema + ".sqlite_sequence (name, seq) VALUES (?1, ?2)",
                             start);
        }
    atomic.commit();
    return table;
}

void Executor::addConstraint(Catalogue& catalogue, TableInfo& table, const Constraint& constraint,
                             std::string& body) {
    std::string keys;
    for (const auto& name : constraint.columns) {
        const TableColumn* column = table.column(name);
        if (!column) throw sqlError(1911, {name});
        keys += (keys.empty() ? "" : ", ") + column->name;
    }
    const auto note = [&](std::string_view type, std::string_view detail) {
        const std::string name = constraintName(constraint, type, table, body.size());
        if (catalogue.find(name) && !catalogue.isTemporary()) throw sqlError(2714, {name}, 5);
        catalogue.add(name, type, table.id, detail);
        return name;
    };
    switch (constraint.kind) {
        case ConstraintKind::PrimaryKey:
        case ConstraintKind::Unique:
            note(constraint.kind == ConstraintKind::Unique ? objectType::kUnique : objectType::kPrimaryKey,
                 keys);
            // The identity is SQLite's own key already.
            if (const TableColumn* identity = table.identityColumn(); !identity || identity->name != keys)
                body += ", UNIQUE (" + nameList(constraint.columns) + ")";
            break;
        case ConstraintKind::Check:
            body += ", CONSTRAINT " + quotedName(note(objectType::kCheck, "")) + " CHECK (" +
                    Translator(*this).check(table, *constraint.check) + ")";
            break;
        case ConstraintKind::ForeignKey:
            note(objectType::kForeignKey, keys);
            body +=
                ", FOREIGN KEY (" + nameList(constraint.columns) + ") REFERENCES " +
                quotedName(constraint.references) +
                (constraint.referencedColumns.empty() ? ""
                                                      : " (" + nameList(constraint.referencedColumns) + ")") +
                (constraint.cascade ? " ON DELETE CASCADE" : "");
            break;
        case ConstraintKind::Default:
            break;
    }
}

Flow Executor::run(const AlterTable& alter) {
    refuseInFunction();
    TableInfo target = table(alter.table);
    Catalogue owner = catalogue(alter.table);
    beforeWrite();
    Atomic atomic(m_connection, owner.schema());
    for (const auto& definition : alter.addColumns) {
        const TableColumn column = columnOf(definition, false);
        if (target.column(column.name)) throw sqlError(2705, {column.name, target.name});
        if (column.identity || definition.constraints.size() > (column.byDefault.empty() ? 0U : 1U))
            throw unsupported("ALTER TABLE ADD of an identity or of a constraint other than DEFAULT");
        std::string text = columnText(column);
        if (!column.byDefault.empty() && !column.nullable) {
            const Value value = evaluate(*parseExpression(column.byDefault), column.type);
            const Value values[] = {value};
            PreparedStatement quoted(m_connection, "SELECT quote(?1)");
            quoted.bindAll(values);
            quoted.step();
            text += " DEFAULT " + quoted.text(0);
        } else if (!column.nullable) {
            throw sqlError(4901, {column.name, target.name});
        }
        m_connection.run("ALTER TABLE " + target.sqlName() + " ADD COLUMN " + text);
        owner.addColumns(target.id, {column});
    }
    for (const auto& name : alter.dropColumns) {
        if (!target.column(name)) throw sqlError(4924, {name, target.name});
        m_connection.run("ALTER TABLE " + target.sqlName() + " DROP COLUMN " + quotedName(name));
        owner.removeColumn(target.id, name);
    }
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
    for (const auto& [name, descending] : create.columns) {
        const TableColumn* column = target.column(name);
        if (!column) throw sqlError(1911, {name});
        list += (list.empty() ? "" : ", ") + quotedName(column->name) + (descending ? " DESC" : "");
        keys += (keys.empty() ? "" : ", ") + column->name;
    }
    beforeWrite();
    Atomic atomic(m_connection, owner.schema());
    m_target = target;
    m_verb = "CREATE INDEX";
    m_connection.run(std::string("CREATE ") + (create.unique ? "UNIQUE " : "") + "INDEX " + target.schema +
                     "." + indexName(create.name, target.id) + " ON " + quotedName(target.stored) + " (" +
                     list + ")");
    owner.add(create.name, objectType::kIndex, target.id, keys);
    atomic.commit();
    m_verb.clear();
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
            m_connection.run("DROP INDEX " + target->schema + "." + indexName(name.name, target->id));
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
    m_target = *target;
    m_verb = "DROP TABLE";
    m_connection.run("DROP TABLE " + target->sqlName());
    catalogue.remove(target->id);
    m_verb.clear();
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
