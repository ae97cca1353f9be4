#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void suitesCallsFail(Trial& trial) {
    for (std::size_t i = 0; i < kServiceCount; ++i) {
        const auto service = static_cast<Service>(i);
        const std::uint64_t calls = usualCalls(trial, service);
        // Without the basic suite there is no host, and a release or disposal has happened whatever it
        // answers.
        if (calls == 0 || service == Service::kGetSPBasicSuite || service == Service::kAcquireSuite ||
            service == Service::kDisposePtr || service == Service::kSetPtrSize ||
            service == Service::kGetPtrSize) {
            continue;
        }
        const std::uint64_t nth = 1 + trial.draw(calls);
        playInTrouble(
            trial, defaultProfile(),
            [&](Host& host) { host.addFault({.service = service, .detail = "", .nth = nth}); },
            std::string("a session in which call ") + std::to_string(nth) + " of " + serviceName(service) +
                " fails");
    }
}

const Registered kSuitesCallsFail({"suites.calls-fail", 7,
                                   "A function of a suite that fails, at whatever call, breaks nothing else.",
                                   "Every function of the host has a result, and means it.",
                                   suitesCallsFail});

}  // namespace
}  // namespace simhost::tool::validate
