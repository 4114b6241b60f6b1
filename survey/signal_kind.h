#pragma once

namespace pelagrim {

/// A guess at what a signal is, from its mean width alone: "NFM?", "carrier?", ... or "?" where the
/// width says nothing. Constant text without commas.
const char* guessKind(double width_hz);

}  // namespace pelagrim
