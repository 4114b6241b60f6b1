#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/session/survey_view.h"

namespace pelagrim_host {

/// A line that the user was told during the run.
struct SaidLine {
  std::string text;
  bool is_warning = false;
};

/// Everything that the live view shows at one moment.
struct LiveState {
  SourceFacts source{};
  std::string in_force{};  ///< the settings, in one line
  SurveySnapshot run{};
  std::optional<double> dwell_length_seconds{};  ///< if it is known
  std::vector<double> slice_centres_hz{};        ///< of the band, if it is swept and they are known
  double wall_seconds = 0.0;                     ///< since the start
  std::vector<SaidLine> said{};                  ///< oldest first
  bool offers_keys = false;
};

}  // namespace pelagrim_host
