#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>

#include "host/export/csv_field.h"
#include "host/export/export_formats.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr ModeNames<std::string_view> kModeTexts = {
    .none = "", .cw = "CW", .usb = "USB", .lsb = "LSB", .am = "AM", .nfm = "NFM", .wfm = "WFM"};

/// "2026-01-01T00:00:00Z"; empty for 0 (no clock) and for times after the year 9999.
std::string moment(int64_t unix_ms) {
  constexpr int64_t kLatestMs = 253402300799999;
  if (unix_ms <= 0 || unix_ms > kLatestMs) return "";
  return formatMoment(unix_ms);
}

/// The same to the millisecond, which survey.csv holds: "2026-01-01T00:00:00.250Z".
std::string exactMoment(int64_t unix_ms) {
  std::string text = moment(unix_ms);
  if (!text.empty()) text.insert(text.size() - 1, fmt::format(".{:03}", unix_ms % 1000));
  return text;
}

nlohmann::ordered_json orNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

/// Empty if it is not a number: a spreadsheet would take "nan" for text.
std::string levelText(double level_db) {
  return std::isfinite(level_db) ? fmt::format("{:.1f}", level_db) : "";
}

}  // namespace

std::string frequencyList(const ExportedChannels& channels) {
  std::string text;
  long long last = 0;
  for (const ExportedChannel& channel : channels) {
    const long long hz = std::llround(channel.seen.centre_hz);
    if (hz != last) text += fmt::format("{}\n", hz);
    last = hz;
  }
  return text;
}

std::string jsonLines(const ExportedChannels& channels) {
  std::string text;
  for (const ExportedChannel& channel : channels) {
    const SurveyedChannel& seen = channel.seen;
    const nlohmann::ordered_json row = {
        {"centre_hz", std::llround(seen.centre_hz)},
        {"width_hz", std::llround(seen.width_hz)},
        {"min_width_hz", std::llround(seen.min_width_hz)},
        {"max_width_hz", std::llround(seen.max_width_hz)},
        {"peak_db", seen.peak_db},
        {"floor_db", seen.floor_db},
        {"hits", seen.hits},
        {"looks", seen.looks},
        {"first_seen", orNull(exactMoment(seen.first_unix_ms))},
        {"last_seen", orNull(exactMoment(seen.last_unix_ms))},
        {"times_are_guesses", channel.times_are_guesses},
        {"guess", std::string(seen.kind)},
        {"band", orNull(channel.band)},
        {"mode", orNull(std::string(kModeTexts[channel.listening.mode]))},
        {"bandwidth_hz", std::llround(channel.listening.bandwidth_hz)}};
    text += row.dump() + "\n";
  }
  return text;
}

std::string readableCsv(const ExportedChannels& channels) {
  std::string text =
      "Frequency MHz,Width kHz,Guess,Over floor dB,Detections,Looks since first heard,First "
      "seen,Last seen,Times are guesses,Band\n";
  for (const ExportedChannel& channel : channels) {
    const SurveyedChannel& seen = channel.seen;
    text +=
        fmt::format("{:.6f},{:.3f},{},{},{},{},{},{},{},{}\n", seen.centre_hz / 1e6,
                    seen.width_hz / 1e3, seen.kind, levelText(seen.peak_db - seen.floor_db),
                    seen.hits, seen.looks, moment(seen.first_unix_ms), moment(seen.last_unix_ms),
                    channel.times_are_guesses ? "yes" : "no", csvField(noFormula(channel.band)));
  }
  return text;
}

}  // namespace pelagrim_host
