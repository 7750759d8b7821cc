// Parser of a package's plain text: pieces of lines in, sections out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>

// What a package holds. A parse starts from what is given and adds to it; markers empty their section.
struct PackageContent {
    std::time_t creationTime = 0;
    std::int64_t plexumId = 0;
    std::string guid;
    std::string developerName;
    std::string description;
    std::string usage;
    std::string scriptBody;
    std::int32_t contentType = 0;
    std::string databaseName;
};

class PackageParser {
  public:
    enum class Section { kNone = 0, kHeader = 1, kUsage = 2, kScript = 3 };
    using IgnoredLine = std::function<void(Section)>;

    // Lines are read with a buffer of this size, the NUL included: a longer line arrives in pieces of 509
    // bytes, each handled as a line of its own.
    static constexpr std::size_t kPieceBuffer = 510;

    // `ignored` hears of every line outside the sections.
    PackageParser(PackageContent& content, IgnoredLine ignored)
        : m_content(content), m_ignored(std::move(ignored)) {}

    // A line with its line break, or a piece of one without. Carriage returns are ordinary characters.
    void take(std::string_view piece);

  private:
    bool openSection(std::string_view line);
    void takeHeaderLine(std::string_view line);
    bool takeKeyLine(std::string_view line);
    void takeDescriptiveLine(std::string_view line);
    void takeScriptPiece(std::string_view piece);

    PackageContent& m_content;
    IgnoredLine m_ignored;
    Section m_section = Section::kNone;
    bool m_developer = false;  // header lines without a key continue the developer's text
};
