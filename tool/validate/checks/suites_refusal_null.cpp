#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void suitesRefusalNull(Trial& trial) {
    HostProfile profile = defaultProfile();
    profile.refusalWritesNull = true;
    for (const HostSuite& suite : hostSuites()) {
        profile.refusedSuites.emplace_back(suite.name);
    }
    playInTrouble(
        trial, profile, [](Host&) {}, "a session in which every suite is refused with null");
}

const Registered kSuitesRefusalNull({"suites.refusal-null", 5,
                                     "A refused suite whose variable the host sets to null is not used.",
                                     "Some hosts do, others leave the variable alone.", suitesRefusalNull});

}  // namespace
}  // namespace simhost::tool::validate
