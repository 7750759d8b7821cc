#include "store/Store.h"

#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <mutex>
#include <shared_mutex>

#include "EvDebug.h"
#include "files/FileAccess.h"

namespace hostlayer {
namespace {

constexpr const char* kPathVariable = "ZEPHRA_REGISTRY";
constexpr const char* kDefaultPath = "/etc/zephra/registry.toml";

const char* pathInUse() {
    const char* path = ::secure_getenv(kPathVariable);
    return path != nullptr && *path != '\0' ? path : kDefaultPath;
}

// Metadata of a file that differs after a change of the file.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;  // -1: no such file
    timespec modified{};
    timespec changed{};

    bool operator==(const FileIdentity& other) const {
        const auto same = [](const timespec& a, const timespec& b) {
            return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
        };
        return device == other.device && inode == other.inode && size == other.size &&
               same(modified, other.modified) && same(changed, other.changed);
    }
};

FileIdentity identify(const char* path) {
    struct stat status {};
    if (::stat(path, &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

// True when the file's next change is sure to change the identity. File times advance with the kernel's clock
// tick: two changes within one tick have the same times.
bool isReliable(const FileIdentity& identity) {
    constexpr double kSeconds = 0.05;  // well above a tick
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const double age = static_cast<double>(now.tv_sec - identity.changed.tv_sec) +
                       static_cast<double>(now.tv_nsec - identity.changed.tv_nsec) / 1e9;
    return age > kSeconds || age < -kSeconds;
}

struct CachedState : StoreState {
    FileIdentity identity;
    bool isIdentityReliable = false;

    bool isCurrent(const char* currentPath, const FileIdentity& currentIdentity) const {
        return isIdentityReliable && identity == currentIdentity && path == currentPath;
    }
};

using StatePointer = std::shared_ptr<const CachedState>;

class StoreCache {
  public:
    StatePointer current() {
        const char* path = pathInUse();
        const FileIdentity identity = identify(path);
        const StatePointer state = cached();
        return state && state->isCurrent(path, identity) ? state : refresh(path);
    }

  private:
    StatePointer cached() const {
        const std::shared_lock lock(m_stateLock);
        return m_state;
    }

    StatePointer refresh(const std::string& path) {
        StatePointer next;
        bool isNewProblem = false;
        {
            const std::lock_guard oneReader(m_refreshLock);
            StatePointer last = cached();
            const FileIdentity identity = identify(path.c_str());
            if (last && last->isCurrent(path.c_str(), identity)) return last;  // another thread was faster
            next = readState(path, identity, last);
            isNewProblem = !next->problem.empty() && (!last || last->problem != next->problem);
            const std::unique_lock lock(m_stateLock);
            m_state = next;
        }
        // Without the lock: the debug log reads the store itself.
        if (isNewProblem) EvDebug().DebugLevel(kErrorDebugLevel, "%s", next->problem.c_str());
        return next;
    }

    static StatePointer readState(const std::string& path, const FileIdentity& identity,
                                  const StatePointer& last) {
        auto state = std::make_shared<CachedState>();
        state->path = path;
        state->identity = identity;
        auto content = std::make_shared<StoreContent>();
        std::string text;
        std::string problem;
        const bool isRead = readBounded(path, kMaxStoreBytes, text, problem);
        // What kept the file from being read may pass without changing it: too few descriptors, for example.
        const bool isMissing = identity == FileIdentity();
        state->isIdentityReliable = (isRead || isMissing) && isReliable(identity);
        if (isRead && parseStore(text, *content, problem)) {
            state->content = std::move(content);
            return state;
        }
        if (last && last->path == path) state->content = last->content;
        state->problem = "Configuration store [" + path + "]: " + problem +
                         (state->content ? "; its last good content stays in force" : "");
        return state;
    }

    mutable std::shared_mutex m_stateLock;
    StatePointer m_state;
    std::mutex m_refreshLock;  // held while a thread reads the file; the others wait for its result
};

}  // namespace

std::string storePath() {
    return pathInUse();
}

std::shared_ptr<const StoreState> currentStore() {
    static StoreCache& cache = *new StoreCache;  // never destroyed: static destructors may still read values
    return cache.current();
}

}  // namespace hostlayer
