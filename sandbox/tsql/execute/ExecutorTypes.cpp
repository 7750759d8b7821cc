// CREATE TYPE, and table-valued parameters.
#include "execute/Executor.h"

namespace tsql {

void Executor::run(const UserType& create) {
    if (systemTypes().contains(create.name.name)) throw sqlError(kTypeExists, {asWritten(create.name)});
    std::vector<TableColumn> columns = {{{"", create.type, create.nullable}}};
    if (create.table) {  // checks its definition
        const TableInfo made = createTable(*create.table);
        columns = made.columns;
        dropTable(made);
    }
    define(create.name, [&](Catalogue& owner) {
        ObjectInfo object = newObject(owner, create.name, create.table ? kTableType : kAliasType);
        if (owner.find(object.key(), kUserTypes)) throw sqlError(kTypeExists, {asWritten(create.name)});
        object.source = create.text;
        owner.save(object);
        owner.saveColumns(object.id, columns);
    });
}

// Declares a table variable for a table of the client and inserts its rows.
void Executor::receiveTable(const std::string& variable, const ProcedureCall::Argument& sent) {
    const auto batch = parsed("DECLARE @t " + sent.tableType, m_database);
    Declaration declaration = std::get<Declare>(batch->statements.front()->node).variables.front();
    if (!declaration.table) throw unsupported("rows for '" + sent.tableType + "', which is not a table type");
    declaration.name = variable;
    declareTable(declaration);
    const TableInfo table = m_frames.back()->tables.at(variable)->info;
    if (sent.columns.size() != table.columns.size())
        throw sqlError(kTableColumnCount,
                       {std::to_string(sent.columns.size()), std::to_string(table.columns.size())});
    std::vector<std::string> names;
    for (std::size_t i = 0; i < sent.columns.size(); ++i)
        if (sent.columns[i]) names.push_back(table.columns[i].name);
    insertRowsOf(table, insertColumns(table, names, /*defaultValues=*/true), /*misfit=*/1,
                 [&] { sent.rows(*m_rowHandler); });
}

// Lets a table-valued parameter stand for the table of the caller or, without an argument, for an empty one.
// Returns false if neither is a table.
bool Executor::bindTable(const Declaration& parameter, const Argument* argument, Frame& frame) {
    const bool isTable = argument && !argument->table.empty();
    if (!parameter.table && !isTable) return false;
    frame.readOnly.insert(parameter.name);
    if (!isTable && (!argument || !argument->value)) {
        inFrame(frame, [&] { declareTable(parameter); });
        return true;
    }
    const auto& tables = m_frames.back()->tables;
    const auto found = tables.find(argument->table);
    const UserType from = found == tables.end() ? UserType() : found->second->userType,
                   &to = parameter.userType;
    if (!from.table || from.id != to.id || from.name.database != to.name.database) {
        const auto word = isTable ? "table" : baseName(evaluate(*argument->value).type.id);
        throw sqlError(kOperandTypeClash, {from.table ? from.name.name : word,
                                           to.table ? to.name.name : baseName(parameter.type.id)});
    }
    frame.tables[parameter.name] = found->second;
    return true;
}

}  // namespace tsql
