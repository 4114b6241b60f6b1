#pragma once

#include <string>

#include "survey/settings.h"

namespace pelagrim {

/// Reads survey.cfg in `dir` into `settings`: "key = value" lines, "#" for a comment. A key that is
/// not in the file leaves its setting alone; lines that make no sense are skipped. A missing file
/// is created with the defaults, explained; a file that cannot be opened is left as it is. The only
/// failure reported is std::bad_alloc.
void loadSettings(const std::string& dir, Settings& settings);

}  // namespace pelagrim
