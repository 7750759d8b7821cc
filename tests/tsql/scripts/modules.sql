CREATE PROCEDURE p @a int, @b varchar(10) = 'def', @o int = NULL OUTPUT AS
SELECT @a, @b
SET @o = @a * 2
RETURN 5 -->
DECLARE @r int, @out int
EXEC @r = p 21, @o = @out OUTPUT
SELECT @r, @out
EXEC p
EXEC p @zz = 1, @a = 1
EXEC p 1, 2, 3, 4
CREATE TABLE #r (a int, b varchar(10))
INSERT #r EXEC p 3
SELECT * FROM #r
EXEC('SELECT 1 AS one PRINT ''dyn''')
EXEC sp_executesql N'SELECT @x + 1', N'@x int', @x = 4
--> - int? = 21 | - varchar(10)? = def (1 rows) --> - int? = 5 | - int? = 42 (1 rows)
--> Msg 201, Level 16, State 4, Line 0, Procedure p: Procedure or function 'p' expects parameter '@a', which was not supplied.
--> Msg 8145, Level 16, State 1, Line 0, Procedure p: @zz is not a parameter for procedure p.
--> Msg 8144, Level 16, State 2, Line 0, Procedure p: Procedure or function p has too many arguments specified. (1 changed) --> a int? = 3 | b varchar(10)? = def (1 rows) --> one int = 1 (1 rows)
--> dyn --> - int? = 5 (1 rows)
ALTER PROCEDURE p AS PRINT 'altered' -->
p --> altered
CREATE PROCEDURE p AS PRINT 'again' --> Msg 2714, Level 16, State 3, Line 1, Procedure p: There is already an object named 'p' in the database.
CREATE FUNCTION dbo.fac (@n int) RETURNS int AS BEGIN IF @n <= 1 RETURN 1 RETURN @n * dbo.fac(@n - 1) END -->
SELECT dbo.fac(5), dbo.fac(id) FROM (SELECT 3 AS id UNION ALL SELECT 4) x --> - int? | - int? = 120 | 6; 120 | 24 (2 rows)
SELECT dbo.fac(40) --> Msg 217, Level 16, State 1, Line 1: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
SELECT dbo.fac(13)
SELECT dbo.fac(1, 2)
--> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
--> Msg 8144, Level 16, State 2, Line 2: Procedure or function dbo.fac has too many arguments specified.
CREATE FUNCTION dbo.bad () RETURNS int AS BEGIN PRINT 'x' RETURN 1 END --> Msg 443, Level 16, State 14, Line 1, Procedure bad: Invalid use of a side-effecting operator 'PRINT' within a function.
CREATE FUNCTION bad () RETURNS float AS BEGIN RETURN 1 + RAND() END --> Msg 443, Level 16, State 1, Line 1, Procedure bad: Invalid use of a side-effecting operator 'rand' within a function.
SELECT dbo.bad() --> Msg 4121, Level 16, State 1, Line 1: Cannot find either column "dbo" or the user-defined function or aggregate "dbo.bad", or the name is ambiguous.
-- temporary tables of a procedure end with it; a missing table ends the procedure
CREATE PROC q AS BEGIN CREATE TABLE #in (x int) INSERT #in VALUES (1) SELECT * FROM #in SELECT * FROM nosuch PRINT 'not here' END -->
EXEC q
PRINT 'here'
SELECT * FROM #in --> (1 changed) --> x int? = 1 (1 rows) --> Msg 208, Level 16, State 1, Line 2, Procedure q: Invalid object name 'nosuch'. --> here --> Msg 208, Level 16, State 1, Line 3: Invalid object name '#in'.
CREATE PROC deep AS EXEC deep --> Msg 2007, Level 0, State 1, Line 1, Procedure deep: The module 'deep' depends on the missing object 'deep'. The module will still be created; however, it cannot run successfully until the object exists.
EXEC deep --> Msg 217, Level 16, State 1, Line 1, Procedure deep: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
CREATE DATABASE other -->
CREATE PROC other..whoami AS SELECT DB_NAME() --> Msg 166, Level 15, State 1, Line 1: 'CREATE/ALTER PROCEDURE' does not allow specifying the database name as a prefix to the object name.
USE other --> USE other --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'other'.
CREATE PROC whoami AS SELECT DB_NAME() CREATE TABLE made (x int) -->
USE master
EXEC other..whoami
SELECT COUNT(*) FROM other.dbo.made
SELECT PARAMETER_NAME, DATA_TYPE, PARAMETER_MODE FROM INFORMATION_SCHEMA.PARAMETERS
DROP PROCEDURE q, deep
EXEC q
DROP DATABASE other
--> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'. --> - nvarchar(128)? = other (1 rows) --> - int? = 0 (1 rows)
--> PARAMETER_NAME nvarchar(128)? | DATA_TYPE nvarchar(128)? | PARAMETER_MODE nvarchar(10)? =  | int | OUT; @n | int | IN (2 rows)
--> Msg 2812, Level 16, State 62, Line 6: Could not find stored procedure 'q'.
CREATE FUNCTION dbo.scaled (@n int, @by int = 10) RETURNS int AS BEGIN RETURN @n * @by END -->
CREATE FUNCTION dbo.numbers (@from int = 1, @to int) RETURNS TABLE AS RETURN (SELECT @from AS a, @to AS b) -->
SELECT dbo.scaled(3, DEFAULT), dbo.scaled(3, 2)
SELECT * FROM dbo.numbers(DEFAULT, 5)
SELECT dbo.scaled(DEFAULT, 2) --> - int? = 30 | - int? = 6 (1 rows) --> a int? = 1 | b int? = 5 (1 rows) --> Msg 201, Level 16, State 4, Line 3: Procedure or function 'scaled' expects parameter '@n', which was not supplied.
SELECT * FROM dbo.numbers(1, DEFAULT) --> Msg 201, Level 16, State 4, Line 1: Procedure or function 'numbers' expects parameter '@to', which was not supplied.
SELECT dbo.scaled(3) --> Msg 313, Level 16, State 1, Line 1: An insufficient number of arguments were supplied for the procedure or function dbo.scaled.
SELECT LEN(DEFAULT) --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'DEFAULT'.
-- errors that do not depend on values are found before the batch runs
CREATE TABLE checked (a int, id int IDENTITY) -->
CREATE PROCEDURE unchecked AS IF 1 = 0 SELECT nosuch FROM checked --> Msg 207, Level 16, State 1, Line 1, Procedure unchecked: Invalid column name 'nosuch'.
PRINT 'not reached' UPDATE checked SET nosuch = 1 --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nosuch'.
ALTER TABLE checked ADD b int UPDATE checked SET b = 1 --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'b'.
INSERT checked VALUES (1, 1) --> Msg 8101, Level 16, State 1, Line 1: An explicit value for the identity column in table 'checked' can only be specified when a column list is used and IDENTITY_INSERT is ON.
CREATE TABLE #checked (a int) -->
CREATE TABLE #checked (b int) PRINT 'not reached' --> Msg 2714, Level 16, State 6, Line 1: There is already an object named '#checked' in the database.
BEGIN TRAN
ALTER TABLE checked DROP COLUMN nosuch
PRINT 'not reached' --> Msg 4924, Level 16, State 1, Line 2: ALTER TABLE DROP COLUMN failed because column 'nosuch' does not exist in table 'checked'.
SELECT @@TRANCOUNT
ALTER TABLE nosuch ADD a int --> - int? = 0 (1 rows) --> Msg 4902, Level 16, State 1, Line 2: Cannot find the object "nosuch" because it does not exist or you do not have permissions.
TRUNCATE TABLE nosuch
CREATE INDEX i ON nosuch (a)
DROP PROCEDURE checked
--> Msg 4701, Level 16, State 1, Line 1: Cannot find the object "nosuch" because it does not exist or you do not have permissions.
--> Msg 1088, Level 16, State 12, Line 2: Cannot find the object "nosuch" because it does not exist or you do not have permissions.
--> Msg 3705, Level 16, State 1, Line 3: Cannot use DROP PROCEDURE with 'checked' because 'checked' is a table. Use DROP TABLE.
CREATE FUNCTION dbo.shows () RETURNS int AS BEGIN SELECT 1 RETURN 1 END --> Msg 444, Level 16, State 2, Line 1, Procedure shows: Select statements included within a function cannot return data to a client.
CREATE FUNCTION dbo.no_return () RETURNS int AS BEGIN IF 1 = 1 RETURN 1 END --> Msg 455, Level 16, State 2, Line 2, Procedure no_return: The last statement included within a function must be a return statement.
CREATE TABLE bad (a int DEFAULT b, b int) --> Msg 128, Level 15, State 1, Line 1: The name "b" is not permitted in this context. Valid expressions are constants, constant expressions, and (in some contexts) variables. Column names are not permitted.
CREATE TABLE bad (a int PRIMARY KEY, b int PRIMARY KEY) --> Msg 8110, Level 16, State 0, Line 1: Cannot add multiple PRIMARY KEY constraints to table 'bad'.
CREATE TABLE bad (a int, CONSTRAINT FK_bad FOREIGN KEY (c) REFERENCES checked (a)) --> Msg 1769, Level 16, State 1, Line 1: Foreign key 'FK_bad' references invalid column 'c' in referencing table 'bad'. (1750)
-- errors in dynamic SQL do not name the procedure
CREATE PROCEDURE runs_bad_text AS
EXEC ('SELECT FROM')
EXEC sp_executesql N'SELECT FROM', N'@a int', 1 -->
EXEC runs_bad_text --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'FROM'. --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'FROM'.
-- temporary procedures use the caller's database; those of a procedure end with it
CREATE PROCEDURE #p @b int = 0 OUTPUT AS SET @b += 1 SELECT DB_NAME() RETURN 2 -->
DECLARE @b int = 1, @r int EXEC @r = #p @b OUTPUT PRINT STR(@b, 1) + STR(@r, 1)
USE tempdb EXEC #p USE master
IF OBJECT_ID('tempdb..#p', 'P') IS NOT NULL EXEC tempdb..#p
CREATE TABLE #p (i int)
--> - nvarchar(128)? = master (1 rows) --> 22 --> USE tempdb --> Msg 5701, Level 0, State 1, Line 2: Changed database context to 'tempdb'. --> - nvarchar(128)? = tempdb (1 rows) --> USE master
--> Msg 5701, Level 0, State 1, Line 2: Changed database context to 'master'. --> - nvarchar(128)? = master (1 rows)
--> Msg 2714, Level 16, State 6, Line 4: There is already an object named '#p' in the database.
ALTER PROCEDURE #p AS PRINT 'altered' -->
CREATE PROCEDURE maker AS EXEC('CREATE OR ALTER PROCEDURE #inner AS PRINT ''inner'' EXEC #p') EXEC #inner --> Msg 2007, Level 0, State 1, Line 1, Procedure maker: The module 'maker' depends on the missing object '#inner'. The module will still be created; however, it cannot run successfully until the object exists.
EXEC maker BEGIN TRANSACTION DROP PROCEDURE #p ROLLBACK EXEC maker DROP PROCEDURE #p EXEC #p EXEC #inner
--> inner --> altered --> inner --> altered --> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure '#p'.
--> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure '#inner'.
CREATE PROCEDURE ##p AS PRINT 'a' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support global temporary procedures.
