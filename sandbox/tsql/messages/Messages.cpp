#include "messages/Messages.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>

namespace tsql {
namespace {

// Number, severity, state, text; a line that begins with a blank goes on with the text.
constexpr std::string_view kMessages =
    R"text(103 15 1 The database name '%s' is empty or too long. Maximum length is 128.
104 16 1 ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT
    operator.
105 15 1 Unclosed quotation mark after the character string '%s'.
106 15 1 Too many table names in the query. The maximum allowable is 256.
107 15 1 The column prefix '%s' does not match with a table name or alias name used in the query.
108 16 1 The ORDER BY position number %s is out of range of the number of items in the select list.
109 15 1 There are more columns in the INSERT statement than values specified in the VALUES clause. The
    number of values in the VALUES clause must match the number of columns specified in the INSERT statement.
110 15 1 There are fewer columns in the INSERT statement than values specified in the VALUES clause. The
    number of values in the VALUES clause must match the number of columns specified in the INSERT statement.
111 15 1 '%s' must be the first statement in a query batch.
113 15 1 Missing end comment mark '*/'.
116 16 1 Only one expression can be specified in the select list when the subquery is not introduced with
    EXISTS.
119 15 1 Must pass parameter number %s and subsequent parameters as '@name = value'. After the form '@name =
    value' has been used, all subsequent parameters must be passed in the form '@name = value'.
120 15 1 The select list for the INSERT statement contains fewer items than the insert list. The number of
    SELECT values must match the number of INSERT columns.
121 15 1 The select list for the INSERT statement contains more items than the insert list. The number of
    SELECT values must match the number of INSERT columns.
127 15 1 A TOP N or FETCH rowcount value may not be negative.
128 15 1 The name "%s" is not permitted in this context. Valid expressions are constants, constant
    expressions, and (in some contexts) variables. Column names are not permitted.
130 16 1 Cannot perform an aggregate function on an expression containing an aggregate or a subquery.
131 15 1 The size (%s) given to the type '%s' exceeds the maximum allowed for any data type (%s).
134 15 1 The variable name '%s' has already been declared. Variable names must be unique within a query batch
    or stored procedure.
135 15 1 Cannot use a BREAK statement outside the scope of a WHILE statement.
136 15 1 Cannot use a CONTINUE statement outside the scope of a WHILE statement.
137 15 1 Must declare the scalar variable "%s".
141 15 1 A SELECT statement that assigns a value to a variable must not be combined with data-retrieval
    operations.
145 15 1 ORDER BY items must appear in the select list if SELECT DISTINCT is specified.
147 15 1 An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING
    clause or a select list, and the column being aggregated is an outer reference.
148 15 1 Incorrect time syntax in time string '%s' used with WAITFOR.
154 15 1 %s is not allowed in %s.
155 15 1 '%s' is not a recognized %s option.
157 15 1 An aggregate may not appear in the set list of an UPDATE statement.
164 15 1 Each GROUP BY expression must contain at least one column that is not an outer reference.
166 15 1 'CREATE/ALTER %s' does not allow specifying the database name as a prefix to the object name.
168 15 1 The floating point value '%s' is out of the range of computer representation (8 bytes).
169 15 1 A column has been specified more than once in the order by list. Columns in the order by list must be
    unique.
174 15 1 The %s function requires %s argument(s).
178 15 1 A RETURN statement with a return value cannot be used in this context.
179 15 1 Cannot use the OUTPUT option when passing a constant to a stored procedure.
189 15 1 The %s function requires %s to %s arguments.
191 15 1 Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller
    queries.
192 15 1 The scale must be less than or equal to the precision.
195 15 7 '%s' is not a recognized SET option.
201 16 4 Procedure or function '%s' expects parameter '%s', which was not supplied.
205 16 1 All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of
    expressions in their target lists.
206 16 2 Operand type clash: %s is incompatible with %s
207 16 1 Invalid column name '%s'.
208 16 1 Invalid object name '%s'.
209 16 1 Ambiguous column name '%s'.
213 16 1 Column name or number of supplied values does not match table definition.
214 16 1 Procedure expects parameter '%s' of type '%s'.
217 16 1 Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).
220 16 1 Arithmetic overflow error for data type %s, value = %s.
226 16 6 %s statement not allowed within multi-statement transaction.
232 16 1 Arithmetic overflow error for type %s, value = %s.
234 16 1 There is insufficient result space to convert a money value to %s.
235 16 0 Cannot convert a char value to money. The char value has incorrect syntax.
239 16 1 Duplicate common table expression name '%s' was specified.
240 16 1 Types don't match between the anchor and the recursive part in column "%s" of recursive query "%s".
241 16 1 Conversion failed when converting date and/or time from character string.
242 16 3 The conversion of a %s data type to a %s data type resulted in an out-of-range value.
244 16 1 The conversion of the %s value '%s' overflowed an %s column. Use a larger integer column.
245 16 1 Conversion failed when converting the %s value '%s' to data type %s.
248 16 1 The conversion of the %s value '%s' overflowed an int column.
253 16 1 Recursive member of a common table expression '%s' has multiple recursive references.
257 16 3 Implicit conversion from data type %s to %s is not allowed. Use the CONVERT function to run this query.
263 16 1 Must specify table to select from.
264 16 1 The column name '%s' is specified more than once in the SET clause or column list of an INSERT. A
    column cannot be assigned more than one value in the same clause. Modify the clause to make sure that a
    column is updated only once. If this statement updates or inserts columns into a view, column aliasing
    can conceal the duplication in your code.
266 16 2 Transaction count after EXECUTE indicates a mismatching number of BEGIN and COMMIT statements.
    Previous count = %s, current count = %s.
281 16 1 %s is not a valid style number when converting from %s to a character string.
282 10 1 The '%s' procedure attempted to return a status of NULL, which is not allowed. A status of 0 will
    be returned instead.
289 16 1 Cannot construct data type %s, some of the arguments have values which are not valid.
295 16 3 Conversion failed when converting character string to smalldatetime data type.
306 16 2 The text, ntext, and image data types cannot be compared or sorted, except when using IS NULL or LIKE
    operator.
313 16 1 An insufficient number of arguments were supplied for the procedure or function %s.
319 15 1 Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an
    xmlnamespaces clause or a change tracking context clause, the previous statement must be terminated with
    a semicolon.
402 16 1 The data types %s and %s are incompatible in the %s operator.
408 16 1 A constant expression was encountered in the ORDER BY list, position %s.
421 16 1 The %s data type cannot be selected as DISTINCT because it is not comparable.
443 16 14 Invalid use of a side-effecting operator '%s' within a function.
444 16 2 Select statements included within a function cannot return data to a client.
455 16 2 The last statement included within a function must be a return statement.
460 16 1 DISTINCT operator is not allowed in the recursive part of a recursive common table expression '%s'.
461 16 1 The TOP or OFFSET operator is not allowed in the recursive part of a recursive common table expression
    '%s'.
462 16 1 Outer join is not allowed in the recursive part of a recursive common table expression '%s'.
467 16 1 GROUP BY, HAVING, or aggregate functions are not allowed in the recursive part of a recursive common
    table expression '%s'.
506 16 1 The invalid escape character "%s" was specified in a LIKE predicate.
512 16 1 Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= ,
    >, >= or when the subquery is used as an expression.
515 16 2 Cannot insert the value NULL into column '%s', table '%s'; column does not allow nulls. %s fails.
517 16 1 Adding a value to a '%s' column caused an overflow.
529 16 1 Explicit conversion from data type %s to %s is not allowed.
530 16 1 The statement terminated. The maximum recursion %s has been exhausted before statement completion.
535 16 0 The datediff function resulted in an overflow. The number of dateparts separating two date/time
    instances is too large. Try to use datediff with a less precise datepart.
536 16 1 Invalid length parameter passed to the %s function.
537 16 3 Invalid length parameter passed to the LEFT or SUBSTRING function.
544 16 1 Cannot insert explicit value for identity column in table '%s' when IDENTITY_INSERT is set to OFF.
545 16 1 Explicit value must be specified for identity column in table '%s' either when IDENTITY_INSERT is set to
    ON or when a replication user is inserting into a NOT FOR REPLICATION identity column.
547 16 0 The %s statement conflicted with the %s constraint%s. The conflict occurred in database "%s", table
    "dbo.%s"%s.
557 16 2 Only functions and some extended stored procedures can be executed from within a function.
628 16 1 Cannot issue SAVE TRANSACTION when there is no active transaction.
911 16 1 Database '%s' does not exist. Make sure that the name is entered correctly.
1001 15 1 Length or precision specification %s is invalid.
1002 15 1 Specified scale %s is invalid%s.
1007 15 1 The number '%s' is out of the range for numeric representation (maximum precision 38).
1008 16 1 The SELECT item identified by the ORDER BY number %s contains a variable as part of the expression identifying a
    column position. Variables are only allowed when ordering by an expression referencing a column name.
1011 16 1 The correlation name '%s' is specified multiple times in a FROM clause.
1013 16 1 The objects "%s" and "%s" in the FROM clause have the same exposed names. Use correlation names to
    distinguish them.
1033 15 1 The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common
    table expressions, unless TOP, OFFSET or FOR XML is also specified.
1038 15 5 An object or column name is missing or empty. For SELECT INTO statements, verify each column has a
    name.
1046 15 1 Subqueries are not allowed in this context. Only scalar expressions are allowed.
1048 15 1 Conflicting cursor options %s and %s.
1060 15 1 The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer.
1087 15 2 Must declare the table variable "%s".
1088 16 12 Cannot find the object "%s" because it does not exist or you do not have permissions.
1105 17 2 Could not allocate space: the disk is full.
1205 13 1 Transaction (Process ID %s) was deadlocked on lock resources with another process and has been
    chosen as the deadlock victim. Rerun the transaction.
1222 16 1 Lock request time out period exceeded.
1223 16 1 Cannot release the application lock (Database Principal: 'public', Resource: '%s') because it is
    not currently held.
1225 16 1 An invalid application lock mode was passed to %s.
1226 16 1 An invalid application lock owner was passed to %s.
1228 16 1 An invalid parameter "@DbPrincipal" was passed to the application lock function or procedure %s.
1505 16 1 The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name
    'dbo.%s' and the index name '%s'.%s
1750 16 1 Could not create constraint or index. See previous errors.
1753 16 0 Column '%s.%s' is not the same length or scale as referencing column '%s.%s' in foreign key '%s'.
    Columns participating in a foreign key relationship must be defined with the same length and scale.
1756 0 1 Skipping FOREIGN KEY constraint '%s' definition for temporary table. FOREIGN KEY constraints are not
    enforced on local or global temporary tables.
1767 16 0 Foreign key '%s' references invalid table '%s'.
1769 16 1 Foreign key '%s' references invalid column '%s' in referencing table '%s'.
1770 16 1 Foreign key '%s' references invalid column '%s' in referenced table '%s'.
1773 16 0 Foreign key '%s' has implicit reference to object '%s' which does not have a primary key defined on
    it.
1774 16 0 The number of columns in the referencing column list for foreign key '%s' does not match those of
    the referenced column list in the referenced table '%s'.
1776 16 0 There are no primary or candidate keys in the referenced table '%s' that match the referencing
    column list in the foreign key '%s'.
1778 16 0 Column '%s.%s' is not the same data type as referencing column '%s.%s' in foreign key '%s'.
1779 16 0 Table '%s' already has a primary key defined on it.
1781 16 1 Column already has a DEFAULT bound to it.
1801 16 3 Database '%s' already exists. Choose a different database name.
1802 16 1 CREATE DATABASE failed. Some file names listed could not be created: %s
1834 16 1 The file '%s' cannot be overwritten. It is being used by database '%s'.
1911 16 1 Column name '%s' does not exist in the target table or view.
1913 16 1 The operation failed because an index or statistics with name '%s' already exists on table
    'dbo.%s'.
1919 16 1 Column '%s' in table '%s' is of a type that is invalid for use as a key column in an index.
2007 0 1 The module '%s' depends on the missing object '%s'. The module will still be created; however, it
    cannot run successfully until the object exists.
2601 14 1 Cannot insert duplicate key row in object 'dbo.%s' with unique index '%s'.%s
2627 14 1 Violation of %s KEY constraint '%s'. Cannot insert duplicate key in object 'dbo.%s'.%s
2628 16 1 String or binary data would be truncated in table '%s', column '%s'. Truncated value: '%s'.
2705 16 1 Column names in each table must be unique. Column name '%s' in table '%s' is specified more than
    once.
2714 16 6 There is already an object named '%s' in the database.
2715 16 1 Column, parameter, or variable #1: Cannot find data type %s.
2716 16 1 Column, parameter, or variable #1: Cannot specify a column width on data type %s.
2727 11 1 Cannot find index '%s'.
2732 16 1 Error number %s is invalid. The number must be from 13000 through 2147483647 and it cannot be
    50000.
2739 16 1 The text, ntext, and image data types are invalid for local variables.
2744 16 1 Multiple identity columns specified for table '%s'. Only one identity column per table is allowed.
2748 16 1 Cannot specify %s data type (parameter %s) as a substitution parameter.
2749 16 1 Identity column '%s' must be of data type int, bigint, smallint, tinyint, or decimal or numeric
    with a scale of 0, and constrained to be nonnullable.
2750 16 1 Specified column precision %s is greater than the maximum precision of 38.
2754 16 1 Error severity levels greater than 18 can only be specified by members of the sysadmin role, using
    the WITH LOG option.
2760 16 1 The specified schema name "%s" either does not exist or you do not have permission to use it.
2786 16 1 The data type of substitution parameter %s does not match the expected type of the format
    specification.
2787 16 1 Invalid format specification: '%s'.
2812 16 62 Could not find stored procedure '%s'.
3013 16 1 %s is terminating abnormally.
3014 0 1 %s DATABASE successfully processed %s pages in %s.
3021 16 0 Cannot perform a backup or restore operation within a transaction.
3101 16 1 Exclusive access could not be obtained because the database is in use.
3102 16 1 RESTORE cannot process database '%s' because it is in use by this session. It is recommended that
    the master database be used when performing this operation.
3108 16 1 To restore the master database, the server must be running in single-user mode. For information on
    starting in single-user mode, see "How to: Start an Instance of SQL Server (sqlservr.exe)" in Books Online.
3119 16 1 Problems were identified while planning for the RESTORE statement. Previous messages provide details.
3147 16 3 Backup and restore operations are not allowed on database %s.
3154 16 4 The backup set holds a backup of a database other than the existing '%s' database.
3156 16 4 File '%s' cannot be restored to '%s'. Use WITH MOVE to identify a valid location for the file.
3159 16 1 The tail of the log for the database "%s" has not been backed up. Use the WITH REPLACE clause of
    the RESTORE statement to overwrite the existing database.
3201 16 1 Cannot open backup device '%s'. Operating system error %s(%s).
3202 16 1 Write on "%s" failed: %s
3203 16 1 Read on "%s" failed: the backup is damaged (its checksum does not hold).
3211 0 1 %s percent processed.
3234 16 1 Logical file '%s' is not part of database '%s'. Use RESTORE FILELISTONLY to list the logical file
    names.
3241 16 1 The media family on device '%s' is incorrectly formed. SQL Server cannot process this media family.
3242 16 2 The file on device '%s' is not a valid Microsoft Tape Format backup set.
3262 0 1 The backup set on file 1 is valid.
3270 16 1 An internal consistency error has occurred: %s
3623 16 1 An invalid floating point operation occurred.
3701 11 5 Cannot drop the %s '%s', because it does not exist or you do not have permission.
3702 16 3 Cannot drop database "%s" because it is currently in use.
3705 16 1 Cannot use DROP %s with '%s' because '%s' is a %s. Use DROP %s.
3708 16 1 Cannot drop the database '%s' because it is a system database.
3723 16 4 An explicit DROP INDEX is not allowed on index '%s'. It is being used for %s KEY constraint enforcement.
3725 16 0 The constraint '%s' is being referenced by table '%s', foreign key constraint '%s'.
3726 16 1 Could not drop object '%s' because it is referenced by a FOREIGN KEY constraint.
3727 16 0 Could not drop constraint. See previous errors.
3728 16 1 '%s' is not a constraint.
3902 16 1 The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.
3903 16 1 The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION.
3915 16 0 Cannot use the ROLLBACK statement within an INSERT-EXEC statement.
3918 16 1 The statement or function must be executed in the context of a user transaction.
3930 16 1 The current transaction cannot be committed and cannot support operations that write to the log
    file. Roll back the transaction.
3931 16 1 The current transaction cannot be committed and cannot be rolled back to a savepoint. Roll back the
    entire transaction.
3998 16 1 Uncommittable transaction is detected at the end of the batch. The transaction is rolled back.
4035 0 1 Processed %s pages for database '%s', file '%s' on file 1.
4060 11 1 Cannot open database "%s" requested by the login. The login failed.
4104 16 1 The multi-part identifier "%s" could not be bound.
4108 15 1 Windowed functions can only appear in the SELECT or ORDER BY clauses.
4112 15 1 The function '%s' must have an OVER clause with ORDER BY.
4113 16 1 The function '%s' is not a valid windowing function, and cannot be used with the OVER clause.
4116 16 1 The function 'ntile' takes only a positive int or bigint expression as its input.
4121 16 1 Cannot find either column "%s" or the user-defined function or aggregate "%s.%s", or the name is
    ambiguous.
4127 16 1 At least one of the arguments to COALESCE must be an expression that is not the NULL constant.
4151 16 1 The type of the first argument to NULLIF cannot be the NULL constant because the type of the first
    argument has to be known.
4194 16 1 RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters.
4429 16 1 View or function '%s' contains a self-reference. Views or functions cannot reference themselves
    directly or indirectly.
4506 16 1 Column names in each view or function must be unique. Column name '%s' in view or function '%s' is
    specified more than once.
4508 16 1 Views or functions are not allowed on temporary tables. Table names that begin with '#' denote
    temporary tables.
4511 16 1 Create View or Function failed because no column name was specified for column %s.
4701 16 1 Cannot find the object "%s" because it does not exist or you do not have permissions.
4712 16 1 Cannot truncate table '%s' because it is being referenced by a FOREIGN KEY constraint.
4901 16 1 ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition
    specified, or the column being added is an identity or timestamp column, or alternatively if none of the
    previous conditions are satisfied the table must be empty to allow addition of this column. Column '%s'
    cannot be added to non-empty table '%s' because it does not satisfy these conditions.
4902 16 1 Cannot find the object "%s" because it does not exist or you do not have permissions.
4922 16 9 ALTER TABLE %s COLUMN %s failed because one or more objects access this column.
4924 16 1 ALTER TABLE %s COLUMN failed because column '%s' does not exist in table '%s'.
5011 14 5 User does not have permission to alter database '%s', the database does not exist, or the
    database is not in a state that allows access checks.
5021 0 1 The database name '%s' has been set.
5030 16 2 The database could not be exclusively locked to perform the operation.
5058 16 5 Option '%s' cannot be set in database '%s'.
5074 16 1 The %s '%s' is dependent on column '%s'.
5308 16 1 Windowed functions, aggregates and NEXT VALUE FOR functions do not support integer indices as ORDER
    BY clause expressions.
5309 16 1 Windowed functions, aggregates and NEXT VALUE FOR functions do not support constants as ORDER BY clause
    expressions.
5335 16 1 The data type %s cannot be used as an operand to the UNION, INTERSECT or EXCEPT operators because it is
    not comparable.
5701 0 1 Changed database context to '%s'.
6401 16 1 Cannot roll back %s. No transaction or savepoint of that name was found.
6809 16 1 Unnamed tables cannot be used as XML identifiers as well as unnamed columns cannot be used for
    attribute names. Name unnamed columns/tables using AS in the SELECT statement.
6852 16 1 Attribute-centric column '%s' must not come after a non-attribute-centric sibling in XML hierarchy
    in FOR XML PATH.
6864 16 1 Row tag omission (empty row tag name) cannot be used with attribute-centric FOR XML serialization.
8023 16 1 The incoming tabular data stream (TDS) remote procedure call (RPC) protocol stream is incorrect.
    Parameter %s ("%s"): The supplied value is not a valid instance of data type %s. Check the source data for
    invalid values. An example of an invalid value is data of numeric type with scale greater than precision.
8101 16 1 An explicit value for the identity column in table '%s' can only be specified when a column list is
    used and IDENTITY_INSERT is ON.
8102 16 1 Cannot update identity column '%s'.
8106 16 1 Table '%s' does not have the identity property. Cannot perform SET operation.
8107 16 1 IDENTITY_INSERT is already ON for table '%s'. Cannot perform SET operation for table '%s'.
8110 16 0 Cannot add multiple PRIMARY KEY constraints to table '%s'.
8111 16 1 Cannot define PRIMARY KEY constraint on nullable column in table '%s'.
8114 16 5 Error converting data type %s to %s.
8115 16 2 Arithmetic overflow error converting %s to data type %s.
8116 16 1 Argument data type %s is invalid for argument %s of %s function.
8117 16 1 Operand data type %s is invalid for %s operator.
8120 16 1 Column '%s' is invalid in the select list because it is not contained in either an aggregate
    function or the GROUP BY clause.
8121 16 1 Column '%s' is invalid in the HAVING clause because it is not contained in either an aggregate function or
    the GROUP BY clause.
8127 16 1 Column '%s' is invalid in the ORDER BY clause because it is not contained in either an aggregate
    function or the GROUP BY clause.
8133 16 1 At least one of the result expressions in a CASE specification must be an expression other than the NULL
    constant.
8134 16 1 Divide by zero error encountered.
8141 16 0 Column CHECK constraint for column '%s' references another column, table '%s'.
8143 16 1 Parameter '%s' was supplied multiple times.
8144 16 2 Procedure or function %s has too many arguments specified.
8145 16 1 %s is not a parameter for procedure %s.
8146 16 2 Procedure %s has no parameters and arguments were supplied.
8147 16 1 Could not create IDENTITY attribute on nullable column '%s', table '%s'.
8152 16 1 String or binary data would be truncated.
8153 0 1 Warning: Null value is eliminated by an aggregate or other SET operation.
8154 16 1 The table '%s' is ambiguous.
8155 16 1 No column name was specified for column %s of '%s'.
8156 16 1 The column '%s' was specified multiple times for '%s'.
8158 16 1 '%s' has more columns than were specified in the column list.
8159 16 1 '%s' has fewer columns than were specified in the column list.
8162 16 2 The formal parameter "%s" was not declared as an OUTPUT parameter, but the actual parameter passed
    in requested output.
8164 16 1 An INSERT EXEC statement cannot be nested.
8169 16 2 Conversion failed when converting from a character string to uniqueidentifier.
8170 16 2 Insufficient %s.
8178 16 1 The parameterized query '%s' expects the parameter '%s', which was not supplied.
8730 16 1 Offset parameter for Lag and Lead functions cannot be a negative value.
9806 16 11 The datepart %s is not supported by date function %s.
9809 16 1 The style %s is not supported for conversions from %s to %s.
9810 16 1 The datepart %s is not supported by date function %s for data type %s.
9829 16 1 STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result
    truncation.
10704 15 1 To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW
    statement inside a CATCH block, or add error parameters to the THROW statement.
10709 15 1 The number of columns for each row in a table value constructor must be the same.
10738 15 1 The number of row value expressions in the INSERT statement exceeds the maximum allowed number of
    1000 row values.
10741 15 2 A TOP can not be used in the same query or sub-query as a OFFSET.
10742 15 1 The offset specified in a OFFSET clause may not be negative.
10744 15 1 The number of rows provided for a FETCH clause must be greater then zero.
10752 15 1 The function '%s' may not have a window frame.
10753 15 1 The function '%s' must have an OVER clause.
10756 15 1 Window frame with ROWS or RANGE must have an ORDER BY clause.
10757 15 1 The function '%s' may not have a WITHIN GROUP clause.
10759 15 1 Use of DISTINCT is not allowed with the OVER clause.
15009 16 1 The object '%s' does not exist in database '%s' or is invalid for this operation.
15197 16 1 There is no text for object '%s'.
16905 16 1 The cursor is already open.
16911 16 1 fetch: The fetch type %s cannot be used with forward only cursors.
16915 16 1 A cursor with the name '%s' already exists.
16916 16 1 A cursor with the name '%s' does not exist.
16917 16 1 Cursor is not open.
16922 16 1 Cursor Fetch: Implicit conversion from data type %s to %s is not allowed.
16924 16 1 Cursorfetch: The number of variables declared in the INTO list must match that of selected
    columns.
18054 16 1 Error %s, severity %s, state %s was raised, but no message with that error number was found in
    sys.messages. If error is larger than 50000, make sure the user-defined message is added using
    sp_addmessage.
35100 16 10 Error number %s in the THROW statement is outside the valid range. Specify an error number in the
    valid range of 50000 to 2147483647.)text";

