SELECT @@DBTS, MIN_ACTIVE_ROWVERSION()
CREATE TABLE doc (id int IDENTITY PRIMARY KEY, t varchar(9), v rowversion)
INSERT doc (t) VALUES ('a'), ('b')
INSERT doc VALUES ('c', DEFAULT)
INSERT doc (t) SELECT t + t FROM doc WHERE id = 1
UPDATE doc SET t = t WHERE v < 0x00000000000007D2
SELECT *, CAST(v AS bigint) n FROM doc ORDER BY v
SELECT * INTO copy FROM doc WHERE id = 2
--> - varbinary(8)? = 0x00000000000007D0 | - timestamp? = 0x00000000000007D1 (1 rows) (2 changed) (1 changed) (1 changed) (1 changed)
--> id int* | t varchar(9)? | v timestamp | n bigint? = 2 | b | 0x00000000000007D2 | 2002; 3 | c | 0x00000000000007D3 | 2003; 4 | aa | 0x00000000000007D4 | 2004; 1 | a | 0x00000000000007D5 | 2005 (4 rows) (1 changed)
BEGIN TRAN
UPDATE copy SET t = 'r' OUTPUT deleted.v, inserted.v
SELECT MIN_ACTIVE_ROWVERSION()
--> v timestamp = 0x00000000000007D2 | v timestamp = 0x00000000000007D6 (1 rows)
--> Msg 50000, Level 16, State 1, Line 3: tsqlbox does not support MIN_ACTIVE_ROWVERSION in a transaction that has changed a rowversion.
ROLLBACK
UPDATE copy SET t = 's' OUTPUT inserted.v --> v timestamp = 0x00000000000007D7 (1 rows)
CREATE TABLE later (id int PRIMARY KEY, p int)
INSERT later VALUES (1, 1), (2, 1)
ALTER TABLE later ADD timestamp NOT NULL
SELECT * FROM later WHERE timestamp = (SELECT MAX(timestamp) FROM later)
SELECT TYPE_NAME(system_type_id), max_length, is_nullable FROM sys.columns WHERE name = 'timestamp'
EXEC sp_special_columns later, @col_type = 'V'
--> (2 changed) --> id int = 2 | p int? = 1 | timestamp timestamp = 0x00000000000007D9 (1 rows) --> - nvarchar(128)? = timestamp | max_length smallint? = 8 | is_nullable bit? = 0 (1 rows)
--> SCOPE smallint? = NULL | COLUMN_NAME nvarchar(128)? = timestamp | DATA_TYPE smallint? = -2 | TYPE_NAME nvarchar(128)? = timestamp | PRECISION int? = 8 | LENGTH int? = 8 | SCALE smallint? = NULL | PSEUDO_COLUMN smallint? = 1 (1 rows)
CREATE TRIGGER tr ON later INSTEAD OF UPDATE AS SELECT * FROM inserted -->
UPDATE later SET p = 2
SELECT @@DBTS --> id int | p int? | timestamp timestamp = 1 | 2 | 0x00000000000007D8; 2 | 2 | 0x00000000000007D9 (2 rows) (2 changed) --> - varbinary(8)? = 0x00000000000007D9 (1 rows)
INSERT doc (t, v) VALUES ('x', 0x1) --> Msg 273, Level 16, State 1, Line 1: Cannot insert an explicit value into a timestamp column. Use INSERT with a column list to exclude the timestamp column, or insert a DEFAULT into the timestamp column.
INSERT doc (t, v) SELECT t, v FROM doc --> Msg 273, Level 16, State 1, Line 1: Cannot insert an explicit value into a timestamp column. Use INSERT with a column list to exclude the timestamp column, or insert a DEFAULT into the timestamp column.
INSERT doc (t, v) EXEC ('SELECT t, v FROM doc') --> Msg 273, Level 16, State 1, Line 1: Cannot insert an explicit value into a timestamp column. Use INSERT with a column list to exclude the timestamp column, or insert a DEFAULT into the timestamp column.
UPDATE doc SET v = DEFAULT --> Msg 272, Level 16, State 1, Line 1: Cannot update a timestamp column.
CREATE TABLE two (a rowversion, b timestamp) --> Msg 2738, Level 16, State 2, Line 1: A table can only have one timestamp column. Because table 'two' already has one, the column 'b' cannot be added.
ALTER TABLE copy ADD DEFAULT 0x1 FOR v --> Msg 1755, Level 16, State 0, Line 1: Defaults cannot be created on columns of data type timestamp. Table 'copy', column 'v'. (1750)
ALTER TABLE doc ALTER COLUMN v binary(8) --> Msg 4928, Level 16, State 1, Line 1: Cannot alter column 'v' because it is 'timestamp'.
ALTER TABLE doc ALTER COLUMN t rowversion --> Msg 4927, Level 16, State 1, Line 1: Cannot alter column 't' to be data type timestamp.
ALTER TABLE later ADD FOREIGN KEY (p) REFERENCES later (id) ON UPDATE CASCADE --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support a foreign key that changes rows with a rowversion.
