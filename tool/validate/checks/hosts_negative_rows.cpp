#include "tool/validate/base/check.h"
#include "tool/validate/base/compare_profiles.h"

namespace simhost::tool::validate {
namespace {

void hostsNegativeRows(Trial& trial) {
    compareWithProfile(trial, "negative-rows", "into rows with negative row bytes");
}

const Registered kHostsNegativeRows(
    {"hosts.negative-rows", 4,
     "Rows that are stored from the highest address downwards show the same pictures.",
     "The host stores pictures either way, and says so by the sign of the row bytes.", hostsNegativeRows});

}  // namespace
}  // namespace simhost::tool::validate
