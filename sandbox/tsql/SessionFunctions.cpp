// T-SQL's functions that ask the session or the server, as SQLite functions.
#include <sodium.h>

#include <array>

#include "FunctionImpl.h"

namespace tsql {
namespace {

template <SessionFunction function>
Value runSession(const Call& call) {
    return call.context().facts().sessionValue(function, call.arguments());
}

// A random (version 4) identifier.
Value runNewId(const Call&) {
    std::array<std::byte, 16> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    bytes[7] = (bytes[7] & std::byte{0x0F}) | std::byte{0x40};
    bytes[8] = (bytes[8] & std::byte{0x3F}) | std::byte{0x80};
    SqlType binary = simpleType(TypeId::Binary);
    binary.length = 16;
    return convertValue(Blob(bytes.data(), bytes.size()), binary, simpleType(TypeId::UniqueIdentifier));
}

using S = SessionFunction;
const SqlType kName = nvarcharType(128);
constexpr auto kReach = Nulls::Reach;
constexpr auto kVarying = Purity::Varying;

const FunctionInfo kFunctions[] = {
    {"newid", "", TypeId::UniqueIdentifier, runNewId, kReach, kVarying},
    {"db_name", "[I", kName, runSession<S::DbName>, kReach, kVarying},
    {"db_id", "[T", TypeId::Int, runSession<S::DbId>, kReach, kVarying},
    {"object_id", "T[T", TypeId::Int, runSession<S::ObjectId>, kReach, kVarying},
    {"object_name", "I", kName, runSession<S::ObjectName>, kReach, kVarying},
    {"objectproperty", "IT", TypeId::Int, runSession<S::ObjectProperty>, kReach, kVarying},
    {"col_length", "TT", TypeId::SmallInt, runSession<S::ColLength>, kReach, kVarying},
    {"schema_name", "[I", kName, runSession<S::SchemaName>, kReach, kVarying},
    {"user_name", "[I", kName, runSession<S::UserName>, kReach, kVarying},
    {"current_user", "", kName, runSession<S::UserName>, kReach, kVarying},
    {"session_user", "", kName, runSession<S::UserName>, kReach, kVarying},
    {"user", "", kName, runSession<S::UserName>, kReach, kVarying},
    {"suser_sname", "[A", kName, runSession<S::LoginName>, kReach, kVarying},
    {"suser_name", "[A", kName, runSession<S::LoginName>, kReach, kVarying},
    {"system_user", "", kName, runSession<S::LoginName>, kReach, kVarying},
    {"original_login", "", kName, runSession<S::LoginName>, kReach, kVarying},
    {"host_name", "", kName, runSession<S::HostName>, kReach, kVarying},
    {"app_name", "", kName, runSession<S::AppName>, kReach, kVarying},
    {"serverproperty", "T", kName, runSession<S::ServerProperty>, kReach, kVarying},
    {"databasepropertyex", "TT", kName, runSession<S::DatabaseProperty>, kReach, kVarying},
    {"is_srvrolemember", "T[T", TypeId::Int, runSession<S::IsServerRoleMember>, kReach, kVarying},
    {"is_member", "T", TypeId::Int, runSession<S::IsServerRoleMember>, kReach, kVarying},
    {"scope_identity", "", decimalType(38, 0), runSession<S::ScopeIdentity>, kReach, kVarying},
    {"ident_current", "T", decimalType(38, 0), runSession<S::IdentCurrent>, kReach, kVarying},
    {"error_number", "", TypeId::Int, runSession<S::ErrorNumber>, kReach, kVarying},
    {"error_severity", "", TypeId::Int, runSession<S::ErrorSeverity>, kReach, kVarying},
    {"error_state", "", TypeId::Int, runSession<S::ErrorState>, kReach, kVarying},
    {"error_line", "", TypeId::Int, runSession<S::ErrorLine>, kReach, kVarying},
    {"error_procedure", "", kName, runSession<S::ErrorProcedure>, kReach, kVarying},
    {"error_message", "", nvarcharType(4000), runSession<S::ErrorMessage>, kReach, kVarying},
    {"cursor_status", "TT", TypeId::SmallInt, runSession<S::CursorStatus>, kReach, kVarying},
    {"xact_state", "", TypeId::SmallInt, runSession<S::XactState>, kReach, kVarying},
};

}  // namespace

std::span<const FunctionInfo> sessionFunctions() {
    return kFunctions;
}

}  // namespace tsql
