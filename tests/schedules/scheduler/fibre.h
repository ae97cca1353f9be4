// One logical thread as a stack of its own, of which only one runs: switching is a jump, so that a schedule
// of a hundred steps takes microseconds.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdint>

namespace schedules {

/// Entered again for each body that it is given, on the same stack. The process has one thread.
class Fibre {
 public:
    static constexpr std::size_t kStackBytes = std::size_t{256} << 10;

    /// The fibre of the stack that the process runs on.
    Fibre() noexcept = default;
    Fibre(const Fibre&) = delete;
    Fibre& operator=(const Fibre&) = delete;

    /// Gives it the stack [`stack`, `stack` + kStackBytes), and `body`, which it runs again and again: `body`
    /// ends with a switch to another fibre, and a switch back begins it anew.
    void prepare(std::byte* stack, void (*body)()) noexcept;

    /// Leaves the running fibre, which is this one, and goes on with `next` where that left.
    void switchTo(Fibre& next) noexcept;

 private:
    void enter() noexcept;

    /// What the C++ runtime keeps for each thread about exceptions that are being handled.
    struct Exceptions {
        void* caught = nullptr;
        unsigned uncaught = 0;
    };

    std::byte* m_stack = nullptr;  ///< null: the process's own
    void (*m_body)() = nullptr;
    bool m_entered = true;
    std::jmp_buf m_place{};
    Exceptions m_exceptions;
    [[maybe_unused]] void* m_shadowStack = nullptr;  ///< of the address sanitizer
};

}  // namespace schedules
