// The native twin of standin/gate_win32.cpp.

#include <fcntl.h>
#include <semaphore.h>
#include <time.h>

#include <cerrno>
#include <stdexcept>

#include "standin/gate.h"

namespace orvantis::standin {
namespace {

std::string semaphoreName(const std::string& name, const char* kind) {
    return "/orvantis_standin_" + name + kind;
}

void* openSemaphore(const std::string& name, const char* kind) {
    sem_t* semaphore = sem_open(semaphoreName(name, kind).c_str(), O_CREAT, 0600, 0U);
    if (semaphore == SEM_FAILED) {
        throw std::runtime_error("could not open the gate '" + name + "'");
    }
    return semaphore;
}

bool waitFor(void* semaphore, std::chrono::milliseconds timeout) {
    timespec deadline{};
    clock_gettime(CLOCK_REALTIME, &deadline);
    const std::chrono::nanoseconds end =
        std::chrono::seconds(deadline.tv_sec) + std::chrono::nanoseconds(deadline.tv_nsec) + timeout;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end);
    deadline.tv_sec = static_cast<time_t>(seconds.count());
    deadline.tv_nsec = static_cast<long>((end - seconds).count());
    int result = 0;
    do {
        result = sem_timedwait(static_cast<sem_t*>(semaphore), &deadline);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

}  // namespace

Gate::Gate(const std::string& name) : m_arrivals(openSemaphore(name, ".arrivals")) {
    try {
        m_permits = openSemaphore(name, ".permits");
    } catch (...) {
        sem_close(static_cast<sem_t*>(m_arrivals));
        throw;
    }
}

Gate::~Gate() {
    sem_close(static_cast<sem_t*>(m_permits));
    sem_close(static_cast<sem_t*>(m_arrivals));
}

bool Gate::passThrough(std::chrono::milliseconds timeout) {
    sem_post(static_cast<sem_t*>(m_arrivals));
    return waitFor(m_permits, timeout);
}

bool Gate::waitForArrival(std::chrono::milliseconds timeout) {
    return waitFor(m_arrivals, timeout);
}

void Gate::release(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        sem_post(static_cast<sem_t*>(m_permits));
    }
}

void Gate::remove(const std::string& name) {
    sem_unlink(semaphoreName(name, ".arrivals").c_str());
    sem_unlink(semaphoreName(name, ".permits").c_str());
}

}  // namespace orvantis::standin
