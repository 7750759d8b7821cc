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

#include "FileAccess.h"
#include "HostSetup.h"
#include "Store.h"
#include "StoreEdit.h"

namespace hostlayer {
namespace {

constexpr mode_t kNewStoreMode = 0640;
constexpr std::chrono::milliseconds kStillness{20};
constexpr int kMostReadings = 50;

bool fail(std::string& problem, const std::string& path) {
    problem = "[" + path + "]: " + std::strerror(errno);
    return false;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A link stays one: the file that it leads to is the one replaced.
std::string realPath(const std::string& path) {
    std::array<char, PATH_MAX> resolved{};
    return ::realpath(path.c_str(), resolved.data()) != nullptr ? resolved.data() : path;
}

// A new file beside the old one that takes its place when it is wholly on the disk, and goes otherwise.
class Replacement {
  public:
    explicit Replacement(const std::string& path)
        : m_path(path), m_temporary(path + ".XXXXXX"), m_file(::mkostemp(m_temporary.data(), O_CLOEXEC)) {}
    ~Replacement() {
        if (m_file && !m_isDone) ::unlink(m_temporary.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool write(const std::string& text) {
        return m_file && takeOver() && writeAll(m_file.get(), text.data(), text.size()) &&
               ::fsync(m_file.get()) == 0;
    }
    bool commit(int folder) {
        m_isDone = ::rename(m_temporary.c_str(), m_path.c_str()) == 0;
        return m_isDone && ::fsync(folder) == 0;
    }

  private:
    // Mode and owner of the file that is there.
    bool takeOver() const {
        struct stat status {};
        if (::stat(m_path.c_str(), &status) != 0)
            return errno == ENOENT && ::fchmod(m_file.get(), kNewStoreMode) == 0;
        const bool isOwn = status.st_uid == ::geteuid() && status.st_gid == ::getegid();
        return (isOwn || ::fchown(m_file.get(), status.st_uid, status.st_gid) == 0) &&
               ::fchmod(m_file.get(), status.st_mode & 07777) == 0;
    }

    const std::string& m_path;
    std::string m_temporary;
    Descriptor m_file;
    bool m_isDone = false;
};

// The store as it is now, to be changed. Somebody who writes the file in place, an editor for one, knows
// nothing of the lock: what is read counts once the file has stood still, and as long as it does.
class StoreReading {
  public:
    explicit StoreReading(const std::string& path) : m_path(path) {}

    bool isThere() { return look(m_status) || errno != ENOENT; }
    bool read(std::string& text, std::string& problem) {
        for (int i = 0; i < kMostReadings; ++i) {
            look(m_status);  // a file that is gone cannot be read either
            std::this_thread::sleep_for(kStillness);
            if (!readBounded(m_path, kMaxStoreBytes, text, problem)) return false;
            if (isCurrent()) return true;
        }
        problem = "another process keeps changing it; try again";
        return false;
    }
    bool isCurrent() const {
        struct stat now {};
        return look(now) && now.st_ino == m_status.st_ino && now.st_size == m_status.st_size &&
               now.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
               now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
    }

  private:
    bool look(struct stat& status) const { return ::stat(m_path.c_str(), &status) == 0; }

    const std::string& m_path;
    struct stat m_status {};
};

bool isPlaceOfValues(const std::vector<std::string>& table, const std::string& valueName) {
    if (valueName.empty() || table.empty() || table.size() > 2 || table.front().empty() ||
        table.back().empty())
        return false;
    return table.front() == "host" ? table.size() == 1 || table.back() == "programs" : table.size() == 2;
}

}  // namespace

bool setStoreValue(const std::vector<std::string>& table, const std::string& valueName,
                   const std::variant<std::string, std::int64_t>& value, std::string& problem) {
    if (!isPlaceOfValues(table, valueName)) {
        problem = "A value is named by its instance, its key and its name, or by host and its name";
        return false;
    }
    const std::string path = realPath(storePath());
    const std::string folderPath = folderOf(path);
    // The folder is locked, not the file, which another writer may be replacing.
    const Descriptor folder(::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || ::flock(folder.get(), LOCK_EX) != 0) return fail(problem, folderPath);
    for (int i = 0; i < kMostReadings; ++i) {
        std::string text;
        std::string edited;
        StoreReading reading(path);
        const bool isNew = !reading.isThere();
        if ((!isNew && !reading.read(text, problem)) ||
            !editStore(text, table, valueName, value, edited, problem)) {
            problem = "[" + path + "]: " + problem;
            return false;
        }
        Replacement replacement(path);
        if (!replacement.write(edited)) return fail(problem, path);
        if (isNew || reading.isCurrent()) return replacement.commit(folder.get()) || fail(problem, path);
    }
    problem = "[" + path + "]: another process keeps changing it; try again";
    return false;
}

}  // namespace hostlayer
