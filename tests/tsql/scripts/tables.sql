CREATE TABLE part (id int IDENTITY PRIMARY KEY, code varchar(10) NOT NULL UNIQUE, n int DEFAULT 7, parent int NULL) -->
INSERT part (code, n, parent) VALUES ('a',1,NULL),('b',2,1),('c',3,1),('d',4,3) --> (4 changed)
CREATE TABLE slot (pos int PRIMARY KEY CHECK (pos > 0), what varchar(10)) INSERT slot VALUES (1,'x'),(2,'y'),(3,'z') --> (3 changed)
-- table variables
DECLARE @t TABLE (id int IDENTITY(5,1) PRIMARY KEY, code varchar(10) UNIQUE, at int NOT NULL DEFAULT 3), @n int = 2
INSERT INTO @t (code) SELECT code FROM part WHERE id > @n
INSERT @t (code, at) VALUES ('q', @n)
UPDATE @t SET at = at + 1 WHERE code = 'q'
UPDATE v SET at = p.n FROM @t v JOIN part p ON p.code = v.code WHERE p.n > 3
DELETE FROM @t WHERE code = 'c'
SELECT * FROM @t ORDER BY id
SELECT x.code FROM @t AS x WHERE EXISTS (SELECT * FROM part p WHERE p.code = x.code)
INSERT @t (code) VALUES ('Q')
INSERT @t (code, at) VALUES ('r', NULL)
--> (2 changed) (1 changed) (1 changed) (1 changed) (1 changed) --> id int* | code varchar(10)? | at int = 6 | d | 4; 7 | q | 3 (2 rows) --> code varchar(10)? = d (1 rows)
--> Msg 2627, Level 14, State 1, Line 10: Violation of UNIQUE KEY constraint 'UQ__@t__1_3'. Cannot insert duplicate key in object 'dbo.@t'. The duplicate key value is (Q). (3621)
--> Msg 515, Level 16, State 2, Line 11: Cannot insert the value NULL into column 'at', table '@t'; column does not allow nulls. INSERT fails. (3621)
DECLARE @t TABLE (a int), @i int = 0
WHILE @i < 2 BEGIN DECLARE @u TABLE (a int); INSERT @u VALUES (@i); SET @i += 1 END
SELECT a, (SELECT COUNT(*) FROM @t) AS n FROM @u --> (1 changed) (1 changed) --> a int? | n int? = 0 | 0; 1 | 0 (2 rows)
CREATE PROCEDURE fill AS DECLARE @t TABLE (a int) INSERT @t VALUES (8) SELECT a FROM @t -->
-- each scope has its own; ROLLBACK does not affect them
DECLARE @t TABLE (a int, b varchar(5))
INSERT @t VALUES (1, 'one')
BEGIN TRAN
INSERT part (code) VALUES ('gone')
INSERT @t VALUES (2, 'two')
DECLARE @late TABLE (x int IDENTITY, y int UNIQUE)
INSERT @late VALUES (4), (6)
SAVE TRAN s
INSERT @late VALUES (9)
ROLLBACK TRAN s
ROLLBACK
INSERT @late VALUES (5)
INSERT @late VALUES (5)
EXEC fill
INSERT @t (a) EXEC fill
SELECT * FROM @t
SELECT * FROM @late
--> (1 changed) (1 changed) (1 changed) (2 changed) (1 changed) (1 changed)
--> Msg 2627, Level 14, State 1, Line 14: Violation of UNIQUE KEY constraint 'UQ__@late__11_12'. Cannot insert duplicate key in object 'dbo.@late'. The duplicate key value is (5). (3621) (1 changed)
--> a int? = 8 (1 rows) (1 changed) --> a int? | b varchar(5)? = 1 | one; 2 | two; 8 | NULL (3 rows) --> x int* | y int? = 1 | 4; 2 | 6; 3 | 9; 4 | 5 (4 rows)
SELECT COUNT(*) FROM part --> - int? = 4 (1 rows)
SELECT * FROM @t --> Msg 1087, Level 15, State 2, Line 1: Must declare the table variable "@t".
DECLARE @t int SELECT * FROM @t --> Msg 1087, Level 15, State 2, Line 1: Must declare the table variable "@t".
DECLARE @t TABLE (a int) PRINT @t --> Msg 137, Level 15, State 2, Line 1: Must declare the scalar variable "@t".
DECLARE @t TABLE (a int), @T int --> Msg 134, Level 15, State 1, Line 1: The variable name '@T' has already been declared. Variable names must be unique within a query batch or stored procedure.
-- OUTPUT
DECLARE @ids TABLE (id int, code varchar(10))
INSERT part (code) OUTPUT inserted.id, inserted.n * 2 AS twice, inserted.code AS [c d] VALUES ('e'), ('f')
INSERT part (code, n) OUTPUT inserted.* INTO @ids (id, code) SELECT 'g', 1 --> id int* | twice int? | c d varchar(10) = 6 | 14 | e; 7 | 14 | f (2 rows) --> Msg 213, Level 16, State 1, Line 4: Column name or number of supplied values does not match table definition.
DECLARE @ids TABLE (id int, code varchar(10))
INSERT part (code, n) OUTPUT inserted.id, inserted.code INTO @ids SELECT 'g', 1
UPDATE part SET n = n + 100 OUTPUT inserted.id, inserted.n WHERE id > 5
UPDATE p SET n = 0 OUTPUT inserted.code FROM part p JOIN @ids i ON i.id = p.id
DELETE TOP (1) FROM part OUTPUT deleted.code, deleted.n WHERE id > 4
DELETE part OUTPUT deleted.id, deleted.code INTO @ids WHERE id > 4
SELECT @@ROWCOUNT
SELECT id - (SELECT MIN(id) FROM @ids) d, code FROM @ids ORDER BY id
--> (1 changed) --> id int* | n int? = 6 | 107; 7 | 107; 8 | 101 (3 rows) --> code varchar(10) = g (1 rows) --> code varchar(10) = e | n int? = 107 (1 rows) (2 changed) --> - int? = 2 (1 rows)
--> d int? | code varchar(10)? = 0 | f; 1 | g; 1 | g (3 rows)
DECLARE @got int UPDATE part SET @got = n = n + 10 WHERE code = 'a' SELECT @got --> (1 changed) --> - int? = 11 (1 rows)
BEGIN TRAN UPDATE part SET n = 1 OUTPUT deleted.n ROLLBACK --> n int? = 11; 2; 3; 4 (4 rows)
BEGIN TRAN UPDATE part SET n = n + 1 OUTPUT inserted.id, inserted.n, deleted.* ROLLBACK --> id int* | n int? | id int* | code varchar(10) | n int? | parent int? = 1 | 12 | 1 | a | 11 | NULL; 2 | 3 | 2 | b | 2 | 1; 3 | 4 | 3 | c | 3 | 1; 4 | 5 | 4 | d | 4 | 3 (4 rows)
UPDATE TOP (1) p SET n = n + 1 OUTPUT deleted.id, inserted.n, deleted.code old FROM part p WHERE p.id > 0 --> id int* = 1 | n int? = 12 | old varchar(10) = a (1 rows)
UPDATE part SET n = n OUTPUT id --> Msg 209, Level 16, State 1, Line 1: Ambiguous column name 'id'.
DECLARE @a int UPDATE part SET @a = n --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support UPDATE ... SET @variable = value without a column.
-- rows may exchange keys within an UPDATE
UPDATE slot SET pos = pos + 1 UPDATE slot SET pos = 6 - pos OUTPUT inserted.pos, inserted.what --> (3 changed) --> pos int | what varchar(10)? = 4 | x; 3 | y; 2 | z (3 rows)
SELECT * FROM slot ORDER BY pos --> pos int | what varchar(10)? = 2 | z; 3 | y; 4 | x (3 rows)
UPDATE slot SET pos = 5 --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK__slot__5_6'. Cannot insert duplicate key in object 'dbo.slot'. The duplicate key value is (5). (3621)
UPDATE slot SET pos = pos - 2 --> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the CHECK constraint "CK__slot__5_7". The conflict occurred in database "master", table "dbo.slot", column 'pos'. (3621)
SELECT MIN(pos) FROM slot --> - int? = 2 (1 rows)
-- common tables: in changes, and recursive
;WITH s AS (SELECT id, n FROM part WHERE n > 2) DELETE p FROM part p JOIN s ON s.id = p.id WHERE s.n = 4; --> (1 changed)
WITH s AS (SELECT 'z' AS code), r (c) AS (SELECT code + code FROM s) INSERT part (code) SELECT c FROM r; --> (1 changed)
WITH s AS (SELECT MAX(n) m FROM part) UPDATE part SET n = s.m FROM s WHERE code = 'zz' --> (1 changed)
SELECT code, n FROM part ORDER BY id; --> code varchar(10) | n int? = a | 12; b | 2; c | 3; zz | 12 (4 rows)
WITH tree AS (SELECT id, code, 0 AS level, CAST(code AS varchar(50)) AS path FROM part WHERE parent IS NULL AND code = 'a'
  UNION ALL SELECT p.id, p.code, t.level + 1, CAST(t.path + '/' + p.code AS varchar(50)) FROM tree t JOIN part p ON p.parent = t.id WHERE p.id > 0)
