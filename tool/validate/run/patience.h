// How much of its time a check has had. On a machine that others keep busy the clock goes on while a check
// waits for a processor, and one that takes a second takes a minute without a fault. Pure; any thread.
#pragma once

namespace simhost::tool::validate {

/// What went by between two looks at the process of a check, in seconds.
struct TimeSlice {
    double clock = 0;
    double worked = 0;  ///< processor time of the process
    double idle = 0;    ///< all processors together, without anything to do
};

class Patience {
 public:
    void add(const TimeSlice& slice) noexcept;
    /// Another check begins.
    void restart() noexcept { *this = {}; }
    /// Seconds that count against the check's time-out: while a processor was free, those of the clock, else
    /// those in which it worked; at least a tenth of the clock, and the time since it last worked at all.
    double used() const noexcept;

 private:
    double m_had = 0;
    double m_still = 0;  // since it last worked
};

}  // namespace simhost::tool::validate
