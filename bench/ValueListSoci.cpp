// The rows of the benchmark `value-list`, read with the library SOCI over ODBC.
#include "ValueListSoci.h"

#include <soci/odbc/soci-odbc.h>
#include <soci/soci.h>

namespace bench {

void readWithSoci(const std::string& connectionString, const char* query, char separator,
                  std::vector<std::string>& rows) {
    soci::session session(soci::odbc, connectionString);
    int id = 0;
    std::string name;
    std::string amount;
    // Without variables of its own to bind, SOCI would ask for a description, which FreeTDS requests apart.
    soci::statement statement =
        (session.prepare << query, soci::into(id), soci::into(name), soci::into(amount));
    statement.execute();
    while (statement.fetch()) rows.push_back(std::to_string(id) + separator + name + separator + amount);
}

}  // namespace bench
