// The order in which the requests of one importer take their turns at one step, reading or decoding. Places
// are booked in the order of creation; nobody waits in a thread for a turn, and nobody but the next in order
// is woken. What guards the step itself is its own mutex; this decides who comes to it.
#pragma once

#include <cstdint>

#include "diag/atomic.h"
#include "diag/mutex.h"

namespace orvantis {

/// A queue of booked places, of which the first has the turn. Any thread.
///
/// Each place is used by its request's task alone, with two exceptions: whoever leaves gives the next place
/// its turn, and whoever drops a request may withdraw it while it is parked.
class Turns {
 public:
    /// A request's place in the queue. The request keeps it, so that booking allocates nothing. It must not
    /// be destroyed between book() and leave().
    class Place {
     public:
        /// `owner` is what leave() answers, so that it can be told to go on.
        explicit Place(void* owner) noexcept : m_owner(owner) {}
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

     private:
        friend class Turns;
        enum class State : std::uint8_t {
            kIdle,    ///< no turn yet, and nobody has asked for it
            kParked,  ///< its task has ended and is to be run again when the turn comes
            kTaken,   ///< its turn has come, or it was withdrawn: whoever took it goes on
        };

        void* m_owner;
        Atomic<State> m_state = State::kIdle;
        Place* m_before = nullptr;
        Place* m_after = nullptr;
        bool m_booked = false;
    };

    Turns() = default;
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;

    /// Puts `place` behind all others.
    void book(Place& place) noexcept;

    /// True when it is the turn of `place`, or it was withdrawn. Otherwise it is parked, and whoever gives it
    /// the turn or withdraws it has to see that its owner goes on; the caller touches neither the place nor
    /// this object any more, because both may be gone by then.
    static bool enterOrPark(Place& place) noexcept;

    /// From here on `place` is not parked any more. True when it was: the caller has to see that its owner
    /// goes on. The place stays in the queue until it leaves.
    static bool withdraw(Place& place) noexcept;

    /// Takes `place` out, whether or not it had its turn; does nothing when it is not booked. Returns the
    /// owner of a parked place whose turn has come: the caller has to see that it goes on. Null when there is
    /// none.
    [[nodiscard]] void* leave(Place& place) noexcept;

 private:
    Mutex m_mutex;  ///< guards the queue; nothing is called while it is held
    Place* m_first = nullptr;
    Place* m_last = nullptr;
};

}  // namespace orvantis
