#include "async/turns.h"

namespace orvantis {

void Turns::book(Place& place) noexcept {
    const std::lock_guard lock(m_mutex);
    place.m_booked = true;
    place.m_after = nullptr;
    place.m_before = m_last;
    if (m_last != nullptr) {
        m_last->m_after = &place;
    } else {
        m_first = &place;
    }
    m_last = &place;
    place.m_state = m_first == &place ? Place::State::kTaken : Place::State::kIdle;
}

bool Turns::enterOrPark(Place& place) noexcept {
    // One step of the processor and no lock: once parked, the request may be run and destroyed elsewhere, and
    // the importer with it, before the next instruction of this thread.
    Place::State expected = Place::State::kIdle;
    return !place.m_state.compare_exchange_strong(expected, Place::State::kParked);
}

bool Turns::withdraw(Place& place) noexcept {
    return place.m_state.exchange(Place::State::kTaken) == Place::State::kParked;
}

void* Turns::leave(Place& place) noexcept {
    const std::lock_guard lock(m_mutex);
    if (!place.m_booked) {
        return nullptr;
    }
    place.m_booked = false;
    const bool hadTurn = m_first == &place;
    (place.m_before != nullptr ? place.m_before->m_after : m_first) = place.m_after;
    (place.m_after != nullptr ? place.m_after->m_before : m_last) = place.m_before;
    if (!hadTurn || m_first == nullptr) {
        return nullptr;
    }
    // The next has the turn. If it is not parked its task comes by itself.
    return m_first->m_state.exchange(Place::State::kTaken) == Place::State::kParked ? m_first->m_owner
                                                                                    : nullptr;
}

}  // namespace orvantis
