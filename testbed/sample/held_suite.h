// A suite of the host, held as long as the object lives. Acquired and released once; the table may be used
// from any thread meanwhile.
#pragma once

#include <cstdint>

#include "host/std_parms.h"

namespace sample {

/// The way from the standard parameters to the suites; null where the host leads nowhere. Valid as long as
/// the importer is loaded, which the standard parameters themselves are not.
inline const host::SPBasicSuite* basicSuite(const host::imStdParms* parms) {
    const host::piSuites* const suites = parms != nullptr ? parms->piSuites : nullptr;
    const host::UtilityFunctions* const utilities = suites != nullptr ? suites->utilFuncs : nullptr;
    return utilities != nullptr ? utilities->getSPBasicSuite() : nullptr;
}

template <class Table>
class HeldSuite {
 public:
    HeldSuite(const host::SPBasicSuite* basic, const char* name, std::int32_t version)
        : m_basic(basic), m_name(name), m_version(version) {
        const void* table = nullptr;  // a host that refuses may leave it alone
        if (basic != nullptr && basic->AcquireSuite(name, version, &table) == 0) {
            m_table = static_cast<const Table*>(table);
        }
    }
    HeldSuite(const HeldSuite&) = delete;
    HeldSuite& operator=(const HeldSuite&) = delete;
    ~HeldSuite() {
        if (m_table != nullptr) {
            (void)m_basic->ReleaseSuite(m_name, m_version);
        }
    }

    explicit operator bool() const noexcept { return m_table != nullptr; }
    const Table* operator->() const noexcept { return m_table; }

 private:
    const host::SPBasicSuite* m_basic;
    const char* m_name;
    std::int32_t m_version;
    const Table* m_table = nullptr;
};

}  // namespace sample
