CREATE SEQUENCE dbo.Numbers AS int START WITH 5 INCREMENT BY 5 MAXVALUE 20 SELECT NEXT VALUE FOR dbo.Numbers AS n
DECLARE @a int = NEXT VALUE FOR Numbers, @b int SET @b = NEXT VALUE FOR Numbers
SELECT @a a, @b b, NEXT VALUE FOR Numbers c --> n int? = 5 (1 rows) --> a int? = 10 | b int? = 15 | c int? = 20 (1 rows)
SELECT NEXT VALUE FOR Numbers SELECT @@ERROR
--> Msg 11728, Level 16, State 1, Line 1: The sequence object 'Numbers' has reached its minimum or maximum value. Restart the sequence object to allow new values to be generated.
--> - int? = 11728 (1 rows)
SELECT name, type, type_desc, start_value, increment, minimum_value, maximum_value, is_cycling, current_value, is_exhausted, system_type_id, precision FROM sys.sequences
SELECT OBJECT_ID('Numbers', 'SO') - OBJECT_ID('dbo.Numbers'), OBJECT_ID('Numbers', 'U')
--> name nvarchar(128)? = Numbers | type char(2)? = SO | type_desc nvarchar(60)? = SEQUENCE_OBJECT | start_value bigint? = 5 | increment bigint? = 5 | minimum_value bigint? = -2147483648 | maximum_value bigint? = 20 | is_cycling bit? = 0 | current_value bigint? = 20 | is_exhausted bit? = 1 | system_type_id tinyint? = 56 | precision tinyint? = 10 (1 rows)
--> - int? = 0 | - int? = NULL (1 rows)
CREATE TABLE T (id int PRIMARY KEY, n int DEFAULT NEXT VALUE FOR Numbers, c char(1)) -->
ALTER SEQUENCE Numbers RESTART WITH 1 INCREMENT BY 1 MINVALUE 1 MAXVALUE 6 CYCLE
INSERT T (id, c) VALUES (1, 'a'), (2, 'b') INSERT T (id, n) SELECT 10 + id, NEXT VALUE FOR Numbers FROM T
INSERT T VALUES (NEXT VALUE FOR Numbers, 7, 'x') INSERT T (id) VALUES (100) SELECT * FROM T --> (2 changed) (2 changed) (1 changed) (1 changed) --> id int | n int? | c char(1)? = 1 | 1 | a; 2 | 2 | b; 11 | 3 | NULL; 12 | 4 | NULL; 5 | 7 | x; 100 | 6 | NULL (6 rows)
INSERT T VALUES (NEXT VALUE FOR Numbers, NEXT VALUE FOR Numbers, 'x') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support several NEXT VALUE FOR of a sequence in a row.
UPDATE T SET n = NEXT VALUE FOR Numbers WHERE id > 10 SELECT * FROM T WHERE id > 10 BEGIN TRAN
SELECT NEXT VALUE FOR Numbers ROLLBACK SELECT NEXT VALUE FOR Numbers --> (3 changed) --> id int | n int? | c char(1)? = 11 | 1 | NULL; 12 | 2 | NULL; 100 | 3 | NULL (3 rows) --> - int? = 4 (1 rows) --> - int? = 5 (1 rows)
INSERT T VALUES (100, NEXT VALUE FOR Numbers, 'd') --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK__T__2_3'. Cannot insert duplicate key in object 'dbo.T'. The duplicate key value is (100). (3621)
SELECT NEXT VALUE FOR Numbers --> - int? = 1 (1 rows)
BEGIN TRAN INSERT T VALUES (100, NEXT VALUE FOR Numbers, 'd') SELECT NEXT VALUE FOR Numbers COMMIT
--> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK__T__2_3'. Cannot insert duplicate key in object 'dbo.T'. The duplicate key value is (100). (3621)
--> - int? = 4 (1 rows)
SELECT DISTINCT NEXT VALUE FOR Numbers FROM T --> Msg 11721, Level 15, State 1, Line 1: NEXT VALUE FOR function cannot be used directly in a statement that uses a DISTINCT, UNION, UNION ALL, EXCEPT or INTERSECT operator.
SELECT NEXT VALUE FOR Numbers FROM T ORDER BY id --> Msg 11723, Level 15, State 1, Line 1: NEXT VALUE FOR function cannot be used directly in a statement that contains an ORDER BY clause unless the OVER clause is specified.
SELECT NEXT VALUE FOR Numbers UNION ALL SELECT 1 --> Msg 11721, Level 15, State 1, Line 1: NEXT VALUE FOR function cannot be used directly in a statement that uses a DISTINCT, UNION, UNION ALL, EXCEPT or INTERSECT operator.
SELECT * FROM (SELECT NEXT VALUE FOR Numbers AS n) q --> Msg 11719, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in check constraints, default objects, computed columns, views, user-defined functions, user-defined aggregates, user-defined table types, sub-queries, common table expressions, derived tables or return statements.
SELECT id FROM T WHERE id = NEXT VALUE FOR Numbers --> Msg 11720, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in the TOP, OVER, OUTPUT, ON, WHERE, GROUP BY, HAVING, or ORDER BY clauses.
SELECT (SELECT NEXT VALUE FOR Numbers) --> Msg 11719, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in check constraints, default objects, computed columns, views, user-defined functions, user-defined aggregates, user-defined table types, sub-queries, common table expressions, derived tables or return statements.
SELECT CASE WHEN 1 = 1 THEN NEXT VALUE FOR Numbers END --> Msg 11741, Level 15, State 1, Line 1: NEXT VALUE FOR function cannot be used within CASE, CHOOSE, COALESCE, IIF, ISNULL and NULLIF.
SELECT ISNULL(NEXT VALUE FOR Numbers, 1) --> Msg 11741, Level 15, State 1, Line 1: NEXT VALUE FOR function cannot be used within CASE, CHOOSE, COALESCE, IIF, ISNULL and NULLIF.
SELECT 'A' + RIGHT('000' + CAST(NEXT VALUE FOR Numbers AS varchar(5)), 3) AS code --> code varchar(4)? = A005 (1 rows)
SELECT NEXT VALUE FOR T --> Msg 11726, Level 16, State 1, Line 1: Object 'T' is not a sequence object.
SELECT NEXT VALUE FOR nothing --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nothing'.
CREATE FUNCTION dbo.taken() RETURNS int AS BEGIN RETURN NEXT VALUE FOR dbo.Numbers END -->
SELECT dbo.taken() --> Msg 11719, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in check constraints, default objects, computed columns, views, user-defined functions, user-defined aggregates, user-defined table types, sub-queries, common table expressions, derived tables or return statements.
CREATE VIEW V AS SELECT NEXT VALUE FOR Numbers AS n --> Msg 11719, Level 15, State 1, Line 1, Procedure V: NEXT VALUE FOR function is not allowed in check constraints, default objects, computed columns, views, user-defined functions, user-defined aggregates, user-defined table types, sub-queries, common table expressions, derived tables or return statements.
CREATE SEQUENCE Down AS tinyint INCREMENT BY -100 SELECT NEXT VALUE FOR Down FROM (VALUES (1), (2), (3)) v (i) --> - tinyint? = 255; 155; 55 (3 rows)
SELECT NEXT VALUE FOR Down --> Msg 11728, Level 16, State 1, Line 1: The sequence object 'Down' has reached its minimum or maximum value. Restart the sequence object to allow new values to be generated.
CREATE SEQUENCE [dbo].[Big] AS [bigint] START WITH 1 INCREMENT BY 1 MINVALUE -9223372036854775808 MAXVALUE 9223372036854775807
 CACHE 50 -->
