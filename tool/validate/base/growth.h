// What a call that is made again and again leaves behind. Main thread only.
#pragma once

#include <functional>
#include <string>

#include "simhost/host.h"
#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

/// Does the work `rounds` times, behind a tenth of that for what is made once, and fails the trial when the
/// memory or the handles of the process grow with it: by 256 bytes, or by an eighth of a handle, each time.
/// What breaks rules all the while makes the host's own list of that grow, and is the matter of those rules.
void checkGrowth(Trial& trial, const Host& host, const std::string& clip, const std::string& call, int rounds,
                 const std::function<void()>& work);

}  // namespace simhost::tool::validate
