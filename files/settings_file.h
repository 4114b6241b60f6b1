#pragma once

#include <string>

#include "survey/settings.h"

namespace pelagrim {

/// Reads survey.cfg in `dir` into `settings`: "key = value" lines, "#" for a comment. Keys that the
/// file does not hold leave their setting alone; lines that make no sense are skipped. Where there
/// is no such file it is created with the defaults, explained; a file that cannot be opened is left
/// as it is. No failure is reported but std::bad_alloc.
void loadSettings(const std::string& dir, Settings& settings);

}  // namespace pelagrim
