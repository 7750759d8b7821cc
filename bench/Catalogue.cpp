// TScript::setDbAndLog(), which tests the database and looks up a script in the catalogue, against the same
// three statements over ODBC, each on a new connection.
#include "Bench.h"
#include "DVUtilities/TScript.h"
#include "HandOdbc.h"
#include "Rows.h"

namespace bench {
namespace {

constexpr const char* kStatements[] = {
    "SELECT count(*) FROM ZPDBVersions",
    ("SELECT TOP 1 id, auditLevel, name FROM ZpTscripts WHERE name = 'tsEventSummary' and type & 2 > 0 "
     "ORDER BY id DESC"),
    "SELECT type FROM ZpTscripts WHERE id = 1"};

}  // namespace

void catalogue(Bench& bench) {
    const std::string connectionString = bench.box().odbcConnectionString("dorvas");
    const std::size_t count = bench.scaled(40);
    std::vector<std::unique_ptr<TScript>> scripts;
    const Step prepare = [&] {
        scripts.clear();
        for (std::size_t i = 0; i < count; ++i) {
            scripts.push_back(std::make_unique<TScript>());
            check(scripts.back()->initialize("tsEventSummary"), scripts.back()->getErrorMessage());
        }
    };
    const Step measured = [&] {
        for (const auto& script : scripts) check(script->setDbAndLog("Dorvas"), script->getErrorMessage());
    };
    const Step reference = [&] {
        for (std::size_t i = 0; i < count; ++i)
            for (const char* statement : kStatements)
                check(HandConnection(connectionString).readAll(statement) == 1, statement);
    };
    bench.compare("catalogue", atMost(1.1), {measured, reference, prepare});
}

}  // namespace bench
