CREATE TABLE parent (id int NOT NULL, code varchar(10) NOT NULL, CONSTRAINT PK_parent PRIMARY KEY (id), CONSTRAINT UQ_parent UNIQUE (code, id)) -->
CREATE TABLE other (id int IDENTITY(5,1) PRIMARY KEY, nm nvarchar(20) NULL) -->
CREATE TABLE child (id int NOT NULL, parent int NULL CONSTRAINT FK_parent REFERENCES parent, other int NULL, n int NULL CONSTRAINT CK_n CHECK (n < 10), CONSTRAINT FK_other FOREIGN KEY (other) REFERENCES other (id) ON DELETE CASCADE NOT FOR REPLICATION, CONSTRAINT CK_both CHECK (n <> id)) -->
CREATE UNIQUE INDEX ix_child ON child (id, n) -->
INSERT parent VALUES (1, 'a'), (2, 'b') --> (2 changed)
INSERT other VALUES (N'fünf') --> (1 changed)
-- errors name the key, its values, table and column
INSERT parent VALUES (1, 'c') --> Msg 2627, Level 14, State 1, Line 2: Violation of PRIMARY KEY constraint 'PK_parent'. Cannot insert duplicate key in object 'dbo.parent'. The duplicate key value is (1). (3621)
INSERT parent SELECT 3, 'c' UNION ALL SELECT 3, 'd' --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_parent'. Cannot insert duplicate key in object 'dbo.parent'. The duplicate key value is (3). (3621)
INSERT child VALUES (1, 1, 5, 2) --> (1 changed)
INSERT child SELECT 1, NULL, NULL, 2 --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.child' with unique index 'ix_child'. The duplicate key value is (1, 2). (3621)
INSERT child VALUES (30, 99, 5, 2) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_parent". The conflict occurred in database "master", table "dbo.parent", column 'id'. (3621)
INSERT child VALUES (30, 1, 5, 10) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_n". The conflict occurred in database "master", table "dbo.child", column 'n'. (3621)
INSERT child VALUES (2, 1, 5, 2) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_both". The conflict occurred in database "master", table "dbo.child". (3621)
INSERT child VALUES (NULL, 1, 5, 2) --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'id', table 'master.dbo.child'; column does not allow nulls. INSERT fails. (3621)
UPDATE child SET id = NULL --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'id', table 'master.dbo.child'; column does not allow nulls. UPDATE fails. (3621)
DELETE parent WHERE id = 1 --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the REFERENCE constraint "FK_parent". The conflict occurred in database "master", table "dbo.child", column 'parent'. (3621)
UPDATE parent SET id = 7 WHERE id = 1 --> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the REFERENCE constraint "FK_parent". The conflict occurred in database "master", table "dbo.child", column 'parent'. (3621)
DELETE other --> (1 changed)
SELECT COUNT(*) FROM child --> - int? = 0 (1 rows)
TRUNCATE TABLE child -->
-- ALTER TABLE
CREATE TABLE t (a int NOT NULL, b varchar(5) NULL) -->
INSERT t VALUES (1, 'one'), (2, 'two') --> (2 changed)
ALTER TABLE t ADD c int NOT NULL CONSTRAINT DF_c DEFAULT 7, d datetime NULL, CONSTRAINT PK_t PRIMARY KEY (a) -->
ALTER TABLE t ADD e int NULL CONSTRAINT CK_e CHECK (e > 0) CONSTRAINT FK_e REFERENCES parent -->
INSERT t (a, b) VALUES (3, 'three') --> (1 changed)
INSERT t (a, e) VALUES (1, 1) --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_t'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1). (3621)
INSERT t (a, e) VALUES (4, -1) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_e". The conflict occurred in database "master", table "dbo.t", column 'e'. (3621)
INSERT t (a, e) VALUES (4, 9) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_e". The conflict occurred in database "master", table "dbo.parent", column 'id'. (3621)
SELECT * FROM t --> a int | b varchar(5)? | c int | d datetime? | e int? = 1 | one | 7 | NULL | NULL; 2 | two | 7 | NULL | NULL; 3 | three | 7 | NULL | NULL (3 rows)
ALTER TABLE t ADD f int NOT NULL --> Msg 4901, Level 16, State 1, Line 1: ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition specified, or the column being added is an identity or timestamp column, or alternatively if none of the previous conditions are satisfied the table must be empty to allow addition of this column. Column 'f' cannot be added to non-empty table 't' because it does not satisfy these conditions.
ALTER TABLE t ADD c int NULL --> Msg 2705, Level 16, State 1, Line 1: Column names in each table must be unique. Column name 'c' in table 't' is specified more than once.
ALTER TABLE t ADD CONSTRAINT DF_b DEFAULT 'none' FOR b -->
ALTER TABLE t ADD DEFAULT 'again' FOR b --> Msg 1781, Level 16, State 1, Line 1: Column already has a DEFAULT bound to it. (1750)
ALTER TABLE t WITH CHECK ADD CONSTRAINT CK_a CHECK (a > 1) --> Msg 547, Level 16, State 0, Line 1: The ALTER TABLE statement conflicted with the CHECK constraint "CK_a". The conflict occurred in database "master", table "dbo.t", column 'a'.
ALTER TABLE t ADD CONSTRAINT CK_a CHECK (a > 0), CONSTRAINT UQ_b UNIQUE (b) -->
ALTER TABLE t ADD CONSTRAINT UQ_c UNIQUE (c) --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.t' and the index name 'UQ_c'. The duplicate key value is (7). (1750) (3621)
ALTER TABLE t ADD CONSTRAINT FK_c FOREIGN KEY (c) REFERENCES parent (id) --> Msg 547, Level 16, State 0, Line 1: The ALTER TABLE statement conflicted with the FOREIGN KEY constraint "FK_c". The conflict occurred in database "master", table "dbo.parent", column 'id'.
ALTER TABLE t ADD CONSTRAINT FK_d FOREIGN KEY (c) REFERENCES parent (code) --> Msg 1776, Level 16, State 0, Line 1: There are no primary or candidate keys in the referenced table 'parent' that match the referencing column list in the foreign key 'FK_d'. (1750)
ALTER TABLE t ADD CONSTRAINT FK_n FOREIGN KEY (c) REFERENCES nosuch (id) --> Msg 1767, Level 16, State 0, Line 1: Foreign key 'FK_n' references invalid table 'nosuch'. (1750)
ALTER TABLE t ADD PRIMARY KEY (c) --> Msg 1779, Level 16, State 0, Line 1: Table 't' already has a primary key defined on it. (1750)
ALTER TABLE t ADD CONSTRAINT UQ_x UNIQUE (x) --> Msg 1911, Level 16, State 1, Line 1: Column name 'x' does not exist in the target table or view. (1750)
INSERT t (a) VALUES (8) SELECT a, b FROM t WHERE a = 8 --> (1 changed) --> a int = 8 | b varchar(5)? = none (1 rows)
ALTER TABLE t ALTER COLUMN b varchar(20) NULL INSERT t (a, b) VALUES (9, 'more than five') --> (1 changed)
ALTER TABLE t ALTER COLUMN c varchar(10) NOT NULL
--> Msg 5074, Level 16, State 1, Line 1: The object 'DF_c' is dependent on column 'c'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE ALTER COLUMN c failed because one or more objects access this column.
ALTER TABLE t DROP CONSTRAINT DF_c WITH (ONLINE = OFF) ALTER TABLE t ALTER COLUMN c varchar(10) NOT NULL -->
SELECT a, b, c + '!' FROM t --> a int | b varchar(20)? | - varchar(11)? = 1 | one | 7!; 2 | two | 7!; 3 | three | 7!; 8 | none | 7!; 9 | more than five | 7! (5 rows)
ALTER TABLE t ALTER COLUMN c int NULL SELECT MAX(c) + 1 FROM t --> - int? = 8 (1 rows)
ALTER TABLE t ALTER COLUMN e int NOT NULL --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'e', table 'master.dbo.t'; column does not allow nulls. UPDATE fails. (3621)
ALTER TABLE t ALTER COLUMN nosuch int --> Msg 4924, Level 16, State 1, Line 1: ALTER TABLE ALTER COLUMN failed because column 'nosuch' does not exist in table 't'.
ALTER TABLE t DROP COLUMN e
--> Msg 5074, Level 16, State 1, Line 1: The object 'CK_e' is dependent on column 'e'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE DROP COLUMN e failed because one or more objects access this column.
ALTER TABLE t DROP CONSTRAINT CK_e, FK_e, COLUMN e, d -->
ALTER TABLE t DROP CONSTRAINT CK_e --> Msg 3728, Level 16, State 1, Line 1: 'CK_e' is not a constraint. --> Msg 3727, Level 16, State 0, Line 1: Could not drop constraint. See previous errors.
ALTER TABLE t DROP CONSTRAINT IF EXISTS CK_e -->
ALTER TABLE parent DROP CONSTRAINT PK_parent
--> Msg 3725, Level 16, State 0, Line 1: The constraint 'PK_parent' is being referenced by table 'child', foreign key constraint 'FK_parent'.
--> Msg 3727, Level 16, State 0, Line 1: Could not drop constraint. See previous errors.
INSERT t VALUES (1, 'x', 1) --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_t'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1). (3621)
ALTER TABLE t DROP CONSTRAINT PK_t INSERT t VALUES (1, 'x', 1) --> (1 changed)
CREATE UNIQUE INDEX ix_a ON t (a) --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.t' and the index name 'ix_a'. The duplicate key value is (1). (3621)
SELECT name, type FROM sys.objects WHERE parent_object_id = OBJECT_ID('t') ORDER BY name --> name nvarchar(128)? | type char(2)? = CK_a | C; DF_b | D; UQ_b | UQ (3 rows)
BEGIN TRAN -->
ALTER TABLE t ADD g int NULL -->
ALTER TABLE t ADD CONSTRAINT CK_g CHECK (g = 1) -->
ROLLBACK -->
INSERT t VALUES (20, 'y', 1) --> (1 changed)
-- identities
INSERT other VALUES (N'sechs') SELECT MAX(id) FROM other --> (1 changed) --> - int? = 6 (1 rows)
DELETE child ALTER TABLE child DROP CONSTRAINT FK_other TRUNCATE TABLE other --> (0 changed)
INSERT other VALUES (N'neu') SELECT id, IDENT_CURRENT('other') FROM other --> (1 changed) --> id int* = 5 | - decimal(38,0)? = 5 (1 rows)
CREATE TABLE third (id int IDENTITY) SET IDENTITY_INSERT other ON INSERT other (id, nm) VALUES (50, N'x') --> (1 changed)
SET IDENTITY_INSERT third ON --> Msg 8107, Level 16, State 1, Line 1: IDENTITY_INSERT is already ON for table 'master.dbo.other'. Cannot perform SET operation for table 'third'.
SET IDENTITY_INSERT other OFF INSERT other (nm) VALUES (N'y') SELECT SCOPE_IDENTITY() --> (1 changed) --> - decimal(38,0)? = 51 (1 rows)
CREATE TABLE #tmp (id int NOT NULL PRIMARY KEY) INSERT #tmp VALUES (1) --> (1 changed)
INSERT #tmp VALUES (1) --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK__#tmp__1_2'. Cannot insert duplicate key in object 'dbo.#tmp'. The duplicate key value is (1). (3621)
ALTER TABLE #tmp ADD x int NULL CHECK (x > 0) -->
INSERT #tmp VALUES (2, 0) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK__#tmp__1_3". The conflict occurred in database "tempdb", table "dbo.#tmp", column 'x'. (3621)
CREATE TABLE u (id int NOT NULL CONSTRAINT PK_u PRIMARY KEY, nm varchar(10) NULL, ref int NULL CONSTRAINT FK_u REFERENCES u (id)) -->
INSERT u VALUES (1, 'a', NULL), (2, 'b', 1), (3, 'c', NULL) --> (3 changed)
DECLARE @by int SET @by = 1 UPDATE u SET id = 2 WHERE nm = 'c' UPDATE u SET id = id + @by WHERE id > 1 --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_u'. Cannot insert duplicate key in object 'dbo.u'. The duplicate key value is (2). (3621) (2 changed)
UPDATE u SET ref = 77 WHERE id = 3 --> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the FOREIGN KEY SAME TABLE constraint "FK_u". The conflict occurred in database "master", table "dbo.u", column 'id'. (3621)
UPDATE x SET id = 4 FROM u x WHERE x.nm = 'b' --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_u'. Cannot insert duplicate key in object 'dbo.u'. The duplicate key value is (4). (3621)
DELETE u WHERE id = 1 --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the SAME TABLE REFERENCE constraint "FK_u". The conflict occurred in database "master", table "dbo.u", column 'ref'. (3621)
SELECT * FROM u --> id int | nm varchar(10)? | ref int? = 1 | a | NULL; 3 | b | 1; 4 | c | NULL (3 rows)
-- NULLs are equal in a unique key
CREATE TABLE nullable (a int NULL CONSTRAINT UQ_nullable UNIQUE, b varchar(5) NULL, c int NULL) -->
CREATE UNIQUE INDEX ix_nullable ON nullable (b, c DESC) -->
INSERT nullable VALUES (NULL, 'x', NULL), (1, 'x', 1), (2, NULL, 1), (3, NULL, NULL) --> (4 changed)
INSERT nullable VALUES (NULL, 'y', 5) --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ_nullable'. Cannot insert duplicate key in object 'dbo.nullable'. The duplicate key value is (<NULL>). (3621)
INSERT nullable VALUES (4, 'X', NULL) --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.nullable' with unique index 'ix_nullable'. The duplicate key value is (X, <NULL>). (3621)
INSERT nullable VALUES (5, NULL, NULL) --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.nullable' with unique index 'ix_nullable'. The duplicate key value is (<NULL>, <NULL>). (3621)
INSERT nullable VALUES (6, NULL, 0) --> (1 changed)
UPDATE nullable SET a = NULL WHERE a = 6 --> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'UQ_nullable'. Cannot insert duplicate key in object 'dbo.nullable'. The duplicate key value is (<NULL>). (3621)
DROP INDEX UQ_nullable ON nullable --> Msg 3723, Level 16, State 4, Line 1: An explicit DROP INDEX is not allowed on index 'nullable.UQ_nullable'. It is being used for UNIQUE KEY constraint enforcement.
ALTER TABLE nullable DROP CONSTRAINT UQ_nullable INSERT nullable VALUES (NULL, 'y', 5) --> (1 changed)
ALTER TABLE nullable ADD CONSTRAINT UQ_again UNIQUE (a) WITH FILLFACTOR = 90 ON [PRIMARY] --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.nullable' and the index name 'UQ_again'. The duplicate key value is (<NULL>). (1750) (3621)
DROP INDEX ix_nullable ON nullable WITH (ONLINE = OFF) INSERT nullable VALUES (7, 'X', NULL) --> (1 changed)
-- a foreign key refers to a key or a unique index, with its columns in any order
CREATE TABLE keys (a int NOT NULL, b int NOT NULL, c varchar(5) NOT NULL, d int NOT NULL) -->
CREATE INDEX ix_a ON keys (a) -->
CREATE UNIQUE INDEX ux_b ON keys (b) -->
ALTER TABLE keys ADD CONSTRAINT UQ_cd UNIQUE (c, d) -->
CREATE TABLE to_plain (x int CONSTRAINT FK_plain REFERENCES keys (a)) --> Msg 1776, Level 16, State 0, Line 1: There are no primary or candidate keys in the referenced table 'keys' that match the referencing column list in the foreign key 'FK_plain'. (1750)
CREATE TABLE to_unique (x int REFERENCES keys (b), y int, z varchar(5), CONSTRAINT FK_dc FOREIGN KEY (y, z) REFERENCES keys (d, c)) -->
CREATE TABLE to_text (x varchar(5) CONSTRAINT FK_text REFERENCES keys (b)) --> Msg 1778, Level 16, State 0, Line 1: Column 'keys.b' is not the same data type as referencing column 'to_text.x' in foreign key 'FK_text'. (1750)
CREATE TABLE to_longer (x varchar(9), y int, CONSTRAINT FK_longer FOREIGN KEY (x, y) REFERENCES keys (c, d)) --> Msg 1753, Level 16, State 0, Line 1: Column 'keys.c' is not the same length or scale as referencing column 'to_longer.x' in foreign key 'FK_longer'. Columns participating in a foreign key relationship must be defined with the same length and scale. (1750)
CREATE TABLE to_two (x int CONSTRAINT FK_two REFERENCES keys (c, d)) --> Msg 1774, Level 16, State 0, Line 1: The number of columns in the referencing column list for foreign key 'FK_two' does not match those of the referenced column list in the referenced table 'keys'. (1750)
CREATE TABLE itself (id int PRIMARY KEY, up int REFERENCES itself) -->
INSERT keys VALUES (1, 2, 'c', 3) --> (1 changed)
INSERT to_unique VALUES (2, 3, 'c'), (NULL, NULL, NULL) --> (2 changed)
INSERT to_unique VALUES (2, 4, 'c') --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_dc". The conflict occurred in database "master", table "dbo.keys". (3621)
BEGIN TRY ALTER TABLE itself ADD CONSTRAINT FK_try FOREIGN KEY (up) REFERENCES keys (a) END TRY BEGIN CATCH SELECT ERROR_NUMBER() END CATCH --> - int? = 1750 (1 rows)
CREATE TABLE #free (x int CONSTRAINT FK_free REFERENCES keys (b)) --> Msg 1756, Level 0, State 1, Line 1: Skipping FOREIGN KEY constraint 'FK_free' definition for temporary table. FOREIGN KEY constraints are not enforced on local or global temporary tables.
INSERT #free VALUES (9) --> (1 changed)
DECLARE @free TABLE (x int REFERENCES keys (b)) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a foreign key of a table variable.
-- two NULLs prevent a unique index
CREATE TABLE two_nulls (a int, b int) INSERT two_nulls VALUES (NULL, 1), (NULL, 1) --> (2 changed)
CREATE UNIQUE INDEX ux_two ON two_nulls (a, b) --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.two_nulls' and the index name 'ux_two'. The duplicate key value is (<NULL>, 1). (3621)
-- a nullable column is neither a primary key nor an identity
CREATE TABLE null_key (a int NULL PRIMARY KEY) --> Msg 8111, Level 16, State 1, Line 2: Cannot define PRIMARY KEY constraint on nullable column in table 'null_key'. (1750)
CREATE TABLE #later_key (a int) ALTER TABLE #later_key ADD k int PRIMARY KEY INSERT #later_key (a) VALUES (1) --> Msg 515, Level 16, State 2, Line 1: Cannot insert the value NULL into column 'k', table 'tempdb.dbo.#later_key'; column does not allow nulls. INSERT fails. (3621)
CREATE TABLE null_identity (a int IDENTITY NULL) --> Msg 8147, Level 16, State 1, Line 1: Could not create IDENTITY attribute on nullable column 'a', table 'null_identity'.
-- several tables refer to one: the error names the one whose row prevents the DELETE
CREATE TABLE several (id int PRIMARY KEY) -->
CREATE TABLE with_none (id int CONSTRAINT FK_none REFERENCES several) -->
CREATE TABLE with_null (id int CONSTRAINT FK_null REFERENCES several) -->
CREATE TABLE with_one (id int CONSTRAINT FK_one REFERENCES several) -->
CREATE TABLE that_follow (id int CONSTRAINT FK_follow REFERENCES several ON DELETE CASCADE) -->
INSERT several VALUES (1), (2) INSERT with_null VALUES (NULL) INSERT with_one VALUES (1) INSERT that_follow VALUES (1), (2) --> (2 changed) (1 changed) (1 changed) (2 changed)
DELETE several --> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the REFERENCE constraint "FK_one". The conflict occurred in database "master", table "dbo.with_one", column 'id'. (3621)
DELETE several WHERE id = 2 SELECT id FROM that_follow --> (1 changed) --> id int? = 1 (1 rows)
-- an index in another database
CREATE DATABASE elsewhere -->
CREATE TABLE elsewhere.dbo.indexed (a int) -->
CREATE INDEX ix_there ON elsewhere.dbo.indexed (a) -->
DROP INDEX ix_there ON elsewhere.dbo.indexed DROP INDEX ix_there ON elsewhere.dbo.indexed --> Msg 3701, Level 11, State 7, Line 1: Cannot drop the index 'elsewhere.dbo.indexed.ix_there', because it does not exist or you do not have permission.
-- a CHECK depends on the columns that it reads
CREATE TABLE span (a int, b int, CONSTRAINT CK_span CHECK (a < b), CONSTRAINT CK_one CHECK (span.a > 1)) -->
INSERT span VALUES (1, 2) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_one". The conflict occurred in database "master", table "dbo.span", column 'a'. (3621)
INSERT span VALUES (3, 2) --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the CHECK constraint "CK_span". The conflict occurred in database "master", table "dbo.span". (3621)
ALTER TABLE span DROP COLUMN b
--> Msg 5074, Level 16, State 1, Line 1: The object 'CK_span' is dependent on column 'b'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE DROP COLUMN b failed because one or more objects access this column.
ALTER TABLE span ADD c int CHECK (c > a) --> Msg 8141, Level 16, State 0, Line 1: Column CHECK constraint for column 'c' references another column, table 'span'. (1750)
CREATE TABLE tree (id int CONSTRAINT pk_tree PRIMARY KEY, note varchar(9), up int CONSTRAINT fk_tree REFERENCES tree) -->
INSERT tree VALUES (1, 'lengthy', NULL), (2, '', 1) --> (2 changed)
ALTER TABLE tree ADD a varchar(9) CONSTRAINT df_tree_a DEFAULT ((1)), b int CONSTRAINT df_tree_b DEFAULT -1, c datetime CONSTRAINT df_tree_c DEFAULT (GETDATE()) -->
SELECT COLUMN_NAME, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'tree' AND COLUMN_DEFAULT <> '' --> COLUMN_NAME nvarchar(128)? | COLUMN_DEFAULT nvarchar(4000)? = a | ((1)); b | ((-1)); c | (GETDATE()) (3 rows)
ALTER TABLE tree ALTER COLUMN note varchar(3) --> Msg 2628, Level 16, State 1, Line 1: String or binary data would be truncated in table 'master.dbo.tree', column 'note'. Truncated value: 'len'. (3621)
DROP TABLE dbo.no_tree --> Msg 3701, Level 11, State 5, Line 1: Cannot drop the table 'dbo.no_tree', because it does not exist or you do not have permission.
-- INSERT EXEC and OUTPUT INTO report constraints like INSERT
CREATE TABLE given_to (id int CONSTRAINT PK_given PRIMARY KEY, up int CONSTRAINT FK_given REFERENCES given_to) -->
INSERT given_to EXEC ('SELECT 1, 9') --> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY SAME TABLE constraint "FK_given". The conflict occurred in database "master", table "dbo.given_to", column 'id'. (3621)
INSERT given_to VALUES (1, NULL) --> (1 changed)
CREATE TABLE kept (id int CONSTRAINT PK_kept PRIMARY KEY CONSTRAINT DF_none DEFAULT 1) -->
INSERT kept VALUES (1) --> (1 changed)
DELETE given_to OUTPUT deleted.id INTO kept --> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK_kept'. Cannot insert duplicate key in object 'dbo.kept'. The duplicate key value is (1). (3621)
ALTER TABLE given_to ADD CONSTRAINT DF_given DEFAULT 1 FOR up WITH VALUES -->
SELECT * FROM given_to --> id int = 1 | up int? = NULL (1 rows)
CREATE TABLE endless (t varchar(max) UNIQUE) --> Msg 1919, Level 16, State 1, Line 1: Column 't' in table 'endless' is of a type that is invalid for use as a key column in an index. (1750)
CREATE TABLE endless (t nvarchar(max), x int) -->
CREATE INDEX ix_endless ON endless (x) INCLUDE (t) -->
CREATE INDEX ix_of_text ON endless (x, t) --> Msg 1919, Level 16, State 1, Line 1: Column 't' in table 'endless' is of a type that is invalid for use as a key column in an index.
CREATE TABLE nd (a int DEFAULT nosuch(1)) --> Msg 195, Level 15, State 10, Line 1: 'nosuch' is not a recognized built-in function name.
CREATE TABLE nd (a int DEFAULT (@x)) --> Msg 137, Level 15, State 2, Line 1: Must declare the scalar variable "@x".
ALTER TABLE endless ADD CONSTRAINT ix_endless UNIQUE (x) --> Msg 1913, Level 16, State 1, Line 1: The operation failed because an index or statistics with name 'ix_endless' already exists on table 'dbo.endless'. (1750)
ALTER TABLE endless ADD CONSTRAINT df_endless DEFAULT 1 --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '1'.
CREATE TABLE numbered (id int IDENTITY, a int) ALTER TABLE numbered DROP COLUMN id --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER TABLE DROP of an identity.
SELECT LEN(*) --> Msg 102, Level 15, State 1, Line 1: Incorrect syntax near '*'.
SELECT value FROM STRING_SPLIT(2, ',') --> Msg 8116, Level 16, State 1, Line 1: Argument data type int is invalid for argument 1 of string_split function.
-- filtered indexes, and indexes within CREATE TABLE
CREATE TABLE filtered (id int IDENTITY, code varchar(9), state int NULL, gone datetime NULL, INDEX ix_code NONCLUSTERED (code DESC), INDEX ux_state UNIQUE (state) WHERE state > 5 AND code IS NOT NULL) -->
CREATE UNIQUE NONCLUSTERED INDEX ux_code ON dbo.filtered (code) INCLUDE (state) WHERE gone IS NULL AND state IN (1, 2) WITH (FILLFACTOR = 80) -->
INSERT filtered (code, state) VALUES ('a', 1), ('A ', 3), ('a', NULL), ('b', 5), ('b', 5), (NULL, 9), (NULL, 9) --> (7 changed)
INSERT filtered (code, state) VALUES ('A', 2) --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.filtered' with unique index 'ux_code'. (3621)
INSERT filtered (code, state, gone) VALUES ('A', 2, '20260101'), ('c', 9, NULL) --> (2 changed)
INSERT filtered (code, state) VALUES ('d', 9) --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.filtered' with unique index 'ux_state'. (3621)
UPDATE filtered SET state = 1 WHERE state = 3 --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.filtered' with unique index 'ux_code'. (3621)
UPDATE filtered SET gone = NULL WHERE gone IS NOT NULL --> Msg 2601, Level 14, State 1, Line 1: Cannot insert duplicate key row in object 'dbo.filtered' with unique index 'ux_code'. (3621)
UPDATE filtered SET gone = '20260102' WHERE code = 'a' UPDATE filtered SET state = 2 WHERE code = 'A' SELECT code, state, gone FROM filtered WHERE code = 'a' AND state IN (1, 2)
--> (4 changed) (4 changed)
--> code varchar(9)? | state int? | gone datetime? = a | 2 | 2026-01-02 00:00:00.000; A  | 2 | 2026-01-02 00:00:00.000; a | 2 | 2026-01-02 00:00:00.000; A | 2 | 2026-01-02 00:00:00.000 (4 rows)
CREATE UNIQUE INDEX ux_twice ON filtered (state) WHERE code <> 'zz' --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.filtered' and the index name 'ux_twice'. (3621)
CREATE UNIQUE INDEX ux_null ON filtered (state) WHERE code IS NULL AND state > 8 --> Msg 1505, Level 16, State 1, Line 1: The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo.filtered' and the index name 'ux_null'. (3621)
SELECT name, is_unique, has_filter, filter_definition FROM sys.indexes WHERE object_id = OBJECT_ID('filtered') ORDER BY name
--> name nvarchar(128)? | is_unique bit? | has_filter bit? | filter_definition nvarchar(max)? --> ix_code | 0 | 0 | NULL --> ux_code | 1 | 1 | (gone IS NULL AND state IN (1, 2))
--> ux_state | 1 | 1 | (state > 5 AND code IS NOT NULL) (3 rows)
CREATE INDEX ix_or ON filtered (code) WHERE state = 1 OR state = 2 --> Msg 10735, Level 15, State 1, Line 1: Incorrect WHERE clause for filtered index 'ix_or' on table 'filtered'.
CREATE INDEX ix_len ON filtered (code) WHERE LEN(code) > 1 --> Msg 10735, Level 15, State 1, Line 1: Incorrect WHERE clause for filtered index 'ix_len' on table 'filtered'.
CREATE INDEX ix_none ON filtered (code) WHERE nothing = 1 --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nothing'.
ALTER TABLE filtered DROP COLUMN gone
--> Msg 5074, Level 16, State 1, Line 1: The index 'ux_code' is dependent on column 'gone'.
--> Msg 4922, Level 16, State 9, Line 1: ALTER TABLE DROP COLUMN gone failed because one or more objects access this column.
CREATE TABLE of_filtered (code varchar(9) REFERENCES filtered (code)) --> Msg 1776, Level 16, State 0, Line 1: There are no primary or candidate keys in the referenced table 'filtered' that match the referencing column list in the foreign key 'FK__of_filter__71_72'. (1750)
DROP INDEX ux_code ON filtered ALTER TABLE filtered DROP COLUMN gone -->
ALTER TABLE filtered ADD INDEX ix_more (code) --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER TABLE ... ADD INDEX.
DECLARE @t TABLE (a int, b bit, UNIQUE (a, b), INDEX ux_b UNIQUE (a) WHERE b = 1)
INSERT @t VALUES (1, 0), (1, 1), (2, 1) INSERT @t VALUES (2, 1) UPDATE @t SET b = 1 WHERE a = 1 AND b = 0
SELECT a, b FROM @t
--> (3 changed) --> Msg 2601, Level 14, State 1, Line 2: Cannot insert duplicate key row in object 'dbo.@t' with unique index 'ux_b'. (3621)
--> Msg 2601, Level 14, State 1, Line 2: Cannot insert duplicate key row in object 'dbo.@t' with unique index 'ux_b'. (3621) --> a int? | b bit? = 1 | 0; 1 | 1; 2 | 1 (3 rows)
CREATE TABLE Owner (id int PRIMARY KEY, name varchar(10))
CREATE TABLE Car (id int PRIMARY KEY, owner int NULL CONSTRAINT FK_CarOwner REFERENCES Owner ON DELETE SET NULL ON UPDATE CASCADE,
  wheels int CONSTRAINT CK_Wheels CHECK (wheels > 0)) INSERT Owner VALUES (1, 'a'), (2, 'b'), (3, 'c')
