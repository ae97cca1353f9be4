#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void memoryPixelsRefused(Trial& trial) {
    if (usualCalls(trial, Service::kGetPixels) + usualCalls(trial, Service::kGetRowBytes) == 0) {
        Trial::skip("the plug-in asks for the pixels of no frame");
    }
    for (const Service service : {Service::kGetPixels, Service::kGetRowBytes}) {
        if (usualCalls(trial, service) > 0) {
            playInTrouble(
                trial, defaultProfile(),
                [service](Host& host) {
                    host.addFault({.service = service, .detail = "", .nth = 1, .fromThenOn = true});
                },
                std::string("a session in which ") + serviceName(service) + " fails every time");
        }
    }
}

const Registered kMemoryPixelsRefused(
    {"memory.pixels-refused", 6, "A frame whose pixels or row bytes the host does not tell is disposed of.",
     "A frame that was created and not delivered is the importer's own to give back.", memoryPixelsRefused});

}  // namespace
}  // namespace simhost::tool::validate
