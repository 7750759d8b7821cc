// Command lines of child processes: the words of a well-formed one, quoted and joined, are split to
// themselves.
#include <algorithm>

#include "CommandLine.h"
#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> words;
    if (!hostlayer::splitCommandLine(fuzz::textOf(data, size), words)) return 0;
    std::string joined;
    for (const std::string& word : words) joined.append(joined.empty() ? "" : " ").append("\"" + word + "\"");
    std::vector<std::string> again;
    fuzz::require(hostlayer::splitCommandLine(joined, again) && again == words);
    return 0;
}
