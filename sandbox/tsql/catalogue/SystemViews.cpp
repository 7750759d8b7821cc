// System views, each a query over the catalogue of a database.
#include <boost/algorithm/string/replace.hpp>

#include "catalogue/Catalogue.h"
#include "syntax/Parser.h"
#include "types/Regex.h"

namespace tsql {
namespace {

using boost::replace_all;

// Columns of a view, as "name type [= expression]; ...", and its FROM clause. Placeholders:
//   $o, $c  tables of the catalogue       $d  name of the database     $s  SQLite's name of its schema
//   $L      list of databases (name, id)  $C  name of the collation    $S  list of sessions
//   $T      list of types (type)          $.  prefix of other tables   $PART n  a number of a sequence
//   $I      ODBC's list of types
//   $EACH(list$)  its names, none of which contains ", ", as rows of `key` (from 0) and `value`
//   $PRIMARY_KEY  list of the columns of table r's primary key; for others, see the fragments below
// "TABLE_* = o.name" is short for the columns TABLE_CATALOG, TABLE_SCHEMA and TABLE_NAME.
// A view without a schema is found in sys, in dbo and by its unqualified name.
struct ViewText {
    std::string_view schema, name, columns, from;
};

constexpr std::pair<std::string_view, std::string_view> kFragments[] = {
    {"$OBJECT",
     R"(name sysname = ts_bare_name(o.name); object_id int = o.id; principal_id int = NULL; schema_id int = $SCHEMA_ID;
parent_object_id int = o.parent; type char(2) = o.type; type_desc nvarchar(60) = $KIND; create_date datetime =
o.created; modify_date datetime = o.created; is_ms_shipped bit = 0; is_published bit = 0; is_schema_published bit = 0)"},
    {"$KIND",
     R"(CASE o.type WHEN 'U' THEN 'USER_TABLE' WHEN 'V' THEN 'VIEW' WHEN 'P' THEN 'SQL_STORED_PROCEDURE' WHEN 'FN' THEN
'SQL_SCALAR_FUNCTION' WHEN 'TF' THEN 'SQL_TABLE_VALUED_FUNCTION' WHEN 'IF' THEN 'SQL_INLINE_TABLE_VALUED_FUNCTION' WHEN
'PK' THEN 'PRIMARY_KEY_CONSTRAINT' WHEN 'UQ' THEN 'UNIQUE_CONSTRAINT' WHEN 'TR' THEN 'SQL_TRIGGER' WHEN 'SO' THEN
'SEQUENCE_OBJECT' WHEN 'F' THEN 'FOREIGN_KEY_CONSTRAINT' WHEN 'D' THEN 'DEFAULT_CONSTRAINT' ELSE 'CHECK_CONSTRAINT' END)"},
    {"$COLUMN",
     R"(object_id int = c.object; name sysname = c.name; column_id int = c.ordinal; $TYPE; collation_name sysname = CASE
ts_type_family(c.type) WHEN 't' THEN '$C' END; is_nullable bit = c.nullable; is_identity bit = c.identity;
is_computed bit = c.computed <> ''; default_object_id int = coalesce((SELECT d.id FROM $o d WHERE d.type = 'D' AND
d.parent = c.object AND d.keys = c.name), 0))"},
    {"$TYPE",
     R"(system_type_id tinyint = iif($ISTABLE, 243, ts_type_number(c.type)); user_type_id int = iif(c.user_type,
c.user_type + 256, ts_type_number(c.type)); max_length smallint = ts_type_length(c.type); precision tinyint =
ts_type_precision(c.type); scale tinyint = ts_type_scale(c.type))"},
    {"$ANYTYPE",
     R"(name sysname = ts_bare_name(t.stored); system_type_id tinyint = ifnull(ts_type_number(t.type), 243);
user_type_id int = iif(t.object, t.object + 256, ts_type_number(t.type)); schema_id int = iif(t.object, (SELECT s.id
FROM $SCHEMAS WHERE s.name = ts_schema_of(t.stored) COLLATE ts_ci), 4); max_length smallint =
ifnull(ts_type_length(t.type), -1); precision tinyint = ifnull(ts_type_precision(t.type), 0); scale tinyint =
ifnull(ts_type_scale(t.type), 0); collation_name sysname = CASE ts_type_family(t.type) WHEN 't' THEN '$C' END;
is_nullable bit = ifnull(t.nullable, 0); is_user_defined bit = t.object > 0; is_table_type bit = t.kind = 'TT')"},
    {"$NAMED", "DATA_TYPE sysname = iif($ISTABLE, 'table type', ts_type_base(c.type)); $SIZE"},
    {"$SIZE",
     R"(CHARACTER_MAXIMUM_LENGTH int = ts_type_characters(c.type); CHARACTER_OCTET_LENGTH int = CASE WHEN ts_type_characters(c.type) > 8000 THEN 2147483647
WHEN ts_type_characters(c.type) IS NOT NULL THEN ts_type_length(c.type) END; NUMERIC_PRECISION tinyint = CASE
ts_type_family(c.type) WHEN 'd' THEN NULL ELSE nullif(ts_type_precision(c.type), 0) END; NUMERIC_SCALE int = CASE
ts_type_family(c.type) WHEN 'n' THEN ts_type_scale(c.type) END; DATETIME_PRECISION smallint = CASE
ts_type_family(c.type) WHEN 'd' THEN ts_type_scale(c.type) END)"},
    {"$STATE",
     R"(is_disabled bit = o.source GLOB 'NOCHECK *'; is_not_trusted bit = o.source GLOB 'NOCHECK *' OR
o.source GLOB 'WITH NOCHECK *')"},
    {"$ISTABLE", "(SELECT t.type FROM $o t WHERE t.id = c.user_type) IS 'TT'"},
    {"$LOGIN", "login_time datetime = strftime('%Y-%m-%d %H:%M:%f', s.begin, 'unixepoch', 'localtime')"},
    {"$USER",
     R"(name sysname = iif(p.name = '', ts_system_user(), p.name); principal_id int = p.id; sid varbinary(85) = p.sid;
type char(1) = p.type; type_desc nvarchar(60) = CASE p.type WHEN 'R' THEN iif(p.login, 'SERVER', 'DATABASE') || '_ROLE'
WHEN 'S' THEN 'SQL_' ELSE 'WINDOWS_' END || iif(p.type = 'R', '', iif(p.login, 'LOGIN', 'USER')); create_date datetime =
p.created; modify_date datetime = p.created; owning_principal_id int = p.owner; is_fixed_role bit = p.id > 16383)"},
    {"$CLASS",
     R"(class tinyint = g.class; class_desc nvarchar(60) = CASE g.class WHEN 0 THEN 'DATABASE' WHEN 1 THEN
'OBJECT_OR_COLUMN' ELSE 'SCHEMA' END; major_id int = g.major + iif(g.class = 3, 4, 0))"},
    {"$PART", "('[' || o.stored || ']') ->> "},
    {"$PRIMARY_KEY", "(SELECT p.keys FROM $o p WHERE p.parent = r.id AND p.type = 'PK')"},
    {"$EACH(", "json_each('[' || replace(json_quote("},
    {"$)", R"(), ', ', '","') || ']'))"},
    {"$SCHEMA_ID", "(SELECT s.id FROM $SCHEMAS WHERE s.name = ts_schema_of(o.name) COLLATE ts_ci)"},
    {"$SCHEMAS", kSchemas},
    {"$INDEX",
     R"(CASE o.type WHEN 'PK' THEN 1 ELSE 1 + (SELECT count(*) FROM $o p WHERE p.parent = o.parent AND
p.type IN ('IX', 'UQ') AND p.id <= o.id) END)"},
    // How ODBC describes the types ($I). Kinds (k): Exact number, Float, Money, National string, other quoted
    // Constant, Binary string, Truth value.
    {"$I",
     R"((SELECT column1 AS n, column2 AS t, column3 AS p, column4 AS k, column5 AS par, column6 AS s, column7 AS hi,
column8 AS ut FROM (VALUES ('uniqueidentifier', -11, 36, 'C', NULL, 2, NULL, 0),
('ntext', -10, 1073741823, 'N', NULL, 1, NULL, 0), ('datetimeoffset', -155, 34, 'C', 'scale', 3, 7, 0),
('xml', -152, 1073741823, 'N', NULL, 0, NULL, 0), ('nvarchar', -9, 4000, 'N', 'max length', 3, NULL, 0),
('sysname', -9, 128, 'N', NULL, 3, NULL, 18), ('nchar', -8, 4000, 'N', 'length', 3, NULL, 0),
('bit', -7, 1, 'T', NULL, 2, 0, 16), ('tinyint', -6, 3, 'E', NULL, 2, 0, 5), ('bigint', -5, 19, 'E', NULL, 2, 0, 0),
('image', -4, 2147483647, 'B', NULL, 0, NULL, 20), ('varbinary', -3, 8000, 'B', 'max length', 2, NULL, 4),
('timestamp', -2, 8, 'B', NULL, 2, NULL, 80), ('binary', -2, 8000, 'B', 'length', 2, NULL, 3),
('text', -1, 2147483647, 'C', NULL, 1, NULL, 19), ('char', 1, 8000, 'C', 'length', 3, NULL, 1),
('numeric', 2, 38, 'E', 'precision,scale', 2, 38, 10), ('decimal', 3, 38, 'E', 'precision,scale', 2, 38, 24),
('money', 3, 19, 'M', NULL, 2, 4, 11), ('smallmoney', 3, 10, 'M', NULL, 2, 4, 21), ('int', 4, 10, 'E', NULL, 2, 0, 7),
('int identity', 4, 10, 'E', NULL, 2, 0, 7), ('smallint', 5, 5, 'E', NULL, 2, 0, 6),
('float', 6, 53, 'F', NULL, 2, NULL, 8), ('real', 7, 24, 'F', NULL, 2, NULL, 23),
('varchar', 12, 8000, 'C', 'max length', 3, NULL, 2), ('date', 91, 10, 'C', NULL, 3, 0, 0),
('time', -154, 16, 'C', 'scale', 3, 7, 0), ('datetime', 93, 23, 'C', NULL, 3, 3, 12),
('datetime2', 93, 27, 'C', 'scale', 3, 7, 0), ('smalldatetime', 93, 16, 'C', NULL, 3, 0, 22))))"},
};

