#include "host/report/band_layout.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <utility>

#include "host/report/mark_colours.h"

namespace pelagrim_host {
namespace {

constexpr double kMinSpanHz = 20e3;
constexpr double kMargin = 0.01;  // of the span, on either side
constexpr double kLevelStepsDb[] = {10.0, 20.0, 50.0, 100.0, 200.0, 500.0};
constexpr double kMaxLevelLines = 7.0;
constexpr int64_t kShortSurveyMs = 10'000;

FrequencyRange extent(const SurveyedChannel& channel) {
  const double half_hz = 0.5 * std::max(channel.width_hz, 0.0);
  return {channel.centre_hz - half_hz, channel.centre_hz + half_hz};
}

bool hasTimes(const SurveyedChannel& channel) {
  return channel.first_unix_ms > 0 && channel.last_unix_ms >= channel.first_unix_ms &&
         channel.last_unix_ms <= kLatestUnixMs;
}

void widen(FrequencyRange& range, const FrequencyRange& other) {
  range.low_hz = std::min(range.low_hz, other.low_hz);
  range.high_hz = std::max(range.high_hz, other.high_hz);
}

FrequencyRange bandOf(const std::vector<ReportedChannel>& channels,
                      const std::optional<pelagrim::Settings>& settings) {
  const bool has_band =
      settings && settings->start_hz < settings->stop_hz && settings->start_hz >= 0.0;
  const FrequencyRange asked =
      has_band ? FrequencyRange{settings->start_hz, settings->stop_hz} : FrequencyRange{0.0, 0.0};
  if (channels.empty()) return asked;
  const auto is_in_band = [&](const ReportedChannel& reported) {
    const double centre_hz = reported.channel.centre_hz;
    return asked.low_hz <= centre_hz && centre_hz <= asked.high_hz;
  };
  const bool is_band_surveyed = std::any_of(channels.begin(), channels.end(), is_in_band);
  FrequencyRange band = is_band_surveyed ? asked : extent(channels.front().channel);
  for (const ReportedChannel& reported : channels) {
    if (!is_band_surveyed || !is_in_band(reported)) widen(band, extent(reported.channel));
  }
  return band;
}

/// Which range names which stretch, by the rule that names channels: the first match.
std::vector<PlanStretch> planStrip(const std::vector<pelagrim::BandLabel>& band_plan,
                                   const FrequencyRange& span) {
  std::vector<pelagrim::BandLabel> near;
  std::vector<size_t> index_of;
  std::vector<double> edges;
  for (size_t index = 0; index < band_plan.size(); ++index) {
    const pelagrim::BandLabel& range = band_plan[index];
    if (range.high_hz < span.low_hz || range.low_hz > span.high_hz) continue;
    near.push_back(range);
    index_of.push_back(index);
    // A stretch without an end has no middle and no place in a picture.
    edges.push_back(std::max(range.low_hz, span.low_hz));
    edges.push_back(std::min(range.high_hz, span.high_hz));
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());

  std::vector<PlanStretch> strip;
  const auto add = [&](double low_hz, double high_hz, double inside_hz) {
    const pelagrim::BandLabel* const range = pelagrim::lookupLabel(near, inside_hz);
    if (range == nullptr) return;
    const size_t index = index_of[static_cast<size_t>(range - near.data())];
    const bool continues =
        !strip.empty() && strip.back().range == index && strip.back().high_hz == low_hz;
    if (continues) {
      strip.back().high_hz = high_hz;
    } else {
      strip.push_back({low_hz, high_hz, index});
    }
  };
  for (size_t edge = 0; edge < edges.size(); ++edge) {
    if (edge > 0) add(edges[edge - 1], edges[edge], 0.5 * (edges[edge - 1] + edges[edge]));
    const pelagrim::BandLabel* const at = pelagrim::lookupLabel(near, edges[edge]);
    if (at != nullptr && at->low_hz == at->high_hz) add(edges[edge], edges[edge], edges[edge]);
  }
  // Single frequencies come last, so that they are drawn on top of the ranges around them.
  std::stable_partition(strip.begin(), strip.end(), [](const PlanStretch& stretch) {
    return stretch.low_hz < stretch.high_hz;
  });
  return strip;
}

/// The scale of levels, up to at least `top_db`.
void layOutLevels(BandLayout& layout, double top_db) {
  const auto* const step =
      std::find_if(std::begin(kLevelStepsDb), std::end(kLevelStepsDb) - 1,
                   [&](double step_db) { return top_db <= kMaxLevelLines * step_db; });
  const double steps = std::ceil(top_db / *step);
  layout.top_db = *step * steps;
  const PictureMeasures& at = layout.measures;
  for (int line = 0; line <= static_cast<int>(steps); ++line) {
    const double part = line / steps;
    layout.level_lines.push_back(
        {at.level_bottom - part * (at.level_bottom - at.level_top), line * *step});
  }
}

/// The scale of times, as tall as it needs to be.
void layOutTimes(BandLayout& layout) {
  PictureMeasures& at = layout.measures;
  const auto& [first_ms, last_ms] = std::pair(layout.first_unix_ms, layout.last_unix_ms);
  layout.shows_milliseconds = last_ms - first_ms < kShortSurveyMs;
  if (first_ms == 0) {
    at.time_bottom = at.time_top;
    at.height = at.time_top - at.label_height;
  } else if (first_ms == last_ms) {
    // A recording shorter than a dwell has one moment, which needs no room to spread in.
    at.time_bottom = at.time_top + at.label_height;
    at.height = at.time_bottom + at.label_height;
    layout.time_lines = {{at.time_top, first_ms}};
  } else {
    layout.time_lines = {{at.time_top, first_ms},
                         {0.5 * (at.time_top + at.time_bottom), std::midpoint(first_ms, last_ms)},
                         {at.time_bottom, last_ms}};
  }
}

}  // namespace

double overFloorDb(const SurveyedChannel& channel) {
  const double over_db = channel.peak_db - channel.floor_db;
  return std::isfinite(over_db) ? std::max(over_db, 0.0) : 0.0;
}

BandLayout layOutBand(const std::vector<ReportedChannel>& channels,
                      const std::vector<pelagrim::BandLabel>& band_plan,
                      const std::optional<pelagrim::Settings>& settings) {
  BandLayout layout;
  layout.band = bandOf(channels, settings);
  layout.span = layout.band;
  double top_db = 20.0;
  for (const ReportedChannel& reported : channels) {
    const SurveyedChannel& channel = reported.channel;
    widen(layout.span, extent(channel));
    top_db = std::max(top_db, overFloorDb(channel));
    // Gone channels were seen by another survey at another time.
    if (!hasTimes(channel) || reported.change == Change::kGone) continue;
    const bool is_first = layout.first_unix_ms == 0;
    layout.first_unix_ms =
        is_first ? channel.first_unix_ms : std::min(layout.first_unix_ms, channel.first_unix_ms);
    layout.last_unix_ms = std::max(layout.last_unix_ms, channel.last_unix_ms);
  }
  const double width_hz = layout.span.high_hz - layout.span.low_hz;
  const double margin_hz = std::max(kMargin * width_hz, 0.5 * (kMinSpanHz - width_hz));
  layout.span.low_hz = std::max(layout.span.low_hz - margin_hz, 0.0);
  layout.span.high_hz += margin_hz;
  layout.strip = planStrip(band_plan, layout.span);

  layOutLevels(layout, top_db);
  const PictureMeasures& at = layout.measures;
  layOutTimes(layout);
  const double time_span =
      static_cast<double>(layout.last_unix_ms) - static_cast<double>(layout.first_unix_ms);
  const auto time_y = [&](int64_t unix_ms) {
    const double since = static_cast<double>(unix_ms) - static_cast<double>(layout.first_unix_ms);
    const double part = time_span > 0.0 ? std::clamp(since / time_span, 0.0, 1.0) : 0.0;
    return at.time_top + part * (at.time_bottom - at.min_mark - at.time_top);
  };
  for (const ReportedChannel& reported : channels) {
    const SurveyedChannel& channel = reported.channel;
    ChannelMark mark;
    const double height = overFloorDb(channel) / layout.top_db * (at.level_bottom - at.level_top);
    mark.top = at.level_bottom - std::max(height, at.min_mark);
    if (hasTimes(channel) && layout.first_unix_ms > 0) {
      mark.time_begin = time_y(channel.first_unix_ms);
      mark.time_end = time_y(channel.last_unix_ms) + at.min_mark;
    }
    const double steps = static_cast<double>(activityShades().size() - 1);
    mark.shade = static_cast<size_t>(std::lround(channel.activity() * steps));
    layout.marks.push_back(mark);
  }
  return layout;
}

}  // namespace pelagrim_host
