#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void memoryFramesNone(Trial& trial) {
    if (usualCalls(trial, Service::kCreatePPix) == 0) {
        Trial::skip("the plug-in makes no frame");
    }
    playInTrouble(
        trial, defaultProfile(),
        [](Host& host) {
            host.addFault({.service = Service::kCreatePPix,
                           .detail = "",
                           .nth = 1,
                           .result = host::kSuiteOutOfMemory,
                           .fromThenOn = true});
        },
        "a session in which CreatePPix fails every time");
}

const Registered kMemoryFramesNone({"memory.frames-none", 6,
                                    "A host that gives no frame at all is answered with failures.",
                                    "So it is while the memory stays full.", memoryFramesNone});

}  // namespace
}  // namespace simhost::tool::validate
