#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsSupports8(Trial& trial) {
    Stage stage(trial);
    const std::int32_t result = stage.importer().getSupports8();
    if (result != host::malSupports8) {
        trial.fail({.call = "imGetSupports8", .seen = "result " + std::to_string(result)});
    }
}

const Registered kSelectorsSupports8({"selectors.supports8", 1,
                                      "imGetSupports8 is answered with malSupports8.",
                                      "By this answer the host knows that it may use the records of today.",
                                      selectorsSupports8});

}  // namespace
}  // namespace simhost::tool::validate
