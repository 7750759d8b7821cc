SELECT LEN('abc  ') a, DATALENGTH(N'abc ') b, LEFT('abc',2) c, RIGHT('abc',2) d, SUBSTRING('abcdef',2,3) e, CHARINDEX('C','abc') f, PATINDEX('%[0-9]%','ab3') g, REPLACE('aXbx','x','-') h, STUFF('abcd',2,2,'ZZZ') i, REPLICATE('ab',3) j, REVERSE('abc') k
SELECT '<' + LTRIM('  a ') + '>' a, '<' + RTRIM(' a ') + '>' b, '<' + TRIM(' a ') + '>' c, UPPER('aé') d, LOWER('AÉ') e, '<' + SPACE(2) + '>' f, STR(3.14159, 6, 2) g, CHAR(65) h, NCHAR(233) i, ASCII('A') j, UNICODE(N'é') k
SELECT CONCAT('a', NULL, 1, 2.5) a, CONCAT_WS('-', 'a', NULL, 'b') b, QUOTENAME('a]b') c, QUOTENAME('a', '''') d, IIF(1 > 2, 'x', 'longer') e, IIF(NULL IS NULL, 1, 2.5) f, CHOOSE(2, 'a', 'b') g, CHOOSE(5, 'a') h
SELECT DATEADD(month, 1, '2024-01-31') a, DATEADD(dd, -1, CAST('2024-03-01' AS date)) b, DATEDIFF(day, '2024-02-28', '2024-03-01') c, DATEDIFF_BIG(second, '1900-01-01', '2024-01-01') d, DATEPART(weekday, '2024-01-01') e, DATENAME(month, '2024-01-01') f, DAY('2024-05-06') g, MONTH('2024-05-06') h, YEAR('2024-05-06') i, EOMONTH('2024-02-01') j, EOMONTH('2024-02-01', 1) k, DATEFROMPARTS(2024, 2, 29) l, ISDATE('2024-02-30') m
SELECT CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 101) a, CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 103) b, CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 112) c, CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 120) d, CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 121) e, CONVERT(varchar, CAST('2024-05-06 07:08:09.123' AS datetime), 126) f, CONVERT(varchar(8), CAST('2024-05-06 07:08:09.123' AS datetime), 108) g
SELECT TRY_CAST('x' AS int) a, TRY_CONVERT(int, '12') b, ISNULL(NULL, 'abc') c, COALESCE(NULL, NULL, 3) d, NULLIF(1, 1) e, ISNUMERIC('1e4') f, ISNUMERIC('a') g, LEN(NEWID()) h
SELECT ABS(-3) a, CEILING(1.2) b, FLOOR(-1.2) c, ROUND(2.567, 1) d, ROUND(2.567, 1, 1) e, POWER(2, 10) f, SQRT(16) g, SIGN(-2.5) h, CAST(PI() AS decimal(9,5)) i, SQUARE(3) j
SELECT COUNT_BIG(*) a, DB_NAME() b, DB_ID('master') c, OBJECT_NAME(OBJECT_ID('nothing')) d, SUSER_SNAME() e, @@TRANCOUNT f, XACT_STATE() g, @@ERROR h FROM (SELECT 1 AS x) q
SELECT CASE WHEN SERVERPROPERTY('ProductVersion') IS NOT NULL AND @@VERSION LIKE '%SQL Server%' AND @@SERVERNAME <> '' AND @@SPID > 0 AND RAND() < 1 AND GETDATE() < DATEADD(day, 2, GETUTCDATE()) AND SYSDATETIME() > '2000' THEN 'fine' END a
GO
-- 8,000 bytes, unless the text is (max)
SELECT LEN(REPLICATE(N'x', 5000)) a, LEN(REPLICATE('x', 9000)) b, LEN(REPLICATE(CAST('x' AS varchar(max)), 9000)) c, LEN(REPLICATE(N'é', 4000)) d, LEN(REPLICATE('é', 8000)) e, DATALENGTH(REPLICATE(N'xy', 3000)) f
DECLARE @v varchar(20) = '', @n int = 1
SELECT @v += q.a, @n *= 3 FROM (SELECT 'p' AS a UNION ALL SELECT 'q') q
SELECT @v v, @n n
SELECT a FROM (VALUES (1), (2)) v (a)
GO
SELECT a FROM (SELECT 1 AS a UNION SELECT 2 UNION SELECT 3) q ORDER BY a DESC OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY
SELECT DISTINCT a % 2 AS r FROM (SELECT 1 AS a UNION SELECT 2 UNION SELECT 3) q ORDER BY a % 2
DECLARE @o int = -1
SELECT 1 AS a ORDER BY a OFFSET @o ROWS
GO
SELECT 1 AS a ORDER BY a OFFSET 0 ROWS FETCH NEXT 0 ROWS ONLY
GO
SELECT TOP 1 1 AS a ORDER BY a OFFSET 0 ROWS
GO
DECLARE @top int = -5 SELECT TOP (@top) 1 AS a
GO
SELECT DISTINCT a FROM (SELECT 1 AS a, 2 AS b) q ORDER BY b
GO
SELECT FORMAT(GETDATE(), 'd')
GO
SELECT CHECKSUM('a')
GO
SELECT 1 WHERE 1 > ALL (SELECT 1)
GO
SELECT TOP 1 WITH TIES 1 AS a ORDER BY a
GO
SELECT * FROM (SELECT 1 AS a) q CROSS APPLY (SELECT 2 AS b) r
GO
SELECT IIF(1, 2, 3)
GO
SELECT REPLICATE('x', -1), CHAR(256), SPACE(-1), STUFF('abc', 5, 1, 'x')
GO
DECLARE @s nvarchar(max) = N'SELECT COUNT(*) FROM (SELECT 1 AS a' + REPLICATE(CAST(N' UNION ALL SELECT 1' AS nvarchar(max)), 60) + N') q'
EXEC (@s)
SET @s = N'SELECT COUNT(*) FROM (VALUES (1)' + REPLICATE(CAST(N',(1)' AS nvarchar(max)), 99) + N') q(a)'
EXEC (@s)
SET @s = N'SELECT 1' + REPLICATE(CAST(N' + 1 * 1' AS nvarchar(max)), 399)
EXEC (@s)
SELECT 1 AS a UNION SELECT 1 UNION ALL SELECT 1 EXCEPT SELECT 2 UNION ALL SELECT NULL
SELECT 'a' AS a UNION SELECT 'A' UNION SELECT 2.5e0
GO
CREATE TABLE word (t nvarchar(20))
INSERT word VALUES (N'zebra'),(N'étude'),(N'eta'),(N'Etude'),(N'a_b'),(N'a1'),(N'ab'),(N'Ärger'),(N'az')
SELECT t FROM word ORDER BY t
SELECT COUNT(*) FROM word WHERE t = N'ETUDE '
GO
-- what is converted by itself, by CAST alone, or never
CREATE TABLE kinds (d date, dt datetime, u uniqueidentifier, t text, b varbinary(9), n int)
INSERT kinds (dt, b, n, t) VALUES (1, 2, '3', 'x')
SELECT CASE WHEN dt = 1 AND b = 2 AND t LIKE 'x' AND t IS NOT NULL THEN DATALENGTH(t) + PATINDEX('%x', t) END FROM kinds
GO
INSERT kinds (n) VALUES (GETDATE())
GO
INSERT kinds (b) VALUES ('x')
GO
DECLARE @d date = 1
GO
DECLARE @n int SET @n = GETDATE()
GO
SELECT 1 FROM kinds WHERE d = 1
GO
SELECT d + 1 FROM kinds
GO
SELECT 1 FROM kinds WHERE d > CAST('10:00' AS time)
GO
SELECT CASE WHEN 1 = 1 THEN u ELSE n END FROM kinds
GO
SELECT CASE WHEN 1 = 1 THEN NULL END
GO
SELECT CAST(t AS int) FROM kinds
GO
SELECT CAST(1.5 AS varbinary(8))
GO
-- text is neither compared nor sorted, and few functions take it
SELECT 1 FROM kinds WHERE t = 'x'
GO
SELECT 1 FROM kinds WHERE t IN ('x')
GO
SELECT t FROM kinds ORDER BY t
GO
SELECT DISTINCT t FROM kinds
GO
SELECT t FROM kinds UNION SELECT t FROM kinds
GO
SELECT MAX(t) FROM kinds
GO
SELECT LEN(t) FROM kinds
GO
SELECT LEFT('x', GETDATE())
GO
SELECT SUBSTRING(12345, 2, 2)
GO
SELECT CHARINDEX(3, '12345')
GO
