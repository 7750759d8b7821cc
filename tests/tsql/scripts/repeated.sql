CREATE TABLE again (a int DEFAULT 1) DECLARE @i int = 0 WHILE @i < 6 BEGIN INSERT again DEFAULT VALUES
  SELECT * FROM again IF @i = 0 ALTER TABLE again ADD b varchar(3) DEFAULT 'x'
  IF @i = 1 EXEC sp_rename 'again.b', 'c', 'COLUMN'
  IF @i = 2 BEGIN DROP TABLE again EXEC ('CREATE TABLE again (d bigint DEFAULT 5)') END
  IF @i = 3 BEGIN BEGIN TRAN ALTER TABLE again ADD e int DEFAULT 7 END IF @i = 4 ROLLBACK SET @i += 1 END
--> (1 changed) --> a int? = 1 (1 rows) (1 changed) --> a int? | b varchar(3)? = 1 | NULL; 1 | x (2 rows) (15477, Line 3) (1 changed)
--> a int? | c varchar(3)? = 1 | NULL; 1 | x; 1 | x (3 rows) (1 changed) --> d bigint? = 5 (1 rows) (1 changed) --> d bigint? | e int? = 5 | NULL; 5 | 7 (2 rows) (1 changed)
--> d bigint? = 5; 5 (2 rows)
DECLARE @i int = 0 WHILE @i < 3 BEGIN SELECT d FROM again UPDATE again SET d += 1 IF @i = 0 SET ROWCOUNT 1
  IF @i = 1 SET ROWCOUNT 0 SET @i += 1 END --> d bigint? = 5; 5 (2 rows) (2 changed) --> d bigint? = 6 (1 rows) (1 changed) --> d bigint? = 7; 6 (2 rows) (2 changed)
CREATE PROCEDURE CountAgain @depth int AS IF @depth = 2 CREATE TABLE #again (x int, y int)
IF @depth = 1 INSERT #again VALUES (1, 2) DECLARE @t TABLE (z int) INSERT @t VALUES (@depth)
IF @depth > 0 BEGIN SET @depth -= 1 EXEC CountAgain @depth END SELECT * FROM #again SELECT * FROM @t --> Msg 2007, Level 0, State 1, Line 1, Procedure CountAgain: The module 'CountAgain' depends on the missing object 'CountAgain'. The module will still be created; however, it cannot run successfully until the object exists.
CREATE TABLE #again (w varchar(9)) EXEC CountAgain 3
--> (1 changed) (1 changed) (1 changed) (1 changed) (1 changed) --> x int? = 1 | y int? = 2 (1 rows) --> z int? = 0 (1 rows) --> x int? = 1 | y int? = 2 (1 rows) --> z int? = 1 (1 rows)
--> x int? = 1 | y int? = 2 (1 rows) --> z int? = 2 (1 rows) --> w varchar(9)? (0 rows) --> z int? = 3 (1 rows)
CREATE FUNCTION AgainOf(@x int) RETURNS int AS BEGIN RETURN @x END -->
CREATE VIEW AgainView AS SELECT MIN(d) AS m FROM again -->
DECLARE @i int = 0 WHILE @i < 3 BEGIN SELECT *, dbo.AgainOf(2) AS f FROM AgainView DELETE again WHERE d = 100
  IF @i = 0 EXEC ('ALTER FUNCTION AgainOf(@x int) RETURNS varchar(5) AS BEGIN RETURN ''x'' + CAST(@x AS varchar(4)) END')
  IF @i = 0 EXEC ('CREATE TRIGGER OnAgain ON again AFTER DELETE AS PRINT ''fired''')
  IF @i = 1 EXEC ('ALTER VIEW AgainView AS SELECT MAX(d) AS n, 1 AS o FROM again') SET @i += 1 END
--> m bigint? = 7 | f int? = 2 (1 rows) (0 changed) --> m bigint? = 7 | f varchar(5)? = x2 (1 rows) --> fired (0 changed) --> n bigint? = 8 | o int = 1 | f varchar(5)? = x2 (1 rows)
--> fired (0 changed)
DECLARE @i int = 0 WHILE @i < 2 BEGIN IF @i = 0 EXEC sp_executesql N'SELECT @v + @v', N'@v int', 5
  IF @i = 1 EXEC sp_executesql N'SELECT @v + @v', N'@v varchar(5)', '5' SET @i += 1 END --> - int? = 10 (1 rows) --> - varchar(10)? = 55 (1 rows)
CREATE TABLE counted (id int IDENTITY, x int) DECLARE @i int = 0 WHILE @i < 3 BEGIN INSERT counted VALUES (7)
  IF @i = 0 SET IDENTITY_INSERT counted ON IF @i = 1 SET IDENTITY_INSERT counted OFF SET @i += 1 END
SELECT * FROM counted
--> (1 changed)
--> Msg 545, Level 16, State 1, Line 1: Explicit value must be specified for identity column in table 'counted' either when IDENTITY_INSERT is set to ON or when a replication user is inserting into a NOT FOR REPLICATION identity column. (1 changed)
--> id int* | x int? = 1 | 7; 2 | 7 (2 rows)
CREATE DATABASE elsewhere -->
USE elsewhere CREATE TABLE again (elsewhere int) --> USE elsewhere --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'elsewhere'.
SELECT * FROM again --> elsewhere int? (0 rows)
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
SELECT * FROM again --> d bigint? = 8; 7 (2 rows)
-- the same text in two databases
CREATE PROCEDURE ReadAgain AS SELECT * FROM again -->
USE elsewhere --> USE elsewhere --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'elsewhere'.
CREATE PROCEDURE ReadAgain AS SELECT * FROM again -->
DECLARE @i int = 0 WHILE @i < 2 BEGIN EXEC ReadAgain EXEC master..ReadAgain SET @i += 1 END --> elsewhere int? (0 rows) --> d bigint? = 8; 7 (2 rows) --> elsewhere int? (0 rows) --> d bigint? = 8; 7 (2 rows)
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
-- the rows that a trigger receives, after an error
CREATE TABLE replaced (x int) -->
CREATE TRIGGER OnReplaced ON replaced INSTEAD OF INSERT, UPDATE AS SELECT x FROM inserted -->
INSERT replaced SELECT 1 DECLARE @i int = 0, @s varchar(5) = 'x' WHILE @i < 3 BEGIN
  BEGIN TRY INSERT replaced SELECT CAST(@s AS int) + @i END TRY BEGIN CATCH PRINT ERROR_NUMBER() END CATCH
  SET @s = '7' SET @i += 1 END SELECT COUNT(*) FROM replaced --> x int? = 1 (1 rows) (1 changed) (0 changed) --> 245 --> x int? = 8 (1 rows) (1 changed) --> x int? = 9 (1 rows) (1 changed) --> - int? = 0 (1 rows)
SET IMPLICIT_TRANSACTIONS ON DECLARE @i int = 0 WHILE @i < 2 BEGIN SELECT COUNT(*), @@TRANCOUNT FROM counted COMMIT
  SET @i += 1 END SET IMPLICIT_TRANSACTIONS OFF --> - int? = 2 | - int? = 1 (1 rows) --> - int? = 2 | - int? = 1 (1 rows)
