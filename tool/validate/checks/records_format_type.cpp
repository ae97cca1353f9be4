#include <set>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void recordsFormatType(Trial& trial) {
    Stage stage(trial);
    std::set<std::int32_t> seen;
    std::uint32_t index = 0;
    for (const host::imIndFormatRec& format : announcedFormats(stage.importer())) {
        const std::int32_t type = format.filetype;
        const std::string call = "imGetIndFormat, index " + std::to_string(index++);
        if (type == 0 || !seen.insert(type).second) {
            trial.fail({.call = call,
                        .field = "imIndFormatRec.filetype",
                        .seen = type == 0 ? "0" : "the type of another format"});
        }
    }
}

const Registered kRecordsFormatType(
    {"records.format-type", 2, "Every format that is announced has a file type of its own, which is not 0.",
     "By the type the host remembers which importer a clip belongs to.", recordsFormatType});

}  // namespace
}  // namespace simhost::tool::validate