constexpr std::string_view kModules = "$o o WHERE o.type IN ('P', 'FN', 'IF', 'TF', 'V', 'TR')";
constexpr std::string_view kParameters =
    "$c c JOIN $o o ON o.id = c.object WHERE o.type IN ('P', 'FN', 'IF', 'TF')";
constexpr std::string_view kIndexes = "$o o WHERE o.type IN ('IX', 'PK', 'UQ')";
constexpr std::string_view kAllColumns = "$c c JOIN $o o ON o.id = c.object WHERE o.type IN ('U', 'V', 'TT')";

constexpr ViewText kViews[] = {
    {"sys", "databases",
     R"(name sysname; database_id int = id; source_database_id int = NULL; owner_sid varbinary(85) =
x'01'; create_date datetime = '2003-04-08 09:13:36.390'; compatibility_level tinyint = 150; collation_name
sysname = '$C'; user_access tinyint = 0; user_access_desc nvarchar(60) = 'MULTI_USER'; is_read_only bit = 0;
is_auto_close_on bit = 0; is_auto_shrink_on bit = 0; state tinyint = 0; state_desc nvarchar(60) = 'ONLINE';
is_in_standby bit = 0; recovery_model tinyint = 3; recovery_model_desc nvarchar(60) = 'SIMPLE')",
     "$L"},
    {"", "sysdatabases", "name sysname; dbid smallint = id; status int = 0; cmptlevel tinyint = 150", "$L"},
    {"", "sysobjects",
     R"(name sysname = ts_bare_name(o.name); id int = o.id; xtype char(2) = o.type; uid smallint = $SCHEMA_ID;
parent_obj int = o.parent; crdate datetime = o.created; type char(2) = CASE o.type WHEN 'PK' THEN 'K' WHEN 'UQ' THEN 'K'
ELSE o.type END)",
     "$o o WHERE o.type NOT IN ('IX', 'SCHEMA', 'TYPE', 'TT')"},
    {"sys", "objects", "$OBJECT", "$o o WHERE o.type NOT IN ('IX', 'SCHEMA', 'TYPE', 'TT')"},
    {"sys", "tables",
     "$OBJECT; max_column_id_used int = (SELECT max(ordinal) FROM $c c WHERE c.object = o.id)",
     "$o o WHERE o.type = 'U'"},
    {"sys", "synonyms", "$OBJECT; base_object_name nvarchar(1035) = ''", "$o o WHERE 0"},  // none exists
    {"sys", "views", "$OBJECT", "$o o WHERE o.type = 'V'"},
    {"sys", "procedures", "$OBJECT", "$o o WHERE o.type = 'P'"},
    {"sys", "key_constraints", "$OBJECT", "$o o WHERE o.type IN ('PK', 'UQ')"},
    {"sys", "check_constraints",
     "$OBJECT; $STATE; definition nvarchar(max) = substr(o.source, instr(o.source, '('))",
     "$o o WHERE o.type = 'C'"},
    {"sys", "default_constraints",
     "$OBJECT; parent_column_id int = c.ordinal; definition nvarchar(max) = '(' || c.fallback || ')'",
     "$o o JOIN $c c ON c.object = o.parent AND c.name = o.keys WHERE o.type = 'D'"},
    {"sys", "foreign_keys",
     R"($OBJECT; referenced_object_id int = r.id; $STATE; delete_referential_action tinyint = instr('ELT',
substr(ts_on_delete(o.source), -1)); delete_referential_action_desc nvarchar(60) = replace(ts_on_delete(o.source),
' ', '_'); update_referential_action tinyint = instr('ELT', substr(ts_on_update(o.source), -1));
update_referential_action_desc nvarchar(60) = replace(ts_on_update(o.source), ' ', '_'))",
     "$o o JOIN $o r ON r.name = o.stored AND r.type = 'U' WHERE o.type = 'F'"},
    {"sys", "foreign_key_columns",
     R"(constraint_object_id int = o.id; constraint_column_id int = k.key + 1; parent_object_id int = o.parent;
parent_column_id int = c.ordinal; referenced_object_id int = r.id; referenced_column_id int = rc.ordinal)",
     R"($o o JOIN $o r ON r.name = o.stored AND r.type = 'U' JOIN $EACH(o.keys$) k JOIN $c c ON c.object = o.parent AND
