// Acquiring and releasing one host suite. Called on host threads and, for a suite that was lost, on decode
// tasks.
#include "suites/suite_ref.h"

#include <stdexcept>
#include <string>

#include "diag/log.h"
#include "suites/suite_result.h"

namespace orvantis {

const host::SPBasicSuite* basicSuiteOf(const host::imStdParms* stdParms) {
    const host::piSuites* const suites = stdParms != nullptr ? stdParms->piSuites : nullptr;
    const host::UtilityFunctions* const utilities = suites != nullptr ? suites->utilFuncs : nullptr;
    if (utilities == nullptr || utilities->getSPBasicSuite == nullptr) {
        return nullptr;
    }
    return utilities->getSPBasicSuite();
}

SuiteRef::SuiteRef(const host::SPBasicSuite* basicSuite, const char* name, std::int32_t version) noexcept
    : m_basicSuite(basicSuite), m_name(name), m_version(version) {}

SuiteRef::~SuiteRef() {
    release();
}

void SuiteRef::acquire() {
    const std::lock_guard lock(m_mutex);
    // The host counts every acquisition, and only one is given back.
    if (!held()) {
        acquireLocked();
    }
}

void SuiteRef::acquireLocked() {
    // A host that refuses may leave the variable unwritten, so the pointer decides, not the result.
    const void* suite = nullptr;
    SuiteResult result = SuiteResult::kFailed;
    if (m_basicSuite != nullptr) {
        result = SuiteResult{m_basicSuite->AcquireSuite(m_name, m_version, &suite)};
    }
    m_suite.store(suite, std::memory_order_release);
    logMessage("Acquiring suite: r: %d, v: %d, n: '%s', ptr: %p", numberOf(result), m_version, m_name, suite);
}

void SuiteRef::release() {
    if (!held()) {
        return;
    }
    const SuiteResult result{m_basicSuite->ReleaseSuite(m_name, m_version)};
    m_suite.store(nullptr, std::memory_order_release);
    logMessage("Releasing suite: r: %d, v: %d, n: '%s'", numberOf(result), m_version, m_name);
}

const void* SuiteRef::get() {
    if (const void* const suite = m_suite.load(std::memory_order_acquire)) {
        return suite;
    }
    const std::lock_guard lock(m_mutex);
    if (!held()) {
        acquireLocked();
    }
    if (!held()) {
        throw std::runtime_error("Could not acquire suite: '" + std::string(m_name) +
                                 "', ver: " + std::to_string(m_version));
    }
    return m_suite.load(std::memory_order_acquire);
}

}  // namespace orvantis
