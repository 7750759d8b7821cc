-- Triggers: what fires them, the rows they see, rollbacks and errors in them.

CREATE TABLE item (id int IDENTITY PRIMARY KEY, name varchar(20) NOT NULL, price money DEFAULT 1)
CREATE TABLE log (id int IDENTITY(100, 1) PRIMARY KEY, what varchar(200)) -->
CREATE TRIGGER item_log ON item AFTER INSERT, UPDATE, DELETE AS BEGIN
    DECLARE @rows int = @@ROWCOUNT, @new int, @old int SET NOCOUNT ON SELECT @new = COUNT(*) FROM inserted
    SELECT @old = COUNT(*) FROM deleted
    INSERT log VALUES (CONCAT('rows ', @rows, ', new ', @new, ', old ', @old, ', level ', @@NESTLEVEL, ', count ', @@TRANCOUNT,
        CASE WHEN UPDATE(name) THEN ', name' END, CASE WHEN UPDATE(price) THEN ', price' END)) END -->
INSERT item (name) VALUES ('a'), ('b'), ('c') SELECT @@ROWCOUNT AS n, SCOPE_IDENTITY() AS own, @@IDENTITY AS last --> (3 changed) --> n int? = 3 | own decimal(38,0)? = 3 | last decimal(38,0)? = 100 (1 rows)
UPDATE item SET price = price + id WHERE name <> 'b' SELECT @@ROWCOUNT AS n
UPDATE item SET name = 'x', price = 2 WHERE id = 99 DELETE item WHERE id = 2 DELETE FROM item WHERE id = 99
INSERT item SELECT name + name, price FROM item WHERE 1 = 0 SELECT what FROM log ORDER BY id
--> (2 changed) --> n int? = 2 (1 rows) (0 changed) (1 changed) (0 changed) (0 changed) --> what varchar(200)? --> rows 3, new 3, old 0, level 1, count 1, name, price
--> rows 2, new 2, old 2, level 1, count 1, price --> rows 0, new 0, old 0, level 1, count 1, name, price --> rows 1, new 0, old 1, level 1, count 1 --> rows 0, new 0, old 0, level 1, count 1
--> rows 0, new 0, old 0, level 1, count 1, name, price (6 rows)
BEGIN TRANSACTION TRUNCATE TABLE log UPDATE item SET name = name SELECT what FROM log ROLLBACK
SELECT COUNT(*) AS n FROM log --> (2 changed) --> what varchar(200)? = rows 2, new 2, old 2, level 1, count 1, name (1 rows) --> n int? = 6 (1 rows)
SELECT name, type, type_desc, is_disabled, is_instead_of_trigger, OBJECT_NAME(parent_id) AS parent FROM sys.triggers
SELECT xtype, OBJECT_NAME(parent_obj) AS parent FROM sysobjects WHERE name = 'item_log'
SELECT LEFT(OBJECT_DEFINITION(object_id), 30) AS t, OBJECTPROPERTY(object_id, 'IsTrigger') AS p FROM sys.sql_modules WHERE object_id = OBJECT_ID('item_log', 'TR')
--> name nvarchar(128)? = item_log | type char(2)? = TR | type_desc nvarchar(60)? = SQL_TRIGGER | is_disabled bit? = 0 | is_instead_of_trigger bit? = 0 | parent nvarchar(128)? = item (1 rows)
--> xtype char(2)? = TR | parent nvarchar(128)? = item (1 rows) --> t nvarchar(30)? = CREATE TRIGGER item_log ON ite | p int? = 1 (1 rows)
-- The rows before and after the change.
ALTER TRIGGER item_log ON dbo.item FOR UPDATE AS SET NOCOUNT ON
INSERT log (what) SELECT d.name + '->' + i.name + ' ' + CAST(d.price AS varchar(20)) + '->' + CAST(i.price AS varchar(20))
FROM inserted i JOIN deleted d ON d.id = i.id ORDER BY i.id SELECT * FROM deleted WHERE id = 1 -->
TRUNCATE TABLE log UPDATE item SET name = UPPER(name), price = price * 2 DELETE item WHERE id = 3
SELECT what FROM log ORDER BY id --> id int* = 1 | name varchar(20) = a | price money? = 2.0000 (2 changed) (1 changed) --> what varchar(200)? = a->A 2.00->4.00; c->C 4.00->8.00 (2 rows)
-- Not visible elsewhere: in procedures and dynamic SQL, outside of triggers.
SELECT * FROM inserted --> Msg 208, Level 16, State 1, Line 2: Invalid object name 'inserted'.
CREATE TRIGGER dynamic ON item FOR DELETE AS EXEC ('SELECT * FROM deleted') -->
DELETE item WHERE id = 1 SELECT COUNT(*) AS n FROM item --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'deleted'.
DROP TRIGGER IF EXISTS missing DROP TRIGGER dynamic, missing --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the trigger 'missing', because it does not exist or you do not have permission.
CREATE TRIGGER writes ON item FOR DELETE AS DELETE deleted --> Msg 286, Level 16, State 1, Line 1, Procedure writes: The logical tables INSERTED and DELETED cannot be updated.
CREATE TRIGGER reads ON item FOR DELETE AS SELECT nothing FROM deleted --> Msg 207, Level 16, State 1, Line 1, Procedure reads: Invalid column name 'nothing'.
CREATE TRIGGER asks ON item FOR DELETE AS IF UPDATE(nothing) PRINT 'a' -->
DELETE item --> Msg 207, Level 16, State 1, Line 1, Procedure asks: Invalid column name 'nothing'.
DROP TRIGGER asks IF UPDATE(name) PRINT 'outside' --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '('.
-- A rollback in a trigger ends the batch.
CREATE TRIGGER item_guard ON item AFTER INSERT, DELETE AS IF EXISTS (SELECT * FROM inserted WHERE price < 0) BEGIN
    RAISERROR ('The price is negative.', 16, 1) ROLLBACK TRANSACTION
    SELECT COUNT(*) AS gone, @@TRANCOUNT AS count FROM inserted INSERT log VALUES ('refused') END -->
