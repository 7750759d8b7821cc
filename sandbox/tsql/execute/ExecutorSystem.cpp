// System procedures. Each has a parameter list in T-SQL, to which arguments are bound, and a body in C++ or
// T-SQL.

#include "execute/Executor.h"

namespace tsql {

namespace {

constexpr int kWrongCall = -999;

// The types of SQL Server as ODBC describes them. Drivers read the largest length of a string and the
// precision of a date from it. ODBC 3 numbers dates in another way than ODBC 2. Kinds (k): Exact number,
// Float, Money, National string, other quoted Constant, Binary string, Truth value.
constexpr std::string_view kDatatypeInfoParameters = "@data_type int = 0, @ODBCVer tinyint = 2";
constexpr std::string_view kDatatypeInfo = R"(
SELECT TYPE_NAME = CAST(n AS sysname), DATA_TYPE = CAST(CASE WHEN @ODBCVer = 3 THEN t ELSE t2 END AS smallint),
PRECISION = p, LITERAL_PREFIX = CAST(CASE k WHEN 'N' THEN 'N''' WHEN 'C' THEN '''' WHEN 'B' THEN '0x' WHEN 'M' THEN '$'
END AS varchar(32)), LITERAL_SUFFIX = CAST(CASE WHEN k IN ('N', 'C') THEN '''' END AS varchar(32)), CREATE_PARAMS =
CAST(par AS varchar(32)), NULLABLE = CAST(CASE WHEN auto = 1 THEN 0 ELSE 1 END AS smallint), CASE_SENSITIVE = CAST(0 AS
smallint), SEARCHABLE = CAST(s AS smallint), UNSIGNED_ATTRIBUTE = CAST(CASE WHEN n = 'tinyint' THEN 1 ELSE 0 * auto END
AS smallint), MONEY = CAST(CASE k WHEN 'M' THEN 1 ELSE 0 END AS smallint), AUTO_INCREMENT = CAST(auto AS smallint),
LOCAL_TYPE_NAME = CAST(n AS sysname), MINIMUM_SCALE = CAST(CASE WHEN k = 'M' OR n = 'datetime' THEN hi WHEN n <> 'date'
THEN 0 * hi END AS smallint), MAXIMUM_SCALE = CAST(hi AS smallint), SQL_DATA_TYPE = CAST(CASE WHEN t BETWEEN 91 AND 93
THEN 9 ELSE t END AS smallint), SQL_DATETIME_SUB = CAST(CASE WHEN t BETWEEN 91 AND 93 THEN t - 90 END AS smallint),
NUM_PREC_RADIX = CAST(CASE k WHEN 'F' THEN 2 ELSE 10 + 0 * auto END AS int), INTERVAL_PRECISION = CAST(NULL AS smallint),
USERTYPE = CAST(ut AS smallint) FROM (SELECT *, t2 = CASE t WHEN 91 THEN 9 WHEN 93 THEN 11 ELSE t END, auto = CASE WHEN
n LIKE '%identity' THEN 1 WHEN k IN ('E', 'F', 'M') THEN 0 END FROM (VALUES
('uniqueidentifier', -11, 36, 'C', NULL, 2, NULL, 0), ('ntext', -10, 1073741823, 'N', NULL, 1, NULL, 0),
('xml', -152, 1073741823, 'N', NULL, 0, NULL, 0), ('nvarchar', -9, 4000, 'N', 'max length', 3, NULL, 0),
('sysname', -9, 128, 'N', NULL, 3, NULL, 18), ('nchar', -8, 4000, 'N', 'length', 3, NULL, 0),
('bit', -7, 1, 'T', NULL, 2, 0, 16), ('tinyint', -6, 3, 'E', NULL, 2, 0, 5),
('bigint', -5, 19, 'E', NULL, 2, 0, 0), ('image', -4, 2147483647, 'B', NULL, 0, NULL, 20),
('varbinary', -3, 8000, 'B', 'max length', 2, NULL, 4), ('binary', -2, 8000, 'B', 'length', 2, NULL, 3),
('text', -1, 2147483647, 'C', NULL, 1, NULL, 19), ('char', 1, 8000, 'C', 'length', 3, NULL, 1),
('numeric', 2, 38, 'E', 'precision,scale', 2, 38, 10), ('decimal', 3, 38, 'E', 'precision,scale', 2, 38, 24),
('money', 3, 19, 'M', NULL, 2, 4, 11), ('smallmoney', 3, 10, 'M', NULL, 2, 4, 21),
('int', 4, 10, 'E', NULL, 2, 0, 7), ('int identity', 4, 10, 'E', NULL, 2, 0, 7),
('smallint', 5, 5, 'E', NULL, 2, 0, 6), ('float', 6, 53, 'F', NULL, 2, NULL, 8),
('real', 7, 24, 'F', NULL, 2, NULL, 23), ('varchar', 12, 8000, 'C', 'max length', 3, NULL, 2),
('date', 91, 10, 'C', NULL, 3, 0, 0), ('time', -154, 16, 'C', 'scale', 3, 7, 0),
('datetime', 93, 23, 'C', NULL, 3, 3, 12), ('datetime2', 93, 27, 'C', 'scale', 3, 7, 0),
('smalldatetime', 93, 16, 'C', NULL, 3, 0, 22)
) v (n, t, p, k, par, s, hi, ut)) x
WHERE @data_type = 0 OR @data_type = CASE WHEN @ODBCVer = 3 THEN t ELSE t2 END ORDER BY 2, 12, 11, 20)";

// sp_helptext reports an object that does not exist.
constexpr std::string_view kHelpIndex = R"(
IF OBJECT_ID(@objname) IS NULL BEGIN EXEC sp_helptext @objname RETURN 1 END
SELECT index_name = i.name, index_description = CAST(CASE i.type WHEN 1 THEN 'clustered' ELSE 'nonclustered' END +
CASE i.is_unique WHEN 1 THEN ', unique' ELSE '' END + CASE WHEN i.is_primary_key = 1 THEN ', primary key'
WHEN i.is_unique_constraint = 1 THEN ', unique key' ELSE '' END + ' located on PRIMARY' AS varchar(210)), index_keys =
CAST((SELECT STRING_AGG(c.name + CASE k.is_descending_key WHEN 1 THEN '(-)' ELSE '' END, ', ') WITHIN GROUP
(ORDER BY k.key_ordinal) FROM sys.index_columns k JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id =
k.column_id WHERE k.object_id = i.object_id AND k.index_id = i.index_id) AS nvarchar(2078))
FROM sys.indexes i WHERE i.object_id = OBJECT_ID(@objname) ORDER BY 1)";

std::string textOf(const Frame& frame, const char* variable) {
    const auto* text = std::get_if<std::string>(&frame.variables.at(variable).value);
    return text ? *text : std::string();
}

}  // namespace

