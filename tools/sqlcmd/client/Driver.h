// The loaded driver's own ODBC functions for statements, called without the driver manager.
#pragma once

#include <sql.h>
#include <sqlext.h>

namespace sqlcmd {

// When the first statement of a batch fails, the driver manager permits no further calls for the batch's
// other results and messages, and closing the statement would cancel the statements that have not run. Most
// errors do not end a batch, though. That is why the tool calls the driver directly.
struct DriverFunctions {
    decltype(&SQLAllocHandle) allocHandle = &SQLAllocHandle;
    decltype(&SQLFreeHandle) freeHandle = &SQLFreeHandle;
    decltype(&SQLFreeStmt) freeStmt = &SQLFreeStmt;
    decltype(&SQLExecDirect) execDirect = &SQLExecDirect;
    decltype(&SQLMoreResults) moreResults = &SQLMoreResults;
    decltype(&SQLNumResultCols) numResultCols = &SQLNumResultCols;
    decltype(&SQLDescribeCol) describeCol = &SQLDescribeCol;
    decltype(&SQLColAttribute) colAttribute = &SQLColAttribute;
    decltype(&SQLBindCol) bindCol = &SQLBindCol;
    decltype(&SQLFetch) fetch = &SQLFetch;
    decltype(&SQLGetData) getData = &SQLGetData;
    decltype(&SQLRowCount) rowCount = &SQLRowCount;
    decltype(&SQLSetStmtAttr) setStmtAttr = &SQLSetStmtAttr;
    decltype(&SQLGetDiagRec) getDiagRec = &SQLGetDiagRec;
    decltype(&SQLGetDiagField) getDiagField = &SQLGetDiagField;
};

struct Driver {
    DriverFunctions functions;
    SQLHDBC connection = SQL_NULL_HDBC;  // the connection's handle in these functions; not owned
};

// Returns the driver of an open connection, given by the driver manager's handle; the driver manager itself
// if the driver does not export all of these functions.
Driver driverOf(SQLHDBC connection);

}  // namespace sqlcmd
