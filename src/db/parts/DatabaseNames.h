// Value names of the suite's databases under the configuration key "Database".
#pragma once

inline constexpr char kManagementDatabase[] = "Dorvas";  // where no other is named

namespace registry::value {

inline constexpr char kInstance[] = "sINSTANCE";  // management database and history database
inline constexpr char kNQ2Instance[] = "sNQ2INSTANCE";
inline constexpr char kCloudInstance[] = "sCLOUDINSTANCE";
inline constexpr char kWFInstance[] = "sWFINSTANCE";

inline constexpr char kAccess[] = "pACCESS";  // encrypted; management database and history database
inline constexpr char kNQ2Access[] = "pNQ2ACCESS";
inline constexpr char kCloudAccess[] = "pCLOUDACCESS";
inline constexpr char kWFAccess[] = "pWFACCESS";

inline constexpr char kConnection[] = "sConnection";
inline constexpr char kNQ2Connection[] = "sNQ2CONNECTION";
inline constexpr char kCloudConnection[] = "sCLOUDCONNECTION";
inline constexpr char kWFConnection[] = "sWFCONNECTION";
inline constexpr char kHistoryConnection[] = "sHISTORYCONNECTION";

}  // namespace registry::value
