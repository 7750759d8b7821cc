// A run of a small package by the tool, and values that the library reads one at a time, over a slow network.
#include "Bench.h"
#include "DVUtilities/DBBase.h"
#include "HandOdbc.h"
#include "Rows.h"
#include "SlowLink.h"
#include "ToolCost.h"

namespace bench {
namespace {

using std::chrono::milliseconds;

constexpr const char* kScript = "benchRun";
constexpr const char* kStatements = "SELECT name, number FROM app_plexum ORDER BY id\nGO\n";

// Makes the installation use a link to the server, for as long as the object lives.
class Distance {
  public:
    Distance(Bench& bench, milliseconds roundTrip)
        : link(bench.box().port(), roundTrip), m_bench(bench), m_box(bench.box()) {
        m_bench.installation().useServer(link.server(), m_box.login(), m_box.password());
    }
    ~Distance() { m_bench.installation().useServer(m_box); }
    Distance(const Distance&) = delete;
    Distance& operator=(const Distance&) = delete;

    SlowLink link;

  private:
    Bench& m_bench;
    const support::TsqlBox& m_box;
};

void printCount(const std::string& name, int count, int limit) {
    Bench::print(name, count, atMost(limit), "counted");
}

// Runs after the first one, which adds the package to the catalogue.
void runs(Bench& bench) {
    const support::TsqlBox& box = bench.box();
    bench.writePackage(kScript, kStatements);
    const std::string input = bench.installation().folder("run.sql");
    support::writeFile(input, kStatements);
    const auto atDistance = [&](milliseconds roundTrip) {
        Distance distance(bench, roundTrip);
        const Step measured = [&] { runTool({TSCRIPT_PROGRAM, "run", kScript}); };
        const Step reference = [&] {
            runTool({SQLCMD_PROGRAM, "-b", "-S", distance.link.server(), "-U", box.login(), "-d", "Dorvas",
                     "-i", input, "-s", "\t", "-W"},
                    box.password());
        };
        measured();
        distance.link.reset();
        measured();
        const int connections = distance.link.connections();
        const int roundTrips = distance.link.roundTrips();
        if (roundTrip == milliseconds(0)) {
            printCount("package-run/logins", connections, 3);
            printCount("package-run/round-trips", roundTrips, 12);
            return;
        }
        bench.compare("package-run/" + std::to_string(roundTrip.count()) + "ms", atMost(2.2),
                      {measured, reference});
    };
    atDistance(milliseconds(0));
    atDistance(milliseconds(20));
}

// DBBase::GetDBValueInt() against ODBC with a login of its own for each value.
void values(Bench& bench) {
    const support::TsqlBox& box = bench.box();
    const Distance distance(bench, milliseconds(5));
    const std::size_t count = bench.scaled(1000);
    std::string connectionString = box.odbcConnectionString("dorvas");
    const std::string port = "Port=" + std::to_string(box.port());
    connectionString.replace(connectionString.find(port), port.size(),
                             "Port=" + std::to_string(distance.link.port()));
    const Step measured = [&] {
        DBBase db(true);
        const std::string log = bench.installation().folder("bench.log");
        check(db.GetAccountInfo("MainHost", "Instance001", log.c_str(), "Dorvas"), db.getErrorMsg());
        for (std::size_t i = 0; i < count; ++i) {
            int value = 0;
            check(db.GetDBValueInt("SELECT 7", value) && value == 7, "a value is not read");
        }
    };
    const Step reference = [&] {
        for (std::size_t i = 0; i < count; ++i) HandConnection(connectionString).readAll("SELECT 7");
    };
    bench.compare("package-run/values-5ms", atLeast(10), {measured, reference});
}

}  // namespace

void packageRun(Bench& bench) {
    runs(bench);
    values(bench);
}

}  // namespace bench