c.name = k.value COLLATE ts_ci JOIN $EACH(ts_referenced(o.source, $PRIMARY_KEY)$) f ON f.key = k.key JOIN $c rc ON
rc.object = r.id AND rc.name = f.value COLLATE ts_ci WHERE o.type = 'F')"},
    {"sys", "spt_datatype_info",
     "n sysname; t smallint; p int; k char(1); par varchar(32); s smallint; hi smallint; ut smallint", "$I"},
    // Columns, parameters and results of procedures as ODBC 2 and 3 describe them.
    {"sys", "spt_columns",
     R"(object_id int = object; column_id int = ordinal; name sysname = iif(name = '', '@RETURN_VALUE', name); odbc int;
nullable smallint; output smallint; TYPE_NAME sysname = n || iif(identity, ' identity', ''); DATA_TYPE smallint = CASE
WHEN odbc = 3 OR t NOT IN (91, 93) THEN t WHEN t = 91 THEN 9 ELSE 11 END; PRECISION int = CASE WHEN n IN ('decimal',
'time', 'datetime2', 'datetimeoffset') THEN digits WHEN k = 'F' AND odbc < 3 THEN iif(n = 'real', 7, 15) WHEN size = -1
THEN 0 WHEN par IS NULL THEN p WHEN k = 'N' THEN size / 2 ELSE size END; LENGTH int = CASE WHEN octets IS NOT NULL THEN
octets WHEN k = 'M' OR n = 'decimal' THEN digits + 2 WHEN n = 'date' THEN 6 WHEN n = 'time' THEN 12 WHEN n =
'datetimeoffset' THEN 20 WHEN t = 93 THEN 16 ELSE size END; SCALE smallint = CASE WHEN k IN ('E', 'M') OR t IN (93,
-154, -155) THEN ts_type_scale(type) END; RADIX smallint = CASE WHEN k = 'F' AND odbc = 3 THEN 2 WHEN k IN ('E', 'F',
'M') THEN 10 END; SQL_DATA_TYPE smallint = iif(t IN (91, 93), 9, t); SQL_DATETIME_SUB smallint = CASE WHEN t IN (91, 93)
THEN t - 90 END; CHAR_OCTET_LENGTH int = octets; IS_NULLABLE varchar(254) = iif(nullable, 'YES', 'NO'))",
     // The return value of a procedure has type 3, int.
     R"((SELECT *, CASE WHEN size = -1 THEN 0 WHEN n = 'ntext' THEN 2 * p WHEN n IN ('text', 'image') THEN p WHEN par
