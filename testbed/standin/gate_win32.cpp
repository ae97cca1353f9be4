#include <windows.h>

#include <climits>
#include <stdexcept>

#include "standin/gate.h"
#include "standin/wide_text.h"

namespace orvantis::standin {
namespace {

HANDLE openSemaphore(const std::string& name, const char* kind) {
    const std::wstring fullName = wideFromUtf8("Local\\orvantis_standin_" + name + kind);
    HANDLE semaphore = CreateSemaphoreW(nullptr, 0, LONG_MAX, fullName.c_str());
    if (semaphore == nullptr) {
        throw std::runtime_error("could not open the gate '" + name + "'");
    }
    return semaphore;
}

bool waitFor(void* semaphore, std::chrono::milliseconds timeout) {
    return WaitForSingleObject(semaphore, static_cast<DWORD>(timeout.count())) == WAIT_OBJECT_0;
}

}  // namespace

Gate::Gate(const std::string& name) : m_arrivals(openSemaphore(name, ".arrivals")) {
    try {
        m_permits = openSemaphore(name, ".permits");
    } catch (...) {
        CloseHandle(m_arrivals);
        throw;
    }
}

Gate::~Gate() {
    CloseHandle(m_permits);
    CloseHandle(m_arrivals);
}

bool Gate::passThrough(std::chrono::milliseconds timeout) {
    ReleaseSemaphore(m_arrivals, 1, nullptr);
    return waitFor(m_permits, timeout);
}

bool Gate::waitForArrival(std::chrono::milliseconds timeout) {
    return waitFor(m_arrivals, timeout);
}

void Gate::release(unsigned count) {
    ReleaseSemaphore(m_permits, static_cast<LONG>(count), nullptr);
}

void Gate::remove(const std::string& /*name*/) {}

}  // namespace orvantis::standin
