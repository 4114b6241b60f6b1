#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// What became of a channel between two surveys of one band.
enum class Change { kNone, kNew, kGone, kMoreOften, kLessOften };

/// A channel as a report shows it. One that is gone stands as the earlier survey had it.
struct ReportedChannel {
  SurveyedChannel channel;
  Change change = Change::kNone;
  uint32_t old_hits = 0;  ///< in the earlier survey; 0 of 0 when it was not there
  uint32_t old_looks = 0;
};

/// The channels of a survey that is compared with none.
std::vector<ReportedChannel> withoutComparison(const std::vector<SurveyedChannel>& channels);

struct Comparison {
  std::vector<ReportedChannel> channels;
  /// The earlier survey is an earlier state of the same one; nothing is gone then.
  bool is_continued = false;
  size_t gone_outside_band = 0;  ///< counted by dropChangesOutsideBands, as is the next one
  size_t new_outside_old_band = 0;
};

/// `channels` in their order, then those of `old_channels` that are gone.
///
/// Two are the same channel when their centres are no further apart than the raster or half the
/// wider of their widths, and when the wider is no more than four times as wide as the other or
/// both are narrower than the raster. Where several fit, the nearest pair comes first, and no
/// channel is paired twice.
///
/// A channel is seen more or less often when the difference is more than chance would make of so
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

/// Only where both surveys looked can a channel be new or gone: takes out those that are gone but
/// lie outside the band of now, and leaves unmarked those that are new but lie outside the band of
/// the earlier survey. A survey that does not sweep has no band.
void dropChangesOutsideBands(Comparison& comparison, const std::optional<pelagrim::Settings>& now,
                             const std::optional<pelagrim::Settings>& before);

}  // namespace pelagrim_host
