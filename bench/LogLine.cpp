// LogToFile() against open(), write() and close() with a line formatted before.
#include <fcntl.h>
#include <unistd.h>

#include "Bench.h"
#include "DVUtilities/commonFunc.h"
#include "Rows.h"

namespace bench {

void logLine(Bench& bench) {
    const std::string ours = bench.installation().folder("lines.log");
    const std::string bare = bench.installation().folder("bare.log");
    const std::string text = "a line of usual length that reports what a run has done to the database";
    const std::string line = "2024/01/02 03:04:05 - " + text + "\n";
    const std::size_t count = bench.scaled(100'000);
    const Step measured = [&] {
        for (std::size_t i = 0; i < count; ++i) LogToFile(ours.c_str(), text.c_str(), false);
    };
    const Step reference = [&] {
        for (std::size_t i = 0; i < count; ++i) {
            const int file = open(bare.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
            check(write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size()), bare);
            close(file);
        }
    };
    bench.compare("log-line", atMost(1.15), {measured, reference});
    check(std::filesystem::file_size(ours) == std::filesystem::file_size(bare), "the logs differ in size");
}

}  // namespace bench
