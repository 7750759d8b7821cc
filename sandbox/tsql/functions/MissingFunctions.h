// Functions that SQL Server has and tsqlbox has not.
#pragma once

#include <string_view>

namespace tsql {

inline constexpr std::string_view kMissingFunctions =
    " "
    "approx_count_distinct applock_mode applock_test binary_checksum checksum checksum_agg "
    "collationproperty columns_updated compress connectionproperty context_info current_request_id "
    "current_timezone current_transaction_id datetimeoffsetfromparts decompress decryptbypassphrase "
    "difference encryptbypassphrase eventdata file_id file_name filegroup_name fileproperty format "
    "formatmessage has_perms_by_name host_id index_col indexproperty is_rolemember isjson json_modify "
    "json_query json_value min_active_rowversion objectpropertyex parse percentile_cont percentile_disc "
    "pwdcompare pwdencrypt rowcount_big session_context soundex sql_variant_property stats_date "
    "string_escape suser_id suser_sid switchoffset sysdatetimeoffset todatetimeoffset trigger_nestlevel "
    "try_parse typeproperty user_id ";

}  // namespace tsql
