SELECT 7 / 2 a, -7 % 3 b, CAST(200 AS tinyint) + 100 c, 1.0 / 3 d, 2.0 / 3 e, 1.5 * -2.25 f, 0.1 + 0.22 g, '3' * 4 h, 6 & 3 i --> a int? = 3 | b int? = -1 | c int? = 300 | d decimal(7,6)? = 0.333333 | e decimal(7,6)? = 0.666666 | f decimal(6,3)? = -3.375 | g decimal(3,2)? = 0.32 | h int? = 12 | i int? = 2 (1 rows)
SELECT CAST('123456789.12' AS decimal(18,2)) / CAST('7' AS decimal(18,2)) a, CAST('999999999999999999' AS decimal(18,0)) * 10 b, CAST('2' AS money) / CAST('3' AS money) c --> a decimal(38,20)? = 17636684.16000000000000000000 | b decimal(21,0)? = 9999999999999999990 | c money? = 0.6666 (1 rows)
SELECT 'ab' + 'c' a, 'ab' + NULL b, CAST('2026-11-21' AS datetime) + 1.5 c, 0x01 + 0xFF d --> a varchar(3)? = abc | b varchar(4)? = NULL | c datetime? = 2026-11-22 12:00:00.000 | d varbinary(2)? = 0x01FF (1 rows)
SELECT CASE WHEN 'Abc ' = 'aBC' AND 1.10 = 1.1 AND 1.1 < 2 AND CAST('1.5' AS money) > 1 AND '10' = 10 AND CAST('2026-11-21' AS date) < CAST('2026-11-21 00:00:00.003' AS datetime) THEN 'all' END a, CASE WHEN 1 = NULL THEN 1 WHEN NOT 1 = NULL THEN 2 ELSE 3 END b --> a varchar(3)? = all | b int = 3 (1 rows)
SELECT 2147483647 + 1 --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
SELECT CAST(200 AS tinyint) + CAST(100 AS tinyint) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type tinyint.
SELECT 1 / 0 --> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered.
SELECT 1.0 % 0 --> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered.
SELECT 99999999999999999999999999999999999999 * 10 --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type numeric.
SELECT 1e308 * 10 --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type float.
SELECT POWER(2, 31) --> Msg 232, Level 16, State 3, Line 1: Arithmetic overflow error for type int, value = 2147483648.000000.
SELECT SQRT(-1) --> Msg 3623, Level 16, State 1, Line 1: An invalid floating point operation occurred.
SELECT 1e400 --> Msg 168, Level 15, State 1, Line 1: The floating point value '1e400' is out of the range of computer representation (8 bytes).
SELECT 'x' + 4 --> Msg 245, Level 16, State 1, Line 1: Conversion failed when converting the varchar value 'x' to data type int.
SELECT 'a' - 'b' --> Msg 8117, Level 16, State 1, Line 1: Operand data type varchar is invalid for subtract operator.
SELECT CAST('2026-11-21' AS date) + 1 --> Msg 206, Level 16, State 2, Line 1: Operand type clash: date is incompatible with int
SELECT 6.0 & 3 --> Msg 402, Level 16, State 1, Line 1: The data types decimal and int are incompatible in the '&' operator.
SELECT 1 WHERE 'x' = 10 --> Msg 245, Level 16, State 1, Line 1: Conversion failed when converting the varchar value 'x' to data type int.
SELECT DATEADD(foo, 1, GETDATE()) --> Msg 155, Level 15, State 1, Line 1: 'foo' is not a recognized dateadd option.
SELECT LEN(N'äb  ') a, LEN(1234) b, DATALENGTH(N'äb') c, SUBSTRING('hello', 2, 3) d, SUBSTRING('hello', 0, 3) e, SUBSTRING(0x010203, 2, 9) f, RIGHT('größe', 2) g, UPPER('äb') h, REPLACE('aXbxc', 'x', '--') i, STUFF('abcdef', 2, 3, 'X') j --> a int? = 2 | b int? = 4 | c int? = 4 | d varchar(3)? = ell | e varchar(3)? = he | f varbinary(3)? = 0x0203 | g varchar(2)? = ße | h varchar(2)? = ÄB | i varchar(8000)? = a--b--c | j varchar(8000)? = aXef (1 rows)
SELECT ABS(-1.50) a, CEILING(-1.5) b, FLOOR(-1.5) c, ROUND(2.567, 2) d, ROUND(1256, -2) e, ROUND(2.567, 2, 1) f, POWER(2, 10) g, ISNUMERIC('1.5e3') h, ISNUMERIC('abc') i, ISDATE('2026-02-30') j --> a decimal(3,2)? = 1.50 | b decimal(2,0)? = -1 | c decimal(2,0)? = -2 | d decimal(4,3)? = 2.570 | e int? = 1300 | f decimal(4,3)? = 2.560 | g int? = 1024 | h int? = 1 | i int? = 0 | j int? = 0 (1 rows)
SELECT ISNULL(NULL, 5) a, ISNULL('ab', 'long') b, COALESCE(NULL, 1, 2.5) c, COALESCE(CAST(NULL AS date), NULL) d, NULLIF('a', 'A ') e, CHOOSE(2, 'a', 'bc') f --> a int = 5 | b varchar(2) = ab | c decimal(11,1)? = 1.0 | d date? = NULL | e varchar(1)? = NULL | f varchar(2)? = bc (1 rows)
DECLARE @day datetime = '2026-01-31 13:05:07.123'
SELECT DATEADD(month, 1, @day) a, DATEADD(mi, -66, '2026-01-31 00:05') b, DATEDIFF(dd, '2026-01-31 23:59', '2026-02-01') c, DATEDIFF(week, '2026-11-21', '2026-11-22') d, DATEDIFF(yyyy, '2026-12-31', '2027-01-01') e
SELECT DATEPART(dw, @day) a, DATEPART(isowk, '2027-01-01') b, DATENAME(month, @day) c, YEAR(@day) d, EOMONTH('2024-01-31', 1) e
--> a datetime? = 2026-02-28 13:05:07.123 | b datetime? = 2026-01-30 22:59:00.000 | c int? = 1 | d int? = 1 | e int? = 1 (1 rows)
--> a int? = 7 | b int? = 53 | c nvarchar(30)? = January | d int? = 2026 | e date? = 2024-02-29 (1 rows)
SELECT COUNT(*) a, COUNT(DISTINCT t) b, SUM(i) c, SUM(DISTINCT i) d, SUM(d) e, AVG(i) f, AVG(d) g, MAX(t) h, STDEV(i) i, STRING_AGG(t, ', ') j, SUM(CASE WHEN i > 9 THEN i END) k FROM (VALUES (1, CAST(1.5 AS decimal(5,2)), 'a'), (2, 2.5, 'A'), (2, NULL, 'b'), (NULL, 2.51, NULL)) v (i, d, t) --> a int? = 4 | b int? = 2 | c int? = 5 | d int? = 3 | e decimal(38,2)? = 6.51 | f int? = 1 | g decimal(38,6)? = 2.170000 | h varchar(1)? = b | i float? = 0.5773502691896257 | j varchar(8000)? = a, A, b | k int? = NULL (8153, Line 1) (1 rows)
SELECT SUM(big) FROM (VALUES (2147483647), (2147483647)) v (big) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
SELECT SUM(t) FROM (VALUES ('a')) v (t) --> Msg 8117, Level 16, State 1, Line 1: Operand data type varchar is invalid for sum operator.
-- the shorter of two binary strings is padded with zeros
CREATE TABLE bytes (id int, b binary(4), v varbinary(8))
INSERT bytes VALUES (1, 0xAE, 0xAE), (2, 0xAE00, 0xAE00), (3, 0x, 0x) --> (3 changed)
SELECT COUNT(*) FROM bytes x JOIN bytes y ON x.b = y.v JOIN bytes z ON z.v = y.v WHERE x.b >= 0xAE --> - int? = 8 (1 rows)
SELECT CASE WHEN 0xAE = 0xAE00 THEN 1 ELSE 0 END a, CASE WHEN 0xAE < 0xAE00 THEN 1 ELSE 0 END b, CASE WHEN 0xAE < 0xAE01 THEN 1 ELSE 0 END c --> a int = 1 | b int = 0 | c int = 1 (1 rows)
SELECT v, COUNT(*) FROM bytes WHERE v IN (0xAE0000) OR v IN (SELECT b FROM bytes WHERE id = 3) GROUP BY v --> v varbinary(8)? | - int? = 0x | 1; 0xAE | 2 (2 rows)
SELECT DISTINCT v, 1 one FROM bytes ORDER BY v DESC --> v varbinary(8)? | one int = 0xAE | 1; 0x | 1 (2 rows)
SELECT DISTINCT TOP 1 v FROM bytes --> v varbinary(8)? = 0x (1 rows)
SELECT COUNT(DISTINCT v), (SELECT COUNT(*) FROM (SELECT DISTINCT v FROM bytes b WHERE b.id <= o.id) d) FROM bytes o WHERE id = 2 GROUP BY id --> - int? = 1 | - int? = 1 (1 rows)
SELECT v FROM bytes UNION SELECT 0xAE0000 UNION SELECT 0xAF ORDER BY 1 DESC --> v varbinary(8)? = 0xAF; 0xAE; 0x (3 rows)
SELECT v FROM bytes UNION ALL SELECT 0xAE00 EXCEPT SELECT 0xAE0000 --> v varbinary(8)? = 0x (1 rows)
SELECT v, NULL n FROM bytes INTERSECT SELECT 0xAE0000, NULL --> v varbinary(8)? = 0xAE | n int? = NULL (1 rows)
SELECT id, ROW_NUMBER() OVER (PARTITION BY v ORDER BY id) n FROM bytes WHERE b = 0xAE ORDER BY v, id DESC --> id int? | n bigint? = 2 | 2; 1 | 1 (2 rows)
SELECT AVG(DISTINCT d) a, AVG(DISTINCT i) b, AVG(DISTINCT f) c FROM (VALUES (CAST(1.5 AS decimal(5, 2)), 1, 1e0), (1.5, 1, 1), (2.5, 4, 2)) v (d, i, f) --> a decimal(38,6)? = 2.000000 | b int? = 2 | c float? = 1.5 (1 rows)
