SELECT 7 / 2 a, -7 % 3 b, CAST(200 AS tinyint) + 100 c, 1.0 / 3 d, 2.0 / 3 e, 1.5 * -2.25 f, 0.1 + 0.22 g, '3' * 4 h, 6 & 3 i
SELECT CAST('123456789.12' AS decimal(18,2)) / CAST('7' AS decimal(18,2)) a, CAST('999999999999999999' AS decimal(18,0)) * 10 b, CAST('2' AS money) / CAST('3' AS money) c
SELECT 'ab' + 'c' a, 'ab' + NULL b, CAST('2026-11-21' AS datetime) + 1.5 c, 0x01 + 0xFF d
SELECT CASE WHEN 'Abc ' = 'aBC' AND 1.10 = 1.1 AND 1.1 < 2 AND CAST('1.5' AS money) > 1 AND '10' = 10 AND CAST('2026-11-21' AS date) < CAST('2026-11-21 00:00:00.003' AS datetime) THEN 'all' END a, CASE WHEN 1 = NULL THEN 1 WHEN NOT 1 = NULL THEN 2 ELSE 3 END b
GO
SELECT 2147483647 + 1
SELECT CAST(200 AS tinyint) + CAST(100 AS tinyint)
SELECT 1 / 0
SELECT 1.0 % 0
SELECT 99999999999999999999999999999999999999 * 10
SELECT 1e308 * 10
SELECT POWER(2, 31)
SELECT SQRT(-1)
SELECT SUBSTRING('hello', 2, -1)
SELECT DATEADD(yy, 9000, CAST('2026-01-31' AS datetime))
SELECT DATEDIFF(ms, '1900-01-01', CAST('2026-01-31' AS datetime))
SELECT DATEFROMPARTS(2026, 2, 30)
GO
SELECT 1e400
GO
SELECT 'x' + 4
GO
SELECT 'a' - 'b'
GO
SELECT CAST('2026-11-21' AS date) + 1
GO
SELECT 6.0 & 3
GO
SELECT 1 WHERE 'x' = 10
GO
SELECT LEN()
GO
SELECT DATEADD(foo, 1, GETDATE())
GO
SELECT LEN(N'äb  ') a, LEN(1234) b, DATALENGTH(N'äb') c, SUBSTRING('hello', 2, 3) d, SUBSTRING('hello', 0, 3) e, SUBSTRING(0x010203, 2, 9) f, RIGHT('größe', 2) g, UPPER('äb') h, REPLACE('aXbxc', 'x', '--') i, STUFF('abcdef', 2, 3, 'X') j
SELECT CHARINDEX('L', 'hello', 4) a, CHARINDEX('z', 'hello') b, PATINDEX('%[0-9]%', 'ab3') c, REPLICATE('ab', 3) d, STR(3.147, 6, 2) e, STR(12345, 3) f, CONCAT('a', NULL, 7) g, CONCAT_WS(',', 'a', NULL, 'b') h, QUOTENAME('a]b') i
SELECT ABS(-1.50) a, CEILING(-1.5) b, FLOOR(-1.5) c, ROUND(2.567, 2) d, ROUND(1256, -2) e, ROUND(2.567, 2, 1) f, POWER(2, 10) g, ISNUMERIC('1.5e3') h, ISNUMERIC('abc') i, ISDATE('2026-02-30') j
SELECT ISNULL(NULL, 5) a, ISNULL('ab', 'long') b, COALESCE(NULL, 1, 2.5) c, COALESCE(CAST(NULL AS date), NULL) d, NULLIF('a', 'A ') e, CHOOSE(2, 'a', 'bc') f
DECLARE @day datetime = '2026-01-31 13:05:07.123'
SELECT DATEADD(month, 1, @day) a, DATEADD(mi, -66, '2026-01-31 00:05') b, DATEDIFF(dd, '2026-01-31 23:59', '2026-02-01') c, DATEDIFF(week, '2026-11-21', '2026-11-22') d, DATEDIFF(yyyy, '2026-12-31', '2027-01-01') e
SELECT DATEPART(dw, @day) a, DATEPART(isowk, '2027-01-01') b, DATENAME(month, @day) c, YEAR(@day) d, EOMONTH('2024-01-31', 1) e
GO
SELECT COUNT(*) a, COUNT(DISTINCT t) b, SUM(i) c, SUM(DISTINCT i) d, SUM(d) e, AVG(i) f, AVG(d) g, MAX(t) h, STDEV(i) i, STRING_AGG(t, ', ') j, SUM(CASE WHEN i > 9 THEN i END) k FROM (VALUES (1, CAST(1.5 AS decimal(5,2)), 'a'), (2, 2.5, 'A'), (2, NULL, 'b'), (NULL, 2.51, NULL)) v (i, d, t)
SELECT SUM(big) FROM (VALUES (2147483647), (2147483647)) v (big)
GO
SELECT SUM(t) FROM (VALUES ('a')) v (t)
GO
CREATE TABLE narrow (c varchar(2))
INSERT narrow VALUES (5)
INSERT narrow VALUES ('abc')
GO