INSERT Car VALUES (10, 1, 4), (11, 2, 4), (12, 3, 4) --> (3 changed) (3 changed)
UPDATE Owner SET id = id * 10 WHERE id <> 3 DELETE Owner WHERE id = 20 SELECT * FROM Car --> (2 changed) (1 changed) --> id int | owner int? | wheels int? = 10 | 10 | 4; 11 | NULL | 4; 12 | 3 | 4 (3 rows)
UPDATE Owner SET id = id + 27 WHERE id IN (10, 3) SELECT * FROM Car --> (2 changed) --> id int | owner int? | wheels int? = 10 | 37 | 4; 11 | NULL | 4; 12 | 30 | 4 (3 rows)
CREATE VIEW CarState AS SELECT name, is_disabled, is_not_trusted FROM sys.foreign_keys WHERE parent_object_id = OBJECT_ID('Car')
UNION ALL SELECT name, is_disabled, is_not_trusted FROM sys.check_constraints WHERE parent_object_id = OBJECT_ID('Car') -->
ALTER TABLE Car NOCHECK CONSTRAINT ALL INSERT Car VALUES (13, 99, -1) SELECT * FROM CarState
SELECT delete_referential_action_desc, update_referential_action FROM sys.foreign_keys WHERE name = 'FK_CarOwner'
--> (1 changed) --> name nvarchar(128)? | is_disabled bit? | is_not_trusted bit? = FK_CarOwner | 1 | 1; CK_Wheels | 1 | 1 (2 rows)
--> delete_referential_action_desc nvarchar(60)? = SET_NULL | update_referential_action tinyint? = 1 (1 rows)
ALTER TABLE Car WITH CHECK CHECK CONSTRAINT CK_Wheels, FK_CarOwner --> Msg 547, Level 16, State 0, Line 1: The ALTER TABLE statement conflicted with the FOREIGN KEY constraint "FK_CarOwner". The conflict occurred in database "master", table "dbo.Owner", column 'id'.
ALTER TABLE Car CHECK CONSTRAINT CK_Wheels ALTER TABLE Car CHECK CONSTRAINT FK_CarOwner
UPDATE Car SET id = 14 WHERE id = 13 UPDATE Car SET wheels = -2 WHERE id = 14 INSERT Car VALUES (15, 98, 4)
SELECT * FROM CarState
--> (1 changed)
--> Msg 547, Level 16, State 0, Line 2: The UPDATE statement conflicted with the CHECK constraint "CK_Wheels". The conflict occurred in database "master", table "dbo.Car", column 'wheels'. (3621)
--> Msg 547, Level 16, State 0, Line 2: The INSERT statement conflicted with the FOREIGN KEY constraint "FK_CarOwner". The conflict occurred in database "master", table "dbo.Owner", column 'id'. (3621)
--> name nvarchar(128)? | is_disabled bit? | is_not_trusted bit? = FK_CarOwner | 0 | 1; CK_Wheels | 0 | 1 (2 rows)
DELETE Car WHERE id = 14 ALTER TABLE Car WITH CHECK CHECK CONSTRAINT ALL ALTER TABLE Car NOCHECK CONSTRAINT nothing --> (1 changed) --> Msg 4917, Level 16, State 0, Line 1: Constraint 'nothing' does not exist. --> Msg 4916, Level 16, State 0, Line 1: Could not enable or disable the constraint. See previous errors.
SELECT * FROM CarState
DECLARE @pk sysname = (SELECT name FROM sys.key_constraints WHERE parent_object_id = OBJECT_ID('Car'))
EXEC ('ALTER TABLE Car NOCHECK CONSTRAINT [' + @pk + ']')
--> name nvarchar(128)? | is_disabled bit? | is_not_trusted bit? = FK_CarOwner | 0 | 0; CK_Wheels | 0 | 0 (2 rows)
--> Msg 11415, Level 16, State 1, Line 1: Object 'PK__Car__73_74' cannot be disabled or enabled. This action applies only to foreign key and check constraints.
--> Msg 4916, Level 16, State 0, Line 1: Could not enable or disable the constraint. See previous errors.
UPDATE Car SET wheels = -5 --> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the CHECK constraint "CK_Wheels". The conflict occurred in database "master", table "dbo.Car", column 'wheels'. (3621)
ALTER TABLE Car WITH NOCHECK ADD CONSTRAINT CK_Few CHECK (wheels < 4) UPDATE Car SET wheels = wheels WHERE id = 10 --> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the CHECK constraint "CK_Few". The conflict occurred in database "master", table "dbo.Car", column 'wheels'. (3621)
UPDATE Car SET id = id + 1 WHERE id = 12
SELECT is_not_trusted, is_disabled FROM sys.check_constraints WHERE name = 'CK_Few'
ALTER TABLE Car WITH CHECK ADD CONSTRAINT CK_More CHECK (wheels > 4)
--> (1 changed) --> is_not_trusted bit? = 1 | is_disabled bit? = 0 (1 rows)
--> Msg 547, Level 16, State 0, Line 3: The ALTER TABLE statement conflicted with the CHECK constraint "CK_More". The conflict occurred in database "master", table "dbo.Car", column 'wheels'.
CREATE TABLE Strict (owner int NOT NULL REFERENCES Owner ON UPDATE SET NULL) --> Msg 1761, Level 16, State 0, Line 1: Cannot create the foreign key "" with the SET NULL referential action, because one or more referencing columns are not nullable. (1750)
CREATE TABLE Strict (owner int NOT NULL REFERENCES Owner ON UPDATE SET DEFAULT) --> Msg 1762, Level 16, State 0, Line 1: Cannot create the foreign key "" with the SET DEFAULT referential action, because one or more referencing not-nullable columns lack a default constraint. (1750)
ALTER TABLE Car WITH NOCHECK DROP CONSTRAINT CK_Few --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support ALTER TABLE DROP.
ALTER TABLE Car NOCHECK CONSTRAINT FK_CarOwner TRUNCATE TABLE Owner --> Msg 4712, Level 16, State 1, Line 1: Cannot truncate table 'Owner' because it is being referenced by a FOREIGN KEY constraint.
DELETE Owner SELECT owner FROM Car --> (2 changed) --> owner int? = 37; NULL; 30 (3 rows)
DROP TABLE Car, Owner -->
CREATE TABLE Owner (id int PRIMARY KEY, name varchar(10))
CREATE TABLE Car (id int PRIMARY KEY, owner int NULL CONSTRAINT FK_CarOwner REFERENCES Owner ON DELETE SET NULL ON UPDATE CASCADE)
INSERT Owner VALUES (30, 'a'), (37, 'b'), (38, 'c') INSERT Car VALUES (10, 30), (11, 37), (12, 38)
UPDATE Owner SET id = 67 - id WHERE id < 38 SELECT * FROM Owner SELECT * FROM Car --> (3 changed) (3 changed) (2 changed) --> id int | name varchar(10)? = 37 | a; 30 | b; 38 | c (3 rows) --> id int | owner int? = 10 | 37; 11 | 30; 12 | 38 (3 rows)
UPDATE Owner SET id = id + 1 SELECT * FROM Owner SELECT * FROM Car --> (3 changed) --> id int | name varchar(10)? = 38 | a; 31 | b; 39 | c (3 rows) --> id int | owner int? = 10 | 38; 11 | 31; 12 | 39 (3 rows)
CREATE TABLE Boat (id int PRIMARY KEY, owner int NULL CONSTRAINT FK_Boat REFERENCES Owner ON UPDATE SET NULL)
INSERT Boat VALUES (1, 31), (2, 38), (3, 39)
UPDATE Owner SET id = CASE WHEN id = 39 THEN 40 WHEN id = 38 THEN 39 ELSE id END
SELECT * FROM Owner SELECT * FROM Car SELECT * FROM Boat --> (3 changed) --> Msg 50000, Level 16, State 1, Line 3: tsqlbox does not support ON UPDATE SET NULL for rows that take over each other's keys.
UPDATE Owner SET id = 41 WHERE id = 39 SELECT * FROM Boat --> (1 changed) --> id int | owner int? = 1 | 31; 2 | 38; 3 | NULL (3 rows)
-- SET DEFAULT; a row that is older than its column has NULL
CREATE TABLE Town (id int PRIMARY KEY)
CREATE TABLE Home (id int, town int NOT NULL DEFAULT 0 CONSTRAINT FK_Home REFERENCES Town ON DELETE SET DEFAULT ON UPDATE SET DEFAULT)
INSERT Town VALUES (0), (1), (2), (3) INSERT Home VALUES (1, 1), (2, 2), (3, 3) --> (4 changed) (3 changed)
ALTER TABLE Home ADD former int NULL
ALTER TABLE Home ADD CONSTRAINT DF_Former DEFAULT 0 FOR former, CONSTRAINT FK_Former FOREIGN KEY (former) REFERENCES Town ON DELETE SET DEFAULT -->
UPDATE Home SET former = 3 WHERE id = 3 DELETE Town WHERE id IN (1, 3) UPDATE Town SET id = 9 WHERE id = 2
SELECT * FROM Home SELECT name, delete_referential_action, update_referential_action_desc FROM sys.foreign_keys WHERE name LIKE 'FK_[HF]o%'
--> (1 changed) (2 changed) (1 changed) --> id int? | town int | former int? = 1 | 0 | NULL; 2 | 0 | NULL; 3 | 0 | 0 (3 rows)
--> name nvarchar(128)? | delete_referential_action tinyint? | update_referential_action_desc nvarchar(60)? = FK_follow | 1 | NO_ACTION; FK_Home | 3 | SET_DEFAULT; FK_Former | 3 | NO_ACTION (3 rows)
ALTER TABLE Home DROP CONSTRAINT DF_Former, FK_Former DELETE Town WHERE id = 0 SELECT * FROM Town
--> Msg 547, Level 16, State 0, Line 1: The DELETE statement conflicted with the FOREIGN KEY constraint "FK_Home". The conflict occurred in database "master", table "dbo.Town", column 'id'. (3621)
--> id int = 0; 9 (2 rows)
CREATE TABLE fixed (k varchar(5) PRIMARY KEY, u varchar(5) NOT NULL UNIQUE, n int NULL)
CREATE INDEX fixed_n ON fixed (n) ALTER TABLE fixed ALTER COLUMN k varchar(5) NOT NULL
ALTER TABLE fixed ALTER COLUMN u varchar(9) NOT NULL
BEGIN TRY ALTER TABLE fixed ALTER COLUMN k varchar(9) NOT NULL END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
BEGIN TRY ALTER TABLE fixed ALTER COLUMN n int NOT NULL END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
BEGIN TRY ALTER TABLE fixed ALTER COLUMN u varchar(9) NULL END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
--> ALTER TABLE ALTER COLUMN k failed because one or more objects access this column. --> ALTER TABLE ALTER COLUMN n failed because one or more objects access this column.
--> ALTER TABLE ALTER COLUMN u failed because one or more objects access this column.
