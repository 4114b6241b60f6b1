#pragma once

#include <optional>
#include <string_view>

#include "survey/band_label.h"

namespace pelagrim {

/// Reads one line of survey-labels.txt: low edge in MHz, high edge in MHz, name; "#" begins a
/// comment. Nothing when the line is no label. The line ends at a NUL byte, if it holds one. An
/// edge may be not a number; such a label matches nothing. Numbers are read with a decimal point
/// only while a CLocale lives or the thread has the C locale anyway.
std::optional<BandLabel> parseLabelLine(std::string_view line);

/// Whether a line that is no label was meant as one: it begins with a digit, blanks aside.
bool looksLikeLabel(std::string_view line);

}  // namespace pelagrim
