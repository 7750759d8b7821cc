// Parser of packages, fed with the pieces in which the loader reads a file.
#include <algorithm>

#include "Fuzz.h"
#include "package/PackageParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    PackageContent content;
    PackageParser parser(content, [](PackageParser::Section) {});
    std::string_view rest = fuzz::textOf(data, size);
    while (!rest.empty()) {
        const std::size_t line = std::min(rest.find('\n'), rest.size() - 1) + 1;
        const std::size_t piece = std::min(line, PackageParser::kPieceBuffer - 1);
        parser.parse(rest.substr(0, piece));
        rest.remove_prefix(piece);
    }
    fuzz::require(content.scriptBody.size() <= size && content.usage.size() <= size);
    return 0;
}
