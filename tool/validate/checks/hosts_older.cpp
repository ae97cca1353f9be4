#include "tool/validate/base/check.h"
#include "tool/validate/base/compare_profiles.h"

namespace simhost::tool::validate {
namespace {

void hostsOlder(Trial& trial) {
    compareWithProfile(trial, "older", "under a host of interface version 18");
}

const Registered kHostsOlder(
    {"hosts.older", 3,
     "A host of the older generation, with shorter records, is shown the same pictures and sounds.",
     "Users stay with the version that they know for years.", hostsOlder});

}  // namespace
}  // namespace simhost::tool::validate
