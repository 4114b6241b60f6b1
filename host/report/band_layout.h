#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/report/picture_measures.h"
#include "host/report/survey_change.h"
#include "host/survey_dir/saved_survey.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {

/// A stretch of the band plan's strip, with the range that names its frequencies.
struct PlanStretch {
  double low_hz;
  double high_hz;
  size_t range;  ///< index into the band plan
};

/// A channel in the picture: its height, its colour and its stretch of time. Its place from left to
/// right depends on its frequencies and on the part of the band that is shown.
struct ChannelMark {
  double top = 0.0;
  double time_begin = 0.0;  ///< both 0 if it has no times; within the span of the survey
  double time_end = 0.0;
  size_t shade = 0;  ///< index into activityShades() of mark_colours.h
};

/// A line of the scale of levels.
struct LevelLine {
  double y;
  double over_floor_db;
};

/// A line of the scale of times.
struct TimeLine {
  double y;
  int64_t unix_ms;
};

/// Everything about the picture that does not depend on its width or on the part of the band that
/// it shows. The page, which zooms, and the plain picture are both drawn from it.
struct BandLayout {
  PictureMeasures measures;
  FrequencyRange band;        ///< the band in the title; 0 to 0 if it is not known
  FrequencyRange span;        ///< the band with every signal whole, and a margin
  double top_db = 0.0;        ///< the level over the floor at level_top
  int64_t first_unix_ms = 0;  ///< of this survey, without gone channels; both 0 without times
  int64_t last_unix_ms = 0;
  bool shows_milliseconds = false;  ///< if all times are within a few seconds
  std::vector<LevelLine> level_lines;
  std::vector<TimeLine> time_lines;
  std::vector<PlanStretch> strip;
  std::vector<ChannelMark> marks;  ///< one for each channel, in their order
};

/// The latest time that a page's script can show; later times count as unknown.
constexpr int64_t kLatestUnixMs = 8'640'000'000'000'000;

/// The level of a channel over its floor, at least 0; 0 if either is not a number.
double overFloorDb(const SurveyedChannel& channel);

/// Lays the picture out. The band is that of the settings if a signal lies in it or there are no
/// signals, else the span of the channels.
BandLayout layOutBand(const std::vector<ReportedChannel>& channels,
                      const std::vector<pelagrim::BandLabel>& band_plan,
                      const std::optional<pelagrim::Settings>& settings);

}  // namespace pelagrim_host
