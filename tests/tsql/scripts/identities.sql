CREATE TABLE Steps (id int IDENTITY(10, 5) PRIMARY KEY, w varchar(5)) INSERT Steps VALUES ('a'), ('b')
INSERT Steps (w) SELECT w + '2' FROM Steps SELECT * FROM Steps
SELECT SCOPE_IDENTITY(), @@IDENTITY, IDENT_CURRENT('Steps'), IDENT_SEED('Steps'), IDENT_INCR('Steps')
--> (2 changed) (2 changed) --> id int* | w varchar(5)? = 10 | a; 15 | b; 20 | a2; 25 | b2 (4 rows)
--> - decimal(38,0)? = 25 | - decimal(38,0)? = 25 | - decimal(38,0)? = 25 | - decimal(38,0)? = 10 | - decimal(38,0)? = 5 (1 rows)
SET IDENTITY_INSERT Steps ON INSERT Steps (id, w) VALUES (52, 'x'), (3, 'y') SET IDENTITY_INSERT Steps OFF
INSERT Steps DEFAULT VALUES INSERT Steps (w) OUTPUT inserted.id VALUES ('z')
SELECT name, seed_value, increment_value FROM sys.identity_columns --> (2 changed) (1 changed) --> id int* = 62 (1 rows) --> name nvarchar(128)? = id | seed_value bigint? = 10 | increment_value bigint? = 5 (1 rows)
INSERT Steps VALUES ('too long') --> Msg 2628, Level 16, State 1, Line 1: String or binary data would be truncated in table 'master.dbo.Steps', column 'w'. Truncated value: 'too l'. (3621)
BEGIN TRAN INSERT Steps VALUES ('r') ROLLBACK INSERT Steps VALUES ('s') SELECT MAX(id) FROM Steps
DBCC CHECKIDENT (Steps) DBCC CHECKIDENT (Steps, RESEED, 100) INSERT Steps VALUES ('t') SELECT MAX(id) FROM Steps
TRUNCATE TABLE Steps INSERT Steps VALUES ('u') SELECT * FROM Steps
--> (1 changed) (1 changed) --> - int? = 72 (1 rows) --> Msg 7998, Level 0, State 1, Line 2: Checking identity information: current identity value '72', current column value '72'. (2528)
--> Msg 7998, Level 0, State 1, Line 2: Checking identity information: current identity value '72'. (2528) (1 changed) --> - int? = 105 (1 rows) (1 changed)
--> id int* = 10 | w varchar(5)? = u (1 rows)
CREATE TABLE Down (w varchar(5), id smallint IDENTITY(-1, -1)) INSERT Down VALUES ('a'), ('b')
INSERT Down VALUES ('c') SELECT * FROM Down ORDER BY id
SELECT SCOPE_IDENTITY(), IDENT_CURRENT('Down'), IDENT_INCR('Down')
SET IDENTITY_INSERT Down ON INSERT Down (w, id) VALUES ('x', -10), ('y', 100) SET IDENTITY_INSERT Down OFF
INSERT Down VALUES ('d') SELECT * FROM Down ORDER BY id DBCC CHECKIDENT (Down, NORESEED)
DBCC CHECKIDENT (Down, RESEED, -20) INSERT Down VALUES ('e') SELECT MIN(id) FROM Down
--> (2 changed) (1 changed) --> w varchar(5)? | id smallint* = c | -3; b | -2; a | -1 (3 rows)
--> - decimal(38,0)? = -3 | - decimal(38,0)? = -3 | - decimal(38,0)? = -1 (1 rows) (2 changed) (1 changed) --> w varchar(5)? | id smallint* = d | -11; x | -10; c | -3; b | -2; a | -1; y | 100 (6 rows)
--> Msg 7998, Level 0, State 1, Line 5: Checking identity information: current identity value '-11', current column value '-11'. (2528)
--> Msg 7998, Level 0, State 1, Line 6: Checking identity information: current identity value '-11'. (2528) (1 changed) --> - smallint? = -21 (1 rows)
CREATE TABLE Bad (id int IDENTITY(1, 0)) --> Msg 2753, Level 16, State 1, Line 1: Identity column 'id' contains invalid INCREMENT.
DECLARE @t TABLE (id int IDENTITY(100, -10), w char(1)) INSERT @t VALUES ('a'), ('b') SELECT * FROM @t
SELECT * INTO Copied FROM Steps INSERT Copied VALUES ('n') SELECT * FROM Copied --> (2 changed) --> id int* | w char(1)? = 90 | b; 100 | a (2 rows) (1 changed) (1 changed) --> id int* | w varchar(5)? = 10 | u; 15 | n (2 rows)
SELECT IDENTITY(int, 10, 1) AS id, name = v.n INTO Numbered FROM (VALUES ('b'), ('a'), (NULL)) v (n) ORDER BY v.n DESC
SELECT * FROM Numbered INSERT Numbered VALUES ('c') SELECT SCOPE_IDENTITY(), IDENT_CURRENT('Numbered')
SELECT no = IDENTITY(bigint), * INTO #n FROM (SELECT name FROM Numbered) q SELECT * FROM #n
SELECT IDENTITY(int, 1, 1) AS only INTO #o FROM Numbered SELECT COUNT(*), MAX(only) FROM #o
--> (3 changed) --> id int* | name varchar(1)? = 10 | b; 11 | a; 12 | NULL (3 rows) (1 changed) --> - decimal(38,0)? = 13 | - decimal(38,0)? = 13 (1 rows) (4 changed)
--> no bigint* | name varchar(1)? = 1 | b; 2 | a; 3 | NULL; 4 | c (4 rows) (4 changed) --> - int? = 4 | - int? = 4 (1 rows)
SELECT IDENTITY(int, 1, 1) AS i, * INTO Twice FROM Numbered --> Msg 2744, Level 16, State 1, Line 1: Multiple identity columns specified for table 'Twice'. Only one identity column per table is allowed.
SELECT IDENTITY(smallint, 5, -5) AS i, a.id INTO Joined FROM Numbered a JOIN Numbered b ON a.id = b.id
SELECT * FROM Joined ORDER BY i DESC INSERT Joined VALUES (1) SELECT MIN(i) FROM Joined --> (4 changed) --> i smallint* | id int = 5 | 10; 0 | 11; -5 | 12; -10 | 13 (4 rows) (1 changed) --> - smallint? = -15 (1 rows)
SELECT IDENTITY(int, 1, 1) AS i FROM Numbered --> Msg 177, Level 15, State 1, Line 1: The IDENTITY function can only be used when the SELECT statement has an INTO clause.
SELECT IDENTITY(varchar(10), 1, 1) AS i INTO Odd FROM Numbered --> Msg 2749, Level 16, State 1, Line 1: Identity column 'i' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0, and constrained to be nonnullable.
SELECT IDENTITY(int, 1, 1) AS i INTO Odd FROM Numbered UNION ALL SELECT 1 --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support IDENTITY() in a UNION.
DELETE Numbered OUTPUT IDENTITY(int, 1, 1) AS x --> Msg 177, Level 15, State 1, Line 1: The IDENTITY function can only be used when the SELECT statement has an INTO clause.
CREATE TABLE Plain (w varchar(5) CONSTRAINT UQ_w UNIQUE, n int) INSERT Plain VALUES ('a', 1), ('b', 2), ('c', 3)
DELETE Plain WHERE w = 'b' ALTER TABLE Plain ADD id int IDENTITY(100, 10) CONSTRAINT PK_Plain PRIMARY KEY
INSERT Plain VALUES ('d', 4) SELECT * FROM Plain UPDATE Plain SET n = n * 10 WHERE id = 110
SELECT n, IDENT_CURRENT('Plain'), COLUMNPROPERTY(OBJECT_ID('Plain'), 'id', 'IsIdentity') FROM Plain WHERE w = 'c' --> (3 changed) (1 changed) (1 changed) --> w varchar(5)? | n int? | id int* = a | 1 | 100; c | 3 | 110; d | 4 | 120 (3 rows) (1 changed) --> n int? = 30 | - decimal(38,0)? = 120 | - int? = 1 (1 rows)
INSERT Plain VALUES ('d', 4) --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ_w'. Cannot insert duplicate key in object 'dbo.Plain'. The duplicate key value is (d). (3621)
ALTER TABLE Plain ADD other int IDENTITY --> Msg 2744, Level 16, State 1, Line 1: Multiple identity columns specified for table 'Plain'. Only one identity column per table is allowed.
CREATE TABLE Empty (a int) ALTER TABLE Empty ADD id bigint IDENTITY NOT NULL INSERT Empty VALUES (7)
SELECT * FROM Empty --> (1 changed) --> a int? = 7 | id bigint* = 1 (1 rows)
DECLARE @t TABLE (id int IDENTITY(10, 10), w char(1)) BEGIN TRAN INSERT @t VALUES ('a'), ('b') ROLLBACK
INSERT @t VALUES ('c') SELECT * FROM @t --> (2 changed) (1 changed) --> id int* | w char(1)? = 10 | a; 20 | b; 30 | c (3 rows)
CREATE TABLE Small (id tinyint IDENTITY(200, 50), a int) INSERT Small VALUES (1), (2) INSERT Small VALUES (3) --> (2 changed) --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type tinyint. (3621)
CREATE TABLE Ends (id tinyint IDENTITY(254, 1), w varchar(5)) INSERT Ends VALUES ('a'), ('b') INSERT Ends VALUES ('c') --> (2 changed) --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type tinyint. (3621)
SELECT IDENT_CURRENT('Ends'), SCOPE_IDENTITY(), COUNT(*) FROM Ends --> - decimal(38,0)? = 255 | - decimal(38,0)? = 255 | - int? = 2 (1 rows)
SELECT IDENTITY(tinyint, 255, 1) AS i INTO CopiedEnds FROM Ends --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type tinyint. (3621)
CREATE TABLE Later (w int) INSERT Later VALUES (1), (2) --> (2 changed)
ALTER TABLE Later ADD id tinyint IDENTITY(255, 1) --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type tinyint.
CREATE TABLE Widest (id bigint IDENTITY(9223372036854775807, 1), w varchar(5)) INSERT Widest VALUES ('a') INSERT Widest VALUES ('b') --> (1 changed) --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type bigint. (3621)
-- the setting may change before a statement runs
CREATE TABLE Chosen (id int IDENTITY(1,1), w int) SET IDENTITY_INSERT Chosen ON -->
INSERT Chosen VALUES (1) INSERT Chosen (id, w) VALUES (7, 7) SET IDENTITY_INSERT Chosen OFF INSERT Chosen VALUES (8)
SELECT id FROM Chosen
--> Msg 545, Level 16, State 1, Line 1: Explicit value must be specified for identity column in table 'Chosen' either when IDENTITY_INSERT is set to ON or when a replication user is inserting into a NOT FOR REPLICATION identity column. (1 changed) (1 changed)
--> id int* = 7; 8 (2 rows)
-- the type of an identity
CREATE TABLE counted (id int IDENTITY(300,5) NOT NULL, a int) INSERT counted VALUES (1) ALTER TABLE counted ALTER COLUMN id tinyint NOT NULL --> (1 changed) --> Msg 220, Level 16, State 2, Line 2: Arithmetic overflow error for data type tinyint, value = 300. (3621)
ALTER TABLE counted ALTER COLUMN id bigint NOT NULL DBCC CHECKIDENT (counted, RESEED, 3000000000) WITH NO_INFOMSGS INSERT counted VALUES (2) SELECT * FROM counted --> (1 changed) --> id bigint* | a int? = 300 | 1; 3000000005 | 2 (2 rows)
ALTER TABLE counted ALTER COLUMN id varchar(9) NOT NULL --> Msg 2749, Level 16, State 1, Line 1: Identity column 'id' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0, and constrained to be nonnullable.
ALTER TABLE counted ALTER COLUMN id int NULL --> Msg 8147, Level 16, State 1, Line 1: Could not create IDENTITY attribute on nullable column 'id', table 'counted'.
CREATE TABLE Few (id tinyint IDENTITY(205, 50), w int) INSERT Few VALUES (1), (2) INSERT Few VALUES (3)
SELECT IDENT_CURRENT('Few') --> (2 changed) --> Msg 8115, Level 16, State 1, Line 1: Arithmetic overflow error converting IDENTITY to data type tinyint. (3621) --> - decimal(38,0)? = 255 (1 rows)
-- SQLite counts from 1.
CREATE TABLE Zero (id int IDENTITY(0, 1), w int) INSERT Zero VALUES (1), (2)
CREATE TABLE Below (id int IDENTITY(-7, 3) PRIMARY KEY, w int CHECK (w > 0)) INSERT Below VALUES (1), (2)
INSERT Below VALUES (0) INSERT Below VALUES (4)
SELECT Zero.id, Below.id FROM Zero FULL JOIN Below ON Zero.w = Below.w ORDER BY 2
SELECT IDENT_CURRENT('Zero'), IDENT_CURRENT('Below')
--> (2 changed) (2 changed)
--> Msg 547, Level 16, State 0, Line 4: The INSERT statement conflicted with the CHECK constraint "CK__Below__20_22". The conflict occurred in database "master", table "dbo.Below", column 'w'. (3621) (1 changed)
--> id int*? | id int*? = 0 | -7; 1 | -4; NULL | 2 (3 rows) --> - decimal(38,0)? = 1 | - decimal(38,0)? = 2 (1 rows)
DECLARE @kept TABLE (id int IDENTITY(10, 5), w int) BEGIN TRAN INSERT Zero VALUES (3) ROLLBACK INSERT @kept VALUES (1), (2) SELECT id FROM @kept --> (1 changed) (2 changed) --> id int* = 10; 15 (2 rows)
