SELECT 1/0
PRINT 'reached'
SELECT CONVERT(int, 'abc')
PRINT 'not reached'
--> Msg 8134, Level 16, State 1, Line 1: Divide by zero error encountered. --> reached
--> Msg 245, Level 16, State 1, Line 3: Conversion failed when converting the varchar value 'abc' to data type int.
EXEC nosuch 1
PRINT 'after'
RAISERROR('bad %d %s %5d|%-4s|', 11, 2, 7, 'x', 12, 'l')
RAISERROR('info %s', 10, 1, 'x')
PRINT @@ERROR
RAISERROR('too much', 19, 1)
--> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure 'nosuch'. --> after --> Msg 50000, Level 11, State 2, Line 3: bad 7 x    12|l   | --> info x --> 0
--> Msg 2754, Level 16, State 1, Line 6: Error severity levels greater than 18 can only be specified by members of the sysadmin role, using the WITH LOG option.
BEGIN TRY SELECT 1/0 END TRY
BEGIN CATCH SELECT ERROR_NUMBER(), ERROR_MESSAGE(), ERROR_LINE(), ERROR_SEVERITY() END CATCH
BEGIN TRY EXEC nosuchproc END TRY
BEGIN CATCH PRINT 'caught'; THROW END CATCH
PRINT 'not reached'
--> - int? (0 rows) --> - int? = 8134 | - nvarchar(4000)? = Divide by zero error encountered. | - int? = 1 | - int? = 16 (1 rows) --> caught
--> Msg 2812, Level 16, State 62, Line 3: Could not find stored procedure 'nosuchproc'.
/* outer /* inner */ still */ SELECT 'it''s', [n] = N'Zürich' -- c --> - varchar(4) = it's | n nvarchar(6) = Zürich (1 rows)
SET QUOTED_IDENTIFIER OFF
SELECT "text"
SET QUOTED_IDENTIFIER ON --> - varchar(4) = text (1 rows)
SELECT "text" --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'text'.
PRINT 'nothing of a batch runs
when' SELECT FROM x --> Msg 156, Level 15, State 1, Line 2: Incorrect syntax near the keyword 'FROM'.
SELECT 'open --> Msg 105, Level 15, State 1, Line 1: Unclosed quotation mark after the character string 'open --> '.
SELECT 1 /* open --> Msg 113, Level 15, State 1, Line 1: Missing end comment mark '*/'.
IF 1 PRINT 'x' --> Msg 4145, Level 15, State 1, Line 1: An expression of non-boolean type specified in a context where a condition is expected, near 'PRINT'.
PRINT @undeclared --> Msg 137, Level 15, State 2, Line 1: Must declare the scalar variable "@undeclared".
SELEC 1 --> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure 'SELEC'.
CREATE TABLE t () --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near ')'.
BREAK --> Msg 135, Level 15, State 1, Line 1: Cannot use a BREAK statement outside the scope of a WHILE statement.
MERGE a USING b ON 1=1 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '1'.
SELECT CASE WHEN 'a' COLLATE Latin1_General_CI_AS = 'A' THEN 1 ELSE 0 END --> - int = 1 (1 rows)
SELECT 1 WHERE 'a' COLLATE Latin1_General_BIN = 'A' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a collation other than those named ..._CI_AS.
DECLARE cur CURSOR FOR SELECT 1 -->
DECLARE @t TABLE (x int AS y) --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'AS'.
SET NOSUCH ON --> Msg 195, Level 15, State 7, Line 1: 'NOSUCH' is not a recognized SET option.
-- Options and hints that would change a result are rejected, others ignored.
SET NOCOUNT 5 --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support SET NOCOUNT 5.
SET DATEFIRST 1 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET DATEFIRST 1.
SET LANGUAGE German --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET LANGUAGE GERMAN.
SET ANSI_NULL_DFLT_OFF ON --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET ANSI_NULL_DFLT_OFF ON.
SET ANSI_PADDING OFF CREATE TABLE unpadded (a int, b nchar(3), c varchar(max)) SELECT @@OPTIONS & 16 AS padding, FULLTEXTSERVICEPROPERTY('IsFullTextInstalled') AS installed --> padding int? = 0 | installed int? = 0 (1 rows)
ALTER TABLE unpadded ADD d varchar(5) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support columns of type varchar(5) with ANSI_PADDING OFF.
SET ANSI_PADDING ON ALTER TABLE unpadded ADD d varchar(5) DROP TABLE unpadded -->
SET ANSI_PADDING ON SET ANSI_WARNINGS OFF --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET ANSI_WARNINGS OFF.
SET TRANSACTION ISOLATION LEVEL CHAOS --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'CHAOS'.
SET LANGUAGE us_english SET DATEFIRST 7 SET LOCK_TIMEOUT -1 SET ANSI_NULLS, QUOTED_IDENTIFIER ON
SET STATISTICS IO, TIME ON SET TRANSACTION ISOLATION LEVEL REPEATABLE READ
SET DEADLOCK_PRIORITY LOW SET TEXTSIZE 2147483647 SET ROWCOUNT 0 -->
CREATE TABLE hinted (i int NOT NULL PRIMARY KEY WITH (IGNORE_DUP_KEY = ON)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support IGNORE_DUP_KEY = ON.
CREATE TABLE hinted (i int SPARSE, v varchar(9) ROWGUIDCOL INDEX x) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the option INDEX of a column.
CREATE TABLE hinted (i int, v varchar(9) SPARSE NULL) WITH (DATA_COMPRESSION = PAGE) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support options of CREATE TABLE.
CREATE TABLE hinted (i int NOT NULL, v int SPARSE NULL CHECK NOT FOR REPLICATION (v > 0),
    CONSTRAINT hinted_pk PRIMARY KEY CLUSTERED (i DESC) WITH (PAD_INDEX = OFF, IGNORE_DUP_KEY = OFF) ON [PRIMARY]
) ON [PRIMARY]
INSERT hinted VALUES (1, 1), (2, NULL) --> (2 changed)
CREATE INDEX hinted_v ON hinted (v) INCLUDE (i, nosuch) WITH (FILLFACTOR = 80)
CREATE INDEX hinted_v ON hinted (v) INCLUDE (i) WITH (FILLFACTOR = 80) ON [PRIMARY] --> Msg 1911, Level 16, State 1, Line 1: Column name 'nosuch' does not exist in the target table or view.
ALTER TABLE hinted SET (LOCK_ESCALATION = AUTO)
ALTER INDEX hinted_v ON hinted REORGANIZE WITH (LOB_COMPACTION = ON)
ALTER INDEX hinted_v ON hinted REBUILD WITH (FILLFACTOR = 80, ONLINE = OFF) -->
ALTER INDEX hinted_v ON hinted REBUILD WITH (IGNORE_DUP_KEY = ON) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support IGNORE_DUP_KEY = ON.
CREATE UNIQUE INDEX hinted_x ON hinted (v) WITH (DROP_EXISTING = ON) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support DROP_EXISTING = ON.
CREATE UNIQUE INDEX hinted_x ON hinted (v) WHERE v IS NOT NULL -->
CREATE OR ALTER TABLE hinted (i int) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CREATE OR ALTER TABLE.
ALTER TABLE hinted ALTER COLUMN v int IDENTITY --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER COLUMN with an identity or a constraint.
ALTER TABLE hinted ADD w int NULL DEFAULT 7 WITH VALUES, x int NULL DEFAULT 7
SELECT * FROM hinted h INNER HASH JOIN hinted g WITH (NOLOCK, INDEX (hinted_v)) ON g.i = h.i ORDER BY h.i
OPTION (OPTIMIZE FOR (@p = 1), MAXDOP 1) --> i int | v int? | w int? | x int? | i int | v int? | w int? | x int? = 1 | 1 | 7 | NULL | 1 | 1 | 7 | NULL; 2 | NULL | 7 | NULL | 2 | NULL | 7 | NULL (2 rows)
CREATE PROCEDURE hintedProc WITH ENCRYPTION AS SELECT 1 --> Msg 50000, Level 16, State 1, Line 1, Procedure hintedProc: tsqlbox does not support WITH ENCRYPTION of a procedure, function, view or trigger.
CREATE FUNCTION hintedFunction (@a int) RETURNS int WITH RETURNS NULL ON NULL INPUT AS BEGIN RETURN 1 END --> Msg 50000, Level 16, State 1, Line 1, Procedure hintedFunction: tsqlbox does not support WITH RETURNS of a procedure, function, view or trigger.
CREATE VIEW other.dbo.hintedView AS SELECT 1 AS a --> Msg 166, Level 15, State 1, Line 1: 'CREATE/ALTER VIEW' does not allow specifying the database name as a prefix to the object name.
EXECUTE AS USER = 'x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support EXECUTE AS.
EXEC sp_help WITH RESULT SETS NONE --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WITH RESULT SETS.
SAVE nothing --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'nothing'.
BEGIN TRANSACTION named WITH MARK 'x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WITH MARK.
CREATE PROCEDURE p;1 AS SELECT 1 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support numbered procedures.
CREATE PROCEDURE p FOR REPLICATION AS SELECT 1 --> Msg 50000, Level 16, State 1, Line 1, Procedure p: tsqlbox does not support FOR REPLICATION.
SELECT * FROM CHANGETABLE(CHANGES t, 0) AS c --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CHANGETABLE.
SELECT * FROM sys.fn_listextendedproperty(NULL) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support FN_LISTEXTENDEDPROPERTY.
SELECT dbo.anything(DISTINCT 1) --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'DISTINCT'.
WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n WHERE i < 150)
DELETE h FROM hinted h JOIN n ON n.i = h.i + 148 OPTION (MAXRECURSION 200)
SELECT COUNT(*) FROM hinted --> (2 changed) --> - int? = 0 (1 rows)
(SELECT TOP 1 i FROM hinted ORDER BY i) ORDER BY i --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'ORDER'.
DROP TABLE hinted -->
PRINT 'x' OR 1 = 1 --> Msg 4145, Level 15, State 1, Line 1: An expression of non-boolean type specified in a context where a condition is expected, near 'OR'.
USE nosuchdb --> Msg 911, Level 16, State 1, Line 1: Database 'nosuchdb' does not exist. Make sure that the name is entered correctly.
RAISERROR('fatal', 20, 1) WITH LOG
PRINT 'not reached' --> Msg 50000, Level 20, State 1, Line 1: fatal --> THE SESSION HAS ENDED
DECLARE @x ntext --> Msg 2739, Level 16, State 1, Line 1: The text, ntext, and image data types are invalid for local variables.
PRINT 'not reached' DECLARE @day date = 5 --> Msg 206, Level 16, State 2, Line 1: Operand type clash: int is incompatible with date
OPEN SYMMETRIC KEY k DECRYPTION BY PASSWORD = 'x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support OPEN SYMMETRIC KEY.
WAITFOR (RECEIVE * FROM q) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WAITFOR ( RECEIVE.
SET CONTEXT_INFO 0x01 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support SET CONTEXT_INFO.
EXEC sp_help 'x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sp_help.
SELECT geography::Point(1, 2, 4326) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support methods of geography.
SELECT TRY_PARSE('1' AS int USING 'en-US') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TRY_PARSE.
-- the types of an assignment are known before the batch runs
PRINT 'not reached'
DECLARE @d date
SET @d = 5 --> Msg 206, Level 16, State 2, Line 4: Operand type clash: int is incompatible with date
