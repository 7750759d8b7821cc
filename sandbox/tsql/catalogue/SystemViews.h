// The system's views, each a query over a database's catalogue.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "storage/Storage.h"

namespace tsql {

// Views of the system (sysobjects, sys.tables, INFORMATION_SCHEMA.COLUMNS ...): a query over the catalogue.
struct SystemView {
    std::string sql;
    std::vector<TableColumn> columns;
};
std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage);
// 1 master, 2 tempdb, 3 model, 4 msdb, then the others by name; nothing for an unknown one.
std::optional<int> databaseId(const Storage& storage, std::string_view name);

}  // namespace tsql