SELECT code, level, path FROM tree ORDER BY path; --> code varchar(10)? | level int? | path varchar(50)? = a | 0 | a; b | 1 | a/b; c | 1 | a/c (3 rows)
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 150) SELECT COUNT(*), SUM(i) FROM n OPTION (MAXRECURSION 200) --> - int? = 150 | - int? = 11325 (1 rows)
SELECT 1 OPTION (MAXRECURSION 32768) --> Msg 310, Level 15, State 1, Line 1: The value 32768 specified for the MAXRECURSION option exceeds the allowed maximum of 32767.
INSERT #none SELECT 1 --> Msg 208, Level 16, State 1, Line 1: Invalid object name '#none'.
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 101) SELECT COUNT(*) FROM n --> - int? = 101 (1 rows)
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 102) SELECT COUNT(*) FROM n --> Msg 530, Level 16, State 1, Line 1: The statement terminated. The maximum recursion 100 has been exhausted before statement completion.
WITH n (i) AS (SELECT 'a' UNION ALL SELECT i + 'b' FROM n) SELECT i FROM n --> Msg 240, Level 16, State 1, Line 1: Types don't match between the anchor and the recursive part in column "i" of recursive query "n".
WITH n (i) AS (SELECT 1 UNION ALL SELECT DISTINCT i + 1 FROM n) SELECT i FROM n --> Msg 460, Level 16, State 1, Line 1: DISTINCT operator is not allowed in the recursive part of a recursive common table expression 'n'.
WITH n (i) AS (SELECT 1 UNION ALL SELECT a.i FROM n a, n b) SELECT i FROM n --> Msg 253, Level 16, State 1, Line 1: Recursive member of a common table expression 'n' has multiple recursive references.
WITH part AS (SELECT 1 AS id) DELETE FROM part --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a query ('part') of other than one table.
-- SCOPE_IDENTITY belongs to the INSERT, not to its OUTPUT INTO; keys with references
CREATE TABLE node (i int IDENTITY PRIMARY KEY, k varchar(5) UNIQUE, p int REFERENCES node(i)) INSERT node (k, p) VALUES ('a', NULL), ('b', 1) --> (2 changed)
DECLARE @o TABLE (x int IDENTITY(70,1), i int)
INSERT node (k) OUTPUT inserted.i INTO @o (i) VALUES ('c')
SELECT SCOPE_IDENTITY() s, x, i FROM @o --> (1 changed) --> s decimal(38,0)? = 3 | x int* = 70 | i int? = 3 (1 rows)
UPDATE node SET k = CASE k WHEN 'a' THEN 'b' ELSE 'a' END WHERE k < 'c' --> (2 changed)
UPDATE TOP (1) node SET k = 'a' WHERE k = 'b' --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ__node__9_11'. Cannot insert duplicate key in object 'dbo.node'. The duplicate key value is (a). (3621)
SELECT i, k FROM node ORDER BY k --> i int* | k varchar(5)? = 2 | a; 1 | b; 3 | c (3 rows)
-- nullability of SELECT INTO, also in a UNION
CREATE TABLE made (id int IDENTITY, n int NULL) -->
INSERT made (n) VALUES (1), (2) --> (2 changed)
SELECT a.id, b.id AS other, ISNULL(a.n, 0) AS n, 'x' AS x INTO #made FROM made a LEFT JOIN made b ON b.id > a.id --> (2 changed)
SELECT * FROM #made --> id int | other int? | n int | x varchar(1) = 1 | 2 | 1 | x; 2 | NULL | 2 | x (2 rows)
SELECT c.name, c.is_nullable, c.is_identity FROM tempdb.sys.columns c WHERE c.object_id = OBJECT_ID('tempdb..#made') --> name nvarchar(128)? | is_nullable bit? | is_identity bit? = id | 0 | 0; other | 1 | 0; n | 0 | 0; x | 0 | 0 (4 rows)
SELECT id INTO #both FROM made UNION ALL SELECT NULL SELECT id FROM #both --> (3 changed) --> id int? = 1; 2; NULL (3 rows)
SELECT 1 AS a FROM (SELECT 1 AS b INTO #never) q --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'INTO'.
-- the catalogue of a new database is empty
CREATE DATABASE newborn -->
SELECT COUNT(*) FROM newborn.sys.tables --> - int? = 0 (1 rows)
IF 1 = 0 SELECT 1 AS a INTO #once ELSE SELECT 2 AS a INTO #once --> Msg 2714, Level 16, State 1, Line 1: There is already an object named '#once' in the database.
CREATE PROC makes_twice AS CREATE TABLE #once (a int) DROP TABLE #once CREATE TABLE #Once (b int) --> Msg 2714, Level 16, State 1, Line 1, Procedure makes_twice: There is already an object named '#Once' in the database.
CREATE TABLE Commas ([a, b] int) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a column name with a comma and a blank.
SELECT 1 AS [a, b] INTO Commas --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a column name with a comma and a blank.
CREATE TABLE Commas ([a,b] int, c int, PRIMARY KEY ([a,b], c)) SELECT COL_NAME(OBJECT_ID('Commas'), key_ordinal) FROM sys.index_columns WHERE object_id = OBJECT_ID('Commas') --> - nvarchar(128)? = a,b; c (2 rows)
ALTER TABLE Commas ADD [, ] int --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a column name with a comma and a blank.
CREATE TABLE Named (a int) -->
EXEC sp_rename 'Named.a', 'a, b', 'COLUMN' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a column name with a comma and a blank.
CREATE TABLE [] (a int) --> Msg 1038, Level 15, State 5, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
SELECT 1 AS a INTO [] --> Msg 1038, Level 15, State 5, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
CREATE PROCEDURE dbo.[] AS SELECT 1 --> Msg 1038, Level 15, State 5, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
CREATE INDEX [] ON Named (a) --> Msg 1038, Level 15, State 5, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
ALTER TABLE Named ADD [] int --> Msg 1038, Level 15, State 5, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
CREATE TABLE Later (v sql_variant) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sql_variant as a type.
DECLARE @d sql_variant --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sql_variant as a type.
