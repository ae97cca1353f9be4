#include <set>
#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void memoryFramesRefused(Trial& trial) {
    const std::uint64_t calls = usualCalls(trial, Service::kCreatePPix);
    if (calls == 0) {
        Trial::skip("the plug-in makes no frame");
    }
    std::set<std::uint64_t> chosen = {1};
    for (int i = 0; i < 4; ++i) {
        chosen.insert(1 + trial.draw(calls));
    }
    for (const std::uint64_t nth : chosen) {
        playInTrouble(
            trial, defaultProfile(),
            [nth](Host& host) {
                host.addFault({.service = Service::kCreatePPix,
                               .detail = "",
                               .nth = nth,
                               .result = host::kSuiteOutOfMemory});
            },
            "a session in which call " + std::to_string(nth) + " of CreatePPix fails");
    }
}

const Registered kMemoryFramesRefused(
    {"memory.frames-refused", 5,
     "A frame that the host does not give, at whatever call, is answered with a failure, and the next one is "
     "delivered.",
     "The host refuses frames when its memory is full, and asks again later.", memoryFramesRefused});

}  // namespace
}  // namespace simhost::tool::validate
