
#include <sqlite3.h>

#include <new>

#include "functions/Functions.h"
#include "types/Work.h"

namespace tsql {
namespace {

void callScalar(sqlite3_context* call, int count, sqlite3_value** values) {
    const auto& binding = *static_cast<const Binding<ScalarFunction>*>(sqlite3_user_data(call));
    try {
        const SqlCall arguments(binding.context, count, values);
        for (const CellView& each : arguments.arguments())
            if (const auto* text = std::get_if<std::string_view>(&each)) spendWork(text->size());
        const bool anyNull =
            std::ranges::any_of(arguments.arguments(), [](const auto& each) { return isNull(each); });
        if (binding.function.nulls == Nulls::GiveNull && anyNull) return sqlite3_result_null(call);
        giveResult(call, binding.function.run(arguments));
    } catch (...) {
        reportError(binding.context, call);
    }
}

void registerScalar(sqlite3* connection, FunctionContext& context, const ScalarFunction& function) {
    const int flags = SQLITE_UTF8 | (function.purity == Purity::Pure ? SQLITE_DETERMINISTIC : 0);
    const int code = sqlite3_create_function_v2(connection, function.name.c_str(), -1, flags,
                                                new Binding<ScalarFunction>{context, function}, callScalar,
                                                nullptr, nullptr, deleteBinding<ScalarFunction>);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection));
}

int collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
    return compareText({static_cast<const char*>(left), static_cast<std::size_t>(leftSize)},
                       {static_cast<const char*>(right), static_cast<std::size_t>(rightSize)});
}

}  // namespace

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
    } catch (...) {  // a user-defined function ended the batch
        sqlite3_result_error_code(call, SQLITE_INTERRUPT);
    }
}

void registerFunctions(sqlite3* connection, FunctionContext& context) {
    for (const auto functions : {kOperatorFunctions, kQueryFunctions})
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
