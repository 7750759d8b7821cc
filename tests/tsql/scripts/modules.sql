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
