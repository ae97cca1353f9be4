#include "host/result_codes.h"
#include "host/selectors.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsNullRecords(Trial& trial) {
    Stage stage(trial);
    for (const host::Selector& selector : host::kSelectors) {
        if (selector.code == host::imInit || selector.code == host::imShutdown) {
            continue;
        }
        const std::int32_t result = stage.importer().call(selector.code, nullptr, nullptr);
        const bool fetched = selector.code == host::imGetInfo8 || selector.code == host::imGetIndFormat ||
                             selector.code == host::imOpenFile8;
        if (fetched && result == host::imNoErr) {
            trial.fail({.call = selector.name, .seen = "success without a record"});
        }
    }
}

const Registered kSelectorsNullRecords(
    {"selectors.null-records", 8, "A null pointer in the place of a record is answered with a failure.",
     "A host in trouble passes one on, and its user loses a project when the importer looks through it.",
     selectorsNullRecords});

}  // namespace
}  // namespace simhost::tool::validate
