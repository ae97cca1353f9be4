// A static object whose destructor never runs: for state that worker threads or other static objects may
// still use while the module is being unloaded. It lies in the module's own memory, so nothing is left on the
// heap.
#pragma once

#include <cstddef>
#include <new>

namespace orvantis {

template <class T>
class NeverDestroyed {
 public:
    // cppcheck-suppress noDestructor
    NeverDestroyed() { m_object = new (m_storage) T; }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() noexcept { return *m_object; }

 private:
    alignas(T) std::byte m_storage[sizeof(T)];
    T* m_object;
};

}  // namespace orvantis
