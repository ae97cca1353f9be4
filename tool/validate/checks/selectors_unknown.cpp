#include <algorithm>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsUnknown(Trial& trial) {
    Stage stage(trial);
    std::vector<std::int32_t> selectors = {-1, 1000, 0x7FFFFFFF};
    for (int i = 0; i < 20; ++i) {
        selectors.push_back(static_cast<std::int32_t>(200 + trial.draw(1u << 30)));
    }
    for (const std::int32_t selector : selectors) {
        std::vector<std::uint8_t> record(8192, 0);
        const std::int32_t result = stage.importer().call(selector, record.data(), record.data() + 4096);
        if (result != host::imUnsupported) {
            trial.fail(
                {.call = "selector " + std::to_string(selector), .seen = "result " + std::to_string(result)});
        }
        if (std::any_of(record.begin(), record.end(), [](std::uint8_t byte) { return byte != 0; })) {
            trial.fail(
                {.call = "selector " + std::to_string(selector), .seen = "it wrote to its parameters"});
        }
    }
}

const Registered kSelectorsUnknown(
    {"selectors.unknown", 2, "A selector that the importer does not know is answered with imUnsupported.",
     "Every generation of the host has new ones, and goes another way when it is told so.",
     selectorsUnknown});

}  // namespace
}  // namespace simhost::tool::validate
