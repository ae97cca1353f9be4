#include <cstring>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void selectorsFormatsSame(Trial& trial) {
    Stage stage(trial);
    const auto first = announcedFormats(stage.importer());
    const auto again = announcedFormats(stage.importer());
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (i >= again.size() || std::memcmp(&first[i], &again[i], sizeof first[i]) != 0) {
            trial.fail({.call = "imGetIndFormat, index " + std::to_string(i) + ", twice",
                        .field = "imIndFormatRec",
                        .seen = "another answer"});
        }
    }
}

const Registered kSelectorsFormatsSame(
    {"selectors.formats-same", 2, "imGetIndFormat answers the same index alike each time.",
     "The host asks again for every plug-in of the list, and takes what changes for another format.",
     selectorsFormatsSame});

}  // namespace
}  // namespace simhost::tool::validate
