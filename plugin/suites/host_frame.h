// Ownership of a frame that the host's suites have made: it goes back through the suite unless it is
// delivered.
#pragma once

#include <utility>

#include "host/suites.h"

namespace orvantis {

/// Owner of a host frame buffer until the host takes it: a frame that is not released is given back.
class HostFrame {
 public:
    HostFrame() noexcept = default;
    /// `suite` must stay acquired while the frame is held.
    HostFrame(const host::PPixSuite& suite, host::PPixHand ppix) noexcept : m_suite(&suite), m_ppix(ppix) {}
    HostFrame(HostFrame&& other) noexcept
        : m_suite(std::exchange(other.m_suite, nullptr)), m_ppix(std::exchange(other.m_ppix, nullptr)) {}
    HostFrame& operator=(HostFrame&& other) noexcept {
        if (this != &other) {
            reset();
            m_suite = std::exchange(other.m_suite, nullptr);
            m_ppix = std::exchange(other.m_ppix, nullptr);
        }
        return *this;
    }
    ~HostFrame() { reset(); }

    host::PPixHand get() const noexcept { return m_ppix; }
    explicit operator bool() const noexcept { return m_ppix != nullptr; }
    /// Hands the buffer to the host.
    host::PPixHand release() noexcept { return std::exchange(m_ppix, nullptr); }
    void reset() noexcept {
        if (m_ppix != nullptr) {
            m_suite->Dispose(std::exchange(m_ppix, nullptr));
        }
    }

 private:
    const host::PPixSuite* m_suite = nullptr;
    host::PPixHand m_ppix = nullptr;
};

}  // namespace orvantis
