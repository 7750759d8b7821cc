// An exported operation whose caller learns when an exception ended it.
#pragma once

#include <string>
#include <utility>

#include "Causes.h"
#include "ExceptionGuard.h"
#include "text/ScriptMessages.h"

// Returns what `work` returns. When it throws, notes a cause and calls `onException` after the stack is
// unwound, which frees the memory of `work`, and returns false.
template <typename Work, typename OnException>
bool attempt(Work&& work, OnException&& onException) noexcept {
    bool ended = false;
    const bool done = explained(false, [&] {
        const bool result = work();
        ended = true;
        return result;
    });
    if (!ended) guarded(std::forward<OnException>(onException));
    return done;
}

// The same; `errorText` says that an exception ended the work.
template <typename Work>
bool attempted(std::string& errorText, Work&& work) {
    return attempt(std::forward<Work>(work), [&] { errorText = messages::kBrokenOff; });
}
