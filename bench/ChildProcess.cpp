// VtProcess starting and waiting for /bin/true, against posix_spawn() and waitpid(). A second row does the
// same while the process holds 4 GiB.
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "Bench.h"
#include "Rows.h"
#include "VtProcess.h"

namespace bench {
namespace {

constexpr std::size_t kBigProcess = std::size_t{4} << 30;

void runMeasured() {
    VtProcess process;
    char error[256];
    int exitCode = -1;
    check(process.Start("/bin/true", "/bin/true", error, sizeof error, 0) &&
              process.Wait(&exitCode, error, sizeof error, VtProcess::kNoTimeout) && exitCode == 0,
          error);
}

void runBare() {
    char name[] = "/bin/true";
    char* const arguments[] = {name, nullptr};
    pid_t pid = -1;
    int status = -1;
    check(posix_spawn(&pid, name, nullptr, nullptr, arguments, environ) == 0 &&
              waitpid(pid, &status, 0) == pid && status == 0,
          "posix_spawn");
}

Step times(std::size_t count, void (*run)()) {
    return [count, run] {
        for (std::size_t i = 0; i < count; ++i) run();
    };
}

bool hasMemoryForBigProcess() {
    return static_cast<std::size_t>(sysconf(_SC_AVPHYS_PAGES)) *
               static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) >
           kBigProcess + kBigProcess / 4;
}

}  // namespace

void childProcess(Bench& bench) {
    const std::size_t count = bench.scaled(2'000);
    const Sides sides = {times(count, runMeasured), times(count, runBare)};
    bench.compare("child-process", atMost(1.08), sides);
    if (!bench.options().bigProcess) return;
    if (!hasMemoryForBigProcess()) {
        std::printf("%-28s skipped: less than 5 GiB of memory are free\n", "child-process/4GiB");
        return;
    }
    void* block =
        mmap(nullptr, kBigProcess, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    check(block != MAP_FAILED, "4 GiB cannot be allocated");
    bench.compare("child-process/4GiB", atMost(1.08), sides);
    munmap(block, kBigProcess);
}

}  // namespace bench
