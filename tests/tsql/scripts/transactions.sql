CREATE TABLE t (id int PRIMARY KEY) DECLARE @name varchar(20) SET @name = 'outermost' BEGIN TRAN @name
INSERT t VALUES (1) BEGIN TRAN inner_one INSERT t VALUES (2) SAVE TRAN here INSERT t VALUES (3) ROLLBACK TRAN here
SELECT @@TRANCOUNT, XACT_STATE(), COUNT(*) FROM t ROLLBACK TRAN inner_one
COMMIT TRAN inner_one WITH (DELAYED_DURABILITY = ON)
INSERT t VALUES (1) -- undoes this statement only
INSERT t VALUES (5), (5) SELECT @@TRANCOUNT, COUNT(*) FROM t ROLLBACK TRAN @name
SELECT @@TRANCOUNT, XACT_STATE(), COUNT(*) FROM t SAVE TRAN nothing
--> (1 changed) (1 changed) (1 changed) --> - int? = 2 | - smallint? = 1 | - int? = 2 (1 rows)
--> Msg 6401, Level 16, State 1, Line 3: Cannot roll back inner_one. No transaction or savepoint of that name was found.
--> Msg 2627, Level 14, State 1, Line 5: Violation of PRIMARY KEY constraint 'PK__t__1_2'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1). (3621)
--> Msg 2627, Level 14, State 1, Line 6: Violation of PRIMARY KEY constraint 'PK__t__1_2'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (5). (3621)
--> - int? = 1 | - int? = 2 (1 rows) --> - int? = 0 | - smallint? = 0 | - int? = 0 (1 rows) --> Msg 628, Level 16, State 1, Line 7: Cannot issue SAVE TRANSACTION when there is no active transaction.
-- an error that would end the batch makes the transaction uncommittable when caught
BEGIN TRY BEGIN TRAN INSERT t VALUES (1) SELECT CONVERT(int, 'x') END TRY BEGIN CATCH
    PRINT CONVERT(varchar, XACT_STATE()) + ' ' + ERROR_MESSAGE() SELECT COUNT(*) FROM t
    BEGIN TRY INSERT t VALUES (2) END TRY BEGIN CATCH PRINT ERROR_NUMBER() END CATCH
    BEGIN TRY COMMIT END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH ROLLBACK PRINT XACT_STATE() END CATCH
