#include "package/PackageLines.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "PackageSeal.h"
#include "VTPassword.h"
#include "package/PlainRecord.h"
#include "package/RecordReader.h"

namespace {

std::string plainText(const std::string& file) {
    RecordReader reader(file);
    VTPassword cipher;
    std::string text;
    for (std::string record; reader.next(record);) {
        PlainRecord plain;
        if (!plain.decrypt(cipher, record)) break;
        if (!hostlayer::isSealText(plain.text())) text += plain.text();
    }
    return text;
}

enum class Section { kNone, kHeader, kUsage, kScript };

std::optional<Section> sectionOf(std::string_view line) {
    if (line == "#START_OPTIONS#") return Section::kHeader;
    if (line == "#START_USAGE#") return Section::kUsage;
    if (line == "#START_SCRIPT#") return Section::kScript;
    return std::nullopt;
}

}  // namespace

std::vector<PackageLine> allLines(const std::string& file) {
    const std::string text = plainText(file);
    std::vector<PackageLine> lines;
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = std::string_view(text).substr(at, end - at);
        at = end + 1;
        ++number;
        if (!line.empty()) lines.push_back({number, std::string(line)});
    }
    return lines;
}

namespace {

// A later script section replaces an earlier one.
std::vector<PackageLine> linesOf(const std::string& file, Section wanted) {
    std::vector<PackageLine> lines;
    Section current = Section::kNone;
    for (PackageLine& line : allLines(file)) {
        if (const std::optional<Section> opened = sectionOf(line.text)) {
            current = *opened;
            if (current == Section::kScript && wanted == Section::kScript) lines.clear();
        } else if (current == wanted) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

}  // namespace

std::vector<PackageLine> headerLines(const std::string& file) {
    return linesOf(file, Section::kHeader);
}

std::vector<PackageLine> statementLines(const std::string& file) {
    return linesOf(file, Section::kScript);
}
