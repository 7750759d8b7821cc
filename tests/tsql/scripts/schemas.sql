CREATE DATABASE shop -->
USE shop --> USE shop --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'shop'.
CREATE SCHEMA sales -->
CREATE SCHEMA [Stock Room] AUTHORIZATION dbo -->
CREATE SCHEMA Sales --> Msg 2714, Level 16, State 6, Line 1: There is already an object named 'Sales' in the database. --> Msg 2759, Level 16, State 0, Line 1: CREATE SCHEMA failed due to previous errors.
CREATE SCHEMA sys --> Msg 2714, Level 16, State 6, Line 1: There is already an object named 'sys' in the database. --> Msg 2759, Level 16, State 0, Line 1: CREATE SCHEMA failed due to previous errors.
CREATE SCHEMA other AUTHORIZATION nobody
--> Msg 15151, Level 16, State 1, Line 1: Cannot find the user 'nobody', because it does not exist or you do not have permission.
--> Msg 2759, Level 16, State 0, Line 1: CREATE SCHEMA failed due to previous errors.
SELECT 1 CREATE SCHEMA late --> Msg 111, Level 15, State 1, Line 1: 'CREATE SCHEMA' must be the first statement in a query batch.
CREATE SCHEMA whole CREATE TABLE t (a int) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CREATE within CREATE SCHEMA.
CREATE TABLE dbo.item (id int CONSTRAINT PK_item PRIMARY KEY, nm varchar(9)) -->
CREATE TABLE SALES.item (id int IDENTITY(5,1) CONSTRAINT PK_item PRIMARY KEY, code varchar(9) NOT NULL CONSTRAINT UQ_code UNIQUE, n int CONSTRAINT CK_n CHECK (n > 0) CONSTRAINT DF_n DEFAULT 1) -->
CREATE TABLE sales.other (a int CONSTRAINT PK_item PRIMARY KEY) --> Msg 2714, Level 16, State 5, Line 1: There is already an object named 'PK_item' in the database. (1750)
CREATE TABLE sales.item (a int) --> Msg 2714, Level 16, State 6, Line 1: There is already an object named 'item' in the database.
CREATE TABLE nowhere.t (a int) --> Msg 2760, Level 16, State 1, Line 1: The specified schema name "nowhere" either does not exist or you do not have permission to use it.
CREATE TABLE sys.t (a int) --> Msg 2760, Level 16, State 1, Line 1: The specified schema name "sys" either does not exist or you do not have permission to use it.
CREATE VIEW nowhere.v AS SELECT 1 AS a --> Msg 2760, Level 16, State 1, Line 1, Procedure v: The specified schema name "nowhere" either does not exist or you do not have permission to use it.
CREATE TABLE [stock room].part (item int NOT NULL CONSTRAINT FK_sales REFERENCES sales.item (id), plain int CONSTRAINT FK_plain REFERENCES item, own int CONSTRAINT FK_own REFERENCES [stock room].part (k), k int CONSTRAINT PK_part PRIMARY KEY) -->
CREATE UNIQUE INDEX ix_n ON sales.item (n) -->
CREATE INDEX ix_n ON sales.item (n) --> Msg 1913, Level 16, State 1, Line 1: The operation failed because an index or statistics with name 'ix_n' already exists on table 'sales.item'.
INSERT sales.item (code, n) VALUES ('a', 1), ('b', 2) INSERT item VALUES (5, 'five'), (6, 'six')
INSERT [Stock Room].part VALUES (5, 6, 1, 1)
SELECT sales.item.id, sales.item.code, dbo.item.nm FROM sales.item JOIN dbo.item ON sales.item.id = dbo.item.id ORDER BY sales.item.id --> (2 changed) (2 changed) (1 changed) --> id int* | code varchar(9) | nm varchar(9)? = 5 | a | five; 6 | b | six (2 rows)
SELECT item.id FROM sales.item, dbo.item --> Msg 209, Level 16, State 1, Line 1: Ambiguous column name 'id'.
SELECT dbo.item.* FROM sales.item, dbo.item WHERE shop.sales.item.id = 5 AND item.nm = 'six' --> id int = 6 | nm varchar(9)? = six (1 rows)
SELECT dbo.item.id FROM sales.item --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "dbo.item.id" could not be bound.
SELECT sales.i.id FROM sales.item i --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "sales.i.id" could not be bound.
SELECT id FROM sales.item, sales.item --> Msg 1013, Level 16, State 1, Line 1: The objects "item" and "item" in the FROM clause have the same exposed names. Use correlation names to distinguish them.
INSERT sales.item (code) VALUES ('A ') --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'sales.item' with unique index 'ix_n'. The duplicate key value is (1). (3621)
INSERT sales.item (code, n) VALUES ('d', -1) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_n". The conflict occurred in database "shop", table "sales.item", column 'n'. (3621)
INSERT sales.item (code, n) VALUES (NULL, 9) --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'code', table 'shop.sales.item'; column does not allow nulls. INSERT fails. (3621)
INSERT sales.item (id, code, n) VALUES (1, 'x', 9) --> Msg 544, Level 16, State 1, Line 1: Cannot insert explicit value for identity column in table 'item' when IDENTITY_INSERT is set to OFF.
INSERT [Stock Room].part VALUES (9, 6, 1, 2) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_sales". The conflict occurred in database "shop", table "sales.item", column 'id'. (3621)
DELETE sales.item WHERE id = 5 --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the REFERENCE constraint "FK_sales". The conflict occurred in database "shop", table "Stock Room.part", column 'item'. (3621)
DELETE dbo.item WHERE id = 6 --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the REFERENCE constraint "FK_plain". The conflict occurred in database "shop", table "Stock Room.part", column 'plain'. (3621)
UPDATE dbo.item SET nm = 'new' FROM sales.item s WHERE s.id = dbo.item.id AND s.code = 'b'
UPDATE item SET n = 9 FROM sales.item WHERE id = 6
UPDATE sales.item SET sales.item.n = 8 FROM dbo.item WHERE dbo.item.id = sales.item.id AND dbo.item.nm = 'new'
SELECT nm, (SELECT n FROM sales.item WHERE id = i.id) AS n FROM item i --> (1 changed) (1 changed) (1 changed) --> nm varchar(9)? | n int? = five | 1; new | 8 (2 rows)
UPDATE item SET n = 3 FROM sales.item JOIN dbo.item ON 1 = 1 --> Msg 8154, Level 16, State 1, Line 1: The table 'item' is ambiguous.
SELECT * FROM nowhere.item --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nowhere.item'.
DROP TABLE sales.item --> Msg 3726, Level 16, State 1, Line 1: Could not drop object 'sales.item' because it is referenced by a FOREIGN KEY constraint.
DROP TABLE nowhere.item --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the table 'nowhere.item', because it does not exist or you do not have permission.
TRUNCATE TABLE sales.item --> Msg 4712, Level 16, State 1, Line 1: Cannot truncate table 'sales.item' because it is being referenced by a FOREIGN KEY constraint.
DROP INDEX ix_none ON sales.item --> Msg 3701, Level 11, State 7, Line 1: Cannot drop the index 'sales.item.ix_none', because it does not exist or you do not have permission.
DROP INDEX sales.item.ix_n -->
ALTER TABLE sales.item ADD note varchar(5) NULL CONSTRAINT DF_note DEFAULT 'x' WITH VALUES
ALTER TABLE sales.item DROP CONSTRAINT CK_n SET IDENTITY_INSERT sales.item ON
INSERT sales.item (id, code, n) VALUES (40, 'd', -1) SET IDENTITY_INSERT sales.item OFF
INSERT sales.item (code, n) VALUES ('e', 3) SELECT *, IDENT_CURRENT('sales.item') AS last FROM sales.item
DBCC CHECKIDENT ('sales.item', RESEED, 50) UPDATE STATISTICS sales.item
--> (1 changed) (1 changed) --> id int* | code varchar(9) | n int? | note varchar(5)? | last decimal(38,0)? = 5 | a | 1 | x | 41; 6 | b | 8 | x | 41; 40 | d | -1 | x | 41; 41 | e | 3 | x | 41 (4 rows)
--> Msg 7998, Level 0, State 1, Line 5: Checking identity information: current identity value '41'. (2528)
ALTER TABLE sales.nothing ADD a int --> Msg 4902, Level 16, State 1, Line 1: Cannot find the object "sales.nothing" because it does not exist or you do not have permissions.
CREATE PROCEDURE sales.list @more bit = 0 AS SELECT 'list' AS what, COUNT(*) AS n FROM item IF @more = 1 EXEC helper
IF @more = 1 EXEC ('SELECT COUNT(*) AS dynamic FROM item') SELECT COUNT(*) AS n FROM plain --> Msg 2007, Level 0, State 1, Line 1, Procedure list: The module 'list' depends on the missing object 'helper'. The module will still be created; however, it cannot run successfully until the object exists.
CREATE TABLE plain (a int) -->
CREATE PROCEDURE helper AS SELECT OBJECT_SCHEMA_NAME(@@PROCID) AS helper -->
CREATE PROCEDURE sales.helper AS SELECT OBJECT_SCHEMA_NAME(@@PROCID) + '.' + OBJECT_NAME(@@PROCID) AS helper -->
CREATE FUNCTION sales.price (@id int) RETURNS int AS BEGIN RETURN (SELECT n * 10 FROM item WHERE id = @id) END -->
CREATE FUNCTION sales.codes (@least int) RETURNS TABLE AS RETURN SELECT code FROM item WHERE n >= @least -->
CREATE VIEW sales.v AS SELECT id, code FROM item WHERE n > 2 -->
CREATE VIEW v AS SELECT code FROM sales.v -->
ALTER VIEW sales.v AS SELECT code FROM dbo.v --> Msg 4429, Level 16, State 1, Line 1, Procedure v: View or function 'v' contains a self-reference. Views or functions cannot reference themselves directly or indirectly.
CREATE PROCEDURE sales.work AS SET NOCOUNT ON CREATE TABLE made (x int)
SELECT OBJECT_SCHEMA_NAME(OBJECT_ID('made')) AS made DROP TABLE made ALTER TABLE item ADD note varchar(5) NULL
SELECT COL_LENGTH('item', 'note') AS dbo, COL_LENGTH('sales.other', 'note') AS sales ALTER TABLE item DROP COLUMN note
UPDATE item SET note = 'y' WHERE id = 40 DELETE item WHERE id = 40 INSERT item (code, n) VALUES ('f', 4)
EXEC sp_executesql N'SELECT COUNT(*) AS dynamic FROM item' -->
EXEC sales.work EXEC sales.list 1
--> made nvarchar(128)? = dbo --> dbo smallint? = 5 | sales smallint? = NULL --> dynamic int? = 2 --> what varchar(4) = list | n int? = 4 (1 rows) --> helper nvarchar(257)? = sales.helper (1 rows)
--> dynamic int? = 2 (1 rows) --> n int? = 0 (1 rows)
list --> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure 'list'.
EXEC nowhere.list --> Msg 2812, Level 16, State 62, Line 1: Could not find stored procedure 'nowhere.list'.
SELECT sales.price(6) AS p, (SELECT COUNT(*) FROM sales.codes(3)) AS c, (SELECT COUNT(*) FROM v) AS v
SELECT sales.v.id FROM sales.v WHERE v.code = 'e' --> p int? = 80 | c int? = 3 | v int? = 3 (1 rows) --> id int* = 41 (1 rows)
SELECT dbo.price(6) --> Msg 4121, Level 16, State 1, Line 1: Cannot find either column "dbo" or the user-defined function or aggregate "dbo.price", or the name is ambiguous.
SELECT sales.price() --> Msg 313, Level 16, State 1, Line 1: An insufficient number of arguments were supplied for the procedure or function sales.price.
ALTER PROCEDURE sales.none AS RETURN 1 --> Msg 208, Level 16, State 6, Line 1, Procedure none: Invalid object name 'sales.none'.
ALTER VIEW sales.v AS SELECT id, code FROM item -->
EXEC sp_helptext 'sales.v' EXEC sp_helpindex 'sales.item'
--> Text nvarchar(255)? = CREATE VIEW sales.v AS SELECT id, code FROM item -->  --> index_name nvarchar(128)? | index_description varchar(210)? | index_keys nvarchar(2078)?
--> PK_item | clustered, unique, primary key located on PRIMARY | id --> UQ_code | nonclustered, unique, unique key located on PRIMARY | code (2 rows)
SELECT name, schema_id, SCHEMA_ID(name) AS id FROM sys.schemas ORDER BY 2
SELECT SCHEMA_NAME(schema_id) AS s, name, type FROM sys.objects ORDER BY 1, 2
SELECT name, uid FROM sysobjects WHERE name = 'item' ORDER BY 2
SELECT TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE FROM INFORMATION_SCHEMA.TABLES ORDER BY 2, 3
SELECT CONSTRAINT_SCHEMA, CONSTRAINT_NAME, UNIQUE_CONSTRAINT_SCHEMA, UNIQUE_CONSTRAINT_NAME FROM INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS ORDER BY 2
SELECT SPECIFIC_SCHEMA, ROUTINE_NAME, ROUTINE_TYPE FROM INFORMATION_SCHEMA.ROUTINES WHERE ROUTINE_SCHEMA = 'sales' ORDER BY 2
SELECT SCHEMA_NAME, SCHEMA_OWNER FROM INFORMATION_SCHEMA.SCHEMATA ORDER BY 1
SELECT OBJECT_SCHEMA_NAME(parent_object_id) + '.' + OBJECT_NAME(parent_object_id) AS child, name, OBJECT_SCHEMA_NAME(referenced_object_id) AS parent FROM sys.foreign_keys ORDER BY 2
SELECT SCHEMA_ID('SALES') AS a, SCHEMA_ID('nowhere') AS b, SCHEMA_NAME(2) AS c, SCHEMA_NAME(99) AS d, SCHEMA_NAME() AS e, SCHEMA_ID() AS f
SELECT COL_LENGTH('sales.item', 'code') AS a, OBJECT_ID('sales.') AS b, OBJECT_ID('nowhere.item') AS c, OBJECT_NAME(1) AS d, OBJECT_DEFINITION(OBJECT_ID('sales.v')) AS e, CASE WHEN OBJECT_ID('sales.item') <> OBJECT_ID('item') THEN 1 END AS f
--> name nvarchar(128)? | schema_id int? | id int? = dbo | 1 | 1; guest | 2 | 2; INFORMATION_SCHEMA | 3 | 3; sys | 4 | 4; sales | 5 | 5; Stock Room | 6 | 6 (6 rows)
--> s nvarchar(128)? | name nvarchar(128)? | type char(2)? --> dbo | helper | P --> dbo | item | U --> dbo | PK_item | PK --> dbo | plain | U --> dbo | v | V --> sales | codes | IF
--> sales | DF_n | D --> sales | DF_note | D --> sales | helper | P --> sales | item | U --> sales | list | P --> sales | PK_item | PK --> sales | price | FN --> sales | UQ_code | UQ --> sales | v | V
--> sales | work | P --> Stock Room | FK_own | F --> Stock Room | FK_plain | F --> Stock Room | FK_sales | F --> Stock Room | part | U --> Stock Room | PK_part | PK (21 rows)
--> name nvarchar(128)? | uid smallint? = item | 1; item | 5 (2 rows) --> TABLE_CATALOG nvarchar(128)? | TABLE_SCHEMA nvarchar(128)? | TABLE_NAME nvarchar(128)? | TABLE_TYPE varchar(10)?
--> shop | dbo | item | BASE TABLE --> shop | dbo | plain | BASE TABLE --> shop | dbo | v | VIEW --> shop | sales | item | BASE TABLE --> shop | sales | v | VIEW
--> shop | Stock Room | part | BASE TABLE (6 rows)
--> CONSTRAINT_SCHEMA nvarchar(128)? | CONSTRAINT_NAME nvarchar(128)? | UNIQUE_CONSTRAINT_SCHEMA nvarchar(128)? | UNIQUE_CONSTRAINT_NAME nvarchar(128)? --> Stock Room | FK_own | Stock Room | PK_part
--> Stock Room | FK_plain | dbo | PK_item --> Stock Room | FK_sales | sales | PK_item (3 rows) --> SPECIFIC_SCHEMA nvarchar(128)? | ROUTINE_NAME nvarchar(128)? | ROUTINE_TYPE nvarchar(20)?
--> sales | codes | FUNCTION --> sales | helper | PROCEDURE --> sales | list | PROCEDURE --> sales | price | FUNCTION --> sales | work | PROCEDURE (5 rows)
--> SCHEMA_NAME nvarchar(128)? | SCHEMA_OWNER nvarchar(128)? = dbo | dbo; guest | guest; INFORMATION_SCHEMA | INFORMATION_SCHEMA; sales | dbo; Stock Room | dbo; sys | sys (6 rows)
--> child nvarchar(257)? | name nvarchar(128)? | parent nvarchar(128)? = Stock Room.part | FK_own | Stock Room; Stock Room.part | FK_plain | dbo; Stock Room.part | FK_sales | sales (3 rows)
--> a int? = 5 | b int? = NULL | c nvarchar(128)? = guest | d nvarchar(128)? = NULL | e nvarchar(128)? = dbo | f int? = 1 (1 rows)
--> a smallint? = 9 | b int? = NULL | c int? = NULL | d nvarchar(128)? = NULL | e nvarchar(max)? = CREATE VIEW sales.v AS SELECT id, code FROM item -->  | f int? = 1 (1 rows)
DROP SCHEMA sales --> Msg 3729, Level 16, State 1, Line 1: Cannot drop schema 'sales' because it is being referenced by object 'item'.
DROP SCHEMA nowhere --> Msg 15151, Level 16, State 1, Line 1: Cannot drop the schema 'nowhere', because it does not exist or you do not have permission.
DROP SCHEMA IF EXISTS nowhere DROP SCHEMA dbo --> Msg 15150, Level 16, State 1, Line 1: Cannot drop the schema 'dbo'.
ALTER SCHEMA nowhere TRANSFER sales.item --> Msg 15151, Level 16, State 1, Line 1: Cannot alter the schema 'nowhere', because it does not exist or you do not have permission.
ALTER SCHEMA sales TRANSFER dbo.nothing --> Msg 15151, Level 16, State 1, Line 1: Cannot find the object 'dbo.nothing', because it does not exist or you do not have permission.
ALTER SCHEMA dbo TRANSFER sales.item --> Msg 15530, Level 16, State 1, Line 1: The object with name "item" already exists.
ALTER SCHEMA [Stock Room] TRANSFER OBJECT::sales.item ALTER SCHEMA sales TRANSFER [Stock Room].part
ALTER SCHEMA dbo TRANSFER sales.price -->
ALTER SCHEMA dbo TRANSFER shop.sales.helper --> Msg 15151, Level 16, State 1, Line 1: Cannot find the object 'shop.sales.helper', because it does not exist or you do not have permission.
ALTER SCHEMA dbo TRANSFER TYPE::sales.t --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support TRANSFER TYPE.
SELECT SCHEMA_NAME(schema_id) AS s, name FROM sys.objects WHERE name LIKE '%item' OR name LIKE '%part' OR name LIKE 'FK%' OR name IN ('price', 'UQ_code') ORDER BY 2, 1
INSERT sales.part VALUES (6, 6, 1, 2) SELECT item, k FROM sales.part
--> s nvarchar(128)? | name nvarchar(128)? --> sales | FK_own --> sales | FK_plain --> sales | FK_sales --> dbo | item --> Stock Room | item --> sales | part --> dbo | PK_item --> Stock Room | PK_item
--> sales | PK_part --> dbo | price --> Stock Room | UQ_code (11 rows) (1 changed) --> item int | k int = 5 | 1; 6 | 2 (2 rows)
INSERT sales.part VALUES (7, 6, 1, 3) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_sales". The conflict occurred in database "shop", table "Stock Room.item", column 'id'. (3621)
INSERT sales.part VALUES (6, 6, 9, 3) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY SAME TABLE constraint "FK_own". The conflict occurred in database "shop", table "sales.part", column 'k'. (3621)
DROP TABLE [Stock Room].item --> Msg 3726, Level 16, State 1, Line 1: Could not drop object 'Stock Room.item' because it is referenced by a FOREIGN KEY constraint.
CREATE TABLE checked (a int CONSTRAINT CK_a CHECK (a > LEN('x')), b int)
CREATE UNIQUE INDEX ix_b ON checked (b) WHERE b > 0 INSERT checked VALUES (2, 1) ALTER SCHEMA sales TRANSFER checked
ALTER TABLE sales.checked ADD c int INSERT sales.checked VALUES (3, 1, NULL) --> (1 changed) --> Msg 2601, Level 14, State 1, Line 3: Cannot insert duplicate key row in object 'sales.checked' with unique index 'ix_b'. (3621)
INSERT sales.checked VALUES (1, 2, NULL) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_a". The conflict occurred in database "shop", table "sales.checked", column 'a'. (3621)
DROP TABLE sales.checked -->
DELETE [stock room].item WHERE id = 6 --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the REFERENCE constraint "FK_sales". The conflict occurred in database "shop", table "sales.part", column 'item'. (3621)
BEGIN TRANSACTION -->
CREATE SCHEMA brief -->
CREATE TABLE brief.t (a int) INSERT brief.t VALUES (1) SELECT a INTO brief.u FROM brief.t SELECT * FROM brief.u
ROLLBACK SELECT SCHEMA_ID('brief') AS id --> (1 changed) (1 changed) --> a int? = 1 (1 rows) --> id int? = NULL (1 rows)
SELECT 1 AS [a] INTO [sales].[x] DROP TABLE sales.part, [Stock Room].item, sales.x DROP SCHEMA [Stock Room]
DROP PROCEDURE sales.list, sales.helper, sales.work DROP VIEW sales.v DROP FUNCTION IF EXISTS sales.codes
DROP SCHEMA sales SELECT name FROM sys.schemas WHERE schema_id > 4 --> (1 changed) --> name nvarchar(128)? (0 rows)
CREATE TABLE [ab] (a int) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support names with the character U+0001.
CREATE SCHEMA [] --> Msg 1038, Level 15, State 4, Line 1: An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.
-- what a module finds in dbo is not in its own schema
CREATE SCHEMA inside -->
CREATE TABLE dbo.Found (d int) -->
CREATE PROCEDURE inside.look AS SELECT * FROM Found -->
EXEC inside.look SELECT * FROM inside.Found --> d int? (0 rows) --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'inside.Found'.
CREATE TABLE inside.Found (e int) -->
EXEC inside.look --> e int? (0 rows)
