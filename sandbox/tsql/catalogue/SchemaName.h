// Names of objects in schemas. The catalogue and SQLite store an object of dbo under its bare name, any other
// object under "schema", kSchemaEnd, "name".
#pragma once

#include <string>
#include <string_view>

#include "messages/Messages.h"
#include "types/Text.h"

namespace tsql {

inline constexpr std::string_view kDefaultSchema = "dbo";
inline constexpr char kSchemaEnd = '\x01';

// schema: empty for dbo. Throws SqlError for a name that contains kSchemaEnd.
inline std::string storedName(std::string_view schema, std::string_view name) {
    if ((std::string(schema) + std::string(name)).find(kSchemaEnd) != std::string::npos)
        throw unsupported("names with the character U+0001");
    const bool isBare = schema.empty() || sameWord(schema, kDefaultSchema);
    return isBare ? std::string(name) : std::string(schema) + kSchemaEnd + std::string(name);
}

inline std::string_view schemaOf(std::string_view stored) {
    const auto end = stored.find(kSchemaEnd);
    return end == std::string_view::npos ? kDefaultSchema : stored.substr(0, end);
}

inline std::string_view bareName(std::string_view stored) {
    return stored.substr(stored.find(kSchemaEnd) + 1);
}

// The name in messages: "name" for an object of dbo, else "schema.name".
inline std::string shownName(std::string stored) {
    const auto end = stored.find(kSchemaEnd);
    if (end != std::string::npos) stored[end] = '.';
    return stored;
}

}  // namespace tsql
