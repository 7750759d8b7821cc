DECLARE @x int = 5, @y decimal(5,2), @d datetime, @t varchar(20)
SET @x += 2
SET @y = @x / 3.0
SELECT @d = '20240229 13:14:15', @t = DATEADD(year, 1, @d)
SELECT @x, @y, @d, @t
IF @x IN (7, 8) AND NOT EXISTS (SELECT 1 WHERE 1 = 0) PRINT 'yes' ELSE PRINT 'no'
IF @x > 7 PRINT 'more' ELSE IF @x = 7 BEGIN PRINT 'equal' END
DECLARE @n int, @s varchar(100)
SELECT @n = 5 WHERE 1 = 0
PRINT ISNULL(CONVERT(varchar, @n), 'unset')
WHILE 1 = 1 BEGIN SET @n = ISNULL(@n, 0) + 1 IF @n = 3 CONTINUE IF @n > 4 BREAK PRINT @n END
SET @s = ''
SELECT @s = @s + name + ',' FROM (SELECT 'a' AS name UNION ALL SELECT 'b') q
PRINT @s
RETURN
PRINT 'not reached' --> - int? = 7 | - decimal(5,2)? = 2.33 | - datetime? = 2024-02-29 13:14:15.000 | - varchar(20)? = Feb 28 2025  1:14PM (1 rows) --> yes --> equal --> unset --> 1 --> 2 --> 4 --> a,b,
PRINT @s --> Msg 137, Level 15, State 2, Line 1: Must declare the scalar variable "@s".
CREATE TABLE t (id int)
BEGIN TRAN
INSERT t VALUES (1)
SAVE TRAN s1
INSERT t VALUES (2)
ROLLBACK TRAN s1
SELECT @@TRANCOUNT, COUNT(*) FROM t
BEGIN TRAN
COMMIT
COMMIT
SELECT @@TRANCOUNT, COUNT(*) FROM t
COMMIT
ROLLBACK
BEGIN TRAN DELETE t ROLLBACK
SELECT COUNT(*) FROM t
BEGIN TRAN
INSERT t VALUES (3)
SELECT CONVERT(int, 'x')
--> (1 changed) (1 changed) --> - int? = 1 | - int? = 1 (1 rows) --> - int? = 0 | - int? = 1 (1 rows)
--> Msg 3902, Level 16, State 1, Line 12: The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.
--> Msg 3903, Level 16, State 1, Line 13: The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION. (1 changed) --> - int? = 1 (1 rows) (1 changed)
--> Msg 245, Level 16, State 1, Line 18: Conversion failed when converting the varchar value 'x' to data type int.
-- the failed conversion ended the batch and the transaction
SELECT @@TRANCOUNT, COUNT(*) FROM t
SET XACT_ABORT ON
BEGIN TRAN
INSERT t VALUES (4)
SELECT 1/0 --> - int? = 0 | - int? = 1 (1 rows) (1 changed) --> Msg 8134, Level 16, State 1, Line 6: Divide by zero error encountered.
SELECT @@TRANCOUNT, COUNT(*) FROM t
SET NOCOUNT ON
INSERT t VALUES (5)
SELECT COUNT(*) FROM t --> - int? = 0 | - int? = 1 (1 rows) --> - int? = 2
-- a variable exists from the start of the batch and keeps its value in a loop
DECLARE @i int = 0
WHILE @i < 2 BEGIN DECLARE @x int; SET @x = ISNULL(@x, 0) + 1; SET @i += 1 END
IF 1 = 0 BEGIN DECLARE @y int = 5 END
SELECT @x, @y
UPDATE t SET id = id RAISERROR('seen', 10, 1) PRINT @@ROWCOUNT
UPDATE t SET id = id DECLARE @z int = 1 PRINT @@ROWCOUNT
UPDATE t SET id = id WHILE @@ROWCOUNT > 9 PRINT 'x' PRINT @@ROWCOUNT
UPDATE t SET id = id IF 1 = 0 PRINT 'x' PRINT @@ROWCOUNT --> - int? = 2 | - int? = NULL --> seen --> 0 --> 1 --> 0 --> 0
PRINT 'x' THROW 50001, 'direct', 7 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'THROW'.
PRINT 'x' WITH c AS (SELECT 1 AS a) SELECT a FROM c --> Msg 319, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces clause or a change tracking context clause, the previous statement must be terminated with a semicolon.
IF 1 = 1 THROW 50001, 'direct', 7 --> Msg 50001, Level 16, State 7, Line 1: direct
RETURN 1 --> Msg 178, Level 15, State 1, Line 1: A RETURN statement with a return value cannot be used in this context.
BEGIN END --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'END'.
RAISERROR('a' + 'b', 16, 1) --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '+'.
CREATE PROCEDURE empty_status AS RETURN NULL -->
DECLARE @s int = 9 EXEC @s = empty_status PRINT @s --> Msg 282, Level 10, State 1, Line 1, Procedure empty_status: The 'empty_status' procedure attempted to return a status of NULL, which is not allowed. A status of 0 will be returned instead. --> 0
-- a statement that is not supported ends its batch; an empty procedure is valid
WHILE 1 = 1 EXEC sp_help --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support sp_help.
CREATE PROCEDURE nothing AS -->
DECLARE @r int EXEC @r = nothing SELECT @r r --> r int? = 0
SET NOCOUNT, XACT_ABORT ON
SELECT @@OPTIONS o
SET NOCOUNT, XACT_ABORT OFF
SELECT @@OPTIONS o --> o int? = 22392 --> o int? = 5496 (1 rows)
CREATE TABLE counted (id int IDENTITY, name sysname, other sysname NULL) INSERT counted (name) VALUES ('a') --> (1 changed)
SELECT SCOPE_IDENTITY() s --> s decimal(38,0)? = 1 (1 rows)
INSERT counted (name) VALUES (NULL) --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'name', table 'master.dbo.counted'; column does not allow nulls. INSERT fails. (3621)
SELECT CAST(0x8041 AS varchar(9)) a, CAST('€A' AS varbinary(9)) b, CAST(CHAR(128) AS varbinary(9)) c, ASCII('€') d --> a varchar(9)? = €A | b varbinary(9)? = 0x8041 | c varbinary(9)? = 0x80 | d int? = 128 (1 rows)
SELECT 1 n WHERE 'a[b' LIKE 'a[[]b' AND NOT ('a[b' LIKE 'a[b' OR 'a' LIKE '[a' OR 'a[' LIKE '%[') --> n int = 1 (1 rows)
CREATE TABLE looked (id int)
SET PARSEONLY ON -->
INSERT looked VALUES (1) SELECT nothing FROM looked PRINT 'x' -->
INSERT looked VALUES (1) SELECT FROM looked --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'FROM'.
SET PARSEONLY OFF SET NOEXEC ON INSERT looked VALUES (2) -->
INSERT looked VALUES (1) SELECT nothing FROM looked --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nothing'.
DECLARE @n int = 1 INSERT looked VALUES (@n) PRINT 'x' -->
SET NOEXEC OFF SELECT COUNT(*) FROM looked DROP TABLE looked --> - int? = 0 (1 rows)
DECLARE @i int = 0
again: SET @i += 1
IF @i < 3 GOTO again
PRINT @i
WHILE 1 = 1 BEGIN
  WHILE @i < 10 BEGIN SET @i += 1 IF @i = 5 GOTO out END
  PRINT 'not reached'
