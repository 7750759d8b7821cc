#include "package/StatementLines.h"

#include <algorithm>
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

}  // namespace

std::vector<StatementLine> statementLines(const std::string& file) {
    const std::string text = plainText(file);
    std::vector<StatementLine> lines;
    bool isScript = false;
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = std::string_view(text).substr(at, end - at);
        at = end + 1;
        ++number;
        const bool opensScript = line == "#START_SCRIPT#";
        if (opensScript) lines.clear();
        if (opensScript || line == "#START_OPTIONS#" || line == "#START_USAGE#") {
            isScript = opensScript;
        } else if (isScript && !line.empty()) {
            lines.push_back({number, std::string(line)});
        }
    }
    return lines;
}