LIKE '%length' THEN size END AS octets FROM (SELECT *, ts_type_length(type) AS size, ts_type_precision(type) AS digits
FROM (SELECT object, ordinal, name, type, nullable, identity, output FROM $c UNION ALL SELECT id, 0, '', 3, 0, 0, 1 FROM
$o WHERE type = 'P')) JOIN $I ON n = ts_type_base(type) JOIN (SELECT 2 AS odbc UNION SELECT 3)))"},
    {"", "spt_values",  // numbers, in master only
     R"(name nvarchar(35) = NULL; number int = n; type nchar(3) = 'P  '; low int = n / 8 + 1; high int = 1 << n % 8;
status int = 0)",
     "(WITH r (n) AS (VALUES (0) UNION ALL SELECT n + 1 FROM r WHERE n < 2047) SELECT n FROM r)"},
    {"sys", "indexes",
     R"(object_id int = o.parent; name sysname = ts_bare_name(o.name); index_id int = $INDEX; type tinyint = CASE o.type
WHEN 'PK' THEN 1 ELSE 2 END; type_desc nvarchar(60) = CASE o.type WHEN 'PK' THEN 'CLUSTERED' ELSE
'NONCLUSTERED' END; is_unique bit = o.type <> 'IX' OR o.source = 'UNIQUE';
is_primary_key bit = o.type = 'PK'; is_unique_constraint bit = o.type = 'UQ'; is_disabled bit = 0; is_hypothetical bit
 = 0; has_filter bit = o.stored <> ''; filter_definition nvarchar(max) = '(' || nullif(o.stored, '') || ')')",
     kIndexes},
    {"sys", "index_columns",
     R"(object_id int = o.parent; index_id int = $INDEX; index_column_id int = k.key + 1; column_id int =
c.ordinal; key_ordinal tinyint = k.key + 1; is_included_column bit = 0; is_descending_key bit = coalesce((SELECT x.desc
FROM pragma_index_xinfo(ts_bare_name(o.name) || '@' || o.parent, $s) x WHERE x.seqno = k.key), 0))",
     R"($o o JOIN $EACH(o.keys$) k JOIN $c c ON
