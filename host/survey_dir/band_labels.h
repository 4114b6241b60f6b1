#pragma once

#include <string_view>
#include <vector>

#include "survey/band_label.h"

namespace pelagrim_host {

/// Reads the text of a survey-labels.txt, in the order of its lines. Lines that are not labels are
/// left out, and so are labels with an edge that is not a number: the plug-in keeps those, but they
/// match nothing. A name may hold any bytes but a line feed and a NUL.
std::vector<pelagrim::BandLabel> parseLabels(std::string_view text);

}  // namespace pelagrim_host
