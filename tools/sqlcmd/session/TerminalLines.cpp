#include "session/TerminalLines.h"

#include "text/Text.h"

namespace sqlcmd {
namespace {

bool mentionsSecret(std::string_view line) {
    const std::string text = lowerCase(line);
    for (const char* word : {"password", "passphrase", "pwd", "secret", "sp_addlogin", ":connect"})
        if (text.find(word) != std::string::npos) return true;
    return false;
}

}  // namespace

bool TerminalLines::read(BatchReader& reader, std::string& line) {
    LineEditor::Result result;
    while ((result = m_editor.read(std::to_string(reader.batchLine()) + "> ", line)) ==
           LineEditor::Result::Interrupted)
        reader.replaceBatch({});
    if (result == LineEditor::Result::End) return false;
    const bool isFirstLine = reader.batchLine() == 1;
    m_hidesBatch = mentionsSecret(line) || (m_hidesBatch && !isFirstLine);
    if (!m_hidesBatch) m_editor.remember(line);
    return true;
}

}  // namespace sqlcmd
