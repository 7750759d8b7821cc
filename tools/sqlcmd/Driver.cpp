#include "Driver.h"

#include <dlfcn.h>
#include <link.h>

#include <string>
#include <string_view>

namespace sqlcmd {
namespace {

// The loaded library whose file name is that one; the manager gives the name alone.
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
    return dlopen(search.path.c_str(),
                  RTLD_LAZY | RTLD_NOLOAD);  // never closed: the manager keeps it as well
}

template <typename Function>
bool resolve(void* library, const char* name, Function& function) {
    if (void* symbol = dlsym(library, name))
        function = reinterpret_cast<Function>(symbol);
    else
        return false;
    return true;
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
    SQLHDBC own = SQL_NULL_HDBC;
    void* library = loadedDriver(connection);
    if (library != nullptr && resolveAll(library, driver.functions) &&
        SQL_SUCCEEDED(SQLGetInfo(connection, SQL_DRIVER_HDBC, &own, sizeof own, nullptr)) &&
        own != SQL_NULL_HDBC) {
        driver.connection = own;
        return driver;
    }
    return {DriverFunctions{}, connection};
}

}  // namespace sqlcmd
