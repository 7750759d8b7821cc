// The session of functions registered in SQLite, and the state that they share between calls.
#pragma once

#include "catalogue/Catalogue.h"
#include "syntax/Ast.h"

namespace tsql {

// Must outlive the connection.
class FunctionSession {
  public:
    virtual ~FunctionSession() = default;

    // Value of "@name" or "@@name". Throws SqlError 137.
    virtual Value variableValue(std::string_view name) = 0;
    // Calls the user-defined scalar function with that key in the catalogue of the database.
    virtual Value callFunction(std::string_view database, std::string_view key, Cells arguments) = 0;

    virtual const Storage& storage() const = 0;
    // Database of the name; the current one if the name has none.
    virtual std::string databaseOf(const ObjectName& name) const = 0;
    virtual Catalogue catalogue(const ObjectName& name) = 0;
    // Returns the first value of a query, which has the placeholders of system views; NULL without a row.
    virtual Value lookUp(std::string_view query, const std::string& database, Cells arguments) = 0;
    // Returns the table, module or constraint that the name means; empty without one or its database.
    virtual std::optional<ObjectInfo> object(const ObjectName& name) = 0;
    virtual TableInfo table(const ObjectName& name) = 0;  // throws SqlError 208

    // Last identity value generated for the table, by any session; empty before the first one.
    virtual std::optional<std::int64_t> lastIdentity(const TableInfo& table) = 0;
    virtual std::optional<std::int64_t> scopeIdentity() const = 0;
    // Next identity of a table of that increment, which SQLite does not generate.
    virtual std::int64_t nextIdentity(std::string_view schema, std::string_view table, std::int64_t step) = 0;
    // Next value of the sequence with that id. Throws SqlError 11728 if there is none.
    virtual Value nextValue(std::string_view database, std::int64_t id) = 0;
    // Least rowversion of the current database that a transaction may still give. Throws SqlError 50000.
    virtual Value leastActiveRowVersion() = 0;
    virtual int transactionState() const = 0;  // as XACT_STATE() returns it
    virtual Value cursorStatus(std::string_view scope, std::string_view name) = 0;
    // Whether the statement that fired the current trigger sets the column. Throws SqlError 207.
    virtual bool isUpdated(std::string_view column) const = 0;
    virtual const Message* caughtError() const = 0;  // null outside of CATCH blocks

    virtual const Client& client() const = 0;

    // Resets the time, because GETDATE() is constant within a statement, and the error.
    void beginStatement() { m_statement = {}; }
    const DateTime& now() { return m_statement.now ? *m_statement.now : m_statement.now.emplace(timeNow()); }
    // The error that a function raised, valid after SQLite has returned SQLITE_ERROR.
    void setError(const SqlError& error) { m_statement.error = error; }
    std::optional<SqlError> takeError() { return std::exchange(m_statement.error, std::nullopt); }
    // Records that an aggregate skipped a NULL.
    void noteNullLeftOut() { m_statement.nullLeftOut = true; }
    bool takeNullLeftOut() { return std::exchange(m_statement.nullLeftOut, false); }

  private:
    struct {
        std::optional<DateTime> now;
        std::optional<SqlError> error;
        bool nullLeftOut = false;
    } m_statement;
};

// Registers the functions, aggregates and collation in a SQLite connection. Throws std::runtime_error.
void registerFunctions(struct sqlite3* connection, FunctionSession& session);

std::string hostName();
// Numbers of the types that every database has, with those that are others here.
const WordMap<std::int64_t>& systemTypes();
// `fact` of the value, an optional or a pointer; NULL without one.
template <typename Optional, typename Fact = std::identity>
Value orNull(const Optional& value, Fact fact = {}) {
    return value ? Value(std::invoke(fact, *value)) : Value(Null{});
}
Value identityValue(const std::optional<std::int64_t>& identity);  // a decimal(38,0)

}  // namespace tsql
