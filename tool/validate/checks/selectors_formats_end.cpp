#include <cstdint>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/session_watch.h"

namespace simhost::tool::validate {
namespace {

void selectorsFormatsEnd(Trial& trial) {
    Stage stage(trial);
    const auto announced = static_cast<std::uint32_t>(announcedFormats(stage.importer()).size());
    if (announced == 0) {
        trial.fail({.call = "imGetIndFormat, index 0", .seen = "no format"});
    }
    for (const std::uint32_t index : {announced, announced + 1, 1000u, 0x80000000u, 0xFFFFFFFFu}) {
        const std::int32_t result = stage.importer().getIndFormat(index).result;
        if (result != host::imBadFormatIndex) {
            trial.fail({.call = "imGetIndFormat, index " + std::to_string(index),
                        .seen = "result " + std::to_string(result)});
        }
    }
}

const Registered kSelectorsFormatsEnd(
    {"selectors.formats-end", 1,
     "imGetIndFormat names at least one format and answers imBadFormatIndex behind the last one.",
     "The host counts up until it hears that, and offers the files of what it heard before.",
     selectorsFormatsEnd});

}  // namespace
}  // namespace simhost::tool::validate
