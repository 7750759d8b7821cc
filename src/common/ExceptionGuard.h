// The one place where exceptions end: exported operations run inside guarded(), so that neither bad_alloc nor
// whatever a platform class throws reaches a caller.
#pragma once

#include <utility>

// What `work` returns, or `failure` when it throws.
template <typename Result, typename Work>
Result guarded(Result failure, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return failure;
    }
}

// The same for work without a result: what is left undone stays undone.
template <typename Work>
void guarded(Work&& work) noexcept {
    guarded(false, [&work] {
        work();
        return true;
    });
}
