#include "SessionMemory.h"

#include <malloc.h>
#include <sqlite3.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::int64_t kSmall = std::int64_t{64} << 10;
constexpr std::int64_t kReserve = std::int64_t{64} << 20;

thread_local std::int64_t memoryUsed = 0;
thread_local std::int64_t memoryLimit = std::numeric_limits<std::int64_t>::max() / 2;

sqlite3_mem_methods ofSqlite;  // SQLite's own

bool isAllowed(std::int64_t bytes) {
    return bytes <= (bytes < kSmall ? memoryLimit + kReserve : memoryLimit) - memoryUsed;
}

}  // namespace

void* operator new(std::size_t bytes) {
    void* const memory = isAllowed(static_cast<std::int64_t>(bytes)) ? std::malloc(bytes) : nullptr;
    if (memory == nullptr) throw std::bad_alloc();
    memoryUsed += static_cast<std::int64_t>(malloc_usable_size(memory));
    return memory;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    try {
        return operator new(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    memoryUsed -= static_cast<std::int64_t>(malloc_usable_size(memory));
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace server {

void countMemoryOfSqlite() {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &ofSqlite);
    sqlite3_mem_methods counting = ofSqlite;
    counting.xMalloc = [](int bytes) {
        void* const memory = isAllowed(bytes) ? ofSqlite.xMalloc(bytes) : nullptr;
        if (memory != nullptr) memoryUsed += ofSqlite.xSize(memory);
        return memory;
    };
    counting.xRealloc = [](void* old, int bytes) {
        const int before = ofSqlite.xSize(old);
        void* const memory = isAllowed(bytes - before) ? ofSqlite.xRealloc(old, bytes) : nullptr;
        if (memory != nullptr) memoryUsed += ofSqlite.xSize(memory) - before;
        return memory;
    };
    counting.xFree = [](void* memory) {
        memoryUsed -= ofSqlite.xSize(memory);
        ofSqlite.xFree(memory);
    };
    sqlite3_config(SQLITE_CONFIG_MALLOC, &counting);
}

void limitMemoryOfThread(std::size_t bytes) {
    memoryLimit = memoryUsed + static_cast<std::int64_t>(bytes);
}

}  // namespace server
