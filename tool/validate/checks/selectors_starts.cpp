#include <memory>

#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsStarts(Trial& trial) {
    Host host;
    const std::unique_ptr<Plugin> plugin = loadForTrial(trial);
    const Importer importer(host, *plugin);
    const std::int32_t result = importer.init().result;
    if (!isStarted(result)) {
        trial.fail({.call = "imInit", .seen = "result " + std::to_string(result)});
        return;
    }
    (void)importer.shutdown();
}

const Registered kSelectorsStarts({"selectors.starts", 1, "imInit is answered with imNoErr or imIsCacheable.",
                                   "The host drops a plug-in that answers anything else.", selectorsStarts});

}  // namespace
}  // namespace simhost::tool::validate
