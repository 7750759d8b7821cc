#include "package/PackageParser.h"

#include <cstdlib>

namespace {

struct HeaderKey {
    std::string_view text;
    void (*store)(PackageContent& content, const std::string& value);
};

// A header number has 32 bits: larger ones wrap.
std::int32_t number(const std::string& value) {
    return static_cast<std::int32_t>(std::strtol(value.c_str(), nullptr, 10));
}

// In search order: the first key found anywhere in a line decides. Callers rely on it.
constexpr HeaderKey kKeys[] = {
    {"Creation Time:", [](PackageContent& c, const std::string& v) { c.creationTime = number(v); }},
    {"Plexum ID:", [](PackageContent& c, const std::string& v) { c.plexumId = number(v); }},
    {"Database Name:", [](PackageContent& c, const std::string& v) { c.databaseName = v; }},
    {"GUID:", [](PackageContent& c, const std::string& v) { c.guid = v; }},
};
constexpr std::string_view kDeveloperKey = "Developer Name:";
constexpr std::string_view kDescriptionKey = "Description:";

constexpr std::string_view kXmlDirective = ":XML ON";
constexpr std::int32_t kXmlContent = 2;  // the query tool's option bit for error level 1

}  // namespace

bool needsToolVariables(const std::string& headerText) {
    return (headerText + "\n").find("\n" + std::string(kToolVariablesLine) + "\n") != std::string::npos;
}

void PackageParser::parse(std::string_view piece) {
    const std::string_view line = piece.substr(0, piece.find('\n'));
    if (line.empty() || openSection(line))
        return;  // empty lines are dropped, those between statements included
    switch (m_section) {
        case Section::kNone:
            m_ignored(m_section);
            break;
        case Section::kHeader:
            parseHeaderLine(line);
            break;
        case Section::kUsage:
            m_content.usage.append("\n").append(line);
            break;
        case Section::kScript:
            appendScriptPiece(piece);
            break;
    }
}

bool PackageParser::openSection(std::string_view line) {
    if (line == "#START_OPTIONS#") {
        m_section = Section::kHeader;
    } else if (line == "#START_USAGE#") {
        m_section = Section::kUsage;
        m_content.usage.clear();
    } else if (line == "#START_SCRIPT#") {
        m_section = Section::kScript;
        m_content.scriptBody.clear();
    } else {
        return false;
    }
    return true;
}

void PackageParser::parseHeaderLine(std::string_view line) {
    if (!parseKeyLine(line)) parseDescriptiveLine(line);
}

bool PackageParser::parseKeyLine(std::string_view line) {
    for (const HeaderKey& key : kKeys) {
        const std::size_t at = line.find(key.text);
        if (at == std::string_view::npos) continue;
        key.store(m_content, std::string(line.substr(at + key.text.size())));
        return true;
    }
    return false;
}

void PackageParser::parseDescriptiveLine(std::string_view line) {
    std::string_view value = line;
    if (const std::size_t at = line.find(kDeveloperKey); at != std::string_view::npos) {
        m_developer = true;
        value = line.substr(at + kDeveloperKey.size());
    } else if (const std::size_t from = line.find(kDescriptionKey); from != std::string_view::npos) {
        m_developer = false;
        value = line.substr(from + kDescriptionKey.size());
    }
    if (value.empty()) return;
    (m_developer ? m_content.developerName : m_content.description).append("\n").append(value);
}

void PackageParser::appendScriptPiece(std::string_view piece) {
    // Counts in the first line only; the query tool handles a directive further down.
    if (m_content.scriptBody.empty() && piece.find(kXmlDirective) != std::string_view::npos) {
        m_content.contentType = kXmlContent;
    }
    m_content.scriptBody.append(piece);
}
