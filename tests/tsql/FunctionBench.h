// A SQLite connection with the T-SQL functions, to try pieces of SQL on.
#pragma once

#include <sqlite3.h>

#include <string>

#include "Functions.h"
#include "Storage.h"

class FunctionBench {
  public:
    FunctionBench() {
        sqlite3* raw = nullptr;
        sqlite3_open(":memory:", &raw);
        m_connection.reset(raw);
        tsql::registerFunctions(raw, m_context);
    }

    // "type: text", "type: NULL" or "error 8134".
    std::string show(const tsql::Typed& piece, const std::string& from = "") {
        sqlite3_stmt* raw = nullptr;
        const std::string sql = "SELECT " + piece.sql + from;
        if (sqlite3_prepare_v2(m_connection.get(), sql.c_str(), -1, &raw, nullptr) != SQLITE_OK)
            return sqlite3_errmsg(m_connection.get()) + (" in " + sql);
        const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
        m_context.beginStatement();
        if (sqlite3_step(raw) != SQLITE_ROW) return raised();
        return tsql::displayName(piece.type) + ": " + text(sqlite3_column_value(raw, 0), piece.type);
    }
    sqlite3* connection() { return m_connection.get(); }

  private:
    std::string raised() {
        const auto error = m_context.takeError();
        return error ? "error " + std::to_string(error->number) : sqlite3_errmsg(m_connection.get());
    }
    static std::string text(sqlite3_value* value, const tsql::SqlType& type) {
        using namespace tsql;
        const auto* bytes = reinterpret_cast<const std::byte*>(sqlite3_value_blob(value));
        const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
        switch (sqlite3_value_type(value)) {
            case SQLITE_NULL:
                return "NULL";
            case SQLITE_INTEGER:
                return textOf(std::int64_t{sqlite3_value_int64(value)}, type);
            case SQLITE_FLOAT:
                return textOf(sqlite3_value_double(value), type);
            case SQLITE_BLOB:
                return std::get<std::string>(
                    convertValue(Blob(bytes, size), type, varcharType(SqlType::kMax), 1));
            default:
                return textOf(std::string_view(reinterpret_cast<const char*>(bytes), size), type);
        }
    }

    tsql::FunctionContext m_context{nullptr};
    tsql::SqliteConnection m_connection;
};
