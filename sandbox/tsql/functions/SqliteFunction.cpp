#include "functions/SqliteFunction.h"

#include <sqlite3.h>

#include <new>

namespace tsql {

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

}  // namespace tsql
