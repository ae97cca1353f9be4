#include <memory>

#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsBeforeInit(Trial& trial) {
    Host host;
    const std::unique_ptr<Plugin> plugin = loadForTrial(trial);
    const Importer importer(host, *plugin);
    (void)importer.getSupports8();
    (void)importer.getIndFormat(0);
    (void)importer.getIndFormat(1);
    if (isStarted(importer.init().result)) {
        (void)importer.shutdown();
    } else {
        trial.fail({.call = "imInit behind imGetSupports8 and imGetIndFormat",
                    .seen = "it is refused, which it is not as the first call"});
    }
    plugin->unload();
}

const Registered kSelectorsBeforeInit(
    {"selectors.before-init", 7, "Questions about the plug-in itself are harmless before imInit.",
     "A host that keeps what plug-ins say of themselves skips imInit until a file is opened.",
     selectorsBeforeInit});

}  // namespace
}  // namespace simhost::tool::validate
