CREATE SCHEMA shop -->
CREATE TYPE Amount FROM decimal(10,2) NOT NULL
CREATE TYPE shop.Code FROM varchar(5) -->
CREATE TYPE Lines AS TABLE (id int IDENTITY, code shop.Code UNIQUE, total dbo.Amount DEFAULT 0) -->
DECLARE @a Amount = 12.345, @c [shop].[Code] = 'abcdefgh'
CREATE TABLE bill (total Amount, rest Amount NULL, code shop.Code)
INSERT bill (total, code) VALUES (@a, @c)
SELECT * FROM bill
INSERT bill (total) VALUES (NULL)
--> (1 changed) --> total decimal(10,2) = 12.35 | rest decimal(10,2)? = NULL | code varchar(5)? = abcde (1 rows)
--> Msg 515, Level 16, State 2, Line 5: Cannot insert the value NULL into column 'total', table 'master.dbo.bill'; column does not allow nulls. INSERT fails. (3621)
SELECT name, system_type_id, user_type_id - TYPE_ID('Amount') n, SCHEMA_NAME(schema_id) s, max_length, is_nullable, is_table_type FROM sys.types WHERE is_user_defined = 1
SELECT y.name, c.name, TYPE_NAME(c.user_type_id) type FROM sys.table_types y JOIN sys.columns c ON c.object_id = y.type_table_object_id WHERE c.column_id = 2
SELECT COLUMN_NAME, DATA_TYPE, IS_NULLABLE, DOMAIN_SCHEMA, DOMAIN_NAME FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'bill' AND ORDINAL_POSITION = 3
--> name nvarchar(128)? | system_type_id tinyint? | n int? | s nvarchar(128)? | max_length smallint? | is_nullable bit? | is_table_type bit? --> Amount | 106 | 0 | dbo | 9 | 0 | 0
--> Code | 167 | 1 | shop | 5 | 1 | 0 --> Lines | 243 | 2 | dbo | -1 | 0 | 1 (3 rows) --> name nvarchar(128)? = Lines | name nvarchar(128)? = code | type nvarchar(128)? = Code (1 rows)
--> COLUMN_NAME nvarchar(128)? = code | DATA_TYPE nvarchar(128)? = varchar | IS_NULLABLE varchar(3)? = YES | DOMAIN_SCHEMA nvarchar(128)? = shop | DOMAIN_NAME nvarchar(128)? = Code (1 rows)
CREATE PROCEDURE total @lines Lines READONLY, @least Amount = 0 AS
BEGIN TRANSACTION
ROLLBACK
SELECT COUNT(*) lines, SUM(total) total FROM @lines WHERE total >= @least -->
SELECT name, system_type_id, TYPE_NAME(user_type_id) type, is_readonly FROM sys.parameters
DECLARE @l Lines
INSERT @l VALUES ('a', 2), ('b', DEFAULT)
EXEC total @l
EXEC total @least = 1, @lines = @l
EXEC total DEFAULT, 1
EXEC sp_executesql N'EXEC total @x SELECT MAX(id) FROM @x', N'@x Lines READONLY', @l
INSERT @l (code) VALUES ('a')
--> name nvarchar(128)? | system_type_id tinyint? | type nvarchar(128)? | is_readonly bit? = @lines | 243 | Lines | 1; @least | 106 | Amount | 0 (2 rows) (2 changed)
--> lines int? = 2 | total decimal(38,2)? = 2.00 (1 rows) --> lines int? = 1 | total decimal(38,2)? = 2.00 (1 rows) --> lines int? = 0 | total decimal(38,2)? = NULL (1 rows)
--> lines int? = 2 | total decimal(38,2)? = 2.00 (1 rows) --> - int? = 2 (1 rows)
--> Msg 2627, Level 14, State 1, Line 8: Violation of UNIQUE KEY constraint 'UQ__@l__7_8'. Cannot insert duplicate key in object 'dbo.@l'. The duplicate key value is (a). (3621)
DECLARE @t TABLE (id int)
EXEC total @t --> Msg 206, Level 16, State 2, Line 0, Procedure total: Operand type clash: table is incompatible with Lines
EXEC total 1 --> Msg 206, Level 16, State 2, Line 0, Procedure total: Operand type clash: int is incompatible with Lines
DECLARE @l Lines
EXEC total @least = @l --> Msg 206, Level 16, State 2, Line 0, Procedure total: Operand type clash: Lines is incompatible with decimal
CREATE PROCEDURE change @lines Lines READONLY AS DELETE l FROM @lines l --> Msg 10700, Level 16, State 1, Line 1, Procedure change: The table-valued parameter "@lines" is READONLY and cannot be modified.
CREATE PROCEDURE change @lines Lines AS SELECT 1 --> Msg 352, Level 15, State 1, Line 1, Procedure change: The table-valued parameter "@lines" must be declared with the READONLY option.
CREATE PROCEDURE change @n int READONLY AS SELECT 1 --> Msg 346, Level 15, State 1, Line 1, Procedure change: The parameter "@n" can not be declared READONLY since it is not a table-valued parameter.
CREATE FUNCTION count_of (@lines Lines READONLY) RETURNS int AS BEGIN RETURN 1 END --> Msg 50000, Level 16, State 1, Line 1, Procedure count_of: tsqlbox does not support table-valued parameters of functions.
SELECT DOMAIN_SCHEMA, DOMAIN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH FROM INFORMATION_SCHEMA.DOMAINS ORDER BY 2
--> DOMAIN_SCHEMA nvarchar(128)? | DOMAIN_NAME nvarchar(128)? | DATA_TYPE nvarchar(128)? | CHARACTER_MAXIMUM_LENGTH int? --> dbo | Amount | decimal | NULL --> shop | Code | varchar | 5
--> dbo | Lines | table type | NULL (3 rows)
CREATE TYPE datetime2 FROM int --> Msg 219, Level 16, State 1, Line 1: The type 'datetime2' already exists, or you do not have permission to create it.
CREATE TYPE Price FROM Amount --> Msg 222, Level 16, State 1, Line 1: The base type "Amount" is not a valid base type for the alias data type.
CREATE TABLE wrong (l Lines) --> Msg 350, Level 16, State 1, Line 1: The column "l" does not have a valid data type. A column cannot be of a user-defined table type.
CREATE TABLE #wrong (a Amount) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support user-defined types in tempdb.
DECLARE @a Amount(3) --> Msg 2716, Level 16, State 1, Line 1: Column, parameter, or variable #1: Cannot specify a column width on data type Amount.
SELECT CAST(1 AS Amount) --> Msg 243, Level 16, State 1, Line 1: Type Amount is not a defined system type.
DROP TYPE Amount
DROP TYPE Lines
DROP TYPE nothing
DROP TYPE IF EXISTS nothing
DROP SCHEMA shop
--> Msg 3732, Level 16, State 1, Line 1: Cannot drop type 'Amount' because it is being referenced by object 'total'. There may be other objects that reference this type.
--> Msg 3732, Level 16, State 1, Line 2: Cannot drop type 'Lines' because it is being referenced by object 'total'. There may be other objects that reference this type.
--> Msg 218, Level 16, State 1, Line 3: Could not find the type 'nothing'. Either it does not exist or you do not have the necessary permission.
--> Msg 3729, Level 16, State 1, Line 5: Cannot drop schema 'shop' because it is being referenced by object 'Code'.
DROP PROCEDURE total
DROP TYPE Lines
ALTER TABLE bill ALTER COLUMN total decimal(10,2)
ALTER TABLE bill DROP COLUMN rest
DROP TYPE Amount
SELECT name FROM sys.types WHERE is_user_defined = 1 --> name nvarchar(128)? = Code (1 rows)
