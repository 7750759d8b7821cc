// The process's debug log.
#pragma once

#include <string>

#include "PlatformExport.h"

// Levels of entries, for DebugLevel().
inline constexpr int kErrorDebugLevel = 1;
inline constexpr int kTraceDebugLevel = 3;

// Handles are cheap and share one log. Thread-safe. Entries go to a rotating file in the instance's log
// folder. The process-wide default log opens with its first entry; a separate log drops entries until it is
// initialised. The store's settings for level, file and size have precedence over the arguments of
// initialize(); level 0 turns all logs off.
class VT_PLATFORM_EXPORT EvDebug {
  public:
    // `fileInstance`: the name of a separate log file; null means the process-wide default.
    explicit EvDebug(const char* fileInstance = nullptr);

    // Opens the log for the instance in focus; has no effect on an initialised log. `facility`: the program's
    // number in the suite. `level` 0 means the default, 3. `asynchronous`: only errors are written at once,
    // other entries when a buffer is full. An empty `fileName` means the default one. False when the file
    // cannot be opened or the store turns the log off.
    bool initialize(unsigned int facility, int level, bool asynchronous, const char* fileName);
    bool IsInitialized() const;

    // Writes an entry; `tag` names the function or script.
    void Debug(const char* tag, const char* format, ...) const __attribute__((format(printf, 3, 4)));
    // Writes an entry at a level: 1 error, 2 warning, 3 trace.
    void DebugLevel(int level, const char* format, ...) const __attribute__((format(printf, 3, 4)));

  private:
    struct Log;
    Log* m_log;  // lives as long as the process
};
