RAISERROR('%d|%i|%u|%x|%X|%o|%ld|%5d|%-5d|%05d|%+d|%s|%%', 10, 1, 1, -2, 3, 255, 255, 8, 9, 10, 11, 12, 13, N'text')
RAISERROR('%*d|%-10s|%.2s|%#x', 10, 1, 6, 42, 'left', 'cut', 255)
RAISERROR('%d|%s', 10, 1, NULL, NULL)
RAISERROR('too few %d %s', 10, 1, 1)
RAISERROR('%z', 10, 1)
RAISERROR('%d', 10, 1, 'text')
RAISERROR('%s', 16, 5, 1)
PRINT 'goes on'
RAISERROR('now', 0, 1) WITH NOWAIT
RAISERROR('severe', 18, 255)
RAISERROR('error is set', 10, 1) WITH SETERROR
PRINT @@ERROR
RAISERROR('negative', -5, -1)
RAISERROR('negative', 11, -1)
RAISERROR(13000, 16, 1)
DECLARE @m varchar(max) = REPLICATE(CONVERT(varchar(max), 'x'), 9000) + 'y'
BEGIN TRY RAISERROR(@m, 16, 1) END TRY BEGIN CATCH PRINT RIGHT(ERROR_MESSAGE(), 5) + STR(LEN(ERROR_MESSAGE())) END CATCH
--> 1|-2|3|ff|FF|10|9|   10|11   |00012|+13|text|% -->     42|left      |cu|0xff --> (null)|(null) --> too few 1 (null) --> Msg 2787, Level 16, State 1, Line 5: Invalid format specification: '%z'.
--> Msg 2786, Level 16, State 1, Line 6: The data type of substitution parameter 1 does not match the expected type of the format specification.
--> Msg 2786, Level 16, State 1, Line 7: The data type of substitution parameter 1 does not match the expected type of the format specification. --> goes on --> now
--> Msg 50000, Level 18, State 255, Line 10: severe --> error is set --> 50000 --> negative --> Msg 50000, Level 11, State 1, Line 14: negative
--> Msg 18054, Level 16, State 1, Line 15: Error 13000, severity 16, state 1 was raised, but no message with that error number was found in sys.messages. If error is larger than 50000, make sure the user-defined message is added using sp_addmessage.
--> xx...      2047
BEGIN TRY
    RAISERROR('caught %d', 11, 7, 5)
END TRY
BEGIN CATCH
    SELECT ERROR_NUMBER(), ERROR_SEVERITY(), ERROR_STATE(), ERROR_LINE(), ERROR_MESSAGE()
    BEGIN TRY SELECT 1 / 0 END TRY BEGIN CATCH PRINT ERROR_MESSAGE() END CATCH
    PRINT ERROR_MESSAGE()
END CATCH
PRINT ISNULL(ERROR_MESSAGE(), 'none') --> - int? = 50000 | - int? = 11 | - int? = 7 | - int? = 2 | - nvarchar(4000)? = caught 5 (1 rows) --> - int? (0 rows) --> Divide by zero error encountered. --> caught 5 --> none
CREATE PROCEDURE fails AS

THROW 50001, 'from inside', 3 -->
EXEC fails
PRINT 'not reached' --> Msg 50001, Level 16, State 3, Line 3, Procedure fails: from inside
BEGIN TRY EXEC fails END TRY BEGIN CATCH PRINT ERROR_PROCEDURE() + ' ' + STR(ERROR_LINE(), 1); THROW END CATCH --> fails 3 --> Msg 50001, Level 16, State 3, Line 3, Procedure fails: from inside
THROW 49999, 'too low', 1 --> Msg 35100, Level 16, State 10, Line 1: Error number 49999 in the THROW statement is outside the valid range. Specify an error number in the valid range of 50000 to 2147483647.
THROW --> Msg 10704, Level 15, State 1, Line 1: To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW statement inside a CATCH block, or add error parameters to the THROW statement.
WAITFOR DELAY '00:00:00.050'
WAITFOR DELAY 'soon'
WAITFOR TIME '25:00'
--> Msg 148, Level 15, State 1, Line 2: Incorrect time syntax in time string 'soon' used with WAITFOR.
--> Msg 148, Level 15, State 1, Line 3: Incorrect time syntax in time string '25:00' used with WAITFOR.
MERGE t USING s ON t.id = s.id WHEN MATCHED THEN DELETE OUTPUT $actions; --> Msg 50000, Level 16, State 1, Line 1: tsqlbox does not support $actions.
-- numbers of the server's own messages
RAISERROR(15009, -1, -1, 'x', 'y')
RAISERROR(15009, 5, 3, N'x', 'y')
RAISERROR(12999, 16, 1)
RAISERROR(13999, 16, 1)
--> Msg 15009, Level 16, State 1, Line 2: The object 'x' does not exist in database 'y' or is invalid for this operation.
--> Msg 15009, Level 5, State 3, Line 3: The object 'x' does not exist in database 'y' or is invalid for this operation.
--> Msg 2732, Level 16, State 1, Line 4: Error number 12999 is invalid. The number must be from 13000 through 2147483647 and it cannot be 50000.
--> Msg 18054, Level 16, State 1, Line 5: Error 13999, severity 16, state 1 was raised, but no message with that error number was found in sys.messages. If error is larger than 50000, make sure the user-defined message is added using sp_addmessage.
