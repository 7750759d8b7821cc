CREATE TABLE item (id int NOT NULL PRIMARY KEY, name varchar(20), price decimal(8,2))
INSERT item VALUES (1,'pen',1.20),(2,'ink',4.00),(3,'Pad',2.50)
GO
CREATE VIEW cheap AS SELECT id, name, price * 2 AS twice FROM item WHERE price < 3;
GO
CREATE VIEW named (nr, word) WITH SCHEMABINDING AS SELECT TOP 10 id, UPPER(name) FROM dbo.item ORDER BY name DESC
GO
CREATE OR ALTER VIEW dbo.nested AS WITH c AS (SELECT * FROM cheap) SELECT c.name, n.word FROM c JOIN named n ON n.nr = c.id UNION ALL SELECT 'x', NULL
GO
SELECT * FROM cheap ORDER BY id
SELECT v.word FROM named AS v WHERE v.nr > 1 ORDER BY 1
SELECT COUNT(*) n, MAX(word) w FROM nested
DECLARE @id int = 1; WITH item AS (SELECT 9 AS id) SELECT c.name, item.id FROM item JOIN cheap c ON c.id = @id
SELECT (SELECT name FROM cheap c WHERE c.id = i.id) n FROM item i ORDER BY i.id
SELECT name, xtype FROM sysobjects WHERE xtype = 'V' ORDER BY name
SELECT name, type_desc FROM sys.objects WHERE name = 'cheap'
SELECT c.name, c.system_type_id, c.is_nullable FROM sys.columns c JOIN sys.views v ON v.object_id = c.object_id WHERE v.name = 'cheap'
SELECT TABLE_NAME, TABLE_TYPE FROM INFORMATION_SCHEMA.TABLES ORDER BY 1
SELECT VIEW_DEFINITION FROM INFORMATION_SCHEMA.VIEWS WHERE TABLE_NAME = 'cheap'
SELECT OBJECTPROPERTY(OBJECT_ID('cheap'), 'IsView') v
GO
ALTER VIEW cheap AS SELECT name FROM item WHERE price < 2
GO
SELECT * FROM cheap
SELECT * INTO #copy FROM cheap
SELECT * FROM #copy
GO
CREATE FUNCTION below (@most decimal(8,2), @extra int) RETURNS TABLE AS RETURN (SELECT id, name, @extra + id AS sum FROM item WHERE price < @most)
GO
-- from another database the names in it mean what they meant where it was made
CREATE DATABASE other
GO
USE other
SELECT * FROM master..cheap
SELECT * FROM master.dbo.below(2.6, 0) ORDER BY name
GO
USE master
GO
DECLARE @m money = 2.6
SELECT * FROM dbo.below(@m, 10) b ORDER BY b.id
SELECT i.id, (SELECT COUNT(*) FROM below(i.price, 0)) cheaper FROM item i ORDER BY i.id
SELECT value FROM STRING_SPLIT('a,"b",,' + CHAR(9) + 'é', ',')
SELECT COUNT(*) FROM STRING_SPLIT(NULL, ',')
SELECT ROUTINE_NAME, ROUTINE_TYPE FROM INFORMATION_SCHEMA.ROUTINES
GO
SELECT * FROM below(1)
GO
SELECT * FROM below(1, 2, 3)
GO
SELECT * FROM nofun(1)
GO
SELECT * FROM STRING_SPLIT('a', '')
GO
CREATE FUNCTION several() RETURNS @t TABLE (a int) AS BEGIN RETURN END
GO
INSERT cheap VALUES ('z')
GO
UPDATE c SET name = 'z' FROM cheap c
GO
DELETE cheap
GO
SELECT 1
CREATE VIEW late AS SELECT 1 AS a
GO
CREATE VIEW bad AS SELECT 1 AS a SELECT 2
GO
CREATE VIEW bad AS SELECT id FROM item ORDER BY id
GO
CREATE VIEW bad AS SELECT id, id + 1 FROM item
GO
CREATE VIEW bad AS SELECT id, name AS ID FROM item
GO
CREATE VIEW bad (a) AS SELECT id, name FROM item
GO
CREATE VIEW bad AS SELECT * FROM nothing
GO
CREATE VIEW bad AS SELECT * FROM #copy
GO
CREATE VIEW cheap AS SELECT 1 AS a
GO
ALTER VIEW missing AS SELECT 1 AS a
GO
CREATE VIEW loop1 AS SELECT 1 AS a
GO
CREATE VIEW loop2 AS SELECT * FROM loop1
GO
ALTER VIEW loop1 AS SELECT * FROM loop2
GO
DROP VIEW loop2, nested
DROP VIEW IF EXISTS nested
DROP VIEW nested
DROP FUNCTION below
GO
SELECT * FROM nested
GO
SELECT * FROM (SELECT id FROM item ORDER BY id) q
GO
GO
-- what is altered, is kept as if it had been created so
CREATE VIEW altered AS SELECT 1 AS a
GO
/* ALTER */ ALTER VIEW altered AS SELECT 2 AS a
GO
EXEC sp_helptext 'altered'
GO
