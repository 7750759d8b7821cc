// The ODBC functions that work on statements, as the driver itself has them.
#pragma once

#include <sql.h>
#include <sqlext.h>

namespace sqlcmd {

// The driver manager forgets what is left of a batch as soon as its first statement has failed: no further
// results, no PRINT texts, and closing the statement would cancel what the server has not run yet. A batch
// goes on after most errors, so the tool calls the driver that the manager has loaded directly, wherever that
// driver offers every one of these functions.
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
    SQLHDBC connection = SQL_NULL_HDBC;  // the handle that those functions know
};

// For a connection that stands. Falls back to the driver manager's functions and handle.
Driver driverOf(SQLHDBC connection);

}  // namespace sqlcmd
