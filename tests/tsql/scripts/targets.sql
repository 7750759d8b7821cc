-- Changes through views, common and derived tables.
CREATE TABLE stock (id int IDENTITY PRIMARY KEY, name varchar(10) NOT NULL, price int DEFAULT 5, kind char(1), twice AS price * 2)
INSERT stock (name, price, kind) VALUES ('pen', 1, 'a'), ('ink', 4, 'b'), ('pad', 2, 'a') --> (3 changed)
CREATE VIEW plain (word, price, nr, half) AS SELECT name, price, id, price / 2 FROM stock WHERE kind = 'a' OR kind IS NULL -->
CREATE VIEW narrow AS SELECT word AS [the ""word], nr, price FROM plain AS p WHERE price < 10 -->
CREATE TRIGGER noted ON stock AFTER UPDATE AS IF UPDATE(name) PRINT 'name' ELSE PRINT 'other' -->
UPDATE plain SET word = UPPER(word), plain.price += nr WHERE half > 0
UPDATE v SET price = v.price + s.price FROM narrow v JOIN stock s ON s.id = v.nr AND s.id = 1
UPDATE narrow SET price = 0 FROM narrow AS x WHERE x.nr = 1
DELETE plain WHERE nr IN (SELECT nr FROM plain WHERE nr > 2)
INSERT narrow ([the ""word]) VALUES ('new')
INSERT narrow SELECT word, price FROM plain
DECLARE @new int UPDATE narrow SET @new = price = price + 1 WHERE nr = 5
SELECT * FROM stock SELECT @@IDENTITY AS last, @new AS new
--> name (1 changed) --> other (1 changed) --> other (1 changed) (1 changed) (1 changed) (2 changed) --> other (1 changed)
--> id int* | name varchar(10) | price int? | kind char(1)? | twice int? = 1 | pen | 0 | a | 0; 2 | ink | 4 | b | 8; 4 | new | 5 | NULL | 10; 5 | pen | 1 | NULL | 2; 6 | new | 5 | NULL | 10 (5 rows)
--> last decimal(38,0)? = 6 | new int? = 1 (1 rows)
DISABLE TRIGGER noted ON stock
INSERT narrow OUTPUT inserted.* VALUES ('out', 7)
UPDATE narrow SET price = 8 OUTPUT deleted.price, inserted.* WHERE [the ""word] = 'out'
DELETE x OUTPUT deleted.[the ""word] AS w FROM narrow x WHERE nr = 7 --> the ""word varchar(10) = out | nr int* = 7 | price int? = 7 (1 rows) --> price int? = 7 | the ""word varchar(10) = out | nr int* = 7 | price int? = 8 (1 rows) --> w varchar(10) = out (1 rows)
;WITH d AS (SELECT *, ROW_NUMBER() OVER (PARTITION BY price ORDER BY id) AS rn FROM stock) DELETE FROM d WHERE rn > 1
;WITH d (a, b) AS (SELECT TOP (1) id, name FROM stock ORDER BY name DESC), e AS (SELECT * FROM d) UPDATE e SET b = 'last' WHERE a > 0
;WITH q AS (SELECT TOP (1) id, name FROM plain JOIN (SELECT 1 AS one) o ON one = 1) DELETE q --> (1 changed) (1 changed) --> Msg 50000, Level 16, State 1, Line 3: tsqlbox does not support changes through a query ('q') of other than one table.
;WITH q AS (SELECT TOP (1) nr, word FROM plain ORDER BY nr) DELETE q OUTPUT deleted.*
DELETE x FROM (SELECT id, ROW_NUMBER() OVER (ORDER BY id DESC) AS r FROM stock) x JOIN stock s ON s.id = x.id WHERE x.r = 1
SELECT id, name FROM stock
DECLARE @t TABLE (a int) INSERT @t VALUES (1), (1), (2)
;WITH c AS (SELECT a, COUNT(*) OVER (PARTITION BY a) AS n FROM @t) DELETE c WHERE n > 1
SELECT a FROM @t --> nr int* = 1 | word varchar(10) = last (1 rows) (1 changed) --> id int* | name varchar(10) = 2 | ink; 4 | new (2 rows) (3 changed) (2 changed) --> a int? = 2 (1 rows)
CREATE DATABASE apart -->
USE apart
UPDATE p SET price = 78 FROM master..plain p JOIN master.dbo.stock s ON s.id = p.nr
INSERT master.dbo.plain (word) VALUES ('far')
SELECT name, price FROM master..stock --> USE apart --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'apart'. (1 changed) (1 changed) --> name varchar(10) | price int? = ink | 4; new | 78; far | 5 (3 rows)
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
INSERT plain VALUES ('x', 1, 1) --> Msg 4406, Level 16, State 1, Line 1: Update or insert of view or function 'plain' failed because it contains a derived or constant field.
UPDATE narrow SET nr = 3 --> Msg 8102, Level 16, State 1, Line 1: Cannot update identity column 'id'.
UPDATE plain SET half = 3 --> Msg 4406, Level 16, State 1, Line 1: Update or insert of view or function 'plain' failed because it contains a derived or constant field.
UPDATE plain SET kind = 'b' --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'kind'.
DELETE plain OUTPUT deleted.* --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OUTPUT of a change through a query with expressions.
;WITH c AS (SELECT kind, MAX(id) AS n FROM stock GROUP BY kind) DELETE c --> Msg 4403, Level 16, State 1, Line 1: Cannot update the view or function 'c' because it contains aggregates, or a DISTINCT or GROUP BY clause, or PIVOT or UNPIVOT operator.
;WITH c AS (SELECT MAX(id) AS n FROM stock) DELETE c --> Msg 4403, Level 16, State 1, Line 1: Cannot update the view or function 'c' because it contains aggregates, or a DISTINCT or GROUP BY clause, or PIVOT or UNPIVOT operator.
;WITH c AS (SELECT name FROM stock UNION ALL SELECT 'a') DELETE c --> Msg 4426, Level 16, State 1, Line 1: View 'c' is not updatable because the definition contains a UNION operator.
MERGE plain AS p USING (VALUES ('far', 1), ('ink', 2)) w (word, price) ON w.word = p.word WHEN MATCHED THEN UPDATE SET price += w.price
WHEN NOT MATCHED THEN INSERT (price, word) VALUES (w.price, w.word) WHEN NOT MATCHED BY SOURCE THEN DELETE;
;WITH s AS (SELECT TOP (1) name, price FROM stock ORDER BY id) MERGE s USING (SELECT 4 AS p) x ON p = price WHEN MATCHED THEN DELETE OUTPUT $action, deleted.name;
SELECT name, price, kind FROM stock --> (3 changed) --> $action nvarchar(10) = DELETE | name varchar(10)? = ink (1 rows) --> name varchar(10) | price int? | kind char(1)? = far | 6 | NULL; ink | 2 | NULL (2 rows)
CREATE VIEW checked AS SELECT name FROM stock WHERE kind = 'b' WITH CHECK OPTION -->
UPDATE checked SET name = 'z' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a view with triggers for other changes or WITH CHECK OPTION.
;WITH o AS (SELECT name FROM sys.objects) DELETE o --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a query of a function or system view.
TRUNCATE TABLE plain --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support this statement for a view ('plain').
;WITH r (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM r) DELETE r --> Msg 4426, Level 16, State 1, Line 1: View 'r' is not updatable because the definition contains a UNION operator.
;WITH c AS (SELECT * FROM STRING_SPLIT((SELECT 'a,b'), ',')) DELETE c --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a query ('c') of other than one table.
WITH stock AS (SELECT TOP (1) * FROM stock ORDER BY id DESC) DELETE stock
CREATE TABLE shut (a int) --> (1 changed)
CREATE VIEW inside AS SELECT a FROM shut -->
CREATE TRIGGER bars ON inside INSTEAD OF DELETE AS PRINT 'no' -->
CREATE VIEW outside AS SELECT a FROM inside -->
INSERT outside VALUES (1) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a view with triggers for other changes or WITH CHECK OPTION.
DELETE inside --> no (0 changed)
