// An exported operation whose caller learns when an exception ended it.
#pragma once

#include <utility>

#include "ExceptionGuard.h"

// Returns what `work` returns. When it throws, calls `onException` after the stack is unwound, which frees
// the memory of `work`, and returns false.
template <typename Work, typename OnException>
bool attempt(Work&& work, OnException&& onException) noexcept {
    bool ended = false;
    const bool done = guarded(false, [&] {
        const bool result = work();
        ended = true;
        return result;
    });
    if (!ended) guarded(std::forward<OnException>(onException));
    return done;
}
