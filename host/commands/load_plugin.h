#pragma once

#include <filesystem>

#include "host/commands/survey_options.h"
#include "host/session/plugin_library.h"

namespace pelagrim_host {

/// Loads the plug-in that the command line names, else the one in its usual place. Throws
/// PluginError.
inline PluginLibrary loadPlugin(const Options& options) {
  return PluginLibrary(options.plugin.empty() ? findDefaultPlugin()
                                              : std::filesystem::absolute(options.plugin));
}

}  // namespace pelagrim_host
