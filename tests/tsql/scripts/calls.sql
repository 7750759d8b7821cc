CREATE PROCEDURE add_up @a int, @b int = 1, @sum int = NULL OUTPUT AS
SET @sum = @a + @b
RETURN @sum -->
DECLARE @p nvarchar(60), @r int, @s int
SET @p = N'add_up'
EXEC @r = @p 2, @sum = @s OUTPUT
SELECT @r, @s
SET @p = N'master.dbo.[add_up]'
EXEC @p @a = 1, @b = 2
EXEC ..add_up 1
EXEC add_up 1, @s OUTPUT
SET @p = N'nosuch'
EXEC @p
EXEC @r = sp_executesql N'SET @o = @i * 2', N'@i int, @o int OUTPUT', @i = 21, @o = @s OUTPUT
SELECT @r, @s
EXEC @r = sp_executesql @stmt = N'PRINT ''plain'''
SELECT @r
SET @p = 'sp_executesql'
EXEC @p N'PRINT @x', N'@x int', 7
DECLARE @t nvarchar(100)
SET @t = 'a'
EXEC ('PRINT ''' + @t + '''; EXEC (''PRINT @@NESTLEVEL'')')
EXEC sp_executesql N'PRINT @@NESTLEVEL'
--> - int? = 3 | - int? = 3 (1 rows)
--> Msg 8162, Level 16, State 2, Line 0, Procedure add_up: The formal parameter "@b" was not declared as an OUTPUT parameter, but the actual parameter passed in requested output.
--> Msg 2812, Level 16, State 62, Line 10: Could not find stored procedure 'nosuch'. --> - int? = 0 | - int? = 42 (1 rows) --> plain --> - int? = 0 (1 rows) --> 7 --> a --> 2 --> 2
CREATE OR ALTER PROCEDURE add_up AS
PRINT 'changed' -->
add_up
EXEC sp_helptext 'dbo.add_up'
EXEC sp_helptext 'nosuch'
CREATE TABLE plain (x int)
EXEC sp_helptext plain
EXEC sp_nosuch
DROP PROCEDURE add_up, add_up2
--> changed --> Text nvarchar(255)? = CREATE OR ALTER PROCEDURE add_up AS --> ; PRINT 'changed' --> 
--> Msg 15009, Level 16, State 1, Line 6, Procedure sp_helptext: The object 'nosuch' does not exist in database 'master' or is invalid for this operation.
--> Msg 15197, Level 16, State 1, Line 7, Procedure sp_helptext: There is no text for object 'plain'. --> Msg 2812, Level 16, State 62, Line 6: Could not find stored procedure 'sp_nosuch'.
--> Msg 3701, Level 11, State 5, Line 7: Cannot drop the procedure 'add_up2', because it does not exist or you do not have permission.
DECLARE @a int, @b int, @c int, @d int, @e int, @f int, @g int
EXEC @a = sp_getapplock 'job', 'Exclusive'
EXEC @b = sp_getapplock 'job', 'Everything', 'Session'
EXEC @c = sp_getapplock @Resource = 'job', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = 0
EXEC @d = sp_getapplock 'job', 'Shared', 'Session', 0
EXEC @e = sp_releaseapplock 'job', 'Session'
EXEC @f = sp_releaseapplock 'job', 'Session'
EXEC @g = sp_releaseapplock 'job', 'Session'
SELECT @a, @b, @c, @d, @e, @f, @g
--> Msg 3918, Level 16, State 1, Line 2: The statement or function must be executed in the context of a user transaction.
--> Msg 1225, Level 16, State 1, Line 3: An invalid application lock mode was passed to sp_getapplock.
--> Msg 1223, Level 16, State 1, Line 8: Cannot release the application lock (Database Principal: 'public', Resource: 'job') because it is not currently held.
--> - int? = -999 | - int? = -999 | - int? = 0 | - int? = 0 | - int? = 0 | - int? = 0 | - int? = -999 (1 rows)
-- arguments that do not match the parameters
CREATE PROCEDURE fit @a int, @b varchar(9) = 'b' AS SELECT @a, @b -->
CREATE PROCEDURE takes_none AS RETURN -->
EXEC fit @a = 1, @a = 2
EXEC takes_none 1
DECLARE @v varchar(9) = 'SELECT 1', @r int
EXEC fit 1, @v OUTPUT
EXEC sp_executesql @v
EXEC sp_executesql N'SELECT @x', N'@x int'
EXEC @r = sp_executesql N'SELECT 1/0'
PRINT @r
EXEC ('SELECT FROM')
EXEC fit 'one'
PRINT 'not reached'
--> Msg 8143, Level 16, State 1, Line 0, Procedure fit: Parameter '@a' was supplied multiple times.
--> Msg 8146, Level 16, State 2, Line 0, Procedure takes_none: Procedure takes_none has no parameters and arguments were supplied.
--> Msg 8162, Level 16, State 2, Line 0, Procedure fit: The formal parameter "@b" was not declared as an OUTPUT parameter, but the actual parameter passed in requested output.
--> Msg 214, Level 16, State 2, Line 5: Procedure expects parameter '@statement' of type 'ntext/nchar/nvarchar'.
--> Msg 8178, Level 16, State 1, Line 6: The parameterized query '(@x int)SELECT @x' expects the parameter '@x', which was not supplied.
--> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered. --> 8134 --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'FROM'.
--> Msg 8114, Level 16, State 5, Line 0, Procedure fit: Error converting data type varchar to int.
EXEC fit @a = 1, 'b' --> Msg 119, Level 15, State 1, Line 1: Must pass parameter number 2 and subsequent parameters as '@name = value'. After the form '@name = value' has been used, all subsequent parameters must be passed in the form '@name = value'.
EXEC fit 1, 'b' OUTPUT --> Msg 179, Level 15, State 1, Line 1: Cannot use the OUTPUT option when passing a constant to a stored procedure.
EXEC fit 1 + 1 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '+'.
EXEC ('SELECT ' + QUOTENAME('a')) --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'QUOTENAME'.
CREATE TABLE #rows (a int)
INSERT #rows EXEC ('ROLLBACK')
INSERT #rows EXEC ('INSERT #rows EXEC (''SELECT 1'')')
BEGIN TRAN INSERT #rows EXEC ('ROLLBACK') ROLLBACK
INSERT #rows EXEC ('COMMIT')
INSERT #rows EXEC ('SELECT @@TRANCOUNT BEGIN TRAN COMMIT DECLARE @t TABLE (a int), @u TABLE (a int) INSERT @t OUTPUT inserted.a INTO @u VALUES (5) SELECT a FROM @u')
INSERT #rows EXEC ('CREATE TABLE undone (a int) SELECT 1, 2')
--> Msg 3915, Level 16, State 0, Line 1: Cannot use the ROLLBACK statement within an INSERT-EXEC statement. (0 changed)
--> Msg 8164, Level 16, State 1, Line 1: An INSERT EXEC statement cannot be nested. (0 changed)
--> Msg 3915, Level 16, State 0, Line 1: Cannot use the ROLLBACK statement within an INSERT-EXEC statement. (0 changed)
--> Msg 3916, Level 16, State 0, Line 1: Cannot use the COMMIT statement within an INSERT-EXEC statement unless BEGIN TRANSACTION is used first. (0 changed) (2 changed)
--> Msg 213, Level 16, State 7, Line 7: Column name or number of supplied values does not match table definition.
SELECT a, OBJECT_ID('undone'), @@TRANCOUNT FROM #rows --> a int? | - int? | - int? = 1 | NULL | 0; 5 | NULL | 0 (2 rows)
CREATE PROCEDURE seven AS SELECT 1 UNION SELECT 2 RETURN 7 -->
EXEC seven SELECT @@ROWCOUNT --> - int = 1; 2 (2 rows) --> - int? = 1 (1 rows)
CREATE PROCEDURE who_am_i AS PRINT OBJECT_NAME(@@PROCID) -->
EXEC who_am_i
PRINT @@PROCID --> who_am_i --> 0
-- SQL text runs in the database whose sp_executesql is called
CREATE DATABASE texts
DECLARE @there nvarchar(100) = N'texts.sys.sp_executesql'
EXEC @there N'CREATE TABLE t (i int)'
EXEC texts..sp_executesql N'SELECT DB_NAME(), COUNT(*) FROM t WHERE i = @i', N'@i int', 1
EXEC texts.dbo.sp_executesql N'SELECT OBJECT_NAME(OBJECT_ID(''t''))'
SELECT DB_NAME(), OBJECT_ID('t')
EXEC nowhere..sp_executesql N'SELECT 1'
DECLARE @text nvarchar(50) = N'SELECT 1'
EXEC @text
SET @text = N'sp_helptext nothing'
EXEC @text
--> - nvarchar(128)? = texts | - int? = 0 (1 rows) --> - nvarchar(128)? = t (1 rows) --> - nvarchar(128)? = master | - int? = NULL (1 rows)
--> Msg 2812, Level 16, State 62, Line 8: Could not find stored procedure 'nowhere..sp_executesql'. --> Msg 2812, Level 16, State 62, Line 10: Could not find stored procedure 'SELECT 1'.
--> Msg 2812, Level 16, State 62, Line 12: Could not find stored procedure 'sp_helptext nothing'.
-- types as drivers ask for them
EXEC sp_datatype_info 12, 3 --> TYPE_NAME nvarchar(128)? = varchar | DATA_TYPE smallint? = 12 | PRECISION int? = 8000 | LITERAL_PREFIX varchar(32)? = ' | LITERAL_SUFFIX varchar(32)? = ' | CREATE_PARAMS varchar(32)? = max length | NULLABLE smallint? = 1 | CASE_SENSITIVE smallint? = 0 | SEARCHABLE smallint? = 3 | UNSIGNED_ATTRIBUTE smallint? = NULL | MONEY smallint? = 0 | AUTO_INCREMENT smallint? = NULL | LOCAL_TYPE_NAME nvarchar(128)? = varchar | MINIMUM_SCALE smallint? = NULL | MAXIMUM_SCALE smallint? = NULL | SQL_DATA_TYPE smallint? = 12 | SQL_DATETIME_SUB smallint? = NULL | NUM_PREC_RADIX int? = NULL | INTERVAL_PRECISION smallint? = NULL | USERTYPE smallint? = 2 (1 rows)
EXEC sys.sp_datatype_info_100 @data_type = 9 --> TYPE_NAME nvarchar(128)? = date | DATA_TYPE smallint? = 9 | PRECISION int? = 10 | LITERAL_PREFIX varchar(32)? = ' | LITERAL_SUFFIX varchar(32)? = ' | CREATE_PARAMS varchar(32)? = NULL | NULLABLE smallint? = 1 | CASE_SENSITIVE smallint? = 0 | SEARCHABLE smallint? = 3 | UNSIGNED_ATTRIBUTE smallint? = NULL | MONEY smallint? = 0 | AUTO_INCREMENT smallint? = NULL | LOCAL_TYPE_NAME nvarchar(128)? = date | MINIMUM_SCALE smallint? = NULL | MAXIMUM_SCALE smallint? = 0 | SQL_DATA_TYPE smallint? = 9 | SQL_DATETIME_SUB smallint? = 1 | NUM_PREC_RADIX int? = NULL | INTERVAL_PRECISION smallint? = NULL | USERTYPE smallint? = 0 (1 rows)
-- prepared statements
DECLARE @h int = 7, @other int
EXEC sp_prepare @h OUTPUT, N'@a int, @b int OUTPUT', N'SET @b = @a + 1 SELECT @a', 1
EXEC sp_prepare @other OUTPUT, NULL, N'SELECT 1'
DECLARE @b int
EXEC sp_execute @h, 2, @b OUTPUT
PRINT @b
EXEC sp_execute @h, @b = @b OUTPUT, @a = 5
PRINT @b
EXEC sp_execute @other
EXEC sp_execute @h
DECLARE @again int = @h
EXEC sp_prepexec @h OUTPUT, N'@c nvarchar(10)', N'SELECT @c', N'new'
EXEC sp_execute @h, N'newer'
EXEC sp_execute @again, 2
EXEC sp_unprepare @h
EXEC sp_execute @h
EXEC sp_unprepare @h
EXEC sp_execute NULL
EXEC sp_execute @other, 'x', 1
--> - int? (0 rows) --> - int? = 2 (1 rows) --> 3 --> - int? = 5 (1 rows) --> 6 --> - int = 1 (1 rows)
--> Msg 8178, Level 16, State 1, Line 11: The parameterized query '(@a int, @b int OUTPUT)SET @b = @a + 1 SELECT @a' expects the parameter '@a', which was not supplied.
--> - nvarchar(10)? = new (1 rows) --> - nvarchar(10)? = newer (1 rows) --> Msg 8179, Level 16, State 1, Line 15: Could not find prepared statement with handle 1.
--> Msg 8179, Level 16, State 1, Line 17: Could not find prepared statement with handle 3. --> Msg 8179, Level 16, State 1, Line 19: Could not find prepared statement with handle 0.
--> - int = 1 (1 rows)
DECLARE @h int
EXEC sp_prepare @h OUTPUT, NULL
EXEC sp_prepare @h OUTPUT, NULL, 'SELECT 1'
EXEC sp_prepare @h OUTPUT, NULL, N'SELECT 1 FROM
WHERE', 1
EXEC sp_prepare @h OUTPUT, N'@a int', N'SELECT @a, x FROM nowhere', 1
EXEC sp_execute @h, 1
EXEC sp_prepare @h OUTPUT, N'@a int', N'PRINT @a SELECT x FROM nowhere'
EXEC sp_execute @h, 1
EXEC sp_prepare NULL, NULL, N'SELECT 1'
EXEC sp_prepexec @h
--> Msg 201, Level 16, State 10, Line 2: Procedure or function 'sp_prepare' expects parameter '@stmt', which was not supplied.
--> Msg 214, Level 16, State 2, Line 3: Procedure expects parameter '@stmt' of type 'ntext/nchar/nvarchar'. --> Msg 156, Level 15, State 1, Line 2: Incorrect syntax near the keyword 'WHERE'.
--> Msg 8180, Level 16, State 1, Line 4: Statement(s) could not be prepared. --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nowhere'.
--> Msg 8180, Level 16, State 1, Line 6: Statement(s) could not be prepared. --> Msg 8179, Level 16, State 1, Line 7: Could not find prepared statement with handle 0. --> 1
--> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nowhere'. --> Msg 201, Level 16, State 10, Line 11: Procedure or function 'sp_prepexec' expects parameter '@stmt', which was not supplied.
EXEC sp_executesql N'PRINT @a', N'@a int, -- first
@b int', 1, 2
EXEC sp_executesql N'PRINT @a RETURN 1', N'@a int', 1 --> 1 --> Msg 178, Level 15, State 1, Line 1: A RETURN statement with a return value cannot be used in this context.
