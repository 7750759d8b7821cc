#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "HostSetup.h"
#include "files/FileAccess.h"
#include "store/Store.h"
#include "store/StoreEdit.h"

namespace hostlayer {
namespace {

constexpr mode_t kNewStoreMode = 0640;
constexpr mode_t kPermissionBits = 07777;
constexpr std::chrono::milliseconds kQuietTime{20};  // without a change before what was read counts
constexpr int kMaxAttempts = 50;
constexpr const char* kKeepsChanging = "another process keeps changing it; try again";

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Follows symbolic links: the file behind a link is replaced, not the link.
std::string realPath(const std::string& path) {
    std::array<char, PATH_MAX> resolved{};
    return ::realpath(path.c_str(), resolved.data()) != nullptr ? resolved.data() : path;
}

// A temporary file beside the old one. commit() renames it over the old one; without a commit the destructor
// deletes it.
class Replacement {
  public:
    explicit Replacement(const std::string& path)
        : m_path(path), m_temporary(path + ".XXXXXX"), m_file(::mkostemp(m_temporary.data(), O_CLOEXEC)) {}
    ~Replacement() {
        if (m_file && !m_isCommitted) ::unlink(m_temporary.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // Both return false with errno on a failure.
    bool write(const std::string& text) {
        return m_file && copyModeAndOwner() && writeAll(m_file.get(), text.data(), text.size()) &&
               ::fsync(m_file.get()) == 0;
    }
    bool commit(int folder) {
        m_isCommitted = ::rename(m_temporary.c_str(), m_path.c_str()) == 0;
        return m_isCommitted && ::fsync(folder) == 0;
    }

  private:
    bool copyModeAndOwner() const {
        struct stat status {};
        if (::stat(m_path.c_str(), &status) != 0)
            return errno == ENOENT && ::fchmod(m_file.get(), kNewStoreMode) == 0;
        const bool isOwn = status.st_uid == ::geteuid() && status.st_gid == ::getegid();
        return (isOwn || ::fchown(m_file.get(), status.st_uid, status.st_gid) == 0) &&
               ::fchmod(m_file.get(), status.st_mode & kPermissionBits) == 0;
    }

    const std::string& m_path;
    std::string m_temporary;
    Descriptor m_file;
    bool m_isCommitted = false;
};

// A consistent copy of the store's file. Programs that write the file in place, editors for example, do not
// use the lock: content counts only while the file does not change.
class StoreSnapshot {
  public:
    explicit StoreSnapshot(const std::string& path) : m_path(path) {}

    bool fileExists() { return readStatus(m_status) || errno != ENOENT; }

    // Reads the file once it has not changed for kQuietTime. False with the reason on a failure.
    bool read(std::string& text, std::string& problem) {
        for (int i = 0; i < kMaxAttempts; ++i) {
            readStatus(m_status);  // when this fails, so does the reading
            std::this_thread::sleep_for(kQuietTime);
            if (!readBounded(m_path, kMaxStoreBytes, text, problem)) return false;
            if (isCurrent()) return true;
        }
        problem = kKeepsChanging;
        return false;
    }

    // True as long as the file is the one that read() has read.
    bool isCurrent() const {
        struct stat now {};
        return readStatus(now) && now.st_ino == m_status.st_ino && now.st_size == m_status.st_size &&
               now.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
               now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
    }

  private:
    bool readStatus(struct stat& status) const { return ::stat(m_path.c_str(), &status) == 0; }

    const std::string& m_path;
    struct stat m_status {};
};

// True for {instance, key}, {"host"} and {"host", "programs"}: the tables that values are read from.
bool canHoldValues(const std::vector<std::string>& table) {
    if (table.empty() || table.size() > 2 || table.front().empty() || table.back().empty()) return false;
    return table.front() == "host" ? table.size() == 1 || table.back() == "programs" : table.size() == 2;
}

bool applyChanges(const std::vector<StoreChange>& changes, std::string& text, std::string& problem) {
    for (const auto& [table, valueName, value] : changes) {
        if (valueName.empty() || !canHoldValues(table)) {
            problem = "A value needs an instance, a key and a name, or host and a name";
            return false;
        }
        std::string edited;
        if (!editStore(text, table, valueName, value, edited, problem)) return false;
        text = std::move(edited);
    }
    return true;
}

}  // namespace

bool setStoreValue(const std::vector<std::string>& table, const std::string& valueName,
                   const std::variant<std::string, std::int64_t>& value, std::string& problem) {
    const std::vector<StoreChange> changes = {{table, valueName, value}};
    return changeStore([&] { return changes; }, problem);
}

bool changeStore(const std::function<std::vector<StoreChange>()>& changesOf, std::string& problem) {
    const std::string path = realPath(storePath());
    const std::string folderPath = folderOf(path);
    // The lock is on the folder: another writer may replace the file.
    const Descriptor folder(::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || ::flock(folder.get(), LOCK_EX) != 0) return reportErrno(problem, folderPath);
    for (int i = 0; i < kMaxAttempts; ++i) {
        std::string text;
        StoreSnapshot snapshot(path);
        const bool isNew = !snapshot.fileExists();
        const bool isRead = isNew || snapshot.read(text, problem);
        const std::vector<StoreChange> changes = isRead ? changesOf() : std::vector<StoreChange>();
        if (!isRead || !applyChanges(changes, text, problem)) {
            problem = "[" + path + "]: " + problem;
            return false;
        }
        if (changes.empty()) return true;
        Replacement replacement(path);
        if (!replacement.write(text)) return reportErrno(problem, path);
        if (isNew || snapshot.isCurrent())
            return replacement.commit(folder.get()) || reportErrno(problem, path);
    }
    problem = "[" + path + "]: " + kKeepsChanging;
    return false;
}

}  // namespace hostlayer
