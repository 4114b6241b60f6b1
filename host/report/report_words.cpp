#include "host/report/report_words.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text/counted_text.h"

namespace pelagrim_host {
namespace {

size_t goneChannels(const ReportData& report) {
  const auto is_gone = [](const ReportedChannel& one) { return one.change == Change::kGone; };
  const auto& channels = report.channels;
  return static_cast<size_t>(std::count_if(channels.begin(), channels.end(), is_gone));
}

}  // namespace

size_t knownChannels(const ReportData& report) {
  return report.channels.size() - goneChannels(report);
}

const std::vector<ChangeWords>& changeWords() {
  static const std::vector<ChangeWords> kWords = {{"", "", ""},
                                                  {"new", "+", "new"},
                                                  {"gone", "\u00d7", "gone"},
                                                  {"more often", "\u25b2", ""},
                                                  {"less often", "\u25bc", ""}};
  return kWords;
}

const ChangeWords& wordsOf(Change change) {
  return changeWords()[static_cast<size_t>(change)];
}

std::string changeLegend(const ReportData& report) {
  if (!report.is_compared) return "";
  const ChangeWords& fresh = wordsOf(Change::kNew);
  const ChangeWords& gone = wordsOf(Change::kGone);
  const std::string gone_text =
      goneChannels(report) > 0 ? fmt::format("{} dashed: {}, ", gone.symbol, gone.name) : "";
  return fmt::format("{} thick outline: {}, {}{} {} more or less often", fresh.symbol, fresh.name,
                     gone_text, wordsOf(Change::kMoreOften).symbol,
                     wordsOf(Change::kLessOften).symbol);
}

const std::vector<ColumnWords>& columnWords() {
  static const std::vector<ColumnWords> kWords = {{"centre_hz", "Frequency", kFrequencyUnitWords},
                                                  {"change", "Change", "hits/looks before"},
                                                  {"width_hz", "Width", "kHz"},
                                                  {"kind", "Kind", "by width"},
                                                  {"over_db", "Over floor", "relative dB"},
                                                  {"peak_db", "Peak", "relative dB"},
                                                  {"activity", "Seen", "hits/looks"},
                                                  {"first_unix_ms", "First seen", "{zone}"},
                                                  {"last_unix_ms", "Last seen", "{zone}"},
                                                  {"band", "Band", "band plan"}};
  return kWords;
}

const std::vector<ScriptWords>& scriptWords() {
  static const std::vector<ScriptWords> kWords = {
      {"level_scale", kLevelScaleWords},
      {"frequency_unit", kFrequencyUnitWords},
      {"band_plan", kBandPlanWords},
      {"least_active", kLeastActiveWords},
      {"most_active", kMostActiveWords},
      {"guess_mark", kGuessMark},
      {"missing", "\u2013"},
      {"local_time", kLocalTimeWords},
      {"range_shown", "{low}\u2013{high} MHz"},
      {"channel", "{centre} MHz, {kind}, {width} kHz wide, {over} dB over floor, {seen}"},
      {"width_range", "from {min} to {max} kHz"},
      {"seen", "{hits}, {looks} since first heard"},
      {"one_detection", "1 detection"},
      {"detections", "{count} detections"},
      {"one_look", "1 look"},
      {"looks", "{count} looks"},
      {"counts_before", "was {hits}/{looks}"},
      {"no_band", "not in the band plan"},
      {"no_change", "as before"},
      {"count_shown", "{shown} of {all}"},
      {"gone_shown", "{shown} of {all} gone"},
      {"only_kind", "kind {name}"},
      {"only_band", "band {name}"},
      {"only_change", "change: {name}"},
      {"only_activity", "activity at least {activity}"},
      {"only_range", "from {low} to {high} MHz"}};
  return kWords;
}

std::string channelCount(size_t count) {
  return countedText(count, "channel");
}

std::string channelsText(const ReportData& report) {
  const size_t gone = goneChannels(report);
  return channelCount(knownChannels(report)) + (gone > 0 ? fmt::format(", {} gone", gone) : "");
}

std::string titleOf(const ReportData& report) {
  const FrequencyRange& band = report.layout.band;
  const std::string range = band.high_hz > 0.0 ? fmt::format("{:.3f}\u2013{:.3f} MHz, ",
                                                             band.low_hz / 1e6, band.high_hz / 1e6)
                                               : "";
  return range + channelsText(report);
}

std::string_view timeSpanWords(const ReportData& report) {
  const BandLayout& layout = report.layout;
  if (layout.first_unix_ms == 0) {
    return knownChannels(report) > 0 ? "The survey had no clock, so nothing is known about times."
                                     : "Nothing was found yet.";
  }
  return layout.first_unix_ms == layout.last_unix_ms ? "Seen at {first} ({zone})"
                                                     : "Seen from {first} to {last} ({zone})";
}

}  // namespace pelagrim_host
