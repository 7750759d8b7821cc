// A child process.
#pragma once

#include <memory>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT VtProcess {
  public:
    static constexpr unsigned int kNoTimeout = 0xFFFFFFFFU;

    VtProcess();
    ~VtProcess();  // a child that nobody waited for is waited for
    VtProcess(const VtProcess&) = delete;
    VtProcess& operator=(const VtProcess&) = delete;

    // Silent: the child's standard output is dropped; otherwise it is the host program's.
    void SetSilence(bool silent);

    // Starts `program` without a shell. Its name may carry double quotes, and the configuration store may
    // map it to another path. The command line (its first word stands for the program) is split at blanks;
    // between double quotes every character stands for itself. Standard input is /dev/null. `option` is
    // kept for callers of other platforms and selects nothing here. True when the child runs; otherwise
    // `error` (size in bytes with the NUL) tells why.
    bool Start(const char* program, const char* commandLine, char* error, int errorSize, int option);

    // Waits for the child. True when it ended by itself: `exitCode` is set and `error` holds the tail of
    // its standard error. False, with a text in `error`, when the time-out (milliseconds; kNoTimeout: none)
    // ran out, which ends the child's process group, or when a signal ended the child.
    bool Wait(int* exitCode, char* error, int errorSize, unsigned int timeoutMilliseconds);

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
