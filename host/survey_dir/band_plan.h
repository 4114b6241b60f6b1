#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pelagrim_host {

/// A range of the band plan; a single frequency where both edges are equal. The name is as it
/// stands in the file and may hold any byte but a line feed.
struct BandRange {
  double low_hz = 0.0;
  double high_hz = 0.0;
  std::string name;
};

/// Reads the text of a survey-labels.txt: "<low MHz> <high MHz> <name>", "#" begins a comment.
/// Everything else is left out.
std::vector<BandRange> parseBandPlan(std::string_view text);

/// The first range of `band_plan` that holds `hz`: its lower edge belongs to it, its upper does
/// not; a single frequency holds only itself. Null when there is none.
const BandRange* findBandRange(const std::vector<BandRange>& band_plan, double hz);

}  // namespace pelagrim_host
