CREATE TABLE sale (y int, q char(2), shop nvarchar(9), amount money)
INSERT sale VALUES (2024, 'Q1', N'a', 10), (2024, 'Q1', N'b', 5), (2024, 'Q2', N'a', 7), (2025, 'q1', N'a', 4), (2025, 'Q3', N'b', 2)
SELECT * FROM (SELECT y, q, amount FROM sale) s PIVOT (SUM(amount) FOR q IN (Q1, [Q2])) AS p ORDER BY y DESC
SELECT p.q, [2024] + 1 AS n FROM sale PIVOT (COUNT(amount) FOR y IN ([2024], [2025])) p WHERE p.shop = 'b'
SELECT * FROM (SELECT q, amount FROM sale) s PIVOT (MAX(amount) FOR q IN ([Q1], [it's ]]9])) p
SELECT z, Q1 FROM sale s JOIN (SELECT 2024 z) x ON x.z = s.y PIVOT (SUM(amount) FOR q IN (Q1)) p
SELECT z, p.Q1 FROM (SELECT 2024 z) x JOIN (SELECT y, q FROM sale) s PIVOT (COUNT(q) FOR q IN (Q1)) p ON p.y = x.z
--> (5 changed) --> y int? | Q1 money? | Q2 money? = 2025 | 4.0000 | NULL; 2024 | 15.0000 | 7.0000 (8153, Line 3) (2 rows) --> q char(2)? | n int? = Q1 | 2; Q3 | 1 (8153, Line 4) (2 rows)
--> Q1 money? = 10.0000 | it's ]9 money? = NULL (8153, Line 5) (1 rows) --> z int | Q1 money? = 2024 | 10.0000; 2024 | 5.0000 (8153, Line 6) (2 rows)
--> z int = 2024 | Q1 int? = 2 (8153, Line 7) (1 rows)
WITH w AS (SELECT 1 id, 10 a, NULL b, 30 c) SELECT * FROM w UNPIVOT (v FOR k IN (a, b, [c])) AS u
SELECT u.k, u.y, u.v FROM (SELECT y, q, amount FROM sale) s PIVOT (SUM(amount) FOR q IN (Q1, Q2, Q3)) p UNPIVOT (v FOR k IN (Q1, Q3)) u --> id int | v int? | k nvarchar(128)? = 1 | 10 | a; 1 | 30 | c (2 rows) --> k nvarchar(128)? | y int? | v money? = Q1 | 2024 | 15.0000; Q1 | 2025 | 4.0000; Q3 | 2025 | 2.0000 (8153, Line 2) (3 rows)
SELECT * FROM sale PIVOT (SUM(nope) FOR q IN (Q1)) p --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nope'.
SELECT * FROM sale PIVOT (SUM(amount) FOR q IN (shop)) p --> Msg 8156, Level 16, State 1, Line 1: The column 'shop' was specified multiple times for 'p'.
SELECT * FROM sale PIVOT (SUM(amount) FOR q IN (Q1)) --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near ')'.
SELECT * FROM sale PIVOT (COUNT(*) FOR q IN (Q1)) p --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '*'.
SELECT * FROM sale PIVOT (ABS(amount) FOR q IN (Q1)) p --> Msg 8120, Level 16, State 1, Line 1: Column 'sale.q' is invalid in the select list because it is not contained in either an aggregate function or the GROUP BY clause.
SELECT sale.y FROM sale PIVOT (SUM(amount) FOR q IN (Q1)) p --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "sale.y" could not be bound.
SELECT * FROM sale UNPIVOT (v FOR shop IN (y)) u --> Msg 8156, Level 16, State 1, Line 1: The column 'shop' was specified multiple times for 'u'.
