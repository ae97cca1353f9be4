// Turns by order of arrival. The lists are those few calls that are on one importer at the same moment.
#include "importer/call_turns.h"

namespace orvantis {

CallTurn* CallTurns::outermostOf(std::uintptr_t thread) const noexcept {
    CallTurn* outermost = nullptr;
    for (CallTurn* turn = m_inside; turn != nullptr; turn = turn->next) {
        if (turn->thread == thread) {
            outermost = turn;
        }
    }
    return outermost;
}

void CallTurns::arrive(CallTurn& turn) noexcept {
    if (outermostOf(turn.thread) != nullptr) {
        admit(turn);
    } else {
        lineUp(turn);
    }
}

void CallTurns::lineUp(CallTurn& turn) noexcept {
    (m_lastWaiting != nullptr ? m_lastWaiting->next : m_firstWaiting) = &turn;
    m_lastWaiting = &turn;
    admitWaiting();
}

bool CallTurns::leave(const CallTurn& turn) noexcept {
    CallTurn** place = &m_inside;
    while (*place != &turn) {
        place = &(*place)->next;
    }
    *place = turn.next;
    if (turn.exclusive) {
        m_exclusiveInside = false;
    }
    return admitWaiting();
}

bool CallTurns::admitWaiting() noexcept {
    bool admittedAny = false;
    while (m_firstWaiting != nullptr && !m_exclusiveInside &&
           (!m_firstWaiting->exclusive || m_inside == nullptr)) {
        CallTurn& turn = *m_firstWaiting;
        m_firstWaiting = turn.next;
        if (m_firstWaiting == nullptr) {
            m_lastWaiting = nullptr;
        }
        admit(turn);
        admittedAny = true;
    }
    return admittedAny;
}

void CallTurns::admit(CallTurn& turn) noexcept {
    turn.next = m_inside;
    m_inside = &turn;
    turn.admitted = true;
    if (turn.exclusive) {
        m_exclusiveInside = true;
    }
}

}  // namespace orvantis
