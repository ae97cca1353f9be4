#include <memory>

#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void selectorsShutdownAlone(Trial& trial) {
    Host host;
    const std::unique_ptr<Plugin> plugin = loadForTrial(trial);
    const Importer importer(host, *plugin);
    (void)importer.shutdown();
    plugin->unload();
}

const Registered kSelectorsShutdownAlone({"selectors.shutdown-alone", 6,
                                          "imShutdown without imInit is harmless.",
                                          "The host sends it to whatever it has loaded when it ends.",
                                          selectorsShutdownAlone});

}  // namespace
}  // namespace simhost::tool::validate
