// Interface through which functions registered in SQLite query their session.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "catalogue/Catalogue.h"
#include "messages/Message.h"
#include "storage/Storage.h"
#include "syntax/Ast.h"
#include "types/SqlType.h"

namespace tsql {

class FunctionSession {
  public:
    virtual ~FunctionSession() = default;

    // Value of "@name" or "@@name". Throws SqlError 137.
    virtual Value variableValue(std::string_view name) = 0;
    // Calls the user-defined scalar function with that key in the catalogue of the database.
    virtual Value callFunction(std::string_view database, std::string_view key,
                               std::span<const CellView> arguments) = 0;

    virtual const Storage& storage() const = 0;
    // Database of the name; the current one if the name has none.
    virtual std::string databaseOf(const ObjectName& name) const = 0;
    virtual Catalogue catalogue(const ObjectName& name) = 0;
    // Returns the table, module or constraint that the name means; empty without one or its database.
    virtual std::optional<ObjectInfo> object(const ObjectName& name) = 0;
    virtual TableInfo table(const ObjectName& name) = 0;  // throws SqlError 208

    // Last identity value generated for the table, by any session; empty before the first one.
    virtual std::optional<std::int64_t> lastIdentity(const TableInfo& table) = 0;
    virtual std::optional<std::int64_t> scopeIdentity() const = 0;
    virtual int transactionState() const = 0;  // as XACT_STATE() returns it
    virtual Value cursorStatus(std::string_view scope, std::string_view name) = 0;
    // Whether the statement that fired the current trigger sets the column. Throws SqlError 207.
    virtual bool isUpdated(std::string_view column) const = 0;
    virtual const Message* caughtError() const = 0;  // null outside of CATCH blocks

    virtual const std::string& loginName() const = 0;
    virtual const std::string& clientHost() const = 0;
    virtual const std::string& clientProgram() const = 0;
};

std::string hostName();
Value identityValue(const std::optional<std::int64_t>& identity);  // a decimal(38,0)

}  // namespace tsql
