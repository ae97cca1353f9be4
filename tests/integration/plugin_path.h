// Where the plug-in under test and the codec library that it imports lie. UTF-8 paths.
#pragma once

#include <string>

/// The build's own plug-in, or the one that the environment variable ORVANTIS_PLUGIN names.
std::string pluginPath();
/// The folder of the stand-in codec library.
std::string codecFolder();
