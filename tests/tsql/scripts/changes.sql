CREATE TABLE c (id int IDENTITY(100,1), nm nvarchar(5) UNIQUE, ch char(3) DEFAULT 'ab', v int CONSTRAINT CK_v CHECK (v > 0), CONSTRAINT PK_c PRIMARY KEY (id)) -->
CREATE TABLE d (id int NOT NULL, cid int CONSTRAINT FK_d REFERENCES c(id))
INSERT c (nm, v) VALUES (N'Ünï', 1)
INSERT c VALUES ('two', DEFAULT, 2), ('three', 'x', 3)
SELECT @@IDENTITY, SCOPE_IDENTITY(), IDENT_CURRENT('c'), @@ROWCOUNT
SELECT *, '[' + ch + ']' FROM c
INSERT c (nm, v) VALUES (N'ünï', 1)
SELECT @@ERROR, @@ROWCOUNT
INSERT c (nm, v) VALUES (N'toolong', 1)
INSERT c (nm, v) VALUES (N'x', 0)
INSERT d (cid) VALUES (1)
INSERT d VALUES (1, 77)
INSERT d VALUES (1, 100)
DELETE c WHERE id = 100
--> (1 changed) (2 changed) --> - decimal(38,0)? = 102 | - decimal(38,0)? = 102 | - decimal(38,0)? = 102 | - int? = 2 (1 rows)
--> id int* | nm nvarchar(5)? | ch char(3)? | v int? | - varchar(5)? = 100 | Ünï | ab  | 1 | [ab ]; 101 | two | ab  | 2 | [ab ]; 102 | three | x   | 3 | [x  ] (3 rows)
--> Msg 2627, Level 14, State 1, Line 6: Violation of UNIQUE KEY constraint 'UQ__c__1_2'. Cannot insert duplicate key in object 'dbo.c'. The duplicate key value is (ünï). (3621)
--> - int? = 2627 | - int? = 0 (1 rows) --> Msg 2628, Level 16, State 1, Line 8: String or binary data would be truncated in table 'master.dbo.c', column 'nm'. Truncated value: 'toolo'. (3621)
--> Msg 547, Level 16, State 0, Line 9: The INSERT statement conflicted with the CHECK constraint "CK_v". The conflict occurred in database "master", table "dbo.c", column 'v'. (3621)
--> Msg 515, Level 16, State 2, Line 10: Cannot insert the value NULL into column 'id', table 'master.dbo.d'; column does not allow nulls. INSERT fails. (3621)
--> Msg 547, Level 16, State 0, Line 11: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_d". The conflict occurred in database "master", table "dbo.c", column 'id'. (3621) (1 changed)
--> Msg 547, Level 16, State 0, Line 13: The DELETE statement conflicted with the REFERENCE constraint "FK_d". The conflict occurred in database "master", table "dbo.d", column 'cid'. (3621)
INSERT d VALUES (1) --> Msg 213, Level 16, State 1, Line 1: Column name or number of supplied values does not match table definition.
EXEC ('SET IDENTITY_INSERT c ON SET LOCK_TIMEOUT 5') PRINT @@LOCK_TIMEOUT --> -1
INSERT c (id, nm, v) VALUES (7, 'y', 4) --> Msg 544, Level 16, State 1, Line 1: Cannot insert explicit value for identity column in table 'c' when IDENTITY_INSERT is set to OFF.
SET IDENTITY_INSERT c ON -->
INSERT c (id, nm, v) VALUES (7, 'y', 4) SET IDENTITY_INSERT c OFF --> (1 changed)
INSERT c (id, nm, v) VALUES (8, 'z', 2) --> Msg 544, Level 16, State 1, Line 1: Cannot insert explicit value for identity column in table 'c' when IDENTITY_INSERT is set to OFF.
CREATE UNIQUE INDEX ix_v ON c (v DESC) -->
INSERT c (nm, v) VALUES ('w', 4) --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.c' with unique index 'ix_v'. The duplicate key value is (4). (3621)
UPDATE c SET v = v + 10, ch = DEFAULT WHERE id > 100 --> (2 changed)
UPDATE x SET v += d.id FROM c x INNER JOIN d ON x.id = d.cid --> (1 changed)
UPDATE TOP (1) c SET nm = 'first' WHERE id < 100 --> (1 changed)
UPDATE c SET id = 1 --> Msg 8102, Level 16, State 1, Line 1: Cannot update identity column 'id'.
SELECT id, nm, ch, v FROM c ORDER BY id --> id int* | nm nvarchar(5)? | ch char(3)? | v int? = 7 | first | ab  | 4; 100 | Ünï | ab  | 2; 101 | two | ab  | 12; 102 | three | ab  | 13 (4 rows)
DELETE d FROM d JOIN c ON c.id = d.cid WHERE c.v = 2 --> (1 changed)
DELETE FROM c WHERE nm = 'nobody' DELETE TOP (1) FROM c WHERE id > 100 SELECT COUNT(*) FROM c --> (0 changed) (1 changed) --> - int? = 3 (1 rows)
SELECT id, v * 2 AS w INTO #copy FROM c SELECT * FROM #copy --> (3 changed) --> id int* | w int? = 7 | 8; 100 | 4; 102 | 26 (3 rows)
ALTER TABLE #copy ADD note varchar(10) NOT NULL DEFAULT 'n' ALTER TABLE #copy DROP COLUMN w -->
SELECT * FROM tempdb..#copy --> id int* | note varchar(10) = 7 | n; 100 | n; 102 | n (3 rows)
TRUNCATE TABLE d DROP TABLE #copy SELECT * FROM #copy --> Msg 208, Level 16, State 1, Line 1: Invalid object name '#copy'.
SELECT name, xtype FROM sysobjects WHERE xtype IN ('U', 'PK') ORDER BY name --> name nvarchar(128)? | xtype char(2)? = c | U; d | U; PK_c | PK (3 rows)
SELECT COLUMN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, IS_NULLABLE, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'C'
--> COLUMN_NAME nvarchar(128)? | DATA_TYPE nvarchar(128)? | CHARACTER_MAXIMUM_LENGTH int? | IS_NULLABLE varchar(3)? | COLUMN_DEFAULT nvarchar(4000)? --> id | int | NULL | NO | NULL
--> nm | nvarchar | 5 | YES | NULL --> ch | char | 3 | YES | ('ab') --> v | int | NULL | YES | NULL (4 rows)
IF OBJECT_ID('d', 'U') IS NOT NULL DROP TABLE d -->
DROP TABLE d --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the table 'd', because it does not exist or you do not have permission.
DROP TABLE IF EXISTS d -->
CREATE TABLE c (x int) --> Msg 2714, Level 16, State 6, Line 1: There is already an object named 'c' in the database.
-- the changed table may have one alias in FROM
CREATE TABLE p (id int, v int)
INSERT p VALUES (1, 10), (2, 20)
UPDATE p SET v += 1 FROM p AS q WHERE q.id = 1
DELETE p FROM p q JOIN c ON 1 = 1 WHERE q.id = 2 SELECT * FROM p --> (2 changed) (1 changed) (1 changed) --> id int? = 1 | v int? = 11 (1 rows)
UPDATE p SET v = 0 FROM p q JOIN p r ON q.id = r.id --> Msg 8154, Level 16, State 1, Line 1: The table 'p' is ambiguous.
UPDATE p SET v = 0, v = 1 --> Msg 264, Level 16, State 1, Line 1: The column name 'v' is specified more than once in the SET clause or column list of an INSERT. A column cannot be assigned more than one value in the same clause. Modify the clause to make sure that a column is updated only once. If this statement updates or inserts columns into a view, column aliasing can conceal the duplication in your code.
-- SELECT INTO: columns of an outer join are nullable, constants and ISNULL are not; an identity is inherited
-- if there is only one table
CREATE TABLE owner (id int IDENTITY PRIMARY KEY, name varchar(10) NOT NULL) -->
CREATE TABLE pet (owner int NOT NULL, pet varchar(10) NOT NULL, age int) -->
INSERT owner VALUES ('Ann'), ('Bob') INSERT pet VALUES (1, 'cat', 3), (1, 'dog', NULL) --> (2 changed) (2 changed)
SELECT o.id, o.name, p.pet, ISNULL(p.age, 0) age, 'x' kind INTO #pets FROM owner o LEFT JOIN pet p ON p.owner = o.id --> (3 changed)
SELECT * FROM #pets ORDER BY id, pet --> id int | name varchar(10) | pet varchar(10)? | age int | kind varchar(1) = 1 | Ann | cat | 3 | x; 1 | Ann | dog | 0 | x; 2 | Bob | NULL | 0 | x (3 rows)
SELECT o.name, p.owner INTO #all FROM pet p FULL JOIN owner o ON p.owner = o.id AND p.pet = 'cat' SELECT * FROM #all ORDER BY name, owner --> (3 changed) --> name varchar(10)? | owner int? = NULL | 1; Ann | 1; Bob | NULL (3 rows)
SELECT * INTO #both FROM (SELECT id FROM owner UNION ALL SELECT id FROM owner) b --> (4 changed)
SELECT id, name INTO #copy FROM owner INSERT #copy VALUES ('Cid') SELECT * FROM #copy --> (2 changed) (1 changed) --> id int* | name varchar(10) = 1 | Ann; 2 | Bob; 3 | Cid (3 rows)
SELECT * FROM #both --> id int = 1; 2; 1; 2 (4 rows)
DECLARE @rows varchar(max) = 'INSERT nosuch VALUES (1)' + REPLICATE(CAST(',(1)' AS varchar(max)), 1000)
EXEC (@rows) --> Msg 10738, Level 15, State 1, Line 1: The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 row values.
BEGIN TRAN -->
ALTER DATABASE CURRENT SET RECOVERY SIMPLE --> Msg 226, Level 16, State 6, Line 1: ALTER DATABASE statement not allowed within multi-statement transaction.
ROLLBACK -->
UPDATE c SET o.id = 0 FROM owner c JOIN owner o ON o.id = c.id --> Msg 4104, Level 16, State 1, Line 1: The multi-part identifier "o.id" could not be bound.
-- tables within nested joins; defaults that are operations
CREATE TABLE joined (a int DEFAULT 1 + 2 * 3 NOT NULL, b int DEFAULT (1) - (4), c varchar(9) DEFAULT LEFT('abc', 2) + 'x')
INSERT joined DEFAULT VALUES
SELECT * FROM joined --> (1 changed) --> a int = 7 | b int? = -3 | c varchar(9)? = abx (1 rows)
UPDATE x SET b = 1 FROM joined z JOIN (joined x JOIN joined y ON x.a = y.a) ON z.a = x.a
UPDATE x SET b = 2 FROM joined z, joined x JOIN joined y ON x.a = y.a WHERE z.a = x.a
DELETE x FROM joined z LEFT JOIN (joined x JOIN joined y ON x.a = y.a AND y.a = 0) ON z.a = x.a
SELECT z.a, x.b, y.c FROM joined z LEFT JOIN (joined x JOIN joined y ON x.a = y.a AND y.a = 0) ON z.a = x.a
DELETE x FROM joined z LEFT JOIN (joined x JOIN joined y ON x.a = y.a) ON z.a = x.a --> (1 changed) (1 changed) (0 changed) --> a int = 7 | b int? = NULL | c varchar(9)? = NULL (1 rows) (1 changed)
-- OUTPUT of UPDATE: the values before and after
CREATE TABLE #x (id int PRIMARY KEY, v int)
DECLARE @x TABLE (id int PRIMARY KEY, v varchar(10) UNIQUE)
INSERT #x VALUES (1, 10), (2, 20)
INSERT @x VALUES (1, 'a'), (2, 'b')
UPDATE #x SET v += 1, id = 3 - id OUTPUT deleted.id, inserted.id, deleted.v + inserted.v AS sum
UPDATE @x SET v = CASE v WHEN 'a' THEN 'b' ELSE 'a' END OUTPUT deleted.v, inserted.v
UPDATE #x SET v = 0 OUTPUT inserted.v INTO #x (v) WHERE id = 99
BEGIN TRY UPDATE #x SET v = 1 / (id - 2) OUTPUT deleted.* END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
SELECT * FROM #x
--> (2 changed) (2 changed) --> id int | id int | sum int? = 1 | 2 | 21; 2 | 1 | 41 (2 rows) --> v varchar(10)? | v varchar(10)? = a | b; b | a (2 rows) (0 changed) (0 changed)
--> Divide by zero error encountered. --> id int | v int? = 2 | 11; 1 | 21 (2 rows)
CREATE PROCEDURE q @p int AS UPDATE #x SET v = @p OUTPUT deleted.v + @p AS s, inserted.* WHERE id = @p -->
EXEC q 1 --> s int? = 22 | id int = 1 | v int? = 1 (1 rows)
CREATE TABLE dated (d date, b varbinary(3))
INSERT dated SELECT NULL, NULL --> (1 changed)
-- the values of several rows have a common type
CREATE TABLE unified (a varchar(10), b varchar(10) DEFAULT 'd')
INSERT unified VALUES ('007', DEFAULT), (1, 'b') INSERT unified (a) VALUES (1), (2.5)
SELECT * FROM unified
INSERT unified (a) VALUES ('x'), (1)
--> (2 changed) (2 changed) --> a varchar(10)? | b varchar(10)? = 7 | d; 1 | b; 1.0 | d; 2.5 | d (4 rows)
--> Msg 245, Level 16, State 1, Line 5: Conversion failed when converting the varchar value 'x' to data type int.
