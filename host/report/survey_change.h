#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// What happened to a channel between two surveys of one band.
enum class Change { kNone, kNew, kGone, kMoreOften, kLessOften };

/// A channel as a report shows it. A gone one is shown as in the earlier survey.
struct ReportedChannel {
  SurveyedChannel channel;
  Change change = Change::kNone;
  uint32_t old_hits = 0;  ///< in the earlier survey; 0 of 0 if it was not there
  uint32_t old_looks = 0;
};

/// The channels of a survey without a comparison.
std::vector<ReportedChannel> withoutComparison(const std::vector<SurveyedChannel>& channels);

struct Comparison {
  std::vector<ReportedChannel> channels;
  /// The earlier survey is an earlier state of the same one; then nothing is gone.
  bool is_continued = false;
  size_t gone_outside_band = 0;  ///< counted by dropChangesOutsideBands, as is the next one
  size_t new_outside_old_band = 0;
};

/// `channels` in their order, then the gone ones of `old_channels`.
///
/// Two are the same channel if their centres are no further apart than the raster or half the wider
/// of their widths, and if the wider is at most four times as wide as the other or both are
/// narrower than the raster. If several fit, the nearest pair comes first, and no channel is paired
/// twice.
///
/// A channel is seen more or less often if the difference is more than chance would give with that
/// many looks: a two-proportion z-test of activities at two standard errors (Fleiss, Levin, Paik:
/// Statistical Methods for Rates and Proportions).
///
/// The survey is the old one carried on where `may_be_continued` (no other source), every old
/// channel is there with the same first moment and with counts that have only grown, some of them,
/// and what is new is later than the old one's last moment. Its channels are paired by that,
/// whatever their widths, and the looks since then are compared with the old ones.
Comparison compareSurveys(const std::vector<SurveyedChannel>& channels,
                          const std::vector<SurveyedChannel>& old_channels, double raster_hz,
                          bool may_be_continued = true);

/// A channel can be new or gone only where both surveys looked. Removes gone channels outside the
/// present band, and unmarks new channels outside the band of the earlier survey. A survey that
/// does not sweep has no band.
void dropChangesOutsideBands(Comparison& comparison, const std::optional<pelagrim::Settings>& now,
                             const std::optional<pelagrim::Settings>& before);

}  // namespace pelagrim_host
