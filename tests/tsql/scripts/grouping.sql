CREATE TABLE sold (region varchar(10), item varchar(10), n int)
INSERT sold VALUES ('north', 'apple', 1), ('north', 'pear', 2), ('SOUTH', 'apple', 4), ('south', 'apple', 8), (NULL, 'pear', 16) --> (5 changed)
-- subtotals: NULL is a key of the rows or, by GROUPING, none
SELECT region, item, SUM(n) AS n, GROUPING(region) AS r, GROUPING_ID(region, item) AS id FROM sold GROUP BY ROLLUP (region, item) ORDER BY id, region, item
SELECT region, SUM(n) AS n FROM sold GROUP BY region WITH ROLLUP ORDER BY n
SELECT region, item, COUNT(*) AS k FROM sold GROUP BY CUBE (region, item) HAVING COUNT(*) > 1 ORDER BY k, region, item
SELECT region, item, SUM(n) AS n FROM sold GROUP BY region, item WITH CUBE ORDER BY n
SELECT region, item, SUM(n) AS n FROM sold GROUP BY GROUPING SETS ((region, item), item, ()) ORDER BY n
SELECT item, LEN(region) AS l, MAX(n) AS n FROM sold WHERE region > '' GROUP BY item, ROLLUP (LEN(region)) ORDER BY n, l
SELECT region, item, SUM(n) AS n FROM sold GROUP BY ROLLUP ((region, item)), GROUPING SETS (CUBE (region), ()) ORDER BY n
--> region varchar(10)? | item varchar(10)? | n int? | r tinyint? | id int? --> NULL | pear | 16 | 0 | 0 --> north | apple | 1 | 0 | 0 --> north | pear | 2 | 0 | 0 --> SOUTH | apple | 12 | 0 | 0
--> NULL | NULL | 16 | 0 | 1 --> north | NULL | 3 | 0 | 1 --> SOUTH | NULL | 12 | 0 | 1 --> NULL | NULL | 31 | 1 | 3 (8 rows)
--> region varchar(10)? | n int? = north | 3; SOUTH | 12; NULL | 16; NULL | 31 (4 rows)
--> region varchar(10)? | item varchar(10)? | k int? = NULL | pear | 2; north | NULL | 2; SOUTH | NULL | 2; SOUTH | apple | 2; NULL | apple | 3; NULL | NULL | 5 (6 rows)
--> region varchar(10)? | item varchar(10)? | n int? --> north | apple | 1 --> north | pear | 2 --> north | NULL | 3 --> SOUTH | apple | 12 --> SOUTH | NULL | 12 --> NULL | apple | 13
--> NULL | pear | 16 --> NULL | NULL | 16 --> NULL | pear | 18 --> NULL | NULL | 31 (10 rows)
--> region varchar(10)? | item varchar(10)? | n int? = north | apple | 1; north | pear | 2; SOUTH | apple | 12; NULL | apple | 13; NULL | pear | 16; NULL | pear | 18; NULL | NULL | 31 (7 rows)
--> item varchar(10)? | l int? | n int? = pear | NULL | 2; pear | 5 | 2; apple | NULL | 8; apple | 5 | 8 (4 rows) --> region varchar(10)? | item varchar(10)? | n int? --> north | apple | 1
--> north | apple | 1 --> north | apple | 1 --> north | pear | 2 --> north | pear | 2 --> north | pear | 2 --> north | NULL | 3 --> SOUTH | apple | 12 --> SOUTH | apple | 12 --> SOUTH | apple | 12
--> SOUTH | NULL | 12 --> NULL | pear | 16 --> NULL | pear | 16 --> NULL | pear | 16 --> NULL | NULL | 16 --> NULL | NULL | 31 --> NULL | NULL | 31 (17 rows)
-- the grand total of no rows is a row
SELECT region, COUNT(*) AS k, GROUPING(region) AS r FROM sold WHERE n > 99 GROUP BY ROLLUP (region)
SELECT region FROM sold WHERE n > 99 GROUP BY GROUPING SETS (region, ())
SELECT COUNT(*) AS k FROM sold GROUP BY ()
SELECT DISTINCT CASE GROUPING(region) WHEN 1 THEN 'all' ELSE 'one' END AS what FROM sold GROUP BY CUBE (region) ORDER BY what
SELECT GROUPING(region) AS r, SUM(n) + 0.5 AS n FROM sold GROUP BY region ORDER BY n
SELECT t.region, t.n FROM (SELECT region, SUM(n) n FROM sold GROUP BY ROLLUP (region)) t WHERE t.n > 20
SELECT region, SUM(n) AS n INTO #sums FROM sold GROUP BY ROLLUP (region)
SELECT COUNT(*) FROM #sums
--> region varchar(10)? = NULL | k int? = 0 | r tinyint? = 1 (1 rows) --> region varchar(10)? = NULL (1 rows) --> k int? = 5 (1 rows) --> what varchar(3) = all; one (2 rows)
--> r tinyint? | n decimal(12,1)? = 0 | 3.5; 0 | 12.5; 0 | 16.5 (3 rows) --> region varchar(10)? = NULL | n int? = 31 (1 rows) (4 changed) --> - int? = 4 (1 rows)
SELECT GROUPING(n) FROM sold GROUP BY ROLLUP (region) --> Msg 8161, Level 16, State 1, Line 1: Argument 1 of the GROUPING function does not match any of the expressions in the GROUP BY clause.
SELECT region, n FROM sold GROUP BY ROLLUP (region) --> Msg 8120, Level 16, State 1, Line 1: Column 'sold.n' is invalid in the select list because it is not contained in either an aggregate function or the GROUP BY clause.
SELECT TOP 1 region FROM sold GROUP BY ROLLUP (region) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TOP with GROUPING SETS, CUBE or ROLLUP.
SELECT region, RANK() OVER (ORDER BY SUM(n)) FROM sold GROUP BY ROLLUP (region) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support window functions with GROUPING SETS, CUBE or ROLLUP.
SELECT region FROM sold GROUP BY ROLLUP (region) ORDER BY GROUPING(region) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ORDER BY of an expression with GROUPING SETS, CUBE or ROLLUP.
SELECT GROUPING(region) --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'region'.
DECLARE @s int SELECT @s = SUM(n) FROM sold GROUP BY ROLLUP (region) --> Msg 141, Level 15, State 1, Line 1: A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations.
SELECT region FROM sold GROUP BY CUBE (region, item, n, region, item, n, region, item, n) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CUBE or ROLLUP of more than 8 columns.
SELECT COUNT(*) FROM sold GROUP BY CUBE (region, item, n, region, item), CUBE (region, item, n, region, item) --> Msg 191, Level 15, State 1, Line 2: Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.
-- in views, common table expressions and beside correlated subqueries
CREATE TABLE kind (item varchar(10), word varchar(10))
INSERT kind VALUES ('apple', 'red'), ('apple', 'green'), (NULL, 'none') --> (3 changed)
CREATE VIEW totals AS SELECT region, item, SUM(n) AS n, GROUPING_ID(region, item) AS g FROM sold GROUP BY CUBE (region, item) -->
SELECT * FROM totals WHERE g = 2 ORDER BY n;
WITH c AS (SELECT region, SUM(n) AS n FROM sold GROUP BY ROLLUP (region)) SELECT a.n, b.n FROM c a JOIN c b ON b.region IS NULL AND b.n > a.n WHERE a.region = 'north' ORDER BY b.n
SELECT item, (SELECT COUNT(*) FROM kind k WHERE k.item = s.item) AS k FROM sold s GROUP BY ROLLUP (s.item) ORDER BY k, item
SELECT region, SUM(n) AS n FROM sold GROUP BY region WITH ROLLUP HAVING GROUPING(region) = 0 FOR XML RAW
--> region varchar(10)? | item varchar(10)? | n int? | g int? = NULL | apple | 13 | 2; NULL | pear | 18 | 2 (2 rows) --> n int? | n int? = 3 | 16; 3 | 31 (2 rows)
--> item varchar(10)? | k int? = NULL | 0; pear | 0; apple | 2 (3 rows)
--> XML_F52E2B61-18A1-11d1-B105-00805F49916B nvarchar(max)? = <row n="16"/><row region="north" n="3"/><row region="SOUTH" n="12"/> (1 rows)
-- An aggregate of columns of an outer query belongs to that query.
CREATE TABLE bid (a int, b int) INSERT bid VALUES (1, 2), (1, 3), (2, 5), (2, 7)
SELECT o.a FROM bid o GROUP BY o.a HAVING EXISTS (SELECT 1 FROM bid i WHERE i.b < 6 AND i.b = MAX(o.b))
SELECT o.a, (SELECT MAX(o.b) - MIN(o.b)) AS d, (SELECT COUNT(*) FROM bid i WHERE i.b < MAX(o.b)) AS n FROM bid o GROUP BY o.a
SELECT (SELECT SUM(o.b)) AS s FROM bid o --> (4 changed) --> a int? = 1 (1 rows) --> a int? | d int? | n int? = 1 | 1 | 1; 2 | 2 | 3 (2 rows) --> s int? = 17 (1 rows)
SELECT o.a FROM bid o WHERE EXISTS (SELECT 1 FROM bid i WHERE i.a = MAX(o.b)) --> Msg 147, Level 15, State 1, Line 1: An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING clause or a select list, and the column being aggregated is an outer reference.
SELECT o.a FROM bid o GROUP BY o.a HAVING EXISTS (SELECT 1 FROM bid i WHERE i.a = MAX(o.b) AND o.b = 1) --> Msg 8121, Level 16, State 1, Line 1: Column 'o.b' is invalid in the HAVING clause because it is not contained in either an aggregate function or the GROUP BY clause.
