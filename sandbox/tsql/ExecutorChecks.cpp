// What is wrong with statements whatever their values are: it is found before the first of them runs.
#include "Executor.h"
#include "Finally.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {

using namespace ast;

// Whether it is one statement, which nothing precedes and which holds no other.
bool Executor::isAlone(const Block& block) {
    const auto holdsOthers = [](const auto& node) {
        return requires {
            node.statements;
        }
        || requires {
            node.attempt;
        }
        || requires {
            node.condition;
        };
    };
    return block.size() == 1 && !std::visit(holdsOthers, block.front()->node);
}

// Not within a transaction that has changed something: it could no longer wait for what it has looked at.
void Executor::check(const Block& block) {
    if (m_connection.inTransaction() || m_describeOnly) return;
    const Finally databaseAgain(
        [&frame = *m_frames.back(), before = m_frames.back()->database] { frame.database = before; });
    for (const auto& statement : block) check(*statement);
}

// What is not there yet may come to be until its statement runs.
void Executor::check(const Statement& statement) {
    try {
        std::visit([this](const auto& node) { check(node); }, statement.node);
    } catch (const SqlError& error) {
        if (error.number == 208 || error.number == 4121 || !endsScope(error.number)) return;
        fail(error, statement.line);
    }
}

void Executor::check(const Declare& declare) {
    for (const auto& each : declare.variables) {
        if (each.table) declareTable(each);
        if (each.value) Translator(*this).value(*each.value);
    }
}

void Executor::check(const If& node) {
    Translator(*this).condition(*node.condition);
    check(*node.then);
    if (node.otherwise) check(*node.otherwise);
}

void Executor::check(const While& node) {
    Translator(*this).condition(*node.condition);
    check(*node.body);
}

void Executor::check(const TryCatch& node) {
    check(node.attempt);
    check(node.handler);
}

void Executor::check(const Use& use) {
    if (!m_engine.storage.exists(use.database)) throw sqlError(911, {use.database});
    m_frames.back()->database = use.database;
}

void Executor::check(const SelectStatement& statement) {
    Translator(*this).query(*statement.query);
}

void Executor::check(const DeclareCursor& declare) {
    Translator(*this).query(*declare.query);
}

void Executor::check(const Insert& insert) {
    const TableInfo target = table(insert.table);
    const auto columns = insertColumns(target, insert.columns, insert.defaultValues);
    Translator translator(*this);
    if (!insert.execute) insertText(target, columns, insert, translator);
}

void Executor::check(const Update& update) {
    const ObjectName& name = Translator::targetName(update.table, update.from);
    Translator translator(*this);
    translator.useCommonTables(update, name);
    translator.update(table(name), update);
}

void Executor::check(const Delete& statement) {
    const ObjectName& name = Translator::targetName(statement.table, statement.from);
    Translator translator(*this);
    translator.useCommonTables(statement, name);
    translator.remove(table(name), statement);
}

}  // namespace tsql