struct MessageText {
    int severity = 0, state = 0;
    std::string text;
};

std::map<int, MessageText> readMessages() {
    std::map<int, MessageText> messages;
    MessageText* last = nullptr;
    std::istringstream lines{std::string(kMessages)};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(' ')) {
            last->text += line.substr(line.find_first_not_of(' ') - 1);
            continue;
        }
        std::istringstream words(line);
        int number = 0;
        words >> number;
        last = &messages[number];
        std::getline(words >> last->severity >> last->state >> std::ws, last->text);
    }
    return messages;
}

}  // namespace

SqlError sqlError(int number, std::initializer_list<std::string_view> values, int state) {
    static const std::map<int, MessageText> messages = readMessages();
    const auto found = messages.find(number);
    if (found == messages.end()) throw std::logic_error("no text for error " + std::to_string(number));
    std::string text;
    std::string_view rest = found->second.text;
    for (const auto value : values) {
        const std::size_t at = std::min(rest.find("%s"), rest.size());
        if (at == rest.size()) break;
        text.append(rest.substr(0, at)).append(value);
        rest.remove_prefix(at + 2);
    }
    return {number, text.append(rest), found->second.severity, state ? state : found->second.state};
}

SqlError unsupported(std::string_view construct) {
    return {50000, "tsqlbox does not support " + std::string(construct) + "."};
}

}  // namespace tsql
