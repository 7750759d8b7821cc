// The only place that catches exceptions: every exported operation runs inside guarded(), so that no
// exception reaches a caller, neither bad_alloc nor one of a platform class.
#pragma once

#include <utility>

// Returns what `work` returns, or `failure` if it throws.
template <typename Result, typename Work>
Result guarded(Result failure, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return failure;
    }
}

// The same for work without a result.
template <typename Work>
void guarded(Work&& work) noexcept {
    guarded(false, [&work] {
        work();
        return true;
    });
}