TRUNCATE TABLE log INSERT item VALUES ('bad', -1) PRINT 'not reached'
--> Msg 50000, Level 16, State 1, Line 3, Procedure item_guard: The price is negative. --> gone int? = 0 | count int? = 0 (1 rows) (1 changed)
--> Msg 3609, Level 16, State 1, Line 1: The transaction ended in the trigger. The batch has been aborted.
SELECT name, what, @@TRANCOUNT AS count FROM item CROSS JOIN log --> name varchar(20) = A | what varchar(200)? = refused | count int? = 0 (1 rows)
BEGIN TRAN INSERT item VALUES ('good', 1) INSERT item VALUES ('bad', -1) PRINT 'not reached'
--> (1 changed) --> Msg 50000, Level 16, State 1, Line 3, Procedure item_guard: The price is negative. --> gone int? = 0 | count int? = 0 (1 rows) (1 changed)
--> Msg 3609, Level 16, State 1, Line 1: The transaction ended in the trigger. The batch has been aborted.
SELECT name, @@TRANCOUNT AS count FROM item --> name varchar(20) = A | count int? = 0 (1 rows)
BEGIN TRY INSERT item VALUES ('bad', -1) END TRY
BEGIN CATCH SELECT ERROR_NUMBER() AS n, ERROR_MESSAGE() AS m, ERROR_PROCEDURE() AS p, XACT_STATE() AS s, @@TRANCOUNT AS count END CATCH
SELECT COUNT(*) AS n FROM item WHERE name = 'bad' --> n int? = 50000 | m nvarchar(4000)? = The price is negative. | p nvarchar(128)? = item_guard | s smallint? = 0 | count int? = 0 (1 rows) --> n int? = 0 (1 rows)
-- An error in a trigger rolls back the transaction.
CREATE TRIGGER item_error ON item AFTER UPDATE AS PRINT 'before' UPDATE item SET price = 1 / 0 PRINT 'after' -->
BEGIN TRAN INSERT item VALUES ('good', 1) UPDATE item SET price = 5 PRINT 'not reached' --> (1 changed) --> id int* = 1 | name varchar(20) = A | price money? = 4.0000 --> before --> Msg 8134, Level 16, State 1, Line 2, Procedure item_error: Divide by zero error encountered.
SELECT @@TRANCOUNT AS count, (SELECT COUNT(*) FROM item WHERE name = 'good') AS n --> count int? = 0 | n int? = 0 (1 rows)
BEGIN TRAN BEGIN TRY UPDATE item SET price = 5 END TRY
BEGIN CATCH SELECT ERROR_NUMBER() AS n, ERROR_PROCEDURE() AS p, ERROR_LINE() AS l, XACT_STATE() AS s ROLLBACK END CATCH --> id int* = 1 | name varchar(20) = A | price money? = 4.0000 --> before (0 changed) --> n int? = 8134 | p nvarchar(128)? = item_error | l int? = 2 | s smallint? = -1 (1 rows)
ALTER TRIGGER item_error ON item AFTER UPDATE AS
BEGIN TRY SELECT 1 / 0 AS n END TRY BEGIN CATCH SELECT XACT_STATE() AS s END CATCH -->
UPDATE item SET price = 5
--> id int* = 1 | name varchar(20) = A | price money? = 4.0000 --> n int? (0 rows) --> s smallint? = -1 (1 rows)
--> Msg 3616, Level 16, State 1, Line 1: An error was raised during trigger execution. The batch has been aborted and the user transaction, if any, has been rolled back.
-- Disabled triggers do not fire.
DISABLE TRIGGER item_error ON item -->
TRUNCATE TABLE log UPDATE item SET price = 5 SELECT what FROM log
SELECT name, is_disabled FROM sys.triggers ORDER BY name ALTER TABLE item DISABLE TRIGGER ALL
UPDATE item SET price = 6 INSERT item VALUES ('bad', -1) SELECT COUNT(*) AS n FROM log
ALTER TABLE item ENABLE TRIGGER item_guard, item_log SELECT name, is_disabled FROM sys.triggers ORDER BY name
--> id int* = 1 | name varchar(20) = A | price money? = 4.0000 (1 changed) --> what varchar(200)? = A->A 4.00->5.00 (1 rows)
--> name nvarchar(128)? | is_disabled bit? = asks | 0; item_error | 1; item_guard | 0; item_log | 0 (4 rows) (1 changed) (1 changed) --> n int? = 1 (1 rows)
--> name nvarchar(128)? | is_disabled bit? = asks | 1; item_error | 1; item_guard | 0; item_log | 0 (4 rows)
ALTER TABLE item ENABLE TRIGGER missing --> Msg 4920, Level 16, State 0, Line 1: ALTER TABLE failed because trigger 'missing' on table 'item' does not exist.
ENABLE TRIGGER missing ON item --> Msg 1088, Level 16, State 12, Line 1: Cannot find the object "missing" because it does not exist or you do not have permissions.
DISABLE TRIGGER ALL ON missing --> Msg 1088, Level 16, State 12, Line 1: Cannot find the object "missing" because it does not exist or you do not have permissions.
DROP TRIGGER item_error DISABLE TRIGGER item_log, item_guard ON item; DROP TABLE item
SELECT COUNT(*) AS n FROM sys.triggers --> n int? = 0 (1 rows)
-- Nesting: no trigger fires itself directly, at most 32 levels.
CREATE TABLE a (x int) CREATE TABLE b (x int) -->
CREATE TRIGGER a_own ON a AFTER INSERT AS IF @@NESTLEVEL < 5 INSERT a SELECT x + 1 FROM inserted -->
INSERT a VALUES (1) SELECT x FROM a --> (1 changed) (1 changed) --> x int? = 1; 2 (2 rows)
CREATE TRIGGER a_other ON a AFTER INSERT AS
IF (SELECT MAX(x) FROM inserted) < 4 INSERT a SELECT x + 10 FROM inserted WHERE x < 4 -->
DELETE a INSERT a VALUES (1) SELECT x FROM a ORDER BY x --> (2 changed) (1 changed) (1 changed) (1 changed) (1 changed) (1 changed) (1 changed) --> x int? = 1; 2; 11; 12; 12; 13 (6 rows)
DROP TRIGGER a_own, a_other -->
CREATE TRIGGER a_b ON a AFTER INSERT AS INSERT b SELECT x + 1 FROM inserted -->
CREATE TRIGGER b_a ON b AFTER INSERT AS INSERT a SELECT x + 1 FROM inserted -->
TRUNCATE TABLE a INSERT a VALUES (1) --> Msg 217, Level 16, State 1, Line 1, Procedure b_a: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
SELECT (SELECT COUNT(*) FROM a) AS a, (SELECT COUNT(*) FROM b) AS b --> a int? = 0 | b int? = 0 (1 rows)
ALTER TRIGGER b_a ON b AFTER INSERT AS INSERT a SELECT x + 1 FROM inserted WHERE (SELECT MAX(x) FROM inserted) < 4
    IF @@NESTLEVEL > 3 DISABLE TRIGGER a_b ON a -->
