#include "tool/validate/base/check.h"
#include "tool/validate/base/compare_profiles.h"

namespace simhost::tool::validate {
namespace {

void hostsTickRate(Trial& trial) {
    compareWithProfile(trial, "ticks-90000", "under a host of 90000 ticks a second");
}

const Registered kHostsTickRate({"hosts.tick-rate", 4,
                                 "A clock of another tick rate shows the same pictures.",
                                 "The host tells its rate; it is no constant of the interface.",
                                 hostsTickRate});

}  // namespace
}  // namespace simhost::tool::validate
