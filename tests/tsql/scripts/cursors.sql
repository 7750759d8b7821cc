CREATE TABLE t (id int NOT NULL PRIMARY KEY, nm varchar(10) NULL) INSERT t VALUES (1, 'one'), (2, 'two'), (3, NULL)
DECLARE @id int, @nm nvarchar(20), @from int SET @from = 2
DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT id, nm FROM t WHERE id >= @from ORDER BY id
SET @from = 3 -- the cursor keeps the value of its declaration
PRINT CURSOR_STATUS('local', 'c') OPEN c FETCH NEXT FROM c INTO @id, @nm WHILE @@FETCH_STATUS = 0 BEGIN
    PRINT CONVERT(varchar, @id) + ' ' + ISNULL(@nm, '(null)') UPDATE t SET nm = 'seen' WHERE id = @id
    FETCH NEXT FROM c INTO @id, @nm END PRINT CONVERT(varchar, @id) + ' stays' CLOSE c DEALLOCATE c --> (3 changed) --> -1 --> 2 two (1 changed) --> 3 (null) (1 changed) --> 3 stays
-- a global cursor outlives its batch; without INTO a row is a result set
DECLARE g SCROLL CURSOR FOR SELECT id, nm FROM t ORDER BY id OPEN g -->
FETCH g FETCH LAST FROM g FETCH PRIOR FROM g FETCH ABSOLUTE -3 FROM g FETCH RELATIVE 2 FROM g FETCH NEXT FROM GLOBAL g
SELECT @@FETCH_STATUS, @@CURSOR_ROWS, CURSOR_STATUS('global', 'g'), CURSOR_STATUS('global', 'none') FETCH FIRST FROM g
CLOSE g OPEN g OPEN g
--> id int = 1 | nm varchar(10)? = one (1 rows) --> id int = 3 | nm varchar(10)? = seen (1 rows) --> id int = 2 | nm varchar(10)? = seen (1 rows) --> id int = 1 | nm varchar(10)? = one (1 rows)
--> id int = 3 | nm varchar(10)? = seen (1 rows) --> id int | nm varchar(10)? (0 rows) --> - int? = -1 | - int? = 3 | - smallint? = 1 | - smallint? = -3 (1 rows)
--> id int = 1 | nm varchar(10)? = one (1 rows) --> Msg 16905, Level 16, State 1, Line 3: The cursor is already open.
FETCH g INTO @nothing --> Msg 137, Level 15, State 1, Line 1: Must declare the scalar variable "@nothing".
DECLARE @a int FETCH g INTO @a CLOSE g FETCH g CLOSE g DEALLOCATE g DEALLOCATE g
DECLARE s CURSOR STATIC FORWARD_ONLY FOR SELECT 1 UNION ALL SELECT 2 DECLARE s CURSOR FOR SELECT 1 OPEN s
PRINT @@CURSOR_ROWS FETCH PRIOR FROM s DEALLOCATE s
--> Msg 16924, Level 16, State 1, Line 1: Cursorfetch: The number of variables declared in the INTO list must match that of selected columns.
--> Msg 16917, Level 16, State 1, Line 1: Cursor is not open. --> Msg 16917, Level 16, State 1, Line 1: Cursor is not open.
--> Msg 16916, Level 16, State 1, Line 1: A cursor with the name 'g' does not exist. --> Msg 16915, Level 16, State 1, Line 2: A cursor with the name 's' already exists. --> 2
--> Msg 16911, Level 16, State 1, Line 3: fetch: The fetch type prior cannot be used with forward only cursors.
-- nested, local to a procedure, errors in the query
CREATE PROCEDURE pairs AS DECLARE @x int, @y int
DECLARE outer_c CURSOR LOCAL FOR SELECT id FROM t WHERE id < 3 ORDER BY id OPEN outer_c FETCH outer_c INTO @x
WHILE @@FETCH_STATUS = 0 BEGIN DECLARE inner_c CURSOR LOCAL FOR SELECT id FROM t WHERE id > @x ORDER BY id
    OPEN inner_c FETCH inner_c INTO @y
    WHILE @@FETCH_STATUS = 0 BEGIN PRINT STR(@x, 1) + '-' + STR(@y, 1) FETCH inner_c INTO @y END
    DEALLOCATE inner_c FETCH outer_c INTO @x END -->
