#include "Store.h"

#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <mutex>
#include <shared_mutex>

#include "EvDebug.h"
#include "FileAccess.h"

namespace hostlayer {
namespace {

constexpr const char* kPathVariable = "ZEPHRA_REGISTRY";
constexpr const char* kDefaultPath = "/etc/zephra/registry.toml";

const char* pathInUse() {
    const char* named = ::secure_getenv(kPathVariable);
    return named != nullptr && *named != '\0' ? named : kDefaultPath;
}

// Tells one content of a file from the next without reading it.
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

// File times advance in steps of the kernel's clock: a file that changed a moment ago may change once
// more under the same identity, so such an identity is not relied on yet.
bool isSettled(const FileIdentity& identity) {
    constexpr double kStep = 0.05;  // seconds, well above a clock step
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const double age = static_cast<double>(now.tv_sec - identity.changed.tv_sec) +
                       static_cast<double>(now.tv_nsec - identity.changed.tv_nsec) / 1e9;
    return age > kStep || age < -kStep;
}

struct KeptState : StoreState {
    FileIdentity identity;
    bool settled = false;

    bool isOf(const char* otherPath, const FileIdentity& other) const {
        return settled && identity == other && path == otherPath;
    }
};

using StatePointer = std::shared_ptr<const KeptState>;

class StoreCache {
  public:
    StatePointer current() {
        const char* path = pathInUse();
        const FileIdentity identity = identify(path);
        const StatePointer state = kept();
        return state && state->isOf(path, identity) ? state : refresh(path);
    }

  private:
    StatePointer kept() const {
        const std::shared_lock lock(m_stateLock);
        return m_state;
    }

    StatePointer refresh(const std::string& path) {
        StatePointer next;
        bool isNews = false;
        {
            const std::lock_guard oneReader(m_refreshLock);
            StatePointer last = kept();
            const FileIdentity identity = identify(path.c_str());
            if (last && last->isOf(path.c_str(), identity)) return last;  // another thread was faster
            next = readState(path, identity, last);
            isNews = !next->problem.empty() && (!last || last->problem != next->problem);
            const std::unique_lock lock(m_stateLock);
            m_state = next;
        }
        if (isNews) EvDebug().DebugLevel(1, "%s", next->problem.c_str());
        return next;
    }

    static StatePointer readState(const std::string& path, const FileIdentity& identity,
                                  const StatePointer& last) {
        auto state = std::make_shared<KeptState>();
        state->path = path;
        state->identity = identity;
        state->settled = isSettled(identity);
        auto content = std::make_shared<StoreContent>();
        std::string text;
        std::string problem;
        if (readBounded(path, kMaxStoreBytes, text, problem) && parseStore(text, *content, problem)) {
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
    std::mutex m_refreshLock;  // held over the file's reading, so that one thread reads it
};

}  // namespace

std::string storePath() {
    return pathInUse();
}

std::shared_ptr<const StoreState> currentStore() {
    static StoreCache& cache = *new StoreCache;  // never destroyed: read until the process's last moment
    return cache.current();
}

}  // namespace hostlayer
