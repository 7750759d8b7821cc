CREATE FUNCTION dbo.kind (@x decimal(38,19)) RETURNS varchar(60) AS BEGIN RETURN CAST(@x AS varchar(60)) END -->
-- literals have the precision they are written with
SELECT 12345678901234567890 a, -0.12345678901234567890123456789012345678 b, 99999999999999999999999999999999999999 c, 0.5 d, 3000000000 e --> a decimal(20,0) = 12345678901234567890 | b decimal(38,38) = -0.12345678901234567890123456789012345678 | c decimal(38,0) = 99999999999999999999999999999999999999 | d decimal(1,1) = 0.5 | e decimal(10,0) = 3000000000 (1 rows)
SELECT 100000000000000000000000000000000000000 --> Msg 1007, Level 15, State 1, Line 1: The number '100000000000000000000000000000000000000' is out of the range for numeric representation (maximum precision 38).
SELECT 0.123456789012345678901234567890123456789 --> Msg 1007, Level 15, State 1, Line 1: The number '0.123456789012345678901234567890123456789' is out of the range for numeric representation (maximum precision 38).
-- precision and scale of results, also where 38 digits are too few
DECLARE @a decimal(38,10) = 2, @b decimal(38,20) = 3, @c decimal(18,4) = 10, @d decimal(5,2) = 999.99, @m money = 1.5
SELECT @a + @b s, @a - @b d, @a * @b p, @a / @b q, @a % @b r
SELECT @c * @c p, @c / @d q, @d / @c q2, @c % @d r, @d + @d s, @d * 2 l, @d / 7 q3, @m * @d m, @m / @c m2
--> s decimal(38,10)? = 5.0000000000 | d decimal(38,10)? = -1.0000000000 | p decimal(38,6)? = 6.000000 | q decimal(38,6)? = 0.666666 | r decimal(38,20)? = 2.00000000000000000000 (1 rows)
--> p decimal(37,8)? = 100.00000000 | q decimal(26,10)? = 0.0100001000 | q2 decimal(28,21)? = 99.999000000000000000000 | r decimal(7,4)? = 10.0000 | s decimal(6,2)? = 1999.98 | l decimal(7,2)? = 1999.98 | q3 decimal(9,6)? = 142.855714 | m decimal(25,6)? = 1499.985000 | m2 decimal(38,19)? = 0.1500000000000000000 (1 rows)
SELECT CAST(1 AS decimal(38,0)) / 3 a, 1.0 / 3 b, 2.0 / 3 c, CAST(2 AS decimal(9,0)) / CAST(0.3 AS decimal(38,38)) d --> a decimal(38,6)? = 0.333333 | b decimal(7,6)? = 0.333333 | c decimal(7,6)? = 0.666666 | d decimal(38,6)? = 6.666666 (1 rows)
SELECT CAST(0.1 AS decimal(38,1)) + CAST(0.01 AS decimal(38,2)) a, CAST(0.1 AS decimal(18,1)) + CAST(0.01 AS decimal(18,2)) b --> a decimal(38,1)? = 0.1 | b decimal(20,2)? = 0.11 (1 rows)
SELECT CAST(0.0000009 AS decimal(38,20)) * CAST(1 AS decimal(38,20)) a, CAST(0.0000009 AS decimal(30,20)) * CAST(1 AS decimal(30,10)) b --> a decimal(38,6)? = 0.000001 | b decimal(38,7)? = 0.0000009 (1 rows)
SELECT CAST(99999999999999999999.123456789 AS decimal(30,9)) * 3.5 a, 12345678901234567890.12345 - 98765432109876543210.98765 b, -12345678901234567890123 % 1000000007 c --> a decimal(33,10)? = 349999999999999999996.9320987615 | b decimal(26,5)? = -86419753208641975320.86420 | c decimal(10,0)? = -816186425 (1 rows)
SELECT 99999999999999999999999999999999999999 - 1 a, -99999999999999999999999999999999999999 b, 12345678901234567890 / 1000 c --> a decimal(38,0)? = 99999999999999999999999999999999999998 | b decimal(38,0) = -99999999999999999999999999999999999999 | c decimal(26,6)? = 12345678901234567.890000 (1 rows)
-- overflow and division by zero
SELECT 99999999999999999999999999999999999999 + 1 --> Msg 8115, Level 16, State 2, Line 2: Arithmetic overflow error converting expression to data type numeric.
SELECT CAST(99999999999999999999 AS decimal(38,0)) * CAST(99999999999999999999 AS decimal(38,0)) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type numeric.
SELECT 12345678901234567890 / 0 --> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered.
SELECT 12345678901234567890.5 % 0.0 --> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered.
SELECT CAST(12345678901234567890 AS decimal(20,2)) --> Msg 8115, Level 16, State 8, Line 1: Arithmetic overflow error converting numeric to data type numeric.
SELECT CAST(12345678901234567890 AS bigint) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type bigint.
SELECT CAST(1e38 AS decimal(38,0)) --> Msg 8115, Level 16, State 6, Line 1: Arithmetic overflow error converting float to data type numeric.
-- conversions
SELECT CAST('12345678901234567890123456789012345678' AS decimal(38,0)) a, CAST(' -1234567890123456789.5 ' AS decimal(38,18)) b, CAST('12345678901234567890123456789012345678.5' AS decimal(38,0)) c --> a decimal(38,0)? = 12345678901234567890123456789012345678 | b decimal(38,18)? = -1234567890123456789.500000000000000000 | c decimal(38,0)? = 12345678901234567890123456789012345679 (1 rows)
SELECT CAST('.00000000000000000000000000000000000005' AS decimal(38,37)) a, CAST('-0.5' AS decimal(38,0)) b, TRY_CAST('1e5' AS decimal(38,2)) c, TRY_CAST('123456789012345678901' AS decimal(20,0)) d --> a decimal(38,37)? = 0.0000000000000000000000000000000000001 | b decimal(38,0)? = -1 | c decimal(38,2)? = NULL | d decimal(20,0)? = NULL (1 rows)
SELECT CAST(12345678901234567890.55 AS varchar(40)) a, CAST(12345678901234567890.55 AS float) b --> a varchar(40)? = 12345678901234567890.55 | b float? = 12345678901234567168 (1 rows)
SELECT CAST(12345678901234567890.55 AS nvarchar(5)) --> Msg 8115, Level 16, State 5, Line 1: Arithmetic overflow error converting numeric to data type nvarchar.
SELECT CAST(0.1E0 AS decimal(38,20)) a, CAST(1E22 AS decimal(38,0)) b, CAST(-2.5E0 AS decimal(38,0)) c, CAST(1E-30 AS decimal(38,38)) d, CAST(5E-324 AS decimal(38,38)) e --> a decimal(38,20)? = 0.10000000000000000555 | b decimal(38,0)? = 10000000000000000000000 | c decimal(38,0)? = -3 | d decimal(38,38)? = 0.00000000000000000000000000000100000000 | e decimal(38,38)? = 0.00000000000000000000000000000000000000 (1 rows)
SELECT CAST(CAST(922337203685477.5807 AS money) AS decimal(38,4)) a, CAST(CAST(922337203685477.58065 AS decimal(38,5)) AS money) b, CAST(CAST(-9223372036854775808 AS decimal(38,10)) AS bigint) c, CAST(CAST(-1.99 AS decimal(30,10)) AS int) d, CAST(CAST(0.001 AS decimal(30,10)) AS bit) e, CAST(CAST(45000.5 AS decimal(30,4)) AS datetime) f --> a decimal(38,4)? = 922337203685477.5807 | b money? = 922337203685477.5807 | c bigint? = -9223372036854775808 | d int? = -1 | e bit? = 1 | f datetime? = 2023-03-17 12:00:00.000 (1 rows)
SELECT CAST(CAST(1.5 AS decimal(38,4)) AS decimal(5,1)) narrower, CAST(CAST(1.25 AS decimal(5,2)) AS decimal(38,1)) wider, CAST(CAST(7 AS decimal(18,0)) AS decimal(19,0)) digit, CAST(CAST(9223372036854775807 AS bigint) AS decimal(19,0)) whole --> narrower decimal(5,1)? = 1.5 | wider decimal(38,1)? = 1.3 | digit decimal(19,0)? = 7 | whole decimal(19,0)? = 9223372036854775807 (1 rows)
-- functions
DECLARE @x decimal(38,19) = -1234567890123456789.5, @y decimal(30,2) = 99999999999999999999.99
SELECT ABS(@x) a, SIGN(@x) b, CEILING(@x) c, FLOOR(@x) d, ROUND(@x, -3) e, ROUND(@y, 1, 1) f, -@x g, ROUND(@x, 0) h, ROUND(@x, -30) i
SELECT POWER(CAST(2 AS decimal(38,0)), 100) a, POWER(CAST(10 AS decimal(20,2)), 20) b, STR(@x / 1e15, 10, 2) c, LEN(@x) d, DATALENGTH(@x) e, DATALENGTH(CAST(1 AS decimal(28,0))) f, DATALENGTH(CAST(1 AS decimal(19,0))) g
SELECT ISNUMERIC('12345678901234567890123456789012345678') a, ISNULL(CAST(NULL AS decimal(25,2)), 1) b, COALESCE(@y, @x) c, IIF(1 = 1, 0.5, @y) d, NULLIF(@y, 99999999999999999999.990) e, CHOOSE(2, 1, @y) f, dbo.kind(@y / 1000) g, CONCAT(@y, '|', @x) h
--> a decimal(38,19)? = 1234567890123456789.5000000000000000000 | b decimal(38,19)? = -1.0000000000000000000 | c decimal(38,0)? = -1234567890123456789 | d decimal(38,0)? = -1234567890123456790 | e decimal(38,19)? = -1234567890123457000.0000000000000000000 | f decimal(30,2)? = 99999999999999999999.90 | g decimal(38,19)? = 1234567890123456789.5000000000000000000 | h decimal(38,19)? = -1234567890123456790.0000000000000000000 | i decimal(38,19)? = 0.0000000000000000000 (1 rows)
--> a decimal(38,0)? = 1267650600228229401496703205376 | b decimal(38,2)? = 100000000000000000000.00 | c varchar(10)? =   -1234.57 | d int? = 40 | e int? = 17 | f int? = 13 | g int? = 9 (1 rows)
--> a int? = 1 | b decimal(25,2) = 1.00 | c decimal(38,10)? = 99999999999999999999.9900000000 | d decimal(30,2)? = 0.50 | e decimal(30,2)? = NULL | f decimal(30,2)? = 99999999999999999999.99 | g varchar(60)? = 99999999999999999.9999900000000000000 | h varchar(83) = 99999999999999999999.99|-1234567890123456789.5000000000000000000 (1 rows)
SELECT ROUND(99999999999999999999999999999999999999, -1) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type numeric.
DECLARE @p decimal(25,5) = 1 EXEC sp_executesql N'SET @r = @v * 2 SELECT @r r', N'@v decimal(25,5), @r decimal(38,5) OUTPUT', @v = 12345678901234567890.12345, @r = @p OUTPUT
PRINT @p
IF @p > 24691357802469135780.2468 AND @p < 24691357802469135780.247 PRINT 'between' --> r decimal(38,5)? = 24691357802469135780.24690 (1 rows) --> 24691357802469135780.24690 --> between
-- comparison of different scales and types
SELECT COUNT(*) n FROM (VALUES (1)) v (i) WHERE 1.5 = CAST(1.5 AS decimal(38,20)) AND CAST(0.2 AS decimal(38,38)) / 4 < CAST(5 AS money) --> n int? = 1 (1 rows)
SELECT COUNT(*) n FROM (VALUES (1)) v (i) WHERE CAST(1.5 AS decimal(38,0)) = CAST(2.0 AS decimal(38,37)) AND 99999999999999999999999999999999999999 > 0.00000000000000000000000000000000000001 AND CAST(3 AS bigint) = CAST(3 AS decimal(20,0)) AND CAST(-3 AS bigint) < CAST(-2.5 AS decimal(20,1)) AND CAST(1 AS tinyint) <> 1.00000000000000000001 AND 7 IN (6.5, CAST(7 AS decimal(30,3))) AND '12345678901234567890' = 12345678901234567890.0 --> n int? = 1 (1 rows)
SELECT 1 WHERE CAST(1 AS decimal(38,0)) IN (2, 1) AND CAST(1 AS decimal(37,0)) NOT IN (0.5) --> - int = 1 (1 rows)
SELECT 1 WHERE CAST(1 AS decimal(38,0)) IN (0.5, 2) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support IN among decimals that 38 digits do not hold together.
-- tables: order, keys, indexes, groups, aggregates
CREATE TABLE wide (id int IDENTITY PRIMARY KEY, w decimal(38,4) NULL, n decimal(9,2) NULL DEFAULT 0.5, CONSTRAINT UQ_w UNIQUE (w), CONSTRAINT CK_w CHECK (w < 10000000000000000000000)) -->
INSERT INTO wide (w, n) VALUES (12345678901234567890.1234, 1.25), (-12345678901234567890.1234, -3), (0, 2), (NULL, NULL), (0.0001, 2), (-0.0001, 0) --> (6 changed)
INSERT INTO wide (w) SELECT MAX(w) + 1 FROM wide --> (8153, Line 1) (1 changed)
INSERT INTO wide (w) VALUES (0.00005) --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ_w'. Cannot insert duplicate key in object 'dbo.wide'. The duplicate key value is (0.0001). (3621)
INSERT INTO wide (w) VALUES (10000000000000000000000) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_w". The conflict occurred in database "master", table "dbo.wide", column 'w'. (3621)
INSERT INTO wide (w) VALUES (123456789012345678901234567890123456.7) --> Msg 8115, Level 16, State 8, Line 1: Arithmetic overflow error converting numeric to data type numeric. (3621)
SELECT w, n FROM wide ORDER BY w --> w decimal(38,4)? | n decimal(9,2)? = NULL | NULL; -12345678901234567890.1234 | -3.00; -0.0001 | 0.00; 0.0000 | 2.00; 0.0001 | 2.00; 12345678901234567890.1234 | 1.25; 12345678901234567891.1234 | 0.50 (7 rows)
SELECT w FROM wide WHERE w BETWEEN -0.0001 AND 1 ORDER BY w DESC --> w decimal(38,4)? = 0.0001; 0.0000; -0.0001 (3 rows)
SELECT id FROM wide WHERE w = 12345678901234567890.1234 OR w = 0 --> id int* = 3; 1 (2 rows)
SELECT MIN(w) lo, MAX(w) hi, SUM(w) s, AVG(w) a, SUM(n) sn, AVG(n) an, COUNT(DISTINCT w) c, SUM(DISTINCT n) sd, STDEV(n) dev FROM wide --> lo decimal(38,4)? = -12345678901234567890.1234 | hi decimal(38,4)? = 12345678901234567891.1234 | s decimal(38,4)? = 12345678901234567891.1234 | a decimal(38,6)? = 2057613150205761315.187233 | sn decimal(38,2)? = 2.75 | an decimal(38,6)? = 0.458333 | c int? = 6 | sd decimal(38,2)? = 0.75 | dev float? = 1.8736105963264265 (8153, Line 1) (1 rows)
SELECT n, SUM(w) s FROM wide GROUP BY n ORDER BY n --> n decimal(9,2)? | s decimal(38,4)? = NULL | NULL; -3.00 | -12345678901234567890.1234; 0.00 | -0.0001; 0.50 | 12345678901234567891.1234; 1.25 | 12345678901234567890.1234; 2.00 | 0.0001 (8153, Line 1) (6 rows)
SELECT id, SUM(w) OVER (ORDER BY id ROWS 1 PRECEDING) s, LAG(w, 1, 7) OVER (ORDER BY id) l FROM wide
--> id int* | s decimal(38,4)? | l decimal(38,4)? --> 1 | 12345678901234567890.1234 | 7.0000 --> 2 | 0.0000 | 12345678901234567890.1234 --> 3 | -12345678901234567890.1234 | -12345678901234567890.1234
--> 4 | 0.0000 | 0.0000 --> 5 | 0.0001 | NULL --> 6 | 0.0000 | 0.0001 --> 7 | 12345678901234567891.1233 | -0.0001 (8153, Line 1) (7 rows)
SELECT w FROM wide WHERE id < 3 UNION SELECT n FROM wide WHERE id < 4 ORDER BY 1 --> w decimal(38,4)? = -12345678901234567890.1234; -3.0000; 1.2500; 2.0000; 12345678901234567890.1234 (5 rows)
UPDATE wide SET w = w * 2, n = -n WHERE w > 1 --> (2 changed)
UPDATE wide SET w -= 1 WHERE id = 1 --> (1 changed)
SELECT w, n FROM wide WHERE id IN (1, 7) --> w decimal(38,4)? | n decimal(9,2)? = 24691357802469135779.2468 | -1.25; 24691357802469135782.2468 | -0.50 (2 rows)
SELECT w, n * 3 AS three INTO copied FROM wide WHERE w IS NOT NULL --> (6 changed)
SELECT c.w, w.id FROM copied c JOIN wide w ON w.w = c.w WHERE c.three < w.n ORDER BY w.id --> w decimal(38,4)? | id int* = 24691357802469135779.2468 | 1; -12345678901234567890.1234 | 2; 24691357802469135782.2468 | 7 (3 rows)
SELECT c.name, t.name type, c.max_length, c.precision, c.scale FROM sys.columns c JOIN sys.types t ON t.user_type_id = c.user_type_id WHERE c.object_id = OBJECT_ID('copied') --> name nvarchar(128)? | type nvarchar(128)? | max_length smallint? | precision tinyint? | scale tinyint? = w | decimal | 17 | 38 | 4; three | decimal | 9 | 11 | 2 (2 rows)
SELECT NUMERIC_PRECISION, NUMERIC_SCALE FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'copied' ORDER BY ORDINAL_POSITION --> NUMERIC_PRECISION tinyint? | NUMERIC_SCALE int? = 38 | 4; 11 | 2 (2 rows)
SELECT w FROM copied WHERE w > 1 FOR XML RAW --> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <row w="24691357802469135779.2468"/><row w="24691357802469135782.2468"/> (1 rows)
ALTER TABLE copied ALTER COLUMN three decimal(30,10) -->
ALTER TABLE copied ALTER COLUMN w decimal(18,0) --> Msg 8115, Level 16, State 8, Line 1: Arithmetic overflow error converting numeric to data type numeric. (3621)
ALTER TABLE copied ALTER COLUMN w decimal(25,1) -->
SELECT w, three FROM copied ORDER BY three
--> w decimal(25,1)? | three decimal(30,10)? --> -12345678901234567890.1 | -9.0000000000 --> 24691357802469135779.2 | -3.7500000000 --> 24691357802469135782.2 | -1.5000000000 --> 0.0 | 0.0000000000
--> 0.0 | 6.0000000000 --> 0.0 | 6.0000000000 (6 rows)
SELECT SUM(x) FROM (VALUES (99999999999999999999999999999999999999), (1)) v (x) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type numeric.
INSERT INTO wide (w) VALUES (5)
SELECT SCOPE_IDENTITY() s, @@IDENTITY i, IDENT_CURRENT('wide') c, id FROM wide WHERE id = SCOPE_IDENTITY()
DECLARE @id int = SCOPE_IDENTITY() SELECT @id + 0 id --> (1 changed) --> s decimal(38,0)? = 10 | i decimal(38,0)? = 10 | c decimal(38,0)? = 10 | id int* = 10 (1 rows) --> id int? = 10 (1 rows)
CREATE TABLE counted (id decimal(18,0) IDENTITY(5,1), x int) INSERT INTO counted (x) VALUES (1) SELECT id, id * 2 t FROM counted --> (1 changed) --> id decimal(18,0)* = 5 | t decimal(20,0)? = 10 (1 rows)
CREATE TABLE refused (id decimal(19,0) IDENTITY, x int) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support an identity of more than 18 digits.
CREATE TABLE refused (id decimal(9,2) IDENTITY, x int) --> Msg 2749, Level 16, State 1, Line 1: Identity column 'id' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0, and constrained to be nonnullable.
-- overflow messages depend on the types
SELECT CAST(1.5e0 AS varchar(2)) --> Msg 232, Level 16, State 2, Line 2: Arithmetic overflow error for type varchar, value = 1.500000.
SELECT CAST(1.5e0 AS nvarchar(2)) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type nvarchar.
SELECT CAST(CAST(123 AS bigint) AS varchar(2)) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type varchar.
SELECT CAST(2147483648 AS int) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
SELECT CAST('1x' AS money) --> Msg 235, Level 16, State 0, Line 1: Cannot convert a char value to money. The char value has incorrect syntax.
