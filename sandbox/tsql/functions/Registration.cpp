// Puts the functions and the collation into a SQLite connection.
#include <sqlite3.h>

#include <algorithm>
#include <new>
#include <utility>

#include "functions/FunctionImpl.h"
#include "messages/Messages.h"
#include "types/Text.h"

namespace tsql {
namespace {

struct Binding {
    FunctionContext& context;
    const ScalarFunction& function;
};

void callScalar(sqlite3_context* call, int count, sqlite3_value** values) {
    const auto& binding = *static_cast<const Binding*>(sqlite3_user_data(call));
    try {
        const Arguments arguments(count, values);
        const bool anyNull =
            std::ranges::any_of(arguments.views(), [](const auto& each) { return isNull(each); });
        if (binding.function.nulls == Nulls::GiveNull && anyNull) return sqlite3_result_null(call);
        giveResult(call, binding.function.run(Call(binding.context, arguments.views())));
    } catch (...) {
        reportError(binding.context, call);
    }
}

void registerScalar(sqlite3* connection, FunctionContext& context, const ScalarFunction& function) {
    const int flags = SQLITE_UTF8 | (function.purity == Purity::Pure ? SQLITE_DETERMINISTIC : 0);
    const int code = sqlite3_create_function_v2(connection, function.name.c_str(), -1, flags,
                                                new Binding{context, function}, callScalar, nullptr, nullptr,
                                                [](void* binding) { delete static_cast<Binding*>(binding); });
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection));
}

int collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
    return compareText({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                       {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
}

}  // namespace

CellView viewOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
            return std::int64_t{sqlite3_value_int64(value)};
        case SQLITE_FLOAT:
            return sqlite3_value_double(value);
        case SQLITE_TEXT: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
            return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
        }
        case SQLITE_BLOB: {
            const auto* bytes = static_cast<const std::byte*>(sqlite3_value_blob(value));
            return Blob(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)));
        }
        default:
            return Null{};
    }
}

void giveResult(sqlite3_context* call, const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        sqlite3_result_text64(call, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        sqlite3_result_int64(call, *integer);
    else if (const auto* real = std::get_if<double>(&value))
        sqlite3_result_double(call, *real);
    else if (const auto* bytes = std::get_if<Bytes>(&value))
        bytes->empty() ? sqlite3_result_zeroblob(call, 0)
                       : sqlite3_result_blob64(call, bytes->data(), bytes->size(), SQLITE_TRANSIENT);
    else
        sqlite3_result_null(call);
}

void reportError(FunctionContext& context, sqlite3_context* call) {
    try {
        throw;
    } catch (const SqlError& error) {
        context.setError(error);
        sqlite3_result_error(call, error.what(), -1);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(call);
    } catch (const std::exception& error) {
        sqlite3_result_error(call, error.what(), -1);
    } catch (...) {  // a function that T-SQL defines ends the batch
        sqlite3_result_error_code(call, SQLITE_INTERRUPT);
    }
}

void registerFunctions(sqlite3* connection, FunctionContext& context) {
    for (const auto functions : {operatorFunctions(), queryFunctions()})
        for (const ScalarFunction& function : functions) registerScalar(connection, context, function);
    for (const auto& functions : allFunctions())
        for (const FunctionInfo& function : functions)
            if (function.scalar.run) registerScalar(connection, context, function.scalar);
    registerAggregates(connection, context);
    const std::string name(kCollation);
    if (sqlite3_create_collation(connection, name.c_str(), SQLITE_UTF8, nullptr, collate) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection));
}

}  // namespace tsql
