// Checks of a batch before its first statement runs: errors that do not depend on values.
#include "execute/Executor.h"

namespace tsql {

// Not all system procedures are supported.
void Executor::checkCall(const Execute& call) {
    const std::string &caller = m_frames.back()->procedure, &called = call.procedure.name;
    const bool isSkipped = caller.empty() || called.empty() || lowerAscii(called).starts_with("sp_");
    if (!isSkipped && !module(call.procedure, kProcedure))
        inform(kMissingDependency, {caller, asWritten(call.procedure)});
}

template <typename Node>
void Executor::checkNode(const Node& node) {
    if constexpr (requires { node.condition; }) translated(*node.condition, {});
    MaybeType type;
    if constexpr (requires { node.type; }) type = node.type;
    if constexpr (std::is_same_v<Node, Assign>) type = local(node.name).type;
    if constexpr (requires { node.value; })
        if (node.value) translated(*node.value, type);
    if constexpr (requires { check(node.then); }) check(node.then);
    if constexpr (requires { check(node.otherwise); }) check(node.otherwise);
    if constexpr (requires { *node.body; }) check(node.body);  // of a loop
    if constexpr (requires { node.statements; }) check(node.statements);
    if constexpr (requires { node.attempt; }) check(node.attempt);
    if constexpr (requires { node.handler; }) check(node.handler);
    if constexpr (std::is_same_v<Node, Declare>) {
        for (const auto& each : node.variables) {
            if (each.table) declareTable(each);
            checkNode(each);
        }
    } else if constexpr (std::is_same_v<Node, Use>) {
        if (!m_storage.exists(node.database)) throw sqlError(kUnknownDatabase, {node.database});
        m_frames.back()->database = node.database;
    } else if constexpr (isOneOf<Node, SelectStatement, DeclareCursor>) {
        translated(*node.query);
    } else if constexpr (std::is_same_v<Node, Execute>) {
        checkCall(node);
    } else if constexpr (std::is_base_of_v<Change, Node>) {
        const TableInfo target = changedTable(node, node.kVerb);
        if constexpr (std::is_same_v<Node, Insert>) {
            const auto columns = insertColumns(target, node.columns, node.defaultValues);
            check(node.execute);
            if (!node.execute) translated(node, nullptr, target, columns);
        } else if constexpr (std::is_same_v<Node, Update>)
            translated(node, nullptr, target, "a record");
        else if constexpr (std::is_same_v<Node, Merge>)
            Translator(*this).merge(target, node);
        else
            translated(node, nullptr, target);
    }
}

// Skipped within a transaction of SQLite: after reading a database, the transaction could not wait for other
// writers.
void Executor::check(const Block& block) {
    if (m_connection.inTransaction() || m_settings.describeOnly) return;
    const Temporarily checking(m_checking, true);
    const Temporarily untilUse(m_frames.back()->database, m_frames.back()->database);
    for (const auto& statement : block) check(statement);
}

// A missing object is not an error, since it may be created before its statement runs. A temporary table may
// also be replaced before.
void Executor::check(const StatementPtr& statement) {
    if (!statement) return;
    try {
        std::visit([this](const auto& node) { checkNode(node); }, statement->node);
    } catch (const SqlError& error) {
        if (error.number == kInvalidObjectName || error.number == kFunctionNotFound ||
            endOf(error.number) != Ends::Scope)
            return;
        fail(error, statement->line);
    }
}

}  // namespace tsql