c.object = o.parent AND c.name = k.value COLLATE ts_ci WHERE o.type IN ('IX', 'PK', 'UQ'))"},
    {"", "sysindexes", "name sysname = ts_bare_name(o.name); id int = o.parent; indid smallint = $INDEX",
     kIndexes},
    {"sys", "schemas", "name sysname = s.name; schema_id int = s.id; principal_id int = s.owner", "$SCHEMAS"},
    {"sys", "database_principals", "$USER; default_schema_name sysname = p.home",
     "$.tsqlbox_principals p WHERE NOT p.login"},
    {"", "sysusers",
     R"(uid smallint = p.id; name sysname = iif(p.name = '', ts_system_user(), p.name); sid varbinary(85) = p.sid;
hasdbaccess int = p.type <> 'R'; islogin int = p.type <> 'R'; isntname int = p.type = 'U'; issqluser int = p.type = 'S';
issqlrole int = p.type = 'R'; isapprole int = 0)",
     "$.tsqlbox_principals p WHERE NOT p.login"},
    {"sys", "server_principals", "$USER; is_disabled bit = 0; default_database_name sysname = p.home",
     "$.tsqlbox_principals p WHERE p.login"},
    {"sys", "database_role_members", "role_principal_id int = role; member_principal_id int = member",
     "$.tsqlbox_members"},
    {"sys", "database_permissions",
     R"($CLASS; minor_id int = 0; grantee_principal_id int = g.grantee; grantor_principal_id int = 1; type char(4) =
g.code; permission_name nvarchar(128) = g.name; state char(1) = g.state; state_desc nvarchar(60) = CASE g.state WHEN
'D' THEN 'DENY' WHEN 'W' THEN 'GRANT_WITH_GRANT_OPTION' ELSE 'GRANT' END)",
     "$.tsqlbox_permissions g"},
    {"sys", "types", "$ANYTYPE", "$T t"},
    {"", "systypes",
     R"(name sysname = ts_bare_name(t.stored); xtype tinyint = ifnull(ts_type_number(t.type), 243); xusertype smallint =
iif(t.object, t.object + 256, ts_type_number(t.type)); length smallint = ifnull(ts_type_length(t.type), -1))",
     "$T t"},
    {"sys", "table_types", "$ANYTYPE; type_table_object_id int = t.object", "$T t WHERE t.kind = 'TT'"},
    {"sys", "system_views", "name sysname = column1", "(VALUES ('dm_exec_requests'), ('dm_exec_sessions'))"},
    {"sys", "columns", "$COLUMN", kAllColumns},
    {"sys", "all_columns", "$COLUMN", kAllColumns},
    {"sys", "identity_columns",
     R"($COLUMN; seed_value bigint = coalesce(('[' || o.keys || ']') ->> 0, 1); increment_value bigint =
coalesce(('[' || o.keys || ']') ->> 1, 1))",
     "$c c JOIN $o o ON o.id = c.object WHERE c.identity"},
    {"sys", "computed_columns",
     "$COLUMN; definition nvarchar(max) = '(' || c.computed || ')'; is_persisted bit = c.persisted",
     "$c c WHERE c.computed <> ''"},
    {"sys", "extended_properties",
     "$CLASS; minor_id int = g.minor; name sysname = g.name; value nvarchar(4000) = g.value",
     "$.tsqlbox_properties g"},
    {"sys", "sequences",
     R"($OBJECT; start_value bigint = $PART 0; increment bigint = $PART 1; minimum_value bigint = $PART 2; maximum_value
bigint = $PART 3; is_cycling bit = $PART 4; is_cached bit = 1; cache_size int = NULL; $TYPE; current_value bigint =
ts_sequence_value(o.stored, max(q.seq - 1, 0)); is_exhausted bit = ts_sequence_value(o.stored, q.seq) IS NULL)",
     "$o o JOIN $c c ON c.object = o.id JOIN $.sqlite_sequence q ON q.name = '@sequence ' || o.id WHERE "
     "o.type = 'SO'"},
    {"sys", "triggers",
     R"($OBJECT; parent_class tinyint = 1; parent_class_desc nvarchar(60) = 'OBJECT_OR_COLUMN'; parent_id int =
o.parent; is_disabled bit = o.stored <> ''; is_not_for_replication bit = 0; is_instead_of_trigger bit = o.keys GLOB
'INSTEAD*')",
     "$o o WHERE o.type = 'TR'"},
    {"", "syscolumns",
     R"(name sysname = c.name; id int = c.object; xtype tinyint = ts_type_number(c.type); length smallint =
ts_type_length(c.type); colid smallint = c.ordinal; isnullable int = c.nullable)",
     "$c c"},
    {"sys", "parameters",
     R"(object_id int = c.object; name sysname = c.name; parameter_id int = c.ordinal - (o.type = 'FN');
$TYPE; is_output bit = c.output; is_readonly bit = $ISTABLE)",
     kParameters},
    {"sys", "sql_modules", "object_id int = o.id; definition nvarchar(max) = o.source", kModules},
    {"", "syscomments", "id int = o.id; colid smallint = 1; text nvarchar(4000) = o.source", kModules},
    {"sys", "dm_exec_sessions",
     R"(session_id smallint = s.id; $LOGIN; host_name nvarchar(128) = s.host; program_name nvarchar(128) = s.program;
login_name nvarchar(128) = s.login; status nvarchar(30) = iif(s.running, 'running', 'sleeping'); database_id smallint
= s.db; is_user_process bit = 1; transaction_isolation_level smallint = 2)",
     "$S s"},
    {"sys", "dm_exec_requests",
     R"(session_id smallint = s.id; status nvarchar(30) = iif(s.waits, 'suspended', 'running'); database_id smallint =
s.db; wait_type nvarchar(60) = iif(s.waits, 'LCK_M_X', NULL); blocking_session_id smallint = s.blocker)",
     "$S s WHERE s.running"},
    {"", "sysprocesses",
     R"(spid smallint = s.id; blocked smallint = s.blocker; dbid smallint = s.db; $LOGIN; status nchar(30) =
iif(s.running, 'running', 'sleeping'); hostname nchar(128) = s.host; program_name nchar(128) = s.program; loginame
nchar(128) = s.login)",
     "$S s"},
    {"INFORMATION_SCHEMA", "SCHEMATA",
     R"(CATALOG_NAME sysname = $d; SCHEMA_NAME sysname = s.name; SCHEMA_OWNER sysname =
(SELECT p.name FROM $.tsqlbox_principals p WHERE p.id = s.owner AND NOT p.login))",
     "$SCHEMAS"},
    {"INFORMATION_SCHEMA", "TABLE_CONSTRAINTS",
     R"(CONSTRAINT_* = n.name; TABLE_* = o.name; CONSTRAINT_TYPE varchar(11) = CASE n.type WHEN 'PK' THEN 'PRIMARY KEY'
WHEN 'UQ' THEN 'UNIQUE' WHEN 'F' THEN 'FOREIGN KEY' ELSE 'CHECK' END; IS_DEFERRABLE varchar(2) = 'NO';
INITIALLY_DEFERRED varchar(2) = 'NO')",
     "$o n JOIN $o o ON o.id = n.parent WHERE n.type IN ('PK', 'UQ', 'F', 'C')"},
    {"INFORMATION_SCHEMA", "KEY_COLUMN_USAGE",
     R"(CONSTRAINT_* = n.name; TABLE_* = o.name; COLUMN_NAME sysname = k.value; ORDINAL_POSITION int = k.key + 1)",
     "$o n JOIN $o o ON o.id = n.parent JOIN $EACH(n.keys$) k WHERE n.type IN ('PK', 'UQ', 'F')"},
    {"INFORMATION_SCHEMA", "CONSTRAINT_COLUMN_USAGE",
     "TABLE_* = o.name; COLUMN_NAME sysname = k.value; CONSTRAINT_* = n.name",
     R"($o n JOIN $o o ON o.id = n.parent JOIN $EACH(n.keys$) k WHERE n.type IN ('PK', 'UQ', 'F', 'C') AND n.keys <> '')"},
    {"INFORMATION_SCHEMA", "CHECK_CONSTRAINTS",
     "CONSTRAINT_* = n.name; CHECK_CLAUSE nvarchar(4000) = substr(n.source, instr(n.source, '('))",
     "$o n WHERE n.type = 'C'"},
    {"INFORMATION_SCHEMA", "REFERENTIAL_CONSTRAINTS",
     R"(CONSTRAINT_* = n.name; UNIQUE_CONSTRAINT_CATALOG sysname = $d; UNIQUE_CONSTRAINT_SCHEMA sysname =
ts_schema_of(r.name); UNIQUE_CONSTRAINT_NAME sysname = (SELECT ts_bare_name(u.name) FROM $o u WHERE u.parent = r.id AND
u.type IN ('PK', 'UQ', 'IX') AND u.keys = ts_referenced(n.source, $PRIMARY_KEY) COLLATE ts_ci LIMIT 1); MATCH_OPTION
varchar(7) = 'SIMPLE'; UPDATE_RULE varchar(11) = ts_on_update(n.source); DELETE_RULE varchar(11) =
ts_on_delete(n.source))",
     "$o n JOIN $o r ON r.name = n.stored AND r.type = 'U' WHERE n.type = 'F'"},
    {"INFORMATION_SCHEMA", "TABLES",
     "TABLE_* = o.name; TABLE_TYPE varchar(10) = CASE o.type WHEN 'U' THEN 'BASE TABLE' ELSE 'VIEW' END",
     "$o o WHERE o.type IN ('U', 'V')"},
    {"INFORMATION_SCHEMA", "VIEWS",
     R"(TABLE_* = o.name; VIEW_DEFINITION nvarchar(4000) = o.source; CHECK_OPTION varchar(7) = iif(o.stored = '',
'NONE', o.stored); IS_UPDATABLE varchar(2) = 'NO')",
     "$o o WHERE o.type = 'V'"},
    {"INFORMATION_SCHEMA", "COLUMNS",
     R"(TABLE_* = o.name; COLUMN_NAME sysname = c.name; ORDINAL_POSITION int = c.ordinal; COLUMN_DEFAULT nvarchar(4000)
= '(' || nullif(c.fallback, '') || ')'; IS_NULLABLE varchar(3) = CASE c.nullable WHEN 1 THEN
'YES' ELSE 'NO' END; $NAMED; COLLATION_NAME sysname = CASE ts_type_family(c.type) WHEN 't' THEN '$C' END; DOMAIN_SCHEMA
sysname = ts_schema_of(t.name); DOMAIN_NAME sysname = ts_bare_name(t.name))",
     "$c c JOIN $o o ON o.id = c.object LEFT JOIN $o t ON t.id = c.user_type WHERE o.type IN ('U', 'V')"},
    {"INFORMATION_SCHEMA", "ROUTINES",
     R"(SPECIFIC_* = o.name; ROUTINE_* = o.name; ROUTINE_TYPE nvarchar(20) = CASE o.type WHEN 'P' THEN 'PROCEDURE' ELSE
'FUNCTION' END; ROUTINE_BODY nvarchar(30) = 'SQL'; ROUTINE_DEFINITION nvarchar(4000) = o.source; CREATED datetime =
o.created; LAST_ALTERED datetime = o.created; DATA_TYPE sysname = iif(o.type IN ('IF', 'TF'), 'TABLE',
ts_type_base(c.type)); $SIZE)",
     R"($o o LEFT JOIN $c c ON c.object = o.id AND c.name = '' WHERE o.type IN ('P', 'FN', 'IF', 'TF'))"},
    {"INFORMATION_SCHEMA", "DOMAINS",
     "DOMAIN_* = o.name; DATA_TYPE sysname = iif(o.type = 'TT', 'table type', ts_type_base(c.type)); $SIZE",
     "$o o LEFT JOIN $c c ON c.object = o.id AND o.type = 'TYPE' WHERE o.type IN ('TYPE', 'TT')"},
    {"INFORMATION_SCHEMA", "CONSTRAINT_TABLE_USAGE", "TABLE_* = o.name; CONSTRAINT_* = n.name",
     "$o n JOIN $o o ON o.id = n.parent WHERE n.type IN ('PK', 'UQ', 'F', 'C')"},
    {"INFORMATION_SCHEMA", "TABLE_PRIVILEGES",
     R"(GRANTOR sysname = 'dbo'; GRANTEE sysname = p.name; TABLE_* = o.name; PRIVILEGE_TYPE varchar(10) = g.name;
IS_GRANTABLE varchar(3) = iif(g.state = 'W', 'YES', 'NO'))",
     R"($.tsqlbox_permissions g JOIN $.tsqlbox_principals p ON p.id = g.grantee AND NOT p.login JOIN $o o ON o.id =
