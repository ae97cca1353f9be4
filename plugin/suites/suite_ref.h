// One host suite, held by name and version and reached through an accessor that acquires it again if it was
// lost. Releases exactly what it acquired. Nobody keeps the raw table longer than one call.
#pragma once

#include <cstdint>

#include "diag/atomic.h"
#include "diag/mutex.h"
#include "host/std_parms.h"

namespace orvantis {

/// The host's basic suite out of the standard parameter record of any selector. Null when the host has none.
const host::SPBasicSuite* basicSuiteOf(const host::imStdParms* stdParms);

class SuiteRef {
 public:
    /// Holds nothing yet. `name` must outlive the object (suite names are constants); `basicSuite` is the
    /// host's.
    SuiteRef(const host::SPBasicSuite* basicSuite, const char* name, std::int32_t version) noexcept;
    SuiteRef(const SuiteRef&) = delete;
    SuiteRef& operator=(const SuiteRef&) = delete;
    /// Releases.
    ~SuiteRef();

    /// Asks the host for the suite and logs the answer; does nothing when it is held already. A refusal is no
    /// error yet.
    void acquire();
    /// Gives the suite back if it is held; otherwise does nothing. At its owner's end: no other thread uses
    /// it.
    void release();
    /// The suite's table, acquired once more if it is not held. Throws std::runtime_error "Could not acquire
    /// suite: '…". Any thread.
    const void* get();
    bool held() const noexcept { return m_suite.load(std::memory_order_acquire) != nullptr; }

 private:
    void acquireLocked();

    const host::SPBasicSuite* m_basicSuite;
    const char* m_name;
    std::int32_t m_version;
    Mutex m_mutex;  ///< held while the host is asked, so that two tasks cannot acquire twice
    Atomic<const void*> m_suite{nullptr};
};

/// A SuiteRef that knows the type of its table.
template <class Suite>
class TypedSuiteRef : public SuiteRef {
 public:
    using SuiteRef::SuiteRef;
    const Suite& get() { return *static_cast<const Suite*>(SuiteRef::get()); }
};

}  // namespace orvantis
