#include "host/report/whole_band.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace pelagrim_host {

WholeBand::WholeBand(const ReportData& report, double width) : report_(report), width_(width) {}

double WholeBand::xOf(double hz) const {
  const auto& [low_hz, high_hz] = report_.layout.span;
  return measures().left + (hz - low_hz) / (high_hz - low_hz) * plotWidth();
}

WholeBand::Extent WholeBand::extentOf(const SurveyedChannel& channel) const {
  const double half_hz = 0.5 * std::max(channel.width_hz, 0.0);
  return {xOf(channel.centre_hz - half_hz), xOf(channel.centre_hz + half_hz)};
}

bool WholeBand::isCrowded() const {
  return static_cast<double>(report_.channels.size()) > plotWidth();
}

std::vector<double> WholeBand::skyline(MarkWidth wanted) const {
  std::vector<double> tops(static_cast<size_t>(width_) + 1, measures().level_bottom);
  for (size_t index = 0; index < report_.channels.size(); ++index) {
    const auto [left, right] = extentOf(report_.channels[index].channel);
    const bool is_wide = right - left > measures().wide_mark;
    if (is_wide != (wanted == MarkWidth::kWide)) continue;
    const auto first = static_cast<size_t>(std::max(left - 1.0, 0.0));
    const auto last = static_cast<size_t>(std::min(right + 1.0, width_));
    for (size_t x = first; x <= last; ++x) {
      tops[x] = std::min(tops[x], report_.layout.marks[index].top);
    }
  }
  return tops;
}

std::vector<FrequencyTick> frequencyTicks(const WholeBand& band) {
  const PictureMeasures& at = band.measures();
  const auto& [low_hz, high_hz] = band.report().layout.span;
  const double rough_hz = (high_hz - low_hz) / ((band.plotRight() - at.left) / at.tick_distance);
  const double power_hz = std::pow(10.0, std::floor(std::log10(rough_hz)));
  double step_hz = 10.0 * power_hz;
  for (const double factor : {5.0, 2.0, 1.0}) {
    if (factor * power_hz >= rough_hz) step_hz = factor * power_hz;
  }
  const int digits = std::clamp(6 - static_cast<int>(std::floor(std::log10(step_hz))), 0, 6);
  std::vector<FrequencyTick> ticks;
  const double first = std::ceil(low_hz / step_hz);
  for (int tick = 0; (first + tick) * step_hz <= high_hz; ++tick) {
    const double hz = (first + tick) * step_hz;
    ticks.push_back({band.xOf(hz), fmt::format("{:.{}f}", hz / 1e6, digits)});
  }
  return ticks;
}

std::vector<MarkBox> markBoxes(const WholeBand& band) {
  const PictureMeasures& at = band.measures();
  const ReportData& report = band.report();
  const bool is_crowded = band.isCrowded();
  const std::vector<double> wide_marks = band.skyline(WholeBand::MarkWidth::kWide);
  std::vector<MarkBox> boxes;
  for (size_t index = 0; index < report.channels.size(); ++index) {
    const SurveyedChannel& channel = report.channels[index].channel;
    const ChannelMark& mark = report.layout.marks[index];
    const auto [low, high] = band.extentOf(channel);
    const double width = std::max(high - low, at.min_mark);
    const double left = 0.5 * (low + high - width);
    const auto column = static_cast<size_t>(band.xOf(channel.centre_hz));
    const bool is_edged = !is_crowded || wide_marks[column] < at.level_bottom;
    boxes.push_back({left, mark.top, width, at.level_bottom - mark.top, index, is_edged});
    if (mark.time_end <= 0.0) continue;
    const double height = mark.time_end - mark.time_begin;
    boxes.push_back({left, mark.time_begin, width, height, index, is_edged});
  }
  const auto rank = [&](const MarkBox& box) {
    const auto is_within = [&box](double step) { return box.width <= step; };
    return std::tuple(std::count_if(at.width_steps.begin(), at.width_steps.end(), is_within),
                      -box.height, -report.channels[box.channel].channel.activity());
  };
  std::stable_sort(boxes.begin(), boxes.end(), [&rank](const MarkBox& left, const MarkBox& right) {
    return rank(left) < rank(right);
  });
  return boxes;
}

}  // namespace pelagrim_host
