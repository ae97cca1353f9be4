// The memory of one schedule: a region of its own, in which nothing is used twice. So equal schedules have
// equal addresses, what is freed stays recognisable, and what is not freed is known at the end. Not under the
// address sanitizer, which has the same duty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace schedules::memory {

/// From here on operator new takes its memory from the region, begun anew.
void begin() noexcept;
/// No longer. Blocks that were allocated since begin() and not freed.
std::size_t end() noexcept;
/// operator new goes back to the process's heap for as long as this lives, and nothing is watched: for the
/// scheduler's own needs.
class Outside {
 public:
    Outside() noexcept;
    ~Outside();
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

 private:
    bool m_was;
    bool m_watched;
};

/// Region of the blocks and of the fibres' stacks, for the watch over races.
std::byte* regionBegin() noexcept;
std::byte* regionEnd() noexcept;
/// Where the stack of thread `number` lies, Fibre::kStackBytes of it.
std::byte* stackOf(unsigned number) noexcept;
/// In words what kind of memory an address is in.
std::string placeOf(const void* address);

}  // namespace schedules::memory
