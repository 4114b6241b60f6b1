#include "survey/band_label.h"

#include <algorithm>

namespace pelagrim {

const BandLabel* lookupLabel(const std::vector<BandLabel>& labels, double hz) {
  const auto match = std::find_if(labels.begin(), labels.end(), [hz](const BandLabel& label) {
    if (label.low_hz == label.high_hz) return hz == label.low_hz;
    return label.low_hz <= hz && hz < label.high_hz;
  });
  return match == labels.end() ? nullptr : &*match;
}

}  // namespace pelagrim
