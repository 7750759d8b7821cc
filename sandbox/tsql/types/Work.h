// Long work on strings, which ends with a cancelled batch.
#pragma once

#include <cstddef>
#include <functional>

namespace tsql {

struct BatchEnd {};  // ends the whole batch

inline thread_local std::function<bool()> isBatchCancelled;  // empty outside of batches

// Called with the number of steps done, about a nanosecond each. Throws BatchEnd in a cancelled batch.
inline void spendWork(std::size_t steps) {
    constexpr std::size_t kStepsBetweenLooks = std::size_t{1} << 20;
    thread_local std::size_t spent = 0;
    if ((spent += steps) < kStepsBetweenLooks) return;
    spent = 0;
    if (isBatchCancelled && isBatchCancelled()) throw BatchEnd{};
}

}  // namespace tsql
