// Standard sessions of the host with every clip, watched: what all checks of the host's own rules look at.
// Made once in a process. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/records.h"
#include "simhost/service.h"
#include "simhost/violation.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {

struct SeenViolation {
    Violation violation;
    std::string clip;     ///< empty: it is about none
    std::string profile;  ///< kind of host
};

/// Everything that a host does with each clip, under hosts of different generations and row layouts, from
/// imInit to after imShutdown. Throws Skipped.
const std::vector<SeenViolation>& watchedSessions(Trial& trial);

/// What is to tell of a rule in them: what is broken under the host of today is not told of other hosts
/// again. Pure.
std::vector<Finding> findingsOf(const std::vector<SeenViolation>& seen, Rule rule);

/// The same once more, under a host that is in trouble from `prepare` on, which is called before imInit. A
/// plug-in may answer with failures, but breaks no rule that it keeps when nothing goes wrong. `call` says in
/// reports what the trouble is.
void playInTrouble(Trial& trial, const HostProfile& profile, const std::function<void(Host&)>& prepare,
                   const std::string& call);

/// How often a plug-in calls a service of the host in all of this while nothing goes wrong.
std::uint64_t usualCalls(Trial& trial, Service service);

/// The file formats that the plug-in announces.
std::vector<host::imIndFormatRec> announcedFormats(const Importer& importer);

}  // namespace simhost::tool::validate
