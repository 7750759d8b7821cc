CREATE TABLE Lines (id int IDENTITY PRIMARY KEY, qty int NOT NULL, price decimal(9, 2), total AS qty * price, code AS 'L' + RIGHT('000' + CAST(id AS varchar(9)), 4) PERSISTED, big AS CASE WHEN qty > 10 THEN 1 ELSE 0 END)
INSERT Lines VALUES (2, 1.50), (20, 3)
INSERT Lines (qty) VALUES (1)
INSERT Lines (price, qty) SELECT 7, 7
SELECT * FROM Lines
UPDATE Lines SET qty = 11 WHERE total = 3
SELECT id, total, big FROM Lines WHERE big = 1 ORDER BY total
SELECT name, is_computed, is_identity, is_nullable FROM sys.columns WHERE object_id = OBJECT_ID('Lines') ORDER BY column_id
SELECT name, definition, is_persisted FROM sys.computed_columns ORDER BY name
SELECT COLUMN_NAME, COLUMN_DEFAULT, DATA_TYPE FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'Lines'
SELECT COLUMNPROPERTY(OBJECT_ID('Lines'), 'total', 'IsComputed') a, COLUMNPROPERTY(OBJECT_ID('Lines'), 'qty', 'IsComputed') b, COL_LENGTH('Lines', 'code') c
--> (2 changed) (1 changed) (1 changed) --> id int* | qty int | price decimal(9,2)? | total decimal(20,2)? | code varchar(5)? | big int? --> 1 | 2 | 1.50 | 3.00 | L0001 | 0
--> 2 | 20 | 3.00 | 60.00 | L0002 | 1 --> 3 | 1 | NULL | NULL | L0003 | 0 --> 4 | 7 | 7.00 | 49.00 | L0004 | 0 (4 rows) (1 changed)
--> id int* | total decimal(20,2)? | big int? = 1 | 16.50 | 1; 2 | 60.00 | 1 (2 rows)
--> name nvarchar(128)? | is_computed bit? | is_identity bit? | is_nullable bit? = id | 0 | 1 | 0; qty | 0 | 0 | 0; price | 0 | 0 | 1; total | 1 | 0 | 1; code | 1 | 0 | 1; big | 1 | 0 | 1 (6 rows)
--> name nvarchar(128)? | definition nvarchar(max)? | is_persisted bit? --> big | (CASE WHEN qty > 10 THEN 1 ELSE 0 END) | 0 --> code | ('L' + RIGHT('000' + CAST(id AS varchar(9)), 4)) | 1
--> total | (qty * price) | 0 (3 rows) --> COLUMN_NAME nvarchar(128)? | COLUMN_DEFAULT nvarchar(4000)? | DATA_TYPE nvarchar(128)? --> id | NULL | int --> qty | NULL | int --> price | NULL | decimal
--> total | NULL | decimal --> code | NULL | varchar --> big | NULL | int (6 rows) --> a int? = 1 | b int? = 0 | c smallint? = 5 (1 rows)
INSERT Lines (qty, total) VALUES (1, 2) --> Msg 271, Level 16, State 1, Line 1: The column "total" cannot be modified because it is either a computed column or is the result of a UNION operator.
UPDATE Lines SET total = 1 --> Msg 271, Level 16, State 1, Line 1: The column "total" cannot be modified because it is either a computed column or is the result of a UNION operator.
INSERT Lines VALUES (1, 2, 3) --> Msg 213, Level 16, State 1, Line 1: Column name or number of supplied values does not match table definition.
UPDATE Lines SET qty = qty + 1 OUTPUT inserted.total, inserted.code WHERE id = 1
DELETE Lines OUTPUT deleted.total WHERE id = 3 --> total decimal(20,2)? = 18.00 | code varchar(5)? = L0001 (1 rows) --> total decimal(20,2)? = NULL (1 rows)
CREATE UNIQUE INDEX IX_code ON Lines (code)
CREATE INDEX IX_total ON Lines (total DESC, id) WHERE qty > 1
ALTER TABLE Lines ADD half AS qty / 2, note varchar(9) DEFAULT 'n', CONSTRAINT CK_half CHECK (half < 100) -->
INSERT Lines (qty, price) VALUES (50, 0.01)
SELECT id, half, note, total FROM Lines
SELECT id FROM Lines WITH (INDEX(IX_code)) WHERE code = 'l0005'
--> (1 changed) --> id int* | half int? | note varchar(9)? | total decimal(20,2)? = 1 | 6 | NULL | 18.00; 2 | 10 | NULL | 60.00; 4 | 3 | NULL | 49.00; 5 | 25 | n | 0.50 (4 rows)
--> id int* = 5 (1 rows)
INSERT Lines (qty) VALUES (500) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_half". The conflict occurred in database "master", table "dbo.Lines", column 'half'. (3621)
ALTER TABLE Lines ADD worse AS half + 1 --> Msg 1759, Level 16, State 0, Line 1: Computed column 'half' in table 'Lines' is not allowed to be used in another computed-column definition.
ALTER TABLE Lines DROP COLUMN qty
--> Msg 5074, Level 16, State 1, Line 1: The index 'IX_total' is dependent on column 'qty'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE DROP COLUMN qty failed because one or more objects access this column.
ALTER TABLE Lines ALTER COLUMN PRICE decimal(12, 2)
--> Msg 5074, Level 16, State 1, Line 1: The column 'total' is dependent on column 'PRICE'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE ALTER COLUMN PRICE failed because one or more objects access this column.
ALTER TABLE Lines ALTER COLUMN half int --> Msg 4928, Level 16, State 1, Line 1: Cannot alter column 'half' because it is 'COMPUTED'.
ALTER TABLE Lines DROP CONSTRAINT CK_half, COLUMN half
ALTER TABLE Lines ADD half AS (qty / 2) -->
SELECT TOP 1 * FROM Lines --> id int* = 1 | qty int = 12 | price decimal(9,2)? = 1.50 | total decimal(20,2)? = 18.00 | code varchar(5)? = L0001 | big int? = 1 | note varchar(9)? = NULL | half int? = 6 (1 rows)
SELECT definition FROM sys.computed_columns WHERE name = 'half' DBCC CHECKDB WITH NO_INFOMSGS --> definition nvarchar(max)? = ((qty / 2)) (1 rows)
CREATE TABLE U (a varchar(5), b AS UPPER(a) UNIQUE)
INSERT U VALUES ('x') --> (1 changed)
INSERT U VALUES ('X') --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ__U__7_8'. Cannot insert duplicate key in object 'dbo.U'. (3621)
CREATE TABLE V (a int, b AS a + 1, c AS b + 1) --> Msg 1759, Level 16, State 0, Line 1: Computed column 'b' in table 'V' is not allowed to be used in another computed-column definition.
CREATE TABLE V (a int, b AS GETDATE()) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a computed column with a user-defined function or one like GETDATE.
CREATE TABLE V (a int, b AS (SELECT 1)) --> Msg 1046, Level 15, State 1, Line 1: Subqueries are not allowed in this context. Only scalar expressions are allowed.
CREATE TABLE V (a int, b AS nothing + 1) --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nothing'.
CREATE TABLE V (a int, b AS @x) --> Msg 137, Level 15, State 2, Line 1: Must declare the scalar variable "@x".
DECLARE @t TABLE (a int, b AS a * 2, c int DEFAULT 5)
BEGIN TRAN
INSERT @t (a) VALUES (1), (2)
ROLLBACK
SELECT * FROM @t
CREATE TABLE #t (a int, b AS a * a PERSISTED NOT NULL)
INSERT #t VALUES (3)
SELECT *, b + 1 AS c INTO #copy FROM #t
SELECT * FROM #copy
UPDATE #copy SET b = 1
SELECT b FROM #copy --> (2 changed) --> a int? | b int? | c int? = 1 | 2 | 5; 2 | 4 | 5 (2 rows) (1 changed) (1 changed) --> a int? = 3 | b int = 9 | c int? = 10 (1 rows) (1 changed) --> b int = 1 (1 rows)
CREATE TABLE Zero (a int, b AS 10 / a)
INSERT Zero VALUES (0), (5)
SELECT a FROM Zero
SELECT b FROM Zero --> Msg 8134, Level 16, State 1, Line 2: Divide by zero error encountered. (3621) --> a int? (0 rows) --> b int? (0 rows)
-- a table keeps a column that is not computed, and a computed column is no identity
CREATE TABLE only_computed (a AS 1) --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support a table of computed columns only.
CREATE TABLE last_data (a int, b int, c AS 1)
ALTER TABLE last_data DROP COLUMN a, b --> Msg 4923, Level 16, State 1, Line 2: ALTER TABLE DROP COLUMN failed because 'b' is the only data column in table 'last_data'. A table must have at least one data column.
SELECT * FROM last_data --> a int? | b int? | c int? (0 rows)
CREATE TABLE computed_identity (a int, b AS 1 IDENTITY) --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'IDENTITY'.
EXEC sp_helptext 'last_data', 'c' EXEC sp_helptext 'last_data', 'a' --> Text nvarchar(255)? = (1) --> Msg 15197, Level 16, State 1, Line 7, Procedure sp_helptext: There is no text for object 'last_data'.
