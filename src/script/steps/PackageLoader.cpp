#include "steps/PackageLoader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "CVoFile.h"
#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/DVUtilLib.h"
#include "FX.h"
#include "FileCipher.h"
#include "LetterCase.h"
#include "OpenFile.h"
#include "files/RemovedAtEnd.h"
#include "files/ScriptFileNames.h"
#include "files/UniqueFile.h"
#include "record/Sha256.h"
#include "steps/RunRecorder.h"
#include "text/ScriptMessages.h"

namespace {

constexpr std::size_t kConfigurationText = 8192;  // buffer size that DVUtilLib's getters need
constexpr std::size_t kTraceText = 1023;          // longest trace of a path

}  // namespace

PackageLoader::PackageLoader(const ScriptParts& script, std::string dbName)
    : m_session(script.session),
      m_package(script.package),
      m_fromPackage(script.entry.fromPackage),
      m_lastMessage(script.messages.last),
      m_report(script),
      m_scriptSession(script),
      m_siteCheck(script),
      m_scriptCatalogue(script),
      m_chosenDatabase(std::move(dbName)) {}

bool PackageLoader::run(const char* path, const std::function<bool()>& accept) {
    return read(path) && (!accept || accept()) && bindDatabase() && catalogue();
}

bool PackageLoader::read(const char* path) {
    if (!m_report.requireSession() || !choosePath(path) || !openPackage()) return false;
    m_fromPackage = true;
    reserveCopy();
    // Whatever has the name of a copy that could not be opened is deleted when the load fails.
    const RemovedAtEnd unopened(m_copy.isOpen() ? std::string() : m_copyPath);
    return decrypt() && parse() && agreeOnDatabase();
}

bool PackageLoader::choosePath(const char* path) {
    std::string& chosen = m_package.path;
    if (!chosen.empty()) return true;
    if (*textOrEmpty(path) != '\0') {
        chosen = path;
        return true;
    }
    findByName();
    return !chosen.empty() || m_report.fail(messages::kNoPackagePath);
}

void PackageLoader::findByName() {
    if (!m_package.path.empty() || !m_report.requireSession()) return;
    std::string folder(kConfigurationText, '\0');
    if (!m_session.util->GetZephraInstallDir(folder.data())) {
        m_report.report(messages::kNoBaseFolder);
        return;
    }
    folder.resize(folder.find('\0'));
    FXPath::Append(folder, "Scripts");
    FXPath::Append(folder, m_session.scriptName.c_str());
    m_package.path = folder + ".sql";
}

bool PackageLoader::openPackage() {
    const char* path = m_package.path.c_str();
    m_file = openPlainFile(path, O_RDONLY);
    if (m_file.isOpen()) return true;
    reportFileFailure(path, errno);
    return m_report.failAs(messages::kPackageNotFound, FXString::Format(messages::kPackageUnreadable, path));
}

// The copy stays open until it is read. Its name is deleted before anything is written, so that a process
// that is killed leaves no plain copy, and nobody can replace it. When no name is free, the last one tried is
// used if it is a private file of this user; otherwise decrypt() reports the failure.
void PackageLoader::reserveCopy() {
    int lastError = EEXIST;
    const bool created = tryPaths(
        m_copyPath, [this] { return scratchPath(m_session.scriptName, "_DE.txt"); },
        [&] {
            m_copy = createPrivateFile(m_copyPath.c_str());
            if (m_copy.isOpen()) return true;
            lastError = errno;
            m_report.log(messages::kCopyNotCreated);
            return false;
        });
    if (!created) m_copy = openPrivateFile(m_copyPath.c_str());
    if (m_copy.isOpen()) {
        CVoFile::Delete(m_copyPath.c_str(), /*missingIsFine=*/true);
    } else {
        reportFileFailure(m_copyPath, lastError);
    }
    m_report.trace(FXString::Format(messages::kDecrypting, m_copyPath.c_str()).substr(0, kTraceText));
}

bool PackageLoader::decrypt() {
    m_package.fileHash.clear();
    if (!recordSettings().folder.empty()) m_package.fileHash = sha256OfFile(m_file);
    if (m_copy.isOpen() && decryptPackage(std::move(m_file), m_package.path.c_str(), m_copy,
                                          m_copyPath.c_str(), m_lastMessage)) {
        return true;
    }
    return m_report.failAs(messages::kDecryptFailed,
                           FXString::Format(messages::kDecryptFailedPath, m_copyPath.c_str()));
}

bool PackageLoader::parse() {
    const bool atStart = lseek(m_copy.get(), 0, SEEK_SET) == 0;
    const OpenFile copy(std::move(m_copy), "r");
    if (!atStart || !copy.isOpen()) return copyUnreadable();
    // The destructor stores what has been parsed, also when memory runs out.
    struct Content : PackageContent {
        explicit Content(PackageLoader& owner) : PackageContent(owner.moveContentOut()), loader(owner) {}
        ~Content() { loader.storeContent(std::move(*this)); }
        PackageLoader& loader;
    } content(*this);
    PackageParser parser(content, [this](PackageParser::Section section) {
        m_report.log(FXString::Format(messages::kOutsideSections, static_cast<int>(section)));
    });
    char piece[PackageParser::kPieceBuffer];
    while (std::fgets(piece, sizeof piece, copy.get()) != nullptr) parser.parse({piece, std::strlen(piece)});
    return std::ferror(copy.get()) == 0 || copyUnreadable();  // a script read in part must not run
}

bool PackageLoader::copyUnreadable() {
    reportFileFailure(m_copyPath, errno);
    return m_report.failAs(messages::kCopyNotOpened,
                           FXString::Format(messages::kCopyNotOpenedPath, m_copyPath.c_str()));
}

bool PackageLoader::agreeOnDatabase() {
    if (m_chosenDatabase.empty()) return true;
    if (m_databaseName.empty()) m_databaseName = m_chosenDatabase;
    if (equalIgnoringCase(m_databaseName, m_chosenDatabase)) return true;
    return m_report.fail(
        FXString::Format(messages::kOtherDatabase, m_databaseName.c_str(), m_chosenDatabase.c_str()));
}

bool PackageLoader::bindDatabase() {
    return m_scriptSession.chooseDatabase(m_databaseName.c_str()) || m_report.fail(messages::kNoDatabaseInfo);
}

bool PackageLoader::catalogue() {
    return m_siteCheck.checkSite() && m_siteCheck.checkGuid() && m_scriptCatalogue.addPackage();
}

PackageContent PackageLoader::moveContentOut() {
    PackageContent content;
    content.creationTime = m_package.creationTime;
    content.plexumId = m_package.plexumId;
    content.guid = std::move(m_package.guid);
    content.developerName = std::move(m_package.developerName);
    content.description = std::move(m_package.description);
    content.usage = std::move(m_package.usage);
    content.scriptBody = std::move(m_package.scriptBody);
    content.contentType = m_package.contentType;
    return content;
}

void PackageLoader::storeContent(PackageContent&& content) {
    m_package.creationTime = content.creationTime;
    m_package.plexumId = content.plexumId;
    m_package.guid = std::move(content.guid);
    m_package.developerName = std::move(content.developerName);
    m_package.description = std::move(content.description);
    m_package.usage = std::move(content.usage);
    m_package.scriptBody = std::move(content.scriptBody);
    m_package.contentType = content.contentType;
    m_databaseName = std::move(content.databaseName);
}
