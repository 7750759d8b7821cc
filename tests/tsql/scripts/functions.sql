SELECT '<' + LTRIM('  a ') + '>' a, '<' + RTRIM(' a ') + '>' b, '<' + TRIM(' a ') + '>' c, UPPER('aé') d, LOWER('AÉ') e, '<' + SPACE(2) + '>' f, STR(3.14159, 6, 2) g, CHAR(65) h, NCHAR(233) i, ASCII('A') j, UNICODE(N'é') k --> a varchar(6)? = <a > | b varchar(5)? = < a> | c varchar(5)? = <a> | d varchar(2)? = AÉ | e varchar(2)? = aé | f varchar(8000)? = <  > | g varchar(6)? =   3.14 | h char(1)? = A | i nchar(1)? = é | j int? = 65 | k int? = 233 (1 rows)
SELECT CONCAT('a', NULL, 1, 2.5) a, CONCAT_WS('-', 'a', NULL, 'b') b, QUOTENAME('a]b') c, QUOTENAME('a', '''') d, IIF(1 > 2, 'x', 'longer') e, IIF(NULL IS NULL, 1, 2.5) f, CHOOSE(2, 'a', 'b') g, CHOOSE(5, 'a') h --> a varchar(54) = a12.5 | b varchar(4) = a-b | c nvarchar(258)? = [a]]b] | d nvarchar(258)? = 'a' | e varchar(6) = longer | f decimal(11,1) = 1.0 | g varchar(1)? = b | h varchar(1)? = NULL (1 rows)
SELECT TRY_CAST('x' AS int) a, TRY_CONVERT(int, '12') b, ISNULL(NULL, 'abc') c, COALESCE(NULL, NULL, 3) d, NULLIF(1, 1) e, ISNUMERIC('1e4') f, ISNUMERIC('a') g, LEN(NEWID()) h --> a int? = NULL | b int? = 12 | c varchar(3) = abc | d int? = 3 | e int? = NULL | f int? = 1 | g int? = 0 | h int? = 36 (1 rows)
SELECT ABS(-3) a, CEILING(1.2) b, FLOOR(-1.2) c, ROUND(2.567, 1) d, ROUND(2.567, 1, 1) e, POWER(2, 10) f, SQRT(16) g, SIGN(-2.5) h, CAST(PI() AS decimal(9,5)) i, SQUARE(3) j --> a int? = 3 | b decimal(2,0)? = 2 | c decimal(2,0)? = -2 | d decimal(4,3)? = 2.600 | e decimal(4,3)? = 2.500 | f int? = 1024 | g float? = 4 | h decimal(2,1)? = -1.0 | i decimal(9,5)? = 3.14159 | j float? = 9 (1 rows)
SELECT COUNT_BIG(*) a, DB_NAME() b, DB_ID('master') c, OBJECT_NAME(OBJECT_ID('nothing')) d, SUSER_SNAME() e, @@TRANCOUNT f, XACT_STATE() g, @@ERROR h FROM (SELECT 1 AS x) q --> a bigint? = 1 | b nvarchar(128)? = master | c int? = 1 | d nvarchar(128)? = NULL | e nvarchar(128)? = sa | f int? = 0 | g smallint? = 0 | h int? = 0 (1 rows)
SELECT CASE WHEN SERVERPROPERTY('ProductVersion') IS NOT NULL AND @@VERSION LIKE '%SQL Server%' AND @@SERVERNAME <> '' AND @@SPID > 0 AND RAND() < 1 AND GETDATE() < DATEADD(day, 2, GETUTCDATE()) AND SYSDATETIME() > '2000' THEN 'fine' END a --> a varchar(4)? = fine (1 rows)
-- at most 8,000 bytes, unless the string is (max)
SELECT LEN(REPLICATE(N'x', 5000)) a, LEN(REPLICATE('x', 9000)) b, LEN(REPLICATE(CAST('x' AS varchar(max)), 9000)) c, LEN(REPLICATE(N'é', 4000)) d, LEN(REPLICATE('é', 8000)) e, DATALENGTH(REPLICATE(N'xy', 3000)) f --> a int? = 4000 | b int? = 8000 | c bigint? = 9000 | d int? = 4000 | e int? = 8000 | f int? = 8000 (1 rows)
DECLARE @v varchar(20) = '', @n int = 1
SELECT @v += q.a, @n *= 3 FROM (SELECT 'p' AS a UNION ALL SELECT 'q') q
SELECT @v v, @n n --> v varchar(20)? = pq | n int? = 9 (1 rows)
SELECT a FROM (SELECT 1 AS a UNION SELECT 2 UNION SELECT 3) q ORDER BY a DESC OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY --> a int = 2 (1 rows)
SELECT DISTINCT a % 2 AS r FROM (SELECT 1 AS a UNION SELECT 2 UNION SELECT 3) q ORDER BY a % 2 --> r int? = 0; 1 (2 rows)
DECLARE @o int = -1
SELECT 1 AS a ORDER BY a OFFSET @o ROWS --> Msg 10742, Level 15, State 1, Line 2: The offset specified in a OFFSET clause may not be negative.
SELECT 1 AS a ORDER BY a OFFSET 0 ROWS FETCH NEXT 0 ROWS ONLY --> Msg 10744, Level 15, State 1, Line 1: The number of rows provided for a FETCH clause must be greater then zero.
SELECT TOP 1 1 AS a ORDER BY a OFFSET 0 ROWS --> Msg 10741, Level 15, State 2, Line 1: A TOP can not be used in the same query or sub-query as a OFFSET.
DECLARE @top int = -5 SELECT TOP (@top) 1 AS a --> Msg 127, Level 15, State 1, Line 1: A TOP N or FETCH rowcount value may not be negative.
SELECT DISTINCT a FROM (SELECT 1 AS a, 2 AS b) q ORDER BY b --> Msg 145, Level 15, State 1, Line 1: ORDER BY items must appear in the select list if SELECT DISTINCT is specified.
SELECT FORMAT(1, 'N') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support FORMAT of int.
SELECT 1 WHERE 1 > ALL (SELECT 1) --> - int (0 rows)
SELECT TOP 1 WITH TIES 1 AS a ORDER BY a --> a int = 1 (1 rows)
SELECT * FROM (SELECT 1 AS a) q CROSS APPLY (SELECT 2 AS b) r --> a int = 1 | b int = 2 (1 rows)
SELECT q.n, s.value FROM (VALUES (1, 'a,b'), (2, NULL), (3, 'c')) q (n, list) CROSS APPLY STRING_SPLIT(q.list, ',') s WHERE s.value <> 'b' --> n int | value varchar(3)? = 1 | a; 3 | c (2 rows)
SELECT t.value, u.value FROM STRING_SPLIT('a b', ' ') t JOIN STRING_SPLIT('b c', ' ') u ON t.value = u.value CROSS APPLY STRING_SPLIT(t.value + '-' + u.value, '-') v --> value varchar(3)? | value varchar(3)? = b | b; b | b (2 rows)
SELECT 1 FROM (SELECT 'a' AS a) q OUTER APPLY STRING_SPLIT(q.a, ',') s --> - int = 1 (1 rows)
SELECT 1 FROM (SELECT 'a' AS a) q CROSS JOIN STRING_SPLIT(q.a, ',') s --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "q.a" could not be bound.
SELECT IIF(1, 2, 3) --> Msg 4145, Level 15, State 1, Line 1: An expression of non-boolean type specified in a context where a condition is expected, near ','.
DECLARE @s nvarchar(max) = N'SELECT COUNT(*) FROM (SELECT 1 AS a' + REPLICATE(CAST(N' UNION ALL SELECT 1' AS nvarchar(max)), 60) + N') q'
EXEC (@s)
SET @s = N'SELECT COUNT(*) FROM (VALUES (1)' + REPLICATE(CAST(N',(1)' AS nvarchar(max)), 99) + N') q(a)'
EXEC (@s)
SET @s = N'SELECT 1' + REPLICATE(CAST(N' + 1 * 1' AS nvarchar(max)), 399)
EXEC (@s) --> - int? = 61 (1 rows) --> - int? = 100 (1 rows) --> - int? = 400 (1 rows)
SELECT 1 AS a UNION SELECT 1 UNION ALL SELECT 1 EXCEPT SELECT 2 UNION ALL SELECT NULL --> a int? = 1; NULL (2 rows)
SELECT 'a' AS a UNION SELECT 'A' UNION SELECT 2.5e0 --> Msg 8114, Level 16, State 5, Line 1: Error converting data type varchar to float.
CREATE TABLE word (t nvarchar(20)) -->
INSERT word VALUES (N'zebra'),(N'étude'),(N'eta'),(N'Etude'),(N'a_b'),(N'a1'),(N'ab'),(N'Ärger'),(N'az') --> (9 changed)
SELECT t FROM word ORDER BY t --> t nvarchar(20)? = a_b; a1; ab; Ärger; az; eta; Etude; étude; zebra (9 rows)
SELECT COUNT(*) FROM word WHERE t = N'ETUDE ' --> - int? = 1 (1 rows)
-- implicit, explicit and impossible conversions
CREATE TABLE kinds (d date, dt datetime, u uniqueidentifier, t text, b varbinary(9), n int) -->
INSERT kinds (dt, b, n, t) VALUES (1, 2, '3', 'x') --> (1 changed)
SELECT CASE WHEN dt = 1 AND b = 2 AND t LIKE 'x' AND t IS NOT NULL THEN DATALENGTH(t) + PATINDEX('%x', t) END FROM kinds --> - int? = 2 (1 rows)
INSERT kinds (n) VALUES (GETDATE()) --> Msg 257, Level 16, State 3, Line 1: Implicit conversion from data type datetime to int is not allowed. Use the CONVERT function to run this query.
INSERT kinds (b) VALUES ('x') --> Msg 257, Level 16, State 3, Line 1: Implicit conversion from data type varchar to varbinary is not allowed. Use the CONVERT function to run this query.
DECLARE @n int SET @n = GETDATE() --> Msg 257, Level 16, State 3, Line 1: Implicit conversion from data type datetime to int is not allowed. Use the CONVERT function to run this query.
SELECT 1 FROM kinds WHERE d = 1 --> Msg 206, Level 16, State 2, Line 1: Operand type clash: date is incompatible with int
SELECT 1 FROM kinds WHERE d > CAST('10:00' AS time) --> Msg 402, Level 16, State 1, Line 1: The data types date and time are incompatible in the greater than operator.
SELECT CASE WHEN 1 = 1 THEN u ELSE n END FROM kinds --> Msg 206, Level 16, State 2, Line 1: Operand type clash: uniqueidentifier is incompatible with int
SELECT CASE WHEN 1 = 1 THEN NULL END --> Msg 8133, Level 16, State 1, Line 1: At least one of the result expressions in a CASE specification must be an expression other than the NULL constant.
SELECT CAST(t AS int) FROM kinds --> Msg 529, Level 16, State 1, Line 1: Explicit conversion from data type text to int is not allowed.
SELECT CAST(1.5 AS varbinary(8)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the conversion of numeric to varbinary.
-- the type text: no comparison, no sorting, few functions
SELECT 1 FROM kinds WHERE t = 'x' --> Msg 402, Level 16, State 1, Line 2: The data types text and varchar are incompatible in the equal to operator.
SELECT 1 FROM kinds WHERE t IN ('x') --> Msg 402, Level 16, State 1, Line 1: The data types text and text are incompatible in the equal to operator.
SELECT t FROM kinds ORDER BY t --> Msg 306, Level 16, State 2, Line 1: The text, ntext, and image data types cannot be compared or sorted, except when using IS NULL or LIKE operator.
SELECT DISTINCT t FROM kinds --> Msg 421, Level 16, State 1, Line 1: The text data type cannot be selected as DISTINCT because it is not comparable.
SELECT t FROM kinds UNION SELECT t FROM kinds --> Msg 5335, Level 16, State 1, Line 1: The data type text cannot be used as an operand to the UNION, INTERSECT or EXCEPT operators because it is not comparable.
SELECT MAX(t) FROM kinds --> Msg 8117, Level 16, State 1, Line 1: Operand data type text is invalid for max operator.
SELECT LEN(t) FROM kinds --> Msg 8116, Level 16, State 1, Line 1: Argument data type text is invalid for argument 1 of len function.
SELECT LEFT('x', GETDATE()) --> Msg 8116, Level 16, State 1, Line 1: Argument data type datetime is invalid for argument 2 of left function.
SELECT SUBSTRING(12345, 2, 2) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 1 of substring function.
SELECT CHARINDEX(3, '12345') --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 1 of charindex function.
SELECT PARSENAME('srv.db.dbo.t', 1) a, PARSENAME('srv.db.dbo.t', 4) b, PARSENAME('[a.b]]c]."d"', 2) c, PARSENAME('db..t', 2) d, PARSENAME('15.0.2000.5', 4) e, PARSENAME('a.b.c.d.e', 1) f, PARSENAME('[a', 1) g, PARSENAME('t', 0) h --> a nvarchar(128)? = t | b nvarchar(128)? = srv | c nvarchar(128)? = a.b]c | d nvarchar(128)? = NULL | e nvarchar(128)? = 15 | f nvarchar(128)? = NULL | g nvarchar(128)? = NULL | h nvarchar(128)? = NULL (1 rows)
SELECT HASHBYTES('MD5', 'abc') a, HASHBYTES('sha1', N'abc') b, HASHBYTES('SHA2_256', 0x616263) c, DATALENGTH(HASHBYTES('SHA2_512', '')) d, HASHBYTES('none', 'abc') e, HASHBYTES('MD5', CAST(NULL AS varchar)) f --> a varbinary(8000)? = 0x900150983CD24FB0D6963F7D28E17F72 | b varbinary(8000)? = 0x9F04F41A848514162050E3D68C1A7ABB441DC2B5 | c varbinary(8000)? = 0xBA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD | d int? = 64 | e varbinary(8000)? = NULL | f varbinary(8000)? = NULL (1 rows)
SELECT HASHBYTES('MD4', 'abc') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support HASHBYTES with MD2 and MD4.
SELECT HASHBYTES('MD5', 1) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 2 of hashbytes function.
SELECT TIMEFROMPARTS(23, 59, 59, 5, 1) a, TIMEFROMPARTS(1, 2, 3, 0, 0) b, DATETIME2FROMPARTS(2026, 11, 22, 1, 2, 3, 1234567, 7) c, SMALLDATETIMEFROMPARTS(2026, 11, 22, 1, 2) d, TIMEFROMPARTS(1, NULL, 3, 0, 0) e --> a time(1)? = 23:59:59.5 | b time(0)? = 01:02:03 | c datetime2(7)? = 2026-11-22 01:02:03.1234567 | d smalldatetime? = 2026-11-22 01:02:00 | e time(0)? = NULL (1 rows)
SELECT TIMEFROMPARTS(1, 2, 3, 10, 1) --> Msg 289, Level 16, State 1, Line 1: Cannot construct data type time, some of the arguments have values which are not valid.
DECLARE @s int = 3 SELECT DATETIME2FROMPARTS(2026, 1, 1, 0, 0, 0, 0, @s) --> Msg 10760, Level 15, State 1, Line 1: Scale argument is not valid. Valid expressions for data type datetime2 scale argument are integer constants and integer constant expressions.
SELECT TIMEFROMPARTS(1, 2, 3, 0, 8) --> Msg 1002, Level 15, State 1, Line 1: Line 1: Specified scale 8 is invalid.
SELECT SCHEMA_ID() a, SCHEMA_ID('SYS') b, SCHEMA_ID('sales') c, HAS_DBACCESS('tempdb') d, HAS_DBACCESS('nothing') e, OBJECT_DEFINITION(1) f --> a int? = 1 | b int? = 4 | c int? = NULL | d int? = 1 | e int? = NULL | f nvarchar(max)? = NULL (1 rows)
-- comparisons with the rows of a query
SELECT a, CASE WHEN a > ALL (SELECT 1 UNION SELECT 2) THEN 'all' WHEN a >= ANY (SELECT 2) THEN 'any' WHEN NOT a >= ANY (SELECT 2) THEN 'none' END b FROM (VALUES (1), (2), (3), (NULL)) v (a) --> a int? | b varchar(4)? = 1 | none; 2 | any; 3 | all; NULL | NULL (4 rows)
SELECT CASE WHEN 1 > ALL (SELECT 1 WHERE 1 = 0) THEN 1 END a, CASE WHEN 1 = ANY (SELECT 1 WHERE 1 = 0) THEN 1 ELSE 0 END b, CASE WHEN 1 <> ALL (SELECT NULL) THEN 1 WHEN NOT 1 <> ALL (SELECT NULL) THEN 2 ELSE 3 END c, CASE WHEN 'A ' = SOME (SELECT 'a') THEN 1 END d, CASE WHEN 2 <> ALL (SELECT 2 UNION ALL SELECT NULL) THEN 1 ELSE 0 END e --> a int? = 1 | b int = 0 | c int = 3 | d int? = 1 | e int = 0 (1 rows)
SELECT g, SUM(x) s FROM (VALUES (1, 2), (1, 3), (2, 9)) v (g, x) GROUP BY g HAVING SUM(x) >= ALL (SELECT y FROM (VALUES (5), (6)) w (y)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support an aggregate compared with ALL, ANY or SOME.
SELECT a FROM (VALUES (1), (2), (3)) v (a) WHERE a = ANY (SELECT b FROM (VALUES (1, 1), (3, 2)) w (b, c) WHERE w.c <= v.a) --> a int = 1; 3 (2 rows)
SELECT 1 WHERE 1 = ALL (SELECT 1, 2) --> Msg 116, Level 16, State 1, Line 1: Only one expression can be specified in the select list when the subquery is not introduced with EXISTS.
SELECT TOP 100 PERCENT a FROM (VALUES (1), (2)) v (a) ORDER BY a DESC --> a int = 2; 1 (2 rows)
SELECT TOP (50) PERCENT a FROM (VALUES (1), (2)) v (a) --> a int = 1 (1 rows)
CREATE TABLE topped (n int IDENTITY, a int DEFAULT 7) -->
INSERT TOP (2) INTO topped (a) VALUES (1), (2), (3) --> (2 changed)
INSERT TOP (1) topped (a) OUTPUT inserted.n, inserted.a SELECT 4 UNION ALL SELECT 5 --> n int* = 3 | a int? = 4 (1 rows)
SET ROWCOUNT 1 INSERT TOP (2) topped (a) SELECT 6 UNION ALL SELECT 6 SET ROWCOUNT 0 SELECT n, a FROM topped --> (1 changed) --> n int* | a int? = 1 | 1; 2 | 2; 3 | 4; 4 | 6 (4 rows)
INSERT TOP (1) topped (a) EXEC ('SELECT 1') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support INSERT TOP ... EXECUTE.
SELECT TYPE_NAME(231) a, TYPE_NAME(256) b, TYPE_NAME(1) c, TYPE_ID('[datetime]') d, TYPE_ID('sys.sysname') e, TYPE_ID('dbo.nothing') f, TYPE_ID('numeric') g, TYPE_NAME(NULL) h --> a nvarchar(128)? = nvarchar | b nvarchar(128)? = sysname | c nvarchar(128)? = NULL | d int? = 61 | e int? = 256 | f int? = NULL | g int? = 108 | h nvarchar(128)? = NULL (1 rows)
SELECT TRANSLATE('2*[3+4]/{7-2}', '[]{}', '()()') a, TRANSLATE(N'Gruß Äpfel', 'äS', N'aZ') b, TRANSLATE('abc', NULL, 'a') c, TRANSLATE('aAb', 'aab', 'xyz') d
SELECT TRANSLATE('abc', 'ab', 'x')
--> a varchar(8000)? = 2*(3+4)/(7-2) | b nvarchar(4000)? = Gruß apfel | c varchar(8000)? = NULL | d varchar(8000)? = xxz (1 rows)
--> Msg 9828, Level 16, State 1, Line 2: The second and third arguments of the TRANSLATE built-in function must contain an equal number of characters.
CREATE TABLE Keyed (id uniqueidentifier DEFAULT NEWSEQUENTIALID() PRIMARY KEY, n int)
INSERT Keyed (n) VALUES (1), (2) INSERT Keyed (n) VALUES (3)
SELECT n FROM Keyed ORDER BY id
SELECT LEN(id), COUNT(*) FROM Keyed GROUP BY LEN(id) --> (2 changed) (1 changed) --> n int? = 1; 2; 3 (3 rows) --> - int? = 36 | - int? = 3 (1 rows)
SELECT NoSuchFunction(1) --> Msg 195, Level 15, State 10, Line 1: 'NoSuchFunction' is not a recognized built-in function name.
SELECT RADIANS(180) a, RADIANS(180.0) b, DEGREES(1) c, DEGREES(PI()) d --> a int? = 3 | b decimal(38,18)? = 3.141592653589793116 | c int? = 57 | d float? = 180 (1 rows)
SELECT AVG(a) FROM (VALUES (2147483647), (1)) v (a) --> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
SELECT MIN(CAST(1 AS bit)) --> Msg 8117, Level 16, State 1, Line 1: Operand data type bit is invalid for min operator.
-- characters to trim
DECLARE @c nvarchar(5) = 'xé' SELECT TRIM('.,! ' FROM '  # test  .!') a, '[' + TRIM(@c FROM 'XÉ a bxe') + ']' b, TRIM(NULL FROM 'a') c, TRIM('' FROM ' a ') + '|' d --> a varchar(12)? = # test | b varchar(10)? = [ a bxe] | c varchar(1)? = NULL | d varchar(4)? =  a | (1 rows)
SELECT TRIM('a', 'b') --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near ','.
SELECT TRIM(5 FROM 5) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 1 of Trim function.
-- types that arguments may not have
SELECT COUNT_BIG(NULL) --> Msg 8117, Level 16, State 1, Line 2: Operand data type NULL is invalid for count_big operator.
SELECT STDEV('1') --> Msg 8117, Level 16, State 1, Line 1: Operand data type varchar is invalid for stdev operator.
SELECT SUM(CAST(1 AS bit)) --> Msg 8117, Level 16, State 1, Line 1: Operand data type bit is invalid for sum operator.
SELECT COUNT(t) FROM kinds --> Msg 8117, Level 16, State 1, Line 1: Operand data type text is invalid for count operator.
SELECT STRING_AGG(NULL, ',') --> Msg 8116, Level 16, State 1, Line 1: Argument data type NULL is invalid for argument 1 of string_agg function.
SELECT STRING_AGG('a', 1) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 2 of string_agg function.
SELECT STRING_AGG(0x41, ',') --> Msg 8116, Level 16, State 1, Line 1: Argument data type varbinary is invalid for argument 1 of string_agg function.
SELECT SUBSTRING(NULL, 1, 1) --> Msg 8116, Level 16, State 1, Line 1: Argument data type NULL is invalid for argument 1 of substring function.
SELECT SUBSTRING('abc', 1.9, 2.9) a, PATINDEX(NULL, 'a') b, CHARINDEX(NULL, 'a') c, UPPER(NULL) d, EOMONTH(NULL) e, SIGN(CAST(1 AS bit)) f --> a varchar(3)? = ab | b int? = NULL | c int? = NULL | d varchar(1)? = NULL | e date? = NULL | f float? = 1 (1 rows)
SELECT LEFT('abc', '2') --> Msg 8116, Level 16, State 1, Line 1: Argument data type varchar is invalid for argument 2 of left function.
SELECT ROUND(1.5, 1e0) --> Msg 8116, Level 16, State 1, Line 1: Argument data type float is invalid for argument 2 of round function.
SELECT CHARINDEX('a', 'abc', $1) --> Msg 8116, Level 16, State 1, Line 1: Argument data type money is invalid for argument 3 of charindex function.
SELECT PATINDEX('%1%', NULL) --> Msg 8116, Level 16, State 1, Line 1: Argument data type NULL is invalid for argument 2 of patindex function.
SELECT PATINDEX('%1%', 123) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 2 of patindex function.
SELECT TRANSLATE('abc', 'b', 5) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 3 of translate function.
SELECT EOMONTH(0) --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 1 of eomonth function.
