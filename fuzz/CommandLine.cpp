// Command lines of child processes: the arguments of a valid one, quoted and joined, are split into the same
// arguments.
#include <string>
#include <vector>

#include "Fuzz.h"
#include "process/CommandLine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> arguments;
    if (!hostlayer::splitCommandLine(fuzz::textOf(data, size), arguments)) return 0;
    std::string joined;
    for (const std::string& argument : arguments)
        joined.append(joined.empty() ? "" : " ").append("\"" + argument + "\"");
    std::vector<std::string> again;
    fuzz::require(hostlayer::splitCommandLine(joined, again) && again == arguments);
    return 0;
}
