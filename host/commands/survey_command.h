#pragma once

#include "host/commands/survey_options.h"

namespace pelagrim_host {

/// Does what the command line asks for, on standard output. Throws UsageError where the command
/// line has to say more, else an exception whose text is one line for the user.
void runCommand(const Options& options);

}  // namespace pelagrim_host
