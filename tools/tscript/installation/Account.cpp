#include "installation/Account.h"

#include "DVUtilities/DVUtilLib.h"

std::optional<HostNames> configuredHost() {
    HostNames host;
    const bool isNamed = DVUtilLib("tscript", /*flag=*/false).GetMachineName(host.machine, host.instance);
    return isNamed ? std::optional(host) : std::nullopt;
}

bool openAccount(DBBase& db, const SuiteDatabase& database) {
    const std::string log = sessionLogFile().string();
    const std::optional<HostNames> host = configuredHost();
    return host &&
           db.GetAccountInfo(host->machine.c_str(), host->instance.c_str(), log.c_str(), database.name);
}
