#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void memoryBlocksRefused(Trial& trial) {
    if (usualCalls(trial, Service::kNewPtr) + usualCalls(trial, Service::kNewPtrClear) == 0) {
        Trial::skip("the plug-in takes no memory of the host");
    }
    for (const Service service : {Service::kNewPtr, Service::kNewPtrClear}) {
        playInTrouble(
            trial, defaultProfile(),
            [service](Host& host) {
                host.addFault({.service = service,
                               .detail = "",
                               .nth = 1,
                               .result = host::kSuiteOutOfMemory,
                               .fromThenOn = true});
            },
            std::string("a session in which ") + serviceName(service) + " answers null");
    }
}

const Registered kMemoryBlocksRefused({"memory.blocks-refused", 5,
                                       "A block that the host does not give is answered with a failure.",
                                       "The host runs out of memory in the projects that matter.",
                                       memoryBlocksRefused});

}  // namespace
}  // namespace simhost::tool::validate
