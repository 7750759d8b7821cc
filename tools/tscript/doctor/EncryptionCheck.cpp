// Check of a database's encryption, by a connection that ends before the login.
#include <algorithm>
#include <ctime>
#include <string>

#include "HostSettings.h"
#include "ServerAddress.h"
#include "ServerProbe.h"
#include "doctor/CheckSteps.h"

namespace {

using hostlayer::ProbeTarget;
using hostlayer::ServerReport;
using Demand = ProbeTarget::Demand;

constexpr std::time_t kRenewalPeriod = 30L * 24 * 60 * 60;  // seconds before a certificate's end
constexpr const char* kSetVerify =
    "Set a CA file and require it: tscript config set host.encrypt verify (docs/sql-server.md).";

// Returns what a login demands by the setting `encrypt`, or by the driver's attributes for ODBC.
Demand configuredDemand() {
    const std::string setting = hostlayer::hostSetting("encrypt", "");
    if (setting == "verify") return Demand::kVerifiedServer;
    if (setting == "require") return Demand::kEncryption;
    if (setting == "off") return Demand::kNoEncryption;
    std::string attributes = hostlayer::hostSetting("odbcAttributes", "");
    std::transform(attributes.begin(), attributes.end(), attributes.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto contains = [&](const char* part) { return attributes.find(part) != std::string::npos; };
    if (contains("encryption=require") || contains("encrypt=yes")) return Demand::kEncryption;
    return contains("encryption=off") ? Demand::kNoEncryption : Demand::kNone;
}

std::string dateOf(std::time_t time) {
    std::tm parts{};
    char text[sizeof "YYYY-MM-DD"] = "";
    if (gmtime_r(&time, &parts) != nullptr) std::strftime(text, sizeof text, "%F", &parts);
    return text;
}

std::string describe(const ServerReport& report, Demand demand) {
    const bool isWhole = report.encrypted == ServerReport::Encrypted::kConnection;
    std::string text = (isWhole ? "login and data by " : "the login only, by ") + report.protocol;
    text += demand == Demand::kVerifiedServer ? "; certificate verified" : "; certificate not verified";
    if (!report.certificateProblem.empty()) text += " (it " + report.certificateProblem + ")";
    return text + ", valid until " + dateOf(report.validUntil);
}

void addFinding(CheckList& list, const std::string& name, const ServerReport& report, Demand demand) {
    if (!report.problem.empty())
        return list.addWarning(name, "not known: " + report.problem,
                               "docs/sql-server.md, Reasons, says what to do.");
    if (report.encrypted == ServerReport::Encrypted::kNothing) {
        if (report.isLoopback) return list.addGood(name, "none; the server is on this host");
        return list.addFailure(name, ExitCode::kInstallation,
                               "none: the password crosses the network in a form that everybody can read",
                               kSetVerify);
    }
    if (report.validUntil < std::time(nullptr) + kRenewalPeriod)
        return list.addWarning(name, describe(report, demand), "Renew the server's certificate.");
    list.addGood(name, describe(report, demand));
}

}  // namespace

void checkEncryption(CheckList& list, const SuiteDatabase& database) {
    const std::string name = std::string(database.name) + " encryption";
    hostlayer::ServerAddress server;
    std::string ignored;
    if (!hostlayer::parseServer(storeText("Database", database.instance), server, ignored)) return;
    if (!server.instance.empty())
        return list.addSkipped(name, "not tried: the port of the instance is not known; give host,port");
    const Demand demand = configuredDemand();
    const std::string port = server.port.empty() ? hostlayer::kDefaultPort : server.port;
    addFinding(list, name,
               hostlayer::probeServer({.host = server.host,
                                       .port = port,
                                       .demand = demand,
                                       .caFile = hostlayer::hostSetting("caFile", "")}),
               demand);
}
