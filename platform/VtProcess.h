// A child process.
#pragma once

#include <memory>

#include "PlatformExport.h"

class VT_PLATFORM_EXPORT VtProcess {
  public:
    static constexpr unsigned int kNoTimeout = 0xFFFFFFFFU;

    VtProcess();
    ~VtProcess();  // waits for a child process that is still running
    VtProcess(const VtProcess&) = delete;
    VtProcess& operator=(const VtProcess&) = delete;

    // With `silent` the child's standard output is dropped; otherwise it is that of this process.
    void SetSilence(bool silent);

    // Starts `program` without a shell. The name may contain double quotes, which are removed, and the
    // configuration store may map it to another path. The command line, whose first word names the program,
    // is split at blanks; between double quotes every character is literal. Standard input is /dev/null.
    // `option` is not used on this platform. True if the child process runs; otherwise `error` (`errorSize`
    // bytes with the NUL) receives the reason.
    bool Start(const char* program, const char* commandLine, char* error, int errorSize, int option);

    // Waits for the child process. True when it exited: `exitCode` is set and `error` receives the end of its
    // standard error. False, with the reason in `error`, when a signal ended it or when the time-out
    // (milliseconds; kNoTimeout: none) expired, which kills its process group.
    bool Wait(int* exitCode, char* error, int errorSize, unsigned int timeoutMilliseconds);

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
