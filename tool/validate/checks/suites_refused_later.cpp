#include <set>
#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void suitesRefusedLater(Trial& trial) {
    const std::uint64_t calls = usualCalls(trial, Service::kAcquireSuite);
    if (calls == 0) {
        Trial::skip("the plug-in acquires no suite");
    }
    std::set<std::uint64_t> chosen = {1, calls};
    for (int i = 0; i < 6; ++i) {
        chosen.insert(1 + trial.draw(calls));
    }
    for (const std::uint64_t nth : chosen) {
        playInTrouble(
            trial, defaultProfile(),
            [nth](Host& host) {
                host.addFault({.service = Service::kAcquireSuite, .detail = "", .nth = nth});
            },
            "a session in which call " + std::to_string(nth) + " of AcquireSuite fails");
    }
}

const Registered kSuitesRefusedLater(
    {"suites.refused-later", 6, "A suite that is refused once, at whatever call, breaks nothing else.",
     "The host refuses when it runs out of memory, which may be at any time.", suitesRefusedLater});

}  // namespace
}  // namespace simhost::tool::validate
