#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/commands/saved_survey_arguments.h"
#include "host/history/history_file.h"
#include "host/history/history_reader.h"
#include "host/history/occupancy.h"
#include "host/process/text_output.h"
#include "host/text/counted_text.h"
#include "host/text/display_text.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

using Json = nlohmann::ordered_json;

/// What a channel of the list did in the record.
struct ChannelOnAir {
  double centre_hz;
  double width_hz;
  Occupancy occupancy;
};

/// What the record holds.
struct RecordSummary {
  std::vector<HistoryRun> runs;
  uint64_t dwells = 0;
  uint64_t missing_dwells = 0;
  double observed_s = 0.0;
  std::optional<int64_t> first_unix_ms;
  int64_t last_unix_ms = 0;
  uintmax_t bytes = 0;
  std::vector<ChannelOnAir> channels;
};

/// The runs that count: of those that heard the same samples, because a recording was surveyed
/// again, the last one.
std::set<int64_t> runsThatCount(const std::vector<HistoryRun>& runs) {
  std::map<std::string, int64_t> last;
  for (const HistoryRun& run : runs) last[run.name] = run.id;
  std::set<int64_t> ids;
  for (const auto& [name, id] : last) ids.insert(id);
  return ids;
}

RecordSummary summarise(const SurveyFiles& survey) {
  const auto path = historyPath(survey.results_path.parent_path());
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    throw std::runtime_error(fmt::format(
        "{} does not exist: the survey was made without --history, which keeps a record",
        path.string()));
  }
  HistoryReader reader(path);
  RecordSummary summary;
  summary.bytes = std::filesystem::file_size(path, error);
  summary.runs = reader.runs();
  const auto counting = runsThatCount(summary.runs);
  std::vector<std::vector<Watch>> watches(survey.rows.channels.size());
  HistoryVisitor visitor;
  visitor.anchor = [](const Numbered<HistoryAnchor>&) {};
  visitor.gap = [&](const Numbered<HistoryGap>& gap) {
    summary.missing_dwells += gap.value.dwells;
  };
  visitor.dwell = [&](const HistoryDwell& dwell) {
    if (!counting.contains(dwell.run)) return;
    const DwellRecord& record = dwell.record;
    ++summary.dwells;
    summary.observed_s += static_cast<double>(record.samples) / record.slice.sample_rate_hz;
    if (!summary.first_unix_ms) summary.first_unix_ms = record.first_unix_ms;
    summary.last_unix_ms = record.end_unix_ms;
    for (size_t i = 0; i < watches.size(); ++i) {
      const auto& channel = survey.rows.channels[i];
      const double half_hz = 0.5 * channel.width_hz;
      const auto watch =
          watchOf(record, dwell.run, {channel.centre_hz - half_hz, channel.centre_hz + half_hz});
      if (watch) watches[i].push_back(*watch);
    }
  };
  reader.visit(visitor, true);
  for (size_t i = 0; i < watches.size(); ++i) {
    const auto& channel = survey.rows.channels[i];
    summary.channels.push_back({channel.centre_hz, channel.width_hz, occupancyOf(watches[i])});
  }
  return summary;
}

std::string intervalText(const Occupancy& occupancy) {
  if (!occupancy.interval) return "";
  return fmt::format("{:.0f} to {:.0f} %", 100.0 * occupancy.interval->low,
                     100.0 * occupancy.interval->high);
}

std::string asText(const RecordSummary& summary) {
  std::string text =
      fmt::format("{}, {}, {} s observed, {} kB\n", countedText(summary.runs.size(), "run"),
                  countedText(summary.dwells, "dwell"),
                  formatNumber(std::round(summary.observed_s)), (summary.bytes + 999) / 1000);
  if (summary.first_unix_ms) {
    text += fmt::format("from {} to {}\n", formatMoment(*summary.first_unix_ms),
                        formatMoment(summary.last_unix_ms));
  }
  if (summary.missing_dwells > 0) {
    text += countedText(summary.missing_dwells, "dwell") + " missing\n";
  }
  for (const HistoryRun& run : summary.runs) {
    text += fmt::format("run: {}, {}{}\n", formatMoment(run.start_unix_ms), displayText(run.source),
                        run.ended ? "" : ", not ended in order");
  }
  text += "\n     Frequency       Width   On air  95 % interval   Observed  Transmissions\n";
  for (const ChannelOnAir& channel : summary.channels) {
    const Occupancy& occupancy = channel.occupancy;
    const std::string share =
        occupancy.observed_s > 0.0 ? fmt::format("{:.1f} %", 100.0 * occupancy.share()) : "";
    text +=
        fmt::format("{:>10.4f} MHz  {:>6.1f} kHz  {:>7}  {:>13}  {:>7.0f} s  {:>13}\n",
                    channel.centre_hz / 1e6, channel.width_hz / 1e3, share, intervalText(occupancy),
                    occupancy.observed_s, occupancy.transmissions.size());
  }
  return text;
}

Json asJson(const ChannelOnAir& channel) {
  const Occupancy& occupancy = channel.occupancy;
  Json json = {{"centre_hz", channel.centre_hz},
               {"width_hz", channel.width_hz},
               {"observed_s", occupancy.observed_s},
               {"transmissions", occupancy.transmissions.size()}};
  if (occupancy.observed_s > 0.0) json["on_air"] = occupancy.share();
  if (occupancy.interval) {
    json["on_air_low"] = occupancy.interval->low;
    json["on_air_high"] = occupancy.interval->high;
  }
  return json;
}

/// One object a line: the record, its runs, the channels.
std::string asJsonLines(const RecordSummary& summary) {
  const auto line = [](const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  };
  Json record = {{"dwells", summary.dwells},
                 {"missing_dwells", summary.missing_dwells},
                 {"observed_s", summary.observed_s},
                 {"bytes", summary.bytes}};
  if (summary.first_unix_ms) {
    record["first_unix_ms"] = *summary.first_unix_ms;
    record["last_unix_ms"] = summary.last_unix_ms;
  }
  std::string text = line({{"record", record}});
  for (const HistoryRun& run : summary.runs) {
    text += line({{"run",
                   {{"name", run.name},
                    {"source", run.source},
                    {"program", run.program},
                    {"settings", run.settings},
                    {"start_unix_ms", run.start_unix_ms},
                    {"ended", run.ended}}}});
  }
  for (const ChannelOnAir& channel : summary.channels) text += line({{"channel", asJson(channel)}});
  return text;
}

}  // namespace

void runHistory(const WordCommand& self, int argc, const char* const* argv) {
  std::string survey;
  bool as_json = false;
  CLI::App app(self.what, fmt::format("pelagrim-survey {}", self.name));
  addSurveyArgument(app, survey);
  app.add_flag("--json", as_json, "Write one JSON object per line");
  if (!parseArguments(app, argc, argv)) return;
  const SurveyFiles files = readSurveyAsked(survey);
  sayRemarks(surveyRemarks(files));
  const RecordSummary summary = summarise(files);
  TextOutput(stdout).write(as_json ? asJsonLines(summary) : asText(summary));
}

}  // namespace pelagrim_host
