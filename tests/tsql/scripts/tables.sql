CREATE TABLE part (id int IDENTITY PRIMARY KEY, code varchar(10) NOT NULL UNIQUE, n int DEFAULT 7, parent int NULL)
INSERT part (code, n, parent) VALUES ('a',1,NULL),('b',2,1),('c',3,1),('d',4,3)
CREATE TABLE slot (pos int PRIMARY KEY CHECK (pos > 0), what varchar(10))
INSERT slot VALUES (1,'x'),(2,'y'),(3,'z')
GO
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
GO
DECLARE @t TABLE (a int)
SELECT COUNT(*) FROM @t
DECLARE @i int = 0
WHILE @i < 2 BEGIN DECLARE @u TABLE (a int); INSERT @u VALUES (@i); SET @i += 1 END
SELECT * FROM @u
GO
CREATE PROCEDURE fill AS DECLARE @t TABLE (a int) INSERT @t VALUES (8) SELECT a FROM @t
GO
-- each scope has its own; ROLLBACK leaves them alone
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
SELECT COUNT(*) FROM part
GO
SELECT * FROM @t
GO
DECLARE @t int SELECT * FROM @t
GO
DECLARE @t TABLE (a int) PRINT @t
GO
DECLARE @t TABLE (a int), @T int
GO
-- OUTPUT
DECLARE @ids TABLE (id int, code varchar(10))
INSERT part (code) OUTPUT inserted.id, inserted.n * 2 AS twice, inserted.code AS [c d] VALUES ('e'), ('f')
INSERT part (code, n) OUTPUT inserted.* INTO @ids (id, code) SELECT 'g', 1
GO
DECLARE @ids TABLE (id int, code varchar(10))
INSERT part (code, n) OUTPUT inserted.id, inserted.code INTO @ids SELECT 'g', 1
UPDATE part SET n = n + 100 OUTPUT inserted.id, inserted.n WHERE id > 5
UPDATE p SET n = 0 OUTPUT inserted.code FROM part p JOIN @ids i ON i.id = p.id
DELETE TOP (1) FROM part OUTPUT deleted.code, deleted.n WHERE id > 4
DELETE part OUTPUT deleted.id, deleted.code INTO @ids WHERE id > 4
SELECT @@ROWCOUNT
SELECT id - (SELECT MIN(id) FROM @ids) d, code FROM @ids ORDER BY id
DECLARE @got int
UPDATE part SET @got = n = n + 10 WHERE code = 'a'
SELECT @got
GO
UPDATE part SET n = 1 OUTPUT deleted.n
GO
DECLARE @a int UPDATE part SET @a = n
GO
-- rows may take over each other's keys
UPDATE slot SET pos = pos + 1
UPDATE slot SET pos = 6 - pos OUTPUT inserted.pos, inserted.what
SELECT * FROM slot ORDER BY pos
GO
UPDATE slot SET pos = 5
GO
UPDATE slot SET pos = pos - 2
GO
SELECT MIN(pos) FROM slot
-- common tables: before changes, and recursive
;WITH s AS (SELECT id, n FROM part WHERE n > 2) DELETE p FROM part p JOIN s ON s.id = p.id WHERE s.n = 4;
WITH s AS (SELECT 'z' AS code), r (c) AS (SELECT code + code FROM s) INSERT part (code) SELECT c FROM r;
WITH s AS (SELECT MAX(n) m FROM part) UPDATE part SET n = s.m FROM s WHERE code = 'zz'
SELECT code, n FROM part ORDER BY id;
WITH tree AS (SELECT id, code, 0 AS level, CAST(code AS varchar(50)) AS path FROM part WHERE parent IS NULL AND code = 'a'
  UNION ALL SELECT p.id, p.code, t.level + 1, CAST(t.path + '/' + p.code AS varchar(50)) FROM tree t JOIN part p ON p.parent = t.id WHERE p.id > 0)
SELECT code, level, path FROM tree ORDER BY path;
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 150) SELECT COUNT(*), SUM(i) FROM n OPTION (MAXRECURSION 200)
INSERT #none SELECT 1
GO
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 101) SELECT COUNT(*) FROM n
GO
WITH n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 102) SELECT COUNT(*) FROM n
GO
WITH n (i) AS (SELECT 'a' UNION ALL SELECT i + 'b' FROM n) SELECT i FROM n
GO
WITH n (i) AS (SELECT 1 UNION ALL SELECT DISTINCT i + 1 FROM n) SELECT i FROM n
GO
WITH n (i) AS (SELECT 1 UNION ALL SELECT a.i FROM n a, n b) SELECT i FROM n
GO
WITH part AS (SELECT 1 AS id) DELETE FROM part
GO
-- what a change takes for its identity is the change's own; keys that another table needs stay
CREATE TABLE node (i int IDENTITY PRIMARY KEY, k varchar(5) UNIQUE, p int REFERENCES node(i))
INSERT node (k, p) VALUES ('a', NULL), ('b', 1)
DECLARE @o TABLE (x int IDENTITY(70,1), i int)
INSERT node (k) OUTPUT inserted.i INTO @o (i) VALUES ('c')
SELECT SCOPE_IDENTITY() s, x, i FROM @o
UPDATE node SET k = CASE k WHEN 'a' THEN 'b' ELSE 'a' END WHERE k < 'c'
UPDATE TOP (1) node SET k = 'a' WHERE k = 'b'
SELECT i, k FROM node ORDER BY k
GO
-- INTO takes over what may be NULL: what an outer join adds, not ISNULL and literals; the first query of a union has it
CREATE TABLE made (id int IDENTITY, n int NULL)
INSERT made (n) VALUES (1), (2)
SELECT a.id, b.id AS other, ISNULL(a.n, 0) AS n, 'x' AS x INTO #made FROM made a LEFT JOIN made b ON b.id > a.id
SELECT * FROM #made
SELECT c.name, c.is_nullable, c.is_identity FROM tempdb.sys.columns c WHERE c.object_id = OBJECT_ID('tempdb..#made')
SELECT id INTO #both FROM made UNION ALL SELECT NULL
SELECT id FROM #both
GO
SELECT 1 AS a FROM (SELECT 1 AS b INTO #never) q
GO
-- a new database's catalogue is empty, not missing
CREATE DATABASE newborn
GO
SELECT COUNT(*) FROM newborn.sys.tables
GO
IF 1 = 0 SELECT 1 AS a INTO #once ELSE SELECT 2 AS a INTO #once
GO
CREATE PROC makes_twice AS CREATE TABLE #once (a int) DROP TABLE #once CREATE TABLE #Once (b int)
GO
