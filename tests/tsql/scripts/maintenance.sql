CREATE DATABASE shop -->
USE shop --> USE shop --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'shop'.
CREATE TABLE item (id int IDENTITY PRIMARY KEY, code varchar(10) NOT NULL) -->
-- identities
DBCC CHECKIDENT (item) --> Msg 7998, Level 0, State 1, Line 2: Checking identity information: current identity value 'NULL', current column value 'NULL'. (2528)
INSERT item (code) VALUES ('a'), ('b'), ('c'), ('d'), ('e') --> (5 changed)
DBCC CHECKIDENT ('dbo.item', NORESEED) --> Msg 7998, Level 0, State 1, Line 1: Checking identity information: current identity value '5', current column value '5'. (2528)
DELETE item WHERE id > 3 DBCC CHECKIDENT (item, RESEED, 3) INSERT item (code) VALUES ('f') SELECT id, code FROM item
--> (2 changed) --> Msg 7998, Level 0, State 1, Line 1: Checking identity information: current identity value '5'. (2528) (1 changed)
--> id int* | code varchar(10) = 1 | a; 2 | b; 3 | c; 4 | f (4 rows)
BEGIN TRANSACTION DELETE item DBCC CHECKIDENT (item, RESEED, 0) WITH NO_INFOMSGS INSERT item (code) VALUES ('h')
SELECT id FROM item COMMIT --> (4 changed) (1 changed) --> id int* = 1 (1 rows)
INSERT item (code) VALUES ('i') SELECT IDENT_CURRENT('item') AS last --> (1 changed) --> last decimal(38,0)? = 2 (1 rows)
DECLARE @seed int DBCC CHECKIDENT (item, RESEED, @seed) DBCC CHECKIDENT (item, RESEED, 3000000000)
--> Msg 7998, Level 0, State 1, Line 1: Checking identity information: current identity value '2'. (2528)
--> Msg 7998, Level 0, State 1, Line 1: Checking identity information: current identity value '2'.
--> Msg 8115, Level 16, State 2, Line 1: Arithmetic overflow error converting expression to data type int.
TRUNCATE TABLE item DBCC CHECKIDENT (item, RESEED, 40) INSERT item (code) VALUES ('j'), ('k') SELECT id FROM item --> Msg 7998, Level 0, State 1, Line 1: Checking identity information: current identity value 'NULL'. (2528) (2 changed) --> id int* = 40; 41 (2 rows)
SET IDENTITY_INSERT item ON INSERT item (id, code) VALUES (90, 'l') SET IDENTITY_INSERT item OFF
DBCC CHECKIDENT (item) INSERT item (code) VALUES ('m') SELECT SCOPE_IDENTITY() AS id --> (1 changed) --> Msg 7998, Level 0, State 1, Line 2: Checking identity information: current identity value '90', current column value '90'. (2528) (1 changed) --> id decimal(38,0)? = 91 (1 rows)
CREATE TABLE plain (a int) DBCC CHECKIDENT (plain) DBCC CHECKIDENT (nothing)
--> Msg 7997, Level 16, State 1, Line 1: 'plain' does not contain an identity column.
--> Msg 2501, Level 16, State 45, Line 1: Cannot find a table or object with the name "nothing". Check the system catalog.
-- row counts
INSERT plain VALUES (1), (2), (3), (4), (5), (6) --> (6 changed)
SET ROWCOUNT 2 SELECT a FROM plain ORDER BY a DESC SELECT TOP (1) a FROM plain ORDER BY a
SELECT TOP (3) a FROM plain ORDER BY a SELECT COUNT(*) AS n FROM plain WHERE a IN (SELECT a FROM plain)
DECLARE @a int SELECT @a = a FROM plain ORDER BY a SELECT @a AS a, @@ROWCOUNT AS rows --> a int? = 6; 5 (2 rows) --> a int? = 1 (1 rows) --> a int? = 1; 2 (2 rows) --> n int? = 6 (1 rows) --> a int? = 2 | rows int? = 2 (1 rows)
SET ROWCOUNT 2 UPDATE plain SET a = a + 10 UPDATE TOP (1) plain SET a = a + 10 WHERE a < 10
DELETE TOP (3) FROM plain WHERE a < 10 SET ROWCOUNT 0 SELECT a FROM plain ORDER BY a --> (2 changed) (1 changed) (2 changed) --> a int? = 6; 11; 12; 13 (4 rows)
SET ROWCOUNT 3 WHILE 1 = 1 BEGIN DELETE plain IF @@ROWCOUNT = 0 BREAK END --> (3 changed) (1 changed) (0 changed)
INSERT plain VALUES (1), (2), (3), (4), (5), (6) --> (6 changed)
CREATE PROCEDURE two AS SET ROWCOUNT 2 SELECT a FROM plain -->
EXEC two SELECT COUNT(*) AS n FROM plain SET ROWCOUNT 4 INSERT plain SELECT a + 100 FROM plain ORDER BY a
SELECT a INTO #copy FROM plain SET ROWCOUNT 0 SELECT a FROM plain SELECT a FROM #copy --> a int? = 1; 2 (2 rows) --> n int? = 6 (1 rows) (4 changed) (4 changed) --> a int? = 1; 2; 3; 4; 5; 6; 101; 102; 103; 104 (10 rows) --> a int? = 1; 2; 3; 4 (4 rows)
SET ROWCOUNT 1
DECLARE c CURSOR FOR SELECT a FROM plain OPEN c FETCH c FETCH c SELECT @@FETCH_STATUS AS status CLOSE c DEALLOCATE c
SET ROWCOUNT 0 --> a int? = 1 (1 rows) --> a int? (0 rows) --> status int? = -1 (1 rows)
SET ROWCOUNT -1 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '-'.
DECLARE @n int = 3 SET ROWCOUNT @n --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET ROWCOUNT @variable.
-- statements without effect
UPDATE STATISTICS plain UPDATE STATISTICS dbo.item PK_item WITH FULLSCAN, NORECOMPUTE UPDATE STATISTICS nothing
CHECKPOINT DBCC FREEPROCCACHE DBCC TRACEON (1222, -1) WITH NO_INFOMSGS DBCC SHRINKFILE (N'shop', TRUNCATEONLY) --> Msg 2706, Level 16, State 6, Line 2: Table 'nothing' does not exist. (2528, Line 3) (2528, Line 3)
DBCC CHECKDB --> Msg 8989, Level 10, State 1, Line 1: CHECKDB found 0 allocation errors and 0 consistency errors in database 'shop'. (2528)
DBCC OPENTRAN --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support DBCC OPENTRAN.
DBCC CHECKDB ('shop') --> Msg 8989, Level 10, State 1, Line 1: CHECKDB found 0 allocation errors and 0 consistency errors in database 'shop'. (2528)
CREATE TABLE measured (a int CONSTRAINT named NOT NULL) CHECKPOINT 5 UPDATE STATISTICS measured (x, y) UPDATE STATISTICS measured x
INSERT measured VALUES (NULL) --> Msg 515, Level 16, State 2, Line 2: Cannot insert the value NULL into column 'a', table 'shop.dbo.measured'; column does not allow nulls. INSERT fails. (3621)
