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
PRINT 'not reached'
GO
PRINT @s
GO
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
GO
-- the failed conversion has ended the batch and the transaction
SELECT @@TRANCOUNT, COUNT(*) FROM t
SET XACT_ABORT ON
BEGIN TRAN
INSERT t VALUES (4)
SELECT 1/0
GO
SELECT @@TRANCOUNT, COUNT(*) FROM t
SET NOCOUNT ON
INSERT t VALUES (5)
SELECT COUNT(*) FROM t
GO
-- a variable is there from the batch's beginning and keeps its value in a loop
DECLARE @i int = 0
WHILE @i < 2 BEGIN DECLARE @x int; SET @x = ISNULL(@x, 0) + 1; SET @i += 1 END
IF 1 = 0 BEGIN DECLARE @y int = 5 END
SELECT @x, @y
UPDATE t SET id = id RAISERROR('seen', 10, 1) PRINT @@ROWCOUNT
UPDATE t SET id = id DECLARE @z int = 1 PRINT @@ROWCOUNT
UPDATE t SET id = id WHILE @@ROWCOUNT > 9 PRINT 'x' PRINT @@ROWCOUNT
GO
PRINT 'x' THROW 50001, 'direct', 7
GO
PRINT 'x' WITH c AS (SELECT 1 AS a) SELECT a FROM c
GO
IF 1 = 1 THROW 50001, 'direct', 7
GO
RETURN 1
GO
BEGIN END
GO
RAISERROR('a' + 'b', 16, 1)
GO
CREATE PROCEDURE empty_status AS RETURN NULL
GO
DECLARE @s int = 9 EXEC @s = empty_status PRINT @s
GO
