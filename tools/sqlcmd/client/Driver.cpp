#include "client/Driver.h"

#include <dlfcn.h>
#include <link.h>

#include <string>
#include <string_view>

namespace sqlcmd {
namespace {

// Search for a loaded library by its file name: the driver manager does not report the path.
struct LibrarySearch {
    std::string fileName;
    std::string path;
};

int compareLibrary(dl_phdr_info* info, std::size_t, void* data) {
    auto& search = *static_cast<LibrarySearch*>(data);
    const std::string_view path = info->dlpi_name;
    if (path.substr(path.rfind('/') + 1) != search.fileName) return 0;
    search.path = path;
    return 1;
}

void* loadedDriver(SQLHDBC connection) {
    char name[256] = {};
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(SQLGetInfo(connection, SQL_DRIVER_NAME, name, sizeof name, &length))) return nullptr;
    const std::string_view fullName = name;
    LibrarySearch search{std::string(fullName.substr(fullName.rfind('/') + 1)), {}};
    if (dl_iterate_phdr(compareLibrary, &search) == 0) return nullptr;
    // Never closed: the driver manager does not unload it either.
    return dlopen(search.path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
}

template <typename Function>
bool resolve(void* library, const char* name, Function& function) {
    void* symbol = dlsym(library, name);
    if (symbol != nullptr) function = reinterpret_cast<Function>(symbol);
    return symbol != nullptr;
}

bool resolveAll(void* library, DriverFunctions& f) {
    return resolve(library, "SQLAllocHandle", f.allocHandle) &&
           resolve(library, "SQLFreeHandle", f.freeHandle) && resolve(library, "SQLFreeStmt", f.freeStmt) &&
           resolve(library, "SQLExecDirect", f.execDirect) &&
           resolve(library, "SQLMoreResults", f.moreResults) &&
           resolve(library, "SQLNumResultCols", f.numResultCols) &&
           resolve(library, "SQLDescribeCol", f.describeCol) &&
           resolve(library, "SQLColAttribute", f.colAttribute) && resolve(library, "SQLBindCol", f.bindCol) &&
           resolve(library, "SQLFetch", f.fetch) && resolve(library, "SQLGetData", f.getData) &&
           resolve(library, "SQLRowCount", f.rowCount) && resolve(library, "SQLSetStmtAttr", f.setStmtAttr) &&
           resolve(library, "SQLGetDiagRec", f.getDiagRec) &&
           resolve(library, "SQLGetDiagField", f.getDiagField);
}

}  // namespace

Driver driverOf(SQLHDBC connection) {
    Driver driver;
    void* library = loadedDriver(connection);
    const bool isUsable = library != nullptr && resolveAll(library, driver.functions) &&
                          SQL_SUCCEEDED(SQLGetInfo(connection, SQL_DRIVER_HDBC, &driver.connection,
                                                   sizeof driver.connection, nullptr)) &&
                          driver.connection != SQL_NULL_HDBC;
    return isUsable ? driver : Driver{DriverFunctions{}, connection};
}

}  // namespace sqlcmd
