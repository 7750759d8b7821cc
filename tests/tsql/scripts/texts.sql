-- lengths count UTF-16 units: a character above U+FFFF has two, and is never split
SELECT LEN(N'a😀b  ') a, DATALENGTH(N'😀') b, LEN('   ') c, LEN('') d, LEN(' a') e, DATALENGTH('a  ') f, LEN(CAST(NULL AS varchar(5))) g --> a int? = 4 | b int? = 4 | c int? = 0 | d int? = 0 | e int? = 2 | f int? = 3 | g int? = NULL (1 rows)
SELECT LEFT(N'😀a', 2) a, LEFT(N'😀a', 1) b, RIGHT(N'a😀', 2) c, RIGHT(N'a😀', 1) d, SUBSTRING(N'a😀b', 4, 9) e, REVERSE(N'a😀b') f, CHARINDEX(N'b', N'😀b') g, UNICODE(N'😀') h, NCHAR(8364) i, NCHAR(128512) j --> a nvarchar(2)? = 😀 | b nvarchar(1)? =  | c nvarchar(2)? = 😀 | d nvarchar(1)? =  | e nvarchar(4)? = b | f nvarchar(4)? = b😀a | g int? = 3 | h int? = 55357 | i nchar(1)? = € | j nchar(1)? = NULL (1 rows)
DECLARE @two nvarchar(3) = N'😀😀' SELECT @two a, CAST(N'😀😀' AS nvarchar(4)) b --> a nvarchar(3)? = 😀 | b nvarchar(4)? = 😀😀 (1 rows)
SELECT CHAR(128) a, CHAR(228) b, ASCII('€') c, ASCII(N'Ж') d, ASCII('') e, CHAR(-1) f, CHAR(256) g, UNICODE('') h --> a char(1)? = € | b char(1)? = ä | c int? = 128 | d int? = 63 | e int? = NULL | f char(1)? = NULL | g char(1)? = NULL | h int? = NULL (1 rows)
SELECT '[' + SUBSTRING('abc', 0, 2) + ']' a, '[' + SUBSTRING('abc', -5, 7) + ']' b, '[' + SUBSTRING('abc', 4, 1) + ']' c, '[' + SUBSTRING('abc', 2, 2147483647) + ']' d, '[' + SUBSTRING('abc', 1, 0) + ']' e, SUBSTRING('abc', NULL, 1) f, LEFT('abc', 0) + '|' g, RIGHT('abc', 9) h --> a varchar(4)? = [a] | b varchar(5)? = [a] | c varchar(3)? = [] | d varchar(5)? = [bc] | e varchar(3)? = [] | f varchar(1)? = NULL | g varchar(2)? = | | h varchar(3)? = abc (1 rows)
SELECT STUFF('abc', 4, 1, 'x') a, STUFF('abc', 0, 1, 'x') b, STUFF('abc', 3, 9, 'xyz') c, STUFF('abc', 1, 0, 'x') d, STUFF('abc', 2, 1, NULL) e, STUFF('', 1, 0, 'x') f, STUFF(NULL, 1, 1, 'x') g, STUFF('abc', 1, -1, 'x') h --> a varchar(8000)? = NULL | b varchar(8000)? = NULL | c varchar(8000)? = abxyz | d varchar(8000)? = xabc | e varchar(8000)? = ac | f varchar(8000)? = NULL | g varchar(8000)? = NULL | h varchar(8000)? = NULL (1 rows)
SELECT REPLACE('abc', '', 'x') a, REPLACE('', 'a', 'x') + '|' b, REPLACE('aaa', 'aa', 'b') c, REPLACE('abc', 'b', NULL) d, REPLACE('abc', 'B', '') e --> a varchar(8000)? = abc | b varchar(8000)? = | | c varchar(8000)? = ba | d varchar(8000)? = NULL | e varchar(8000)? = ac (1 rows)
SELECT CHARINDEX('', 'abc') a, CHARINDEX('c', 'abc', 4) b, CHARINDEX('C', 'abc', -9) c, CHARINDEX('a', '') d, CHARINDEX('b ', 'ab') e, CHARINDEX(NULL, 'a') f, CHARINDEX('b', CAST('ab' AS varchar(max))) g --> a int? = 0 | b int? = 0 | c int? = 3 | d int? = 0 | e int? = 0 | f int? = NULL | g bigint? = 2 (1 rows)
SELECT PATINDEX('%b_', 'abc') a, PATINDEX('b%', 'abc') b, PATINDEX('abc', 'abc') c, PATINDEX('%[^a-z]%', 'ab-c') d, PATINDEX('% ', 'ab ') e, PATINDEX('%é%', N'Écu') f, PATINDEX(NULL, 'a') g, PATINDEX('%[d-f]%', 'abcé') h --> a int? = 2 | b int? = 0 | c int? = 1 | d int? = 3 | e int? = 3 | f int? = 1 | g int? = NULL | h int? = 4 (1 rows)
SELECT CASE WHEN 'abc ' LIKE 'abc' THEN 1 END a, CASE WHEN N'abc ' LIKE N'abc' THEN 1 END b, CASE WHEN 'abc' LIKE 'abc ' THEN 1 END c, CASE WHEN '50%' LIKE '50!%' ESCAPE '!' THEN 1 END d, CASE WHEN 'x' LIKE NULL THEN 1 ELSE 0 END e, CASE WHEN 'a]' LIKE 'a[]]' THEN 1 END f --> a int? = 1 | b int? = NULL | c int? = NULL | d int? = 1 | e int? = 0 | f int? = 1 (1 rows)
SELECT STR(123.45, 6, 1) a, STR(123.45, 2, 2) b, STR(123.456) c, STR(-0.4) d, STR(1.5, 5, -1) e, STR(2.5e0, 8, 2) f, STR(123456, 3) g, STR(NULL) h, STR(1e20, 25) i --> a varchar(6)? =  123.5 | b varchar(2)? = ** | c varchar(10)? =        123 | d varchar(10)? =          0 | e varchar(5)? = NULL | f varchar(8)? =     2.50 | g varchar(3)? = *** | h varchar(10)? = NULL | i varchar(25)? =     100000000000000000000 (1 rows)
SELECT QUOTENAME('a]b', '[]') a, QUOTENAME('a"b', '"') b, QUOTENAME('a>b', '<') c, QUOTENAME('a)b', ')') d, QUOTENAME('a}b', '{') e, QUOTENAME('a`b', '`') f, QUOTENAME('it''s', '''') g, QUOTENAME('a', 'x') h, QUOTENAME(NULL) i, QUOTENAME(REPLICATE('a', 129)) j --> a nvarchar(258)? = [a]]b] | b nvarchar(258)? = "a""b" | c nvarchar(258)? = <a>>b> | d nvarchar(258)? = (a))b) | e nvarchar(258)? = {a}}b} | f nvarchar(258)? = `a``b` | g nvarchar(258)? = 'it''s' | h nvarchar(258)? = NULL | i nvarchar(258)? = NULL | j nvarchar(258)? = NULL (1 rows)
SELECT REPLICATE('ab', 0) + '|' a, REPLICATE('ab', -1) b, SPACE(-1) bb, REPLICATE('', 5) + '|' c, DATALENGTH(SPACE(9000)) d, '[' + TRIM('  a b ') + ']' e, '[' + LTRIM(CHAR(9) + 'a') + ']' f, UPPER(N'straße é') g, LOWER(N'ÀŽ') h --> a varchar(8000)? = | | b varchar(8000)? = NULL | bb varchar(8000)? = NULL | c varchar(8000)? = | | d int? = 8000 | e varchar(8)? = [a b] | f varchar(4)? = [	a] | g nvarchar(8)? = STRAßE É | h nvarchar(2)? = àž (1 rows)
SELECT CONCAT(NULL, NULL) + '|' a, CONCAT(1, NULL, 2.50, 'x') b, CONCAT_WS(NULL, 'a', 'b') c, CONCAT_WS(',', NULL, NULL) + '|' d, CONCAT_WS(', ', 'a', NULL, '', 'b') e, CONCAT('<', CAST('2026-11-21' AS date), '>') f --> a varchar(61)? = | | b varchar(67)? = 12.50x | c varchar(32)? = ab | d varchar(62)? = | | e varchar(35)? = a, , b | f varchar(32)? = <2026-11-21> (1 rows)
-- results are cut at 8,000 bytes unless the first string is (max)
SELECT LEN(REPLACE(REPLICATE('x', 5000), 'x', 'yy')) a, LEN(STUFF(REPLICATE('x', 8000), 1, 0, 'abc')) b, LEN(CONCAT(REPLICATE('x', 8000), 'y')) c, LEN(CONCAT_WS('-', REPLICATE(N'x', 4000), 'y')) d, LEN(REPLACE(CAST(REPLICATE('x', 5000) AS varchar(max)), 'x', 'yy')) e --> a int? = 8000 | b int? = 8000 | c int? = 8000 | d int? = 4000 | e bigint? = 10000 (1 rows)
SELECT value FROM STRING_SPLIT('', ',') --> value varchar(1)? =  (1 rows)
SELECT value FROM STRING_SPLIT('a,,"b\', ',') --> value varchar(6)? = a; ; "b\ (3 rows)
SELECT value FROM STRING_SPLIT(NULL, ',') --> value int? (0 rows)
SELECT value FROM STRING_SPLIT('a', ',;') --> Msg 214, Level 16, State 1, Line 1: Procedure expects parameter 'separator' of type 'nchar(1)/nvarchar(1)'.
SELECT LEFT('abc', -1) --> Msg 537, Level 16, State 3, Line 1: Invalid length parameter passed to the LEFT or SUBSTRING function.
SELECT RIGHT('abc', -1) --> Msg 536, Level 16, State 1, Line 1: Invalid length parameter passed to the right function.
SELECT SUBSTRING('abc', 1, -1) --> Msg 537, Level 16, State 3, Line 1: Invalid length parameter passed to the LEFT or SUBSTRING function.
SELECT NCHAR(55357) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support NCHAR of half a character.
SELECT LEN() --> Msg 174, Level 15, State 1, Line 1: The len function requires 1 argument(s).
SELECT CONCAT('a') --> Msg 189, Level 15, State 1, Line 1: The concat function requires 2 to 254 arguments.
SELECT CHOOSE(0, 'a', 'b') a, CHOOSE(3, 'a', 'b') b, CHOOSE(NULL, 'a') c, CHOOSE(1.9, 'a', 'b') d, CHOOSE(2, 1, 2.5) e, ISNULL(CAST(NULL AS varchar(2)), 'long') f, ISNULL(NULL, 'long') g, NULLIF('a', 'A ') h, NULLIF(1, 1.5) i, IIF(1 = 1, NULL, 2) j --> a varchar(1)? = NULL | b varchar(1)? = NULL | c varchar(1)? = NULL | d varchar(1)? = a | e decimal(11,1)? = 2.5 | f varchar(2) = lo | g varchar(4) = long | h varchar(1)? = NULL | i int? = 1 | j int? = NULL (1 rows)
SELECT NULLIF(NULL, 1) --> Msg 4151, Level 16, State 1, Line 1: The type of the first argument to NULLIF cannot be the NULL constant because the type of the first argument has to be known.
SELECT COALESCE(NULL, NULL) --> Msg 4127, Level 16, State 1, Line 1: At least one of the arguments to COALESCE must be an expression that is not the NULL constant.
SELECT LEN(REPLACE(REPLICATE(CAST('a' AS varchar(max)), 20000), 'a', REPLICATE('b', 8000))) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support REPLACE beyond 100,000,000 bytes.
-- strings are equal by the collation wherever SQLite hashes, sorts or compares keys: blanks at the end, case, accents
CREATE TABLE narrow (id int, c char(10), d varchar(10) NULL)
CREATE TABLE wide (id int, c char(20), d varchar(20) NULL)
INSERT narrow VALUES (1, 'ab', 'ab'), (2, 'Ab', 'AB '), (3, 'é', 'É'), (4, 'x', NULL)
INSERT wide VALUES (11, 'AB', 'ab   '), (12, 'ab ', 'aB'), (13, 'É', 'é '), (14, 'e', 'e') --> (4 changed) (4 changed)
SELECT a.id, b.id FROM narrow a JOIN wide b ON a.c = b.c ORDER BY 1, 2 --> id int? | id int? = 1 | 11; 1 | 12; 2 | 11; 2 | 12; 3 | 13 (5 rows)
SELECT a.id, b.id FROM narrow a LEFT JOIN wide b ON a.c = b.d ORDER BY 1, 2 --> id int? | id int? = 1 | 11; 1 | 12; 2 | 11; 2 | 12; 3 | 13; 4 | NULL (6 rows)
SELECT COUNT(*) FROM narrow a, narrow b, wide c WHERE a.c = b.c AND b.c = c.c --> - int? = 9 (1 rows)
WITH q AS (SELECT DISTINCT RTRIM(d) d FROM narrow) SELECT q.d, w.id FROM q JOIN wide w ON q.d = LTRIM(w.d) ORDER BY 2 --> d varchar(10)? | id int? = ab | 11; ab | 12; É | 13 (3 rows)
DECLARE @t TABLE (a varchar(10))
INSERT @t VALUES ('AB  '), ('é')
SELECT n.id FROM narrow n JOIN @t t ON t.a = n.c
SELECT n.id, s.value FROM narrow n LEFT JOIN STRING_SPLIT('ab   ,E,é', ',') s ON s.value = n.c ORDER BY 1 --> (2 changed) --> id int? = 1; 2; 3 (3 rows) --> id int? | value varchar(9)? = 1 | ab   ; 2 | ab   ; 3 | é; 4 | NULL (4 rows)
SELECT id FROM narrow WHERE LTRIM(d) IN (SELECT LTRIM(d) + ' ' FROM wide) AND c NOT IN (SELECT c + '' FROM wide WHERE id = 13) --> id int? = 1; 2 (2 rows)
SELECT x, COUNT(*) n, (SELECT COUNT(DISTINCT LTRIM(d)) FROM wide) d FROM (SELECT LTRIM(d) x FROM wide) q GROUP BY x --> x varchar(20)? | n int? | d int? = ab    | 2 | 3; e | 1 | 3; é  | 1 | 3 (3 rows)
SELECT COUNT(*) FROM (SELECT d + '' d FROM narrow UNION ALL SELECT d FROM wide EXCEPT SELECT 'AB') q --> - int? = 3 (1 rows)
SELECT COUNT(*) FROM (SELECT LTRIM(d) d FROM narrow UNION ALL SELECT d FROM wide UNION SELECT 'X' UNION SELECT 'x ') q --> - int? = 5 (1 rows)
SELECT id, COUNT(*) OVER (PARTITION BY LTRIM(d)) n, DENSE_RANK() OVER (ORDER BY LTRIM(d)) r FROM wide ORDER BY id --> id int? | n int? | r bigint? = 11 | 2 | 1; 12 | 2 | 1; 13 | 1 | 3; 14 | 1 | 2 (4 rows)
UPDATE narrow SET id = b.id + 10 FROM narrow a JOIN wide b ON a.c = b.c WHERE b.id = 13
DELETE a FROM narrow a JOIN wide b ON a.c = b.c WHERE b.id = 13 --> (1 changed) (1 changed)
SELECT STR(99.99, 4, 2) a, STR(9.99, 1) b, CASE WHEN 'a]b' LIKE 'a[x!]]b' ESCAPE '!' THEN 1 END c, PATINDEX('%', 'abc') d, CASE WHEN 0x41 = 'A' THEN 1 END e --> a varchar(4)? =  100 | b varchar(1)? = * | c int? = 1 | d int? = 1 | e int? = 1 (1 rows)