END
out:
PRINT @i
BEGIN TRY SELECT 1/0 END TRY
BEGIN CATCH PRINT ERROR_NUMBER() GOTO Finish END CATCH
PRINT 'not reached'
[finish]: PRINT 'end' --> 3 --> 5 --> - int? (0 rows) --> 8134 --> end
CREATE PROCEDURE GotoSteps @n int AS
BEGIN
  IF @n > 1 GOTO Failed
  DECLARE @none int SELECT @none = COUNT(*) FROM sys.tables
  Last: RETURN
  Failed: RETURN 1
END -->
DECLARE @a int, @b int
EXEC @a = GotoSteps 2
EXEC @b = GotoSteps 1
SELECT @a, @b --> - int? = 1 | - int? = 0 (1 rows)
GOTO nowhere --> Msg 133, Level 15, State 1, Line 1: A GOTO statement references the label 'nowhere' but the label has not been declared.
a: PRINT 1
A: PRINT 2 --> Msg 132, Level 15, State 1, Line 2: The label 'A' has already been declared. Label names must be unique within a query batch or stored procedure.
GOTO inside
IF 1 = 1 BEGIN inside: PRINT 'x' END --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support GOTO into a block.
GOTO inside;
BEGIN PRINT 'skipped' END
inside: -->
EXEC ('GOTO x; x: PRINT ''dynamic''') --> dynamic
CREATE FUNCTION GotoTwice(@n int) RETURNS int AS BEGIN
 again: SET @n = @n * 2
 IF @n < 100 GOTO again
 RETURN @n
END -->
SELECT dbo.GotoTwice(3) --> - int? = 192 (1 rows)
