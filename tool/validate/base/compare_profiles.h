// The same clips under two kinds of hosts. Main thread only.
#pragma once

#include <string>

#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

/// Fails the trial for every frame and sound that is not the same under the profile of that name as under the
/// default one. `what` says in reports how frames are asked for there.
void compareWithProfile(Trial& trial, const std::string& profile, const std::string& what);

}  // namespace simhost::tool::validate
