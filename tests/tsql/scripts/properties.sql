-- Extended properties of the database, schemas, tables, views, modules and columns.
CREATE DATABASE described -->
USE described --> USE described --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'described'.
CREATE SCHEMA shop -->
CREATE TABLE shop.[it's] (id int PRIMARY KEY, [a'b] int, c int) -->
CREATE VIEW v AS SELECT c FROM shop.[it's] -->
CREATE FUNCTION f() RETURNS int AS BEGIN RETURN 1 END -->
EXEC sp_addextendedproperty 'Version', '1.0'
EXEC sys.sp_addextendedproperty @name = N'MS_Description', @value = N'of the shop', @level0type = N'SCHEMA', @level0name = N'shop'
EXEC sp_addextendedproperty N'MS_Description', N'its items', 'schema', 'shop', 'table', N'it''s'
EXEC sp_addextendedproperty N'MS_Description', N'it''s a column', 'SCHEMA', 'shop', 'TABLE', N'it''s', 'COLUMN', N'a''b'
EXEC sp_addextendedproperty N'MS_Description', 7, 'SCHEMA', 'dbo', 'VIEW', 'v', 'COLUMN', 'c'
EXEC sp_addextendedproperty N'MS_Description', NULL, 'SCHEMA', 'dbo', 'FUNCTION', 'f'
EXEC sp_updateextendedproperty 'version', '2.0'
SELECT class_desc, COALESCE(OBJECT_NAME(NULLIF(major_id * (2 - class), 0)), SCHEMA_NAME(major_id)) AS owner, COL_NAME(major_id, minor_id) AS col, name, value FROM sys.extended_properties ORDER BY 1, 2, 3
--> class_desc nvarchar(60)? | owner nvarchar(128)? | col nvarchar(128)? | name nvarchar(128)? | value nvarchar(4000)? --> DATABASE | NULL | NULL | Version | 2.0
--> OBJECT_OR_COLUMN | f | NULL | MS_Description | NULL --> OBJECT_OR_COLUMN | it's | NULL | MS_Description | its items --> OBJECT_OR_COLUMN | it's | a'b | MS_Description | it's a column
--> OBJECT_OR_COLUMN | v | c | MS_Description | 7 --> SCHEMA | shop | NULL | MS_Description | of the shop (6 rows)
DECLARE @status int
EXEC @status = sp_addextendedproperty 'VERSION', '3'
EXEC sp_dropextendedproperty 'MS_Description', 'SCHEMA', 'shop', 'TABLE', N'it''s', 'COLUMN', 'c'
EXEC sp_updateextendedproperty 'x', 1, 'SCHEMA', 'nosuch'
EXEC sp_addextendedproperty 'x', 1, 'SCHEMA', 'dbo', 'TABLE', 'v'
DECLARE @long nvarchar(max) = REPLICATE('x', 3751)
EXEC sp_addextendedproperty 'x', @long
EXEC sp_addextendedproperty 'x', 1, 'SCHEMA', 'dbo', 'VIEW', 'v', 'COLUMN', 'nosuch'
EXEC sp_addextendedproperty 'x', 1, 'SCHEMA', 'dbo', 'VIEW'
EXEC sp_addextendedproperty 'x', 1, 'SCHEMA', 'shop', 'TABLE', N'it''s', 'INDEX', 'i'
SELECT @status AS status
--> Msg 15233, Level 16, State 1, Line 20, Procedure sp_addextendedproperty: Property cannot be added. Property 'VERSION' already exists for 'object specified'.
--> Msg 15217, Level 16, State 1, Line 21, Procedure sp_dropextendedproperty: Property cannot be updated or deleted. Property 'MS_Description' does not exist for 'shop.it's.c'.
--> Msg 15135, Level 16, State 1, Line 18, Procedure sp_updateextendedproperty: Object is invalid. Extended properties are not permitted on 'nosuch', or the object does not exist.
--> Msg 15135, Level 16, State 1, Line 18, Procedure sp_addextendedproperty: Object is invalid. Extended properties are not permitted on 'dbo.v', or the object does not exist.
--> Msg 15097, Level 16, State 1, Line 11, Procedure sp_addextendedproperty: The size associated with an extended property cannot be more than 7,500 bytes.
--> Msg 15135, Level 16, State 1, Line 18, Procedure sp_addextendedproperty: Object is invalid. Extended properties are not permitted on 'dbo.v.nosuch', or the object does not exist.
--> Msg 15600, Level 15, State 1, Line 8, Procedure sp_addextendedproperty: An invalid parameter or option was specified for procedure 'sp_addextendedproperty'.
--> Msg 50000, Level 16, State 1, Line 10, Procedure sp_addextendedproperty: tsqlbox does not support properties of SCHEMA TABLE INDEX. --> status int? = 1 (1 rows)
EXEC sp_dropextendedproperty 'MS_Description', 'SCHEMA', 'shop'
ALTER TABLE shop.[it's] DROP COLUMN [a'b]
DROP VIEW v
DROP FUNCTION f
SELECT class, OBJECT_NAME(major_id) AS owner, value FROM sys.extended_properties ORDER BY 1
DROP TABLE shop.[it's]
SELECT COUNT(*) AS n FROM sys.extended_properties --> class tinyint? | owner nvarchar(128)? | value nvarchar(4000)? = 0 | NULL | 2.0; 1 | it's | its items (2 rows) --> n int? = 1 (1 rows)
CREATE VIEW seen AS SELECT 1 AS a, 2 AS b -->
EXEC sp_addextendedproperty 'note', 'of a', 'SCHEMA', 'dbo', 'VIEW', 'seen', 'COLUMN', 'a'
EXEC sp_addextendedproperty 'note', 'of b', 'SCHEMA', 'dbo', 'VIEW', 'seen', 'COLUMN', 'b' -->
ALTER VIEW seen AS SELECT 1 AS a, 2 AS c, 3 AS b -->
SELECT value FROM sys.extended_properties WHERE minor_id > 0
SELECT name, column_id FROM sys.columns WHERE object_id = OBJECT_ID('seen') ORDER BY column_id --> value nvarchar(4000)? = of a (1 rows) --> name nvarchar(128)? | column_id int? = a | 1; c | 2; b | 3 (3 rows)
