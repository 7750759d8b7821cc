// System views, each a query over the catalogue of a database.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "storage/Storage.h"

namespace tsql {

// A system view (sysobjects, sys.tables, INFORMATION_SCHEMA.COLUMNS ...) as a query over the catalogue.
struct SystemView {
    std::string sql;
    std::vector<TableColumn> columns;
};
std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage);
// Returns the number of a database: 1 master, 2 tempdb, 3 model, 4 msdb, then the others by name. Empty for
// an unknown name.
std::optional<int> databaseId(const Storage& storage, std::string_view name);

}  // namespace tsql
