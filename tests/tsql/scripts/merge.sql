CREATE TABLE stock (id int PRIMARY KEY, name varchar(10) NOT NULL DEFAULT 'none', n int CHECK (n < 100))
CREATE TABLE delivery (id int, name varchar(10), n int)
INSERT stock VALUES (1, 'a', 1), (2, 'b', 2), (3, 'c', 3), (9, 'z', 0)
INSERT delivery VALUES (2, 'B', 20), (3, 'C', 30), (4, 'D', 40), (5, 'E', 50) --> (4 changed) (4 changed)
-- each row gets the action of the first clause that fits; the clause of one table needs no alias
MERGE INTO stock WITH (HOLDLOCK) AS x USING delivery AS s ON x.id = s.id
WHEN MATCHED AND s.n > 25 THEN DELETE
WHEN MATCHED THEN UPDATE SET name = s.name, x.n += s.n
WHEN NOT MATCHED BY TARGET AND n < 45 THEN INSERT (id, n) VALUES (id, n * 2)
WHEN NOT MATCHED BY SOURCE AND n = 0 THEN DELETE
WHEN NOT MATCHED BY SOURCE THEN UPDATE SET name = DEFAULT
OUTPUT $action, inserted.*, deleted.id, deleted.name AS was, s.n + 1 AS given;
SELECT @@ROWCOUNT AS r
SELECT * FROM stock
--> $action nvarchar(10) | id int? | name varchar(10)? | n int? | id int? | was varchar(10)? | given int? --> DELETE | NULL | NULL | NULL | 3 | c | 31 --> DELETE | NULL | NULL | NULL | 9 | z | NULL
--> UPDATE | 2 | B | 22 | 2 | b | 21 --> UPDATE | 1 | none | 1 | 1 | a | NULL --> INSERT | 4 | none | 80 | NULL | NULL | 41 (5 rows) --> r int? = 5 (1 rows)
--> id int | name varchar(10) | n int? = 1 | none | 1; 2 | B | 22; 4 | none | 80 (3 rows)
MERGE stock USING (VALUES (7, 'x'), (8, 'v'), (1, 'y')) AS q (id, name) ON stock.id = q.id
WHEN MATCHED AND EXISTS (SELECT q.name EXCEPT SELECT stock.name) THEN UPDATE SET name = q.name
WHEN NOT MATCHED AND q.id <> (SELECT COUNT(*) + 5 FROM stock) THEN INSERT VALUES (q.id, DEFAULT, NULL) OUTPUT inserted.name, q.name, q.id;
MERGE stock USING delivery a JOIN delivery b ON a.id = b.id + 1 ON stock.id = a.id WHEN MATCHED THEN UPDATE SET n = b.n, name = (SELECT MAX(name) FROM stock);
SELECT * FROM stock --> name varchar(10)? | name varchar(1)? | id int? = y | y | 1; none | x | 7 (2 rows) (1 changed) --> id int | name varchar(10) | n int? = 1 | y | 1; 2 | B | 22; 4 | y | 30; 7 | none | NULL (4 rows)
-- a row may be changed once; all or nothing
MERGE stock USING (VALUES (7), (7)) AS q (id) ON stock.id = q.id WHEN MATCHED THEN DELETE;
MERGE stock USING (VALUES (7, 1), (7, 2)) AS q (id, k) ON stock.id = q.id WHEN MATCHED AND q.k = 2 THEN DELETE OUTPUT q.k;
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN UPDATE SET n = 100 WHEN NOT MATCHED THEN INSERT (id) VALUES (s.id);
MERGE stock USING delivery s ON stock.id = s.id WHEN NOT MATCHED THEN INSERT (id, name) VALUES (s.id, NULL) WHEN NOT MATCHED BY SOURCE THEN DELETE;
BEGIN TRAN
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE WHEN NOT MATCHED THEN INSERT (id, n) VALUES (s.id, 1 / (s.n - 50));
MERGE stock USING delivery s ON s.id = stock.id WHEN NOT MATCHED THEN INSERT (id) VALUES (4);
SELECT @@TRANCOUNT AS t, (SELECT COUNT(*) FROM stock) AS k
ROLLBACK
SELECT * FROM stock
--> Msg 8672, Level 16, State 1, Line 2: The MERGE statement attempted to UPDATE or DELETE the same row more than once. This happens when a target row matches more than one source row. A MERGE statement cannot UPDATE/DELETE the same row of the target table multiple times. Refine the ON clause to ensure a target row matches at most one source row, or use the GROUP BY clause to group the source rows. (3621)
--> k int? = 2 (1 rows)
--> Msg 547, Level 16, State 0, Line 4: The MERGE statement conflicted with the CHECK constraint "CK__stock__1_4". The conflict occurred in database "master", table "dbo.stock", column 'n'. (3621)
--> Msg 515, Level 16, State 2, Line 5: Cannot insert the value NULL into column 'name', table 'master.dbo.stock'; column does not allow nulls. INSERT fails. (3621)
--> Msg 8134, Level 16, State 1, Line 7: Divide by zero error encountered. (3621)
--> Msg 2627, Level 14, State 1, Line 8: Violation of PRIMARY KEY constraint 'PK__stock__1_2'. Cannot insert duplicate key in object 'dbo.stock'. The duplicate key value is (4). (3621)
--> t int? = 1 | k int? = 3 (1 rows) --> id int | name varchar(10) | n int? = 1 | y | 1; 2 | B | 22; 4 | y | 30 (3 rows)
DECLARE @t TABLE (id int IDENTITY, a varchar(9)), @o TABLE (what nvarchar(10), new int, old int, a varchar(9))
DECLARE @least int = 4
INSERT @t VALUES ('p');
WITH c AS (SELECT * FROM delivery WHERE id >= @least)
MERGE @t AS t USING c ON t.id = c.id WHEN NOT MATCHED THEN INSERT (a) VALUES (c.name) WHEN NOT MATCHED BY SOURCE THEN DELETE
OUTPUT $action, inserted.id, deleted.id, c.name INTO @o;
SELECT SCOPE_IDENTITY() AS i, * FROM @t
SELECT * FROM @o
--> (1 changed) (3 changed) --> i decimal(38,0)? | id int* | a varchar(9)? = 3 | 2 | D; 3 | 3 | E (2 rows)
--> what nvarchar(10)? | new int? | old int? | a varchar(9)? = DELETE | NULL | 1 | NULL; INSERT | 2 | NULL | D; INSERT | 3 | NULL | E (3 rows)
-- triggers fire when all rows are changed
CREATE TRIGGER counted ON stock AFTER INSERT, UPDATE, DELETE AS SELECT i = (SELECT COUNT(*) FROM inserted), d = (SELECT COUNT(*) FROM deleted), r = @@ROWCOUNT, k = (SELECT COUNT(*) FROM stock), u = CASE WHEN UPDATE(n) THEN 1 ELSE 0 END -->
CREATE PROCEDURE take @most int AS
MERGE stock AS t USING delivery AS s ON t.id = s.id WHEN MATCHED AND s.n < @most THEN UPDATE SET n = s.n WHEN NOT MATCHED THEN INSERT (id, n) VALUES (s.id, @most) WHEN NOT MATCHED BY SOURCE THEN DELETE; -->
EXEC take 60
EXEC take 30
SELECT * FROM stock
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE OUTPUT deleted.id;
--> i int? = 0 | d int? = 1 | r int? = 5 | k int? = 4 | u int = 0 (1 rows) --> i int? = 2 | d int? = 0 | r int? = 5 | k int? = 4 | u int = 1 (1 rows)
--> i int? = 2 | d int? = 2 | r int? = 5 | k int? = 4 | u int = 1 (1 rows) (5 changed) --> i int? = 0 | d int? = 0 | r int? = 1 | k int? = 4 | u int = 0 (1 rows)
--> i int? = 0 | d int? = 0 | r int? = 1 | k int? = 4 | u int = 1 (1 rows) --> i int? = 1 | d int? = 1 | r int? = 1 | k int? = 4 | u int = 1 (1 rows) (1 changed)
--> id int | name varchar(10) | n int? = 2 | B | 20; 4 | y | 40; 3 | none | 60; 5 | none | 60 (4 rows)
--> Msg 334, Level 16, State 1, Line 4: The target table 'stock' of the DML statement cannot have any enabled triggers if the statement contains an OUTPUT clause without INTO clause.
CREATE TRIGGER refused ON delivery INSTEAD OF DELETE AS RETURN -->
MERGE delivery USING stock s ON delivery.id = s.id WHEN MATCHED THEN DELETE; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support MERGE of a table with INSTEAD OF triggers.
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE WHEN MATCHED THEN UPDATE SET n = 1; --> Msg 5324, Level 15, State 1, Line 1: In a MERGE statement, a 'WHEN MATCHED' clause with a search condition cannot appear after a 'WHEN MATCHED' clause with no search condition.
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED AND 1 = 1 THEN DELETE WHEN MATCHED THEN DELETE; --> Msg 10714, Level 15, State 1, Line 1: An action of type 'WHEN MATCHED' cannot appear more than once in a 'DELETE' clause of a MERGE statement.
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE --> Msg 10713, Level 15, State 1, Line 1: A MERGE statement must be terminated by a semi-colon (;).
SELECT a FROM (MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE OUTPUT deleted.id) AS m (a) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support MERGE as a source of rows.
MERGE TOP (1) stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN DELETE; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support MERGE TOP.
MERGE stock USING delivery s ON stock.id = s.id WHEN NOT MATCHED THEN INSERT DEFAULT VALUES; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support DEFAULT VALUES in MERGE.
MERGE stock USING delivery s ON stock.id = s.id WHEN MATCHED THEN UPDATE SET n = (SELECT MAX(n) FROM stock) WHEN NOT MATCHED BY SOURCE THEN DELETE; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a subquery or function among the values of a MERGE with several clauses.
MERGE stock USING delivery s ON stock.id = s.id WHEN NOT MATCHED THEN INSERT (id, n) VALUES (s.id, SUM(s.n)); --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support an aggregate in the INSERT of MERGE.
MERGE stock USING delivery s ON stock.id = s.id WHEN NOT MATCHED BY SOURCE AND s.id > 1 THEN DELETE; --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "s.id" could not be bound.
MERGE stock USING delivery s ON stock.id = s.nosuch WHEN MATCHED THEN DELETE;
SELECT 'not reached' --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nosuch'.
