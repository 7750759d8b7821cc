// Facts of the installation that a script run needs, and the run's log and scratch files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DVUtilities/Export.h"

// One object per script run. Every operation that returns false leaves the reason, where there is one, in
// getErrorText(), and its outputs untouched unless said otherwise. Caller's buffers hold 8,192 bytes unless
// said otherwise.
class DVU_EXPORT DVUtilLib {
  public:
    // `name`: the script's name, which names the run's files. `flag` is kept and not consulted.
    DVUtilLib(const char* name, bool flag);
    // Removes the scratch SQL file unless the setting "dUTILKEEPSQLFILE" is nonzero.
    ~DVUtilLib();
    DVUtilLib(const DVUtilLib&) = delete;
    DVUtilLib& operator=(const DVUtilLib&) = delete;

    // Selects the names under which the product keeps its settings: true for Zephra, false for TNet.
    void setProductTypeZephra(bool zephra);

    // Fixes the run's log file ("<log folder>/<name>.log", 1,024 bytes) and, unless `sqlFile` is null, its
    // scratch SQL file ("<log folder>/<name>_<pid>.sql", 1,024 bytes).
    bool Initialize(char* logFile, char* sqlFile);

    // The management server's host name.
    bool GetMachineName(std::string& machine);
    // Checks `machine` when it is not empty, fills it otherwise; `controlSet` receives the instance name.
    bool GetMachineName(std::string& machine, std::string& controlSet);
    // Reads the host name of this object's instance; a `machine` that is not null must equal it exactly.
    bool GetMachineNameFromReg(const char* machine);
    bool GetControlSetName(std::string& controlSet);  // always true
    bool getInstanceName();                           // finds this object's instance

    bool GetZephraBaseDir(char* dir);
    bool GetZephraInstallDir(char* dir);
    bool GetZephraLogDir(char* dir);
    bool GetZephraNetworkPassword(char* text);  // exactly as stored, enciphered
    // `version` may be null. 800 for "8.0.0(…", 0 for a version not in the table. A text without "(" is
    // handed out as well, and then reported as unknown by false.
    bool GetZephraVersion(char* version, int& versionNumber);
    bool GetZephraPlatform(unsigned int& platformType);  // bits of the installed components
    bool IsMachineClusterConfigured();

    // GetRegistryItemValue() for this object's instance, or for a named one.
    bool GetRegItemValue(const char* key, const char* valueName, char* text, unsigned int* number);
    bool GetRegItemValue(const char* instance, const char* key, const char* valueName, char* text,
                         unsigned int* number);

    // The host names of all instances that are management servers.
    std::vector<std::string> getDVHostList();
    // The instance of the management server of that host name (compared without regard to case), into the
    // caller's buffer, which must hold it whole.
    bool getInstanceNameFromDVHostName(char* hostName, char* instanceName);

    // Writes a line of a script's log: to the debug log once that is initialised, else to `logFile`.
    // `dbName` must not be null.
    void LogTScript(const char* logFile, const char* dbName, const char* tag, const char* message);
    // LogFileContent() into `logFile`, or into this object's log file when it is null, but never a file into
    // itself.
    void printoutContent(const char* sourceFile, const char* logFile, bool echo);

    // Never null; valid until it changes or the object is destroyed. Success does not clear it.
    const char* getErrorText() const { return m_errorText.c_str(); }

  private:
    // Names under which the product keeps its settings.
    struct RegistryNames {
        const char* root;
        const char* baseKey;
        const char* databaseKey;
        const char* eventManagerKey;
        const char* managementServerKey;
        const char* sessionKey;
        const char* installKey;
        const char* platformType;
        const char* baseDirectory;
        const char* home;
        const char* installDirectory;
        const char* logDirectory;
        const char* networkPassword;
        const char* version;
    };

    std::string m_errorText;
    std::string m_name;
    std::string m_logFile;
    std::string m_sqlFile;
    std::string m_instanceName;
    std::string m_machineName;
    [[maybe_unused]] bool m_flag;
    bool m_productTypeZephra = true;
    std::uint32_t m_platformType = 0;  // 0: not yet read
    RegistryNames m_names{};
};
