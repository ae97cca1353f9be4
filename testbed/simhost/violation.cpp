#include "simhost/violation.h"

namespace simhost {

std::string Violation::text() const {
    std::string where = call;
    if (!record.empty() || !field.empty()) {
        where += (where.empty() ? "" : ", ") + record + (record.empty() || field.empty() ? "" : ".") + field;
    }
    return std::string(ruleText(rule).id) + ": " + where + (where.empty() ? "" : ": ") + seen;
}

std::vector<std::string> texts(std::span<const Violation> violations) {
    std::vector<std::string> out;
    out.reserve(violations.size());
    for (const Violation& violation : violations) {
        out.push_back(violation.text());
    }
    return out;
}

}  // namespace simhost
