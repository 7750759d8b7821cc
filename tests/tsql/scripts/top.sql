-- ties are equal as the ORDER BY compares them
CREATE TABLE place (id int, v varchar(5), n decimal(5,1))
INSERT place VALUES (1, 'b', 1), (2, 'A', 2), (3, 'a', 2), (4, 'c', NULL), (5, 'C', 7), (6, 'd', 3) --> (6 changed)
SELECT TOP (1) WITH TIES id, v FROM place ORDER BY v
SELECT TOP 2 WITH TIES v + 'x' AS w, COUNT(*) AS k FROM place GROUP BY v ORDER BY k DESC
SELECT TOP (1) WITH TIES id FROM place ORDER BY n * 2 DESC, LEN(v)
SELECT TOP (3) WITH TIES id FROM place ORDER BY n
SELECT DISTINCT TOP (1) WITH TIES v FROM place ORDER BY v DESC
SELECT TOP (0) WITH TIES id FROM place ORDER BY id
SELECT TOP (1) WITH TIES id, n FROM place ORDER BY 2 DESC
SELECT COUNT(*) FROM (SELECT TOP (2) WITH TIES * FROM place ORDER BY n DESC) x
--> id int? | v varchar(5)? = 2 | A; 3 | a (2 rows) --> w varchar(6)? | k int? = Ax | 2; cx | 2 (2 rows) --> id int? = 5 (1 rows) --> id int? = 4; 1; 2; 3 (4 rows) --> v varchar(5)? = d (1 rows)
--> id int? (0 rows) --> id int? = 5 | n decimal(5,1)? = 7.0 (1 rows) --> - int? = 2 (1 rows)
-- a percentage is rounded up
SELECT TOP (50) PERCENT id FROM place ORDER BY id DESC
SELECT TOP 1 PERCENT id FROM place ORDER BY id
SELECT TOP (33.4) PERCENT id FROM place ORDER BY n DESC, id
SELECT TOP 0 PERCENT id FROM place
SELECT TOP (17) PERCENT WITH TIES id FROM place ORDER BY ISNULL(n, 1)
DECLARE @p float = 16.6
SELECT COUNT(*) FROM place WHERE id IN (SELECT TOP (@p) PERCENT id FROM place ORDER BY id)
INSERT place (id) SELECT TOP (50) PERCENT id + 10 FROM place ORDER BY id --> id int? = 6; 5; 4 (3 rows) --> id int? = 1 (1 rows) --> id int? = 5; 6; 2 (3 rows) --> id int? (0 rows) --> id int? = 1; 4 (2 rows) --> - int? = 1 (1 rows) (3 changed)
SELECT TOP (1) WITH TIES id FROM place --> Msg 1062, Level 15, State 1, Line 1: The TOP N WITH TIES clause is not allowed without a corresponding ORDER BY clause.
SELECT TOP (101) PERCENT id FROM place --> Msg 1031, Level 15, State 1, Line 1: Percent values must be between 0 and 100.
DECLARE @x int = -1
SELECT TOP (@x) PERCENT id FROM place
SELECT TOP (@x) WITH TIES id FROM place ORDER BY id --> Msg 1031, Level 15, State 1, Line 2: Percent values must be between 0 and 100. --> Msg 127, Level 15, State 1, Line 3: A TOP N or FETCH rowcount value may not be negative.
DECLARE @y int
SELECT TOP (50) PERCENT @y = id FROM place --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support variables in SELECT TOP ... PERCENT or WITH TIES.
DELETE TOP (50) PERCENT FROM place --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TOP ... PERCENT of a change.
SELECT TOP (1) WITH TIES id FROM place ORDER BY id OFFSET 1 ROWS --> Msg 10741, Level 15, State 2, Line 1: A TOP can not be used in the same query or sub-query as a OFFSET.
CREATE TABLE word (id int, v varchar(5))
INSERT word VALUES (1, 'b'), (2, 'A'), (3, 'a')
SELECT TOP (1) WITH TIES id FROM word ORDER BY v
SELECT TOP (1) WITH TIES id FROM word ORDER BY v + 'x' --> (3 changed) --> id int? = 2; 3 (2 rows) --> id int? = 2; 3 (2 rows)
