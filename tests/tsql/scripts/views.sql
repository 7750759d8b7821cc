CREATE TABLE item (id int NOT NULL PRIMARY KEY, name varchar(20), price decimal(8,2)) -->
INSERT item VALUES (1,'pen',1.20),(2,'ink',4.00),(3,'Pad',2.50) --> (3 changed)
CREATE VIEW cheap AS SELECT id, name, price * 2 AS twice FROM item WHERE price < 3; -->
CREATE VIEW named (nr, word) WITH SCHEMABINDING AS SELECT TOP 10 id, UPPER(name) FROM dbo.item ORDER BY name DESC -->
CREATE OR ALTER VIEW dbo.nested AS WITH c AS (SELECT * FROM cheap) SELECT c.name, n.word FROM c JOIN named n ON n.nr = c.id UNION ALL SELECT 'x', NULL -->
SELECT * FROM cheap ORDER BY id --> id int | name varchar(20)? | twice decimal(10,2)? = 1 | pen | 2.40; 3 | Pad | 5.00 (2 rows)
SELECT v.word FROM named AS v WHERE v.nr > 1 ORDER BY 1 --> word varchar(20)? = INK; PAD (2 rows)
SELECT COUNT(*) n, MAX(word) w FROM nested --> n int? = 3 | w varchar(20)? = PEN (8153, Line 1) (1 rows)
DECLARE @id int = 1; WITH item AS (SELECT 9 AS id) SELECT c.name, item.id FROM item JOIN cheap c ON c.id = @id --> name varchar(20)? = pen | id int = 9 (1 rows)
SELECT (SELECT name FROM cheap c WHERE c.id = i.id) n FROM item i ORDER BY i.id --> n varchar(20)? = pen; NULL; Pad (3 rows)
SELECT name, xtype FROM sysobjects WHERE xtype = 'V' ORDER BY name --> name nvarchar(128)? | xtype char(2)? = cheap | V; named | V; nested | V (3 rows)
SELECT c.name, c.system_type_id, c.is_nullable FROM sys.columns c JOIN sys.views v ON v.object_id = c.object_id WHERE v.name = 'cheap' --> name nvarchar(128)? | system_type_id tinyint? | is_nullable bit? = id | 56 | 0; name | 167 | 1; twice | 106 | 1 (3 rows)
SELECT VIEW_DEFINITION, type_desc, OBJECTPROPERTY(object_id, 'IsView') v FROM INFORMATION_SCHEMA.VIEWS JOIN sys.objects ON name = TABLE_NAME WHERE name = 'cheap' --> VIEW_DEFINITION nvarchar(4000)? = CREATE VIEW cheap AS SELECT id, name, price * 2 AS twice FROM item WHERE price < 3; -->  | type_desc nvarchar(60)? = VIEW | v int? = 1 (1 rows)
ALTER VIEW cheap AS SELECT name FROM item WHERE price < 2 -->
SELECT * FROM cheap --> name varchar(20)? = pen (1 rows)
SELECT * INTO #copy FROM cheap SELECT * FROM #copy --> (1 changed) --> name varchar(20)? = pen (1 rows)
CREATE FUNCTION below (@most decimal(8,2), @extra int) RETURNS TABLE AS RETURN (SELECT id, name, @extra + id AS sum FROM item WHERE price < @most) -->
-- names in a view refer to the database of the view
CREATE DATABASE other -->
USE other --> USE other --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'other'.
SELECT b.*, c.name AS cheap FROM master.dbo.below(2.6, 0) b LEFT JOIN master..cheap c ON c.name = b.name ORDER BY b.name --> id int | name varchar(20)? | sum int? | cheap varchar(20)? = 3 | Pad | 3 | NULL; 1 | pen | 1 | pen (2 rows)
USE master --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
DECLARE @m money = 2.6 SELECT * FROM dbo.below(@m, 10) b ORDER BY b.id --> id int | name varchar(20)? | sum int? = 1 | pen | 11; 3 | Pad | 13 (2 rows)
SELECT i.id, (SELECT COUNT(*) FROM below(i.price, 0)) cheaper FROM item i ORDER BY i.id --> id int | cheaper int? = 1 | 0; 2 | 2; 3 | 1 (3 rows)
SELECT value FROM STRING_SPLIT('a,"b",,' + CHAR(9) + 'é', ',') --> value varchar(9)? = a; "b"; ; 	é (4 rows)
SELECT COUNT(*) FROM STRING_SPLIT(NULL, ',') --> - int? = 0 (1 rows)
SELECT * FROM below(1) --> Msg 313, Level 16, State 1, Line 1: An insufficient number of arguments were supplied for the procedure or function dbo.below.
SELECT * FROM below(1, 2, 3) --> Msg 8144, Level 16, State 2, Line 1: Procedure or function dbo.below has too many arguments specified.
SELECT * FROM nofun(1) --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nofun'.
SELECT * FROM STRING_SPLIT('a', '') --> Msg 214, Level 16, State 1, Line 1: Procedure expects parameter 'separator' of type 'nchar(1)/nvarchar(1)'.
CREATE FUNCTION several() RETURNS @t TABLE (a int) AS BEGIN RETURN END -->
INSERT cheap VALUES ('z') --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'id', table 'master.dbo.item'; column does not allow nulls. INSERT fails. (3621)
UPDATE c SET name = 'z' FROM cheap c --> (1 changed)
DELETE cheap --> (1 changed)
SELECT 1
CREATE VIEW late AS SELECT 1 AS a --> Msg 111, Level 15, State 1, Line 2: 'CREATE VIEW' must be the first statement in a query batch.
CREATE VIEW bad AS SELECT 1 AS a SELECT 2 --> Msg 156, Level 15, State 1, Line 1, Procedure bad: Incorrect syntax near the keyword 'SELECT'.
CREATE VIEW bad AS SELECT id FROM item ORDER BY id --> Msg 1033, Level 15, State 1, Line 1, Procedure bad: The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table expressions, unless TOP, OFFSET or FOR XML is also specified.
CREATE VIEW bad AS SELECT id, id + 1 FROM item --> Msg 4511, Level 16, State 1, Line 1, Procedure bad: Create View or Function failed because no column name was specified for column 2.
CREATE VIEW bad AS SELECT id, name AS ID FROM item --> Msg 4506, Level 16, State 1, Line 1, Procedure bad: Column names in each view or function must be unique. Column name 'ID' in view or function 'bad' is specified more than once.
CREATE VIEW bad (a) AS SELECT id, name FROM item --> Msg 8158, Level 16, State 1, Line 1, Procedure bad: 'bad' has more columns than were specified in the column list.
CREATE VIEW bad AS SELECT * FROM nothing --> Msg 208, Level 16, State 1, Line 1, Procedure bad: Invalid object name 'nothing'.
CREATE VIEW bad AS SELECT * FROM #copy --> Msg 4508, Level 16, State 1, Line 1, Procedure bad: Views or functions are not allowed on temporary tables. Table names that begin with '#' denote temporary tables.
CREATE VIEW cheap AS SELECT 1 AS a --> Msg 2714, Level 16, State 3, Line 1, Procedure cheap: There is already an object named 'cheap' in the database.
ALTER VIEW missing AS SELECT 1 AS a --> Msg 208, Level 16, State 6, Line 1, Procedure missing: Invalid object name 'missing'.
CREATE VIEW loop1 AS SELECT 1 AS a -->
CREATE VIEW loop2 AS SELECT * FROM loop1 -->
ALTER VIEW loop1 AS SELECT * FROM loop2 --> Msg 4429, Level 16, State 1, Line 1, Procedure loop1: View or function 'loop1' contains a self-reference. Views or functions cannot reference themselves directly or indirectly.
DROP VIEW loop2, nested DROP VIEW IF EXISTS nested DROP VIEW nested --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the view 'nested', because it does not exist or you do not have permission.
DROP FUNCTION below -->
SELECT * FROM nested --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'nested'.
SELECT * FROM (SELECT id FROM item ORDER BY id) q --> Msg 1033, Level 15, State 1, Line 1: The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table expressions, unless TOP, OFFSET or FOR XML is also specified.
-- ALTER is stored as CREATE
CREATE VIEW altered AS SELECT 1 AS a -->
/* ALTER */ ALTER VIEW altered AS SELECT 2 AS a -->
EXEC sp_helptext 'altered' --> Text nvarchar(255)? = /* ALTER */ CREATE VIEW altered AS SELECT 2 AS a --> 
