#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void sessionStandard(Trial& trial) {
    (void)watchedSessions(trial);
}

const Registered kSessionStandard({"session.standard", 1,
                                   "A standard session with every clip runs to its end.",
                                   "All that a host does every day is in it; other checks build on it.",
                                   sessionStandard});

}  // namespace
}  // namespace simhost::tool::validate
