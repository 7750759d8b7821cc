CREATE PROCEDURE p @a int, @b varchar(10) = 'def', @o int = NULL OUTPUT AS
SELECT @a, @b
SET @o = @a * 2
RETURN 5
GO
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
GO
ALTER PROCEDURE p AS PRINT 'altered'
GO
p
GO
CREATE PROCEDURE p AS PRINT 'again'
GO
CREATE FUNCTION dbo.fac (@n int) RETURNS int AS BEGIN IF @n <= 1 RETURN 1 RETURN @n * dbo.fac(@n - 1) END
GO
SELECT dbo.fac(5), dbo.fac(id) FROM (SELECT 3 AS id UNION ALL SELECT 4) x
GO
SELECT dbo.fac(40)
GO
SELECT dbo.fac(13)
SELECT dbo.fac(1, 2)
GO
CREATE FUNCTION dbo.bad () RETURNS int AS BEGIN PRINT 'x' RETURN 1 END
GO
CREATE FUNCTION bad () RETURNS float AS BEGIN RETURN 1 + RAND() END
GO
SELECT dbo.bad()
GO
-- what a procedure makes ends with it; a missing table ends it
CREATE PROC q AS BEGIN CREATE TABLE #in (x int) INSERT #in VALUES (1) SELECT * FROM #in SELECT * FROM nosuch PRINT 'not here' END
GO
EXEC q
PRINT 'here'
SELECT * FROM #in
GO
CREATE PROC deep AS EXEC deep
GO
EXEC deep
GO
CREATE DATABASE other
GO
CREATE PROC other..whoami AS SELECT DB_NAME()
GO
USE other
GO
CREATE PROC whoami AS SELECT DB_NAME() CREATE TABLE made (x int)
GO
USE master
EXEC other..whoami
SELECT COUNT(*) FROM other.dbo.made
SELECT PARAMETER_NAME, DATA_TYPE, PARAMETER_MODE FROM INFORMATION_SCHEMA.PARAMETERS
DROP PROCEDURE q, deep
EXEC q
DROP DATABASE other
GO
GO
CREATE FUNCTION dbo.scaled (@n int, @by int = 10) RETURNS int AS BEGIN RETURN @n * @by END
GO
CREATE FUNCTION dbo.numbers (@from int = 1, @to int) RETURNS TABLE AS RETURN (SELECT @from AS a, @to AS b)
GO
SELECT dbo.scaled(3, DEFAULT), dbo.scaled(3, 2)
SELECT * FROM dbo.numbers(DEFAULT, 5)
SELECT dbo.scaled(DEFAULT, 2)
GO
SELECT * FROM dbo.numbers(1, DEFAULT)
GO
SELECT dbo.scaled(3)
GO
SELECT LEN(DEFAULT)
GO
-- what is wrong whatever the values are is found first
CREATE TABLE checked (a int, id int IDENTITY)
GO
CREATE PROCEDURE unchecked AS IF 1 = 0 SELECT nosuch FROM checked
GO
PRINT 'not reached' UPDATE checked SET nosuch = 1
GO
ALTER TABLE checked ADD b int UPDATE checked SET b = 1
GO
INSERT checked VALUES (1, 1)
GO
CREATE TABLE #checked (a int)
GO
CREATE TABLE #checked (b int)
PRINT 'not reached'
GO
BEGIN TRAN
ALTER TABLE checked DROP COLUMN nosuch
PRINT 'not reached'
GO
SELECT @@TRANCOUNT
ALTER TABLE nosuch ADD a int
GO
TRUNCATE TABLE nosuch
CREATE INDEX i ON nosuch (a)
DROP PROCEDURE checked
GO
CREATE FUNCTION dbo.shows () RETURNS int AS BEGIN SELECT 1 RETURN 1 END
GO
CREATE FUNCTION dbo.no_return () RETURNS int AS BEGIN IF 1 = 1 RETURN 1 END
GO
CREATE TABLE bad (a int DEFAULT b, b int)
GO
CREATE TABLE bad (a int PRIMARY KEY, b int PRIMARY KEY)
GO
CREATE TABLE bad (a int, CONSTRAINT FK_bad FOREIGN KEY (c) REFERENCES checked (a))
GO
GO
-- a text that a procedure runs is not the procedure's
CREATE PROCEDURE runs_bad_text AS
EXEC ('SELECT FROM')
EXEC sp_executesql N'SELECT FROM', N'@a int', 1
GO
EXEC runs_bad_text
GO
