#include "tests/integration/plugin_path.h"

#include <cstdlib>

std::string pluginPath() {
    if (const char* path = std::getenv("ORVANTIS_PLUGIN")) {
        return path;
    }
    return ORVANTIS_BUILT_PLUGIN;
}

std::string codecFolder() {
    return ORVANTIS_CODEC_FOLDER;
}
