// Where the plug-in under test lies: beside the test program, as the build puts everything that runs into one folder.
#pragma once

#include <string>

/// UTF-8. The build's own plug-in, or the one that ORVANTIS_PLUGIN names.
std::string pluginPath();
