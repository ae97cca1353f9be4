// A check for each rule that the simulated host notices by itself, under the rule's own id.
#include "simhost/rules.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void checkHostRule(Trial& trial, Rule rule) {
    for (const Finding& finding : findingsOf(watchedSessions(trial), rule)) {
        trial.fail(finding);
    }
    if (!trial.hasFindings() && std::string_view(ruleText(rule).id).starts_with("frames.") &&
        usualCalls(trial, Service::kCreatePPix) == 0) {
        Trial::skip("the plug-in makes no frame");
    }
}

const bool kHostRules = [] {
    for (const RuleText& row : rules()) {
        const Registered check({row.id, row.level, row.sentence, row.reason,
                                [rule = row.rule](Trial& trial) { checkHostRule(trial, rule); }});
    }
    return true;
}();

}  // namespace
}  // namespace simhost::tool::validate
