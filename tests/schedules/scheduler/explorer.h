// Which schedules there are and which one comes next. A schedule is the row of its decisions: each time that
// more than one thread could take the next step, one of them is taken. The default goes on with the running
// thread, or else with the first one that can run; to leave a thread that could go on is a preemption.
//
// Schedules are numbered from 1, those without preemptions first, then those with one, and so on, depth first
// within each. The numbers do not depend on how many preemptions are asked for.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tests/schedules/scheduler/finding.h"

namespace schedules {

class Explorer {
 public:
    /// Runs `schedule` once for each schedule with at most `preemptions`, and counts in account(). Ends
    /// before the one with the number `stopAt`, which account() then tells; 0: none. True when it ended
    /// there.
    bool explore(const std::function<void()>& schedule, unsigned preemptions, std::uint64_t stopAt = 0);
    /// Runs it once, as the deviations say.
    void replay(const std::function<void()>& schedule, const std::vector<Deviation>& deviations);

    // The running schedule asks:

    /// Which of `count` comes next; `preemptive` when any but the first is a preemption.
    unsigned choose(unsigned count, bool preemptive) noexcept;
    /// A decision without a choice, which counts all the same.
    void pass() noexcept { ++m_decision; }
    std::uint32_t decision() const noexcept { return m_decision; }
    /// A place turned out to be shared of which the schedules so far knew nothing: all begins anew.
    void restart() noexcept { m_restart = true; }

 private:
    struct Choice {
        std::uint32_t decision;
        std::uint8_t option;
        std::uint8_t count;
        bool preemptive;
    };

    void begin() noexcept;
    bool next() noexcept;
    unsigned usedInPath() const noexcept;

    std::vector<Choice> m_path;
    std::size_t m_position = 0;
    unsigned m_budget = 0;
    unsigned m_used = 0;
    std::uint32_t m_decision = 0;
    bool m_restart = false;
    const std::vector<Deviation>* m_replayed = nullptr;
};

/// The one of this process.
Explorer& explorer() noexcept;

}  // namespace schedules
