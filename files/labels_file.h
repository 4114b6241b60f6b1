#pragma once

#include <optional>
#include <string>
#include <vector>

#include "survey/band_label.h"

namespace pelagrim {

/// What a labels file held.
struct LabelsFile {
  std::vector<BandLabel> labels;  ///< in the order of their lines
  int unreadable_lines = 0;       ///< lines that begin with a digit but are not labels
};

/// Reads survey-labels.txt in `dir`: lines of low edge in MHz, high edge in MHz and a name, "#" for
/// a comment. A missing file is created with a default band plan; a file that exists is never
/// written. Returns nothing if the file can be neither read nor created. The only failure reported
/// is std::bad_alloc.
std::optional<LabelsFile> loadLabels(const std::string& dir);

}  // namespace pelagrim
