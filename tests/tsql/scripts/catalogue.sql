CREATE DATABASE shop
GO
USE shop
CREATE TABLE item (id int IDENTITY(1,1) CONSTRAINT PK_item PRIMARY KEY, code nvarchar(20) NOT NULL CONSTRAINT UQ_code UNIQUE, price decimal(9,2) NULL CONSTRAINT DF_price DEFAULT (0), made datetime NULL, CONSTRAINT CK_price CHECK (price >= 0))
CREATE TABLE line (item int NOT NULL CONSTRAINT FK_item REFERENCES item(id), n tinyint NOT NULL, note text NULL, f float NULL)
CREATE UNIQUE INDEX ix_line ON line (item, n DESC)
CREATE INDEX ix_made ON item (made)
GO
CREATE PROCEDURE restock @code nvarchar(20), @n int OUTPUT AS RETURN 0
GO
CREATE FUNCTION dbo.twice (@x decimal(9,2)) RETURNS decimal(9,2) AS BEGIN RETURN @x * 2 END
GO
SELECT name, database_id, state_desc, recovery_model_desc, compatibility_level, collation_name FROM sys.databases ORDER BY database_id
SELECT name, dbid FROM master..sysdatabases WHERE name = 'shop'
SELECT name, type, type_desc, OBJECT_NAME(parent_object_id) AS parent FROM sys.objects ORDER BY name
SELECT name, xtype, type FROM sysobjects WHERE parent_obj = OBJECT_ID('item') ORDER BY name
SELECT t.name, c.name, c.column_id, ty.name AS type, c.max_length, c.precision, c.scale, c.is_nullable, c.is_identity FROM sys.tables t JOIN sys.columns c ON c.object_id = t.object_id JOIN sys.types ty ON ty.user_type_id = c.user_type_id ORDER BY t.name, c.column_id
SELECT i.name, i.index_id, i.type_desc, i.is_unique, i.is_primary_key, i.is_unique_constraint, c.name AS col, k.key_ordinal FROM sys.indexes i JOIN sysindexes s ON s.id = i.object_id AND s.indid = i.index_id JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id JOIN sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id ORDER BY i.name, k.key_ordinal
SELECT OBJECT_NAME(object_id) AS module, parameter_id, name, is_output, max_length FROM sys.parameters ORDER BY 1, 2
SELECT name, schema_id FROM sys.schemas ORDER BY name
SELECT name, is_ms_shipped FROM sys.procedures
SELECT COUNT(*) FROM sys.types WHERE name IN ('int', 'nvarchar', 'datetime2', 'uniqueidentifier')
SELECT name, OBJECT_NAME(referenced_object_id) AS referenced FROM sys.foreign_keys
SELECT name, definition FROM sys.default_constraints
SELECT TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE FROM INFORMATION_SCHEMA.TABLES ORDER BY TABLE_NAME
SELECT COLUMN_NAME, COLUMN_DEFAULT, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, CHARACTER_OCTET_LENGTH, NUMERIC_PRECISION, NUMERIC_SCALE, DATETIME_PRECISION, COLLATION_NAME FROM INFORMATION_SCHEMA.COLUMNS ORDER BY TABLE_NAME, ORDINAL_POSITION
SELECT ROUTINE_NAME, ROUTINE_TYPE FROM INFORMATION_SCHEMA.ROUTINES ORDER BY ROUTINE_NAME
SELECT SPECIFIC_NAME, ORDINAL_POSITION, PARAMETER_MODE, IS_RESULT, PARAMETER_NAME, DATA_TYPE FROM INFORMATION_SCHEMA.PARAMETERS ORDER BY SPECIFIC_NAME, ORDINAL_POSITION
SELECT * FROM sys.nosuch
GO
-- indexes are made anew; a database changes its name, or takes a setting that it has
ALTER INDEX ix_made ON item REBUILD WITH (FILLFACTOR = 80)
ALTER INDEX ALL ON dbo.line REORGANIZE
ALTER INDEX nosuch ON item REBUILD
GO
ALTER INDEX ix_made ON item DISABLE
GO
ALTER DATABASE CURRENT SET RECOVERY SIMPLE, MULTI_USER WITH ROLLBACK IMMEDIATE
ALTER DATABASE shop MODIFY NAME = store
GO
ALTER DATABASE shop SET RECOVERY FULL
GO
USE master
ALTER DATABASE shop MODIFY NAME = tempdb
GO
ALTER DATABASE tempdb MODIFY NAME = shop2
GO
ALTER DATABASE nosuch MODIFY NAME = store
GO
ALTER DATABASE SHOP MODIFY NAME = [the store]
SELECT code, price FROM [the store]..item
SELECT DB_ID('shop') AS gone, DB_NAME(5) AS now
GO
USE [the store]
SELECT OBJECTPROPERTY(OBJECT_ID('item'), 'TableHasIdentity') a, OBJECTPROPERTY(OBJECT_ID('item'), 'IsMSShipped') b, OBJECT_ID('other.item') c, SERVERPROPERTY('ProductMajorVersion') d, DATABASEPROPERTYEX(DB_NAME(), 'IsAutoClose') e
SELECT OBJECTPROPERTY(OBJECT_ID('item'), 'ExecIsStartup')
GO
