// Seals of packages: what was sealed is accepted, whatever else claims to be is refused.
#include <algorithm>
#include <string>

#include "Fuzz.h"
#include "PackageSeal.h"
#include "StoreWithKey.h"

namespace {

constexpr const char* kName = "Package";

// Each line is passed as its record and as its text: the check accepts any bytes as a record.
std::string problemOf(const std::string& sealText, const std::vector<std::string_view>& lines,
                      const std::string& name = kName) {
    hostlayer::PackageSealCheck check;
    check.addLine("seal", "\n", sealText);
    for (const std::string_view line : lines) check.addLine(line, "\n", line);
    return check.problem(name);
}

}  // namespace

// Two bytes that choose version and changes, then the lines of the package.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const StoreWithKey store;
    if (size < 2) return 0;
    const std::string_view input = fuzz::textOf(data + 2, size - 2);
    auto lines = fuzz::partsOf(input);
    std::erase_if(lines, [](std::string_view line) {
        return hostlayer::isSealText(line) || line.find('\n') != line.npos;
    });
    fuzz::require(!problemOf("#PACKAGE_SEAL_1# " + std::string(input) + "\n", lines).empty());

    hostlayer::PackageSealer sealer({.version = data[0], .name = kName});
    for (const std::string_view line : lines) sealer.addLine(line, line);
    std::string text, problem;
    fuzz::require(sealer.makeText(text, problem) && problemOf(text, lines).empty());
    fuzz::require(!problemOf(text, lines, "Other").empty());

    auto changed = lines;
    if (!changed.empty()) changed.erase(changed.begin() + data[1] % changed.size());
    fuzz::require(changed == lines || !problemOf(text, changed).empty());
    changed = lines;
    if (!changed.empty()) std::swap(changed.front(), changed[data[1] % changed.size()]);
    fuzz::require(changed == lines || !problemOf(text, changed).empty());
    std::string other = text;
    other[data[1] % other.size()] = static_cast<char>(data[0]);
    fuzz::require(other == text || !problemOf(other, lines).empty());
    return 0;
}
