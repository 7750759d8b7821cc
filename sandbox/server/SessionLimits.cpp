#include "SessionLimits.h"

#include <malloc.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

// ---- memory

constexpr std::int64_t kSmall = std::int64_t{64} << 10;
constexpr std::int64_t kReserve = std::int64_t{64} << 20;

thread_local std::int64_t memoryUsed = 0;
thread_local std::int64_t memoryLimit = std::numeric_limits<std::int64_t>::max() / 2;

// realloc(3) within the limit of the thread. Returns null beyond it.
void* reallocate(void* old, std::size_t bytes) {
    const auto before = static_cast<std::int64_t>(malloc_usable_size(old));
    const std::int64_t growth = static_cast<std::int64_t>(bytes) - before;
    const std::int64_t limit = growth < kSmall ? memoryLimit + kReserve : memoryLimit;
    void* const memory = growth <= limit - memoryUsed ? std::realloc(old, bytes) : nullptr;
    if (memory != nullptr) memoryUsed += static_cast<std::int64_t>(malloc_usable_size(memory)) - before;
    return memory;
}

void release(void* memory) {
    memoryUsed -= static_cast<std::int64_t>(malloc_usable_size(memory));
    std::free(memory);
}

void countMemoryOfSqlite() {
    const auto resize = [](void* old, int bytes) { return reallocate(old, static_cast<std::size_t>(bytes)); };
    static const sqlite3_mem_methods methods = {
        [](int bytes) { return reallocate(nullptr, static_cast<std::size_t>(bytes)); },
        release,
        resize,
        [](void* memory) { return static_cast<int>(malloc_usable_size(memory)); },
        [](int bytes) { return bytes; },
        [](void*) { return SQLITE_OK; },
        [](void*) {},
        nullptr};
    sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
}

// ---- temporary files

constexpr int kTemporary =
    SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_TRANSIENT_DB | SQLITE_OPEN_SUBJOURNAL | SQLITE_OPEN_TEMP_JOURNAL;

thread_local std::int64_t filesUsed = 0;  // bytes
thread_local std::int64_t filesLimit = std::numeric_limits<std::int64_t>::max();

sqlite3_vfs* realSystem = nullptr;

// What follows SQLite's own data of a temporary file in memory.
struct Counted {
    const sqlite3_io_methods* real;  // SQLite's own
    std::int64_t size;               // its largest so far
};

Counted& countedOf(sqlite3_file* file) {
    return *reinterpret_cast<Counted*>(reinterpret_cast<char*>(file) + realSystem->szOsFile);
}

sqlite3_io_methods countedMethods(const sqlite3_io_methods& real) {
    sqlite3_io_methods methods = real;
    methods.iVersion = 1;  // without shared memory and mappings
    methods.xWrite = [](sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
        Counted& counted = countedOf(file);
        const std::int64_t growth = std::max<std::int64_t>(offset + count - counted.size, 0);
        if (growth > filesLimit - filesUsed) return SQLITE_FULL;
        const int result = counted.real->xWrite(file, bytes, count, offset);
        if (result != SQLITE_OK) return result;
        filesUsed += growth;
        counted.size += growth;
        return SQLITE_OK;
    };
    methods.xClose = [](sqlite3_file* file) {
        filesUsed -= countedOf(file).size;
        return countedOf(file).real->xClose(file);
    };
    // Hints about the size would have SQLite's own file grow without a write.
    methods.xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; };
    return methods;
}

void countTemporaryFiles() {
    realSystem = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs system = *realSystem;
    system.zName = "counted";
    system.szOsFile = realSystem->szOsFile + static_cast<int>(sizeof(Counted));
    system.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* opened) {
        const int code = realSystem->xOpen(realSystem, name, file, flags, opened);
        if ((flags & kTemporary) == 0 || file->pMethods == nullptr) return code;
        static const sqlite3_io_methods methods = countedMethods(*file->pMethods);  // all are of one kind
        countedOf(file) = {file->pMethods, 0};
        file->pMethods = &methods;
        return code;
    };
    sqlite3_vfs_register(&system, /*makeDflt=*/1);
}

}  // namespace

void* operator new(std::size_t bytes) {
    if (void* const memory = reallocate(nullptr, bytes)) return memory;
    throw std::bad_alloc();
}

// The library's own calls the one above, but that of the address sanitizer does not.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return reallocate(nullptr, bytes);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

namespace server {

void countResources() {
    countMemoryOfSqlite();
    countTemporaryFiles();
}

void limitThread(std::size_t bytesOfMemory, std::size_t bytesOfFiles) {
    memoryLimit = memoryUsed + static_cast<std::int64_t>(bytesOfMemory);
    filesLimit = filesUsed + static_cast<std::int64_t>(bytesOfFiles);
}

}  // namespace server
