#include "PackageLoader.h"

#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "CallerText.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/TScript.h"
#include "FX.h"
#include "FileCipher.h"
#include "OpenFile.h"
#include "RemovedAtEnd.h"
#include "ScriptFileNames.h"
#include "ScriptMessages.h"
#include "UniqueFile.h"

namespace {

constexpr std::size_t kConfigurationText = 8192;  // what DVUtilLib's getters may write
constexpr std::size_t kTraceText = 1023;          // longest trace of a path

}  // namespace

bool PackageLoader::run(const char* path) {
    if (!open(path)) return false;
    const RemovedAtEnd copy(m_copyPath);
    return decipher() && parse() && agreeOnDatabase() && bindDatabase() && enterIntoCatalogue();
}

bool PackageLoader::read(const char* path) {
    if (!open(path)) return false;
    const RemovedAtEnd copy(m_copyPath);
    return decipher() && parse() && agreeOnDatabase();
}

bool PackageLoader::open(const char* path) {
    if (!m_report.hasSession() || !choosePath(path) || !checkReadable()) return false;
    m_script.m_fromPackage = true;
    reserveCopy();
    return true;
}

bool PackageLoader::choosePath(const char* path) {
    std::string& chosen = m_script.m_sqlFilePath;
    if (!chosen.empty()) return true;
    if (*textOrEmpty(path) != '\0') {
        chosen = path;
        return true;
    }
    findByName();
    return !chosen.empty() || m_report.report(messages::kNoPackagePath);
}

void PackageLoader::findByName() {
    if (!m_script.m_sqlFilePath.empty() || !m_report.hasSession()) return;
    std::string folder(kConfigurationText, '\0');
    if (!m_script.m_util->GetZephraInstallDir(folder.data())) {
        m_report.report(messages::kNoBaseFolder);
        return;
    }
    folder.resize(folder.find('\0'));
    FXPath::Append(folder, "Scripts");
    FXPath::Append(folder, m_script.m_scriptName.c_str());
    m_script.m_sqlFilePath = folder + ".sql";
}

bool PackageLoader::checkReadable() {
    const char* path = m_script.m_sqlFilePath.c_str();
    if (access(path, R_OK) == 0) return true;
    return m_report.reportAs(messages::kPackageNotFound,
                             FXString::Format(messages::kPackageUnreadable, path));
}

// The copy is held open from here to its end and never opened by its name again. When no name was free, the
// last one tried is used all the same, where that harms nobody; else deciphering tells the user.
void PackageLoader::reserveCopy() {
    const bool created = tryPaths(
        m_copyPath, [this] { return scratchPath(m_script.m_scriptName, "_DE.txt"); },
        [this] {
            m_copy = createPrivateFile(m_copyPath.c_str());
            if (!m_copy.isOpen()) m_report.log(messages::kCopyNotCreated);
            return m_copy.isOpen();
        });
    if (!created) m_copy = takePrivateFile(m_copyPath.c_str());
    m_report.trace(FXString::Format(messages::kDecrypting, m_copyPath.c_str()).substr(0, kTraceText));
}

bool PackageLoader::decipher() {
    if (m_copy.isOpen() &&
        decipherInto(m_script.m_sqlFilePath.c_str(), m_copy, m_copyPath.c_str(), m_script.m_errorMessage)) {
        return true;
    }
    return m_report.reportAs(messages::kDecryptFailed,
                             FXString::Format(messages::kDecryptFailedPath, m_copyPath.c_str()));
}

bool PackageLoader::parse() {
    const bool atStart = lseek(m_copy.get(), 0, SEEK_SET) == 0;
    const OpenFile copy(std::move(m_copy), "r");
    if (!atStart || !copy.isOpen()) return copyUnreadable();
    PackageContent content = takeContent();
    PackageParser parser(content, [this](PackageParser::Section section) {
        m_report.log(FXString::Format(messages::kOutsideSections, static_cast<int>(section)));
    });
    char piece[PackageParser::kPieceBuffer];
    while (std::fgets(piece, sizeof piece, copy.get()) != nullptr) parser.take({piece, std::strlen(piece)});
    storeContent(std::move(content));
    return std::ferror(copy.get()) == 0 || copyUnreadable();  // half a script must not run
}

bool PackageLoader::copyUnreadable() {
    return m_report.reportAs(messages::kCopyNotOpened,
                             FXString::Format(messages::kCopyNotOpenedPath, m_copyPath.c_str()));
}

bool PackageLoader::agreeOnDatabase() {
    if (m_chosenDatabase.empty()) return true;
    if (m_databaseName.empty()) m_databaseName = m_chosenDatabase;
    if (strcasecmp(m_databaseName.c_str(), m_chosenDatabase.c_str()) == 0) return true;
    return m_report.report(
        FXString::Format(messages::kOtherDatabase, m_databaseName.c_str(), m_chosenDatabase.c_str()));
}

bool PackageLoader::bindDatabase() {
    return m_script.setDbAndLog(m_databaseName.c_str()) || m_report.report(messages::kNoDatabaseInfo);
}

bool PackageLoader::enterIntoCatalogue() {
    return m_script.checkPlexumId() && m_script.checkGUID() && m_script.addNewTscript();
}

PackageContent PackageLoader::takeContent() {
    PackageContent content;
    content.creationTime = m_script.m_creationTime;
    content.plexumId = m_script.m_plexumId;
    content.guid = std::move(m_script.m_guid);
    content.developerName = std::move(m_script.m_developerName);
    content.description = std::move(m_script.m_description);
    content.usage = std::move(m_script.m_usage);
    content.scriptBody = std::move(m_script.m_scriptBody);
    content.contentType = m_script.m_contentType;
    return content;
}

void PackageLoader::storeContent(PackageContent&& content) {
    m_script.m_creationTime = content.creationTime;
    m_script.m_plexumId = content.plexumId;
    m_script.m_guid = std::move(content.guid);
    m_script.m_developerName = std::move(content.developerName);
    m_script.m_description = std::move(content.description);
    m_script.m_usage = std::move(content.usage);
    m_script.m_scriptBody = std::move(content.scriptBody);
    m_script.m_contentType = content.contentType;
    m_databaseName = std::move(content.databaseName);
}
