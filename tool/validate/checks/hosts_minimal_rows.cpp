#include "tool/validate/base/check.h"
#include "tool/validate/base/compare_profiles.h"

namespace simhost::tool::validate {
namespace {

void hostsMinimalRows(Trial& trial) {
    compareWithProfile(trial, "minimal-rows", "into rows without padding");
}

const Registered kHostsMinimalRows(
    {"hosts.minimal-rows", 3, "Rows without padding show the same pictures.",
     "Whether rows are padded is the host's affair, and differs with the size.", hostsMinimalRows});

}  // namespace
}  // namespace simhost::tool::validate
