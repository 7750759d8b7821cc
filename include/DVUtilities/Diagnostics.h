// Causes of failures, beside the messages of the other headers, and the debug log.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/Export.h"

class DBBase;
class TScript;
class TScriptRecords;
struct DVUCauseList;

// Values of DVUCause_t::where. 0: not known, because the operation was stopped, most likely for lack of
// memory.
inline constexpr int kDVUConnection = 1;  // connecting, or a lost connection
inline constexpr int kDVUStatement = 2;   // a statement over the direct connection
inline constexpr int kDVUQueryTool = 3;   // the query tool, or a statement that it ran
inline constexpr int kDVUFile = 4;
inline constexpr int kDVUPackage = 5;        // a package or another encrypted file
inline constexpr int kDVUConfiguration = 6;  // a value of the configuration

// One cause. Numbers that are unknown or do not apply are 0, strings are empty. Strings are UTF-8 and cut to
// 4,096 bytes. They never hold a password or the value of a parameter, except where the server quotes a value
// in its message.
struct DVUCause_t {
    int where = 0;
    std::string sqlState{};
    int serverError = 0;  // SQL Server's error number
    int state = 0;
    int severity = 0;
    int line = 0;  // in the batch, or in the procedure if one is named
    std::string procedure{};
    std::string server{};
    int systemError = 0;    // errno
    int exitCode = -1;      // of the query tool; -1: it did not exit by itself; 0: it wrote no output file
    int signal = 0;         // that ended the query tool
    std::string subject{};  // path, program, or "key\name" of a configuration value
    std::string text{};
};

// Replaces `causes` by the causes of the object's last operation, at most 64, in the order in which they
// occurred. The list is empty after an operation that succeeded. Three operations of DBBase return true after
// a failed statement (GetDBValueIntList(), GetDBValueIntIntList(), GetDBValueIdIdNameList()): the list is not
// empty then. The same thread uses the object and calls these functions.
DVU_EXPORT void DVU_GetCauses(const DBBase& db, std::vector<DVUCause_t>& causes);
DVU_EXPORT void DVU_GetCauses(const TScript& script, std::vector<DVUCause_t>& causes);
DVU_EXPORT void DVU_GetCauses(const TScriptRecords& records, std::vector<DVUCause_t>& causes);

// Writes an entry to the debug log of this installation. `level`: 1 error, 2 warning, 3 trace. A null `text`
// writes nothing.
DVU_EXPORT void DVU_DebugLog(int level, const char* text);

// Collector of the causes that occur on its thread while it exists, for functions without an object (TS_...,
// GetDatabaseList(), EncryptFile(), ...). Objects may nest; destroy them in the reverse order, on the thread
// that constructed them. After a call that succeeded, what was collected is no cause: clear() it. One
// exception: a query tool that ends with exit code 0 without writing its output file counts as a success, and
// its cause (`exitCode` 0) shows that it was not sqlcmd.
class DVU_EXPORT DVUCauses {
  public:
    DVUCauses();
    ~DVUCauses();
    DVUCauses(const DVUCauses&) = delete;
    DVUCauses& operator=(const DVUCauses&) = delete;

    // Replaces `causes` by what was collected since the construction or clear(), at most 64 causes.
    void get(std::vector<DVUCause_t>& causes) const;
    void clear();

  private:
    class CauseCollector* m_collector;  // owned; null when memory was short
};
