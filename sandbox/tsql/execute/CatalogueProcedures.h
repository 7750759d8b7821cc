// System procedures in T-SQL that describe a database, which ODBC and JDBC drivers call, or change its roles.
#pragma once

#include <string_view>

namespace tsql {

class Executor;
struct Frame;

// A procedure of the system. Its body is a function of Executor or, if that is null, T-SQL.
struct SystemProcedure {
    std::string_view name;
    std::string_view parameters;       // in T-SQL
    std::string_view text = "RETURN";  // @procedure is its name, @database that of the database
    int (Executor::*body)(const Frame& frame) = nullptr;
    int failed = 1;  // return value after an error in `body`
};

// $TABLE in their texts: refuses other databases, and completes the name of a temporary table.
inline constexpr std::string_view kOfTable =
    R"(IF @table_qualifier <> DB_NAME() BEGIN RAISERROR(15250, -1, -1) RETURN 1 END IF @table_name LIKE '#%' SET
@table_name = ISNULL(OBJECT_NAME(OBJECT_ID('tempdb..' + QUOTENAME(@table_name)), 2), @table_name))";
inline constexpr SystemProcedure kCatalogueProcedures[] = {
    // The types of SQL Server as ODBC describes them. Drivers read the largest length of a string and the
    // precision of a date from it. ODBC 3 numbers dates in another way than ODBC 2.
    {"sp_datatype_info", "@data_type int = 0, @ODBCVer tinyint = 2", R"(
SELECT TYPE_NAME = CAST(n AS sysname), DATA_TYPE = CAST(IIF(@ODBCVer = 3, t, t2) AS smallint), PRECISION = p,
LITERAL_PREFIX = CAST(CASE k WHEN 'N' THEN 'N''' WHEN 'C' THEN '''' WHEN 'B' THEN '0x' WHEN 'M' THEN '$' END AS
varchar(32)), LITERAL_SUFFIX = CAST(CASE WHEN k IN ('N', 'C') THEN '''' END AS varchar(32)), CREATE_PARAMS = CAST(par AS
varchar(32)), NULLABLE = CAST(IIF(auto = 1, 0, 1) AS smallint), CASE_SENSITIVE = CAST(0 AS smallint), SEARCHABLE =
CAST(s AS smallint), UNSIGNED_ATTRIBUTE = CAST(IIF(n = 'tinyint', 1, 0 * auto) AS smallint), MONEY = CAST(IIF(k = 'M',
1, 0) AS smallint), AUTO_INCREMENT = CAST(auto AS smallint), LOCAL_TYPE_NAME = CAST(n AS sysname), MINIMUM_SCALE =
CAST(CASE WHEN k = 'M' OR n = 'datetime' THEN hi WHEN n <> 'date' THEN 0 * hi END AS smallint), MAXIMUM_SCALE = CAST(hi
AS smallint), SQL_DATA_TYPE = CAST(IIF(t BETWEEN 91 AND 93, 9, t) AS smallint), SQL_DATETIME_SUB = CAST(CASE WHEN t
BETWEEN 91 AND 93 THEN t - 90 END AS smallint), NUM_PREC_RADIX = CAST(IIF(k = 'F', 2, 10 + 0 * auto) AS int),
INTERVAL_PRECISION = CAST(NULL AS smallint), USERTYPE = CAST(ut AS smallint) FROM (SELECT *, t2 = CASE t WHEN 91 THEN 9
WHEN 93 THEN 11 ELSE t END, auto = CASE WHEN n LIKE '%identity' THEN 1 WHEN k IN ('E', 'F', 'M') THEN 0 END FROM
sys.spt_datatype_info) x WHERE @data_type = 0 OR @data_type = IIF(@ODBCVer = 3, t, t2) ORDER BY 2, 12, 11, 20)"},
    {"sp_datatype_info_100", "@data_type int = 0, @ODBCVer tinyint = 2",
     "EXEC sp_datatype_info @data_type, @ODBCVer"},
    // One row for each line, the line end included, split after 255 characters.
    {"sp_helptext", "@objname nvarchar(776), @columnname sysname = NULL", R"(SET NOCOUNT ON
DECLARE @text nvarchar(max) = OBJECT_DEFINITION(OBJECT_ID(@objname)), @end int
DECLARE @lines TABLE (n int IDENTITY PRIMARY KEY, Text nvarchar(255))
IF @columnname > '' SET @text = (SELECT definition FROM sys.computed_columns WHERE object_id = OBJECT_ID(@objname) AND
name = @columnname)
IF OBJECT_ID(@objname) IS NULL BEGIN RAISERROR(15009, -1, -1, @objname, @database) RETURN 1 END
IF @text IS NULL BEGIN RAISERROR(15197, -1, -1, @objname) RETURN 1 END
WHILE DATALENGTH(@text) > 0
BEGIN SET @end = ISNULL(NULLIF(CHARINDEX(CHAR(10), LEFT(@text, 255)), 0), 255)
INSERT @lines SELECT LEFT(@text, @end) SET @text = STUFF(@text, 1, @end, '') END
SELECT Text FROM @lines ORDER BY n)"},
    {"sp_helpindex", "@objname nvarchar(776)", R"(
IF OBJECT_ID(@objname) IS NULL BEGIN RAISERROR(15009, -1, -1, @objname, @database) RETURN 1 END
SELECT index_name = i.name, index_description = CAST(IIF(i.type = 1, 'clustered', 'nonclustered') + IIF(i.is_unique = 1,
', unique', '') + CASE WHEN i.is_primary_key = 1 THEN ', primary key' WHEN i.is_unique_constraint = 1 THEN
', unique key' ELSE '' END + ' located on PRIMARY' AS varchar(210)), index_keys = CAST((SELECT STRING_AGG(c.name +
IIF(k.is_descending_key = 1, '(-)', ''), ', ') WITHIN GROUP (ORDER BY k.key_ordinal) FROM sys.index_columns k JOIN
sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id WHERE k.object_id = i.object_id AND k.index_id
= i.index_id) AS nvarchar(2078)) FROM sys.indexes i WHERE i.object_id = OBJECT_ID(@objname) ORDER BY 1)"},
    {"sp_who", "@loginame sysname = NULL",
     R"(IF @loginame NOT IN (SELECT name FROM sys.server_principals) AND ISNUMERIC(@loginame) = 0 AND @loginame <>
'active' BEGIN RAISERROR(15007, -1, -1, @loginame) RETURN 1 END
SELECT spid, ecid = CAST(0 AS smallint), status, loginame, hostname, blk = CAST(blocked AS char(5)), dbname =
DB_NAME(dbid), cmd = CAST(NULL AS nchar(16)), request_id = 0 FROM sysprocesses WHERE ISNULL(@loginame, loginame) IN
(loginame, CAST(spid AS varchar(6)), IIF(status = 'running', 'active', NULL)) ORDER BY 1)"},
    {"sp_addrolemember", "@rolename sysname, @membername sysname",
     R"(DECLARE @text nvarchar(600) = CONCAT('ALTER ROLE ', QUOTENAME(@rolename), ' ADD MEMBER ', QUOTENAME(@membername))
EXEC (@text) IF @@ERROR <> 0 RETURN 1)"},
    {"sp_droprolemember", "@rolename sysname, @membername sysname",
     R"(DECLARE @text nvarchar(600) = CONCAT('ALTER ROLE ', QUOTENAME(@rolename), ' DROP MEMBER ', QUOTENAME(@membername))
EXEC (@text) IF @@ERROR <> 0 RETURN 1)"},
    {"sp_databases", "",
     R"(SELECT DATABASE_NAME = name, DATABASE_SIZE = CAST(NULL AS int), REMARKS = CAST(NULL AS varchar(254)) FROM
sys.databases ORDER BY 1)"},
    // Also lists the databases, the schemas or the types of table if the other arguments are empty strings.
    {"sp_tables",
     "@table_name nvarchar(384) = NULL, @table_owner nvarchar(384) = NULL, @table_qualifier sysname = NULL, "
     "@table_type varchar(100) = NULL, @fUsePattern bit = 1",
     R"(IF @table_qualifier NOT IN ('', '%', DB_NAME()) BEGIN RAISERROR(15250, -1, -1) RETURN 1 END
SELECT TABLE_QUALIFIER = CAST(q AS sysname), TABLE_OWNER = CAST(o AS sysname), TABLE_NAME = CAST(n AS sysname),
TABLE_TYPE = CAST(t AS varchar(32)), REMARKS = CAST(NULL AS varchar(254)) FROM (SELECT DB_NAME(),
SCHEMA_NAME(schema_id), name, IIF(type = 'U', 'TABLE', 'VIEW'), 0 FROM sys.objects WHERE type IN ('U', 'V') UNION ALL
SELECT name, NULL, NULL, NULL, 1 FROM sys.databases UNION ALL SELECT NULL, name, NULL, NULL, 2 FROM sys.schemas UNION
ALL SELECT NULL, NULL, NULL, v, 3 FROM (VALUES ('SYSTEM TABLE'), ('TABLE'), ('VIEW')) k (v)) x (q, o, n, t, list) WHERE
list = CASE WHEN @table_qualifier = '%' AND @table_owner = '' AND @table_name = '' THEN 1 WHEN @table_qualifier = '' AND
@table_owner = '%' AND @table_name = '' THEN 2 WHEN @table_qualifier = '' AND @table_owner = '' AND @table_name = '' AND
@table_type = '%' THEN 3 ELSE 0 END AND (list > 0 OR (ISNULL(@table_name, n) = n OR @fUsePattern = 1 AND n LIKE
@table_name) AND (ISNULL(@table_owner, o) = o OR @fUsePattern = 1 AND o LIKE @table_owner) AND (@table_type IS NULL OR
CHARINDEX('''' + t + '''', @table_type) > 0)) ORDER BY 4, 1, 2, 3)"},
    {"sp_columns",
     "@table_name nvarchar(384), @table_owner nvarchar(384) = NULL, @table_qualifier sysname = NULL, "
     "@column_name nvarchar(384) = NULL, @ODBCVer int = 2, @fUsePattern bit = 1",
     R"($TABLE SELECT TABLE_QUALIFIER = DB_NAME(), TABLE_OWNER = SCHEMA_NAME(o.schema_id), TABLE_NAME = o.name,
COLUMN_NAME = c.name, c.DATA_TYPE, c.TYPE_NAME, c.PRECISION, c.LENGTH, c.SCALE, c.RADIX, NULLABLE = c.nullable, REMARKS
= CAST(NULL AS varchar(254)), COLUMN_DEF = (SELECT CAST(definition AS nvarchar(4000)) FROM sys.default_constraints d
WHERE d.parent_object_id = o.object_id AND d.parent_column_id = c.column_id), c.SQL_DATA_TYPE, c.SQL_DATETIME_SUB,
c.CHAR_OCTET_LENGTH, ORDINAL_POSITION = c.column_id, c.IS_NULLABLE, SS_DATA_TYPE = CAST(NULL AS tinyint) FROM
sys.objects o JOIN sys.spt_columns c ON c.object_id = o.object_id WHERE o.type IN ('U', 'V') AND c.odbc = IIF(@ODBCVer =
3, 3, 2) AND (o.name = @table_name OR @fUsePattern = 1 AND o.name LIKE @table_name) AND SCHEMA_NAME(o.schema_id) LIKE
ISNULL(@table_owner, '%') AND c.name LIKE ISNULL(@column_name, '%') ORDER BY 1, 2, 3, 17)"},
    {"sp_sproc_columns",
     "@procedure_name nvarchar(390) = '%', @procedure_owner nvarchar(384) = NULL, @procedure_qualifier "
     "sysname = NULL, @column_name nvarchar(384) = NULL, @ODBCVer int = 2, @fUsePattern bit = 1",
     R"(IF @procedure_qualifier <> DB_NAME() BEGIN RAISERROR(15250, -1, -1) RETURN 1 END
SELECT PROCEDURE_QUALIFIER = DB_NAME(), PROCEDURE_OWNER = SCHEMA_NAME(o.schema_id), PROCEDURE_NAME = CAST(o.name +
IIF(o.type = 'P', ';1', ';0') AS nvarchar(134)), COLUMN_NAME = c.name, COLUMN_TYPE = CAST(IIF(c.name = '@RETURN_VALUE',
5, 1 + c.output) AS smallint), c.DATA_TYPE, c.TYPE_NAME, c.PRECISION, c.LENGTH, c.SCALE, c.RADIX, NULLABLE = c.nullable,
REMARKS = CAST(NULL AS varchar(254)), COLUMN_DEF = CAST(NULL AS nvarchar(4000)), c.SQL_DATA_TYPE, c.SQL_DATETIME_SUB,
c.CHAR_OCTET_LENGTH, ORDINAL_POSITION = c.column_id - IIF(o.type = 'FN', 1, 0), c.IS_NULLABLE, SS_DATA_TYPE = CAST(NULL
AS tinyint) FROM sys.objects o JOIN sys.spt_columns c ON c.object_id = o.object_id WHERE o.type IN ('P', 'FN', 'IF') AND
c.odbc = IIF(@ODBCVer = 3, 3, 2) AND (o.name = @procedure_name OR @fUsePattern = 1 AND o.name LIKE @procedure_name) AND
SCHEMA_NAME(o.schema_id) LIKE ISNULL(@procedure_owner, '%') AND c.name LIKE ISNULL(@column_name, '%') ORDER BY 1, 2, 3,
18)"},
    // The columns that identify a row: those of the first unique index. No column has a version of the row.
    {"sp_special_columns",
     "@table_name sysname, @table_owner sysname = NULL, @table_qualifier sysname = NULL, @col_type char(1) = "
     "'R', @scope char(1) = 'T', @nullable char(1) = 'U', @ODBCVer int = 2",
     R"($TABLE SELECT SCOPE = CAST(IIF(@col_type = 'R', 0, NULL) AS smallint), COLUMN_NAME = c.name, c.DATA_TYPE,
c.TYPE_NAME, c.PRECISION, c.LENGTH, c.SCALE, PSEUDO_COLUMN = CAST(1 AS smallint) FROM sys.objects o JOIN sys.spt_columns
c ON c.object_id = o.object_id LEFT JOIN sys.index_columns k ON @col_type = 'R' AND k.object_id = o.object_id AND
k.column_id = c.column_id WHERE (@col_type = 'R' OR c.TYPE_NAME = 'timestamp') AND c.odbc = IIF(@ODBCVer = 3, 3, 2) AND
o.name = @table_name AND SCHEMA_NAME(o.schema_id) = ISNULL(@table_owner, SCHEMA_NAME(o.schema_id)) AND (@col_type = 'V'
OR k.index_id = (SELECT MIN(i.index_id) FROM sys.indexes i WHERE i.object_id = o.object_id AND i.is_unique = 1 AND
i.has_filter = 0 AND (@nullable <> 'O' OR NOT EXISTS (SELECT 1 FROM sys.index_columns n JOIN sys.columns m ON
m.object_id = n.object_id AND m.column_id = n.column_id WHERE n.object_id = i.object_id AND n.index_id = i.index_id AND
m.is_nullable = 1)))) ORDER BY k.key_ordinal)"},
    {"sp_pkeys", "@table_name sysname, @table_owner sysname = NULL, @table_qualifier sysname = NULL",
     R"($TABLE SELECT TABLE_QUALIFIER = DB_NAME(), TABLE_OWNER = SCHEMA_NAME(o.schema_id), TABLE_NAME = o.name,
COLUMN_NAME = COL_NAME (o.object_id, c.column_id), KEY_SEQ = CAST(c.key_ordinal AS smallint), PK_NAME = i.name FROM
sys.objects o JOIN sys.indexes i ON i.object_id = o.object_id JOIN sys.index_columns c ON c.object_id = i.object_id AND
c.index_id = i.index_id WHERE i.is_primary_key = 1 AND o.name = @table_name AND SCHEMA_NAME(o.schema_id) =
ISNULL(@table_owner, SCHEMA_NAME(o.schema_id)) ORDER BY 1, 2, 3, 5)"},
    {"sp_fkeys",
     "@pktable_name sysname = NULL, @pktable_owner sysname = NULL, @pktable_qualifier sysname = NULL, "
     "@fktable_name sysname = NULL, @fktable_owner sysname = NULL, @fktable_qualifier sysname = NULL",
     R"(IF @pktable_name IS NULL AND @fktable_name IS NULL BEGIN RAISERROR(15252, -1, -1) RETURN 1 END
IF @pktable_qualifier <> DB_NAME() OR @fktable_qualifier <> DB_NAME() BEGIN RAISERROR(15250, -1, -1) RETURN 1 END
SELECT PKTABLE_QUALIFIER = DB_NAME(), PKTABLE_OWNER = OBJECT_SCHEMA_NAME(r), PKTABLE_NAME = OBJECT_NAME(r),
PKCOLUMN_NAME = COL_NAME(r, c.referenced_column_id), FKTABLE_QUALIFIER = DB_NAME(), FKTABLE_OWNER =
OBJECT_SCHEMA_NAME(p), FKTABLE_NAME = OBJECT_NAME(p), FKCOLUMN_NAME = COL_NAME(p, c.parent_column_id), KEY_SEQ =
CAST(c.constraint_column_id AS smallint), UPDATE_RULE = CAST(IIF(u > 1, u, 1 - u) AS smallint), DELETE_RULE = CAST(IIF(d
> 1, d, 1 - d) AS smallint), FK_NAME = k.name, PK_NAME = (SELECT MIN(name) FROM sys.key_constraints WHERE
parent_object_id = r AND type = 'PK'), DEFERRABILITY = CAST(7 AS smallint) FROM (SELECT *, p = parent_object_id, r =
referenced_object_id, u = update_referential_action, d = delete_referential_action FROM sys.foreign_keys) k JOIN
sys.foreign_key_columns c ON c.constraint_object_id = k.object_id WHERE OBJECT_NAME(r) = ISNULL(@pktable_name,
OBJECT_NAME(r)) AND OBJECT_NAME(p) = ISNULL(@fktable_name, OBJECT_NAME(p)) AND OBJECT_SCHEMA_NAME(r) =
ISNULL(@pktable_owner, OBJECT_SCHEMA_NAME(r)) AND OBJECT_SCHEMA_NAME(p) = ISNULL(@fktable_owner, OBJECT_SCHEMA_NAME(p))
ORDER BY IIF(@pktable_name IS NULL, OBJECT_NAME(r), OBJECT_NAME(p)), 12, 9)"},
    {"sp_statistics",
     "@table_name sysname, @table_owner sysname = NULL, @table_qualifier sysname = NULL, @index_name sysname "
     "= '%', @is_unique char(1) = 'N', @accuracy char(1) = 'Q'",
     R"($TABLE SELECT TABLE_QUALIFIER = DB_NAME(), TABLE_OWNER = SCHEMA_NAME(o.schema_id), TABLE_NAME = o.name,
NON_UNIQUE = CAST(1 - i.is_unique AS smallint), INDEX_QUALIFIER = o.name, INDEX_NAME = i.name, TYPE = CAST(IIF(i.type =
1, 1, 3) AS smallint), SEQ_IN_INDEX = CAST(c.key_ordinal AS smallint), COLUMN_NAME = COL_NAME(o.object_id, c.column_id),
COLLATION = IIF(c.is_descending_key = 1, 'D', 'A'), CARDINALITY = CAST(NULL AS int), PAGES = CAST(NULL AS int),
FILTER_CONDITION = CAST(NULL AS varchar(128)) FROM sys.objects o JOIN sys.indexes i ON i.object_id = o.object_id JOIN
sys.index_columns c ON c.object_id = i.object_id AND c.index_id = i.index_id WHERE o.name = @table_name AND i.name LIKE
@index_name AND (@is_unique <> 'Y' OR i.is_unique = 1) AND SCHEMA_NAME(o.schema_id) = ISNULL(@table_owner,
SCHEMA_NAME(o.schema_id)) ORDER BY 4, 7, 6, 8)"},
    {"sp_stored_procedures",
     "@sp_name nvarchar(390) = NULL, @sp_owner nvarchar(384) = NULL, @sp_qualifier sysname = NULL, "
     "@fUsePattern bit = 1",
     R"(IF @sp_qualifier <> DB_NAME() BEGIN RAISERROR(15250, -1, -1) RETURN 1 END
SELECT PROCEDURE_QUALIFIER = DB_NAME(), PROCEDURE_OWNER = SCHEMA_NAME(schema_id), PROCEDURE_NAME = CAST(name + IIF(type
= 'P', ';1', ';0') AS nvarchar(134)), NUM_INPUT_PARAMS = -1, NUM_OUTPUT_PARAMS = -1, NUM_RESULT_SETS = -1, REMARKS =
CAST(NULL AS varchar(254)), PROCEDURE_TYPE = CAST(2 AS smallint) FROM sys.objects WHERE type IN ('P', 'FN', 'IF', 'TF')
AND (ISNULL(@sp_name, name) = name OR @fUsePattern = 1 AND name LIKE @sp_name) AND SCHEMA_NAME(schema_id) LIKE
ISNULL(@sp_owner, '%') ORDER BY 1, 2, 3)"},
};

}  // namespace tsql
