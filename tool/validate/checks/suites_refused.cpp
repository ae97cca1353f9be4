#include <string>

#include "simhost/host_tables.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void suitesRefused(Trial& trial) {
    for (const HostSuite& suite : hostSuites()) {
        HostProfile profile = defaultProfile();
        profile.refusedSuites = {suite.name};
        playInTrouble(
            trial, profile, [](Host&) {}, std::string("a session without the \"") + suite.name + "\"");
    }
}

const Registered kSuitesRefused({"suites.refused", 5,
                                 "A suite that the host does not have is done without, or the plug-in "
                                 "refuses what needs it; nothing else breaks.",
                                 "Hosts differ in the suites that they have, by version and by product.",
                                 suitesRefused});

}  // namespace
}  // namespace simhost::tool::validate
