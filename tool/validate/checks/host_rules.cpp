// A check for each rule that the simulated host notices by itself, under the rule's own id.
#include "simhost/rules.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void checkHostRule(Trial& trial, Rule rule) {
    for (const SeenViolation& seen : watchedSessions(trial)) {
        const Violation& violation = seen.violation;
        if (violation.rule != rule) {
            continue;
        }
        const std::string call = violation.call.empty() ? "the whole session" : violation.call;
        const std::string where = seen.profile == "default" ? "" : ", host profile " + seen.profile;
        std::string field = violation.record;
        field += (field.empty() || violation.field.empty() ? "" : ".") + violation.field;
        trial.fail({.call = call + where, .field = field, .clip = seen.clip, .seen = violation.seen});
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
