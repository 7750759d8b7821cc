// Scope guards and owners.
#pragma once

#include <utility>

namespace tsql {

// Runs a function when the scope is left.
template <typename Work>
struct [[nodiscard]] Finally {
    Work work;
    explicit Finally(Work atEnd) : work(atEnd) {}
    ~Finally() { work(); }
    Finally(Finally&&) = delete;  // neither moved nor copied
};

// Gives a variable another value until the scope is left.
template <typename T>
struct [[nodiscard]] Temporarily {
    T& place;
    T before;
    template <typename Other>
    Temporarily(T& variable, Other&& value)
        : place(variable), before(std::exchange(variable, std::forward<Other>(value))) {}
    ~Temporarily() { place = std::move(before); }
    Temporarily(Temporarily&&) = delete;  // neither moved nor copied
};

// Deleter of std::unique_ptr for what a C library frees by a function.
template <auto Free>
struct Deleter {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};

}  // namespace tsql
