#include "host/export/exported_channel.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string_view>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

struct ModeOfKind {
  std::string_view kind;
  ListeningMode mode;
  double bandwidth_hz;
};

constexpr std::array kModes = {ModeOfKind{"carrier?", ListeningMode::kCw, 500.0},
                               ModeOfKind{"SSB/CW?", ListeningMode::kUsb, 2800.0},
                               ModeOfKind{"AM?", ListeningMode::kAm, 10000.0},
                               ModeOfKind{"NFM?", ListeningMode::kNfm, 12500.0},
                               ModeOfKind{"wide NFM?", ListeningMode::kNfm, 25000.0},
                               ModeOfKind{"WFM?", ListeningMode::kWfm, 180000.0}};

std::string nameOf(const SurveyedChannel& channel, const std::string& band) {
  const std::string frequency = fmt::format("{:.4f} MHz", channel.centre_hz / 1e6);
  return band.empty() ? frequency : band + " " + frequency;
}

bool isSelected(const SurveyedChannel& channel, const ExportSelection& selection) {
  const auto& kinds = selection.kinds;
  return channel.activity() >= selection.min_activity && channel.hits >= selection.min_hits &&
         (kinds.empty() || std::find(kinds.begin(), kinds.end(), channel.kind) != kinds.end());
}

}  // namespace

Listening listeningTo(const SurveyedChannel& channel) {
  constexpr double kUpperSideBandFromHz = 10e6;
  constexpr double kStepHz = 100.0;
  const double width_hz = kStepHz * std::max(std::ceil(channel.width_hz / kStepHz), 1.0);
  Listening listening{ListeningMode::kNone, channel.centre_hz, width_hz};
  const auto* const known =
      std::find_if(kModes.begin(), kModes.end(),
                   [&](const ModeOfKind& entry) { return entry.kind == channel.kind; });
  if (known == kModes.end()) return listening;
  listening.mode = known->mode;
  listening.bandwidth_hz = std::max(width_hz, known->bandwidth_hz);
  if (listening.mode == ListeningMode::kUsb) {
    const bool upper = channel.centre_hz >= kUpperSideBandFromHz;
    if (!upper) listening.mode = ListeningMode::kLsb;
    const double half_hz = 0.5 * listening.bandwidth_hz;
    listening.dial_hz += upper ? -half_hz : half_hz;
  }
  return listening;
}

std::vector<ExportedChannel> selectChannels(const SurveyFiles& survey,
                                            const ExportSelection& selection) {
  std::vector<ExportedChannel> exported;
  for (const SurveyedChannel& channel : survey.rows.channels) {
    if (!isSelected(channel, selection)) continue;
    const pelagrim::BandLabel* const range =
        pelagrim::lookupLabel(survey.band_plan, channel.centre_hz);
    const std::string band = range == nullptr ? "" : displayText(range->name);
    exported.push_back({channel, listeningTo(channel), band, "", survey.timesAreGuesses()});
  }
  std::stable_sort(exported.begin(), exported.end(), [](const auto& a, const auto& b) {
    return a.seen.centre_hz < b.seen.centre_hz;
  });
  std::set<std::string> taken;
  for (ExportedChannel& channel : exported) {
    const std::string name = nameOf(channel.seen, channel.band);
    channel.name = name;
    for (int copy = 2; !taken.insert(channel.name).second; ++copy) {
      channel.name = fmt::format("{} ({})", name, copy);
    }
  }
  return exported;
}

}  // namespace pelagrim_host
