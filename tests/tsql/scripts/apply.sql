-- APPLY: the right side uses columns of the left one
CREATE TABLE customer (id int PRIMARY KEY, name nvarchar(20) NOT NULL)
CREATE TABLE purchase (id int PRIMARY KEY, customer int, amount decimal(20, 2), at datetime, note varchar(9), tag varbinary(4), f float)
INSERT customer VALUES (1, N'Ada'), (2, N'Bob'), (3, N'Cyé')
INSERT purchase VALUES (10, 1, 5.5, '2024-01-01', 'a', 0x00FF, 0.1), (11, 1, 7.25, '2024-02-01', 'B', NULL, 1e300), (12, 1, 123456789012345678.91, NULL, 'é"\,', 0x, -2), (13, 2, 1, '2024-03-01 10:11:12.123', NULL, 0x01, NULL) --> (3 changed) (4 changed)
-- TOP with ORDER BY; values of every storage form
SELECT c.name, p.* FROM customer c CROSS APPLY (SELECT TOP 2 * FROM purchase WHERE customer = c.id ORDER BY amount DESC) p ORDER BY c.id, p.id
--> name nvarchar(20) | id int | customer int? | amount decimal(20,2)? | at datetime? | note varchar(9)? | tag varbinary(4)? | f float?
--> Ada | 11 | 1 | 7.25 | 2024-02-01 00:00:00.000 | B | NULL | 1e+300 --> Ada | 12 | 1 | 123456789012345678.91 | NULL | é"\, | 0x | -2
--> Bob | 13 | 2 | 1.00 | 2024-03-01 10:11:12.123 | NULL | 0x01 | NULL (3 rows)
SELECT c.id, p.id, p.amount, p.f FROM customer c OUTER APPLY (SELECT TOP (1) * FROM purchase WHERE customer = c.id ORDER BY id) p ORDER BY c.id --> id int | id int? | amount decimal(20,2)? | f float? = 1 | 10 | 5.50 | 0.1; 2 | 13 | 1.00 | NULL; 3 | NULL | NULL | NULL (3 rows)
-- aggregates, grouping, several in a row, comparison that ignores case, names of the columns
SELECT c.name, s.n, s.total, x.twice FROM customer c CROSS APPLY (SELECT COUNT(*), SUM(amount) FROM purchase p WHERE p.customer = c.id) s (n, total) CROSS APPLY (SELECT s.n * 2 AS twice) x WHERE s.n > 0 ORDER BY s.n --> name nvarchar(20) | n int? | total decimal(38,2)? | twice int? = Bob | 1 | 1.00 | 2; Ada | 3 | 123456789012345691.66 | 6 (2 rows)
SELECT c.id, v.label, v.value FROM customer c CROSS APPLY (VALUES ('id', CAST(c.id AS varchar(9))), ('name', c.name)) v (label, value) WHERE v.label = 'NAME' OR c.id = 3 --> id int | label varchar(4) | value nvarchar(20)? = 1 | name | Ada; 2 | name | Bob; 3 | id | 3; 3 | name | Cyé (4 rows)
SELECT DISTINCT n.note FROM customer c CROSS APPLY (SELECT LOWER(note) FROM purchase WHERE customer = c.id AND note < 'c' UNION ALL SELECT note FROM purchase WHERE customer = c.id AND note < 'c') n (note) ORDER BY n.note --> note varchar(9)? = a; b (2 rows)
SELECT c.id, COUNT(p.id) n, MAX(p.note) m FROM customer c OUTER APPLY (SELECT id, note FROM purchase WHERE customer = c.id) p GROUP BY c.id HAVING COUNT(p.id) < 3 ORDER BY n DESC --> id int | n int? | m varchar(9)? = 2 | 1 | NULL; 3 | 0 | NULL (8153, Line 1) (2 rows)
-- nested, within a subquery, with joins around
SELECT c.id, a.id, b.more FROM customer c CROSS APPLY (SELECT p.id, p.amount FROM purchase p WHERE p.customer = c.id) a OUTER APPLY (SELECT q.more FROM (SELECT c.id + a.id AS more) q WHERE a.amount > 6) b JOIN customer again ON again.id = c.id WHERE EXISTS (SELECT 1 FROM purchase z CROSS APPLY (SELECT z.id + c.id AS k) k WHERE k.k = a.id + c.id AND z.note IS NOT NULL) ORDER BY a.id --> id int | id int | more int? = 1 | 10 | NULL; 1 | 11 | 12; 1 | 12 | 13 (3 rows)
SELECT c.id, (SELECT MAX(k.v) FROM purchase p CROSS APPLY (SELECT p.amount * 2 AS v WHERE p.customer = c.id) k) m FROM customer c ORDER BY 1 --> id int | m decimal(22,2)? = 1 | 246913578024691357.82; 2 | 2.00; 3 | NULL (3 rows)
-- a variable, a common table expression, a set operation, a window function, a view, a table
DECLARE @least int = 11
;WITH late AS (SELECT * FROM purchase WHERE id >= @least)
SELECT c.id, l.id, l.r FROM customer c CROSS APPLY (SELECT id, ROW_NUMBER() OVER (ORDER BY id DESC) AS r FROM late WHERE customer = c.id AND id >= @least EXCEPT SELECT 13, 1) l ORDER BY 1, 2 --> id int | id int | r bigint? = 1 | 11 | 2; 1 | 12 | 1 (2 rows)
SELECT COUNT(*) a FROM customer a CROSS APPLY customer b
SELECT COUNT(*) a FROM customer a OUTER APPLY (SELECT 1 AS x WHERE 1 = 0) b --> a int? = 9 (1 rows) --> a int? = 3 (1 rows)
-- inline functions with columns as arguments
CREATE FUNCTION purchasesOf (@customer int, @most int = 1) RETURNS TABLE AS RETURN (SELECT TOP (@most) id, amount FROM purchase WHERE customer = @customer ORDER BY id DESC) -->
SELECT c.id, p.id, p.amount FROM customer c OUTER APPLY dbo.purchasesOf(c.id, 2) p ORDER BY 1, 2
SELECT c.id, p.id FROM customer c CROSS APPLY dbo.purchasesOf(c.id, DEFAULT) AS p --> id int | id int? | amount decimal(20,2)? = 1 | 11 | 7.25; 1 | 12 | 123456789012345678.91; 2 | 13 | 1.00; 3 | NULL | NULL (4 rows) --> id int | id int = 1 | 12; 2 | 13 (2 rows)
SELECT c.id FROM customer c CROSS JOIN dbo.purchasesOf(c.id, 1) p --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "c.id" could not be bound.
-- changes
UPDATE c SET name = c.name + N' ' + l.note OUTPUT inserted.name FROM customer c CROSS APPLY (SELECT TOP 1 note FROM purchase p WHERE p.customer = c.id ORDER BY note) l WHERE l.note IS NOT NULL
DELETE c FROM customer c OUTER APPLY (SELECT MIN(id) AS first FROM purchase p WHERE p.customer = c.id) l WHERE l.first IS NULL
INSERT customer SELECT x.id, x.name FROM customer c CROSS APPLY (SELECT c.id + 10 AS id, c.name) x
SELECT * FROM customer
SELECT x.total INTO totals FROM customer c CROSS APPLY (SELECT SUM(amount) total FROM purchase WHERE customer = c.id) x
SELECT * FROM totals
--> name nvarchar(20) = Ada a (1 rows) (1 changed) (2 changed) --> id int | name nvarchar(20) = 1 | Ada a; 2 | Bob; 11 | Ada a; 12 | Bob (4 rows) (4 changed)
--> total decimal(38,2)? = 123456789012345691.66; 1.00; NULL; NULL (4 rows)
DECLARE @all nvarchar(99) = N'' SELECT @all += x.n + N';' FROM customer c CROSS APPLY (SELECT UPPER(c.name) AS n) x ORDER BY c.id DESC SELECT @all a --> a nvarchar(99)? = BOB;ADA A;BOB;ADA A; (1 rows)
-- sorted by columns of the left side, also in other subqueries
SELECT c.id, k.* FROM customer c CROSS APPLY (SELECT TOP 2 id, note FROM purchase ORDER BY ABS(id - 10 - c.id), id) k ORDER BY 1, 2
SELECT c.id, k.* FROM customer c CROSS APPLY (SELECT customer, note + c.name AS n, COUNT(*) m FROM purchase GROUP BY customer, note ORDER BY note + c.name DESC OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY) k ORDER BY 1
SELECT c.id, (SELECT TOP 1 id FROM purchase ORDER BY CASE customer WHEN c.id THEN 0 ELSE 1 END, id DESC) l FROM customer c WHERE 10 IN (SELECT TOP 1 id FROM purchase ORDER BY ABS(id - c.id * 10)) ORDER BY 1
--> id int | id int | note varchar(9)? = 1 | 10 | a; 1 | 11 | B; 2 | 11 | B; 2 | 12 | é"\,; 11 | 12 | é"\,; 11 | 13 | NULL; 12 | 12 | é"\,; 12 | 13 | NULL (8 rows)
--> id int | customer int? | n nvarchar(29)? | m int? = 1 | 1 | BAda a | 1; 2 | 1 | BBob | 1; 11 | 1 | BAda a | 1; 12 | 1 | BBob | 1 (4 rows) --> id int = 1 | l int? = 12 (1 rows)
CREATE FUNCTION nearest (@to int) RETURNS TABLE AS RETURN SELECT TOP 1 id FROM purchase ORDER BY ABS(id - @to), id -->
SELECT c.id, n.id FROM customer c CROSS APPLY dbo.nearest(c.id + 10) n ORDER BY 1 --> id int | id int = 1 | 11; 2 | 12; 11 | 13; 12 | 13 (4 rows)
-- outer joins around, a table before a comma, a recursive common table expression
SELECT c.id, k.x, p.id FROM customer c OUTER APPLY (SELECT c.id + 9 AS x WHERE c.id > 1) k FULL JOIN purchase p ON p.id = k.x WHERE p.id > 11 OR p.id IS NULL ORDER BY 1, 3
SELECT c.id, p.id, k.x FROM customer c RIGHT JOIN purchase p ON p.customer = c.id + 1 CROSS APPLY (SELECT ISNULL(c.id, 0) + p.id AS x) k ORDER BY 2
SELECT p.id, k.x FROM customer c LEFT JOIN (purchase p CROSS APPLY (SELECT p.id + 1 AS x WHERE p.id > 11) k) ON p.customer = c.id ORDER BY 1
--> id int? | x int? | id int? = NULL | NULL | 12; NULL | NULL | 13; 1 | NULL | NULL; 11 | 20 | NULL; 12 | 21 | NULL (5 rows)
--> id int? | id int | x int? = NULL | 10 | 10; NULL | 11 | 11; NULL | 12 | 12; 1 | 13 | 14 (4 rows) --> id int? | x int? = NULL | NULL; NULL | NULL; 12 | 13; 13 | 14 (4 rows)
WITH r AS (SELECT 1 AS n UNION ALL SELECT k.m FROM r CROSS APPLY (SELECT r.n + 1 AS m) k WHERE k.m < 4) SELECT n FROM r --> n int? = 1; 2; 3 (3 rows)
SELECT 1 FROM customer c, purchase p CROSS APPLY (SELECT c.id) k (x) --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "c.id" could not be bound.
SELECT c.id, k.id FROM customer c CROSS APPLY (SELECT TOP (SELECT MIN(customer) + 1 FROM purchase) id FROM purchase ORDER BY id) k WHERE c.id = 1 ORDER BY 2 --> id int | id int = 1 | 10; 1 | 11 (2 rows)
-- what is refused
SELECT 1 FROM customer c CROSS APPLY (SELECT TOP (c.id) id FROM purchase) p --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support a column as the number of TOP or OFFSET.
SELECT 1 FROM customer c CROSS APPLY (SELECT SUM(c.id) AS s) p --> Msg 4101, Level 15, State 1, Line 1: Aggregates on the right side of an APPLY cannot reference columns from the left side.
SELECT TOP (c.id) 1 FROM customer c --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "c.id" could not be bound.
SELECT p.id FROM customer c CROSS APPLY dbo.purchasesOf(c.id, c.id) p --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a column as the number of TOP or OFFSET.
SELECT 1 FROM customer a CROSS APPLY (customer b JOIN purchase p ON p.customer = b.id) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support APPLY of a join in parentheses.
SELECT 1 FROM customer c CROSS APPLY (SELECT c.id + 1) x --> Msg 8155, Level 16, State 1, Line 1: No column name was specified for column 1 of 'x'.
SELECT 1 FROM customer c CROSS APPLY (SELECT d.id AS a) x --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "d.id" could not be bound.
SELECT 1 FROM customer c CROSS APPLY (SELECT 1 AS a) x ON 1 = 1 --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'ON'.
SELECT 1 FROM customer c OUTER JOIN (SELECT 1 AS a) x --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'OUTER'.
DECLARE @s nvarchar(max) = N'SELECT k.c1 FROM (SELECT 1 AS a) q CROSS APPLY (SELECT 0 AS c0', @i int = 0
WHILE @i < 126 BEGIN SET @i = @i + 1 SET @s = @s + CONCAT(N', ', @i, N' AS c', @i) END
DECLARE @t nvarchar(max) = @s + N') k'
EXEC (@t)
SET @t = @s + N', 1 AS d) k'
EXEC (@t) --> c1 int = 1 (1 rows) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support APPLY of a query with more than 127 columns.
