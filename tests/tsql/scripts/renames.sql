CREATE DATABASE renamed -->
USE renamed
CREATE TABLE parent (id int IDENTITY(5,5) CONSTRAINT pk_parent PRIMARY KEY, code nvarchar(10) NULL CONSTRAINT uq_code UNIQUE, amount int CONSTRAINT df_amount DEFAULT 3)
CREATE TABLE child (id int NOT NULL, parent_id int NULL CONSTRAINT fk_parent REFERENCES parent (id) ON DELETE CASCADE, code nvarchar(10) NULL CONSTRAINT fk_code FOREIGN KEY REFERENCES parent (code), size int CONSTRAINT ck_size CHECK (size > 0), twice AS size * 2, CONSTRAINT pk_child PRIMARY KEY (id))
CREATE INDEX ix_parent ON child (parent_id DESC) CREATE UNIQUE INDEX ux_code ON child (code) WHERE size > 5
INSERT parent (code) VALUES ('a'), ('b')
INSERT child (id, parent_id, code, size) VALUES (1, 5, 'a', 1), (2, 10, NULL, 2) --> USE renamed --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'renamed'. (2 changed) (2 changed)
CREATE VIEW sizes AS SELECT size FROM child -->
CREATE PROCEDURE show_sizes AS SELECT COUNT(*) AS n FROM sizes -->
CREATE TRIGGER on_child ON child AFTER UPDATE AS PRINT 'changed' -->
-- a table: its identity, keys and the keys that reference it
EXEC sp_rename 'parent', 'Owner' INSERT Owner (code) VALUES ('c') SELECT id, code, amount FROM Owner ORDER BY id
SELECT 1 FROM parent --> (15477, Line 2) (1 changed) --> id int* | code nvarchar(10)? | amount int? = 5 | a | 3; 10 | b | 3; 15 | c | 3 (3 rows) --> Msg 208, Level 16, State 1, Line 3: Invalid object name 'parent'.
INSERT child (id, parent_id) VALUES (3, 99) INSERT Owner (code) VALUES ('c') DROP TABLE Owner
EXEC sp_fkeys @fktable_name = 'child' SELECT IDENT_CURRENT('Owner')
--> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "fk_parent". The conflict occurred in database "renamed", table "dbo.Owner", column 'id'. (3621)
--> Msg 2627, Level 14, State 1, Line 1: Violation of UNIQUE KEY constraint 'uq_code'. Cannot insert duplicate key in object 'dbo.Owner'. The duplicate key value is (c). (3621)
--> Msg 3726, Level 16, State 1, Line 1: Could not drop object 'Owner' because it is referenced by a FOREIGN KEY constraint.
--> PKTABLE_QUALIFIER nvarchar(128)? | PKTABLE_OWNER nvarchar(128)? | PKTABLE_NAME nvarchar(128)? | PKCOLUMN_NAME nvarchar(128)? | FKTABLE_QUALIFIER nvarchar(128)? | FKTABLE_OWNER nvarchar(128)? | FKTABLE_NAME nvarchar(128)? | FKCOLUMN_NAME nvarchar(128)? | KEY_SEQ smallint? | UPDATE_RULE smallint? | DELETE_RULE smallint? | FK_NAME nvarchar(128)? | PK_NAME nvarchar(128)? | DEFERRABILITY smallint?
--> renamed | dbo | Owner | code | renamed | dbo | child | code | 1 | 1 | 1 | fk_code | pk_parent | 7
--> renamed | dbo | Owner | id | renamed | dbo | child | parent_id | 1 | 1 | 0 | fk_parent | pk_parent | 7 (2 rows) --> - decimal(38,0)? = 20 (1 rows)
-- columns: in keys, indexes, identities and foreign keys
EXEC sp_rename 'dbo.Owner.code', 'letter', 'COLUMN' EXEC sp_rename 'Owner.id', 'number', 'column'
EXEC sp_rename 'child.parent_id', 'owner_id' EXEC sp_rename 'child.twice', 'doubled', 'COLUMN' --> (15477, Line 2) (15477, Line 2) (15477, Line 3) (15477, Line 3)
INSERT Owner (letter) OUTPUT inserted.* VALUES ('d') INSERT child (id, owner_id, code, size) VALUES (3, 5, 'x', 1)
INSERT child (id, owner_id, code, size) VALUES (3, 5, 'd', 4) SELECT id, owner_id, doubled FROM child ORDER BY id
INSERT Owner (letter) VALUES ('d') EXEC sp_helpindex 'child' EXEC sp_helpindex 'Owner' DELETE Owner WHERE number = 10
SELECT COUNT(*) FROM child ALTER TABLE child ADD extra int NULL UPDATE child SET code = 'y'
--> number int* = 25 | letter nvarchar(10)? = d | amount int? = 3 (1 rows)
--> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY constraint "fk_code". The conflict occurred in database "renamed", table "dbo.Owner", column 'letter'. (3621) (1 changed)
--> id int | owner_id int? | doubled int? = 1 | 5 | 2; 2 | 10 | 4; 3 | 5 | 8 (3 rows)
--> Msg 2627, Level 14, State 1, Line 3: Violation of UNIQUE KEY constraint 'uq_code'. Cannot insert duplicate key in object 'dbo.Owner'. The duplicate key value is (d). (3621)
--> index_name nvarchar(128)? | index_description varchar(210)? | index_keys nvarchar(2078)? --> ix_parent | nonclustered located on PRIMARY | owner_id(-)
--> pk_child | clustered, unique, primary key located on PRIMARY | id --> ux_code | nonclustered, unique located on PRIMARY | code (3 rows)
--> index_name nvarchar(128)? | index_description varchar(210)? | index_keys nvarchar(2078)? --> pk_parent | clustered, unique, primary key located on PRIMARY | number
--> uq_code | nonclustered, unique, unique key located on PRIMARY | letter (2 rows) (1 changed) --> - int? = 2 (1 rows)
--> Msg 547, Level 16, State 0, Line 4: The UPDATE statement conflicted with the FOREIGN KEY constraint "fk_code". The conflict occurred in database "renamed", table "dbo.Owner", column 'letter'. (3621)
-- what an expression names
EXEC sp_rename 'child.size', 'length', 'COLUMN'
ALTER TABLE child DROP COLUMN doubled EXEC sp_rename 'child.size', 'length', 'COLUMN'
ALTER TABLE child DROP CONSTRAINT ck_size EXEC sp_rename 'child.size', 'length', 'COLUMN'
DROP INDEX ux_code ON child EXEC sp_rename 'child.size', 'length', 'COLUMN'
--> Msg 15336, Level 16, State 1, Line 2: Object 'dbo.child.size' cannot be renamed because the object participates in enforced dependencies.
--> Msg 15336, Level 16, State 1, Line 3: Object 'dbo.child.size' cannot be renamed because the object participates in enforced dependencies.
--> Msg 15336, Level 16, State 1, Line 4: Object 'dbo.child.size' cannot be renamed because the object participates in enforced dependencies. (15477, Line 5)
-- constraints and indexes
ALTER TABLE child ADD CONSTRAINT ck_length CHECK (length < 100) EXEC sp_rename 'ck_length', 'ck_short'
EXEC sp_rename 'dbo.fk_parent', 'fk_owner', 'OBJECT' EXEC sp_rename 'Owner.uq_code', 'uq_letter', 'INDEX'
EXEC sp_rename 'df_amount', 'df_three', 'OBJECT' EXEC sp_rename 'child.ix_parent', 'ix_owner', 'INDEX'
EXEC sp_rename 'pk_child', 'pk_children' INSERT child (id, length) VALUES (9, 100)
INSERT child (id, owner_id) VALUES (9, 99) INSERT child (id) VALUES (1) INSERT Owner (letter) VALUES ('d')
SELECT name, type FROM sys.objects WHERE parent_object_id <> 0 ORDER BY name
SELECT name FROM sys.indexes ORDER BY name ALTER TABLE child DROP CONSTRAINT pk_children, fk_owner, ck_short
DROP INDEX ix_owner ON child ALTER TABLE Owner DROP CONSTRAINT df_three CREATE UNIQUE INDEX ix_owner ON child (id)
INSERT child (id) VALUES (1)
--> (15477, Line 2) (15477, Line 3) (15477, Line 3) (15477, Line 4) (15477, Line 4) (15477, Line 5)
--> Msg 547, Level 16, State 0, Line 5: The INSERT statement conflicted with the CHECK constraint "ck_short". The conflict occurred in database "renamed", table "dbo.child", column 'length'. (3621)
--> Msg 547, Level 16, State 0, Line 6: The INSERT statement conflicted with the FOREIGN KEY constraint "fk_owner". The conflict occurred in database "renamed", table "dbo.Owner", column 'number'. (3621)
--> Msg 2627, Level 14, State 1, Line 6: Violation of PRIMARY KEY constraint 'pk_children'. Cannot insert duplicate key in object 'dbo.child'. The duplicate key value is (1). (3621)
--> Msg 2627, Level 14, State 1, Line 6: Violation of UNIQUE KEY constraint 'uq_letter'. Cannot insert duplicate key in object 'dbo.Owner'. The duplicate key value is (d). (3621)
--> name nvarchar(128)? | type char(2)? = ck_short | C; df_three | D; fk_code | F; fk_owner | F; on_child | TR; pk_children | PK; pk_parent | PK; uq_letter | UQ (8 rows)
--> name nvarchar(128)? = ix_owner; pk_children; pk_parent; uq_letter (4 rows)
--> Msg 2601, Level 14, State 1, Line 10: Cannot insert duplicate key row in object 'dbo.child' with unique index 'ix_owner'. The duplicate key value is (1). (3621)
-- modules keep their texts; a view of a renamed table fails
EXEC sp_rename 'show_sizes', 'count_sizes' EXEC sp_rename 'on_child', 'on_change' EXEC count_sizes --> (15477, Line 2) (15477, Line 2) --> Msg 207, Level 16, State 1, Line 1, Procedure count_sizes: Invalid column name 'size'.
EXEC sp_rename 'sizes', 'lengths', 'OBJECT' EXEC count_sizes --> (15477, Line 1) --> Msg 208, Level 16, State 1, Line 1, Procedure count_sizes: Invalid object name 'sizes'.
EXEC sp_helptext 'lengths' UPDATE child SET length = 8 WHERE id = 1 EXEC sp_rename 'child', 'Child'
SELECT COUNT(*) FROM CHILD SELECT name FROM sys.tables ORDER BY name --> Text nvarchar(255)? = CREATE VIEW sizes AS SELECT size FROM child -->  --> changed (1 changed) (15477, Line 1) --> - int? = 2 (1 rows) --> name nvarchar(128)? = Child; Owner (2 rows)
CREATE SCHEMA other -->
CREATE TABLE other.t (a int) EXEC sp_rename 'other.t', 'u' INSERT other.u VALUES (1)
EXEC sp_rename 'other.u.a', 'b', 'COLUMN' BEGIN TRAN EXEC sp_rename 'other.u', 'v'
EXEC sp_rename 'other.v.b', 'c', 'COLUMN' ROLLBACK SELECT b FROM other.u USE master
EXEC renamed..sp_rename 'other.u.b', 'd', 'COLUMN' EXEC renamed..sp_rename 'renamed.other.u', 'w', 'OBJECT'
SELECT d FROM renamed.other.w USE renamed
--> (15477, Line 1) (1 changed) (15477, Line 2) (15477, Line 2) (15477, Line 3) --> b int? = 1 (1 rows) --> USE master
--> Msg 5701, Level 0, State 1, Line 3: Changed database context to 'master'. (15477, Line 4) (15477, Line 4) --> d int? = 1 (1 rows) --> USE renamed
--> Msg 5701, Level 0, State 1, Line 5: Changed database context to 'renamed'.
CREATE TABLE other.p (k int PRIMARY KEY)
CREATE TABLE other.f (k int CONSTRAINT fk_k REFERENCES other.p (k) ON UPDATE CASCADE)
CREATE TABLE tree (id int PRIMARY KEY, up int REFERENCES tree) ALTER TABLE other.f NOCHECK CONSTRAINT fk_k
EXEC sp_rename 'other.p.k', 'key', 'COLUMN' EXEC sp_rename 'tree.id', 'node', 'COLUMN' EXEC sp_rename 'tree', 'forest'
SELECT is_disabled, update_referential_action_desc FROM sys.foreign_keys WHERE name = 'fk_k' INSERT other.f VALUES (1)
ALTER TABLE other.f CHECK CONSTRAINT fk_k INSERT other.f VALUES (2) INSERT other.p VALUES (2)
UPDATE other.p SET [key] = 1 SELECT k FROM other.f
--> (15477, Line 4) (15477, Line 4) (15477, Line 4) --> is_disabled bit? = 1 | update_referential_action_desc nvarchar(60)? = CASCADE (1 rows) (1 changed)
--> Msg 547, Level 16, State 0, Line 6: The INSERT statement conflicted with the FOREIGN KEY constraint "fk_k". The conflict occurred in database "renamed", table "other.p", column 'key'. (3621) (1 changed) (1 changed)
--> k int? = 1 (1 rows)
INSERT forest (node, up) VALUES (1, 2) INSERT forest (node, up) VALUES (1, 1) UPDATE forest SET up = 3
--> Msg 547, Level 16, State 0, Line 1: The INSERT statement conflicted with the FOREIGN KEY SAME TABLE constraint "FK__tree__23_25". The conflict occurred in database "renamed", table "dbo.forest", column 'node'. (3621) (1 changed)
--> Msg 547, Level 16, State 0, Line 1: The UPDATE statement conflicted with the FOREIGN KEY SAME TABLE constraint "FK__tree__23_25". The conflict occurred in database "renamed", table "dbo.forest", column 'node'. (3621)
-- refused
EXEC sp_rename 'nothing', 'x' EXEC sp_rename 'nothing', 'x', 'OBJECT' EXEC sp_rename 'Child.nothing', 'x', 'COLUMN'
EXEC sp_rename 'Child.nothing', 'x', 'INDEX' EXEC sp_rename 'Child', 'Owner'
EXEC sp_rename 'Child.id', 'length', 'COLUMN' CREATE INDEX ix_again ON Child (id)
EXEC sp_rename 'Child.ix_again', 'ix_owner', 'INDEX' EXEC sp_rename 'Child', NULL EXEC sp_rename 'Child', 'x', 'TABLE'
EXEC sp_rename 'master.dbo.Child', 'x', 'OBJECT'
--> Msg 15225, Level 11, State 1, Line 2: No item by the name of 'nothing' could be found in the current database 'renamed', given that @itemtype was input as '(null)'.
--> Msg 15225, Level 11, State 1, Line 2: No item by the name of 'nothing' could be found in the current database 'renamed', given that @itemtype was input as 'OBJECT'.
--> Msg 15248, Level 11, State 1, Line 2: Either the parameter @objname is ambiguous or the claimed @objtype (COLUMN) is wrong.
--> Msg 15248, Level 11, State 1, Line 3: Either the parameter @objname is ambiguous or the claimed @objtype (INDEX) is wrong.
--> Msg 15335, Level 11, State 1, Line 3: Error: The new name 'Owner' is already in use as a object name and would cause a duplicate that is not permitted.
--> Msg 15335, Level 11, State 1, Line 4: Error: The new name 'length' is already in use as a COLUMN name and would cause a duplicate that is not permitted.
--> Msg 15335, Level 11, State 1, Line 5: Error: The new name 'ix_owner' is already in use as a INDEX name and would cause a duplicate that is not permitted.
--> Msg 15223, Level 11, State 1, Line 5: Error: The input parameter '@newname' is not allowed to be null. --> Msg 15249, Level 11, State 1, Line 5: Error: Explicit @objtype 'TABLE' is unrecognized.
--> Msg 15250, Level 16, State 1, Line 6: The database name component of the object qualifier must be the name of the current database.
EXEC sp_rename 'renamed', 'x', 'DATABASE' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sp_rename of the type 'DATABASE'.
CREATE TABLE #t (a int) EXEC sp_rename '#t.a', 'b', 'COLUMN' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sp_rename of a temporary table.
CREATE SEQUENCE counted EXEC sp_rename 'counted', 'x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sp_rename of a function or sequence.
EXEC sp_rename 'Child', '#x' --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support sp_rename of a temporary table.
USE master DROP DATABASE renamed --> USE master --> Msg 5701, Level 0, State 1, Line 1: Changed database context to 'master'.
