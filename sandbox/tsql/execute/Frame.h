// What a batch, a procedure or a function has for itself while it runs.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/Catalogue.h"
#include "syntax/Ast.h"
#include "translate/Translator.h"
#include "types/Text.h"

namespace tsql {

struct Variable {
    SqlType type;
    Value value;
};

// Its query is bound when it is declared; its rows are read when it is opened.
struct Cursor {
    QueryText query;
    std::vector<Value> parameters;
    bool scroll = false;
    bool counted = false;
    bool open = false;
    std::vector<std::vector<Value>> rows;
    std::int64_t at = 0;  // from 1; 0 before the first row
};
using Cursors = std::map<std::string, Cursor>;  // by name in lower case

// DECLARE @t TABLE: a temporary table that only its frame knows.
struct TableVariable {
    std::shared_ptr<const ast::CreateTable> definition;
    TableInfo info;
};

struct Frame {
    void declare(const std::vector<ast::Local>& locals) {
        for (const auto& [name, type] : locals) variables[name] = {type, Null{}};
    }

    std::string procedure;         // empty in a batch
    std::int64_t procedureId = 0;  // @@PROCID
    std::string database;          // in which its names are looked up; empty: the session's
    WordMap<Variable> variables;
    Cursors cursors;                       // the LOCAL ones
    std::optional<std::int64_t> identity;  // SCOPE_IDENTITY()
    WordMap<TableVariable> tables;
    std::vector<TableInfo> temporary;  // #tables that it has made
    bool isFunction = false;
    bool isQuery = false;  // of a view, or of a function that returns a table
    SqlType returnType;
    Value returned = Null{};
    std::size_t skippedArguments = 0;  // those of sp_executesql that are none of the text's
    int tries = 0;                     // TRY blocks of its own around the statement that runs
};

}  // namespace tsql
