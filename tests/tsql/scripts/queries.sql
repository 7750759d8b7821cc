CREATE TABLE a (id int PRIMARY KEY, g varchar(10), n int NULL) INSERT a VALUES (1,'x',10),(2,'x',NULL),(3,'Y',30),(4,'y',5) --> (4 changed)
CREATE TABLE b (id int, aid int, t varchar(20)) INSERT b SELECT 10+id, id, 'b' + CONVERT(varchar, id) FROM a WHERE id < 3 --> (2 changed)
-- GROUP BY ignores case and rejects columns outside of it
SELECT g, COUNT(*) c, SUM(n) s, AVG(n) av FROM a GROUP BY g HAVING COUNT(*) > 1 ORDER BY g --> g varchar(10)? | c int? | s int? | av int? = x | 2 | 10 | 10; Y | 2 | 35 | 17 (8153, Line 2) (2 rows)
SELECT UPPER(g), COUNT(n) FROM a GROUP BY UPPER(g) ORDER BY 2 DESC --> - varchar(10)? | - int? = Y | 2; X | 1 (8153, Line 1) (2 rows)
SELECT COUNT(DISTINCT g), COUNT(*) FROM a --> - int? = 2 | - int? = 4 (1 rows)
SELECT g, n FROM a GROUP BY g --> Msg 8120, Level 16, State 1, Line 1: Column 'a.n' is invalid in the select list because it is not contained in either an aggregate function or the GROUP BY clause.
SELECT a.id, b.t FROM a LEFT OUTER JOIN b ON a.id = b.aid WHERE a.id IN (1,3) ORDER BY a.id --> id int | t varchar(20)? = 1 | b1; 3 | NULL (2 rows)
SELECT a.id, b.t FROM a, b WHERE a.id = b.aid --> id int | t varchar(20)? = 1 | b1; 2 | b2 (2 rows)
SELECT x.id, b.id FROM b RIGHT JOIN a AS x ON x.id = b.aid ORDER BY x.id DESC --> id int | id int? = 4 | NULL; 3 | NULL; 2 | 12; 1 | 11 (4 rows)
SELECT * FROM a WITH (NOLOCK) WHERE EXISTS (SELECT * FROM b WHERE b.aid = a.id) AND n IS NOT NULL --> id int = 1 | g varchar(10)? = x | n int? = 10 (1 rows)
SELECT id, (SELECT t FROM b WHERE b.aid = a.id) AS t, (SELECT MAX(t) FROM b) m FROM a --> id int | t varchar(20)? | m varchar(20)? = 1 | b1 | b2; 2 | b2 | b2; 3 | NULL | b2; 4 | NULL | b2 (4 rows)
SELECT id FROM a WHERE id IN (SELECT aid FROM b) UNION SELECT 99 UNION ALL SELECT 99 ORDER BY id DESC --> id int = 99; 99; 2; 1 (4 rows)
SELECT id FROM a EXCEPT SELECT aid FROM b --> id int? = 3; 4 (2 rows)
SELECT DISTINCT g FROM a --> g varchar(10)? = x; Y (2 rows)
SELECT TOP 2 * FROM a ORDER BY n DESC, id --> id int | g varchar(10)? | n int? = 3 | Y | 30; 1 | x | 10 (2 rows)
SELECT * FROM a WHERE g LIKE '[x]%' AND id BETWEEN 1 AND 2 OR NOT (id <> 4) --> id int | g varchar(10)? | n int? = 1 | x | 10; 2 | x | NULL; 4 | y | 5 (3 rows)
SELECT 'same' WHERE 'abc ' = 'ABC' AND NOT 'a' = 'b' --> - varchar(4) = same (1 rows)
SELECT d.t, d.n FROM (SELECT t, COUNT(*) n FROM b GROUP BY t) d WHERE d.n = 1; --> t varchar(20)? | n int? = b1 | 1; b2 | 1 (2 rows)
WITH q AS (SELECT t FROM b) SELECT x.t FROM q x JOIN q y ON x.t = y.t --> t varchar(20)? = b1; b2 (2 rows)
SELECT CASE WHEN n > 8 THEN 'big' WHEN n IS NULL THEN NULL ELSE 'small' END z, CASE g WHEN 'x' THEN 1 ELSE 0.5 END FROM a --> z varchar(5)? | - decimal(11,1) = big | 1.0; NULL | 1.0; big | 0.5; small | 0.5 (4 rows)
SELECT id, (SELECT id FROM a) FROM b --> Msg 512, Level 16, State 1, Line 1: Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , >, >= or when the subquery is used as an expression.
SELECT id FROM a JOIN b ON a.id = b.aid --> Msg 209, Level 16, State 1, Line 1: Ambiguous column name 'id'.
SELECT x.id FROM a --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "x.id" could not be bound.
SELECT id FROM a ORDER BY 3 --> Msg 108, Level 16, State 1, Line 1: The ORDER BY position number 3 is out of range of the number of items in the select list.
SELECT id FROM a ORDER BY 1, id DESC --> Msg 169, Level 15, State 1, Line 1: A column has been specified more than once in the order by list. Columns in the order by list must be unique.
SELECT 1 UNION SELECT 2, 3 --> Msg 205, Level 16, State 1, Line 1: All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of expressions in their target lists.
-- SQLite would accept these
SELECT id FROM a ORDER BY 'id' --> Msg 408, Level 16, State 1, Line 2: A constant expression was encountered in the ORDER BY list, position 1.
DECLARE @by varchar(9) = 'id' SELECT id FROM a ORDER BY @by --> Msg 1008, Level 16, State 1, Line 1: The SELECT item identified by the ORDER BY number 1 contains a variable as part of the expression identifying a column position. Variables are only allowed when ordering by an expression referencing a column name.
SELECT g FROM a GROUP BY g HAVING n > 1 --> Msg 8121, Level 16, State 1, Line 1: Column 'a.n' is invalid in the HAVING clause because it is not contained in either an aggregate function or the GROUP BY clause.
SELECT SUM((SELECT 1)) FROM a --> Msg 130, Level 16, State 1, Line 1: Cannot perform an aggregate function on an expression containing an aggregate or a subquery.
SELECT 1 FROM a JOIN a ON 1 = 1 --> Msg 1013, Level 16, State 1, Line 1: The objects "a" and "a" in the FROM clause have the same exposed names. Use correlation names to distinguish them.
SELECT 1 FROM a x, b x --> Msg 1011, Level 16, State 1, Line 1: The correlation name 'x' is specified multiple times in a FROM clause.
SELECT * FROM (SELECT id, n AS id FROM a) q --> Msg 8156, Level 16, State 1, Line 1: The column 'id' was specified multiple times for 'q'.
-- a known table without the column
SELECT x.nosuch FROM a x --> Msg 207, Level 16, State 1, Line 2: Invalid column name 'nosuch'.
WITH c AS (SELECT 1 AS n UNION ALL SELECT c.n + 1 FROM a LEFT JOIN c ON c.n = a.id) SELECT n FROM c --> Msg 462, Level 16, State 1, Line 1: Outer join is not allowed in the recursive part of a recursive common table expression 'c'.
WITH c AS (SELECT 1 AS n UNION ALL SELECT MAX(n) + 1 FROM c) SELECT n FROM c --> Msg 467, Level 16, State 1, Line 1: GROUP BY, HAVING, or aggregate functions are not allowed in the recursive part of a recursive common table expression 'c'.
UPDATE a SET id = MAX(id) --> Msg 157, Level 15, State 1, Line 1: An aggregate may not appear in the set list of an UPDATE statement.
DELETE a WHERE id = MAX(id) --> Msg 147, Level 15, State 1, Line 1: An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING clause or a select list, and the column being aggregated is an outer reference.
SELECT 'many' FROM a HAVING COUNT(*) > 1 --> - varchar(4) = many (1 rows)
SELECT 'none' AS how, 1 AS n FROM a WHERE 1 = 0 HAVING COUNT(*) = 0 ORDER BY n --> how varchar(4) = none | n int = 1 (1 rows)
SELECT 1 WHERE EXISTS (SELECT 1 FROM a HAVING COUNT(*) > 1000) --> - int (0 rows)
SELECT SUM(id) FROM a HAVING 1 = 1 --> - int? = 10 (1 rows)
-- rows assign variables one after the other, in order; money literals
CREATE TABLE piece (id int, n varchar(10), m money) INSERT piece VALUES (3, 'c', $1.5), (1, 'a', $20), (2, 'b', -$.25) --> (3 changed)
DECLARE @l varchar(100) = '', @s int = 0, @x varchar(10), @i int = 0, @c varchar(100)
SELECT @l = @l + n + ',', @s += id FROM piece ORDER BY id
SELECT @c = COALESCE(@c + ', ', '') + QUOTENAME(n) FROM piece p WHERE id > 1 ORDER BY p.n DESC
SELECT @l, @s, @c
SELECT @l = ''
SELECT TOP (2) @l = @l + a.n + b.n + ' ', @i = @i + 1, @x = (SELECT MAX(n) FROM piece q WHERE q.id <= a.id) FROM piece a JOIN piece b ON a.id < b.id ORDER BY a.id, b.id DESC
SELECT @l, @i, @x, @@ROWCOUNT --> - varchar(100)? = a,b,c, | - int? = 6 | - varchar(100)? = [c], [b] (1 rows) --> - varchar(100)? = ac ab  | - int? = 2 | - varchar(10)? = a | - int? = 2 (1 rows)
SELECT $5 a, $1.23456 b, -$2 c, $1 + 1 d, 2 * $1.10 e --> a money = 5.0000 | b money = 1.2346 | c money = -2.0000 | d money? = 2.0000 | e money? = 2.2000 (1 rows)
DECLARE @a int SELECT @a = id, n FROM piece --> Msg 141, Level 15, State 1, Line 1: A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations.
DECLARE @a int, @b int SELECT @a = (SELECT @b = 1) --> Msg 141, Level 15, State 1, Line 1: A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations.
-- TOP takes a number, or an integer expression without columns in brackets; a backslash at the end continues a line
SELECT TOP (SELECT 1 + 1) i, 'a\
b\' FROM (VALUES (1), (2), (3)) v (i) ORDER BY i --> i int | - varchar(3) = 1 | ab\; 2 | ab\ (2 rows)
SELECT TOP 1.5 i FROM (VALUES (1)) v (i) --> Msg 1060, Level 15, State 1, Line 1: The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer.
SELECT TOP (i) i FROM (VALUES (1)) v (i) --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'i'.
SELECT TOP @n 1 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '@n'.
DELETE TOP 1 FROM t --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '1'.
-- a common table sees those before it, and names are unique
WITH a AS (SELECT 1 AS x), b AS (SELECT x + 1 AS x FROM a), a2 AS (SELECT x FROM b UNION ALL SELECT x + 1 FROM a2 WHERE x < 3) SELECT x FROM a2 --> x int? = 2; 3 (2 rows)
WITH a AS (SELECT x FROM later), later AS (SELECT 1 AS x) SELECT x FROM a --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'later'.
WITH a AS (SELECT 1 AS x), A AS (SELECT 2 AS x) SELECT x FROM a --> Msg 239, Level 16, State 1, Line 1: Duplicate common table expression name 'A' was specified.
SELECT 1 AS x, 2 AS x ORDER BY x --> Msg 209, Level 16, State 1, Line 1: Ambiguous column name 'x'.
SELECT id FROM a UNION SELECT 99 ORDER BY id + 1 --> Msg 104, Level 16, State 1, Line 1: ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT operator.
SELECT a.id, a.g AS h FROM a WHERE id < 3 UNION SELECT 99, 'z' ORDER BY a.g DESC, a.id --> id int | h varchar(10)? = 99 | z; 1 | x; 2 | x (3 rows)
SELECT a.id FROM a UNION SELECT 99 ORDER BY a.g --> Msg 104, Level 16, State 1, Line 1: ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT operator.
-- subqueries are not allowed here
PRINT 'rows: ' + STR((SELECT 1)) --> Msg 1046, Level 15, State 1, Line 2: Subqueries are not allowed in this context. Only scalar expressions are allowed.
CREATE TABLE of_one (a int DEFAULT (SELECT 1)) --> Msg 1046, Level 15, State 1, Line 1: Subqueries are not allowed in this context. Only scalar expressions are allowed.
CREATE TABLE of_one (a int CHECK (EXISTS (SELECT 1))) --> Msg 1046, Level 15, State 1, Line 1: Subqueries are not allowed in this context. Only scalar expressions are allowed.
SELECT 1 FROM a, a AS b JOIN a AS c ON c.id = a.id --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "a.id" could not be bound.
SELECT a FROM (VALUES (1, 2), (3)) v (a, b) --> Msg 10709, Level 15, State 1, Line 1: The number of columns for each row in a table value constructor must be the same.
-- errors at the end
SELECT 1 WHERE 'on' 
 --> Msg 4145, Level 15, State 1, Line 2: An expression of non-boolean type specified in a context where a condition is expected, near 'on'.
BEGIN PRINT 'no end' --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'no end'.
SELECT * FROM OPENJSON('[1]') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OPENJSON.
SELECT 1 FROM sys.objects TABLESAMPLE (10 PERCENT) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TABLESAMPLE.
SELECT 1 FROM sys.objects WHERE CONTAINS(name, 'x') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CONTAINS.
WITH XMLNAMESPACES ('u' AS n) SELECT 1 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WITH XMLNAMESPACES.
SELECT x.i, y.i FROM (VALUES (1), (2)) x (i) LEFT JOIN (VALUES (1), (3)) y (i) INNER JOIN (VALUES (1), (2)) z (i) ON y.i = z.i ON x.i = y.i --> i int | i int? = 1 | 1; 2 | NULL (2 rows)
WITH c AS (SELECT 1 n UNION ALL SELECT n + 1 FROM c WHERE n < 3 UNION ALL SELECT n + 10 FROM c WHERE n < 3) SELECT n FROM c ORDER BY n --> n int? = 1; 2; 3; 11; 12 (5 rows)
SELECT x.id FROM a (HOLDLOCK, INDEX(0)), a x (UPDLOCK) WHERE x.id = 1 AND a.id = x.id --> id int = 1 (1 rows)
