// An exported operation that tells its caller when it was broken off.
#pragma once

#include <utility>

#include "ExceptionGuard.h"

// What `work` returns. When it throws: false, and `tell` runs, with the memory of `work` given back.
template <typename Work, typename Tell>
bool attempt(Work&& work, Tell&& tell) noexcept {
    bool ended = false;
    const bool done = guarded(false, [&] {
        const bool result = work();
        ended = true;
        return result;
    });
    if (!ended) guarded(std::forward<Tell>(tell));
    return done;
}
