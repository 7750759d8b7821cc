// Functions that SQL Server has and tsqlbox has not.
#pragma once

#include <string_view>

namespace tsql {

inline constexpr std::string_view kMissingFunctions =
    " "
    "approx_count_distinct applock_mode applock_test base64_decode base64_encode binary_checksum "
    "bit_count checksum checksum_agg collationproperty columns_updated compress connectionproperty "
    "context_info current_request_id current_timezone current_transaction_id databaseproperty "
    "date_bucket datetimeoffsetfromparts datetrunc decompress decryptbypassphrase difference "
    "encryptbypassphrase eventdata file_id file_name filegroup_name fileproperty format formatmessage "
    "fulltextserviceproperty get_bit getansinull greatest has_perms_by_name host_id index_col "
    "indexkey_property indexproperty is_rolemember isjson json_array json_modify json_object json_query "
    "json_value least left_shift min_active_rowversion objectpropertyex parse percentile_cont "
    "percentile_disc pwdcompare pwdencrypt right_shift rowcount_big session_context set_bit soundex "
    "sql_variant_property stats_date string_escape suser_id suser_sid switchoffset sysdatetimeoffset "
    "textptr textvalid todatetimeoffset trigger_nestlevel try_parse typeproperty user_id ";

}  // namespace tsql
