CREATE TABLE parent (id int NOT NULL, code varchar(10) NOT NULL, CONSTRAINT PK_parent PRIMARY KEY (id), CONSTRAINT UQ_parent UNIQUE (code, id))
CREATE TABLE other (id int IDENTITY(5,1) PRIMARY KEY, nm nvarchar(20) NULL)
CREATE TABLE child (id int NOT NULL, parent int NULL CONSTRAINT FK_parent REFERENCES parent, other int NULL, n int NULL CONSTRAINT CK_n CHECK (n < 10), CONSTRAINT FK_other FOREIGN KEY (other) REFERENCES other (id) ON DELETE CASCADE, CONSTRAINT CK_both CHECK (n <> id))
CREATE UNIQUE INDEX ix_child ON child (id, n)
INSERT parent VALUES (1, 'a'), (2, 'b')
INSERT other VALUES (N'fünf')
GO
-- errors name key, values, table and column
INSERT parent VALUES (1, 'c')
INSERT parent SELECT 3, 'c' UNION ALL SELECT 3, 'd'
INSERT child VALUES (1, 1, 5, 2)
INSERT child SELECT 1, NULL, NULL, 2
INSERT child VALUES (30, 99, 5, 2)
INSERT child VALUES (30, 1, 99, 2)
INSERT child VALUES (30, 1, 5, 10)
INSERT child VALUES (2, 1, 5, 2)
INSERT child VALUES (NULL, 1, 5, 2)
UPDATE child SET id = NULL
DELETE parent WHERE id = 1
UPDATE parent SET id = 7 WHERE id = 1
DROP TABLE parent
TRUNCATE TABLE parent
DELETE other
SELECT COUNT(*) FROM child
TRUNCATE TABLE child
GO
-- a table is altered
CREATE TABLE t (a int NOT NULL, b varchar(5) NULL)
INSERT t VALUES (1, 'one'), (2, 'two')
ALTER TABLE t ADD c int NOT NULL CONSTRAINT DF_c DEFAULT 7, d datetime NULL, CONSTRAINT PK_t PRIMARY KEY (a)
ALTER TABLE t ADD e int NULL CONSTRAINT CK_e CHECK (e > 0) CONSTRAINT FK_e REFERENCES parent
INSERT t (a, b) VALUES (3, 'three')
INSERT t (a, e) VALUES (1, 1)
INSERT t (a, e) VALUES (4, -1)
INSERT t (a, e) VALUES (4, 9)
SELECT * FROM t
ALTER TABLE t ADD f int NOT NULL
GO
ALTER TABLE t ADD c int NULL
GO
ALTER TABLE t ADD CONSTRAINT DF_b DEFAULT 'none' FOR b
ALTER TABLE t ADD DEFAULT 'again' FOR b
GO
ALTER TABLE t WITH CHECK ADD CONSTRAINT CK_a CHECK (a > 1)
ALTER TABLE t ADD CONSTRAINT CK_a CHECK (a > 0), CONSTRAINT UQ_b UNIQUE (b)
ALTER TABLE t ADD CONSTRAINT UQ_c UNIQUE (c)
ALTER TABLE t ADD CONSTRAINT FK_c FOREIGN KEY (c) REFERENCES parent (id)
ALTER TABLE t ADD CONSTRAINT FK_d FOREIGN KEY (c) REFERENCES parent (code)
GO
ALTER TABLE t ADD CONSTRAINT FK_n FOREIGN KEY (c) REFERENCES nosuch (id)
GO
ALTER TABLE t ADD PRIMARY KEY (c)
GO
ALTER TABLE t ADD CONSTRAINT UQ_x UNIQUE (x)
GO
INSERT t (a) VALUES (8)
SELECT a, b FROM t WHERE a = 8
GO
ALTER TABLE t ALTER COLUMN b varchar(20) NULL
INSERT t (a, b) VALUES (9, 'more than five')
ALTER TABLE t ALTER COLUMN c varchar(10) NOT NULL
GO
ALTER TABLE t DROP CONSTRAINT DF_c WITH (ONLINE = OFF)
ALTER TABLE t ALTER COLUMN c varchar(10) NOT NULL
SELECT a, b, c + '!' FROM t
ALTER TABLE t ALTER COLUMN c int NULL
SELECT MAX(c) + 1 FROM t
GO
ALTER TABLE t ALTER COLUMN e int NOT NULL
ALTER TABLE t ALTER COLUMN nosuch int
GO
ALTER TABLE t DROP COLUMN e
GO
ALTER TABLE t DROP CONSTRAINT CK_e, FK_e, COLUMN e, d
ALTER TABLE t DROP CONSTRAINT CK_e
GO
ALTER TABLE t DROP CONSTRAINT IF EXISTS CK_e
ALTER TABLE parent DROP CONSTRAINT PK_parent
GO
INSERT t VALUES (1, 'x', 1)
ALTER TABLE t DROP CONSTRAINT PK_t
INSERT t VALUES (1, 'x', 1)
CREATE UNIQUE INDEX ix_a ON t (a)
SELECT name, type FROM sys.objects WHERE parent_object_id = OBJECT_ID('t') ORDER BY name
BEGIN TRAN
ALTER TABLE t ADD g int NULL
ALTER TABLE t ADD CONSTRAINT CK_g CHECK (g = 1)
ROLLBACK
INSERT t VALUES (20, 'y', 1)
GO
ALTER TABLE t NOCHECK CONSTRAINT CK_a
GO
-- identities
INSERT other VALUES (N'sechs')
SELECT MAX(id) FROM other
DELETE child
ALTER TABLE child DROP CONSTRAINT FK_other
TRUNCATE TABLE other
INSERT other VALUES (N'neu')
SELECT id, IDENT_CURRENT('other') FROM other
SET IDENTITY_INSERT other ON
INSERT other (id, nm) VALUES (50, N'x')
CREATE TABLE third (id int IDENTITY)
SET IDENTITY_INSERT third ON
SET IDENTITY_INSERT other OFF
INSERT other (nm) VALUES (N'y')
SELECT SCOPE_IDENTITY()
CREATE TABLE #tmp (id int NOT NULL PRIMARY KEY)
INSERT #tmp VALUES (1)
INSERT #tmp VALUES (1)
ALTER TABLE #tmp ADD x int NULL CHECK (x > 0)
INSERT #tmp VALUES (2, 0)
GO
CREATE TABLE u (id int NOT NULL CONSTRAINT PK_u PRIMARY KEY, nm varchar(10) NULL, ref int NULL CONSTRAINT FK_u REFERENCES u (id))
INSERT u VALUES (1, 'a', NULL), (2, 'b', 1), (3, 'c', NULL)
DECLARE @by int
SET @by = 1
UPDATE u SET id = 2 WHERE nm = 'c'
UPDATE u SET id = id + @by WHERE id > 1
UPDATE u SET ref = 77 WHERE id = 3
UPDATE x SET id = 4 FROM u x WHERE x.nm = 'b'
DELETE u WHERE id = 1
SELECT * FROM u
GO
-- one NULL equals another in a unique key
CREATE TABLE nullable (a int NULL CONSTRAINT UQ_nullable UNIQUE, b varchar(5) NULL, c int NULL)
CREATE UNIQUE INDEX ix_nullable ON nullable (b, c DESC)
INSERT nullable VALUES (NULL, 'x', NULL), (1, 'x', 1), (2, NULL, 1), (3, NULL, NULL)
INSERT nullable VALUES (NULL, 'y', 5)
INSERT nullable VALUES (4, 'X', NULL)
INSERT nullable VALUES (5, NULL, NULL)
INSERT nullable VALUES (6, NULL, 0)
UPDATE nullable SET a = NULL WHERE a = 6
DROP INDEX UQ_nullable ON nullable
ALTER TABLE nullable DROP CONSTRAINT UQ_nullable
INSERT nullable VALUES (NULL, 'y', 5)
ALTER TABLE nullable ADD CONSTRAINT UQ_again UNIQUE (a) WITH FILLFACTOR = 90 ON [PRIMARY]
DROP INDEX ix_nullable ON nullable WITH (ONLINE = OFF)
INSERT nullable VALUES (7, 'X', NULL)
GO
GO
-- a foreign key refers to a key: a plain index is none, a unique one is; the order is free
CREATE TABLE keys (a int NOT NULL, b int NOT NULL, c varchar(5) NOT NULL, d int NOT NULL)
CREATE INDEX ix_a ON keys (a)
CREATE UNIQUE INDEX ux_b ON keys (b)
ALTER TABLE keys ADD CONSTRAINT UQ_cd UNIQUE (c, d)
CREATE TABLE to_plain (x int CONSTRAINT FK_plain REFERENCES keys (a))
GO
CREATE TABLE to_unique (x int REFERENCES keys (b), y int, z varchar(5), CONSTRAINT FK_dc FOREIGN KEY (y, z) REFERENCES keys (d, c))
CREATE TABLE to_text (x varchar(5) CONSTRAINT FK_text REFERENCES keys (b))
GO
CREATE TABLE to_longer (x varchar(9), y int, CONSTRAINT FK_longer FOREIGN KEY (x, y) REFERENCES keys (c, d))
GO
CREATE TABLE to_two (x int CONSTRAINT FK_two REFERENCES keys (c, d))
GO
CREATE TABLE itself (id int PRIMARY KEY, up int REFERENCES itself)
INSERT keys VALUES (1, 2, 'c', 3)
INSERT to_unique VALUES (2, 3, 'c'), (NULL, NULL, NULL)
INSERT to_unique VALUES (2, 4, 'c')
BEGIN TRY
    ALTER TABLE itself ADD CONSTRAINT FK_try FOREIGN KEY (up) REFERENCES keys (a)
