// Scope guard: runs a function when the scope is left.
#pragma once

namespace tsql {

template <typename Work>
struct [[nodiscard]] Finally {
    Work work;
    explicit Finally(Work atEnd) : work(atEnd) {}
    ~Finally() { work(); }
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;
};

}  // namespace tsql
