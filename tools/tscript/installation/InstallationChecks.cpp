// The parts of an installation that stand on this host.
#include <sql.h>
#include <sqlext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "DVUtilities/commonFunc.h"
#include "HostSettings.h"
#include "HostSetup.h"
#include "VTPassword.h"
#include "installation/CheckList.h"
#include "installation/Diagnosis.h"
#include "system/ScratchFile.h"
#include "system/Spawn.h"

namespace {

constexpr const char* kReference = "docs/configuration.md describes the store.";

std::string storeText(const char* key, const char* valueName) {
    std::vector<char> text(8192);
    std::string ignored;
    return GetRegistryItemValue("", key, valueName, nullptr, text.data(), ignored) ? text.data() : "";
}

// ---- Store and key -------------------------------------------------------------------------------------

void checkStore(CheckList& list) {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    if (!store.isInForce || !store.problem.empty())
        return list.fail("store", ExitCode::kInstallation, store.problem,
                         std::string("Name the store with --store or ZEPHRA_REGISTRY. ") + kReference);
    list.good("store", store.path);
    for (const std::string& oddity : store.oddities) list.warn("store content", oddity, kReference);
    struct stat status {};
    if (stat(store.path.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0)
        list.fail("store mode", ExitCode::kInstallation, "everybody may change " + store.path,
                  "Set its mode: chmod 0640 " + store.path);
    if (storeText("Dorvase", "sDVHOSTNAME").empty())
        list.fail("host name", ExitCode::kInstallation, "the store does not name this host",
                  "Set it: tscript config set Dorvase.sDVHOSTNAME NAME");
}

void checkKey(CheckList& list) {
    std::array<char, 2048> record{};
    unsigned long size = record.size();
    VTPassword cipher;
    if (cipher.encrypt("", record.data(), &size) != 0)
        return list.good("key", hostlayer::hostSetting("cipherKeyFile", ""));
    list.fail(
        "key", ExitCode::kInstallation, hostlayer::cipherErrorText(cipher.getLastError()),
        "If it is lost, bring it back from a backup; a new installation makes one with: tscript key create");
}

// ---- Folders -------------------------------------------------------------------------------------------

struct FolderCheck {
    const char* name;
    const char* key;
    const char* value;
    const char* below;  // of the folder that the value names
    int access;
    bool optional;
};

constexpr FolderCheck kFolders[] = {
    {"installation folder", "Base", "dZEPHRAHOME", "", R_OK | X_OK, false},
    {"package folder", "Base", "dZEPHRAHOME", "/Scripts", R_OK | X_OK, false},
    {"program folder", "Base", "dBASEHOME", "", X_OK, true},
    {"temporary folder", "Base", "dZEPHRATEMPDIR", "", W_OK | X_OK, false},
    {"folder of script runs", "Base", "sSCRIPTSTEMPDIR", "", W_OK | X_OK, true},
    {"log folder", "EventManager", "dEVLOGDIR", "", W_OK | X_OK, false},
};

void checkFolder(CheckList& list, const FolderCheck& folder) {
    const std::string named = storeText(folder.key, folder.value);
    const std::string value = std::string(folder.key) + "." + folder.value;
    const std::string setIt = "tscript config set " + value + " FOLDER";
    if (named.empty()) {
        if (!folder.optional)
            list.fail(folder.name, ExitCode::kInstallation, "the store has no value " + value,
                      "Set it: " + setIt);
        return;
    }
    const std::string path = named + folder.below;
    struct stat status {};
    const bool there = stat(path.c_str(), &status) == 0;
    const bool writable = (folder.access & W_OK) != 0;
    if (!there || !S_ISDIR(status.st_mode)) {
        list.fail(folder.name, ExitCode::kInstallation,
                  path + ": " + (there ? "is no folder" : std::strerror(errno)),
                  "Make the folder, or name another: " + setIt);
    } else if (access(path.c_str(), folder.access) != 0) {
        list.fail(folder.name, ExitCode::kInstallation, path + ": " + std::strerror(errno),
                  std::string("Let this user ") + (writable ? "write" : "read") + " there.");
    } else {
        list.good(folder.name, path);
    }
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

SQLPOINTER number(std::uintptr_t value) {
    return reinterpret_cast<SQLPOINTER>(value);  // NOLINT(performance-no-int-to-ptr): the interface is so
}

// The driver manager's own complaint; empty when the driver was loaded and answered, whatever it said.
std::string managerComplaint(SQLHANDLE connection) {
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

// Connects to a port on which no database server listens, so that the driver is loaded and nothing else.
std::string driverProblem(const std::string& driver) {
    const OdbcHandle environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, number(SQL_OV_ODBC3), 0);
    const OdbcHandle connection(SQL_HANDLE_DBC, environment.get());
    if (connection.get() == SQL_NULL_HANDLE) return "the ODBC driver manager cannot be started";
    SQLSetConnectAttr(connection.get(), SQL_ATTR_LOGIN_TIMEOUT, number(5), 0);
    std::string text = "Driver={" + driver + "};Server=127.0.0.1,1;Port=1;";
    const SQLRETURN result =
        SQLDriverConnect(connection.get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                         static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) return managerComplaint(connection.get());
    SQLDisconnect(connection.get());
    return {};
}

void checkDriver(CheckList& list) {
    constexpr std::size_t kLongest = 512;
    const std::string driver = hostlayer::hostSetting("odbcDriver", "FreeTDS");
    const bool usable = driver.size() <= kLongest && driver.find('}') == std::string::npos;
    const std::string problem = usable ? driverProblem(driver) : "no driver has such a name";
    if (problem.empty()) return list.good("ODBC driver", driver);
    list.fail("ODBC driver", ExitCode::kInstallation, driver + ": " + problem,
              "Install the driver (Debian: tdsodbc), or name another of odbcinst.ini: tscript config set "
              "host.odbcDriver NAME");
}

// ---- Query tool ----------------------------------------------------------------------------------------

void checkQueryTool(CheckList& list) {
    constexpr int kNotStarted = 126;  // and above: as shells tell it, or ended by a signal
    const std::string tool = queryToolPath();
    const char* advice = "Install it, or give its path: tscript config set host.programs.sqlcmd PATH";
    try {
        const ScratchFile output;
        if (runChild({tool, "-?"}, {{}, output.path(), false, {}}) < kNotStarted)
            return list.good("sqlcmd", tool);
        list.fail("sqlcmd", ExitCode::kInstallation, tool + ": " + output.content(), advice);
    } catch (const Failure& failure) {
        list.fail("sqlcmd", ExitCode::kInstallation, failure.what(), advice);
    }
}

}  // namespace

void checkInstallation(CheckList& list) {
    checkStore(list);
    if (list.failed("store")) return list.skip("everything else", "nothing is known without the store");
    checkKey(list);
    for (const FolderCheck& folder : kFolders) checkFolder(list, folder);
    checkDriver(list);
    checkQueryTool(list);
}