const Executor::SystemProcedure* Executor::systemProcedure(std::string_view name) {
    static constexpr SystemProcedure kProcedures[] = {
        {"sp_helptext", "@objname nvarchar(776), @columnname sysname = NULL", &Executor::helpText},
        {"sp_getapplock",
         "@Resource nvarchar(255), @LockMode varchar(32), @LockOwner varchar(32) = 'Transaction', "
         "@LockTimeout int = NULL, @DbPrincipal sysname = 'public'",
         &Executor::getAppLock},
        {"sp_releaseapplock",
         "@Resource nvarchar(255), @LockOwner varchar(32) = 'Transaction', @DbPrincipal sysname = 'public'",
         &Executor::releaseAppLock},
        {"sp_datatype_info", kDatatypeInfoParameters, nullptr, kDatatypeInfo},
        {"sp_datatype_info_100", kDatatypeInfoParameters, nullptr, kDatatypeInfo},
        {"sp_helpindex", "@objname nvarchar(776)", nullptr, kHelpIndex},
    };
    const auto* found =
        std::ranges::find_if(kProcedures, [&](const auto& each) { return sameWord(each.name, name); });
    return found == std::end(kProcedures) ? nullptr : found;
}

// sp_helptext: one row for each line of the module's text, the line end included, split after 255 characters.
int Executor::helpText(const Frame& frame) {
    if (!textOf(frame, "@columnname").empty()) throw unsupported("sp_helptext with a column");
    ObjectName name = parseObjectName(textOf(frame, "@objname"));
    if (name.database.empty()) name.database = frame.database;
    const auto found = object(name);
    if (!found) throw sqlError(message::kInvalidObject, {name.name, name.database});
    if (found->source.empty()) throw sqlError(message::kNoTextOfObject, {name.name});
    constexpr std::size_t kWidest = 255;
    const Column column{"Text", nvarcharType(kWidest)};
    std::vector<std::vector<Value>> rows;
    for (std::string_view rest = found->source; !rest.empty();) {
        const std::string_view line = rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
        rows.push_back({ownedValue(characters(line, 0, kWidest))});
        rest.remove_prefix(std::get<std::string>(rows.back().front()).size());
    }
    sendTable({&column, 1}, rows);
    return 0;
}

// Returns the lock that the arguments of both lock procedures describe. Reports an error and returns nothing
// if they are invalid.
std::optional<AppLocks::Lock> Executor::appLock(const Frame& frame, std::string_view mode) {
    const std::string owner = textOf(frame, "@lockowner");
    const auto known = lockModeNamed(mode);
    const bool ofTransaction = sameWord(owner, "Transaction");
    const int wrong = !known                                               ? message::kInvalidAppLockMode
                      : !ofTransaction && !sameWord(owner, "Session")      ? message::kInvalidAppLockOwner
                      : !sameWord(textOf(frame, "@dbprincipal"), "public") ? message::kInvalidAppLockPrincipal
                      : ofTransaction && m_transactions == 0               ? message::kTransactionRequired
                                                                           : 0;
    if (wrong) {
        afterError(messageOf(sqlError(wrong, {frame.procedure}), m_line), /*raised=*/true);
        return std::nullopt;
    }
    return AppLocks::Lock{databaseKey(frame.database) + ":" + textOf(frame, "@resource"), *known, this,
                          ofTransaction};
}

int Executor::getAppLock(const Frame& frame) {
    const auto lock = appLock(frame, textOf(frame, "@lockmode"));
    if (!lock) return kWrongCall;
    const auto* given = std::get_if<std::int64_t>(&frame.variables.at("@locktimeout").value);
    return m_locks.acquire(*lock, std::chrono::milliseconds(given ? *given : m_settings.lockTimeout),
                           [this] { return isCancelled(); });
}

int Executor::releaseAppLock(const Frame& frame) {
    const auto lock = appLock(frame, "Exclusive");
    if (!lock) return kWrongCall;
    if (m_locks.release(lock->resource, this, lock->ofTransaction)) return 0;
    afterError(messageOf(sqlError(message::kAppLockNotHeld, {textOf(frame, "@resource")}), m_line),
               /*raised=*/true);
    return kWrongCall;
}

}  // namespace tsql
