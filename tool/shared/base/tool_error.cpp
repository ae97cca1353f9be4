#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

std::string ToolError::kind() const {
    if (!m_kind.empty()) {
        return m_kind;
    }
    switch (m_code) {
        case kUsage:
            return "usage";
        case kNoPlugin:
            return "no-plugin";
        case kNoOutput:
            return "no-output";
        case kBrokenRule:
            return "broken-rule";
        case kInterrupted:
            return "interrupted";
        case kSuccess:
        case kFailed:
            break;
    }
    return "failed";
}

}  // namespace simhost::tool
