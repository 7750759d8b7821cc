// State of a running batch, procedure or function.
#pragma once

#include <map>

#include "translate/Translator.h"

namespace tsql {

// A cursor. DECLARE translates its query and evaluates the variables in it; OPEN reads its rows.
struct Cursor {
    QueryText query;
    std::vector<Value> parameters;
    bool scroll = false;
    bool counted = false;
    bool open = false;
    std::vector<std::vector<Value>> rows = {};
    std::int64_t at = 0;        // row, from 1; 0: before the first row
    std::int64_t block = 1;     // rows from there on that the last fetch has returned; at least 1
    QueryPtr declared = {};     // null: opened by its declaration
    std::uint64_t version = 0;  // of the catalogues, for which `query` is

    // Moves to a block of rows and returns it. The position is that of its first row, 0, or rows + 1 (after
    // the last row).
    std::span<const std::vector<Value>> move(FetchFrom from, std::int64_t offset, std::int64_t most);
};
using Cursors = std::map<std::string, std::shared_ptr<Cursor>>;  // by name in lower case; null: none

// A table variable: a temporary table that is visible in its frame, and in those that get it as argument.
struct TableVariable {
    std::shared_ptr<const CreateTable> definition;
    TableInfo info;
    UserType userType = {};
};

// A change that fires triggers.
struct Firing {
    TableInfo table;
    std::string_view verb;                  // INSERT, UPDATE or DELETE
    WordSet updated = {};                   // columns that an UPDATE sets
    std::vector<ObjectInfo> triggers = {};  // either one INSTEAD OF trigger or AFTER triggers
    bool cascades = false;                  // by a foreign key: fires only if it changes rows
    std::string rows = {};                  // name of the RowRecord
};

struct Frame {
    Frame() = default;
    explicit Frame(const StoredModule& module)
        : procedure(module.name),
          procedureId(module.id),
          database(module.database),
          schemaName(module.schemaName),
          isFunction(module.module->function && !module.module->query),
          returnType(module.module->returns) {
        declare(module.module->locals);
    }
    void declare(const std::vector<Local>& locals) {
        for (const auto& [name, type] : locals) variables[name] = {Null{}, type};
    }
    std::string text(const char* variable) const {  // empty for NULL
        const auto* found = std::get_if<std::string>(&variables.at(variable).value);
        return found ? *found : std::string();
    }

    std::string procedure;         // empty in a batch
    std::int64_t procedureId = 0;  // @@PROCID
    std::string database;          // of unqualified names; empty: the session's
    std::string schemaName;        // of a module: unqualified names are first looked up in it
    WordMap<TypedValue> variables;
    Cursors cursors;                       // LOCAL cursors, cursor variables
    std::optional<std::int64_t> identity;  // SCOPE_IDENTITY()
    WordMap<std::shared_ptr<TableVariable>> tables;
    WordSet readOnly;                  // tables that are parameters
    std::vector<TableInfo> temporary;  // #tables and #procedures that end with this frame
    bool isAborted = false;            // an error or a cancellation ended the whole batch
    bool isFunction = false;
    bool isQuery = false;            // view or table-valued function
    const Firing* firing = nullptr;  // of a trigger
    SqlType returnType;
    Value returned = Null{};
    int tries = 0;  // TRY blocks in this frame around the current statement
};

}  // namespace tsql
