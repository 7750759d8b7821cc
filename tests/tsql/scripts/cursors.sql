CREATE TABLE t (id int NOT NULL PRIMARY KEY, nm varchar(10) NULL)
INSERT t VALUES (1, 'one'), (2, 'two'), (3, NULL)
DECLARE @id int, @nm nvarchar(20), @from int
SET @from = 2
DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT id, nm FROM t WHERE id >= @from ORDER BY id
SET @from = 3 -- the cursor keeps the value of its declaration
PRINT CURSOR_STATUS('local', 'c')
OPEN c
FETCH NEXT FROM c INTO @id, @nm
WHILE @@FETCH_STATUS = 0
BEGIN
    PRINT CONVERT(varchar, @id) + ' ' + ISNULL(@nm, '(null)')
    UPDATE t SET nm = 'seen' WHERE id = @id
    FETCH NEXT FROM c INTO @id, @nm
END
PRINT CONVERT(varchar, @id) + ' stays'
CLOSE c
DEALLOCATE c
--> (3 changed)
--> -1
--> 2 two (1 changed)
--> 3 (null) (1 changed)
--> 3 stays
-- a global cursor outlives its batch; without INTO a row is a result set
DECLARE g SCROLL CURSOR FOR SELECT id, nm FROM t ORDER BY id
OPEN g -->
FETCH g
FETCH LAST FROM g
FETCH PRIOR FROM g
FETCH ABSOLUTE -3 FROM g
FETCH RELATIVE 2 FROM g
FETCH NEXT FROM GLOBAL g
SELECT @@FETCH_STATUS, @@CURSOR_ROWS, CURSOR_STATUS('global', 'g'), CURSOR_STATUS('global', 'none')
FETCH FIRST FROM g
CLOSE g
OPEN g
OPEN g
--> id int = 1 | nm varchar(10)? = one (1 rows)
--> id int = 3 | nm varchar(10)? = seen (1 rows)
--> id int = 2 | nm varchar(10)? = seen (1 rows)
--> id int = 1 | nm varchar(10)? = one (1 rows)
--> id int = 3 | nm varchar(10)? = seen (1 rows)
--> id int | nm varchar(10)? (0 rows)
--> - int? = -1 | - int? = 3 | - smallint? = 1 | - smallint? = -3 (1 rows)
--> id int = 1 | nm varchar(10)? = one (1 rows)
--> Msg 16905, Level 16, State 1, Line 11: The cursor is already open.
FETCH g INTO @nothing --> Msg 137, Level 15, State 1, Line 1: Must declare the scalar variable "@nothing".
DECLARE @a int
FETCH g INTO @a
CLOSE g
FETCH g
CLOSE g
DEALLOCATE g
DEALLOCATE g
DECLARE s CURSOR STATIC FORWARD_ONLY FOR SELECT 1 UNION ALL SELECT 2
DECLARE s CURSOR FOR SELECT 1
OPEN s
PRINT @@CURSOR_ROWS
FETCH PRIOR FROM s
DEALLOCATE s
--> Msg 16924, Level 16, State 1, Line 2: Cursorfetch: The number of variables declared in the INTO list must match that of selected columns.
--> Msg 16917, Level 16, State 1, Line 4: Cursor is not open.
--> Msg 16917, Level 16, State 1, Line 5: Cursor is not open.
--> Msg 16916, Level 16, State 1, Line 7: A cursor with the name 'g' does not exist.
--> Msg 16915, Level 16, State 1, Line 9: A cursor with the name 's' already exists.
--> 2
--> Msg 16911, Level 16, State 1, Line 12: fetch: The fetch type prior cannot be used with forward only cursors.
-- nested, local to a procedure, errors in the query
CREATE PROCEDURE pairs AS
DECLARE @x int, @y int
DECLARE outer_c CURSOR LOCAL FOR SELECT id FROM t WHERE id < 3 ORDER BY id
OPEN outer_c
FETCH outer_c INTO @x
WHILE @@FETCH_STATUS = 0
BEGIN
    DECLARE inner_c CURSOR LOCAL FOR SELECT id FROM t WHERE id > @x ORDER BY id
    OPEN inner_c
    FETCH inner_c INTO @y
    WHILE @@FETCH_STATUS = 0
    BEGIN
        PRINT STR(@x, 1) + '-' + STR(@y, 1)
        FETCH inner_c INTO @y
    END
    DEALLOCATE inner_c
    FETCH outer_c INTO @x
END -->
EXEC pairs
EXEC pairs
OPEN outer_c
--> 1-2
--> 1-3
--> 2-3
--> 1-2
--> 1-3
--> 2-3
--> Msg 16916, Level 16, State 1, Line 3: A cursor with the name 'outer_c' does not exist.
DECLARE bad CURSOR FOR SELECT nocolumn FROM t --> Msg 207, Level 16, State 1, Line 1: Invalid column name 'nocolumn'.
DECLARE @d date
DECLARE f CURSOR LOCAL FOR SELECT id FROM t
OPEN f
FETCH f INTO @d --> Msg 16922, Level 16, State 1, Line 4: Cursor Fetch: Implicit conversion from data type int to date is not allowed.
DECLARE e CURSOR LOCAL FOR SELECT id, nm FROM t WHERE id > 5
OPEN e
FETCH e
PRINT CURSOR_STATUS('local', 'e')
--> id int | nm varchar(10)? (0 rows)
--> 0
-- not supported
DECLARE u CURSOR FOR SELECT id FROM t FOR UPDATE OF nm --> Msg 50000, Level 16, State 1, Line 2: tsqlbox does not support FOR UPDATE of a cursor.
DECLARE u CURSOR DYNAMIC FOR SELECT id FROM t --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support DYNAMIC cursors.
DECLARE @c CURSOR --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support cursor variables.
DECLARE u CURSOR FAST_FORWARD SCROLL FOR SELECT id FROM t --> Msg 1048, Level 15, State 1, Line 1: Conflicting cursor options FORWARD_ONLY and SCROLL.
DELETE t WHERE CURRENT OF u --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support WHERE CURRENT OF.
