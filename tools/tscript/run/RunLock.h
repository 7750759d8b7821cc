// Lock that lets one run of a script at a time.
#pragma once

#include <chrono>
#include <string>

#include "DVUtilities/DBBase.h"

class InterruptGuard;

enum class LockMode { kNone, kWait, kFail };

// Returns kWait for a script that the setting lockedScripts names, else kNone.
LockMode configuredLockMode(const std::string& script);

// An exclusive application lock of the server, held by a connection of its own. The server frees it when the
// object is destroyed or its process ends.
class RunLock {
  public:
    // `database`, in which the lock is taken, may be empty: that of the installed component. With kWait,
    // waits for another run that holds the lock and reports it on standard error; with kFail, throws Failure
    // (kRefused) that names it. Throws Failure (kInterrupted) after a signal, and (kConnection).
    RunLock(const std::string& script, const std::string& database, LockMode mode,
            const InterruptGuard& guard);

  private:
    // Takes the lock. False if another run has held it for this time, or after a signal.
    bool acquire(std::chrono::milliseconds time, const InterruptGuard& guard);
    std::string describeHolder();

    const std::string m_script;
    DBBase m_db;
};
