#pragma once

#include <optional>
#include <string_view>

#include "survey/band_label.h"

namespace pelagrim {

/// Reads one line of survey-labels.txt: low edge in MHz, high edge in MHz, name; "#" starts a
/// comment. Returns nothing if the line is not a label. The line ends at its first NUL byte. An
/// edge may be NaN; such a label matches nothing. The thread must be in the C locale (see CLocale)
/// for a decimal point to be read.
std::optional<BandLabel> parseLabelLine(std::string_view line);

/// Whether a line that is not a label was meant as one: it begins with a digit, after any blanks.
bool looksLikeLabel(std::string_view line);

}  // namespace pelagrim