END TRY
BEGIN CATCH
    SELECT ERROR_NUMBER()
END CATCH
CREATE TABLE #free (x int CONSTRAINT FK_free REFERENCES keys (b))
INSERT #free VALUES (9)
GO
DECLARE @free TABLE (x int REFERENCES keys (b))
GO
-- two NULLs are one value too many
CREATE TABLE two_nulls (a int, b int)
INSERT two_nulls VALUES (NULL, 1), (NULL, 1)
CREATE UNIQUE INDEX ux_two ON two_nulls (a, b)
ALTER TABLE two_nulls ADD CONSTRAINT UQ_two UNIQUE (a)
GO
-- what takes NULL is no key and no identity
CREATE TABLE null_key (a int NULL PRIMARY KEY)
GO
CREATE TABLE null_identity (a int IDENTITY NULL)
GO
-- several tables refer to one: rows tell which is in the way
CREATE TABLE several (id int PRIMARY KEY)
CREATE TABLE with_none (id int CONSTRAINT FK_none REFERENCES several)
CREATE TABLE with_null (id int CONSTRAINT FK_null REFERENCES several)
CREATE TABLE with_one (id int CONSTRAINT FK_one REFERENCES several)
CREATE TABLE that_follow (id int CONSTRAINT FK_follow REFERENCES several ON DELETE CASCADE)
INSERT several VALUES (1), (2)
INSERT with_null VALUES (NULL)
INSERT with_one VALUES (1)
INSERT that_follow VALUES (1), (2)
DELETE several
DELETE several WHERE id = 2
SELECT id FROM that_follow
GO
-- an index of another database's table
CREATE DATABASE elsewhere
CREATE TABLE elsewhere.dbo.indexed (a int)
CREATE INDEX ix_there ON elsewhere.dbo.indexed (a)
DROP INDEX ix_there ON elsewhere.dbo.indexed
DROP INDEX ix_there ON elsewhere.dbo.indexed
-- a CHECK belongs to the columns that it reads
CREATE TABLE span (a int, b int, CONSTRAINT CK_span CHECK (a < b), CONSTRAINT CK_one CHECK (span.a > 1))
INSERT span VALUES (1, 2)
INSERT span VALUES (3, 2)
ALTER TABLE span DROP COLUMN b
GO
ALTER TABLE span ADD c int CHECK (c > a)
GO
CREATE TABLE tree (id int CONSTRAINT pk_tree PRIMARY KEY, note varchar(9), up int CONSTRAINT fk_tree REFERENCES tree)
INSERT tree VALUES (1, 'lengthy', NULL), (2, '', 1)
INSERT tree VALUES (3, '', 9)
DELETE tree WHERE id = 1
ALTER TABLE tree ADD a varchar(9) CONSTRAINT df_tree_a DEFAULT ((1)), b int CONSTRAINT df_tree_b DEFAULT -1, c datetime CONSTRAINT df_tree_c DEFAULT (GETDATE())
SELECT COLUMN_NAME, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'tree' AND COLUMN_DEFAULT <> ''
ALTER TABLE tree ALTER COLUMN note varchar(3)
DROP TABLE dbo.no_tree
GO
-- rows that another statement gives break a constraint in the same words
CREATE TABLE given_to (id int CONSTRAINT PK_given PRIMARY KEY, up int CONSTRAINT FK_given REFERENCES given_to)
INSERT given_to EXEC ('SELECT 1, 9')
INSERT given_to VALUES (1, NULL)
CREATE TABLE kept (id int CONSTRAINT PK_kept PRIMARY KEY CONSTRAINT DF_none DEFAULT 1)
INSERT kept VALUES (1)
DELETE given_to OUTPUT deleted.id INTO kept
ALTER TABLE given_to ADD CONSTRAINT DF_given DEFAULT 1 FOR up WITH VALUES
SELECT * FROM given_to
GO
CREATE TABLE endless (t varchar(max) UNIQUE)
GO
CREATE TABLE endless (t nvarchar(max), x int)
CREATE INDEX ix_endless ON endless (x) INCLUDE (t)
CREATE INDEX ix_of_text ON endless (x, t)
GO
CREATE TABLE nd (a int DEFAULT nosuch(1))
GO
DECLARE @x int = 3
CREATE TABLE nd (a int DEFAULT (@x))
GO
