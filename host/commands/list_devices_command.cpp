#include <cstdio>

#include "host/commands/commands.h"
#include "host/process/text_output.h"
#include "host/sources/soapy_receiver.h"

namespace pelagrim_host {

void runListDevices(const Options&) {
  TextOutput(stdout).write(listReceivers());
}

}  // namespace pelagrim_host
