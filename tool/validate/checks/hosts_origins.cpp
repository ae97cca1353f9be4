#include "tool/validate/base/check.h"
#include "tool/validate/base/compare_profiles.h"

namespace simhost::tool::validate {
namespace {

void hostsOrigins(Trial& trial) {
    compareWithProfile(trial, "opposite-origins", "under a host that answers the other origin");
}

const Registered kHostsOrigins(
    {"hosts.origins", 5,
     "A host that says the other origin of a pixel format is shown the same pictures, not upside down.",
     "The host's answer is what counts, not what it was in another version.", hostsOrigins});

}  // namespace
}  // namespace simhost::tool::validate
