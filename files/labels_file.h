#pragma once

#include <optional>
#include <string>
#include <vector>

#include "survey/band_label.h"

namespace pelagrim {

/// What a labels file held.
struct LabelsFile {
  std::vector<BandLabel> labels;  ///< in the order of their lines
  int unreadable_lines = 0;       ///< lines that begin with a digit and yet are no label
};

/// Reads survey-labels.txt in `dir`: lines of low edge in MHz, high edge in MHz and a name, "#" for
/// a comment. Where there is no such file it is created with a default band plan; a file that
/// exists is never written. Nothing when the file can be neither read nor created. No failure is
/// reported but std::bad_alloc.
std::optional<LabelsFile> loadLabels(const std::string& dir);

}  // namespace pelagrim
