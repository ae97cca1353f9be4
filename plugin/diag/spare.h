// An object that several calls use one after the other, so that the steady state allocates nothing, without
// any of them ever waiting for another: who finds it gone makes one of its own.
#pragma once

#include <memory>
#include <utility>

#include "diag/atomic.h"

namespace orvantis {

/// Keeps at most one object that nobody uses. Any thread; no call waits.
template <class T>
class Spare {
 public:
    Spare() noexcept = default;
    Spare(const Spare&) = delete;
    Spare& operator=(const Spare&) = delete;
    ~Spare() { drop(); }

    /// The kept object, which belongs to the caller from then on; null when there is none.
    std::unique_ptr<T> take() noexcept {
        return std::unique_ptr<T>(m_kept.exchange(nullptr, std::memory_order_acq_rel));
    }
    /// Keeps `object` and destroys what was kept until then.
    void keep(std::unique_ptr<T> object) noexcept {
        const std::unique_ptr<T> former(m_kept.exchange(object.release(), std::memory_order_acq_rel));
    }
    void drop() noexcept { take().reset(); }

 private:
    Atomic<T*> m_kept{nullptr};
};

/// The spare object for the length of a call, or a new one, which becomes the spare.
template <class T>
class Loan {
 public:
    /// Throws std::bad_alloc, and what the construction of a T throws, when there is no spare.
    explicit Loan(Spare<T>& spare) : m_spare(spare), m_object(spare.take()) {
        if (!m_object) {
            m_object = std::make_unique<T>();
        }
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() { m_spare.keep(std::move(m_object)); }

    T& operator*() const noexcept { return *m_object; }
    T* operator->() const noexcept { return m_object.get(); }

 private:
    Spare<T>& m_spare;
    std::unique_ptr<T> m_object;
};

}  // namespace orvantis
