// Checks of what is installed on this host: key, ODBC driver, query tool.
#include <sql.h>
#include <sqlext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <string_view>

#include "HostSettings.h"
#include "HostSetup.h"
#include "doctor/CheckList.h"
#include "doctor/CheckSteps.h"
#include "installation/CipherKey.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "installation/ToolLimit.h"
#include "system/ChildProcess.h"
#include "system/ScratchFile.h"

namespace {

// ---- Key ---------------------------------------------------------------------------------------------

std::string keyAdvice(const std::string& file) {
    if (file.empty()) return "Set it: tscript config set host.cipherKeyFile FILE";
    struct stat status {};
    if (stat(file.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return "chmod 0600 " + file;
    if (access(file.c_str(), R_OK) != 0 && errno == EACCES)
        return "Run tscript as the user of the key file: the user that runs the scripts.";
    return "Restore " + file + " from a backup; for a new installation run: tscript key create";
}

void checkKey(CheckList& list) {
    const std::string file = hostlayer::hostSetting("cipherKeyFile", "");
    const std::string problem = keyProblem();
    if (const std::string previous = hostlayer::hostSetting("previousKeyFile", ""); !previous.empty())
        list.addWarning("key rotation", "not complete: the previous key " + previous + " is still in use",
                        "Complete it: tscript rotate");
    if (problem.empty()) return list.addGood("key", file);
    list.addFailure("key", ExitCode::kInstallation, problem, keyAdvice(file));
}

// ---- ODBC driver ---------------------------------------------------------------------------------------

class OdbcHandle {
  public:
    OdbcHandle(SQLSMALLINT kind, SQLHANDLE parent) : m_kind(kind) {
        if (!SQL_SUCCEEDED(SQLAllocHandle(kind, parent, &m_handle))) m_handle = SQL_NULL_HANDLE;
    }
    ~OdbcHandle() {
        if (m_handle != SQL_NULL_HANDLE) SQLFreeHandle(m_kind, m_handle);
    }
    OdbcHandle(const OdbcHandle&) = delete;
    OdbcHandle& operator=(const OdbcHandle&) = delete;
    SQLHANDLE get() const { return m_handle; }

  private:
    SQLSMALLINT m_kind;
    SQLHANDLE m_handle = SQL_NULL_HANDLE;
};

SQLPOINTER attributeValue(std::uintptr_t value) {
    return reinterpret_cast<SQLPOINTER>(value);  // NOLINT(performance-no-int-to-ptr): required by ODBC
}

// Error of the driver manager; empty if the driver was loaded, whatever error the driver itself returned.
std::string managerError(SQLHANDLE connection) {
    for (SQLSMALLINT i = 1;; ++i) {
        std::array<SQLCHAR, 6> state{};
        std::array<SQLCHAR, 1024> message{};
        if (!SQL_SUCCEEDED(SQLGetDiagRec(SQL_HANDLE_DBC, connection, i, state.data(), nullptr, message.data(),
                                         static_cast<SQLSMALLINT>(message.size()), nullptr)))
            return {};
        const std::string_view code = reinterpret_cast<const char*>(state.data());
        std::string text = reinterpret_cast<const char*>(message.data());
        if (code.substr(0, 2) == "IM" || text.find("Can't open lib") != std::string::npos) return text;
    }
}

// Loads the driver by connecting to a port on which no database server listens.
std::string driverProblem(const std::string& driver) {
    constexpr std::uintptr_t kLoginTimeout = 5;  // seconds
    const OdbcHandle environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, attributeValue(SQL_OV_ODBC3), 0);
    const OdbcHandle connection(SQL_HANDLE_DBC, environment.get());
    if (connection.get() == SQL_NULL_HANDLE) return "the ODBC driver manager cannot be started";
    SQLSetConnectAttr(connection.get(), SQL_ATTR_LOGIN_TIMEOUT, attributeValue(kLoginTimeout), 0);
    std::string text = "Driver={" + driver + "};Server=127.0.0.1,1;Port=1;";
    const SQLRETURN result =
        SQLDriverConnect(connection.get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                         static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) return managerError(connection.get());
    SQLDisconnect(connection.get());
    return {};
}

void checkDriver(CheckList& list) {
    constexpr std::size_t kLongest = 512;
    const std::string driver = hostlayer::hostSetting("odbcDriver", "FreeTDS");
    const bool isValid = driver.size() <= kLongest && driver.find('}') == std::string::npos;
    const std::string problem = isValid ? driverProblem(driver) : "is not a valid driver name";
    if (problem.empty()) return list.addGood("ODBC driver", driver);
    list.addFailure(
        "ODBC driver", ExitCode::kInstallation, driver + ": " + problem,
        "Install the driver (Debian: tdsodbc), or set another one of odbcinst.ini: tscript config set "
        "host.odbcDriver NAME");
}

// ---- Query tool ----------------------------------------------------------------------------------------

void checkStrictness(CheckList& list) {
    if (hostlayer::hostSetting("strictQueryTool", "0") != "0") return;
    list.addWarning("strict query tool",
                    "off: users of this host may read passwords in the process list, and sqlcmd expands "
                    "$(NAME) in values",
                    "Set it: tscript config set host.strictQueryTool 1 (docs/security.md)");
}

void checkQueryTool(CheckList& list) {
    constexpr int kNotStarted = 126;  // and above: not executable, or ended by a signal
    if (list.hasFailed("TMPDIR")) return list.addSkipped("sqlcmd", "not started without TMPDIR");
    const std::string tool = hostlayer::queryToolPath();
    const char* advice = "Install it, or set its path: tscript config set host.programs.sqlcmd PATH";
    try {
        const ScratchFile output;
        ToolLimit limit;
        if (runChild({tool, "-?"}, {.outputFile = output.path()}) < kNotStarted)
            return list.addGood("sqlcmd", tool);
        const std::string reason = limit.expired() ? limit.text() : output.content();
        list.addFailure("sqlcmd", ExitCode::kInstallation, tool + ": " + reason, advice);
    } catch (const Failure& failure) {
        list.addFailure("sqlcmd", ExitCode::kInstallation, failure.what(), advice);
    }
}

}  // namespace

void checkInstallation(CheckList& list) {
    checkStore(list);
    if (list.hasFailed("store")) return list.addSkipped("everything else", "not checked without the store");
    checkStoreValues(list);
    checkKey(list);
    checkFolders(list);
    checkDriver(list);
    checkQueryTool(list);
    checkStrictness(list);
}
