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
  /// The earlier survey is an earlier state of the same one, at least in a part of its channels.
  bool is_continued = false;
  size_t unlooked_for_now = 0;  ///< see forgetUnlookedFor
  size_t unlooked_for_before = 0;
};

/// `channels` in their order, then those of `old_channels` that are gone. Two are the same channel
/// when their centres are no further apart than half the wider of their widths, or than the raster,
/// and neither is more than four times as wide as the other, or both are narrower than the raster;
/// of several, those nearest each other, and each only once. A difference in activity counts when it
/// is more than chance would make of so many looks: a two-proportion z-test at two standard errors
/// (Fleiss, Levin, Paik: Statistical Methods for Rates and Proportions). Where the survey went on from
/// the old one, whose counts are in those of now, the looks since are set against the old ones.
Comparison compareSurveys(const std::vector<SurveyedChannel>& channels,
                          const std::vector<SurveyedChannel>& old_channels, double raster_hz);

/// Takes away what is gone from outside the band that was surveyed now, and does not call new what
/// lies outside the band of the earlier survey: nobody looked for it there. Counts both. Settings
/// bind a survey to their band only while it sweeps.
void forgetUnlookedFor(Comparison& comparison, const SurveySettings& now,
                       const SurveySettings& before);

}  // namespace pelagrim_host
