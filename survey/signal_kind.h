#pragma once

#include <string_view>
#include <vector>

namespace pelagrim {

/// A guess at what a signal is, from its mean width alone: "NFM?", "carrier?", ... or "?" if the
/// width says nothing. Constant text without commas.
const char* guessKind(double width_hz);

/// Every guess, from narrow to wide, with "?" last.
std::vector<std::string_view> signalKinds();

}  // namespace pelagrim
