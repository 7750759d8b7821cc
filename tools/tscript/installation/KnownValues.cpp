#include "installation/KnownValues.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "PackageSeal.h"

namespace {

constexpr KnownValue kKnown[] = {
    {"host", "cipherKeyFile", ValueKind::kPath},
    {"host", "previousKeyFile", ValueKind::kPath},
    {"host", "odbcDriver", ValueKind::kText},
    {"host", "odbcAttributes", ValueKind::kText},
    {"host", "loginTimeout", ValueKind::kNumber},
    {"host", "networkTimeout", ValueKind::kNumber},
    {"host", "queryTimeout", ValueKind::kNumber},
    {"host", "replyLimit", ValueKind::kNumber},
    {"host", "encrypt", ValueKind::kEncryption},
    {"host", "caFile", ValueKind::kPath},
    {"host", "strictQueryTool", ValueKind::kNumber, 0, 1},
    {"host", "requireSeal", ValueKind::kNumber, 0, 1},
    {"host", "trustedSigners", ValueKind::kPublicKeys},
    {"host", "lockedScripts", ValueKind::kText},
    {"host", "connectionReuse", ValueKind::kNumber},
    {"host", "debugLogLevel", ValueKind::kNumber, 0, 3},
    {"host", "debugLogFile", ValueKind::kText},
    {"host", "debugLogBytes", ValueKind::kNumber, 65536},
    {"host", "runRecords", ValueKind::kPath},
    {"host", "runRecordOutput", ValueKind::kNumber, 0, 8388608},
    {"host", "runRecordsKeep", ValueKind::kNumber},
    {"host", "runRecordDays", ValueKind::kNumber, 0, 36500},
    {"programs", "sqlcmd", ValueKind::kPath},
    {"Base", "nPLATTYPE", ValueKind::kNumber},
    {"Base", "dZEPHRAHOME", ValueKind::kPath},
    {"Base", "dZEPHRATEMPDIR", ValueKind::kPath},
    {"Base", "sSCRIPTSTEMPDIR", ValueKind::kPath},
    {"Base", "dBASEHOME", ValueKind::kPath},
    {"Base", "sVERSION", ValueKind::kText},
    {"EventManager", "dEVLOGDIR", ValueKind::kPath},
    {"Dorvase", "sDVHOSTNAME", ValueKind::kText},
    {"Database", "nSQLAuthType", ValueKind::kNumber, 0, 1},
    {"Database", "nSQLAuthType_Dorvas", ValueKind::kNumber, 0, 1},
    {"Database", "nSQLAuthType_NQ2", ValueKind::kNumber, 0, 1},
    {"Database", "nSQLAuthType_WFEngine", ValueKind::kNumber, 0, 1},
    {"Database", "nSQLAuthType_VTCloud", ValueKind::kNumber, 0, 1},
    {"Database", "nSQLAuthType_HistoryDB", ValueKind::kNumber, 0, 1},
    {"Database", "dUTILKEEPSQLFILE", ValueKind::kNumber},
    {"Database", "dTScriptResultLogOutput", ValueKind::kNumber},
    {"Database", "sINSTANCE", ValueKind::kText},
    {"Database", "sNQ2INSTANCE", ValueKind::kText},
    {"Database", "sWFINSTANCE", ValueKind::kText},
    {"Database", "sCLOUDINSTANCE", ValueKind::kText},
    {"Database", "sConnection", ValueKind::kText},
    {"Database", "sNQ2CONNECTION", ValueKind::kText},
    {"Database", "sWFCONNECTION", ValueKind::kText},
    {"Database", "sCLOUDCONNECTION", ValueKind::kText},
    {"Database", "sHISTORYCONNECTION", ValueKind::kText},
    {"Cluster", "ClusterName", ValueKind::kText},
    {"InstalledPackages\\803", "sInstallState", ValueKind::kText},
    {"InstalledPackages\\808", "sInstallState", ValueKind::kText},
    {"InstalledPackages\\809", "sInstallState", ValueKind::kText},
    {"InstalledPackages\\810", "sInstallState", ValueKind::kText},
};

}  // namespace

std::optional<std::int64_t> KnownValue::numberIn(std::string_view text) const {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && stop == end;
    return isNumber && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

bool KnownValue::accepts(std::string_view text) const {
    if (kind == ValueKind::kPublicKeys) return hostlayer::unusableSigner(text).empty();
    if (kind == ValueKind::kEncryption)
        return text.empty() || text == "verify" || text == "require" || text == "off";
    return kind != ValueKind::kNumber || numberIn(text).has_value();
}

std::string KnownValue::description() const {
    if (kind == ValueKind::kPublicKeys) return "a list of public keys of 43 characters, separated by blanks";
    if (kind == ValueKind::kEncryption) return "verify, require or off";
    return "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
}

std::span<const KnownValue> knownValues() {
    return kKnown;
}

const KnownValue* findKnownValue(std::string_view key, std::string_view name) {
    const auto* known = std::ranges::find_if(
        kKnown, [&](const KnownValue& each) { return each.key == key && each.name == name; });
    return known == std::end(kKnown) ? nullptr : known;
}
