// Collection of the causes of failures while an exported operation runs. Every thread has its own.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "ExceptionGuard.h"
#include "VtCauses.h"

// The causes that an object keeps of its last operation.
struct DVUCauseList {
    std::vector<DVUCause_t> causes;
};

// Adds a cause to all collectors of this thread; without one it is dropped. Bytes that are not UTF-8 become
// U+FFFD, and longer strings are cut. A cause for which memory is short is lost.
void noteCause(DVUCause_t cause) noexcept;

// noteCause(), and an error entry in the debug log.
void reportCause(DVUCause_t cause) noexcept;

// reportCause() for a file operation that failed with that errno.
void reportFileFailure(const std::string& path, int error) noexcept;

// reportCause() for a value of the configuration.
void reportConfiguration(const char* key, const char* valueName, const char* text) noexcept;

// Notes that an exception has ended an operation. The cause has no place.
void noteException() noexcept;

// Collects this thread's causes, the platform layer's included, while it exists. Collectors nest.
class CauseCollector {
  public:
    CauseCollector() noexcept;
    ~CauseCollector();
    CauseCollector(const CauseCollector&) = delete;
    CauseCollector& operator=(const CauseCollector&) = delete;

    std::vector<DVUCause_t>& causes() { return m_list.causes; }
    // Replaces `kept` by the causes of a failure; null after a success.
    void keepIn(DVUCauseList*& kept, bool failed) noexcept;

  private:
    friend void noteCause(DVUCause_t cause) noexcept;

    CauseCollector* m_outer;
    VtCauseListener m_listenerBefore = nullptr;
    DVUCauseList m_list;
};

// A step for which a part below may have noted a cause already.
class ExplainedStep {
  public:
    ExplainedStep() noexcept;
    // Returns whether a cause was added since the construction.
    bool isExplained() const noexcept;
    // Adds the cause unless isExplained().
    void noteUnlessExplained(DVUCause_t cause) const noexcept;

  private:
    std::size_t m_before;
};

// guarded(); an exception is noted as a cause.
template <typename Result, typename Work>
Result explained(Result failure, Work&& work) noexcept {
    bool hasEnded = false;
    Result result = guarded(failure, [&] {
        Result returned = std::forward<Work>(work)();
        hasEnded = true;
        return returned;
    });
    if (!hasEnded) noteException();
    return result;
}

// explained(), with the causes of a failure kept in `kept`.
template <typename Result, typename Work>
Result collected(DVUCauseList*& kept, Result failure, Work&& work) noexcept {
    CauseCollector collector;
    Result result = explained(failure, std::forward<Work>(work));
    collector.keepIn(kept, result == failure);
    return result;
}
