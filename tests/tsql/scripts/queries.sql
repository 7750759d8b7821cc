CREATE TABLE a (id int PRIMARY KEY, g varchar(10), n int NULL)
INSERT a VALUES (1,'x',10),(2,'x',NULL),(3,'Y',30),(4,'y',5)
CREATE TABLE b (id int, aid int, t varchar(20))
INSERT b SELECT 10+id, id, 'b' + CONVERT(varchar, id) FROM a WHERE id < 3
GO
-- groups meet without regard to case; a column outside of them is refused
SELECT g, COUNT(*) c, SUM(n) s, AVG(n) av FROM a GROUP BY g HAVING COUNT(*) > 1 ORDER BY g
SELECT UPPER(g), COUNT(n) FROM a GROUP BY UPPER(g) ORDER BY 2 DESC
SELECT COUNT(DISTINCT g), COUNT(*) FROM a
GO
SELECT g, n FROM a GROUP BY g
GO
SELECT a.id, b.t FROM a LEFT OUTER JOIN b ON a.id = b.aid WHERE a.id IN (1,3) ORDER BY a.id
SELECT a.id, b.t FROM a, b WHERE a.id = b.aid
SELECT x.id, b.id FROM b RIGHT JOIN a AS x ON x.id = b.aid ORDER BY x.id DESC
SELECT * FROM a WITH (NOLOCK) WHERE EXISTS (SELECT * FROM b WHERE b.aid = a.id) AND n IS NOT NULL
SELECT id, (SELECT t FROM b WHERE b.aid = a.id) AS t, (SELECT MAX(t) FROM b) m FROM a
SELECT id FROM a WHERE id IN (SELECT aid FROM b) UNION SELECT 99 UNION ALL SELECT 99 ORDER BY id DESC
SELECT id FROM a EXCEPT SELECT aid FROM b
SELECT DISTINCT g FROM a
SELECT TOP 2 * FROM a ORDER BY n DESC, id
SELECT * FROM a WHERE g LIKE '[x]%' AND id BETWEEN 1 AND 2 OR NOT (id <> 4)
SELECT 'same' WHERE 'abc ' = 'ABC' AND NOT 'a' = 'b'
SELECT d.t, d.n FROM (SELECT t, COUNT(*) n FROM b GROUP BY t) d WHERE d.n = 1;
WITH q AS (SELECT t FROM b) SELECT x.t FROM q x JOIN q y ON x.t = y.t
SELECT CASE WHEN n > 8 THEN 'big' WHEN n IS NULL THEN NULL ELSE 'small' END z, CASE g WHEN 'x' THEN 1 ELSE 0.5 END FROM a
SELECT 1/2, 7 % 3, 1.0/3, 'a' + 'b', 5 & 3, -7/2, CAST(1 AS float)/4, 'a' + NULL
GO
SELECT id, (SELECT id FROM a) FROM b
GO
SELECT id FROM a JOIN b ON a.id = b.aid
GO
SELECT x.id FROM a
GO
SELECT id FROM a ORDER BY 3
GO
SELECT id FROM a ORDER BY 1, id DESC
GO
SELECT 1 UNION SELECT 2, 3
GO
-- what SQLite would take without a word
SELECT id FROM a ORDER BY 'id'
GO
DECLARE @by varchar(9) = 'id' SELECT id FROM a ORDER BY @by
GO
SELECT g FROM a GROUP BY g HAVING n > 1
GO
SELECT SUM((SELECT 1)) FROM a
GO
SELECT 1 FROM a JOIN a ON 1 = 1
GO
SELECT 1 FROM a x, b x
GO
SELECT * FROM (SELECT id, n AS id FROM a) q
GO
-- the table is known, its column is not
SELECT x.nosuch FROM a x
GO
WITH c AS (SELECT 1 AS n UNION ALL SELECT c.n + 1 FROM a LEFT JOIN c ON c.n = a.id) SELECT n FROM c
GO
WITH c AS (SELECT 1 AS n UNION ALL SELECT MAX(n) + 1 FROM c) SELECT n FROM c
GO
UPDATE a SET id = MAX(id)
GO
DELETE a WHERE id = MAX(id)
GO
SELECT 'many' FROM a HAVING COUNT(*) > 1
SELECT 'none' AS how, 1 AS n FROM a WHERE 1 = 0 HAVING COUNT(*) = 0 ORDER BY n
SELECT 1 WHERE EXISTS (SELECT 1 FROM a HAVING COUNT(*) > 1000)
SELECT SUM(id) FROM a HAVING 1 = 1
GO
-- variables that rows assign one after the other, in order; a subquery's columns are none of theirs; money as written
CREATE TABLE piece (id int, n varchar(10), m money)
INSERT piece VALUES (3, 'c', $1.5), (1, 'a', $20), (2, 'b', -$.25)
DECLARE @l varchar(100) = '', @s int = 0, @x varchar(10), @i int = 0, @c varchar(100)
SELECT @l = @l + n + ',', @s += id FROM piece ORDER BY id
SELECT @c = COALESCE(@c + ', ', '') + QUOTENAME(n) FROM piece p WHERE id > 1 ORDER BY p.n DESC
SELECT @l, @s, @c
SELECT @l = ''
SELECT TOP (2) @l = @l + a.n + b.n + ' ', @i = @i + 1, @x = (SELECT MAX(n) FROM piece q WHERE q.id <= a.id) FROM piece a JOIN piece b ON a.id < b.id ORDER BY a.id, b.id DESC
SELECT @l, @i, @x, @@ROWCOUNT
SELECT $5 a, $1.23456 b, -$2 c, $1 + 1 d, 2 * $1.10 e
GO
DECLARE @a int
SELECT @a = id, n FROM piece
GO
DECLARE @a int, @b int
SELECT @a = (SELECT @b = 1)
GO
GO
-- TOP takes a number, or brackets with anything whole that reads no column; a backslash at its end continues a line
SELECT TOP (SELECT 1 + 1) i, 'a\
b\' FROM (VALUES (1), (2), (3)) v (i) ORDER BY i
GO
SELECT TOP 1.5 i FROM (VALUES (1)) v (i)
GO
SELECT TOP (i) i FROM (VALUES (1)) v (i)
GO
DECLARE @n int
SELECT TOP @n 1
GO
DELETE TOP 1 FROM t
GO
-- a common table sees those before it, and a name is given once
WITH a AS (SELECT 1 AS x), b AS (SELECT x + 1 AS x FROM a), a2 AS (SELECT x FROM b UNION ALL SELECT x + 1 FROM a2 WHERE x < 3) SELECT x FROM a2
GO
WITH a AS (SELECT x FROM later), later AS (SELECT 1 AS x) SELECT x FROM a
GO
WITH a AS (SELECT 1 AS x), A AS (SELECT 2 AS x) SELECT x FROM a
GO
SELECT 1 AS x, 2 AS x ORDER BY x
GO
SELECT id FROM a UNION SELECT 99 ORDER BY id + 1
GO
-- places that take no subquery
PRINT 'rows: ' + STR((SELECT 1))
GO
CREATE TABLE of_one (a int DEFAULT (SELECT 1))
GO
CREATE TABLE of_one (a int CHECK (EXISTS (SELECT 1)))
GO
SELECT 1 FROM a, a AS b JOIN a AS c ON c.id = a.id
GO
SELECT a FROM (VALUES (1, 2), (3)) v (a, b)
GO
-- an error at the end
SELECT 1 WHERE 'on' 

GO
BEGIN PRINT 'no end'
GO
