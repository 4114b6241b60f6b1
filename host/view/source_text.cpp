#include "host/view/source_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/text/display_text.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

struct Row {
  std::string what;
  std::string value;
  std::string origin;  ///< empty if that goes without saying
};

/// Rate, centre and whatever else is known about the whole recording.
std::vector<Row> rowsOf(const IqSource& source, const StartTime& start) {
  const RecordingFacts facts = source.facts().value_or(RecordingFacts{});
  const auto originOf = [](const auto& known) { return known ? known->origin : ""; };
  std::vector<Row> rows;
  if (facts.format) rows.push_back({"format", facts.format->value, facts.format->origin});
  rows.push_back({"rate", formatSampleRate(source.sampleRateHz()), originOf(facts.rate_hz)});
  const double centre_hz = facts.centre_hz ? facts.centre_hz->value : source.centreHz();
  rows.push_back({"centre", formatFrequency(centre_hz), originOf(facts.centre_hz)});
  if (source.isLive()) return rows;
  // For the part that is played, which may begin later than the recording; the origin is the same.
  rows.push_back({"start", formatMoment(start.unix_ms),
                  facts.start_unix_ms ? facts.start_unix_ms->origin : start.origin});
  if (const auto samples = source.lengthSamples()) {
    const double seconds = static_cast<double>(*samples) / source.sampleRateHz();
    rows.push_back({"length", fmt::format("{:.3f} s, {} samples", seconds, *samples), ""});
  }
  return rows;
}

std::string originText(const Row& row) {
  return row.origin.empty() ? "" : " from " + row.origin;
}

std::vector<Row> segmentRows(const std::vector<RecordingSegment>& segments) {
  constexpr size_t kMaxRows = 20;
  std::vector<Row> rows;
  for (size_t i = 0; i < std::min(segments.size(), kMaxRows); ++i) {
    rows.push_back(
        {fmt::format("segment {}", i + 1),
         fmt::format("{}, {} samples", formatFrequency(segments[i].centre_hz), segments[i].samples),
         ""});
  }
  if (segments.size() > kMaxRows) {
    rows.push_back({"segments", fmt::format("{} in all", segments.size()), ""});
  }
  return rows;
}

std::string table(const std::string& name, const std::vector<Row>& rows) {
  std::string lines = fmt::format("{:<10}  {}\n", "source", displayText(name));
  for (const Row& row : rows) {
    const std::string text =
        row.origin.empty() ? row.value : fmt::format("{:<24} {}", row.value, originText(row));
    lines += fmt::format("{:<10}  {}\n", row.what, displayText(text));
  }
  return lines;
}

}  // namespace

std::string sourceLine(const IqSource& source, const StartTime& start) {
  std::string line = "taken as";
  std::string_view separator;
  for (const Row& row : rowsOf(source, start)) {
    line += fmt::format("{} {} {}{}", separator, row.what, row.value, originText(row));
    separator = ",";
  }
  return line;
}

std::string sourceTable(const IqSource& source, const StartTime& start) {
  auto rows = rowsOf(source, start);
  if (const auto facts = source.facts()) {
    const auto further = segmentRows(facts->segments);
    rows.insert(rows.end(), further.begin(), further.end());
  }
  return table(source.name(), rows);
}

std::string factsTable(const std::string& name, const RecordingFacts& facts) {
  std::vector<Row> rows;
  const auto add = [&rows](const char* what, const auto& known, auto text) {
    if (known) rows.push_back({what, text(known->value), known->origin});
  };
  add("format", facts.format, [](const std::string& format) { return format; });
  add("rate", facts.rate_hz, formatSampleRate);
  add("centre", facts.centre_hz, formatFrequency);
  add("start", facts.start_unix_ms, formatMoment);
  return table(name, rows);
}

}  // namespace pelagrim_host
