CREATE DATABASE shop -->
USE shop --> USE shop --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'shop'.
CREATE TABLE item (id int IDENTITY(1,1) CONSTRAINT PK_item PRIMARY KEY, code nvarchar(20) NOT NULL CONSTRAINT UQ_code UNIQUE, price decimal(9,2) NULL CONSTRAINT DF_price DEFAULT (0), made datetime NULL, CONSTRAINT CK_price CHECK (price >= 0)) -->
CREATE TABLE line (item int NOT NULL CONSTRAINT FK_item REFERENCES item(id), n tinyint NOT NULL, note text NULL, f float NULL) -->
CREATE UNIQUE INDEX ix_line ON line (item, n DESC) -->
CREATE INDEX ix_made ON item (made) -->
CREATE PROCEDURE restock @code nvarchar(20), @n int OUTPUT AS RETURN 0 -->
CREATE FUNCTION dbo.twice (@x decimal(9,2)) RETURNS decimal(9,2) AS BEGIN RETURN @x * 2 END -->
SELECT name, database_id, state_desc, recovery_model_desc, compatibility_level, collation_name FROM sys.databases ORDER BY database_id
--> name nvarchar(128)? | database_id int? | state_desc nvarchar(60)? | recovery_model_desc nvarchar(60)? | compatibility_level tinyint? | collation_name nvarchar(128)?
--> master | 1 | ONLINE | SIMPLE | 150 | SQL_Latin1_General_CP1_CI_AS --> tempdb | 2 | ONLINE | SIMPLE | 150 | SQL_Latin1_General_CP1_CI_AS
--> model | 3 | ONLINE | SIMPLE | 150 | SQL_Latin1_General_CP1_CI_AS --> msdb | 4 | ONLINE | SIMPLE | 150 | SQL_Latin1_General_CP1_CI_AS
--> shop | 5 | ONLINE | SIMPLE | 150 | SQL_Latin1_General_CP1_CI_AS (5 rows)
SELECT name, dbid FROM master..sysdatabases WHERE name = 'shop' --> name nvarchar(128)? = shop | dbid smallint? = 5 (1 rows)
SELECT name, type, type_desc, OBJECT_NAME(parent_object_id) AS parent FROM sys.objects ORDER BY name
--> name nvarchar(128)? | type char(2)? | type_desc nvarchar(60)? | parent nvarchar(128)? --> CK_price | C | CHECK_CONSTRAINT | item --> DF_price | D | DEFAULT_CONSTRAINT | item
--> FK_item | F | FOREIGN_KEY_CONSTRAINT | line --> item | U | USER_TABLE | NULL --> line | U | USER_TABLE | NULL --> PK_item | PK | PRIMARY_KEY_CONSTRAINT | item
--> restock | P | SQL_STORED_PROCEDURE | NULL --> twice | FN | SQL_SCALAR_FUNCTION | NULL --> UQ_code | UQ | UNIQUE_CONSTRAINT | item (9 rows)
SELECT name, xtype, type FROM sysobjects WHERE parent_obj = OBJECT_ID('item') ORDER BY name --> name nvarchar(128)? | xtype char(2)? | type char(2)? = CK_price | C | C; DF_price | D | D; PK_item | PK | K; UQ_code | UQ | K (4 rows)
SELECT t.name, c.name, c.column_id, ty.name AS type, c.max_length, c.precision, c.scale, c.is_nullable, c.is_identity FROM sys.tables t JOIN sys.columns c ON c.object_id = t.object_id JOIN sys.types ty ON ty.user_type_id = c.user_type_id ORDER BY t.name, c.column_id
--> name nvarchar(128)? | name nvarchar(128)? | column_id int? | type nvarchar(128)? | max_length smallint? | precision tinyint? | scale tinyint? | is_nullable bit? | is_identity bit?
--> item | id | 1 | int | 4 | 10 | 0 | 0 | 1 --> item | code | 2 | nvarchar | 40 | 0 | 0 | 0 | 0 --> item | price | 3 | decimal | 5 | 9 | 2 | 1 | 0 --> item | made | 4 | datetime | 8 | 23 | 3 | 1 | 0
--> line | item | 1 | int | 4 | 10 | 0 | 0 | 0 --> line | n | 2 | tinyint | 1 | 3 | 0 | 0 | 0 --> line | note | 3 | text | 16 | 0 | 0 | 1 | 0 --> line | f | 4 | float | 8 | 53 | 0 | 1 | 0 (8 rows)
SELECT i.name, i.index_id, i.type_desc, i.is_unique, i.is_primary_key, i.is_unique_constraint, c.name AS col, k.key_ordinal FROM sys.indexes i JOIN sysindexes s ON s.id = i.object_id AND s.indid = i.index_id JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id ORDER BY i.name, k.key_ordinal
--> name nvarchar(128)? | index_id int? | type_desc nvarchar(60)? | is_unique bit? | is_primary_key bit? | is_unique_constraint bit? | col nvarchar(128)? | key_ordinal tinyint?
--> ix_line | 2 | NONCLUSTERED | 1 | 0 | 0 | item | 1 --> ix_line | 2 | NONCLUSTERED | 1 | 0 | 0 | n | 2 --> ix_made | 3 | NONCLUSTERED | 0 | 0 | 0 | made | 1
--> PK_item | 1 | CLUSTERED | 1 | 1 | 0 | id | 1 --> UQ_code | 2 | NONCLUSTERED | 1 | 0 | 1 | code | 1 (5 rows)
SELECT OBJECT_NAME(object_id) AS module, parameter_id, name, is_output, max_length FROM sys.parameters ORDER BY 1, 2
--> module nvarchar(128)? | parameter_id int? | name nvarchar(128)? | is_output bit? | max_length smallint? --> restock | 1 | @code | 0 | 40 --> restock | 2 | @n | 1 | 4 --> twice | 0 |  | 1 | 5
--> twice | 1 | @x | 0 | 5 (4 rows)
SELECT p.name AS p, p.is_ms_shipped, f.name AS f, OBJECT_NAME(referenced_object_id) AS referenced, d.name AS d, definition FROM sys.procedures p, sys.foreign_keys f, sys.default_constraints d --> p nvarchar(128)? = restock | is_ms_shipped bit? = 0 | f nvarchar(128)? = FK_item | referenced nvarchar(128)? = item | d nvarchar(128)? = DF_price | definition nvarchar(max)? = ((0)) (1 rows)
SELECT COUNT(*) FROM sys.types WHERE name IN ('int', 'nvarchar', 'datetime2', 'uniqueidentifier') --> - int? = 4 (1 rows)
SELECT COLUMN_NAME, COLUMN_DEFAULT, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, CHARACTER_OCTET_LENGTH, NUMERIC_PRECISION, NUMERIC_SCALE, DATETIME_PRECISION, COLLATION_NAME FROM INFORMATION_SCHEMA.COLUMNS ORDER BY TABLE_NAME, ORDINAL_POSITION
--> COLUMN_NAME nvarchar(128)? | COLUMN_DEFAULT nvarchar(4000)? | DATA_TYPE nvarchar(128)? | CHARACTER_MAXIMUM_LENGTH int? | CHARACTER_OCTET_LENGTH int? | NUMERIC_PRECISION tinyint? | NUMERIC_SCALE int? | DATETIME_PRECISION smallint? | COLLATION_NAME nvarchar(128)?
--> id | NULL | int | NULL | NULL | 10 | 0 | NULL | NULL --> code | NULL | nvarchar | 20 | 40 | NULL | NULL | NULL | SQL_Latin1_General_CP1_CI_AS
--> price | ((0)) | decimal | NULL | NULL | 9 | 2 | NULL | NULL --> made | NULL | datetime | NULL | NULL | NULL | NULL | 3 | NULL --> item | NULL | int | NULL | NULL | 10 | 0 | NULL | NULL
--> n | NULL | tinyint | NULL | NULL | 3 | 0 | NULL | NULL --> note | NULL | text | 2147483647 | 2147483647 | NULL | NULL | NULL | SQL_Latin1_General_CP1_CI_AS
--> f | NULL | float | NULL | NULL | 53 | NULL | NULL | NULL (8 rows)
SELECT SPECIFIC_NAME, ORDINAL_POSITION, PARAMETER_MODE, IS_RESULT, PARAMETER_NAME, DATA_TYPE FROM INFORMATION_SCHEMA.PARAMETERS ORDER BY SPECIFIC_NAME, ORDINAL_POSITION
--> SPECIFIC_NAME nvarchar(128)? | ORDINAL_POSITION int? | PARAMETER_MODE nvarchar(10)? | IS_RESULT nvarchar(10)? | PARAMETER_NAME nvarchar(128)? | DATA_TYPE nvarchar(128)?
--> restock | 1 | IN | NO | @code | nvarchar --> restock | 2 | INOUT | NO | @n | int --> twice | 0 | OUT | YES |  | decimal --> twice | 1 | IN | NO | @x | decimal (4 rows)
SELECT * FROM sys.nosuch --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sys.nosuch.
-- what SQL Server has and tsqlbox has not is refused by name, when it is read
SELECT is_encrypted FROM sys.databases --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support the column is_encrypted of sys.databases.
IF 1 = 0 SELECT * FROM sys.dm_os_sys_info SELECT * FROM sys.dm_exec_sql_text(0x01) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sys.dm_exec_sql_text.
SELECT * FROM sysaltfiles --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sysaltfiles.
SELECT * FROM item(1) --> Msg 215, Level 16, State 1, Line 1: Parameters supplied for object 'item' which is not a function. If the parameters are intended as a table hint, a WITH keyword is required.
SELECT ROUTINE_NAME, DATA_TYPE, NUMERIC_PRECISION, NUMERIC_SCALE FROM INFORMATION_SCHEMA.ROUTINES ORDER BY 1 --> ROUTINE_NAME nvarchar(128)? | DATA_TYPE nvarchar(128)? | NUMERIC_PRECISION tinyint? | NUMERIC_SCALE int? = restock | NULL | NULL | NULL; twice | decimal | 9 | 2 (2 rows)
SELECT CONSTRAINT_NAME FROM INFORMATION_SCHEMA.CONSTRAINT_TABLE_USAGE WHERE TABLE_NAME = 'item' ORDER BY 1 --> CONSTRAINT_NAME nvarchar(128)? = CK_price; PK_item; UQ_code (3 rows)
SELECT name, uid, issqlrole FROM sysusers WHERE uid < 2 ORDER BY uid
SELECT name, xtype, length FROM systypes WHERE name IN ('int', 'nchar') ORDER BY 1 --> name nvarchar(128)? | uid smallint? | issqlrole int? = public | 0 | 1; dbo | 1 | 0 (2 rows) --> name nvarchar(128)? | xtype tinyint? | length smallint? = int | 56 | 4; nchar | 239 | 8000 (2 rows)
-- rebuilt indexes; a database is renamed, or set to a value that it has
ALTER INDEX ix_made ON item REBUILD WITH (FILLFACTOR = 80) -->
EXEC sp_who '51' EXEC sp_who nobody
--> spid smallint? = 51 | ecid smallint? = 0 | status nchar(30)? = running | loginame nchar(128)? = sa | hostname nchar(128)? =  | blk char(5)? = 0     | dbname nvarchar(128)? = shop | cmd nchar(16)? = NULL | request_id int = 0 (1 rows)
--> Msg 15007, Level 16, State 1, Line 2, Procedure sp_who: 'nobody' is not a valid login or you do not have permission.
ALTER INDEX ALL ON dbo.line REORGANIZE -->
ALTER INDEX nosuch ON item REBUILD --> Msg 2727, Level 11, State 1, Line 1: Cannot find index 'nosuch'.
ALTER INDEX ix_made ON item DISABLE --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER INDEX ... DISABLE.
ALTER DATABASE CURRENT SET RECOVERY SIMPLE, RESTRICTED_USER, MULTI_USER WITH ROLLBACK IMMEDIATE -->
ALTER DATABASE shop MODIFY NAME = store --> Msg 5030, Level 16, State 2, Line 1: The database could not be exclusively locked to perform the operation.
ALTER DATABASE shop SET RECOVERY FULL, ANSI_NULLS OFF, QUERY_STORE = ON (MAX_STORAGE_SIZE_MB = 10), TARGET_RECOVERY_TIME = 60 SECONDS WITH NO_WAIT -->
ALTER DATABASE shop SET RECOVERY --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'RECOVERY'.
ALTER DATABASE shop SET READ_ONLY --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER DATABASE ... SET READ_ONLY.
-- files are placed by the server
CREATE DATABASE placed CONTAINMENT = NONE ON PRIMARY (NAME = N'placed', FILENAME = N'c:\placed.mdf', SIZE = 8MB), FILEGROUP f (NAME = f, FILENAME = 'd:\f.ndf') LOG ON (NAME = l, FILENAME = 'l.ldf') COLLATE Latin1_General_CI_AS
DROP DATABASE placed -->
CREATE DATABASE placed COLLATE Latin1_General_BIN --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a collation other than those named ..._CI_AS.
CREATE DATABASE placed ON (FILENAME = N'c:\placed.mdf') FOR ATTACH --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support CREATE DATABASE ... FOR.
CREATE DATABASE placed ON PRIMARY --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'PRIMARY'.
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
ALTER DATABASE shop MODIFY NAME = tempdb --> Msg 1801, Level 16, State 3, Line 1: Database 'tempdb' already exists. Choose a different database name.
ALTER DATABASE tempdb MODIFY NAME = shop2 --> Msg 5058, Level 16, State 5, Line 1: Option 'MODIFY NAME' cannot be set in database 'tempdb'.
ALTER DATABASE nosuch MODIFY NAME = store --> Msg 5011, Level 14, State 5, Line 1: User does not have permission to alter database 'nosuch', the database does not exist, or the database is not in a state that allows access checks.
ALTER DATABASE SHOP MODIFY NAME = [the store] --> Msg 5021, Level 0, State 1, Line 1: The database name 'the store' has been set.
SELECT DB_ID('shop') AS gone, DB_NAME(5) AS now, COUNT(*) AS n FROM [the store]..item --> gone int? = NULL | now nvarchar(128)? = the store | n int? = 0 (1 rows)
USE [the store] --> USE the store --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'the store'.
SELECT OBJECTPROPERTY(OBJECT_ID('item'), 'TableHasIdentity') a, OBJECTPROPERTY(OBJECT_ID('item'), 'IsMSShipped') b, OBJECT_ID('other.item') c, SERVERPROPERTY('ProductMajorVersion') d, DATABASEPROPERTYEX(DB_NAME(), 'IsAutoClose') e --> a int? = 1 | b int? = 0 | c int? = NULL | d nvarchar(128)? = 15 | e nvarchar(128)? = 0 (1 rows)
SELECT OBJECTPROPERTY(OBJECT_ID('item'), 'ExecIsStartup') --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support the property 'ExecIsStartup'.
-- constraints of tables, as clients look for them
CREATE TABLE pair (a int NOT NULL, [b "c\] int NOT NULL, d int NULL CONSTRAINT CK_d CHECK (d > 0), CONSTRAINT PK_pair PRIMARY KEY (a, [b "c\]), CONSTRAINT UQ_d UNIQUE (d))
CREATE TABLE child (x int, y int, z int CONSTRAINT FK_z REFERENCES pair (d) ON DELETE CASCADE, CONSTRAINT FK_xy FOREIGN KEY (x, y) REFERENCES pair) -->
SELECT c.TABLE_NAME, c.CONSTRAINT_NAME, c.CONSTRAINT_TYPE, k.COLUMN_NAME, k.ORDINAL_POSITION FROM INFORMATION_SCHEMA.TABLE_CONSTRAINTS c LEFT JOIN INFORMATION_SCHEMA.KEY_COLUMN_USAGE k ON k.CONSTRAINT_NAME = c.CONSTRAINT_NAME AND k.TABLE_NAME = c.TABLE_NAME WHERE c.TABLE_NAME IN ('pair', 'child') ORDER BY 1, 2, 5
--> TABLE_NAME nvarchar(128)? | CONSTRAINT_NAME nvarchar(128)? | CONSTRAINT_TYPE varchar(11)? | COLUMN_NAME nvarchar(128)? | ORDINAL_POSITION int? --> child | FK_xy | FOREIGN KEY | x | 1
--> child | FK_xy | FOREIGN KEY | y | 2 --> child | FK_z | FOREIGN KEY | z | 1 --> pair | CK_d | CHECK | NULL | NULL --> pair | PK_pair | PRIMARY KEY | a | 1
--> pair | PK_pair | PRIMARY KEY | b "c\ | 2 --> pair | UQ_d | UNIQUE | d | 1 (7 rows)
SELECT CONSTRAINT_NAME, UNIQUE_CONSTRAINT_NAME, DELETE_RULE, UPDATE_RULE FROM INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS WHERE CONSTRAINT_NAME IN ('FK_z', 'FK_xy') ORDER BY 1
--> CONSTRAINT_NAME nvarchar(128)? | UNIQUE_CONSTRAINT_NAME nvarchar(128)? | DELETE_RULE varchar(11)? | UPDATE_RULE varchar(11)? --> FK_xy | PK_pair | NO ACTION | NO ACTION
--> FK_z | UQ_d | CASCADE | NO ACTION (2 rows)
SELECT CHECK_CLAUSE, COLUMN_NAME FROM INFORMATION_SCHEMA.CHECK_CONSTRAINTS c JOIN INFORMATION_SCHEMA.CONSTRAINT_COLUMN_USAGE u ON u.CONSTRAINT_NAME = c.CONSTRAINT_NAME WHERE c.CONSTRAINT_NAME = 'CK_d' --> CHECK_CLAUSE nvarchar(4000)? = (d > 0) | COLUMN_NAME nvarchar(128)? = d (1 rows)
SELECT f.name, constraint_column_id AS n, COL_LENGTH('child', c.name) AS size, c.name AS own, r.name AS other FROM sys.foreign_key_columns k JOIN sys.foreign_keys f ON f.object_id = k.constraint_object_id JOIN sys.columns c ON c.object_id = k.parent_object_id AND c.column_id = k.parent_column_id JOIN sys.columns r ON r.object_id = k.referenced_object_id AND r.column_id = k.referenced_column_id WHERE f.parent_object_id = OBJECT_ID('child') ORDER BY 1, 2 --> name nvarchar(128)? | n int? | size smallint? | own nvarchar(128)? | other nvarchar(128)? = FK_xy | 1 | 4 | x | a; FK_xy | 2 | 4 | y | b "c\; FK_z | 1 | 4 | z | d (3 rows)
SELECT OBJECT_NAME(object_id) AS t, name, is_identity FROM sys.identity_columns WHERE object_id = OBJECT_ID('item') --> t nvarchar(128)? = item | name nvarchar(128)? = id | is_identity bit? = 1 (1 rows)
-- column ids stay when a column is dropped
CREATE TABLE Numbered (gone int, a int IDENTITY(7, 1), b int) ALTER TABLE Numbered DROP COLUMN gone -->
SELECT i.seed_value, COL_NAME(i.object_id, i.column_id) AS name, COL_NAME(i.object_id, 1) AS gone FROM sys.identity_columns i WHERE object_id = OBJECT_ID('Numbered') --> seed_value bigint? = 7 | name nvarchar(128)? = a | gone nvarchar(128)? = NULL (1 rows)
SELECT OBJECT_NAME(OBJECT_ID('Numbered'), DB_ID()) AS t, OBJECT_SCHEMA_NAME(OBJECT_ID('pair')) AS s, OBJECT_SCHEMA_NAME(0) AS o, OBJECT_NAME(OBJECT_ID('Numbered'), 999) AS n, COLUMNPROPERTY(OBJECT_ID('Numbered'), 'A', 'IsIdentity') AS i, COLUMNPROPERTY(OBJECT_ID('Numbered'), 'b', 'AllowsNull') AS b, COLUMNPROPERTY(OBJECT_ID('Numbered'), 'gone', 'IsIdentity') AS g --> t nvarchar(128)? = Numbered | s nvarchar(128)? = dbo | o nvarchar(128)? = NULL | n nvarchar(128)? = NULL | i int? = 1 | b int? = 1 | g int? = NULL (1 rows)
CREATE INDEX ix_numbered ON Numbered (b DESC, a) -->
EXEC sp_helpindex Numbered --> index_name nvarchar(128)? = ix_numbered | index_description varchar(210)? = nonclustered located on PRIMARY | index_keys nvarchar(2078)? = b(-), a (1 rows)
EXEC sp_helpindex Nowhere --> Msg 15009, Level 16, State 1, Line 2, Procedure sp_helpindex: The object 'Nowhere' does not exist in database 'the store' or is invalid for this operation.
INSERT BULK Numbered (b int) WITH (KEEP_NULLS, ROWS_PER_BATCH = 10, ORDER (b)) -->
INSERT BULK Numbered (b int, c varchar(10) COLLATE DATABASE_DEFAULT) --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'c'.
INSERT BULK Numbered (b --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near 'b'.
SELECT spid - @@SPID AS own, blocked, DB_NAME(dbid) AS db, status, loginame FROM master..sysprocesses WHERE spid = @@SPID --> own smallint? = 0 | blocked smallint? = 0 | db nvarchar(128)? = the store | status nchar(30)? = running | loginame nchar(128)? = sa (1 rows)
-- what drivers ask about tables and procedures
CREATE TABLE Described (id int IDENTITY CONSTRAINT pk_described PRIMARY KEY, name nvarchar(20) NOT NULL DEFAULT N'none',
amount decimal(9, 2), rate float, taken datetime2(3), note varchar(max))
CREATE TABLE Remarks (a int, b int CONSTRAINT fk_remarks REFERENCES Described (id) ON DELETE SET NULL)
CREATE INDEX ix_remarks ON Remarks (b DESC, a) -->
DECLARE @columns TABLE (q sysname, o sysname, t sysname, name sysname, type smallint, typeName sysname, p int, length int, scale smallint,
radix smallint, nullable smallint, remarks varchar(254), fallback nvarchar(4000), t3 smallint, sub smallint, octets int, ordinal int,
isNullable varchar(3), ss tinyint) INSERT @columns EXEC sp_columns 'Desc%', 'dbo'
SELECT o, t, name, type, typeName, p, length, scale, radix, nullable, fallback, t3, sub, octets, isNullable FROM @columns ORDER BY ordinal
DELETE @columns INSERT @columns EXEC sp_columns 'Described', @column_name = '[rt]a%', @ODBCVer = 3
SELECT name, type, p, radix FROM @columns ORDER BY ordinal
--> (6 changed)
--> o nvarchar(128) | t nvarchar(128) | name nvarchar(128) | type smallint? | typeName nvarchar(128) | p int? | length int? | scale smallint? | radix smallint? | nullable smallint? | fallback nvarchar(4000)? | t3 smallint? | sub smallint? | octets int? | isNullable varchar(3)?
--> dbo | Described | id | 4 | int identity | 10 | 4 | 0 | 10 | 0 | NULL | 4 | NULL | NULL | NO --> dbo | Described | name | -9 | nvarchar | 20 | 40 | NULL | NULL | 0 | (N'none') | -9 | NULL | 40 | NO
--> dbo | Described | amount | 3 | decimal | 9 | 11 | 2 | 10 | 1 | NULL | 3 | NULL | NULL | YES --> dbo | Described | rate | 6 | float | 15 | 8 | NULL | 10 | 1 | NULL | 6 | NULL | NULL | YES
--> dbo | Described | taken | 11 | datetime2 | 23 | 16 | 3 | NULL | 1 | NULL | 9 | 3 | NULL | YES
--> dbo | Described | note | 12 | varchar | 0 | 0 | NULL | NULL | 1 | NULL | 12 | NULL | 0 | YES (6 rows) (6 changed) (2 changed)
--> name nvarchar(128) | type smallint? | p int? | radix smallint? = rate | 6 | 53 | 2; taken | 93 | 23 | NULL (2 rows)
CREATE PROCEDURE asked @a int, @b nvarchar(20) OUTPUT, @c decimal(9, 2) = 1, @d datetime = NULL AS RETURN 3 -->
CREATE FUNCTION asked_too (@x varchar(max)) RETURNS float AS BEGIN RETURN 1 END -->
CREATE TABLE keyed (a int NULL UNIQUE, b nvarchar(10) NOT NULL, c date NOT NULL)
CREATE UNIQUE INDEX ux_keyed ON keyed (c, b) CREATE UNIQUE INDEX ux_filtered ON Remarks (a) WHERE a > 0
EXEC sp_sproc_columns 'asked' EXEC sp_sproc_columns 'asked[_]%', 'dbo', @ODBCVer = 3
EXEC sp_sproc_columns 'asked', @column_name = '@d', @ODBCVer = 3, @fUsePattern = 0
EXEC sp_sproc_columns 'aske_', @fUsePattern = 0 EXEC sp_special_columns Described EXEC sp_special_columns keyed
EXEC sp_special_columns keyed, @nullable = 'O', @ODBCVer = 3 EXEC sp_special_columns keyed, 'dbo', @col_type = 'V'
EXEC sp_special_columns Remarks EXEC sp_special_columns Remarks, NULL, 'msdb'
DROP TABLE keyed DROP INDEX ux_filtered ON Remarks DROP PROCEDURE asked DROP FUNCTION asked_too
--> PROCEDURE_QUALIFIER nvarchar(128)? | PROCEDURE_OWNER nvarchar(128)? | PROCEDURE_NAME nvarchar(134)? | COLUMN_NAME nvarchar(128)? | COLUMN_TYPE smallint? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | RADIX smallint? | NULLABLE smallint? | REMARKS varchar(254)? | COLUMN_DEF nvarchar(4000)? | SQL_DATA_TYPE smallint? | SQL_DATETIME_SUB smallint? | CHAR_OCTET_LENGTH int? | ORDINAL_POSITION int? | IS_NULLABLE varchar(254)? | SS_DATA_TYPE tinyint?
--> the store | dbo | asked;1 | @RETURN_VALUE | 5 | 4 | int | 10 | 4 | 0 | 10 | 0 | NULL | NULL | 4 | NULL | NULL | 0 | NO | NULL
--> the store | dbo | asked;1 | @a | 1 | 4 | int | 10 | 4 | 0 | 10 | 1 | NULL | NULL | 4 | NULL | NULL | 1 | YES | NULL
--> the store | dbo | asked;1 | @b | 2 | -9 | nvarchar | 20 | 40 | NULL | NULL | 1 | NULL | NULL | -9 | NULL | 40 | 2 | YES | NULL
--> the store | dbo | asked;1 | @c | 1 | 3 | decimal | 9 | 11 | 2 | 10 | 1 | NULL | NULL | 3 | NULL | NULL | 3 | YES | NULL
--> the store | dbo | asked;1 | @d | 1 | 11 | datetime | 23 | 16 | 3 | NULL | 1 | NULL | NULL | 9 | 3 | NULL | 4 | YES | NULL (5 rows)
--> PROCEDURE_QUALIFIER nvarchar(128)? | PROCEDURE_OWNER nvarchar(128)? | PROCEDURE_NAME nvarchar(134)? | COLUMN_NAME nvarchar(128)? | COLUMN_TYPE smallint? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | RADIX smallint? | NULLABLE smallint? | REMARKS varchar(254)? | COLUMN_DEF nvarchar(4000)? | SQL_DATA_TYPE smallint? | SQL_DATETIME_SUB smallint? | CHAR_OCTET_LENGTH int? | ORDINAL_POSITION int? | IS_NULLABLE varchar(254)? | SS_DATA_TYPE tinyint?
--> the store | dbo | asked_too;0 | @RETURN_VALUE | 5 | 6 | float | 53 | 8 | NULL | 2 | 1 | NULL | NULL | 6 | NULL | NULL | 0 | YES | NULL
--> the store | dbo | asked_too;0 | @x | 1 | 12 | varchar | 0 | 0 | NULL | NULL | 1 | NULL | NULL | 12 | NULL | 0 | 1 | YES | NULL (2 rows)
--> PROCEDURE_QUALIFIER nvarchar(128)? = the store | PROCEDURE_OWNER nvarchar(128)? = dbo | PROCEDURE_NAME nvarchar(134)? = asked;1 | COLUMN_NAME nvarchar(128)? = @d | COLUMN_TYPE smallint? = 1 | DATA_TYPE smallint? = 93 | TYPE_NAME nvarchar(128)? = datetime | PRECISION int? = 23 | LENGTH int? = 16 | SCALE smallint? = 3 | RADIX smallint? = NULL | NULLABLE smallint? = 1 | REMARKS varchar(254)? = NULL | COLUMN_DEF nvarchar(4000)? = NULL | SQL_DATA_TYPE smallint? = 9 | SQL_DATETIME_SUB smallint? = 3 | CHAR_OCTET_LENGTH int? = NULL | ORDINAL_POSITION int? = 4 | IS_NULLABLE varchar(254)? = YES | SS_DATA_TYPE tinyint? = NULL (1 rows)
--> PROCEDURE_QUALIFIER nvarchar(128)? | PROCEDURE_OWNER nvarchar(128)? | PROCEDURE_NAME nvarchar(134)? | COLUMN_NAME nvarchar(128)? | COLUMN_TYPE smallint? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | RADIX smallint? | NULLABLE smallint? | REMARKS varchar(254)? | COLUMN_DEF nvarchar(4000)? | SQL_DATA_TYPE smallint? | SQL_DATETIME_SUB smallint? | CHAR_OCTET_LENGTH int? | ORDINAL_POSITION int? | IS_NULLABLE varchar(254)? | SS_DATA_TYPE tinyint? (0 rows)
--> SCOPE smallint? = 0 | COLUMN_NAME nvarchar(128)? = id | DATA_TYPE smallint? = 4 | TYPE_NAME nvarchar(128)? = int identity | PRECISION int? = 10 | LENGTH int? = 4 | SCALE smallint? = 0 | PSEUDO_COLUMN smallint? = 1 (1 rows)
--> SCOPE smallint? = 0 | COLUMN_NAME nvarchar(128)? = a | DATA_TYPE smallint? = 4 | TYPE_NAME nvarchar(128)? = int | PRECISION int? = 10 | LENGTH int? = 4 | SCALE smallint? = 0 | PSEUDO_COLUMN smallint? = 1 (1 rows)
--> SCOPE smallint? | COLUMN_NAME nvarchar(128)? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | PSEUDO_COLUMN smallint?
--> 0 | c | 91 | date | 10 | 6 | NULL | 1 --> 0 | b | -9 | nvarchar | 10 | 20 | NULL | 1 (2 rows)
--> SCOPE smallint? | COLUMN_NAME nvarchar(128)? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | PSEUDO_COLUMN smallint? (0 rows)
--> SCOPE smallint? | COLUMN_NAME nvarchar(128)? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | PSEUDO_COLUMN smallint? (0 rows)
--> Msg 15250, Level 16, State 1, Line 1, Procedure sp_special_columns: The database name component of the object qualifier must be the name of the current database.
EXEC sp_tables 'remark_', NULL, NULL, '''VIEW'',''TABLE''' EXEC sp_tables 'remark_', @fUsePattern = 0
EXEC sp_tables '', '%', '' EXEC sp_tables '', '', '', '%' EXEC sp_pkeys Described EXEC sp_fkeys Described
EXEC sp_fkeys @fktable_name = Remarks, @fktable_owner = 'nobody' EXEC sp_statistics Remarks
EXEC sp_statistics Remarks, @is_unique = 'Y' EXEC sp_columns Remarks, NULL, 'msdb' EXEC sp_fkeys EXEC msdb..sp_tables
--> TABLE_QUALIFIER nvarchar(128)? = the store | TABLE_OWNER nvarchar(128)? = dbo | TABLE_NAME nvarchar(128)? = Remarks | TABLE_TYPE varchar(32)? = TABLE | REMARKS varchar(254)? = NULL (1 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | TABLE_TYPE varchar(32)? | REMARKS varchar(254)? (0 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | TABLE_TYPE varchar(32)? | REMARKS varchar(254)? --> NULL | dbo | NULL | NULL | NULL
--> NULL | guest | NULL | NULL | NULL --> NULL | INFORMATION_SCHEMA | NULL | NULL | NULL --> NULL | sys | NULL | NULL | NULL (4 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | TABLE_TYPE varchar(32)? | REMARKS varchar(254)? --> NULL | NULL | NULL | SYSTEM TABLE | NULL
--> NULL | NULL | NULL | TABLE | NULL --> NULL | NULL | NULL | VIEW | NULL (3 rows)
--> TABLE_QUALIFIER nvarchar(128)? = the store | TABLE_OWNER nvarchar(128)? = dbo | TABLE_NAME nvarchar(128)? = Described | COLUMN_NAME nvarchar(128)? = id | KEY_SEQ smallint? = 1 | PK_NAME nvarchar(128)? = pk_described (1 rows)
--> PKTABLE_QUALIFIER nvarchar(128)? = the store | PKTABLE_OWNER nvarchar(128)? = dbo | PKTABLE_NAME nvarchar(128)? = Described | PKCOLUMN_NAME nvarchar(128)? = id | FKTABLE_QUALIFIER nvarchar(128)? = the store | FKTABLE_OWNER nvarchar(128)? = dbo | FKTABLE_NAME nvarchar(128)? = Remarks | FKCOLUMN_NAME nvarchar(128)? = b | KEY_SEQ smallint? = 1 | UPDATE_RULE smallint? = 1 | DELETE_RULE smallint? = 2 | FK_NAME nvarchar(128)? = fk_remarks | PK_NAME nvarchar(128)? = pk_described | DEFERRABILITY smallint? = 7 (1 rows)
--> PKTABLE_QUALIFIER nvarchar(128)? | PKTABLE_OWNER nvarchar(128)? | PKTABLE_NAME nvarchar(128)? | PKCOLUMN_NAME nvarchar(128)? | FKTABLE_QUALIFIER nvarchar(128)? | FKTABLE_OWNER nvarchar(128)? | FKTABLE_NAME nvarchar(128)? | FKCOLUMN_NAME nvarchar(128)? | KEY_SEQ smallint? | UPDATE_RULE smallint? | DELETE_RULE smallint? | FK_NAME nvarchar(128)? | PK_NAME nvarchar(128)? | DEFERRABILITY smallint? (0 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | NON_UNIQUE smallint? | INDEX_QUALIFIER nvarchar(128)? | INDEX_NAME nvarchar(128)? | TYPE smallint? | SEQ_IN_INDEX smallint? | COLUMN_NAME nvarchar(128)? | COLLATION varchar(1) | CARDINALITY int? | PAGES int? | FILTER_CONDITION varchar(128)?
--> the store | dbo | Remarks | 1 | Remarks | ix_remarks | 3 | 1 | b | D | NULL | NULL | NULL --> the store | dbo | Remarks | 1 | Remarks | ix_remarks | 3 | 2 | a | A | NULL | NULL | NULL (2 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | NON_UNIQUE smallint? | INDEX_QUALIFIER nvarchar(128)? | INDEX_NAME nvarchar(128)? | TYPE smallint? | SEQ_IN_INDEX smallint? | COLUMN_NAME nvarchar(128)? | COLLATION varchar(1) | CARDINALITY int? | PAGES int? | FILTER_CONDITION varchar(128)? (0 rows)
--> Msg 15250, Level 16, State 1, Line 1, Procedure sp_columns: The database name component of the object qualifier must be the name of the current database.
--> Msg 15252, Level 16, State 1, Line 1, Procedure sp_fkeys: The primary or foreign key table name must be given.
--> TABLE_QUALIFIER nvarchar(128)? = msdb | TABLE_OWNER nvarchar(128)? = dbo | TABLE_NAME nvarchar(128)? = backupset | TABLE_TYPE varchar(32)? = TABLE | REMARKS varchar(254)? = NULL (1 rows)
CREATE DATABASE [x$c'$o] -->
USE [x$c'$o] SELECT name FROM sys.databases WHERE database_id = DB_ID() SELECT COUNT(*) n FROM sys.tables USE master DROP DATABASE [x$c'$o]
--> USE x$c'$o --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'x$c'$o'. --> name nvarchar(128)? = x$c'$o (1 rows) --> n int? = 0 (1 rows) --> USE master
--> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
SELECT COUNT(*) AS n, MAX(number) AS most, MAX(low) AS low, MAX(high) AS high FROM master..spt_values WHERE type = 'P' --> n int? = 2048 | most int? = 2047 | low int? = 256 | high int? = 128 (1 rows)
USE tempdb CREATE TABLE #temporary (a int PRIMARY KEY)
SELECT REPLACE(name, '_', '') AS name, LEN(name) AS length FROM sys.tables WHERE name LIKE '#temporary[_][_][_]%'
SELECT COUNT(tempdb.INFORMATION_SCHEMA.COLUMNS.COLUMN_NAME) AS n, COL_NAME(OBJECT_ID('tempdb..#temporary'), 1) AS c FROM tempdb.INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = OBJECT_NAME(OBJECT_ID('tempdb..#temporary'))
EXEC sp_columns '#temporary', @column_name = 'missing' EXEC sp_special_columns '#temporary' SELECT * FROM spt_values
--> USE tempdb --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'tempdb'. --> name nvarchar(4000)? = #temporary000000000002 | length int? = 128 (1 rows)
--> n int? = 1 | c nvarchar(128)? = a (1 rows)
--> TABLE_QUALIFIER nvarchar(128)? | TABLE_OWNER nvarchar(128)? | TABLE_NAME nvarchar(128)? | COLUMN_NAME nvarchar(128)? | DATA_TYPE smallint? | TYPE_NAME nvarchar(128)? | PRECISION int? | LENGTH int? | SCALE smallint? | RADIX smallint? | NULLABLE smallint? | REMARKS varchar(254)? | COLUMN_DEF nvarchar(4000)? | SQL_DATA_TYPE smallint? | SQL_DATETIME_SUB smallint? | CHAR_OCTET_LENGTH int? | ORDINAL_POSITION int? | IS_NULLABLE varchar(254)? | SS_DATA_TYPE tinyint? (0 rows)
--> SCOPE smallint? = 0 | COLUMN_NAME nvarchar(128)? = a | DATA_TYPE smallint? = 4 | TYPE_NAME nvarchar(128)? = int | PRECISION int? = 10 | LENGTH int? = 4 | SCALE smallint? = 0 | PSEUDO_COLUMN smallint? = 1 (1 rows)
--> Msg 208, Level 16, State 1, Line 4: Invalid object name 'spt_values'.
