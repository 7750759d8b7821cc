// What is wrong with statements whatever their values are: it is found before the first of them runs.
#include "Executor.h"
#include "Finally.h"
#include "Messages.h"
#include "Text.h"

namespace tsql {

using namespace ast;

// A statement that stands alone is looked at when it runs: nothing precedes it.
void Executor::checkFirst(const Block& block) {
    const auto holdsOthers = [](const auto& node) {
        using Node = std::decay_t<decltype(node)>;
        return std::is_same_v<Node, If> || std::is_same_v<Node, While> || std::is_same_v<Node, Compound> ||
               std::is_same_v<Node, TryCatch>;
    };
    if (block.size() > 1 || (!block.empty() && std::visit(holdsOthers, block.front()->node))) check(block);
}

void Executor::check(const Block& block) {
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

// Variables are there from the first statement on.
void Executor::check(const Declare& declare) {
    for (const auto& each : declare.variables) {
        if (each.table)
            declareTable(each);
        else
            m_frames.back()->variables.try_emplace(lowerAscii(each.name), Variable{each.type, Null{}});
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
    claim(insert.table);
    const TableInfo target = table(insert.table);
    const auto columns = insertColumns(target, insert.columns, insert.defaultValues);
    Translator translator(*this);
    if (!insert.execute) insertText(target, columns, insert, translator);
}

void Executor::check(const Update& update) {
    const ObjectName& name = Translator::targetName(update.table, update.from);
    Translator translator(*this);
    translator.useCommonTables(update, name);
    claim(name);
    translator.update(table(name), update);
}

void Executor::check(const Delete& statement) {
    const ObjectName& name = Translator::targetName(statement.table, statement.from);
    Translator translator(*this);
    translator.useCommonTables(statement, name);
    claim(name);
    translator.remove(table(name), statement);
}

}  // namespace tsql
