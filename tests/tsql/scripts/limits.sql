-- last value of a type, and the value beyond it
SELECT CAST(255 AS tinyint) a, CAST(0 AS tinyint) b, CAST(-32768 AS smallint) c, CAST(32767 AS smallint) d, CAST(-2147483648 AS int) e, CAST(922337203685477.5807 AS money) f, CAST(-214748.3648 AS smallmoney) g, CAST('1753-01-01' AS datetime) h, CAST('9999-12-31 23:59:59.997' AS datetime) i, CAST('2079-06-06 23:59' AS smalldatetime) j, CAST('1900-01-01' AS smalldatetime) k --> a tinyint? = 255 | b tinyint? = 0 | c smallint? = -32768 | d smallint? = 32767 | e int? = -2147483648 | f money? = 922337203685477.5807 | g smallmoney? = -214748.3648 | h datetime? = 1753-01-01 00:00:00.000 | i datetime? = 9999-12-31 23:59:59.997 | j smalldatetime? = 2079-06-06 23:59:00 | k smalldatetime? = 1900-01-01 00:00:00 (1 rows)
SELECT TRY_CAST(256 AS tinyint) a, TRY_CAST(-1 AS tinyint) b, TRY_CAST(-32769 AS smallint) c, TRY_CAST(32768 AS smallint) d, TRY_CAST(-2147483649 AS int) e, TRY_CAST(922337203685477.5808 AS money) f, TRY_CAST(214748.3648 AS smallmoney) g, TRY_CAST('1752-12-31' AS datetime) h, TRY_CAST('9999-12-31 23:59:59.999' AS datetime) i, TRY_CAST('2079-06-06 23:59:30' AS smalldatetime) j, TRY_CAST('1899-12-31' AS smalldatetime) k --> a tinyint? = NULL | b tinyint? = NULL | c smallint? = NULL | d smallint? = NULL | e int? = NULL | f money? = NULL | g smallmoney? = NULL | h datetime? = NULL | i datetime? = NULL | j smalldatetime? = NULL | k smalldatetime? = NULL (1 rows)
DECLARE @a varchar(8000), @b nvarchar(4000), @c varbinary(8000), @d decimal(38,38), @e time(7) -->
DECLARE @a nvarchar(4001) --> Msg 131, Level 15, State 1, Line 1: The size (4001) given to the type 'nvarchar' exceeds the maximum allowed for any data type (4000).
DECLARE @a varbinary(8001) --> Msg 131, Level 15, State 1, Line 1: The size (8001) given to the type 'varbinary' exceeds the maximum allowed for any data type (8000).
DECLARE @a time(8) --> Msg 1002, Level 15, State 1, Line 1: Line 1: Specified scale 8 is invalid.
DECLARE @a varchar(0) --> Msg 1001, Level 15, State 1, Line 1: Line 1: Length or precision specification 0 is invalid.
SELECT DATALENGTH(SPACE(8000)) b, DATALENGTH(SPACE(8001)) c, LEN(QUOTENAME(REPLICATE('a', 128))) d, LEN(STR(1, 8000)) e, STR(1, 8001) f --> b int? = 8000 | c int? = 8000 | d int? = 130 | e int? = 8000 | f varchar(8000)? = NULL (1 rows)
-- names
DECLARE @s nvarchar(max) = N'CREATE TABLE ' + REPLICATE(N'x', 128) + N' (i int)' EXEC (@s)
SELECT LEN(name) FROM sys.tables --> - int? = 128 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT 1 AS ' + REPLICATE(N'x', 129) EXEC (@s) --> Msg 103, Level 15, State 1, Line 1: The identifier that starts with 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx' is too long. Maximum length is 128.
-- messages
RAISERROR('state', 16, 256) --> Msg 50000, Level 16, State 255, Line 2: state
RAISERROR('logged', 19, 1) WITH LOG PRINT 'continues' --> Msg 50000, Level 19, State 1, Line 1: logged --> continues
-- nesting
CREATE PROCEDURE down @n int AS IF @n = 1 PRINT @@NESTLEVEL ELSE BEGIN SET @n -= 1 EXEC down @n END --> Msg 2007, Level 0, State 1, Line 2, Procedure down: The module 'down' depends on the missing object 'down'. The module will still be created; however, it cannot run successfully until the object exists.
EXEC down 32 --> 32
EXEC down 33 --> Msg 217, Level 16, State 1, Line 2, Procedure down: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
DECLARE @s nvarchar(max) = N'SELECT ' + REPLICATE(CAST(N'(' AS nvarchar(max)), 147) + N'1' + REPLICATE(CAST(N')' AS nvarchar(max)), 147) EXEC (@s) --> - int = 1 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT ' + REPLICATE(CAST(N'(' AS nvarchar(max)), 148) + N'1' + REPLICATE(CAST(N')' AS nvarchar(max)), 148) EXEC (@s) --> Msg 191, Level 15, State 1, Line 1: Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.
DECLARE @s nvarchar(max) = N'SELECT 1' + REPLICATE(CAST(N' + 1' AS nvarchar(max)), 400) EXEC (@s) --> - int? = 401 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT 1' + REPLICATE(CAST(N' + 1' AS nvarchar(max)), 401) EXEC (@s) --> Msg 191, Level 15, State 1, Line 1: Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.
DECLARE @s nvarchar(max) = N'SELECT ' + REPLICATE(CAST(N'ABS(' AS nvarchar(max)), 30) + N'1' + REPLICATE(N')', 30) EXEC (@s) --> - int? = 1 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT ' + REPLICATE(CAST(N'ABS(' AS nvarchar(max)), 31) + N'1' + REPLICATE(N')', 31) EXEC (@s) --> Msg 191, Level 15, State 1, Line 1: Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.
-- rows and arguments
CREATE TABLE many (i int) -->
DECLARE @s nvarchar(max) = N'INSERT many VALUES (1)' + REPLICATE(CAST(N',(1)' AS nvarchar(max)), 999) EXEC (@s) --> (1000 changed)
DECLARE @s nvarchar(max) = N'SELECT COUNT(*), SUM(a) FROM (VALUES (0)' + REPLICATE(CAST(N',(1)' AS nvarchar(max)), 1000) EXEC (@s + N') v (a)') --> - int? = 1001 | - int? = 1000 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT LEN(CONCAT(1' + REPLICATE(CAST(N',1' AS nvarchar(max)), 253) + N'))' EXEC (@s) --> - int? = 254 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT CONCAT(1' + REPLICATE(CAST(N',1' AS nvarchar(max)), 254) + N')' EXEC (@s) --> Msg 189, Level 15, State 1, Line 1: The concat function requires 2 to 254 arguments.
DECLARE @s nvarchar(max) = N'SELECT COUNT(*) FROM (SELECT i FROM many' + REPLICATE(CAST(N' UNION ALL SELECT i FROM many' AS nvarchar(max)), 254) + N') q' EXEC (@s) --> - int? = 255000 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT COUNT(*) FROM (SELECT i FROM many' + REPLICATE(CAST(N' UNION ALL SELECT i FROM many' AS nvarchar(max)), 255) + N') q' EXEC (@s) --> Msg 106, Level 15, State 1, Line 1: Too many table names in the query. The maximum allowable is 256.
DECLARE @s nvarchar(max) = N'SELECT 1 FROM (SELECT 1 AS a) t', @i int = 1 WHILE @i < 64 SELECT @s += N', (SELECT 1 AS a) t' + CAST(@i AS nvarchar(9)), @i += 1 EXEC (@s) --> - int = 1 (1 rows)
DECLARE @s nvarchar(max) = N'SELECT 1 FROM (SELECT 1 AS a) t', @i int = 1 WHILE @i < 65 SELECT @s += N', (SELECT 1 AS a) t' + CAST(@i AS nvarchar(9)), @i += 1 EXEC (@s) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox could not run the statement: at most 64 tables in a join.
-- lines of sp_helptext
DECLARE @s nvarchar(max) = N'CREATE PROCEDURE wide AS PRINT ''' + REPLICATE(N'x', 300) + N'''' EXEC (@s)
CREATE TABLE #text (t nvarchar(max))
INSERT #text EXEC sp_helptext 'wide'
SELECT LEN(t) FROM #text --> (2 changed) --> - bigint? = 255; 78 (2 rows)
-- valid statements that are not supported say so
SELECT %%physloc%% FROM sys.tables --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support %%PHYSLOC%%.
SELECT COUNT(*) FROM sys.tables GROUP BY ALL name --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support GROUP BY ALL.
DECLARE @x xml SET @x.modify('delete /a') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support .MODIFY.
UPDATE t SET c.WRITE('a', 0, 1) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support .WRITE.
INSERT OPENQUERY(s, 'x') VALUES (1) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OPENQUERY.
TRUNCATE TABLE t WITH (PARTITIONS (1)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WITH ( PARTITIONS.
CREATE TABLE t (a int, INDEX i CLUSTERED COLUMNSTORE) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support COLUMNSTORE.
BEGIN MOVE CONVERSATION 'x' TO 'y' END --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support MOVE CONVERSATION.
SELECT GETDATE() AT TIME ZONE 'UTC' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support AT TIME ZONE.
SELECT {fn NOW()} --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support an ODBC escape sequence such as {fn ...}.
SELECT * FROM sys.tables AS x TABLESAMPLE (1 PERCENT) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TABLESAMPLE.
SELECT $IDENTITY FROM sys.tables --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support $IDENTITY.
SELECT TRIM(BOTH 'x' FROM 'xax') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TRIM ( BOTH.
CREATE TABLE edges (a int) AS EDGE --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support AS EDGE.
SELECT 1 AS node edge --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'edge'.
DECLARE @t TABLE (n int) DELETE @t OUTPUT deleted.n INTO @t OUTPUT deleted.n --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OUTPUT INTO together with OUTPUT.
