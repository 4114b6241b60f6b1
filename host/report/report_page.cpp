#include "host/report/report_page.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>

#include "host/report/page_assets.h"
#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

using nlohmann::json;

/// A tenth of a pixel or of a decibel is as fine as anybody sees; more digits make the page large.
json tenths(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::round(value * 10.0) / 10.0;
}

json whole(double value) {
  return static_cast<int64_t>(std::llround(value));
}

json moment(int64_t unix_ms) {
  return unix_ms > kLatestUnixMs || unix_ms < 0 ? 0 : unix_ms;
}

/// The values that the script takes apart by their places.
json rowOf(const ReportedChannel& reported, const ChannelMark& mark,
           const std::vector<BandRange>& band_plan) {
  const SurveyedChannel& channel = reported.channel;
  const auto& kinds = signalKinds();
  const auto kind = std::find(kinds.begin(), kinds.end(), channel.kind) - kinds.begin();
  const BandRange* const range = findBandRange(band_plan, channel.centre_hz);
  return {whole(channel.centre_hz),
          whole(channel.width_hz),
          whole(channel.min_width_hz),
          whole(channel.max_width_hz),
          tenths(channel.peak_db),
          tenths(channel.floor_db),
          channel.hits,
          channel.looks,
          moment(channel.first_unix_ms),
          moment(channel.last_unix_ms),
          kind,
          range == nullptr ? -1 : range - band_plan.data(),
          tenths(mark.top),
          tenths(mark.time_begin),
          tenths(mark.time_end),
          mark.shade,
          static_cast<int>(reported.change),
          reported.old_hits,
          reported.old_looks};
}

json dataOf(const ReportData& report) {
  const BandLayout& layout = report.layout;
  const PictureMeasures& at = layout.measures;
  json data;
  data["measures"] = {{"left", at.left},
                      {"right", at.right},
                      {"strip_top", at.strip_top},
                      {"strip_bottom", at.strip_bottom},
                      {"level_top", at.level_top},
                      {"level_bottom", at.level_bottom},
                      {"time_top", at.time_top},
                      {"time_bottom", at.time_bottom},
                      {"height", at.height},
                      {"least_mark", at.least_mark},
                      {"wide_mark", at.wide_mark},
                      {"width_steps", at.width_steps},
                      {"character_width", at.character_width},
                      {"label_height", at.label_height},
                      {"tick_distance", at.tick_distance}};
  data["band"] = {whole(layout.band.low_hz), whole(layout.band.high_hz)};
  data["span"] = {whole(layout.span.low_hz), whole(layout.span.high_hz)};
  data["top_db"] = layout.top_db;
  data["level_step_db"] = layout.level_step_db;
  data["times"] = {moment(layout.first_unix_ms), moment(layout.last_unix_ms)};
  data["shades"] = activityShades();
  data["kinds"] = signalKinds();
  data["changes"] = {"", "new", "gone", "more often", "less often"};
  data["compared"] = report.is_compared;
  for (const char* const list : {"settings", "remarks", "plan", "strip", "channels"}) {
    data[list] = json::array();
  }
  for (const auto& [name, value] : report.settings) {
    data["settings"].push_back({displayText(name), displayText(value)});
  }
  for (const std::string& remark : report.remarks) data["remarks"].push_back(displayText(remark));
  for (const BandRange& range : report.band_plan) data["plan"].push_back(displayText(range.name));
  for (const PlanStretch& stretch : layout.strip) {
    data["strip"].push_back({stretch.low_hz, stretch.high_hz, stretch.range});
  }
  for (size_t index = 0; index < report.channels.size(); ++index) {
    data["channels"].push_back(
        rowOf(report.channels[index], layout.marks[index], report.band_plan));
  }
  return data;
}

/// JSON that can stand in a script element: nothing in it ends the element or begins a comment.
std::string embeddable(const json& data) {
  std::string text;
  for (const char character : data.dump(-1, ' ', true)) {
    if (character == '<') {
      text += "\\u003c";
    } else {
      text += character;
    }
  }
  return text;
}

}  // namespace

std::string reportPage(const ReportData& report) {
  std::string page;
  std::string_view rest = kPageHtml;
  const auto fill = [&](std::string_view place, std::string_view text) {
    const size_t at = rest.find(place);
    page += rest.substr(0, at);
    page += text;
    rest.remove_prefix(at + place.size());
  };
  fill("{{page.css}}", kPageCss);
  fill("{{data}}", embeddable(dataOf(report)));
  fill("{{page.js}}", kPageJs);
  page += rest;
  return page;
}

}  // namespace pelagrim_host
