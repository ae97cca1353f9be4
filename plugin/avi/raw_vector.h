// A vector whose resize() leaves the new elements as they are in memory: for plain file structures that the
// next read overwrites. Clearing megabytes of index first would cost more than reading them.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace orvantis {

/// Constructs trivial elements by default initialisation, that is, not at all.
template <typename T>
struct UninitialisedAllocator : std::allocator<T> {
    template <typename U>
    struct rebind {
        using other = UninitialisedAllocator<U>;
    };

    UninitialisedAllocator() = default;
    template <typename U>
    explicit UninitialisedAllocator(const UninitialisedAllocator<U>&) noexcept {}

    template <typename U>
    void construct(U* place) noexcept {
        ::new (static_cast<void*>(place)) U;
    }
    template <typename U, typename... Args>
    void construct(U* place, Args&&... args) {
        ::new (static_cast<void*>(place)) U(std::forward<Args>(args)...);
    }
};

template <typename T>
using RawVector = std::vector<T, UninitialisedAllocator<T>>;

}  // namespace orvantis
