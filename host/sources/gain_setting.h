#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pelagrim_host {

/// What --gain asks of a receiver: its own control ("auto"), one gain over all its stages ("32.8"),
/// or a gain for some stages by their names ("LNA=20,IF=8").
struct GainSetting {
  bool automatic = false;
  std::optional<double> overall_db;
  std::vector<std::pair<std::string, double>> stages_db;
};

/// Reads the text of --gain; nothing if it is none of the three.
std::optional<GainSetting> parseGain(std::string_view text);

}  // namespace pelagrim_host