SELECT COUNT(*) FROM t
--> (1 changed) --> - int? (0 rows) --> -1 Conversion failed when converting the varchar value 'x' to data type int. --> - int? = 1 (1 rows) (0 changed) --> 3930
--> The current transaction cannot be committed and cannot support operations that write to the log file. Roll back the transaction. --> 0 --> - int? = 0 (1 rows)
-- other errors keep it committable
BEGIN TRY BEGIN TRAN INSERT t VALUES (1) INSERT t VALUES (1) END TRY BEGIN CATCH PRINT XACT_STATE() COMMIT END CATCH
SELECT COUNT(*) FROM t --> (1 changed) (0 changed) --> 1 --> - int? = 1 (1 rows)
SET XACT_ABORT ON
BEGIN TRY BEGIN TRAN INSERT t VALUES (2) INSERT t VALUES (1) END TRY BEGIN CATCH PRINT XACT_STATE() END CATCH
PRINT 'the batch ends' --> (1 changed) (0 changed) --> -1 --> the batch ends --> Msg 3998, Level 16, State 1, Line 1: Uncommittable transaction is detected at the end of the batch. The transaction is rolled back.
SELECT @@TRANCOUNT, COUNT(*) FROM t BEGIN TRAN INSERT t VALUES (2) INSERT t VALUES (1) PRINT 'not reached'
--> - int? = 0 | - int? = 1 (1 rows) (1 changed)
--> Msg 2627, Level 14, State 1, Line 1: Violation of PRIMARY KEY constraint 'PK__t__1_2'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1).
SELECT @@TRANCOUNT, COUNT(*) FROM t SET XACT_ABORT OFF --> - int? = 0 | - int? = 1 (1 rows)
CREATE PROCEDURE leaves_open AS BEGIN TRAN -->
CREATE PROCEDURE rolls_back AS ROLLBACK -->
EXEC leaves_open SELECT @@TRANCOUNT EXEC rolls_back SELECT @@TRANCOUNT
--> Msg 266, Level 16, State 2, Line 0, Procedure leaves_open: Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements. Previous count = 0, current count = 1.
--> - int? = 1 (1 rows)
--> Msg 266, Level 16, State 2, Line 0, Procedure rolls_back: Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements. Previous count = 1, current count = 0.
--> - int? = 0 (1 rows)
-- a CATCH block does not catch a missing object of its own batch or procedure
CREATE PROCEDURE misses AS BEGIN TRY SELECT * FROM nosuch END TRY BEGIN CATCH PRINT 'never' END CATCH -->
BEGIN TRY EXEC misses END TRY BEGIN CATCH PRINT 'outside: ' + ERROR_MESSAGE() + ' in ' + ERROR_PROCEDURE() END CATCH
BEGIN TRY SELECT * FROM nosuch END TRY BEGIN CATCH PRINT 'never' END CATCH PRINT 'not reached' --> outside: Invalid object name 'nosuch'. in misses --> Msg 208, Level 16, State 1, Line 2: Invalid object name 'nosuch'.
BEGIN TRAN INSERT t VALUES (9) SELECT FROM t --> Msg 156, Level 15, State 1, Line 1: Incorrect syntax near the keyword 'FROM'.
SELECT @@TRANCOUNT, COUNT(*) FROM t --> - int? = 0 | - int? = 1 (1 rows)
-- statements that read or write tables begin a transaction implicitly
SET IMPLICIT_TRANSACTIONS ON SELECT 1, @@TRANCOUNT IF EXISTS (SELECT 1 FROM t) SELECT @@TRANCOUNT ROLLBACK
SELECT COUNT(*), @@TRANCOUNT FROM t COMMIT INSERT t VALUES (77) ROLLBACK SELECT COUNT(*) FROM t WHERE id = 77 ROLLBACK
CREATE SEQUENCE counts SELECT @@TRANCOUNT ROLLBACK BEGIN TRAN SELECT @@TRANCOUNT ROLLBACK
SET IMPLICIT_TRANSACTIONS OFF --> - int = 1 | - int? = 0 (1 rows) --> - int? = 1 (1 rows) --> - int? = 1 | - int? = 1 (1 rows) (1 changed) --> - int? = 0 (1 rows) --> - int? = 1 (1 rows) --> - int? = 2 (1 rows)
-- identity values are never reused, even after ROLLBACK
CREATE TABLE ticket (id int IDENTITY(10,1), a int UNIQUE) BEGIN TRAN INSERT ticket VALUES (1), (2) ROLLBACK
INSERT ticket VALUES (3) INSERT ticket VALUES (3) INSERT ticket SELECT a FROM (VALUES (4), (3)) v(a) BEGIN TRAN
SAVE TRAN s INSERT ticket VALUES (5) ROLLBACK TRAN s INSERT ticket VALUES (6) COMMIT
SELECT id, a, IDENT_CURRENT('ticket') now FROM ticket BEGIN TRAN TRUNCATE TABLE ticket INSERT ticket VALUES (7)
SELECT id, a FROM ticket ROLLBACK INSERT ticket VALUES (8) SELECT id, a FROM ticket
--> (2 changed) (1 changed)
--> Msg 2627, Level 14, State 1, Line 3: Violation of UNIQUE KEY constraint 'UQ__ticket__6_7'. Cannot insert duplicate key in object 'dbo.ticket'. The duplicate key value is (3). (3621)
--> Msg 2627, Level 14, State 1, Line 3: Violation of UNIQUE KEY constraint 'UQ__ticket__6_7'. Cannot insert duplicate key in object 'dbo.ticket'. The duplicate key value is (3). (3621) (1 changed) (1 changed)
--> id int* | a int? | now decimal(38,0)? = 12 | 3 | 17; 17 | 6 | 17 (2 rows) (1 changed) --> id int* = 10 | a int? = 7 (1 rows) (1 changed) --> id int* | a int? = 12 | 3; 17 | 6; 18 | 8 (3 rows)
-- SET options of a procedure end with it, also after an error
CREATE PROCEDURE sets_and_fails AS SET NOCOUNT ON SET XACT_ABORT ON SELECT 1/0 -->
BEGIN TRY EXEC sets_and_fails END TRY BEGIN CATCH PRINT ERROR_LINE() END CATCH EXEC ('SET XACT_ABORT ON')
INSERT t VALUES (1) INSERT t VALUES (1) PRINT 'reached'
--> - int? --> 2 --> Msg 2627, Level 14, State 1, Line 2: Violation of PRIMARY KEY constraint 'PK__t__1_2'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1). (3621)
--> Msg 2627, Level 14, State 1, Line 2: Violation of PRIMARY KEY constraint 'PK__t__1_2'. Cannot insert duplicate key in object 'dbo.t'. The duplicate key value is (1). (3621) --> reached
EXEC ('BEGIN TRAN') EXEC sp_executesql N'COMMIT'
--> Msg 266, Level 16, State 2, Line 0: Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements. Previous count = 0, current count = 1.
--> Msg 266, Level 16, State 2, Line 0: Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements. Previous count = 1, current count = 0.
-- rows before the error of a statement in TRY are returned
BEGIN TRY SELECT 6 / a FROM (VALUES (3), (0)) v (a) END TRY BEGIN CATCH PRINT ERROR_NUMBER() END CATCH --> - int? = 2 (1 rows) --> 8134
