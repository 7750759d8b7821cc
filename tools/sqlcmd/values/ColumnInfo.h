#pragma once

#include <cstddef>
#include <string>

namespace sqlcmd {

// Column metadata.
struct ColumnInfo {
    std::string name;      // empty for an unnamed expression
    std::string typeName;  // of SQL Server, in lower case
    int odbcType = 0;      // ODBC's number of the type, whatever the client
    std::size_t size = 0;  // characters, bytes or digits, depending on the type; 0: no limit
};

}  // namespace sqlcmd
