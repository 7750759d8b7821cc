CREATE PROCEDURE add_up @a int, @b int = 1, @sum int = NULL OUTPUT AS
SET @sum = @a + @b
RETURN @sum
GO
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
GO
CREATE OR ALTER PROCEDURE add_up AS
PRINT 'changed'
GO
add_up
EXEC sp_helptext 'dbo.add_up'
EXEC sp_helptext 'nosuch'
CREATE TABLE plain (x int)
EXEC sp_helptext plain
EXEC sp_nosuch
DROP PROCEDURE add_up, add_up2
GO
DECLARE @r int
EXEC @r = sp_getapplock 'job', 'Exclusive'
SELECT @r
EXEC @r = sp_getapplock 'job', 'Everything', 'Session'
SELECT @r
EXEC @r = sp_getapplock @Resource = 'job', @LockMode = 'Exclusive', @LockOwner = 'Session', @LockTimeout = 0
SELECT @r
EXEC @r = sp_getapplock 'job', 'Shared', 'Session', 0
SELECT @r
EXEC @r = sp_releaseapplock 'job', 'Session'
SELECT @r
EXEC @r = sp_releaseapplock 'job', 'Session'
SELECT @r
EXEC @r = sp_releaseapplock 'job', 'Session'
SELECT @r
GO
-- arguments that do not fit
CREATE PROCEDURE fit @a int, @b varchar(9) = 'b' AS SELECT @a, @b
GO
CREATE PROCEDURE takes_none AS RETURN
GO
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
GO
EXEC fit @a = 1, 'b'
GO
EXEC fit 1, 'b' OUTPUT
GO
EXEC fit 1 + 1
GO
EXEC ('SELECT ' + QUOTENAME('a'))
GO
CREATE TABLE #rows (a int)
INSERT #rows EXEC ('ROLLBACK')
INSERT #rows EXEC ('INSERT #rows EXEC (''SELECT 1'')')
BEGIN TRAN INSERT #rows EXEC ('ROLLBACK') ROLLBACK
GO
CREATE PROCEDURE who_am_i AS PRINT OBJECT_NAME(@@PROCID)
GO
EXEC who_am_i
PRINT @@PROCID
GO
GO
-- a text runs in the database whose sp_executesql it is given to
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
GO
