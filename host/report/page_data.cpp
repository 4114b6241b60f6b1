#include "host/report/page_data.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/report/mark_colours.h"
#include "host/report/report_words.h"
#include "host/text/display_text.h"
#include "survey/signal_kind.h"

namespace pelagrim_host {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PictureMeasures, left, right, strip_top, strip_bottom, level_top,
                                   level_bottom, time_top, time_bottom, height, min_mark, wide_mark,
                                   width_steps, character_width, label_height, label_gap, scale_gap,
                                   scale_drop, scale_title_x, strip_gap, strip_drop, tick_distance,
                                   tick_length, tick_drop, unit_gap, shade_width, shade_height)

namespace {

using nlohmann::json;

/// Nobody sees less than a tenth of a pixel or of a decibel; more digits would make the page large.
json tenths(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::round(value * 10.0) / 10.0;
}

json whole(double value) {
  return static_cast<int64_t>(std::llround(value));
}

/// Null if it is not known.
json moment(int64_t unix_ms) {
  if (unix_ms <= 0 || unix_ms > kLatestUnixMs) return nullptr;
  return unix_ms;
}

/// One array for each property, with a value per channel: a name with each value would make a page
/// of thousands of channels twice as large.
json channelsOf(const ReportData& report) {
  json columns = json::object();
  const auto add = [&](const char* name, const auto& valueOf) {
    json& values = columns[name] = json::array();
    for (size_t index = 0; index < report.channels.size(); ++index)
      values.push_back(valueOf(index));
  };
  const auto addSeen = [&](const char* name, const auto& valueOf) {
    add(name, [&](size_t index) -> json { return valueOf(report.channels[index].channel); });
  };
  const auto addDrawn = [&](const char* name, const auto& valueOf) {
    add(name, [&](size_t index) -> json { return valueOf(report.layout.marks[index]); });
  };
  using Seen = const SurveyedChannel&;
  addSeen("centre_hz", [](Seen channel) { return whole(channel.centre_hz); });
  addSeen("width_hz", [](Seen channel) { return whole(channel.width_hz); });
  addSeen("min_width_hz", [](Seen channel) { return whole(channel.min_width_hz); });
  addSeen("max_width_hz", [](Seen channel) { return whole(channel.max_width_hz); });
  addSeen("peak_db", [](Seen channel) { return tenths(channel.peak_db); });
  addSeen("over_db", [](Seen channel) { return tenths(channel.peak_db - channel.floor_db); });
  addSeen("hits", [](Seen channel) { return channel.hits; });
  addSeen("looks", [](Seen channel) { return channel.looks; });
  addSeen("first_unix_ms", [](Seen channel) { return moment(channel.first_unix_ms); });
  addSeen("last_unix_ms", [](Seen channel) { return moment(channel.last_unix_ms); });
  addSeen("kind", [](Seen channel) {
    static const auto kinds = pelagrim::signalKinds();
    return std::find(kinds.begin(), kinds.end(), channel.kind) - kinds.begin();
  });
  addSeen("range", [&](Seen channel) -> json {
    const pelagrim::BandLabel* const range =
        pelagrim::lookupLabel(report.band_plan, channel.centre_hz);
    return range == nullptr ? -1 : range - report.band_plan.data();
  });
  addDrawn("top", [](const ChannelMark& mark) { return tenths(mark.top); });
  addDrawn("time_begin", [](const ChannelMark& mark) { return tenths(mark.time_begin); });
  addDrawn("time_end", [](const ChannelMark& mark) { return tenths(mark.time_end); });
  addDrawn("shade", [](const ChannelMark& mark) { return mark.shade; });
  const auto changed = [&](size_t index) -> const ReportedChannel& {
    return report.channels[index];
  };
  add("change", [&](size_t index) { return static_cast<int>(changed(index).change); });
  if (!report.is_compared) return columns;
  add("old_hits", [&](size_t index) { return changed(index).old_hits; });
  add("old_looks", [&](size_t index) { return changed(index).old_looks; });
  return columns;
}

json wordsOf(const ReportData& report) {
  json words = json::object();
  for (const ScriptWords& entry : scriptWords()) words[std::string(entry.name)] = entry.words;
  words["time_span"] = timeSpanWords(report);
  words["all_channels"] = channelCount(knownChannels(report));
  words["change_legend"] = changeLegend(report);
  return words;
}

json dataOf(const ReportData& report) {
  const BandLayout& layout = report.layout;
  json data;
  data["measures"] = layout.measures;
  data["span"] = {{"low_hz", whole(layout.span.low_hz)}, {"high_hz", whole(layout.span.high_hz)}};
  data["first_unix_ms"] = moment(layout.first_unix_ms);
  data["last_unix_ms"] = moment(layout.last_unix_ms);
  data["shows_milliseconds"] = layout.shows_milliseconds;
  data["shades"] = activityShades();
  data["kinds"] = pelagrim::signalKinds();
  data["is_compared"] = report.is_compared;
  data["times_are_guesses"] = report.times_are_guesses;
  data["old_times_are_guesses"] = report.old_times_are_guesses;
  data["words"] = wordsOf(report);
  data["channels"] = channelsOf(report);
  for (const char* const list : {"columns", "changes", "settings", "remarks", "plan", "strip",
                                 "level_lines", "time_lines"}) {
    data[list] = json::array();
  }
  for (const auto& [column, title, unit] : columnWords()) {
    if (column == "change" && !report.is_compared) continue;
    data["columns"].push_back({{"name", column}, {"title", title}, {"unit", unit}});
  }
  for (const auto& [name, symbol, mark_style] : changeWords()) {
    data["changes"].push_back({{"name", name}, {"symbol", symbol}, {"mark_style", mark_style}});
  }
  for (const auto& [name, value] : report.settings) {
    data["settings"].push_back({{"name", displayText(name)}, {"value", displayText(value)}});
  }
  for (const std::string& remark : report.remarks) data["remarks"].push_back(displayText(remark));
  for (const pelagrim::BandLabel& range : report.band_plan)
    data["plan"].push_back(displayText(range.name));
  for (const auto& [low_hz, high_hz, range] : layout.strip) {
    data["strip"].push_back({{"low_hz", low_hz}, {"high_hz", high_hz}, {"range", range}});
  }
  for (const auto& [y, over_floor_db] : layout.level_lines) {
    data["level_lines"].push_back({{"y", y}, {"over_floor_db", over_floor_db}});
  }
  for (const auto& [y, unix_ms] : layout.time_lines) {
    data["time_lines"].push_back({{"y", y}, {"unix_ms", moment(unix_ms)}});
  }
  return data;
}

}  // namespace

std::string pageData(const ReportData& report) {
  std::string text;
  for (const char character : dataOf(report).dump(-1, ' ', true)) {
    if (character == '<') {
      text += "\\u003c";
    } else {
      text += character;
    }
  }
  return text;
}

}  // namespace pelagrim_host
