#include "storage/SqliteValue.h"

#include <sqlite3.h>

namespace tsql {
namespace {

constexpr std::byte kNoBytes{};  // SQLite has no address for an empty blob; copies need one

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
            return Blob(bytes ? bytes : &kNoBytes, static_cast<std::size_t>(sqlite3_value_bytes(value)));
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

}  // namespace tsql