INSERT a VALUES (1) SELECT x FROM a --> Msg 217, Level 16, State 1, Line 1, Procedure b_a: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
-- Foreign keys: the triggers of a table that a cascade changes.
CREATE TABLE parent (id int PRIMARY KEY)
CREATE TABLE child (id int IDENTITY, parent int REFERENCES parent ON DELETE CASCADE ON UPDATE CASCADE)
CREATE TABLE other (parent int NULL REFERENCES parent ON DELETE SET NULL) -->
CREATE TRIGGER parent_d ON parent AFTER DELETE AS SELECT 'parent' AS t, id FROM deleted -->
CREATE TRIGGER child_c ON child AFTER DELETE, UPDATE AS
SELECT 'child' AS t, d.parent AS old, i.parent AS new FROM deleted d LEFT JOIN inserted i ON i.id = d.id
IF UPDATE(parent) PRINT 'parent of child updated' -->
CREATE TRIGGER other_u ON other AFTER UPDATE AS SELECT 'other' AS t, COUNT(*) AS n FROM inserted WHERE parent IS NULL -->
SET NOCOUNT ON INSERT parent VALUES (1), (2), (3) INSERT child VALUES (1), (1), (2) INSERT other VALUES (1)
DELETE parent WHERE id = 1 UPDATE parent SET id = 5 WHERE id = 2 DELETE parent WHERE id = 3
--> t varchar(5) = other | n int? = 1 --> t varchar(5) | old int? | new int? = child | 1 | NULL; child | 1 | NULL --> t varchar(6) = parent | id int = 1
--> t varchar(5) = child | old int? = 2 | new int? = 5 --> parent of child updated --> t varchar(6) = parent | id int = 3
SET NOCOUNT OFF
-- Rows that take over each other's keys, and rows of another database.
CREATE TABLE pair (id int PRIMARY KEY, x int UNIQUE) CREATE DATABASE elsewhere -->
CREATE TRIGGER pair_u ON pair AFTER UPDATE AS
SELECT d.id, d.x AS old, i.x AS new FROM deleted d JOIN inserted i ON i.id = d.id ORDER BY 1 -->
INSERT pair VALUES (1, 10), (2, 20) UPDATE pair SET x = 30 - x
UPDATE p SET x = p.x + q.id FROM pair p JOIN pair q ON q.id = p.id WHERE q.id = 1 --> (2 changed) --> id int | old int? | new int? = 1 | 10 | 20; 2 | 20 | 10 (2 rows) (2 changed) --> id int = 1 | old int? = 20 | new int? = 21 (1 rows) (1 changed)
USE elsewhere UPDATE TOP (1) master..pair SET x += 5 INSERT INTO master..pair EXEC ('SELECT 3, 30') --> USE elsewhere --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'elsewhere'. --> id int = 2 | old int? = 10 | new int? = 15 (1 rows) (1 changed) (1 changed)
USE master
-- OUTPUT and triggers.
INSERT pair OUTPUT inserted.id VALUES (4, 40) UPDATE pair SET x = 41 OUTPUT inserted.id WHERE id = 4
--> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'. --> id int = 4 (1 rows)
--> Msg 334, Level 16, State 1, Line 3: The target table 'pair' of the DML statement cannot have any enabled triggers if the statement contains an OUTPUT clause without INTO clause.
DECLARE @t table (old int, new int) UPDATE pair SET x = x + 100 OUTPUT deleted.x, inserted.x INTO @t WHERE id < 3
SELECT * FROM @t ORDER BY 1 --> id int | old int? | new int? = 1 | 21 | 121; 2 | 15 | 115 (2 rows) (2 changed) --> old int? | new int? = 15 | 115; 21 | 121 (2 rows)
CREATE TABLE target (x int) -->
CREATE TRIGGER target_i ON target FOR INSERT AS PRINT 'inserted' -->
DELETE pair OUTPUT deleted.x INTO target WHERE id = 1 --> Msg 331, Level 16, State 1, Line 1: The target table 'target' of the OUTPUT INTO clause cannot have any enabled triggers.
-- INSTEAD OF
CREATE TABLE doc (id int IDENTITY PRIMARY KEY, title varchar(20) NOT NULL UNIQUE, gone bit NOT NULL DEFAULT 0) -->
CREATE TRIGGER doc_d ON doc INSTEAD OF DELETE AS UPDATE d SET gone = 1 FROM doc d JOIN deleted x ON x.id = d.id -->
CREATE TRIGGER doc_i ON doc INSTEAD OF INSERT AS
INSERT doc (title) SELECT i.title FROM inserted i WHERE NOT EXISTS (SELECT * FROM doc d WHERE d.title = i.title) -->
CREATE TRIGGER doc_u ON doc INSTEAD OF UPDATE AS
SELECT i.id, d.title AS old, i.title AS new FROM inserted i JOIN deleted d ON d.id = i.id ORDER BY 1 -->
SET NOCOUNT OFF INSERT doc (title) VALUES ('a'), ('b') INSERT doc (title) VALUES ('a'), ('c')
SELECT @@ROWCOUNT AS n, * FROM doc DELETE FROM doc WHERE title <> 'b' SELECT @@ROWCOUNT AS n, * FROM doc
UPDATE doc SET title = 'x' UPDATE d SET title = d.title + '!' FROM doc d JOIN doc e ON e.id = d.id WHERE e.id > 1
--> (2 changed) (2 changed) (1 changed) (2 changed) --> n int? | id int* | title varchar(20) | gone bit = 2 | 1 | a | 0; 2 | 2 | b | 0; 2 | 3 | c | 0 (3 rows)
--> id int* | old varchar(20) | new varchar(20) = 1 | a | a; 3 | c | c (2 rows) (2 changed) (2 changed)
--> n int? | id int* | title varchar(20) | gone bit = 2 | 1 | a | 0; 2 | 2 | b | 0; 2 | 3 | c | 0 (3 rows)
--> id int* | old varchar(20) | new varchar(20) = 1 | a | x; 2 | b | x; 3 | c | x (3 rows) (3 changed) --> id int* | old varchar(20) | new varchar(20) = 2 | b | b!; 3 | c | c! (2 rows) (2 changed)
CREATE TRIGGER doc_d2 ON doc INSTEAD OF INSERT, DELETE AS PRINT 'second' --> Msg 2111, Level 16, State 1, Line 1, Procedure doc_d2: Cannot create trigger 'doc_d2' on table 'doc' because an INSTEAD OF DELETE trigger already exists on this object.
INSERT doc DEFAULT VALUES SELECT * FROM doc --> Msg 515, Level 16, State 2, Line 2, Procedure doc_i: Cannot insert the value NULL into column 'title', table 'master.dbo.doc'; column does not allow nulls. INSERT fails.
CREATE TRIGGER doc_i2 ON doc INSTEAD OF INSERT AS PRINT 'second' --> Msg 2111, Level 16, State 1, Line 1, Procedure doc_i2: Cannot create trigger 'doc_i2' on table 'doc' because an INSTEAD OF INSERT trigger already exists on this object.
ALTER TRIGGER doc_i ON doc INSTEAD OF INSERT AS SELECT * FROM inserted -->
INSERT doc (title) SELECT TOP (1) title + '?' FROM doc ORDER BY id DESC SELECT SCOPE_IDENTITY() AS own
INSERT BULK doc (title varchar(20)) WITH (FIRE_TRIGGERS)
--> id int* = 0 | title varchar(20) = c? | gone bit = 0 (1 rows) (1 changed) --> own decimal(38,0)? = 3 (1 rows)
--> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support INSERT BULK with FIRE_TRIGGERS.
-- A cascade fires no INSTEAD OF trigger.
CREATE TABLE top1 (id int PRIMARY KEY) CREATE TABLE below (id int REFERENCES top1 ON DELETE CASCADE) -->
CREATE TRIGGER below_d ON below INSTEAD OF DELETE AS PRINT 'not reached' -->
INSERT top1 VALUES (1) INSERT below VALUES (1) DELETE top1 SELECT COUNT(*) AS n FROM top1 --> (1 changed) (1 changed) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a cascade to a table with INSTEAD OF triggers.
-- Triggers of two databases with the same number.
CREATE DATABASE twin1 CREATE DATABASE twin2 -->
USE twin1 CREATE TABLE t (x int) --> USE twin1 --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'twin1'.
CREATE TRIGGER first1 ON t FOR INSERT AS INSERT twin2..t SELECT x + 1 FROM inserted -->
USE twin2 CREATE TABLE t (x int) --> USE twin2 --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'twin2'.
CREATE TRIGGER second2 ON t FOR INSERT AS SELECT x, DB_NAME() AS db, OBJECT_NAME(@@PROCID) AS o FROM inserted -->
INSERT twin1..t VALUES (1)
SELECT (SELECT object_id FROM twin1.sys.triggers) - object_id AS difference FROM sys.triggers
ALTER DATABASE twin2 SET RECURSIVE_TRIGGERS OFF --> x int? = 2 | db nvarchar(128)? = twin2 | o nvarchar(128)? = second2 (1 rows) (1 changed) (1 changed) --> difference int? = 0 (1 rows)
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
CREATE VIEW titles AS SELECT title FROM doc -->
CREATE TABLE part (id int IDENTITY PRIMARY KEY, name varchar(10), twin int)
INSERT part VALUES ('a', 2), ('b', 1), ('c', 3) --> (3 changed)
CREATE VIEW pairs AS SELECT p.id, p.name, t.name AS other FROM part p JOIN part t ON t.id = p.twin -->
CREATE TRIGGER pairs_i ON pairs INSTEAD OF INSERT AS INSERT part SELECT name, (SELECT MAX(id) FROM pairs) FROM inserted -->
CREATE TRIGGER pairs_ud ON pairs INSTEAD OF UPDATE, DELETE AS
SELECT d.*, i.other AS new, IIF(UPDATE(other), 'yes', 'no') AS updated FROM deleted d LEFT JOIN inserted i ON i.id = d.id
IF EXISTS (SELECT 1 FROM inserted) UPDATE part SET name = i.other FROM part p JOIN inserted i ON i.id = p.twin -->
INSERT pairs SELECT 7, name + '!', NULL FROM pairs WHERE other = 'b'
UPDATE x SET other = UPPER(x.other) + p.name FROM pairs x JOIN part p ON p.id = x.id AND p.id < 3
DELETE pairs WHERE name LIKE '%!' SELECT * FROM pairs
--> (1 changed) (1 changed) --> id int | name varchar(10)? | other varchar(10)? | new varchar(10)? | updated varchar(3) = 1 | a | b | Ba | yes; 2 | b | a | Ab | yes (2 rows) (2 changed) (2 changed)
--> id int = 4 | name varchar(10)? = a! | other varchar(10)? = c | new varchar(10)? = NULL | updated varchar(3) = no (1 rows) (1 changed)
--> id int* | name varchar(10)? | other varchar(10)? = 1 | Ab | Ba; 2 | Ba | Ab; 3 | c | c; 4 | a! | c (4 rows)
CREATE TRIGGER again ON pairs INSTEAD OF DELETE AS RETURN --> Msg 2111, Level 16, State 1, Line 1, Procedure again: Cannot create trigger 'again' on view 'pairs' because an INSTEAD OF DELETE trigger already exists on this object.
DISABLE TRIGGER pairs_ud ON pairs DELETE pairs --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a view with triggers for other changes or WITH CHECK OPTION.
ENABLE TRIGGER ALL ON pairs MERGE pairs USING part p ON p.id = pairs.id WHEN MATCHED THEN DELETE; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support changes through a view with triggers for other changes or WITH CHECK OPTION.
CREATE TRIGGER titles_i ON titles AFTER INSERT AS PRINT 'view' --> Msg 8197, Level 16, State 4, Line 1, Procedure titles_i: The object 'titles' does not exist or is invalid for this operation.
-- Definitions that fail.
CREATE TRIGGER t ON missing FOR INSERT AS PRINT 'a' --> Msg 8197, Level 16, State 4, Line 2, Procedure t: The object 'missing' does not exist or is invalid for this operation.
CREATE TRIGGER t ON #doc FOR INSERT AS PRINT 'a' --> Msg 50000, Level 16, State 1, Line 1, Procedure t: tsqlbox does not support triggers on temporary tables.
CREATE TRIGGER other.dbo.t ON doc FOR INSERT AS PRINT 'a' --> Msg 166, Level 15, State 1, Line 1: 'CREATE/ALTER TRIGGER' does not allow specifying the database name as a prefix to the object name.
CREATE TRIGGER t ON elsewhere..pair FOR INSERT AS PRINT 'a' --> Msg 8197, Level 16, State 4, Line 1, Procedure t: The object 'elsewhere..pair' does not exist or is invalid for this operation.
CREATE TRIGGER t ON doc FOR SELECT AS PRINT 'a' --> Msg 156, Level 15, State 1, Line 1, Procedure t: Incorrect syntax near the keyword 'SELECT'.
CREATE TRIGGER t ON doc WITH ENCRYPTION FOR INSERT AS PRINT 'a' --> Msg 50000, Level 16, State 1, Line 1, Procedure t: tsqlbox does not support WITH ENCRYPTION of a procedure, function, view or trigger.
DROP TRIGGER t ON DATABASE --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ON DATABASE.
CREATE TRIGGER t ON DATABASE FOR CREATE_TABLE AS PRINT 'a' --> Msg 50000, Level 16, State 1, Line 1, Procedure t: tsqlbox does not support ON DATABASE.
DISABLE TRIGGER ALL ON ALL SERVER --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ON ALL SERVER.
CREATE TRIGGER t ON doc FOR INSERT AS RETURN 1 --> Msg 178, Level 15, State 1, Line 1, Procedure t: A RETURN statement with a return value cannot be used in this context.
CREATE TRIGGER doc ON doc FOR INSERT AS PRINT 'a' --> Msg 2714, Level 16, State 3, Line 1, Procedure doc: There is already an object named 'doc' in the database.
ALTER TRIGGER t ON doc FOR INSERT AS PRINT 'a' --> Msg 208, Level 16, State 6, Line 1, Procedure t: Invalid object name 't'.
ALTER TRIGGER doc_d ON parent FOR INSERT AS PRINT 'a' --> Msg 2110, Level 15, State 1, Line 1, Procedure doc_d: Cannot alter trigger 'doc_d' on 'parent' because this trigger does not belong to this object.
SELECT 1 AS n CREATE TRIGGER t ON doc FOR INSERT AS PRINT 'a' --> Msg 111, Level 15, State 1, Line 1: 'CREATE TRIGGER' must be the first statement in a query batch.
CREATE SCHEMA s -->
CREATE TABLE s.tab (x int) -->
CREATE TRIGGER dbo.s_t ON s.tab FOR INSERT AS PRINT 'a' --> Msg 2103, Level 15, State 1, Line 1, Procedure s_t: Cannot create trigger 's_t' because its schema is different from the schema of the target table or view.
CREATE OR ALTER TRIGGER s_t ON s.tab WITH EXECUTE AS CALLER FOR INSERT NOT FOR REPLICATION AS PRINT 'trigger of s.tab' -->
INSERT s.tab VALUES (1) ALTER SCHEMA dbo TRANSFER s.tab INSERT tab VALUES (2) EXEC sp_helptext 's_t'
DROP TRIGGER dbo.s_t
--> trigger of s.tab (1 changed) --> trigger of s.tab (1 changed)
--> Text nvarchar(255)? = CREATE OR ALTER TRIGGER s_t ON s.tab WITH EXECUTE AS CALLER FOR INSERT NOT FOR REPLICATION AS PRINT 'trigger of s.tab' --> 
-- Types, cursors, savepoints, settings.
CREATE TABLE t (id int IDENTITY PRIMARY KEY, a decimal(38,4), b varbinary(20), c datetime, d float, e nvarchar(max), f bit, g money, h uniqueidentifier, i date, [odd "name] varchar(10))
CREATE TABLE l (id int IDENTITY, m varchar(200)) -->
CREATE TRIGGER tr ON t AFTER INSERT, UPDATE AS SET NOCOUNT ON SELECT * INTO #ins FROM inserted EXEC p
DECLARE c CURSOR LOCAL FOR SELECT id, [odd "name] FROM inserted ORDER BY id DECLARE @id int, @n varchar(10) OPEN c
FETCH NEXT FROM c INTO @id, @n
WHILE @@FETCH_STATUS = 0 BEGIN INSERT l VALUES (CONCAT(@id, ' ', @n)) FETCH NEXT FROM c INTO @id, @n END CLOSE c
DEALLOCATE c IF EXISTS (SELECT 1 FROM inserted i WHERE i.a > 1.5 AND i.e = N'ä' AND i.i = '2020-01-02') PRINT 'typed' --> Msg 2007, Level 0, State 1, Line 1, Procedure tr: The module 'tr' depends on the missing object 'p'. The module will still be created; however, it cannot run successfully until the object exists.
CREATE PROCEDURE p AS SELECT a, b, c, d, e, f, g, h, i, [odd "name] FROM #ins -->
INSERT t (a, b, c, d, e, f, g, h, i, [odd "name]) VALUES (12345678901234567890123456789.1234, 0x01FF, '2020-01-02 03:04:05.123', 1.5, N'ä', 1, 2.5, '6F9619FF-8B86-D011-B42D-00C04FC964FF', '2020-01-02', 'x'), (NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL)
SELECT * FROM l
--> a decimal(38,4)? | b varbinary(20)? | c datetime? | d float? | e nvarchar(max)? | f bit? | g money? | h uniqueidentifier? | i date? | odd "name varchar(10)?
--> 12345678901234567890123456789.1234 | 0x01FF | 2020-01-02 03:04:05.123 | 1.5 | ä | 1 | 2.5000 | 6F9619FF-8B86-D011-B42D-00C04FC964FF | 2020-01-02 | x
--> NULL | NULL | NULL | NULL | NULL | NULL | NULL | NULL | NULL | NULL --> typed (2 changed) --> id int* | m varchar(200)? = 1 | 1 x; 2 | 2  (2 rows)
SET IDENTITY_INSERT t ON INSERT t (id, [odd "name]) VALUES (50, 'y') SET IDENTITY_INSERT t OFF
;WITH c AS (SELECT id FROM t WHERE id > 10) UPDATE t SET f = 0 FROM t JOIN c ON c.id = t.id
--> a decimal(38,4)? = NULL | b varbinary(20)? = NULL | c datetime? = NULL | d float? = NULL | e nvarchar(max)? = NULL | f bit? = NULL | g money? = NULL | h uniqueidentifier? = NULL | i date? = NULL | odd "name varchar(10)? = y (1 changed)
--> a decimal(38,4)? = NULL | b varbinary(20)? = NULL | c datetime? = NULL | d float? = NULL | e nvarchar(max)? = NULL | f bit? = 0 | g money? = NULL | h uniqueidentifier? = NULL | i date? = NULL | odd "name varchar(10)? = y (1 changed)
ALTER TRIGGER tr ON t AFTER INSERT, UPDATE, DELETE AS DECLARE @kept TABLE (n varchar(10))
INSERT @kept SELECT [odd "name] FROM inserted SAVE TRANSACTION s INSERT l VALUES ('lost') ROLLBACK TRANSACTION s
INSERT l VALUES ('kept ' + CAST(@@TRANCOUNT AS varchar(5)))
IF EXISTS (SELECT * FROM inserted WHERE [odd "name] = 'no') BEGIN ROLLBACK INSERT l SELECT 'after ' + n FROM @kept
    BEGIN TRY INSERT l SELECT 'gone ' + [odd "name] FROM inserted END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
    RAISERROR ('no', 16, 1) END -->
TRUNCATE TABLE l INSERT t ([odd "name]) VALUES ('yes') SELECT m FROM l --> (1 changed) (1 changed) (1 changed) (1 changed) --> m varchar(200)? = kept 1 (1 rows)
CREATE PROCEDURE ins @n varchar(10) AS INSERT t ([odd "name]) VALUES (@n) PRINT 'after insert' -->
EXEC ins 'no' PRINT 'not reached'
--> (1 changed) (1 changed) (1 changed) (1 changed) (0 changed) --> Msg 50000, Level 16, State 1, Line 6, Procedure tr: no
--> Msg 3609, Level 16, State 1, Line 1, Procedure ins: The transaction ended in the trigger. The batch has been aborted.
SELECT m FROM l --> m varchar(200)? = kept 1; after no (2 rows)
BEGIN TRY EXEC ins 'no' END TRY BEGIN CATCH SELECT ERROR_NUMBER() n, ERROR_PROCEDURE() p, ERROR_LINE() l END CATCH
SELECT @@TRANCOUNT c --> (1 changed) (1 changed) (1 changed) (1 changed) (0 changed) --> n int? = 50000 | p nvarchar(128)? = tr | l int? = 6 (1 rows) --> c int? = 0 (1 rows)
BEGIN TRAN INSERT t ([odd "name]) SELECT 'ok' SELECT @@TRANCOUNT c, SCOPE_IDENTITY() i COMMIT --> (1 changed) (1 changed) (1 changed) (1 changed) --> c int? = 1 | i decimal(38,0)? = 54 (1 rows)
ALTER TRIGGER tr ON t AFTER DELETE AS THROW 50001, 'thrown', 3 -->
BEGIN TRAN DELETE t WHERE id = 1 --> Msg 50001, Level 16, State 3, Line 1, Procedure tr: thrown
SELECT @@TRANCOUNT c, COUNT(*) n FROM t --> c int? = 0 | n int? = 5 (1 rows)
BEGIN TRAN
BEGIN TRY DELETE t WHERE id = 1 END TRY BEGIN CATCH SELECT ERROR_MESSAGE() m, XACT_STATE() s; ROLLBACK END CATCH --> m nvarchar(4000)? = thrown | s smallint? = -1 (1 rows)
SET IMPLICIT_TRANSACTIONS ON INSERT t (f) VALUES (1) SELECT @@TRANCOUNT c ROLLBACK SET IMPLICIT_TRANSACTIONS OFF --> (1 changed) --> c int? = 1 (1 rows)
ALTER TRIGGER tr ON t AFTER DELETE AS COMMIT -->
DELETE t WHERE id = 1 --> Msg 3609, Level 16, State 1, Line 1: The transaction ended in the trigger. The batch has been aborted.
SELECT COUNT(*) n FROM t WHERE id = 1 --> n int? = 0 (1 rows)
ALTER TRIGGER tr ON t AFTER DELETE AS DROP TABLE l SELECT id FROM deleted -->
DELETE t WHERE id = 2 --> id int* = 2 (1 rows) (1 changed)
ALTER TRIGGER tr ON t AFTER DELETE AS DROP TABLE t SELECT id FROM deleted -->
DELETE t --> id int* = 50; 51; 54 (3 rows) (3 changed)
SELECT OBJECT_ID('t') t, OBJECT_ID('tr') n --> t int? = NULL | n int? = NULL (1 rows)
CREATE TABLE u (x int) -->
CREATE TRIGGER ux ON u FOR INSERT AS SELECT x FROM inserted -->
SET ROWCOUNT 2 INSERT u SELECT v FROM (VALUES (1), (2), (3)) t (v) SET ROWCOUNT 0
INSERT u EXEC ('SELECT 7 UNION ALL SELECT 8') CREATE TABLE #w (x int) INSERT #w EXEC ('INSERT u VALUES (9)')
SELECT * FROM #w --> x int? = 1; 2 (2 rows) (2 changed) --> x int? = 7; 8 (2 rows) (2 changed) (1 changed) --> x int? = 9 (1 rows)
ALTER TABLE u ADD y int DEFAULT 5 WITH VALUES INSERT u (x) VALUES (10)
EXEC sp_executesql N'INSERT u (x) VALUES (@a)', N'@a int', 11 --> x int? = 10 (1 rows) (1 changed) --> x int? = 11 (1 rows) (1 changed)
SET FMTONLY ON INSERT u (x) VALUES (1) SET FMTONLY OFF SET NOEXEC ON INSERT u (x) VALUES (1) SET NOEXEC OFF -->
CREATE TRIGGER uy ON u FOR UPDATE AS IF UPDATE(x) AND NOT UPDATE(y) PRINT 'x' ELSE IF UPDATE([Y]) OR UPDATE(x) PRINT 'y' -->
UPDATE u SET x = 1 WHERE x = 1 UPDATE u SET Y = 1, x = 3 WHERE x = 99 --> x (1 changed) --> y (0 changed)
SELECT [update]('x') --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'x'.
DISABLE TRIGGER ux ON u PRINT 'disabled' INSERT u (x) VALUES (1) ENABLE TRIGGER ALL ON u UPDATE STATISTICS u --> disabled (1 changed)
INSERT doc (title) OUTPUT inserted.title INTO log (what) VALUES ('d') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OUTPUT of a change that a trigger replaces.
UPDATE doc SET title = 'x' OUTPUT inserted.title INTO log (what) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OUTPUT of a change that a trigger replaces.
DELETE doc OUTPUT deleted.title INTO log (what) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OUTPUT of a change that a trigger replaces.
CREATE VIEW checked AS SELECT name FROM sys.tables WHERE name > '' WITH CHECK OPTION -->
CREATE TRIGGER instead ON checked INSTEAD OF INSERT AS PRINT 'instead' --> Msg 2112, Level 16, State 1, Line 1, Procedure instead: Cannot create trigger 'instead' on view 'checked' because the view is defined with CHECK OPTION.
SELECT CHECK_OPTION FROM INFORMATION_SCHEMA.VIEWS WHERE TABLE_NAME = 'checked' --> CHECK_OPTION varchar(7)? = CASCADE (1 rows)
