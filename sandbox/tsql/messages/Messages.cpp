#include "messages/Messages.h"

#include <algorithm>
#include <string>

#include "messages/Numbers.h"

namespace tsql {
namespace {

struct MessageText {
    int number, severity, state;
    std::string_view text;
};

// In the order of their numbers.
constexpr MessageText kMessages[] = {
    {message::kBadDatabaseName, 15, 1, "The database name '%s' is empty or too long. Maximum length is 128."},
    {message::kOrderByItemNotInSetOperation, 16, 1,
     "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
     "operator."},
    {message::kUnclosedQuotationMark, 15, 1, "Unclosed quotation mark after the character string '%s'."},
    {message::kTooManyTables, 15, 1, "Too many table names in the query. The maximum allowable is 256."},
    {message::kUnknownColumnPrefix, 15, 1,
     "The column prefix '%s' does not match with a table name or alias name used in the query."},
    {message::kOrderByPositionOutOfRange, 16, 1,
     "The ORDER BY position number %s is out of range of the number of items in the select list."},
    {message::kMoreInsertColumnsThanValues, 15, 1,
     "There are more columns in the INSERT statement than values specified in the VALUES clause. The number "
     "of values in the VALUES clause must match the number of columns specified in the INSERT statement."},
    {message::kFewerInsertColumnsThanValues, 15, 1,
     "There are fewer columns in the INSERT statement than values specified in the VALUES clause. The number "
     "of values in the VALUES clause must match the number of columns specified in the INSERT statement."},
    {message::kMustBeFirstInBatch, 15, 1, "'%s' must be the first statement in a query batch."},
    {message::kMissingEndOfComment, 15, 1, "Missing end comment mark '*/'."},
    {message::kSubqueryWithSeveralColumns, 16, 1,
     "Only one expression can be specified in the select list when the subquery is not introduced with "
     "EXISTS."},
    {message::kPositionalArgumentAfterNamed, 15, 1,
     "Must pass parameter number %s and subsequent parameters as '@name = value'. After the form '@name = "
     "value' has been used, all subsequent parameters must be passed in the form '@name = value'."},
    {message::kFewerSelectedThanInserted, 15, 1,
     "The select list for the INSERT statement contains fewer items than the insert list. The number of "
     "SELECT values must match the number of INSERT columns."},
    {message::kMoreSelectedThanInserted, 15, 1,
     "The select list for the INSERT statement contains more items than the insert list. The number of "
     "SELECT values must match the number of INSERT columns."},
    {message::kNegativeRowCount, 15, 1, "A TOP N or FETCH rowcount value may not be negative."},
    {message::kNameNotPermittedHere, 15, 1,
     "The name \"%s\" is not permitted in this context. Valid expressions are constants, constant "
     "expressions, and (in some contexts) variables. Column names are not permitted."},
    {message::kAggregateOfAggregate, 16, 1,
     "Cannot perform an aggregate function on an expression containing an aggregate or a subquery."},
    {message::kSizeExceedsMaximum, 15, 1,
     "The size (%s) given to the type '%s' exceeds the maximum allowed for any data type (%s)."},
    {message::kVariableAlreadyDeclared, 15, 1,
     "The variable name '%s' has already been declared. Variable names must be unique within a query batch "
     "or stored procedure."},
    {message::kBreakOutsideWhile, 15, 1,
     "Cannot use a BREAK statement outside the scope of a WHILE statement."},
    {message::kContinueOutsideWhile, 15, 1,
     "Cannot use a CONTINUE statement outside the scope of a WHILE statement."},
    {message::kUndeclaredVariable, 15, 1, "Must declare the scalar variable \"%s\"."},
    {message::kAssignmentAmongResults, 15, 1,
     "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval "
     "operations."},
    {message::kOrderByItemNotInDistinct, 15, 1,
     "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
    {message::kAggregateInWhere, 15, 1,
     "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING "
     "clause or a select list, and the column being aggregated is an outer reference."},
    {message::kBadTimeForWaitFor, 15, 1, "Incorrect time syntax in time string '%s' used with WAITFOR."},
    {message::kNotAllowedHere, 15, 1, "%s is not allowed in %s."},
    {message::kUnknownOption, 15, 1, "'%s' is not a recognized %s option."},
    {message::kAggregateInSetList, 15, 1,
     "An aggregate may not appear in the set list of an UPDATE statement."},
    {message::kGroupByWithoutColumn, 15, 1,
     "Each GROUP BY expression must contain at least one column that is not an outer reference."},
    {message::kDatabaseInModuleName, 15, 1,
     "'CREATE/ALTER %s' does not allow specifying the database name as a prefix to the object name."},
    {message::kFloatOutOfRange, 15, 1,
     "The floating point value '%s' is out of the range of computer representation (8 bytes)."},
    {message::kRepeatedOrderByColumn, 15, 1,
     "A column has been specified more than once in the order by list. Columns in the order by list must be "
     "unique."},
    {message::kFunctionNeedsArguments, 15, 1, "The %s function requires %s argument(s)."},
    {message::kReturnWithValueHere, 15, 1,
     "A RETURN statement with a return value cannot be used in this context."},
    {message::kOutputOfConstant, 15, 1,
     "Cannot use the OUTPUT option when passing a constant to a stored procedure."},
    {message::kFunctionTakesArguments, 15, 1, "The %s function requires %s to %s arguments."},
    {message::kNestedTooDeeply, 15, 1,
     "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller "
     "queries."},
    {message::kScaleAbovePrecision, 15, 1, "The scale must be less than or equal to the precision."},
    {message::kUnknownSetOption, 15, 7, "'%s' is not a recognized SET option."},
    {message::kMissingParameter, 16, 4,
     "Procedure or function '%s' expects parameter '%s', which was not supplied."},
    {message::kSetOperationColumnCounts, 16, 1,
     "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of "
     "expressions in their target lists."},
    {message::kOperandTypeClash, 16, 2, "Operand type clash: %s is incompatible with %s"},
    {message::kInvalidColumnName, 16, 1, "Invalid column name '%s'."},
    {message::kInvalidObjectName, 16, 1, "Invalid object name '%s'."},
    {message::kAmbiguousColumnName, 16, 1, "Ambiguous column name '%s'."},
    {message::kColumnCountMismatch, 16, 1,
     "Column name or number of supplied values does not match table definition."},
    {message::kWrongParameterType, 16, 1, "Procedure expects parameter '%s' of type '%s'."},
    {message::kCallsNestedTooDeeply, 16, 1,
     "Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32)."},
    {message::kOverflowOfValue, 16, 1, "Arithmetic overflow error for data type %s, value = %s."},
    {message::kNotWithinTransaction, 16, 6, "%s statement not allowed within multi-statement transaction."},
    {message::kOverflowOfType, 16, 1, "Arithmetic overflow error for type %s, value = %s."},
    {message::kNoSpaceForMoney, 16, 1, "There is insufficient result space to convert a money value to %s."},
    {message::kBadMoneyText, 16, 0,
     "Cannot convert a char value to money. The char value has incorrect syntax."},
    {message::kRepeatedCommonTableName, 16, 1, "Duplicate common table expression name '%s' was specified."},
    {message::kRecursiveTypesDiffer, 16, 1,
     "Types don't match between the anchor and the recursive part in column \"%s\" of recursive query "
     "\"%s\"."},
    {message::kBadDateText, 16, 1,
     "Conversion failed when converting date and/or time from character string."},
    {message::kDateOutOfRange, 16, 3,
     "The conversion of a %s data type to a %s data type resulted in an out-of-range value."},
    {message::kOverflowOfSmallInteger, 16, 1,
     "The conversion of the %s value '%s' overflowed an %s column. Use a larger integer column."},
    {message::kBadTextForType, 16, 1, "Conversion failed when converting the %s value '%s' to data type %s."},
    {message::kOverflowOfInt, 16, 1, "The conversion of the %s value '%s' overflowed an int column."},
    {message::kSeveralRecursiveReferences, 16, 1,
     "Recursive member of a common table expression '%s' has multiple recursive references."},
    {message::kNoImplicitConversion, 16, 3,
     "Implicit conversion from data type %s to %s is not allowed. Use the CONVERT function to run this "
     "query."},
    {message::kNoTableToSelectFrom, 16, 1, "Must specify table to select from."},
    {message::kColumnSetTwice, 16, 1,
     "The column name '%s' is specified more than once in the SET clause or column list of an INSERT. A "
     "column cannot be assigned more than one value in the same clause. Modify the clause to make sure that "
     "a column is updated only once. If this statement updates or inserts columns into a view, column "
     "aliasing can conceal the duplication in your code."},
    {message::kTransactionCountMismatch, 16, 2,
     "Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements. "
     "Previous count = %s, current count = %s."},
    {message::kInvalidStyle, 16, 1,
     "%s is not a valid style number when converting from %s to a character string."},
    {message::kNullReturnStatus, 10, 1,
     "The '%s' procedure attempted to return a status of NULL, which is not allowed. A status of 0 will be "
     "returned instead."},
    {message::kInvalidDateParts, 16, 1,
     "Cannot construct data type %s, some of the arguments have values which are not valid."},
    {message::kBadSmallDateTimeText, 16, 3,
     "Conversion failed when converting character string to smalldatetime data type."},
    {message::kTypeNotComparable, 16, 2,
     "The text, ntext, and image data types cannot be compared or sorted, except when using IS NULL or LIKE "
     "operator."},
    {message::kTooFewArguments, 16, 1,
     "An insufficient number of arguments were supplied for the procedure or function %s."},
    {message::kMissingSemicolonBeforeWith, 15, 1,
     "Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an "
     "xmlnamespaces clause or a change tracking context clause, the previous statement must be terminated "
     "with a semicolon."},
    {message::kIncompatibleOperands, 16, 1, "The data types %s and %s are incompatible in the %s operator."},
    {message::kConstantInOrderBy, 16, 1,
     "A constant expression was encountered in the ORDER BY list, position %s."},
    {message::kTypeNotDistinct, 16, 1,
     "The %s data type cannot be selected as DISTINCT because it is not comparable."},
    {message::kSideEffectInFunction, 16, 14,
     "Invalid use of a side-effecting operator '%s' within a function."},
    {message::kSelectInFunction, 16, 2,
     "Select statements included within a function cannot return data to a client."},
    {message::kFunctionWithoutFinalReturn, 16, 2,
     "The last statement included within a function must be a return statement."},
    {message::kDistinctInRecursion, 16, 1,
     "DISTINCT operator is not allowed in the recursive part of a recursive common table expression '%s'."},
    {message::kTopInRecursion, 16, 1,
     "The TOP or OFFSET operator is not allowed in the recursive part of a recursive common table expression "
     "'%s'."},
    {message::kOuterJoinInRecursion, 16, 1,
     "Outer join is not allowed in the recursive part of a recursive common table expression '%s'."},
    {message::kGroupingInRecursion, 16, 1,
     "GROUP BY, HAVING, or aggregate functions are not allowed in the recursive part of a recursive common "
     "table expression '%s'."},
    {message::kInvalidEscapeCharacter, 16, 1,
     "The invalid escape character \"%s\" was specified in a LIKE predicate."},
    {message::kSubqueryWithSeveralRows, 16, 1,
     "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , >, "
     ">= or when the subquery is used as an expression."},
    {message::kNullInColumn, 16, 2,
     "Cannot insert the value NULL into column '%s', table '%s'; column does not allow nulls. %s fails."},
    {message::kDateAddOverflow, 16, 1, "Adding a value to a '%s' column caused an overflow."},
    {message::kNoExplicitConversion, 16, 1, "Explicit conversion from data type %s to %s is not allowed."},
    {message::kRecursionExhausted, 16, 1,
     "The statement terminated. The maximum recursion %s has been exhausted before statement completion."},
    {message::kDateDiffOverflow, 16, 0,
     "The datediff function resulted in an overflow. The number of dateparts separating two date/time "
     "instances is too large. Try to use datediff with a less precise datepart."},
    {message::kInvalidLengthOfFunction, 16, 1, "Invalid length parameter passed to the %s function."},
    {message::kInvalidLengthOfSubstring, 16, 3,
     "Invalid length parameter passed to the LEFT or SUBSTRING function."},
    {message::kIdentityInsertIsOff, 16, 1,
     "Cannot insert explicit value for identity column in table '%s' when IDENTITY_INSERT is set to OFF."},
    {message::kIdentityValueRequired, 16, 1,
     "Explicit value must be specified for identity column in table '%s' either when IDENTITY_INSERT is set "
     "to ON or when a replication user is inserting into a NOT FOR REPLICATION identity column."},
    {message::kConstraintConflict, 16, 0,
     "The %s statement conflicted with the %s constraint%s. The conflict occurred in database \"%s\", table "
     "\"dbo.%s\"%s."},
    {message::kProcedureCallInFunction, 16, 2,
     "Only functions and some extended stored procedures can be executed from within a function."},
    {message::kSaveWithoutTransaction, 16, 1,
     "Cannot issue SAVE TRANSACTION when there is no active transaction."},
    {message::kInsufficientMemory, 17, 1,
     "There is insufficient system memory in resource pool 'default' to run this query."},
    {message::kUnknownDatabase, 16, 1,
     "Database '%s' does not exist. Make sure that the name is entered correctly."},
    {message::kInvalidLength, 15, 1, "Length or precision specification %s is invalid."},
    {message::kInvalidScale, 15, 1, "Specified scale %s is invalid%s."},
    {message::kNumberTooLong, 15, 1,
     "The number '%s' is out of the range for numeric representation (maximum precision 38)."},
    {message::kVariableInOrderBy, 16, 1,
     "The SELECT item identified by the ORDER BY number %s contains a variable as part of the expression "
     "identifying a column position. Variables are only allowed when ordering by an expression referencing a "
     "column name."},
    {message::kRepeatedCorrelationName, 16, 1,
     "The correlation name '%s' is specified multiple times in a FROM clause."},
    {message::kSameExposedNames, 16, 1,
     "The objects \"%s\" and \"%s\" in the FROM clause have the same exposed names. Use correlation names to "
     "distinguish them."},
    {message::kOrderByNotAllowedHere, 15, 1,
     "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common "
     "table expressions, unless TOP, OFFSET or FOR XML is also specified."},
    {message::kMissingColumnName, 15, 5,
     "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a "
     "name."},
    {message::kSubqueryNotAllowedHere, 15, 1,
     "Subqueries are not allowed in this context. Only scalar expressions are allowed."},
    {message::kConflictingCursorOptions, 15, 1, "Conflicting cursor options %s and %s."},
    {message::kRowCountNotInteger, 15, 1,
     "The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer."},
    {message::kUndeclaredTableVariable, 15, 2, "Must declare the table variable \"%s\"."},
    {message::kObjectNotFound, 16, 12,
     "Cannot find the object \"%s\" because it does not exist or you do not have permissions."},
    {message::kDiskFull, 17, 2, "Could not allocate space: the disk is full."},
    {message::kDeadlockVictim, 13, 1,
     "Transaction (Process ID %s) was deadlocked on lock resources with another process and has been chosen "
     "as the deadlock victim. Rerun the transaction."},
    {message::kLockTimeout, 16, 1, "Lock request time out period exceeded."},
    {message::kAppLockNotHeld, 16, 1,
     "Cannot release the application lock (Database Principal: 'public', Resource: '%s') because it is not "
     "currently held."},
    {message::kInvalidAppLockMode, 16, 1, "An invalid application lock mode was passed to %s."},
    {message::kInvalidAppLockOwner, 16, 1, "An invalid application lock owner was passed to %s."},
    {message::kInvalidAppLockPrincipal, 16, 1,
     "An invalid parameter \"@DbPrincipal\" was passed to the application lock function or procedure %s."},
    {message::kDuplicateKeyForIndex, 16, 1,
     "The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name "
     "'dbo.%s' and the index name '%s'.%s"},
    {message::kConstraintNotCreated, 16, 1, "Could not create constraint or index. See previous errors."},
    {message::kReferencedColumnLengthDiffers, 16, 0,
     "Column '%s.%s' is not the same length or scale as referencing column '%s.%s' in foreign key '%s'. "
     "Columns participating in a foreign key relationship must be defined with the same length and scale."},
    {message::kForeignKeySkipped, 0, 1,
     "Skipping FOREIGN KEY constraint '%s' definition for temporary table. FOREIGN KEY constraints are not "
     "enforced on local or global temporary tables."},
    {message::kReferencedTableUnknown, 16, 0, "Foreign key '%s' references invalid table '%s'."},
    {message::kReferencingColumnUnknown, 16, 1,
     "Foreign key '%s' references invalid column '%s' in referencing table '%s'."},
    {message::kReferencedColumnUnknown, 16, 1,
     "Foreign key '%s' references invalid column '%s' in referenced table '%s'."},
    {message::kReferencedTableWithoutPrimaryKey, 16, 0,
     "Foreign key '%s' has implicit reference to object '%s' which does not have a primary key defined on "
     "it."},
    {message::kReferencedColumnCountDiffers, 16, 0,
     "The number of columns in the referencing column list for foreign key '%s' does not match those of the "
     "referenced column list in the referenced table '%s'."},
    {message::kNoReferencedKey, 16, 0,
     "There are no primary or candidate keys in the referenced table '%s' that match the referencing column "
     "list in the foreign key '%s'."},
    {message::kReferencedColumnTypeDiffers, 16, 0,
     "Column '%s.%s' is not the same data type as referencing column '%s.%s' in foreign key '%s'."},
    {message::kPrimaryKeyAlreadyDefined, 16, 0, "Table '%s' already has a primary key defined on it."},
    {message::kDefaultAlreadyBound, 16, 1, "Column already has a DEFAULT bound to it."},
    {message::kDatabaseExists, 16, 3, "Database '%s' already exists. Choose a different database name."},
    {message::kDatabaseNotCreated, 16, 1,
     "CREATE DATABASE failed. Some file names listed could not be created: %s"},
    {message::kFileInUse, 16, 1, "The file '%s' cannot be overwritten. It is being used by database '%s'."},
    {message::kUnknownIndexColumn, 16, 1, "Column name '%s' does not exist in the target table or view."},
    {message::kIndexExists, 16, 1,
     "The operation failed because an index or statistics with name '%s' already exists on table 'dbo.%s'."},
    {message::kInvalidKeyColumnType, 16, 1,
     "Column '%s' in table '%s' is of a type that is invalid for use as a key column in an index."},
    {message::kMissingDependency, 0, 1,
     "The module '%s' depends on the missing object '%s'. The module will still be created; however, it "
     "cannot run successfully until the object exists."},
    {message::kDuplicateKeyInIndex, 14, 1,
     "Cannot insert duplicate key row in object 'dbo.%s' with unique index '%s'.%s"},
    {message::kDuplicateKey, 14, 1,
     "Violation of %s KEY constraint '%s'. Cannot insert duplicate key in object 'dbo.%s'.%s"},
    {message::kTruncationInColumn, 16, 1,
     "String or binary data would be truncated in table '%s', column '%s'. Truncated value: '%s'."},
    {message::kRepeatedColumnName, 16, 1,
     "Column names in each table must be unique. Column name '%s' in table '%s' is specified more than "
     "once."},
    {message::kObjectExists, 16, 6, "There is already an object named '%s' in the database."},
    {message::kUnknownType, 16, 1, "Column, parameter, or variable #1: Cannot find data type %s."},
    {message::kTypeWithoutWidth, 16, 1,
     "Column, parameter, or variable #1: Cannot specify a column width on data type %s."},
    {message::kIndexNotFound, 11, 1, "Cannot find index '%s'."},
    {message::kInvalidRaisedNumber, 16, 1,
     "Error number %s is invalid. The number must be from 13000 through 2147483647 and it cannot be 50000."},
    {message::kLobVariable, 16, 1, "The text, ntext, and image data types are invalid for local variables."},
    {message::kSeveralIdentityColumns, 16, 1,
     "Multiple identity columns specified for table '%s'. Only one identity column per table is allowed."},
    {message::kInvalidSubstitutionType, 16, 1,
     "Cannot specify %s data type (parameter %s) as a substitution parameter."},
    {message::kInvalidIdentityType, 16, 1,
     "Identity column '%s' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a "
     "scale of 0, and constrained to be nonnullable."},
    {message::kPrecisionTooHigh, 16, 1,
     "Specified column precision %s is greater than the maximum precision of 38."},
    {message::kSeverityTooHigh, 16, 1,
     "Error severity levels greater than 18 can only be specified by members of the sysadmin role, using the "
     "WITH LOG option."},
    {message::kUnknownSchema, 16, 1,
     "The specified schema name \"%s\" either does not exist or you do not have permission to use it."},
    {message::kSubstitutionTypeMismatch, 16, 1,
     "The data type of substitution parameter %s does not match the expected type of the format "
     "specification."},
    {message::kInvalidFormat, 16, 1, "Invalid format specification: '%s'."},
    {message::kProcedureNotFound, 16, 62, "Could not find stored procedure '%s'."},
    {message::kBackupTerminated, 16, 1, "%s is terminating abnormally."},
    {message::kBackupProcessed, 0, 1, "%s DATABASE successfully processed %s pages in %s."},
    {message::kBackupWithinTransaction, 16, 0,
     "Cannot perform a backup or restore operation within a transaction."},
    {message::kNoExclusiveAccess, 16, 1,
     "Exclusive access could not be obtained because the database is in use."},
    {message::kRestoreOfOwnDatabase, 16, 1,
     "RESTORE cannot process database '%s' because it is in use by this session. It is recommended that the "
     "master database be used when performing this operation."},
    {message::kRestoreOfMaster, 16, 1,
     "To restore the master database, the server must be running in single-user mode. For information on "
     "starting in single-user mode, see \"How to: Start an Instance of SQL Server (sqlservr.exe)\" in Books "
     "Online."},
    {message::kRestorePlanningFailed, 16, 1,
     "Problems were identified while planning for the RESTORE statement. Previous messages provide details."},
    {message::kBackupNotAllowed, 16, 3, "Backup and restore operations are not allowed on database %s."},
    {message::kBackupOfOtherDatabase, 16, 4,
     "The backup set holds a backup of a database other than the existing '%s' database."},
    {message::kFileCannotBeRestored, 16, 4,
     "File '%s' cannot be restored to '%s'. Use WITH MOVE to identify a valid location for the file."},
    {message::kTailOfLogNotBackedUp, 16, 1,
     "The tail of the log for the database \"%s\" has not been backed up. Use the WITH REPLACE clause of the "
     "RESTORE statement to overwrite the existing database."},
    {message::kBackupDeviceNotOpened, 16, 1,
     "Cannot open backup device '%s'. Operating system error %s(%s)."},
    {message::kBackupWriteFailed, 16, 1, "Write on \"%s\" failed: %s"},
    {message::kBackupReadFailed, 16, 1,
     "Read on \"%s\" failed: the backup is damaged (its checksum does not hold)."},
    {message::kPercentProcessed, 0, 1, "%s percent processed."},
    {message::kUnknownLogicalFile, 16, 1,
     "Logical file '%s' is not part of database '%s'. Use RESTORE FILELISTONLY to list the logical file "
     "names."},
    {message::kBadMediaFamily, 16, 1,
     "The media family on device '%s' is incorrectly formed. SQL Server cannot process this media family."},
    {message::kNotABackupSet, 16, 2,
     "The file on device '%s' is not a valid Microsoft Tape Format backup set."},
    {message::kBackupSetValid, 0, 1, "The backup set on file 1 is valid."},
    {message::kInternalConsistency, 16, 1, "An internal consistency error has occurred: %s"},
    {message::kInvalidFloatOperation, 16, 1, "An invalid floating point operation occurred."},
    {message::kCannotDropMissing, 11, 5,
     "Cannot drop the %s '%s', because it does not exist or you do not have permission."},
    {message::kCannotDropInUse, 16, 3, "Cannot drop database \"%s\" because it is currently in use."},
    {message::kDropOfOtherKind, 16, 1, "Cannot use DROP %s with '%s' because '%s' is a %s. Use DROP %s."},
    {message::kCannotDropSystemDatabase, 16, 1,
     "Cannot drop the database '%s' because it is a system database."},
    {message::kCannotDropKeyIndex, 16, 4,
     "An explicit DROP INDEX is not allowed on index '%s'. It is being used for %s KEY constraint "
     "enforcement."},
    {message::kConstraintReferenced, 16, 0,
     "The constraint '%s' is being referenced by table '%s', foreign key constraint '%s'."},
    {message::kTableReferenced, 16, 1,
     "Could not drop object '%s' because it is referenced by a FOREIGN KEY constraint."},
    {message::kConstraintNotDropped, 16, 0, "Could not drop constraint. See previous errors."},
    {message::kNotAConstraint, 16, 1, "'%s' is not a constraint."},
    {message::kCommitWithoutBegin, 16, 1,
     "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {message::kRollbackWithoutBegin, 16, 1,
     "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {message::kRollbackInInsertExec, 16, 0,
     "Cannot use the ROLLBACK statement within an INSERT-EXEC statement."},
    {message::kCommitInInsertExec, 16, 0,
     "Cannot use the COMMIT statement within an INSERT-EXEC statement unless BEGIN TRANSACTION is used "
     "first."},
    {message::kTransactionRequired, 16, 1,
     "The statement or function must be executed in the context of a user transaction."},
    {message::kTransactionDoomed, 16, 1,
     "The current transaction cannot be committed and cannot support operations that write to the log file. "
     "Roll back the transaction."},
    {message::kSavepointInDoomedTransaction, 16, 1,
     "The current transaction cannot be committed and cannot be rolled back to a savepoint. Roll back the "
     "entire transaction."},
    {message::kDoomedAtEndOfBatch, 16, 1,
     "Uncommittable transaction is detected at the end of the batch. The transaction is rolled back."},
    {message::kPagesProcessed, 0, 1, "Processed %s pages for database '%s', file '%s' on file 1."},
    {message::kCannotOpenDatabase, 11, 1,
     "Cannot open database \"%s\" requested by the login. The login failed."},
    {message::kUnboundIdentifier, 16, 1, "The multi-part identifier \"%s\" could not be bound."},
    {message::kWindowNotAllowedHere, 15, 1,
     "Windowed functions can only appear in the SELECT or ORDER BY clauses."},
    {message::kOverWithOrderByRequired, 15, 1, "The function '%s' must have an OVER clause with ORDER BY."},
    {message::kNotAWindowFunction, 16, 1,
     "The function '%s' is not a valid windowing function, and cannot be used with the OVER clause."},
    {message::kNtileNotPositive, 16, 1,
     "The function 'ntile' takes only a positive int or bigint expression as its input."},
    {message::kFunctionNotFound, 16, 1,
     "Cannot find either column \"%s\" or the user-defined function or aggregate \"%s.%s\", or the name is "
     "ambiguous."},
    {message::kCoalesceOfNulls, 16, 1,
     "At least one of the arguments to COALESCE must be an expression that is not the NULL constant."},
    {message::kNullIfOfNull, 16, 1,
     "The type of the first argument to NULLIF cannot be the NULL constant because the type of the first "
     "argument has to be known."},
    {message::kRangeFrameLimits, 16, 1,
     "RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters."},
    {message::kSelfReference, 16, 1,
     "View or function '%s' contains a self-reference. Views or functions cannot reference themselves "
     "directly or indirectly."},
    {message::kRepeatedViewColumn, 16, 1,
     "Column names in each view or function must be unique. Column name '%s' in view or function '%s' is "
     "specified more than once."},
    {message::kViewOnTemporaryTable, 16, 1,
     "Views or functions are not allowed on temporary tables. Table names that begin with '#' denote "
     "temporary tables."},
    {message::kUnnamedViewColumn, 16, 1,
     "Create View or Function failed because no column name was specified for column %s."},
    {message::kTruncatedTableNotFound, 16, 1,
     "Cannot find the object \"%s\" because it does not exist or you do not have permissions."},
    {message::kTruncatedTableReferenced, 16, 1,
     "Cannot truncate table '%s' because it is being referenced by a FOREIGN KEY constraint."},
    {message::kAddedColumnNotNull, 16, 1,
     "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition "
     "specified, or the column being added is an identity or timestamp column, or alternatively if none of "
     "the previous conditions are satisfied the table must be empty to allow addition of this column. Column "
     "'%s' cannot be added to non-empty table '%s' because it does not satisfy these conditions."},
    {message::kAlteredTableNotFound, 16, 1,
     "Cannot find the object \"%s\" because it does not exist or you do not have permissions."},
    {message::kColumnHasDependents, 16, 9,
     "ALTER TABLE %s COLUMN %s failed because one or more objects access this column."},
    {message::kAlteredColumnNotFound, 16, 1,
     "ALTER TABLE %s COLUMN failed because column '%s' does not exist in table '%s'."},
    {message::kCannotAlterDatabase, 14, 5,
     "User does not have permission to alter database '%s', the database does not exist, or the database is "
     "not in a state that allows access checks."},
    {message::kDatabaseRenamed, 0, 1, "The database name '%s' has been set."},
    {message::kDatabaseNotLocked, 16, 2,
     "The database could not be exclusively locked to perform the operation."},
    {message::kOptionCannotBeSet, 16, 5, "Option '%s' cannot be set in database '%s'."},
    {message::kDependentOnColumn, 16, 1, "The %s '%s' is dependent on column '%s'."},
    {message::kIntegerIndexInWindow, 16, 1,
     "Windowed functions, aggregates and NEXT VALUE FOR functions do not support integer indices as ORDER BY "
     "clause expressions."},
    {message::kConstantInWindow, 16, 1,
     "Windowed functions, aggregates and NEXT VALUE FOR functions do not support constants as ORDER BY "
     "clause expressions."},
    {message::kTypeNotInSetOperation, 16, 1,
     "The data type %s cannot be used as an operand to the UNION, INTERSECT or EXCEPT operators because it "
     "is not comparable."},
    {message::kDatabaseChanged, 0, 1, "Changed database context to '%s'."},
    {message::kSavepointNotFound, 16, 1,
     "Cannot roll back %s. No transaction or savepoint of that name was found."},
    {message::kUnnamedXmlColumn, 16, 1,
     "Unnamed tables cannot be used as XML identifiers as well as unnamed columns cannot be used for "
     "attribute names. Name unnamed columns/tables using AS in the SELECT statement."},
    {message::kAttributeAfterElement, 16, 1,
     "Attribute-centric column '%s' must not come after a non-attribute-centric sibling in XML hierarchy in "
     "FOR XML PATH."},
    {message::kRowTagOmitted, 16, 1,
     "Row tag omission (empty row tag name) cannot be used with attribute-centric FOR XML serialization."},
    {message::kBadRpcParameter, 16, 1,
     "The incoming tabular data stream (TDS) remote procedure call (RPC) protocol stream is incorrect. "
     "Parameter %s (\"%s\"): The supplied value is not a valid instance of data type %s. Check the source "
     "data for invalid values. An example of an invalid value is data of numeric type with scale greater "
     "than precision."},
    {message::kIdentityValueNeedsColumnList, 16, 1,
     "An explicit value for the identity column in table '%s' can only be specified when a column list is "
     "used and IDENTITY_INSERT is ON."},
    {message::kIdentityUpdate, 16, 1, "Cannot update identity column '%s'."},
    {message::kNoIdentityColumn, 16, 1,
     "Table '%s' does not have the identity property. Cannot perform SET operation."},
    {message::kIdentityInsertAlreadyOn, 16, 1,
     "IDENTITY_INSERT is already ON for table '%s'. Cannot perform SET operation for table '%s'."},
    {message::kSeveralPrimaryKeys, 16, 0, "Cannot add multiple PRIMARY KEY constraints to table '%s'."},
    {message::kPrimaryKeyOnNullable, 16, 1,
     "Cannot define PRIMARY KEY constraint on nullable column in table '%s'."},
    {message::kConversionError, 16, 5, "Error converting data type %s to %s."},
    {message::kArithmeticOverflow, 16, 2, "Arithmetic overflow error converting %s to data type %s."},
    {message::kInvalidArgumentType, 16, 1,
     "Argument data type %s is invalid for argument %s of %s function."},
    {message::kInvalidOperandType, 16, 1, "Operand data type %s is invalid for %s operator."},
    {message::kUngroupedInSelect, 16, 1,
     "Column '%s' is invalid in the select list because it is not contained in either an aggregate function "
     "or the GROUP BY clause."},
    {message::kUngroupedInHaving, 16, 1,
     "Column '%s' is invalid in the HAVING clause because it is not contained in either an aggregate "
     "function or the GROUP BY clause."},
    {message::kUngroupedInOrderBy, 16, 1,
     "Column '%s' is invalid in the ORDER BY clause because it is not contained in either an aggregate "
     "function or the GROUP BY clause."},
    {message::kCaseOfNulls, 16, 1,
     "At least one of the result expressions in a CASE specification must be an expression other than the "
     "NULL constant."},
    {message::kDivideByZero, 16, 1, "Divide by zero error encountered."},
    {message::kCheckOfOtherColumn, 16, 0,
     "Column CHECK constraint for column '%s' references another column, table '%s'."},
    {message::kParameterSuppliedTwice, 16, 1, "Parameter '%s' was supplied multiple times."},
    {message::kTooManyArguments, 16, 2, "Procedure or function %s has too many arguments specified."},
    {message::kNotAParameter, 16, 1, "%s is not a parameter for procedure %s."},
    {message::kProcedureWithoutParameters, 16, 2,
     "Procedure %s has no parameters and arguments were supplied."},
    {message::kIdentityOnNullable, 16, 1,
     "Could not create IDENTITY attribute on nullable column '%s', table '%s'."},
    {message::kTruncation, 16, 1, "String or binary data would be truncated."},
    {message::kNullEliminated, 0, 1,
     "Warning: Null value is eliminated by an aggregate or other SET operation."},
    {message::kAmbiguousTable, 16, 1, "The table '%s' is ambiguous."},
    {message::kUnnamedColumn, 16, 1, "No column name was specified for column %s of '%s'."},
    {message::kColumnSpecifiedTwice, 16, 1, "The column '%s' was specified multiple times for '%s'."},
    {message::kMoreColumnsThanNames, 16, 1, "'%s' has more columns than were specified in the column list."},
    {message::kFewerColumnsThanNames, 16, 1,
     "'%s' has fewer columns than were specified in the column list."},
    {message::kNotAnOutputParameter, 16, 2,
     "The formal parameter \"%s\" was not declared as an OUTPUT parameter, but the actual parameter passed "
     "in requested output."},
    {message::kNestedInsertExec, 16, 1, "An INSERT EXEC statement cannot be nested."},
    {message::kBadUniqueIdentifier, 16, 2,
     "Conversion failed when converting from a character string to uniqueidentifier."},
    {message::kInsufficientSpace, 16, 2, "Insufficient %s."},
    {message::kParameterNotSupplied, 16, 1,
     "The parameterized query '%s' expects the parameter '%s', which was not supplied."},
    {message::kNegativeOffset, 16, 1,
     "Offset parameter for Lag and Lead functions cannot be a negative value."},
    {message::kTableError, 16, 98, "Table error: %s"},
    {message::kDatabaseChecked, 10, 1,
     "CHECKDB found 0 allocation errors and %s consistency errors in database '%s'."},
    {message::kDatePartNotSupported, 16, 11, "The datepart %s is not supported by date function %s."},
    {message::kStyleNotSupported, 16, 1, "The style %s is not supported for conversions from %s to %s."},
    {message::kDatePartNotSupportedForType, 16, 1,
     "The datepart %s is not supported by date function %s for data type %s."},
    {message::kStringAggTooLong, 16, 1,
     "STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result "
     "truncation."},
    {message::kRethrowOutsideCatch, 15, 1,
     "To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW statement "
     "inside a CATCH block, or add error parameters to the THROW statement."},
    {message::kRowLengthsDiffer, 15, 1,
     "The number of columns for each row in a table value constructor must be the same."},
    {message::kTooManyInsertRows, 15, 1,
     "The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 "
     "row values."},
    {message::kTopWithOffset, 15, 2, "A TOP can not be used in the same query or sub-query as a OFFSET."},
    {message::kNegativeOffsetClause, 15, 1, "The offset specified in a OFFSET clause may not be negative."},
    {message::kFetchNotPositive, 15, 1,
     "The number of rows provided for a FETCH clause must be greater then zero."},
    {message::kFrameNotAllowed, 15, 1, "The function '%s' may not have a window frame."},
    {message::kOverRequired, 15, 1, "The function '%s' must have an OVER clause."},
    {message::kFrameWithoutOrderBy, 15, 1, "Window frame with ROWS or RANGE must have an ORDER BY clause."},
    {message::kWithinGroupNotAllowed, 15, 1, "The function '%s' may not have a WITHIN GROUP clause."},
    {message::kDistinctWithOver, 15, 1, "Use of DISTINCT is not allowed with the OVER clause."},
    {message::kInvalidObject, 16, 1,
     "The object '%s' does not exist in database '%s' or is invalid for this operation."},
    {message::kNoTextOfObject, 16, 1, "There is no text for object '%s'."},
    {message::kCursorAlreadyOpen, 16, 1, "The cursor is already open."},
    {message::kForwardOnlyCursor, 16, 1,
     "fetch: The fetch type %s cannot be used with forward only cursors."},
    {message::kCursorExists, 16, 1, "A cursor with the name '%s' already exists."},
    {message::kCursorNotFound, 16, 1, "A cursor with the name '%s' does not exist."},
    {message::kCursorNotOpen, 16, 1, "Cursor is not open."},
    {message::kCursorTypeMismatch, 16, 1,
     "Cursor Fetch: Implicit conversion from data type %s to %s is not allowed."},
    {message::kCursorColumnCount, 16, 1,
     "Cursorfetch: The number of variables declared in the INTO list must match that of selected columns."},
    {message::kNoTextOfRaisedNumber, 16, 1,
     "Error %s, severity %s, state %s was raised, but no message with that error number was found in "
     "sys.messages. If error is larger than 50000, make sure the user-defined message is added using "
     "sp_addmessage."},
    {message::kThrowNumberOutOfRange, 16, 10,
     "Error number %s in the THROW statement is outside the valid range. Specify an error number in the "
     "valid range of 50000 to 2147483647."},
};

}  // namespace

SqlError sqlError(int number, std::initializer_list<std::string_view> values, int state) {
    const auto* found = std::ranges::lower_bound(kMessages, number, {}, &MessageText::number);
    if (found == std::end(kMessages) || found->number != number)
        throw std::logic_error("no text for error " + std::to_string(number));
    std::string text;
    std::string_view rest = found->text;
    for (const auto value : values) {
        const std::size_t at = std::min(rest.find("%s"), rest.size());
        if (at == rest.size()) break;
        text.append(rest.substr(0, at)).append(value);
        rest.remove_prefix(at + 2);
    }
    return {number, text.append(rest), found->severity, state ? state : found->state};
}

SqlError unsupported(std::string_view construct) {
    return {message::kUserDefined, "tsqlbox does not support " + std::string(construct) + "."};
}

}  // namespace tsql
