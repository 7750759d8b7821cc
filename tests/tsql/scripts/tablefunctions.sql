-- functions of several statements that return a table
CREATE TABLE item (id int PRIMARY KEY, name nvarchar(20), price decimal(9, 2), at datetime)
CREATE TABLE made (n int IDENTITY, id int NOT NULL CHECK (id < 100), name nvarchar(20))
INSERT item VALUES (1, N'pen', 1.5, '2024-01-02'), (2, N'ink', 4, NULL), (3, N'Pad', 2.5, '2024-03-04') --> (3 changed)
CREATE FUNCTION dbo.cheap (@most decimal(9, 2), @word nvarchar(9) = N'x') RETURNS @r TABLE (id int NOT NULL PRIMARY KEY, name nvarchar(20), word nvarchar(9) DEFAULT N'none', twice AS id * 2) WITH SCHEMABINDING AS
BEGIN
    DECLARE @n int, @own TABLE (k int IDENTITY(5, 5), name nvarchar(20))
    INSERT INTO @own (name) SELECT name FROM item WHERE price <= @most
    INSERT @r (id, name) SELECT id, name FROM item WHERE price <= @most
    IF NOT EXISTS (SELECT * FROM @own) BEGIN INSERT @r (id, name) VALUES (0, N'nothing') RETURN END
    DELETE FROM @r WHERE id > 2 AND @word = N'few'
    SELECT @n = MAX(k) FROM @own
    UPDATE @r SET name = name + N' ' + CAST(@n AS nvarchar(9)), word = @word WHERE id = 1
    RETURN
