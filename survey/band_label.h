#pragma once

#include <string>
#include <vector>

namespace pelagrim {

/// One named range of the user's band plan.
struct BandLabel {
  double low_hz;
  double high_hz;    ///< equal to low_hz: the label names that single frequency
  std::string name;  ///< never empty, no white space around it
};

/// The first label that covers `hz`, or null. A range includes its lower edge but not its upper
/// one.
const BandLabel* lookupLabel(const std::vector<BandLabel>& labels, double hz);

}  // namespace pelagrim
