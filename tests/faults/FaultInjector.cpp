// Preloaded library that makes the N-th call of one kind in a program fail. It counts calls of our own code:
// the first caller outside of the C and C++ libraries is in a module whose path begins with FAULT_MODULES.
//
//   FAULT_KIND     open, read, write, rename, fsync, pipe, spawn or memory
//   FAULT_CALL     number of the call that fails, from 1
//   FAULT_PROGRAM  file name of the program; in other processes nothing fails
//   FAULT_MODULES  folder of the build
//   FAULT_REPORT   file that gets one line when a call has failed
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <new>

namespace {

const char* variable(const char* name) {
    const char* value = ::getenv(name);
    return value != nullptr ? value : "";
}

const char* fileNameOf(const char* path) {
    const char* slash = ::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

using Main = int (*)(int, char**, char**);

// Constant once main() begins.
Main programMain = nullptr;
const char* chosenKind = nullptr;  // null: nothing fails
const char* modules = "";
long chosenCall = 0;

std::atomic<long> calls{0};
thread_local bool isBusy = false;  // in the injector, whose own calls do not count

void readVariables() {
    if (::strcmp(::program_invocation_short_name, variable("FAULT_PROGRAM")) != 0) return;
    modules = variable("FAULT_MODULES");
    chosenCall = ::strtol(variable("FAULT_CALL"), nullptr, 10);
    chosenKind = variable("FAULT_KIND");
}

struct Caller {
    Dl_info info{};
    _Unwind_Ptr address = 0;
};

bool isRuntime(const char* module) {
    const char* name = fileNameOf(module);
    for (const char* runtime :
         {"libc.so", "libstdc++.so", "libgcc_s.so", "libfault_injector.so", "libpthread"})
        if (::strncmp(name, runtime, ::strlen(runtime)) == 0) return true;
    return false;
}

_Unwind_Reason_Code visitFrame(_Unwind_Context* context, void* result) {
    auto& caller = *static_cast<Caller*>(result);
    caller.address = _Unwind_GetIP(context);
    if (::dladdr(reinterpret_cast<void*>(caller.address), &caller.info) == 0) return _URC_END_OF_STACK;
    return isRuntime(caller.info.dli_fname) ? _URC_NO_REASON : _URC_END_OF_STACK;
}

void report(const Caller& caller) {
    char line[512];
    const auto offset = caller.address - reinterpret_cast<_Unwind_Ptr>(caller.info.dli_fbase);
    const int length = ::snprintf(line, sizeof line, "%s %ld: %s+0x%lx\n", chosenKind, chosenCall,
                                  fileNameOf(caller.info.dli_fname), offset);
    const int file = ::open(variable("FAULT_REPORT"), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file >= 0 && length > 0) static_cast<void>(!::write(file, line, static_cast<size_t>(length)));
    if (file >= 0) ::close(file);
}

// Counts the call. True: it fails.
bool fails(const char* kind) {
    if (chosenKind == nullptr || isBusy || ::strcmp(kind, chosenKind) != 0) return false;
    isBusy = true;
    const int error = errno;
    Caller caller;
    _Unwind_Backtrace(visitFrame, &caller);
    const char* module = caller.info.dli_fname != nullptr ? caller.info.dli_fname : "";
    const bool isChosen = ::strncmp(module, modules, ::strlen(modules)) == 0 && ++calls == chosenCall;
    if (isChosen) report(caller);
    errno = error;
    isBusy = false;
    return isChosen;
}

int failure(int error) {
    errno = error;
    return -1;
}

// Sets the stream's error flag as well, which is a bit of the C library's structure.
size_t streamFailure(FILE* file, int error) {
    constexpr int kErrorSeen = 0x20;
    file->_flags |= kErrorSeen;
    errno = error;
    return 0;
}

template <typename Function>
Function next(const char* name, Function /*type*/) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// Nobody could catch an exception of the initialisation before main().
int mainWithFaults(int count, char** arguments, char** variables) {
    readVariables();
    return programMain(count, arguments, variables);
}

}  // namespace

// The injector is the first library in the search order, so these replace the functions of the C library.
extern "C" {

#define FORWARD(name, ...) next(#name, &::name)(__VA_ARGS__)

#define REPLACE_OPEN(name, parameters, ...)                                                       \
    int name parameters {                                                                         \
        va_list arguments;                                                                        \
        va_start(arguments, flags);                                                               \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0; \
        va_end(arguments);                                                                        \
        return fails("open") ? failure(EIO) : FORWARD(name, __VA_ARGS__, mode);                   \
    }
REPLACE_OPEN(open, (const char* path, int flags, ...), path, flags)
REPLACE_OPEN(open64, (const char* path, int flags, ...), path, flags)
REPLACE_OPEN(openat, (int folder, const char* path, int flags, ...), folder, path, flags)
REPLACE_OPEN(openat64, (int folder, const char* path, int flags, ...), folder, path, flags)

int __libc_start_main(Main main, int count, char** arguments, void (*begin)(), void (*end)(),
                      void (*endOfLoader)(), void* stackEnd) {
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    programMain = main;
    return next("__libc_start_main", Start())(mainWithFaults, count, arguments, begin, end, endOfLoader,
                                              stackEnd);
}

FILE* fopen(const char* path, const char* mode) {
    return fails("open") ? (errno = EIO, nullptr) : FORWARD(fopen, path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
    return fails("open") ? (errno = EIO, nullptr) : FORWARD(fopen64, path, mode);
}
ssize_t read(int file, void* buffer, size_t size) {
    return fails("read") ? failure(EIO) : FORWARD(read, file, buffer, size);
}
// Messages on standard error stay readable.
ssize_t write(int file, const void* buffer, size_t size) {
    return file != STDERR_FILENO && fails("write") ? failure(ENOSPC) : FORWARD(write, file, buffer, size);
}
int rename(const char* from, const char* to) noexcept {
    return fails("rename") ? failure(EIO) : FORWARD(rename, from, to);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return fails("rename") ? failure(EIO) : FORWARD(renameat, fromFolder, from, toFolder, to);
}
size_t fread(void* buffer, size_t size, size_t count, FILE* file) {
    return fails("read") ? streamFailure(file, EIO) : FORWARD(fread, buffer, size, count, file);
}
size_t fwrite(const void* buffer, size_t size, size_t count, FILE* file) {
    return file != stderr && fails("write") ? streamFailure(file, ENOSPC)
                                            : FORWARD(fwrite, buffer, size, count, file);
}
int fsync(int file) {
    return fails("fsync") ? failure(EIO) : FORWARD(fsync, file);
}
int pipe2(int* ends, int flags) noexcept {
    return fails("pipe") ? failure(EMFILE) : FORWARD(pipe2, ends, flags);
}
#define REPLACE_SPAWN(name)                                                                          \
    int name(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,                \
             const posix_spawnattr_t* attributes, char* const* arguments, char* const* variables) {  \
        return fails("spawn") ? EAGAIN                                                               \
                              : FORWARD(name, pid, path, actions, attributes, arguments, variables); \
    }
REPLACE_SPAWN(posix_spawn)
REPLACE_SPAWN(posix_spawnp)

}  // extern "C"

void* operator new(size_t size) {
    void* memory = fails("memory") ? nullptr : ::malloc(size > 0 ? size : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