g.major AND o.type IN ('U', 'V') WHERE g.class = 1 AND g.state <> 'D' AND g.name IN ('SELECT', 'INSERT', 'UPDATE',
'DELETE', 'REFERENCES'))"},
    {"INFORMATION_SCHEMA", "SEQUENCES",
     R"(SEQUENCE_* = o.name; START_VALUE bigint = $PART 0; INCREMENT bigint = $PART 1; MINIMUM_VALUE bigint = $PART 2;
MAXIMUM_VALUE bigint = $PART 3; CYCLE_OPTION bit = $PART 4; DATA_TYPE sysname = ts_type_base(c.type))",
     "$o o JOIN $c c ON c.object = o.id WHERE o.type = 'SO'"},
    {"INFORMATION_SCHEMA", "PARAMETERS",
     R"(SPECIFIC_* = o.name; ORDINAL_POSITION int = c.ordinal - (o.type = 'FN'); PARAMETER_MODE nvarchar(10) = CASE WHEN
NOT c.output THEN 'IN' WHEN c.name = '' THEN 'OUT' ELSE 'INOUT' END; IS_RESULT nvarchar(10) = CASE c.name WHEN ''
THEN 'YES' ELSE 'NO' END; PARAMETER_NAME sysname = c.name; $NAMED)",
     kParameters},
};