EXEC pairs EXEC pairs OPEN outer_c --> 1-2 --> 1-3 --> 2-3 --> 1-2 --> 1-3 --> 2-3 --> Msg 16916, Level 16, State 1, Line 1: A cursor with the name 'outer_c' does not exist.
DECLARE bad CURSOR FOR SELECT nocolumn FROM t --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nocolumn'.
DECLARE @d date DECLARE f CURSOR LOCAL FOR SELECT id FROM t OPEN f FETCH f INTO @d --> Msg 16922, Level 16, State 1, Line 1: Cursor Fetch: Implicit conversion from data type int to date is not allowed.
DECLARE e CURSOR LOCAL FOR SELECT id, nm FROM t WHERE id > 5 OPEN e FETCH e PRINT CURSOR_STATUS('local', 'e') --> id int | nm varchar(10)? (0 rows) --> 0
-- not supported
DECLARE u CURSOR FOR SELECT id FROM t FOR UPDATE OF nm --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support FOR UPDATE.
DECLARE u CURSOR DYNAMIC FOR SELECT id FROM t --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support DYNAMIC cursors.
CREATE PROCEDURE giver @c CURSOR VARYING OUTPUT AS PRINT 'a' --> Msg 50000, Level 16, State 1, Line 1, Procedure giver: tsqlbox does not support CURSOR parameters.
DECLARE u CURSOR FAST_FORWARD SCROLL FOR SELECT id FROM t --> Msg 1048, Level 15, State 1, Line 1: Conflicting cursor options FORWARD_ONLY and SCROLL.
DELETE t WHERE CURRENT OF u --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WHERE CURRENT OF.
-- cursor variables share a cursor, which lives as long as one of its names
DECLARE @c CURSOR, @d CURSOR, @last int
PRINT STR(CURSOR_STATUS('variable', '@c')) + STR(CURSOR_STATUS('variable', '@x'))
SET @c = CURSOR SCROLL FOR SELECT id FROM t ORDER BY id
PRINT STR(CURSOR_STATUS('variable', '@c')) + STR(CURSOR_STATUS('local', '@c')) OPEN @c FETCH LAST FROM @c INTO @last
SET @d = @c DEALLOCATE @c FETCH PRIOR FROM @d PRINT STR(@last) + STR(CURSOR_STATUS('variable', '@d')) CLOSE @c
-->         -2        -3 -->         -1        -3 --> id int = 2 (1 rows) -->          3         1
--> Msg 16950, Level 16, State 2, Line 6: The variable '@c' does not currently have a cursor allocated to it.
DECLARE named CURSOR FOR SELECT nm FROM t ORDER BY id DECLARE @c CURSOR SET @c = named OPEN named DEALLOCATE named
FETCH @c SET @c = named --> nm varchar(10)? = one (1 rows) --> Msg 16916, Level 16, State 1, Line 2: A cursor with the name 'named' does not exist.
OPEN @c --> Msg 137, Level 15, State 1, Line 1: Must declare the scalar variable "@c".
DECLARE @i int OPEN @i --> Msg 16948, Level 16, State 4, Line 1: The variable '@i' is not a cursor variable, but it is used in a place where a cursor variable is expected.
DECLARE @c CURSOR SELECT @c --> Msg 16949, Level 16, State 1, Line 1: The variable '@c' is a cursor variable, but it is used in a place where a cursor variable is not valid.
DECLARE @c CURSOR, @c int --> Msg 134, Level 15, State 1, Line 1: The variable name '@c' has already been declared. Variable names must be unique within a query batch or stored procedure.
-- cursors as drivers open them
CREATE TABLE #read (i int) INSERT #read VALUES (1), (2), (3), (4), (5)
DECLARE @c int, @scroll int = 1, @lock int = 4, @n int, @at int, @count int
EXEC sp_cursoropen @c OUTPUT, N'SELECT i FROM #read WHERE i < @most ORDER BY i', @scroll OUTPUT, @lock OUTPUT, @n OUTPUT, N'@most int', 5
SELECT @scroll, @lock, @n EXEC sp_cursorfetch @c, 2, 0, 2 EXEC sp_cursorfetch @c, 2, 0, 2
EXEC sp_cursorfetch @c, 256, @at OUTPUT, @count OUTPUT SELECT @at, @count EXEC sp_cursorfetch @c, 2, 0, 2
EXEC sp_cursorfetch @c, 256, @at OUTPUT, @count OUTPUT PRINT @at EXEC sp_cursorfetch @c, 4, 0, 3
EXEC sp_cursorfetch @c, 4, 0, 3 EXEC sp_cursorfetch @c, 8, 0, 3 EXEC sp_cursorfetch @c, 128, 0, 3
EXEC sp_cursorfetch @c, 1, 0, 1 EXEC sp_cursorfetch @c, 16, 3, 1 EXEC sp_cursorfetch @c, 16, -1, 1
EXEC sp_cursorfetch @c, 32, -2, 1 EXEC sp_cursorfetch @c, 16, 0, 1 EXEC sp_cursorfetch @c
EXEC sp_cursoroption @c, 2, N'named' EXEC sp_cursorclose @c EXEC sp_cursorfetch @c EXEC sp_cursorclose @c
--> (5 changed) --> i int? (0 rows) --> - int? = 8 | - int? = 1 | - int? = 4 (1 rows) --> i int? = 1; 2 (2 rows) --> i int? = 3; 4 (2 rows) --> - int? = 3 | - int? = 4 (1 rows) --> i int? (0 rows)
--> 5 --> i int? = 2; 3; 4 (3 rows) --> i int? = 1; 2; 3 (3 rows) --> i int? = 2; 3; 4 (3 rows) --> i int? = 2; 3; 4 (3 rows) --> i int? = 1 (1 rows) --> i int? = 3 (1 rows) --> i int? = 4 (1 rows)
--> i int? = 2 (1 rows) --> i int? (0 rows) --> i int? = 1; 2; 3; 4 (4 rows) --> Msg 16909, Level 16, State 1, Line 11: sp_cursorfetch: The cursor identifier value provided (1) is not valid.
--> Msg 16909, Level 16, State 1, Line 11: sp_cursorclose: The cursor identifier value provided (1) is not valid.
DECLARE @h int, @c int, @scroll int = 24592, @lock int = 8193, @n int = 2
EXEC sp_cursorprepare @h OUTPUT, N'@a int', N'SELECT i FROM #read WHERE i > @a ORDER BY i', 1, @scroll OUTPUT, @lock OUTPUT
EXEC sp_cursorexecute @h, @c OUTPUT, @scroll OUTPUT, @lock OUTPUT, @n OUTPUT, 2 SELECT @n
EXEC sp_cursorfetch @c, 2, 0, 1 EXEC sp_cursorunprepare @h EXEC sp_cursorexecute @h, @c OUTPUT EXEC sp_cursorclose @c
EXEC sp_cursorprepexec @h OUTPUT, @c OUTPUT, N'@a int', N'WITH x AS (SELECT i FROM #read) SELECT i FROM x WHERE i = @a', NULL, NULL, @n OUTPUT, 3
PRINT @n EXEC sp_cursorfetch @c EXEC sp_cursorclose @c EXEC sp_cursorexecute @h, @c OUTPUT, NULL, NULL, NULL, 4
EXEC sp_cursorclose @c EXEC sp_cursoropen @c OUTPUT, N'EXEC sp_who'
EXEC sp_cursoropen @c OUTPUT, N'SELECT x FROM #read' EXEC sp_cursor @c, 33, 1
--> i int? (0 rows) --> i int? = 3; 4 (2 rows) --> - int? = 3 (1 rows) --> i int? = 5 (1 rows) --> Msg 8179, Level 16, State 1, Line 4: Could not find prepared statement with handle 2.
--> i int? (0 rows) --> 1 --> i int? = 3 (1 rows) --> i int? (0 rows)
--> Msg 16937, Level 16, State 1, Line 7: A server cursor is not allowed on a remote stored procedure or stored procedure with more than one SELECT statement. Use a default result set or client cursor.
--> Msg 207, Level 16, State 1, Line 1: Invalid column name 'x'. --> Msg 50000, Level 16, State 1, Line 8: tsqlbox does not support sp_cursor, changes through a cursor.
DECLARE @c int EXEC sp_cursoropen @c OUTPUT, N'SELECT i FROM #read' EXEC sp_cursorfetch @c, 2, 0, -3
EXEC sp_cursorfetch @c, 2, 0, 0 EXEC sp_cursorfetch @c, 32, 2147483647, 2 EXEC sp_cursorfetch @c, 32, -2147483648, 2
EXEC sp_cursorfetch @c, 4, NULL, 2147483647 EXEC sp_cursorfetch NULL EXEC sp_cursorfetch @c, 1024
--> i int? (0 rows) --> i int? (0 rows) --> i int? (0 rows) --> i int? (0 rows) --> i int? (0 rows) --> i int? (0 rows)
--> Msg 16909, Level 16, State 1, Line 3: sp_cursorfetch: The cursor identifier value provided (0) is not valid.
--> Msg 50000, Level 16, State 1, Line 3: tsqlbox does not support sp_cursorfetch of type 1024.
DROP TABLE #read -->
CREATE FUNCTION frees () RETURNS int AS BEGIN DEALLOCATE g RETURN 1 END -->
DECLARE g CURSOR FOR SELECT dbo.frees() OPEN g FETCH g --> Msg 16916, Level 16, State 1, Line 1: A cursor with the name 'g' does not exist.
CREATE TABLE changing (a int) INSERT changing VALUES (12) DECLARE ch CURSOR FOR SELECT a FROM changing ALTER TABLE changing ALTER COLUMN a money OPEN ch FETCH ch DEALLOCATE ch --> (1 changed) --> a money? = 12.0000 (1 rows)
