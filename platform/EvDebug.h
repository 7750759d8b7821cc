// The process's debug log.
#pragma once

#include <string>

#include "PlatformExport.h"

// Handles are cheap and share one log, which is silent until one of them has initialised it. Ready for
// threads. Lines go to a rotating file in the instance's log folder.
class VT_PLATFORM_EXPORT EvDebug {
  public:
    // `fileInstance`: the name of a log file of its own; null means the process-wide default.
    explicit EvDebug(const char* fileInstance = nullptr);

    // Opens the log for the instance in focus; a second call leaves an open log as it is. `facility` is the
    // number under which the programs of the suite register; 0, false and an empty `fileName` choose the
    // default level (3), writing entry by entry (else: errors at once, other entries when a buffer is full)
    // and the default file name. False when the file cannot be opened.
    bool initialize(unsigned int facility, int level, bool asynchronous, const char* fileName);
    bool IsInitialized() const;

    // One entry; `tag` names the function or script that speaks.
    void Debug(const char* tag, const char* format, ...) const __attribute__((format(printf, 3, 4)));
    // One entry at a level: 1 errors, 2 warnings, 3 traces.
    void DebugLevel(int level, const char* format, ...) const __attribute__((format(printf, 3, 4)));

  private:
    struct Log;
    Log* m_log;  // lives as long as the process
};
