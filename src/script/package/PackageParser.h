// Parser of a package's plain text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>

// The content of a package. A parse appends to what is there; a section's marker empties the section first.
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

// Header line of a package for which the query tool expands variables. It has none of the header's keys, so
// that it becomes a line of the description or of the developer's name, also in programs that do not know it.
inline constexpr std::string_view kToolVariablesLine = "Tool Variables:yes";

// Returns whether the description or the developer's name has that line.
bool needsToolVariables(const std::string& headerText);

class PackageParser {
  public:
    enum class Section { kNone = 0, kHeader = 1, kUsage = 2, kScript = 3 };
    using IgnoredLine = std::function<void(Section)>;

    // Size of the buffer that lines are read with, the NUL included. A longer line arrives in pieces of 509
    // bytes, and each piece counts as a line.
    static constexpr std::size_t kPieceBuffer = 510;

    // `ignored` is called for every line outside the sections.
    PackageParser(PackageContent& content, IgnoredLine ignored)
        : m_content(content), m_ignored(std::move(ignored)) {}

    // Parses the next line with its line break, or a piece of a line without one. Carriage returns are
    // ordinary characters.
    void parse(std::string_view piece);

  private:
    bool openSection(std::string_view line);
    void parseHeaderLine(std::string_view line);
    bool parseKeyLine(std::string_view line);
    void parseDescriptiveLine(std::string_view line);
    void appendScriptPiece(std::string_view piece);

    PackageContent& m_content;
    IgnoredLine m_ignored;
    Section m_section = Section::kNone;
    bool m_developer = false;  // header lines without a key belong to the developer's name
};
