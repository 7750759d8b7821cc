#include "packing/KeyRotation.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "HostSettings.h"
#include "console/Outcome.h"
#include "installation/CipherKey.h"
#include "installation/Credentials.h"
#include "installation/Installation.h"
#include "installation/StoreValues.h"
#include "packing/Repacking.h"
#include "system/FolderListing.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kKeySetting = "cipherKeyFile";
constexpr const char* kPreviousKeySetting = "previousKeyFile";
constexpr const char* kTemporary = ".rotating";

[[noreturn]] void throwErrno(const std::string& what) {
    throw Failure(ExitCode::kInstallation, what + ": " + std::strerror(errno));
}

// Exclusive lock of a folder, for the life of the object.
class FolderLock {
  public:
    explicit FolderLock(const fs::path& folder)
        : m_folder(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (m_folder < 0) throwErrno(folder.string() + " cannot be opened");
        if (flock(m_folder, LOCK_EX | LOCK_NB) == 0) return;
        close(m_folder);
        throw Failure(ExitCode::kInstallation, "another tscript is rotating the keys");
    }
    ~FolderLock() { close(m_folder); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

  private:
    int m_folder;
};

// The key's path with the next number that no file has: cipher.key, cipher.key.1, cipher.key.2.
std::string nextKeyPath(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    const bool isNumbered = dot != std::string::npos && dot + 1 < path.size() &&
                            path.find_first_not_of("0123456789", dot + 1) == std::string::npos;
    const std::string stem = isNumbered ? path.substr(0, dot) : path;
    for (int number = 1;; ++number) {
        std::string next = stem + "." + std::to_string(number);
        if (!fs::exists(fs::symlink_status(next))) return next;
    }
}

hostlayer::StoreChange hostChange(const char* name, const std::string& value) {
    return {{"host"}, name, value};
}

void changeStore(const std::function<std::vector<hostlayer::StoreChange>()>& changes) {
    std::string problem;
    if (!hostlayer::changeStore(changes, problem))
        throw Failure(ExitCode::kInstallation, "the store cannot be changed: " + problem);
}

}  // namespace

std::string KeyRotation::previousKey() {
    return hostlayer::hostSetting(kPreviousKeySetting, "");
}

KeyRotation::Result KeyRotation::run() {
    if (const std::string problem = keyProblem(); !problem.empty())
        throw Failure(ExitCode::kInstallation, problem);
    m_scripts = scriptsFolder();
    const FolderLock lock(m_scripts);
    deleteLeftOvers();
    m_result.newKey = hostlayer::hostSetting(kKeySetting, "");
    m_result.previousKey = previousKey();
    if (m_result.previousKey.empty()) {
        createKey();
        switchKeys();
    }
    convertPackages();
    std::this_thread::sleep_for(m_grace);
    convertCredentials();  // programs that had loaded the previous key may have written since
    convertPackages();
    dropPreviousKey();
    return m_result;
}

// A rotation that was killed leaves the file that it was writing.
void KeyRotation::deleteLeftOvers() const {
    std::error_code ignored;
    for (const fs::path& path : pathsIn(m_scripts, ignored))
        if (path.filename().string().find(std::string(".sql") + kTemporary + ".") != std::string::npos)
            fs::remove(path, ignored);
}

// Gives the new key the owner of the previous one, so that the same users can read it.
void KeyRotation::createKey() {
    m_result.previousKey = std::exchange(m_result.newKey, nextKeyPath(m_result.newKey));
    createKeyFile(m_result.newKey);
    struct stat before {};
    struct stat now {};
    if (stat(m_result.previousKey.c_str(), &before) != 0 || stat(m_result.newKey.c_str(), &now) != 0)
        throwErrno("cannot read the owner of the keys");
    const bool hasSameOwner = before.st_uid == now.st_uid && before.st_gid == now.st_gid;
    if (!hasSameOwner && chown(m_result.newKey.c_str(), before.st_uid, before.st_gid) != 0)
        throwErrno("cannot give " + m_result.newKey + " to the owner of the previous key");
}

// Both keys count, and the credentials have the new one, from one version of the store to the next.
void KeyRotation::switchKeys() {
    changeStore([this] {
        m_result.credentials = 0;
        std::vector<hostlayer::StoreChange> changes = convertedCredentials(/*areNewLikely=*/false);
        changes.push_back(hostChange(kKeySetting, m_result.newKey));
        changes.push_back(hostChange(kPreviousKeySetting, m_result.previousKey));
        return changes;
    });
}

void KeyRotation::convertCredentials() {
    changeStore([this] { return convertedCredentials(/*areNewLikely=*/true); });
}

// Credentials that neither key decrypts stay as they are.
std::vector<hostlayer::StoreChange> KeyRotation::convertedCredentials(bool areNewLikely) {
    std::vector<hostlayer::StoreChange> changes;
    for (const StoreEntry& entry : storeEntries()) {
        if (!isStoredCredentials(entry.text())) continue;
        if (areNewLikely && withKey(entry.text(), m_result.newKey, m_result.newKey)) continue;
        if (const auto converted = withKey(entry.text(), m_result.previousKey, m_result.newKey))
            changes.push_back({entry.table, entry.name, *converted});
    }
    m_result.credentials += changes.size();
    return changes;
}

void KeyRotation::convertPackages() {
    m_result.unreadable.clear();
    for (const fs::path& file : pathsIn(m_scripts, ".sql"))
        if (fs::symlink_status(file).type() == fs::file_type::regular) convertPackage(file);
}

void KeyRotation::convertPackage(const fs::path& file) {
    KeyedCipher from(m_result.previousKey);
    KeyedCipher to(m_result.newKey);
    try {
        const Repacked done =
            repackFile(file.string(), from, to, Unsealed::kStays, file.string() + kTemporary);
        if (done == Repacked::kDone) ++m_result.packages;
    } catch (const Failure& failure) {
        // Deleted meanwhile, or converted before: a failure to read it that did not last loses nothing.
        if (!fs::exists(file) || isAuthentic(file.string(), to)) return;
        if (isAuthentic(file.string(), from))
            throw Failure(ExitCode::kInstallation, file.string() + " was left as it is: " + failure.what(),
                          "Both keys stay in use. Run tscript rotate again.");
        m_result.unreadable.push_back(file.string() + ": " + failure.what());
    }
}

void KeyRotation::dropPreviousKey() const {
    changeStore([] { return std::vector{hostChange(kPreviousKeySetting, "")}; });
}
