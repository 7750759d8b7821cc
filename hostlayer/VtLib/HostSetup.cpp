#include "HostSetup.h"

#include <fcntl.h>
#include <sodium.h>
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

#include "CipherKey.h"
#include "Descriptor.h"
#include "Store.h"
#include "StoreEdit.h"

namespace hostlayer {
namespace {

constexpr mode_t kNewStoreMode = 0640;
constexpr mode_t kKeyMode = 0600;
constexpr std::chrono::milliseconds kStillness{20};
constexpr int kMostReadings = 50;

bool fail(std::string& problem, const std::string& path) {
    problem = "[" + path + "]: " + std::strerror(errno);
    return false;
}

bool writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t put = ::write(file, bytes, size);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return false;
        bytes += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
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

std::map<std::string, std::string> textsOf(const StoreKey& key) {
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : key) texts.emplace(name, textOf(value));
    return texts;
}

}  // namespace

StoreReport inspectStore() {
    const auto store = currentStore();
    StoreReport report;
    report.path = store->path;
    report.problem = store->problem;
    report.isInForce = store->content != nullptr;
    if (!report.isInForce) return report;
    report.oddities = store->content->oddities;
    report.settings = textsOf(store->content->settings);
    report.programs = textsOf(store->content->programs);
    for (const auto& [instance, keys] : store->content->instances)
        for (const auto& [key, values] : keys)
            report.instances[instance][key].insert(values.begin(), values.end());
    return report;
}

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

bool createCipherKeyFile(const std::string& path, std::string& problem) {
    if (!startCipherLibrary()) {
        problem = cipherErrorText(VTPassword::kCipherUnavailable);
        return false;
    }
    const Descriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kKeyMode));
    if (!file) return fail(problem, path);
    std::array<char, kCipherKeyBytes> key{};
    ::randombytes_buf(key.data(), key.size());
    const bool isDone = ::fchmod(file.get(), kKeyMode) == 0 && writeAll(file.get(), key.data(), key.size()) &&
                        ::fsync(file.get()) == 0;
    ::sodium_memzero(key.data(), key.size());
    if (isDone) return true;
    fail(problem, path);
    ::unlink(path.c_str());
    return false;
}

const char* cipherErrorText(long error) {
    switch (error) {
        case VTPassword::kNoError:
            return "no error";
        case VTPassword::kKeyNotConfigured:
            return "the configuration store names no key file: set cipherKeyFile under [host]";
        case VTPassword::kKeyUnreadable:
            return "the key file that cipherKeyFile names is missing or cannot be read";
        case VTPassword::kKeyExposed:
            return "others than its owner may read the key file: set its mode to 0600";
        case VTPassword::kKeyMalformed:
            return "the key file is not a file of exactly 32 bytes";
        case VTPassword::kBufferTooSmall:
            return "the text does not fit into the room for it";
        case VTPassword::kNotARecord:
            return "the text is no enciphered record";
        case VTPassword::kRecordCut:
            return "the enciphered record is cut";
        case VTPassword::kNotAuthentic:
            return "the enciphered record was changed, or enciphered with another key";
        case VTPassword::kWrongKind:
            return "credentials stand where a file record is wanted, or the reverse";
        case VTPassword::kCipherUnavailable:
            return "the cipher library cannot be started";
        default:
            return "unknown cipher error";
    }
}

}  // namespace hostlayer
