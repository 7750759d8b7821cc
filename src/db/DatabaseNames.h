// Value names under the configuration key "Database" by which the suite's databases are found.
#pragma once

namespace registry::value {

inline constexpr char kInstance[] = "sINSTANCE";  // of the management database and of the history database
inline constexpr char kNQ2Instance[] = "sNQ2INSTANCE";
inline constexpr char kCloudInstance[] = "sCLOUDINSTANCE";
inline constexpr char kWFInstance[] = "sWFINSTANCE";

inline constexpr char kAccess[] = "pACCESS";  // enciphered; of the history database as well
inline constexpr char kNQ2Access[] = "pNQ2ACCESS";
inline constexpr char kCloudAccess[] = "pCLOUDACCESS";
inline constexpr char kWFAccess[] = "pWFACCESS";

inline constexpr char kConnection[] = "sConnection";
inline constexpr char kNQ2Connection[] = "sNQ2CONNECTION";
inline constexpr char kCloudConnection[] = "sCLOUDCONNECTION";
inline constexpr char kWFConnection[] = "sWFCONNECTION";
inline constexpr char kHistoryConnection[] = "sHISTORYCONNECTION";

}  // namespace registry::value
