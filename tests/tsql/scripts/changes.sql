CREATE TABLE c (id int IDENTITY(100,1), nm nvarchar(5) UNIQUE, ch char(3) DEFAULT 'ab', v int CONSTRAINT CK_v CHECK (v > 0), CONSTRAINT PK_c PRIMARY KEY (id))
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
INSERT d VALUES (1)
GO
EXEC ('SET IDENTITY_INSERT c ON SET LOCK_TIMEOUT 5') PRINT @@LOCK_TIMEOUT
INSERT c (id, nm, v) VALUES (7, 'y', 4)
SET IDENTITY_INSERT c ON
INSERT c (id, nm, v) VALUES (7, 'y', 4)
SET IDENTITY_INSERT c OFF
INSERT c (id, nm, v) VALUES (8, 'z', 2)
CREATE UNIQUE INDEX ix_v ON c (v DESC)
INSERT c (nm, v) VALUES ('w', 4)
GO
UPDATE c SET v = v + 10, ch = DEFAULT WHERE id > 100
UPDATE x SET v += d.id FROM c x INNER JOIN d ON x.id = d.cid
UPDATE TOP (1) c SET nm = 'first' WHERE id < 100
GO
UPDATE c SET id = 1
GO
SELECT id, nm, ch, v FROM c ORDER BY id
DELETE d FROM d JOIN c ON c.id = d.cid WHERE c.v = 2
DELETE FROM c WHERE nm = 'nobody'
DELETE TOP (1) FROM c WHERE id > 100
SELECT COUNT(*) FROM c
SELECT id, v * 2 AS w INTO #copy FROM c
SELECT * FROM #copy
ALTER TABLE #copy ADD note varchar(10) NOT NULL DEFAULT 'n'
ALTER TABLE #copy DROP COLUMN w
SELECT * FROM tempdb..#copy
TRUNCATE TABLE d
DROP TABLE #copy
GO
SELECT * FROM #copy
GO
SELECT name, xtype FROM sysobjects WHERE xtype IN ('U', 'PK') ORDER BY name
SELECT COLUMN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, IS_NULLABLE, COLUMN_DEFAULT FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME = 'C'
IF OBJECT_ID('d', 'U') IS NOT NULL DROP TABLE d
DROP TABLE d
DROP TABLE IF EXISTS d
CREATE TABLE c (x int)
GO
-- the table that is changed may have another name in FROM, once
CREATE TABLE p (id int, v int)
INSERT p VALUES (1, 10), (2, 20)
UPDATE p SET v += 1 FROM p AS q WHERE q.id = 1
DELETE p FROM p q JOIN c ON 1 = 1 WHERE q.id = 2
SELECT * FROM p
GO
UPDATE p SET v = 0 FROM p q JOIN p r ON q.id = r.id
GO
UPDATE p SET v = 0, v = 1
GO
-- SELECT INTO: what an outer join may leave empty takes NULL, constants and ISNULL do not; an identity is inherited
-- from the only table
CREATE TABLE owner (id int IDENTITY PRIMARY KEY, name varchar(10) NOT NULL)
CREATE TABLE pet (owner int NOT NULL, pet varchar(10) NOT NULL, age int)
INSERT owner VALUES ('Ann'), ('Bob')
INSERT pet VALUES (1, 'cat', 3), (1, 'dog', NULL)
SELECT o.id, o.name, p.pet, ISNULL(p.age, 0) age, 'x' kind INTO #pets FROM owner o LEFT JOIN pet p ON p.owner = o.id
SELECT * FROM #pets ORDER BY id, pet
SELECT o.name, p.owner INTO #all FROM pet p FULL JOIN owner o ON p.owner = o.id AND p.pet = 'cat'
SELECT * FROM #all ORDER BY name, owner
SELECT id, name INTO #copy FROM owner
SELECT * INTO #both FROM (SELECT id FROM owner UNION ALL SELECT id FROM owner) b
INSERT #copy VALUES ('Cid')
SELECT * FROM #copy
SELECT * FROM #both
GO
DECLARE @rows varchar(max) = 'INSERT nosuch VALUES (1)' + REPLICATE(CAST(',(1)' AS varchar(max)), 1000)
EXEC (@rows)
GO
BEGIN TRAN
ALTER DATABASE CURRENT SET RECOVERY SIMPLE
ROLLBACK
GO
UPDATE c SET o.id = 0 FROM owner c JOIN owner o ON o.id = c.id
GO
