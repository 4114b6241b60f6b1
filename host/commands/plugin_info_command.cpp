#include <cstdio>

#include "host/commands/commands.h"
#include "host/commands/load_plugin.h"
#include "host/process/text_output.h"

namespace pelagrim_host {

void runPluginInfo(const Options& options) {
  TextOutput(stdout).write(loadPlugin(options).describe());
}

}  // namespace pelagrim_host
