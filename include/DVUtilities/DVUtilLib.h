// Facts of the installation that a script run needs, and the run's log and scratch files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "DVUtilities/Export.h"

// One object per script run. An operation that returns false leaves the reason, if there is one, in
// getErrorText(), and its outputs unchanged unless stated otherwise. Caller's buffers have 8,192 bytes unless
// stated otherwise.
//
// Strings returned by GetRegItemValue(), by the getters of folders, password and version and by
// getDVHostList() are interpreted as format strings (a percent sign is written "%%" in the configuration);
// those of the GetMachineName functions are not.
//
// Instance name and machine name are read once an object, the platform type once it is not 0. Everything else
// is read at every call. No read uses an instance but the default one, the GetMachineName functions excepted.
class DVU_EXPORT DVUtilLib {
  public:
    // `name`: the script's name, part of the names of the run's files. `flag` is stored and not used.
    DVUtilLib(const char* name, bool flag);
    // Deletes the scratch SQL file unless the setting "dUTILKEEPSQLFILE" is nonzero.
    ~DVUtilLib();
    DVUtilLib(const DVUtilLib&) = delete;
    DVUtilLib& operator=(const DVUtilLib&) = delete;

    // Selects the product whose configuration names are used: true for Zephra, false for TNet. Values already
    // read are kept.
    void setProductTypeZephra(bool zephra);

    // Chooses and returns the run's log file ("<log folder>/<name>.log", 1,024 bytes) and, unless `sqlFile`
    // is null, its scratch SQL file ("<log folder>/<name>_<pid>.sql", 1,024 bytes). Creates neither.
    bool Initialize(char* logFile, char* sqlFile);

    // The management server's host name.
    bool GetMachineName(std::string& machine);
    // Checks `machine`, or fills it if it is empty. `controlSet` receives the instance name.
    bool GetMachineName(std::string& machine, std::string& controlSet);
    // Reads the host name of this object's instance. `machine`, if not null, must equal it exactly.
    bool GetMachineNameFromReg(const char* machine);
    bool GetControlSetName(std::string& controlSet);  // always true
    bool getInstanceName();                           // determines this object's instance

    bool GetZephraBaseDir(char* dir);
    bool GetZephraInstallDir(char* dir);
    bool GetZephraLogDir(char* dir);
    bool GetZephraNetworkPassword(char* text);  // encrypted, as stored
    // Returns the version and its number: 800 for "8.0.0(…", 0 for an unknown version. `version` may be null.
    // A version without "(" is returned, too, but with false.
    bool GetZephraVersion(char* version, int& versionNumber);
    bool GetZephraPlatform(unsigned int& platformType);  // bits of the installed components
    bool IsMachineClusterConfigured();

    // GetRegistryItemValue(). The instance is not used.
    bool GetRegItemValue(const char* key, const char* valueName, char* text, unsigned int* number);
    bool GetRegItemValue(const char* instance, const char* key, const char* valueName, char* text,
                         unsigned int* number);

    // For each instance of the installation, the host name of the default instance, if that one is a
    // management server: several instances yield the same name several times.
    std::vector<std::string> getDVHostList();
    // Returns in `instanceName`, which must have room for it, the first instance by name if `hostName` is the
    // default instance's host name (case is ignored) and that one is a management server. The object then
    // uses that instance.
    bool getInstanceNameFromDVHostName(char* hostName, char* instanceName);

    // Writes a line to the debug log if that is initialised, otherwise to `logFile`. An empty or null
    // `dbName` is marked as missing.
    void LogTScript(const char* logFile, const char* dbName, const char* tag, const char* message);
    // LogFileContent() to `logFile`, or to this object's log file if that is null. A file is never copied
    // into itself (case is ignored): it is then echoed only.
    void printoutContent(const char* sourceFile, const char* logFile, bool echo);

    // Never null; valid until it changes or the object is destroyed. Success does not clear it.
    const char* getErrorText() const { return m_errorText.c_str(); }

  private:
    // The product's configuration keys and value names.
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