// Views outside the schemas of the system that SQL Server has and tsqlbox has not.
constexpr std::string_view kMissingViews =
    "sysaltfiles sysconfigures sysconstraints sysdepends sysfilegroups sysfiles sysforeignkeys sysindexkeys "
    "syslockinfo syslogins sysmembers sysmessages syspermissions sysprotects sysreferences sysservers";

// tempdb also shows the session's temporary tables, with negative ids and names that end in a number.
constexpr std::string_view kTemporaryObjects =
    R"((SELECT * FROM tempdb.tsqlbox_objects UNION ALL SELECT -id, iif(parent, name, printf('%!.116s%012d', name ||
replace(hex(zeroblob(58)), '0', '_'), id)), type, -parent, stored, keys, created, source FROM temp.tsqlbox_objects WHERE
name NOT LIKE '@%'))";
constexpr std::string_view kTemporaryColumns =
    R"((SELECT * FROM tempdb.tsqlbox_columns UNION ALL SELECT -object, ordinal, name, type, nullable, identity,
fallback, output, user_type, computed, persisted FROM temp.tsqlbox_columns))";

std::string databaseList(const Storage& storage) {
    const auto row = [](const std::string& name) { return "(" + quotedText(name) + ")"; };
    return "(SELECT column1 AS name, row_number() OVER () AS id FROM (VALUES " +
           commaList(storage.databases(), row) + "))";
}

// Query for the list of sessions ($S). A session that waits is blocked by one with a transaction, if any.
std::string sessionList(const Storage& storage) {
    constexpr std::chrono::seconds kLongestLook{1};  // between two looks at a lock
    const auto entries = storage.withSessions([](const auto& all) { return all; });
    const auto now = std::chrono::system_clock::now();
    const auto row = [&](const auto& session) {
        const auto& [id, entry] = session;
        const bool waits = entry.isRunning && now - entry.waited < kLongestLook;
        const double begin = std::chrono::duration<double>(entry.begin.time_since_epoch()).count();
        const std::string_view texts[] = {entry.client.host, entry.client.program, entry.client.login};
        const int numbers[] = {id, entry.isRunning, waits, databaseId(storage, entry.database).value_or(0),
                               entry.hasTransaction};
        return "(" + std::to_string(begin) + ", " + commaList(texts, quotedText) + ", " +
               commaList(numbers, [](int number) { return std::to_string(number); }) + ")";
    };
    return "(WITH s (begin, host, program, login, id, running, waits, db, holds) AS (VALUES " +
           commaList(entries, row) + R"() SELECT *, (SELECT ifnull(min(o.id), 0) FROM s o
WHERE s.waits AND o.holds AND o.db = s.db AND o.id <> s.id) AS blocker FROM s))";
}