SELECT NEXT VALUE FOR Big ALTER SEQUENCE Big INCREMENT BY 10 NO CACHE SELECT NEXT VALUE FOR Big
ALTER SEQUENCE Big RESTART SELECT NEXT VALUE FOR Big
SELECT current_value, increment FROM sys.sequences WHERE name = 'Big' DROP SEQUENCE Big DROP SEQUENCE IF EXISTS Big --> - bigint? = 1 (1 rows) --> - bigint? = 11 (1 rows) --> - bigint? = 1 (1 rows) --> current_value bigint? = 1 | increment bigint? = 10 (1 rows)
DROP SEQUENCE Big --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the sequence 'Big', because it does not exist or you do not have permission.
CREATE SEQUENCE Numbers --> Msg 2714, Level 16, State 6, Line 1: There is already an object named 'Numbers' in the database.
CREATE SEQUENCE Bad AS int INCREMENT BY 0 --> Msg 11700, Level 16, State 1, Line 1: The increment for sequence object 'Bad' cannot be zero.
CREATE SEQUENCE Bad AS int MINVALUE 5 MAXVALUE 4 --> Msg 11705, Level 16, State 1, Line 1: The minimum value for sequence object 'Bad' must be less than its maximum value.
CREATE SEQUENCE Bad AS int START WITH 11 MAXVALUE 10 --> Msg 11703, Level 16, State 1, Line 1: The start value for sequence object 'Bad' must be between the minimum and maximum value of the sequence object.
CREATE SEQUENCE Bad AS tinyint MAXVALUE 256 --> Msg 11708, Level 16, State 1, Line 1: An invalid value was specified for argument 'MAXVALUE' for the given data type.
CREATE SEQUENCE Bad AS varchar(5) --> Msg 11702, Level 16, State 2, Line 1: The sequence object 'Bad' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0, or any user-defined data type that is based on one of the above integer data types.
ALTER SEQUENCE Numbers START WITH 5 --> Msg 11711, Level 15, State 1, Line 1: Argument 'START WITH' cannot be used in an ALTER SEQUENCE statement.
ALTER SEQUENCE Bad RESTART --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'Bad'.
CREATE TABLE Checked (a int CHECK (a > NEXT VALUE FOR Numbers)) --> Msg 11719, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in check constraints, default objects, computed columns, views, user-defined functions, user-defined aggregates, user-defined table types, sub-queries, common table expressions, derived tables or return statements. (1750)
CREATE SCHEMA stock -->
CREATE SEQUENCE stock.Orders AS decimal(9, 0) START WITH 999999998
CREATE TABLE stock.Orders2 (no decimal(9, 0) CONSTRAINT DF_no DEFAULT (NEXT VALUE FOR stock.Orders), what varchar(9))
INSERT stock.Orders2 (what) SELECT v.w FROM (VALUES ('a'), ('b')) v (w) SELECT * FROM stock.Orders2
SELECT definition FROM sys.default_constraints WHERE name = 'DF_no' --> (2 changed) --> no decimal(9,0)? | what varchar(9)? = 999999998 | a; 999999999 | b (2 rows) --> definition nvarchar(max)? = (NEXT VALUE FOR stock.Orders) (1 rows)
INSERT stock.Orders2 (what) VALUES ('c') --> Msg 11728, Level 16, State 1, Line 1: The sequence object 'Orders' has reached its minimum or maximum value. Restart the sequence object to allow new values to be generated. (3621)
ALTER SEQUENCE stock.Orders CYCLE NO MINVALUE MINVALUE 1 INSERT stock.Orders2 (what) VALUES ('c')
SELECT no FROM stock.Orders2 WHERE what = 'c' --> (1 changed) --> no decimal(9,0)? = 1 (1 rows)
BEGIN TRAN ALTER SEQUENCE stock.Orders RESTART WITH 50 SELECT NEXT VALUE FOR stock.Orders ROLLBACK
SELECT NEXT VALUE FOR stock.Orders --> - decimal(9,0)? = 50 (1 rows) --> - decimal(9,0)? = 2 (1 rows)
ALTER SEQUENCE stock.Orders MAXVALUE 1 --> Msg 11705, Level 16, State 1, Line 1: The minimum value for sequence object 'Orders' must be less than its maximum value.
CREATE SEQUENCE Bad INCREMENT BY 3 MINVALUE 1 MAXVALUE 3 --> Msg 11701, Level 16, State 1, Line 1: The absolute value of the increment for sequence object 'Bad' must be less than or equal to the difference between the minimum and maximum value of the sequence object.
CREATE SEQUENCE #t --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support temporary sequences.
DROP TABLE Numbers --> Msg 3705, Level 16, State 1, Line 1: Cannot use DROP TABLE with 'Numbers' because 'Numbers' is a sequence. Use DROP SEQUENCE.
DROP SEQUENCE T --> Msg 3705, Level 16, State 1, Line 1: Cannot use DROP SEQUENCE with 'T' because 'T' is a table. Use DROP TABLE.
SELECT NEXT VALUE FOR Numbers OVER (ORDER BY id) FROM T --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support NEXT VALUE FOR ... OVER.
CREATE TABLE U (a int) INSERT U OUTPUT NEXT VALUE FOR Numbers VALUES (1) --> Msg 11720, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in the TOP, OVER, OUTPUT, ON, WHERE, GROUP BY, HAVING, or ORDER BY clauses.
SELECT TOP (NEXT VALUE FOR Numbers) a FROM U --> Msg 11720, Level 15, State 1, Line 1: NEXT VALUE FOR function is not allowed in the TOP, OVER, OUTPUT, ON, WHERE, GROUP BY, HAVING, or ORDER BY clauses.
CREATE TABLE Later (a int) INSERT Later VALUES (1), (2)
ALTER TABLE Later ADD n bigint NOT NULL DEFAULT NEXT VALUE FOR Numbers --> (2 changed)
SELECT * FROM Later DECLARE c CURSOR FOR SELECT NEXT VALUE FOR Numbers FROM Later OPEN c FETCH c CLOSE c DEALLOCATE c
SET FMTONLY ON SELECT NEXT VALUE FOR Numbers SET FMTONLY OFF
SELECT current_value FROM sys.sequences WHERE name = 'Numbers' --> a int? | n bigint = 1 | 6; 2 | 1 (2 rows) --> - int? = 2 (1 rows) --> - int? (0 rows) --> current_value bigint? = 3 (1 rows)
SELECT * FROM INFORMATION_SCHEMA.SEQUENCES WHERE SEQUENCE_NAME = 'Numbers' --> SEQUENCE_CATALOG nvarchar(128)? = master | SEQUENCE_SCHEMA nvarchar(128)? = dbo | SEQUENCE_NAME nvarchar(128)? = Numbers | START_VALUE bigint? = 1 | INCREMENT bigint? = 1 | MINIMUM_VALUE bigint? = 1 | MAXIMUM_VALUE bigint? = 6 | CYCLE_OPTION bit? = 1 | DATA_TYPE nvarchar(128)? = int (1 rows)
