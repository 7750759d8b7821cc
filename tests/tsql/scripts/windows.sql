CREATE TABLE sale (id int PRIMARY KEY, who varchar(10), n int NULL, d decimal(8,2)) -->
INSERT sale VALUES (1,'ann',10,1.50),(2,'Ann',20,2.25),(3,'bob',20,3.00),(4,'BOB',NULL,4.00),(5,'cy',5,0.75) --> (5 changed)
-- ranking; PARTITION BY ignores case
SELECT id, ROW_NUMBER() OVER (ORDER BY n DESC, id) r, RANK() OVER (ORDER BY n) k, DENSE_RANK() OVER (ORDER BY n) dk, NTILE(2) OVER (ORDER BY id) t FROM sale ORDER BY id --> id int | r bigint? | k bigint? | dk bigint? | t bigint? = 1 | 3 | 3 | 3 | 1; 2 | 1 | 4 | 4 | 1; 3 | 2 | 4 | 4 | 1; 4 | 5 | 1 | 1 | 2; 5 | 4 | 2 | 2 | 2 (5 rows)
SELECT id, ROW_NUMBER() OVER (PARTITION BY who ORDER BY id DESC) r FROM sale ORDER BY who, id --> id int | r bigint? = 1 | 2; 2 | 1; 3 | 2; 4 | 1; 5 | 1 (5 rows)
SELECT id, LAG(n) OVER (ORDER BY id) a, LAG(n, 2, -1) OVER (ORDER BY id) b, LEAD(d, 1, 0) OVER (ORDER BY id) c FROM sale ORDER BY id --> id int | a int? | b int? | c decimal(8,2)? = 1 | NULL | -1 | 2.25; 2 | 10 | -1 | 3.00; 3 | 20 | 10 | 4.00; 4 | 20 | 20 | 0.75; 5 | NULL | 20 | 0.00 (5 rows)
SELECT id, FIRST_VALUE(id) OVER (PARTITION BY who ORDER BY id) f, LAST_VALUE(id) OVER (ORDER BY id ROWS BETWEEN CURRENT ROW AND UNBOUNDED FOLLOWING) l FROM sale ORDER BY id --> id int | f int? | l int? = 1 | 1 | 5; 2 | 1 | 5; 3 | 3 | 5; 4 | 3 | 5; 5 | 5 | 5 (5 rows)
-- aggregates over a window keep every row
SELECT id, SUM(n) OVER (ORDER BY id) run, AVG(d) OVER (PARTITION BY who) av, COUNT(*) OVER () c, MAX(who) OVER (ORDER BY id ROWS 1 PRECEDING) m FROM sale ORDER BY id
--> id int | run int? | av decimal(38,6)? | c int? | m varchar(10)? --> 1 | 10 | 1.875000 | 5 | ann --> 2 | 30 | 1.875000 | 5 | Ann --> 3 | 50 | 3.500000 | 5 | bob --> 4 | 50 | 3.500000 | 5 | BOB
--> 5 | 55 | 0.750000 | 5 | cy (8153, Line 2) (5 rows)
SELECT id, SUM(n) OVER (ORDER BY id ROWS BETWEEN 1 PRECEDING AND 1 FOLLOWING) s, SUM(d) OVER (ORDER BY id ROWS BETWEEN 1 PRECEDING AND CURRENT ROW) t, COUNT(n) OVER (ORDER BY id ROWS BETWEEN CURRENT ROW AND 1 FOLLOWING) c, STDEV(n) OVER (ORDER BY id ROWS 1 PRECEDING) sd FROM sale ORDER BY id --> id int | s int? | t decimal(38,2)? | c int? | sd float? = 1 | 30 | 1.50 | 2 | NULL; 2 | 50 | 3.75 | 2 | 7.0710678118654755; 3 | 40 | 5.25 | 1 | 0; 4 | 25 | 7.00 | 1 | NULL; 5 | 5 | 4.75 | 1 | NULL (8153, Line 1) (5 rows)
SELECT who, SUM(n) s, RANK() OVER (ORDER BY SUM(n) DESC) r FROM sale GROUP BY who ORDER BY r --> who varchar(10)? | s int? | r bigint? = ann | 30 | 1; bob | 20 | 2; cy | 5 | 3 (8153, Line 1) (3 rows)
SELECT q.id FROM (SELECT id, ROW_NUMBER() OVER (PARTITION BY who ORDER BY id) r FROM sale) q WHERE q.r = 1 ORDER BY ROW_NUMBER() OVER (ORDER BY q.id DESC) --> id int = 5; 3; 1 (3 rows)
SELECT TOP 1 ROW_NUMBER() OVER (ORDER BY (SELECT NULL)) FROM sale --> - bigint? = 1 (1 rows)
-- rows are numbered as they come: not all of the four billion are made
WITH two AS (SELECT 1 n UNION ALL SELECT 1), four AS (SELECT 1 n FROM two a, two b), many AS (SELECT 1 n FROM four a, four b), more AS (SELECT 1 n FROM many a, many b), most AS (SELECT 1 n FROM more a, more b), number AS (SELECT ROW_NUMBER() OVER (ORDER BY (SELECT NULL)) n FROM most a, most b) SELECT TOP 10000 n INTO #number FROM number SELECT COUNT(*), MAX(n) FROM #number --> (10000 changed) --> - int? = 10000 | - bigint? = 10000 (1 rows)
SELECT ROW_NUMBER() OVER (PARTITION BY who) FROM sale --> Msg 4112, Level 15, State 1, Line 1: The function 'ROW_NUMBER' must have an OVER clause with ORDER BY.
SELECT id FROM sale WHERE ROW_NUMBER() OVER (ORDER BY id) = 1 --> Msg 4108, Level 15, State 1, Line 1: Windowed functions can only appear in the SELECT or ORDER BY clauses.
SELECT RANK() FROM sale --> Msg 10753, Level 15, State 1, Line 1: The function 'RANK' must have an OVER clause.
SELECT LEN(who) OVER (ORDER BY id) FROM sale --> Msg 4113, Level 16, State 1, Line 1: The function 'LEN' is not a valid windowing function, and cannot be used with the OVER clause.
SELECT COUNT(DISTINCT who) OVER () FROM sale --> Msg 10759, Level 15, State 1, Line 1: Use of DISTINCT is not allowed with the OVER clause.
SELECT SUM(RANK() OVER (ORDER BY id)) OVER () FROM sale --> Msg 4108, Level 15, State 1, Line 1: Windowed functions can only appear in the SELECT or ORDER BY clauses.
SELECT ROW_NUMBER() OVER (ORDER BY 1) FROM sale --> Msg 5308, Level 16, State 1, Line 1: Windowed functions, aggregates and NEXT VALUE FOR functions do not support integer indices as ORDER BY clause expressions.
SELECT SUM(n) OVER (ROWS 2 PRECEDING) FROM sale --> Msg 10756, Level 15, State 1, Line 1: Window frame with ROWS or RANGE must have an ORDER BY clause.
SELECT SUM(n) OVER (ORDER BY id
  RANGE 2 PRECEDING) FROM sale --> Msg 4194, Level 16, State 1, Line 2: RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters.
SELECT who, SUM(n) OVER (ORDER BY who) FROM sale GROUP BY who --> Msg 8120, Level 16, State 1, Line 1: Column 'sale.n' is invalid in the select list because it is not contained in either an aggregate function or the GROUP BY clause.
SELECT NTILE(0) OVER (ORDER BY (SELECT 1)) FROM (VALUES (1)) v (i) --> Msg 4116, Level 16, State 1, Line 1: The function 'ntile' takes only a positive int or bigint expression as its input.
SELECT LAG(i, -1) OVER (ORDER BY i) FROM (VALUES (1)) v (i) --> Msg 8730, Level 16, State 1, Line 1: Offset parameter for Lag and Lead functions cannot be a negative value.
SELECT v, CUME_DIST() OVER (ORDER BY v) AS c, PERCENT_RANK() OVER (ORDER BY v) AS p FROM (VALUES (1), (2), (2), (4), (5)) t(v) --> v int | c float? | p float? = 1 | 0.2 | 0; 2 | 0.6 | 0.25; 2 | 0.6 | 0.25; 4 | 0.8 | 0.75; 5 | 1 | 1 (5 rows)
