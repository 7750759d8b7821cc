// Configuration keys and value names that the library reads.
// The first letter of a value's name is its type: s string, n number, d directory, p protected (encrypted)
// string.
#pragma once

namespace registry {

inline constexpr char kRoot[] = "SOFTWARE\\Veltrane Systems\\Zephra";
inline constexpr char kTNetRoot[] = "SOFTWARE\\Veltrane Systems\\Tnet";

namespace key {
inline constexpr char kBase[] = "Base";
inline constexpr char kDatabase[] = "Database";
inline constexpr char kEventManager[] = "EventManager";
inline constexpr char kDorvase[] = "Dorvase";  // the management server
inline constexpr char kSession[] = "Session";
inline constexpr char kInstall[] = "Install";
inline constexpr char kCluster[] = "Cluster";
inline constexpr char kDirectory[] = "Directory";  // TNet's folders
inline constexpr char kNQ2Package[] = "InstalledPackages\\803";
inline constexpr char kWFEnginePackage[] = "InstalledPackages\\808";
inline constexpr char kVTCloudPackage[] = "InstalledPackages\\809";
inline constexpr char kHistoryPackage[] = "InstalledPackages\\810";
}  // namespace key

namespace value {
// Under "Base"
inline constexpr char kPlatformType[] = "nPLATTYPE";
inline constexpr char kBaseDirectory[] = "dBASEHOME";
inline constexpr char kHome[] = "dHOME";
inline constexpr char kInstallDirectory[] = "dZEPHRAHOME";
inline constexpr char kVersion[] = "sVERSION";
// Elsewhere
inline constexpr char kLogDirectory[] = "dEVLOGDIR";
inline constexpr char kNetworkPassword[] = "pCntInfo";
inline constexpr char kHostName[] = "sDVHOSTNAME";
inline constexpr char kInstallState[] = "sInstallState";
inline constexpr char kClusterName[] = "ClusterName";
// Under "Database"
inline constexpr char kLogScriptResult[] =
    "dTScriptResultLogOutput";                              // nonzero: echoed output is also logged
inline constexpr char kKeepSqlFile[] = "dUTILKEEPSQLFILE";  // nonzero: generated SQL files are kept
inline constexpr char kAuthentication[] =
    "nSQLAuthType";  // 1: Windows authentication; also "nSQLAuthType_<db>"
// TNet's own names
inline constexpr char kTNetBaseDirectory[] = "dBin";
inline constexpr char kTNetHome[] = "dHome";
inline constexpr char kTNetLogDirectory[] = "dLog";
inline constexpr char kTNetVersion[] = "TNetServerVersion";
}  // namespace value

inline constexpr char kInstalled[] = "Installed";  // "sInstallState" of an installed component
inline constexpr char kDefaultInstance[] = "Instance001";
inline constexpr unsigned int kManagementServerBit = 0x1;  // in "nPLATTYPE"
inline constexpr unsigned int kConsoleBit = 0x4;

}  // namespace registry
