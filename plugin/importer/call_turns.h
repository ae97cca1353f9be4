// Whose turn it is on one importer. Most calls share it and never wait for each other; the few that change
// the file or the analyses have it to themselves. Turns go in order of arrival, so that neither kind is kept
// waiting by a stream of the other. A call that a thread makes from inside another one (the host calls back)
// goes on at once: waiting for the outer call would never end.
//
// Decides only: whoever uses this holds one lock round every function and does the waiting. Nothing here
// allocates.
#pragma once

#include <cstdint>

namespace orvantis {

/// One call, from its arrival until it leaves; lives on its caller's stack.
struct CallTurn {
    CallTurn(std::uintptr_t callingThread, bool alone) noexcept : thread(callingThread), exclusive(alone) {}
    CallTurn(const CallTurn&) = delete;
    CallTurn& operator=(const CallTurn&) = delete;

    std::uintptr_t thread;
    bool exclusive;
    bool admitted = false;  ///< false: to be waited for
    CallTurn* quietTurn =
        nullptr;               ///< what a quiet from inside this call lines up, to wait for behind the call
    bool quiets = false;       ///< it is lined up
    bool closes = false;       ///< a close from inside this call is left to it
    CallTurn* next = nullptr;  ///< behind it in the queue, or before it among those inside
};

class CallTurns {
 public:
    CallTurns() noexcept = default;
    CallTurns(const CallTurns&) = delete;
    CallTurns& operator=(const CallTurns&) = delete;

    /// The call from which all calls of this thread that are inside were made; null when none is.
    CallTurn* outermostOf(std::uintptr_t thread) const noexcept;
    /// Admits the turn at once or lines it up. An exclusive one must not come from inside another call.
    void arrive(CallTurn& turn) noexcept;
    /// Puts the turn behind all that wait, also from inside a call of the same thread, which must leave
    /// before it waits for this turn.
    void lineUp(CallTurn& turn) noexcept;
    /// Ends an admitted turn. True when this has admitted others, which are to be woken.
    bool leave(const CallTurn& turn) noexcept;

 private:
    bool admitWaiting() noexcept;
    void admit(CallTurn& turn) noexcept;

    CallTurn* m_inside = nullptr;  ///< the latest first
    bool m_exclusiveInside = false;
    CallTurn* m_firstWaiting = nullptr;
    CallTurn* m_lastWaiting = nullptr;
};

}  // namespace orvantis