// Query for the list of types ($T), each type of the system with its maximum size.
std::string typeList() {
    std::vector<std::string> rows;
    for (int id = 0; id <= static_cast<int>(TypeId::DateTimeOffset); ++id) {
        SqlType type = simpleType(static_cast<TypeId>(id));
        if (type.id == TypeId::Decimal) type.precision = type.scale = 38;
        if (hasLength(type.id)) type.length = isNational(type.id) ? 4000 : 8000;
        rows.push_back("(" + std::to_string(encodeType(type)) + ")");
    }
    return R"((SELECT column1 AS type, ts_type_base(column1) AS stored, 1 AS nullable, 0 AS object, '' AS kind FROM
(VALUES )" +
           commaList(rows) +
           R"() UNION ALL SELECT c.type, o.name, c.nullable, o.id, o.type FROM $o o LEFT JOIN $c c ON
c.object = o.id AND o.type = 'TYPE' WHERE o.type IN ('TYPE', 'TT')))";
}

}  // namespace

// The query still has the placeholders for the database.
SystemView queryOf(std::string_view columns, std::string_view source) {
    std::string text(columns), from(source);
    for (const auto& [mark, fragment] : kFragments)
        for (auto* part : {&text, &from}) replace_all(*part, mark, fragment);
    static const std::regex kNames = compiled(R"((\w+)_\* = (.\.name))");  // catalogue, schema and name
    text = std::regex_replace(text, kNames,
                              "$1_CATALOG sysname = $$d; $1_SCHEMA sysname = ts_schema_of($2); "
                              "$1_NAME sysname = ts_bare_name($2)");
    SystemView read;
    for (const std::string& item : listItems(text)) {
        const std::size_t type = item.find(' ') + 1, end = item.find(" = ");
        const std::string name = item.substr(0, type - 1);
        read.columns.push_back({{name, parseType(item.substr(type, end - type))}});
        read.sql += (read.sql.empty() ? "SELECT " : ", ") +
                    (end < item.size() ? item.substr(end + 3) : name) + " AS " + quotedName(name);
    }
    read.sql += " FROM " + from;
    return read;
}

std::string inDatabase(std::string sql, std::string_view sqliteSchema, std::string_view database,
                       const Storage& storage) {
    replace_all(sql, "$SCHEMAS", kSchemas);
    if (sql.find("$T") != std::string::npos) replace_all(sql, "$T", typeList());
    const bool temporary = sameWord(database, "tempdb");
    const std::string prefix = std::string(sqliteSchema) + ".";
    const auto textOf = [&](char mark) {
        if (mark == 'o') return temporary ? std::string(kTemporaryObjects) : prefix + "tsqlbox_objects";
        if (mark == 'c') return temporary ? std::string(kTemporaryColumns) : prefix + "tsqlbox_columns";
        if (mark == 'L' || mark == 'S') return mark == 'L' ? databaseList(storage) : sessionList(storage);
        if (mark == 'd' || mark == 's') return quotedText(mark == 'd' ? database : databaseKey(database));
        return mark == 'C' ? std::string(kCollationName) : prefix;
    };
    std::string text;  // may contain names that look like placeholders
    for (std::size_t at = 0; (at = sql.find('$', at)) != std::string::npos; at += text.size())
        sql.replace(at, 2, text = textOf(sql[at + 1]));
    return sql;
}

std::optional<SystemView> systemView(std::string_view schema, std::string_view name,
                                     std::string_view sqliteSchema, std::string_view database,
                                     const Storage& storage) {
    const bool legacy = schema.empty() || sameWord(schema, "dbo") || sameWord(schema, "sys");
    for (const auto& view : kViews) {
        if (!sameWord(view.name, name) || !(view.schema.empty() ? legacy : sameWord(view.schema, schema)) ||
            (view.name == "spt_values" && !sameWord(database, "master")))
            continue;
        SystemView found = queryOf(view.columns, view.from);
        found.sql = inDatabase(std::move(found.sql), sqliteSchema, database, storage);
        found.name = std::string(view.schema) + (view.schema.empty() ? "" : ".") + std::string(view.name);
        return found;
    }
    return std::nullopt;
}

bool isMissingView(std::string_view schema, std::string_view name) {
    if (sameWord(schema, "sys") || sameWord(schema, "INFORMATION_SCHEMA")) return true;
    return (schema.empty() || sameWord(schema, "dbo")) && hasWord(kMissingViews, lowerAscii(name));
}

std::optional<int> databaseId(const Storage& storage, std::string_view name) {
    const auto names = storage.databases();
    const auto found = std::ranges::find(names, databaseKey(name), databaseKey);
    return found == names.end() ? std::nullopt : std::optional(static_cast<int>(found - names.begin()) + 1);
}

}  // namespace tsql