END -->
SELECT * FROM dbo.cheap(3, DEFAULT) ORDER BY id
SELECT c.id, c.name, c.word FROM cheap(3, N'few') c JOIN item i ON i.id = c.id AND i.name = N'PEN'
SELECT name FROM dbo.cheap(0, N'') AS c
--> id int | name nvarchar(20)? | word nvarchar(9)? | twice int? = 1 | pen 10 | x | 2; 3 | Pad | none | 6 (2 rows) --> id int = 1 | name nvarchar(20)? = pen 10 | word nvarchar(9)? = few (1 rows)
--> name nvarchar(20)? = nothing (1 rows)
DECLARE @p decimal(9, 2) = 2.5, @i int = 0
SELECT i.id, c.id FROM item i LEFT JOIN dbo.cheap(@p, N'a') c ON c.id = i.id ORDER BY 1
SELECT i.id, c.id FROM item i CROSS APPLY dbo.cheap(@p + 1, N'a') c WHERE c.id < i.id ORDER BY 1, 2
WHILE @i < 3 BEGIN SET @i = @i + 1 INSERT made (id) SELECT COUNT(*) FROM dbo.cheap(@i, N'a') END
SELECT id FROM made ORDER BY n
DELETE made --> id int | id int? = 1 | 1; 2 | NULL; 3 | 3 (3 rows) --> id int | id int = 2 | 1; 3 | 1 (2 rows) (1 changed) (1 changed) (1 changed) --> id int = 1; 1; 2 (3 rows) (3 changed)
INSERT made (id, name) SELECT id, name FROM dbo.cheap(3, N'q') ORDER BY id
SELECT SCOPE_IDENTITY() s, @@IDENTITY i, @@ROWCOUNT r
INSERT made (id) SELECT c.id + 98 FROM dbo.cheap(3, N'q') c
UPDATE m SET name = c.name FROM made m JOIN dbo.cheap(9, N'z') c ON c.id = m.id WHERE c.id = 3
DELETE made WHERE id IN (SELECT id FROM dbo.cheap(2, N''))
SELECT id, name FROM made
SELECT * INTO copied FROM dbo.cheap(3, N'q') SELECT id, word FROM copied
--> (2 changed) --> s decimal(38,0)? = 5 | i decimal(38,0)? = 5 | r int? = 2 (1 rows)
--> Msg 547, Level 16, State 0, Line 3: The INSERT statement conflicted with the CHECK constraint "CK__made__3_4". The conflict occurred in database "master", table "dbo.made", column 'id'. (3621) (1 changed) (1 changed)
--> id int = 3 | name nvarchar(20)? = Pad (1 rows) (2 changed) --> id int | word nvarchar(9)? = 1 | q; 3 | none (2 rows)
BEGIN TRAN
INSERT made (id) SELECT id FROM dbo.cheap(3, N'q')
ROLLBACK
SELECT COUNT(*) c, (SELECT COUNT(*) FROM made) m FROM dbo.cheap(3, N'q') --> (2 changed) --> c int? = 2 | m int? = 1 (1 rows)
-- an error ends it; calls of each other; a view and an inline function use it
CREATE FUNCTION fails (@a int) RETURNS @r TABLE (id int PRIMARY KEY) AS BEGIN INSERT @r SELECT @a INSERT @r SELECT 1 RETURN END -->
SELECT id FROM fails(2)
BEGIN TRY SELECT id FROM fails(1) END TRY BEGIN CATCH SELECT ERROR_NUMBER() n END CATCH --> id int = 2; 1 (2 rows) --> n int? = 2627 (1 rows)
CREATE FUNCTION tree (@n int) RETURNS @r TABLE (n int) AS BEGIN INSERT @r VALUES (@n) IF @n > 0 INSERT @r SELECT n FROM dbo.tree(@n - 1) RETURN END -->
SELECT * FROM tree(4)
SELECT COUNT(*) c FROM tree(40) --> n int? = 4; 3; 2; 1; 0 (5 rows) --> Msg 217, Level 16, State 1, Line 2: Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
CREATE VIEW leaves AS SELECT t.n FROM tree(2) t -->
CREATE FUNCTION above (@least int) RETURNS TABLE AS RETURN SELECT n FROM tree(@least + 2) WHERE n > @least -->
SELECT l.n, a.n FROM leaves l JOIN above(1) a ON a.n > l.n ORDER BY 1, 2
SELECT n FROM tree('x') --> n int? | n int? = 0 | 2; 0 | 3; 1 | 2; 1 | 3; 2 | 3 (5 rows) --> Msg 245, Level 16, State 1, Line 2: Conversion failed when converting the varchar value 'x' to data type int.
CREATE FUNCTION parts (@list nvarchar(99), @by nchar(1)) RETURNS @r TABLE (place int IDENTITY, part nvarchar(99)) AS BEGIN INSERT @r (part) SELECT value FROM STRING_SPLIT(@list, @by) RETURN END -->
SELECT i.id, p.place, p.part FROM item i, dbo.parts('s1.x.''s2.', '.') p WHERE p.place = i.id ORDER BY 1 --> id int | place int* | part nvarchar(99)? = 1 | 1 | s1; 2 | 2 | x; 3 | 3 | 's2 (3 rows)
SELECT n FROM dbo.tree((SELECT MAX(id) FROM item) - 1) t WHERE n > 0 ORDER BY n --> n int? = 1; 2 (2 rows)
-- the catalogue
SELECT name, type, type_desc FROM sys.objects WHERE type IN ('TF', 'IF') ORDER BY name
SELECT p.name, parameter_id, TYPE_NAME(user_type_id) t FROM sys.parameters p WHERE object_id = OBJECT_ID('cheap', 'TF')
SELECT ROUTINE_NAME, ROUTINE_TYPE FROM INFORMATION_SCHEMA.ROUTINES WHERE ROUTINE_NAME = 'tree'
--> name nvarchar(128)? | type char(2)? | type_desc nvarchar(60)? --> above | IF | SQL_INLINE_TABLE_VALUED_FUNCTION --> cheap | TF | SQL_TABLE_VALUED_FUNCTION
--> fails | TF | SQL_TABLE_VALUED_FUNCTION --> parts | TF | SQL_TABLE_VALUED_FUNCTION --> tree | TF | SQL_TABLE_VALUED_FUNCTION (5 rows)
--> name nvarchar(128)? | parameter_id int? | t nvarchar(128)? = @most | 1 | decimal; @word | 2 | nvarchar (2 rows)
--> ROUTINE_NAME nvarchar(128)? = tree | ROUTINE_TYPE nvarchar(20)? = FUNCTION (1 rows)
ALTER FUNCTION fails () RETURNS @r TABLE (a int, b int) AS BEGIN INSERT @r VALUES (1, 2) RETURN END -->
SELECT * FROM fails()
SELECT * FROM fails(1) --> a int? = 1 | b int? = 2 (1 rows) --> Msg 8144, Level 16, State 2, Line 2: Procedure or function dbo.fails has too many arguments specified.
SELECT dbo.fails() --> Msg 4121, Level 16, State 1, Line 1: Cannot find either column "dbo" or the user-defined function or aggregate "dbo.fails", or the name is ambiguous.
DROP PROCEDURE fails --> Msg 3705, Level 16, State 1, Line 1: Cannot use DROP PROCEDURE with 'fails' because 'fails' is a function. Use DROP FUNCTION.
DROP FUNCTION fails SELECT * FROM fails() --> Msg 208, Level 16, State 1, Line 1: Invalid object name 'fails'.
CREATE FUNCTION aliased () RETURNS @r TABLE (id int, name nvarchar(20)) AS BEGIN INSERT @r (id) VALUES (1), (2), (9) UPDATE r SET name = i.name FROM @r AS r JOIN item i ON i.id = r.id DELETE r FROM @r r LEFT JOIN item i ON i.id = r.id WHERE i.id IS NULL RETURN END -->
SELECT * FROM aliased() --> id int? | name nvarchar(20)? = 1 | pen; 2 | ink (2 rows)
-- what is refused
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN UPDATE i SET name = N'' FROM @r r JOIN item i ON i.id = r.a RETURN END --> Msg 443, Level 16, State 14, Line 2, Procedure side: Invalid use of a side-effecting operator 'UPDATE' within a function.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN INSERT made (id) VALUES (1) RETURN END --> Msg 443, Level 16, State 14, Line 1, Procedure side: Invalid use of a side-effecting operator 'INSERT' within a function.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN INSERT @r OUTPUT inserted.a VALUES (1) RETURN END --> Msg 443, Level 16, State 14, Line 1, Procedure side: Invalid use of a side-effecting operator 'INSERT' within a function.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN CREATE TABLE #t (a int) RETURN END --> Msg 443, Level 16, State 14, Line 1, Procedure side: Invalid use of a side-effecting operator 'CREATE' within a function.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN RETURN 5 END --> Msg 178, Level 15, State 1, Line 1, Procedure side: A RETURN statement with a return value cannot be used in this context.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN INSERT @r VALUES (1) END --> Msg 455, Level 16, State 2, Line 2, Procedure side: The last statement included within a function must be a return statement.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN SELECT 1 RETURN END --> Msg 444, Level 16, State 2, Line 1, Procedure side: Select statements included within a function cannot return data to a client.
CREATE FUNCTION side () RETURNS @r int AS BEGIN RETURN END --> Msg 156, Level 15, State 1, Line 1, Procedure side: Incorrect syntax near the keyword 'AS'.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN INSERT @r (b) VALUES (1) RETURN END --> Msg 207, Level 16, State 1, Line 1, Procedure side: Invalid column name 'b'.
CREATE FUNCTION side () RETURNS @r TABLE (a int) AS BEGIN INSERT @r EXEC ('SELECT 1') RETURN END -->
SELECT * FROM side() --> Msg 557, Level 16, State 2, Line 1: Only functions and some extended stored procedures can be executed from within a function.
CREATE FUNCTION counted (@n int) RETURNS int AS BEGIN RETURN (SELECT COUNT(*) FROM dbo.tree(@n)) END -->
SELECT dbo.counted(id) FROM item --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a table function of several statements in a scalar function.
SELECT t.n FROM item i CROSS APPLY dbo.tree(i.id) t --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support columns as arguments of a table function of several statements.
CREATE FUNCTION total () RETURNS int AS BEGIN DECLARE @t TABLE (v int) RETURN 1 END --> Msg 50000, Level 16, State 1, Line 1, Procedure total: tsqlbox does not support table variables inside scalar functions.
