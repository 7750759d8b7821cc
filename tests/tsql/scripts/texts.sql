-- counted in units of UTF-16: a character above U+FFFF is two, and is never parted
SELECT LEN(N'a😀b  ') a, DATALENGTH(N'😀') b, LEN('   ') c, LEN('') d, LEN(' a') e, DATALENGTH('a  ') f, LEN(CAST(NULL AS varchar(5))) g
SELECT LEFT(N'😀a', 2) a, LEFT(N'😀a', 1) b, RIGHT(N'a😀', 2) c, RIGHT(N'a😀', 1) d, SUBSTRING(N'a😀b', 4, 9) e, REVERSE(N'a😀b') f, CHARINDEX(N'b', N'😀b') g, UNICODE(N'😀') h, NCHAR(8364) i, NCHAR(128512) j
DECLARE @two nvarchar(3) = N'😀😀' SELECT @two a, CAST(N'😀😀' AS nvarchar(4)) b
SELECT CHAR(128) a, CHAR(228) b, ASCII('€') c, ASCII(N'Ж') d, ASCII('') e, CHAR(-1) f, CHAR(256) g, UNICODE('') h
SELECT '[' + SUBSTRING('abc', 0, 2) + ']' a, '[' + SUBSTRING('abc', -5, 7) + ']' b, '[' + SUBSTRING('abc', 4, 1) + ']' c, '[' + SUBSTRING('abc', 2, 2147483647) + ']' d, '[' + SUBSTRING('abc', 1, 0) + ']' e, SUBSTRING('abc', NULL, 1) f, LEFT('abc', 0) + '|' g, RIGHT('abc', 9) h
SELECT STUFF('abc', 4, 1, 'x') a, STUFF('abc', 0, 1, 'x') b, STUFF('abc', 3, 9, 'xyz') c, STUFF('abc', 1, 0, 'x') d, STUFF('abc', 2, 1, NULL) e, STUFF('', 1, 0, 'x') f, STUFF(NULL, 1, 1, 'x') g, STUFF('abc', 1, -1, 'x') h
SELECT REPLACE('abc', '', 'x') a, REPLACE('', 'a', 'x') + '|' b, REPLACE('aaa', 'aa', 'b') c, REPLACE('abc', 'b', NULL) d, REPLACE('abc', 'B', '') e
SELECT CHARINDEX('', 'abc') a, CHARINDEX('c', 'abc', 4) b, CHARINDEX('c', 'abc', -9) c, CHARINDEX('a', '') d, CHARINDEX('b ', 'ab') e, CHARINDEX(NULL, 'a') f, CHARINDEX('b', CAST('ab' AS varchar(max))) g
SELECT PATINDEX('%b_', 'abc') a, PATINDEX('b%', 'abc') b, PATINDEX('abc', 'abc') c, PATINDEX('%[^a-z]%', 'ab-c') d, PATINDEX('% ', 'ab ') e, PATINDEX('%é%', N'Écu') f, PATINDEX(NULL, 'a') g, PATINDEX('%[d-f]%', 'abcé') h
SELECT CASE WHEN 'abc ' LIKE 'abc' THEN 1 END a, CASE WHEN N'abc ' LIKE N'abc' THEN 1 END b, CASE WHEN 'abc' LIKE 'abc ' THEN 1 END c, CASE WHEN '50%' LIKE '50!%' ESCAPE '!' THEN 1 END d, CASE WHEN 'x' LIKE NULL THEN 1 ELSE 0 END e, CASE WHEN 'a]' LIKE 'a[]]' THEN 1 END f
SELECT STR(123.45, 6, 1) a, STR(123.45, 2, 2) b, STR(123.456) c, STR(-0.4) d, STR(1.5, 5, -1) e, STR(2.5e0, 8, 2) f, STR(123456, 3) g, STR(NULL) h, STR(1e20, 25) i
SELECT QUOTENAME('a]b', '[]') a, QUOTENAME('a"b', '"') b, QUOTENAME('a>b', '<') c, QUOTENAME('a)b', ')') d, QUOTENAME('a}b', '{') e, QUOTENAME('a`b', '`') f, QUOTENAME('it''s', '''') g, QUOTENAME('a', 'x') h, QUOTENAME(NULL) i, QUOTENAME(REPLICATE('a', 129)) j
SELECT REPLICATE('ab', 0) + '|' a, REPLICATE('ab', -1) b, REPLICATE('', 5) + '|' c, DATALENGTH(SPACE(9000)) d, '[' + TRIM('  a b ') + ']' e, '[' + LTRIM(CHAR(9) + 'a') + ']' f, UPPER(N'straße é') g, LOWER(N'ÀŽ') h
SELECT CONCAT(NULL, NULL) + '|' a, CONCAT(1, NULL, 2.50, 'x') b, CONCAT_WS(NULL, 'a', 'b') c, CONCAT_WS(',', NULL, NULL) + '|' d, CONCAT_WS(', ', 'a', NULL, '', 'b') e, CONCAT('<', CAST('2026-11-21' AS date), '>') f
-- results end at 8,000 bytes unless the first text is (max)
SELECT LEN(REPLACE(REPLICATE('x', 5000), 'x', 'yy')) a, LEN(STUFF(REPLICATE('x', 8000), 1, 0, 'abc')) b, LEN(CONCAT(REPLICATE('x', 8000), 'y')) c, LEN(CONCAT_WS('-', REPLICATE(N'x', 4000), 'y')) d, LEN(REPLACE(CAST(REPLICATE('x', 5000) AS varchar(max)), 'x', 'yy')) e
SELECT value FROM STRING_SPLIT('', ',')
SELECT value FROM STRING_SPLIT('a,,"b\', ',')
SELECT value FROM STRING_SPLIT(NULL, ',')
GO
SELECT value FROM STRING_SPLIT('a', ',;')
GO
SELECT LEFT('abc', -1)
GO
SELECT RIGHT('abc', -1)
GO
SELECT SUBSTRING('abc', 1, -1)
GO
SELECT NCHAR(55357)
GO
SELECT LEN()
GO
SELECT CONCAT('a')
GO
SELECT CHOOSE(0, 'a', 'b') a, CHOOSE(3, 'a', 'b') b, CHOOSE(NULL, 'a') c, CHOOSE(1.9, 'a', 'b') d, CHOOSE(2, 1, 2.5) e, ISNULL(CAST(NULL AS varchar(2)), 'long') f, ISNULL(NULL, 'long') g, NULLIF('a', 'A ') h, NULLIF(1, 1.5) i, IIF(1 = 1, NULL, 2) j
GO
SELECT NULLIF(NULL, 1)
GO
SELECT COALESCE(NULL, NULL)
GO
SELECT LEN(REPLACE(REPLICATE(CAST('a' AS varchar(max)), 20000), 'a', REPLICATE('b', 8000)))
GO
