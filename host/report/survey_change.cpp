#include "host/report/survey_change.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

namespace pelagrim_host {
namespace {

constexpr double kStandardErrors = 2.0;

/// Two channels that may be one, as indices into the two surveys.
struct Pair {
  double distance_hz;
  size_t now;
  size_t before;
};

using MayBeOne = std::function<bool(const SurveyedChannel& now, const SurveyedChannel& before)>;

/// Whether two channels can be the same, judging by their widths. Below the raster, where a channel
/// is a few bins wide, the width says little.
bool areOfSimilarWidth(const SurveyedChannel& one, const SurveyedChannel& other, double raster_hz) {
  constexpr double kMaxRatio = 4.0;
  const auto [narrow_hz, wide_hz] = std::minmax({one.width_hz, other.width_hz});
  return wide_hz <= std::max(raster_hz, kMaxRatio * narrow_hz);
}

/// The nearest first, each channel in at most one pair.
std::vector<Pair> pairsWithinReach(const std::vector<SurveyedChannel>& channels,
                                   const std::vector<SurveyedChannel>& old_channels,
                                   double raster_hz, const MayBeOne& may_be_one) {
  std::vector<size_t> by_centre(old_channels.size());
  for (size_t index = 0; index < by_centre.size(); ++index) by_centre[index] = index;
  std::sort(by_centre.begin(), by_centre.end(), [&](size_t left, size_t right) {
    return old_channels[left].centre_hz < old_channels[right].centre_hz;
  });
  double widest_hz = 0.0;
  for (const SurveyedChannel& old : old_channels) widest_hz = std::max(widest_hz, old.width_hz);

  std::vector<Pair> pairs;
  for (size_t now = 0; now < channels.size(); ++now) {
    const double centre_hz = channels[now].centre_hz;
    const double reach_hz = std::max(raster_hz, 0.5 * std::max(widest_hz, channels[now].width_hz));
    auto at = std::lower_bound(
        by_centre.begin(), by_centre.end(), centre_hz - reach_hz,
        [&](size_t index, double hz) { return old_channels[index].centre_hz < hz; });
    for (; at != by_centre.end() && old_channels[*at].centre_hz <= centre_hz + reach_hz; ++at) {
      const SurveyedChannel& old = old_channels[*at];
      const double distance_hz = std::abs(old.centre_hz - centre_hz);
      const double half_hz = 0.5 * std::max(old.width_hz, channels[now].width_hz);
      if (distance_hz <= std::max(raster_hz, half_hz) && may_be_one(channels[now], old)) {
        pairs.push_back({distance_hz, now, *at});
      }
    }
  }
  std::sort(pairs.begin(), pairs.end(), [](const Pair& left, const Pair& right) {
    return std::tie(left.distance_hz, left.now, left.before) <
           std::tie(right.distance_hz, right.now, right.before);
  });
  std::vector<bool> is_taken(channels.size(), false);
  std::vector<bool> was_taken(old_channels.size(), false);
  std::erase_if(pairs, [&](const Pair& pair) {
    if (is_taken[pair.now] || was_taken[pair.before]) return true;
    is_taken[pair.now] = was_taken[pair.before] = true;
    return false;
  });
  return pairs;
}

/// Whether `now` is `before` after further looks in the same survey: counts only grow, the first
/// moment stays, and the last moment moves on if, and only if, there were further hits.
bool isContinued(const SurveyedChannel& now, const SurveyedChannel& before) {
  const bool was_seen_again = now.hits > before.hits;
  const bool is_later = now.last_unix_ms > before.last_unix_ms;
  return now.first_unix_ms > 0 && now.first_unix_ms == before.first_unix_ms &&
         now.looks >= before.looks && now.hits >= before.hits && was_seen_again == is_later;
}

/// Whether these pairs of continued channels include all of the earlier survey's, and there was
/// something new.
bool isWholeContinued(const std::vector<Pair>& pairs, const std::vector<SurveyedChannel>& channels,
                      const std::vector<SurveyedChannel>& old_channels) {
  if (pairs.size() != old_channels.size()) return false;
  int64_t old_last_ms = 0;
  for (const SurveyedChannel& old : old_channels) {
    old_last_ms = std::max(old_last_ms, old.last_unix_ms);
  }
  std::vector<bool> is_old(channels.size(), false);
  bool has_grown = false;
  for (const Pair& pair : pairs) {
    is_old[pair.now] = true;
    has_grown = has_grown || channels[pair.now].looks > old_channels[pair.before].looks;
  }
  for (size_t now = 0; now < channels.size(); ++now) {
    if (!is_old[now] && channels[now].first_unix_ms <= old_last_ms) return false;
  }
  return has_grown;
}

Change changeOf(const SurveyedChannel& now, const SurveyedChannel& before) {
  const double looks_now = now.looks;
  const double looks_before = before.looks;
  if (now.looks == 0 || before.looks == 0) return Change::kNone;
  const double pooled =
      (now.activity() * looks_now + before.activity() * looks_before) / (looks_now + looks_before);
  const double error = std::sqrt(pooled * (1.0 - pooled) * (1.0 / looks_now + 1.0 / looks_before));
  const double difference = now.activity() - before.activity();
  if (std::abs(difference) < kStandardErrors * error || difference == 0.0) return Change::kNone;
  return difference > 0.0 ? Change::kMoreOften : Change::kLessOften;
}

bool isOutsideBand(const ReportedChannel& reported,
                   const std::optional<pelagrim::Settings>& settings) {
  if (!settings || !settings->sweep) return false;
  const double centre_hz = reported.channel.centre_hz;
  return centre_hz < settings->start_hz || centre_hz > settings->stop_hz;
}

}  // namespace

std::vector<ReportedChannel> withoutComparison(const std::vector<SurveyedChannel>& channels) {
  std::vector<ReportedChannel> reported;
  reported.reserve(channels.size());
  for (const SurveyedChannel& channel : channels) reported.push_back({channel});
  return reported;
}

Comparison compareSurveys(const std::vector<SurveyedChannel>& channels,
                          const std::vector<SurveyedChannel>& old_channels, double raster_hz,
                          bool may_be_continued) {
  Comparison comparison{withoutComparison(channels)};
  std::vector<ReportedChannel>& reported = comparison.channels;
  for (ReportedChannel& channel : reported) channel.change = Change::kNew;
  auto pairs = pairsWithinReach(channels, old_channels, raster_hz, isContinued);
  comparison.is_continued = may_be_continued && isWholeContinued(pairs, channels, old_channels);
  if (!comparison.is_continued) {
    pairs = pairsWithinReach(channels, old_channels, raster_hz,
                             [raster_hz](const SurveyedChannel& now, const SurveyedChannel& old) {
                               return areOfSimilarWidth(now, old, raster_hz);
                             });
  }
  std::vector<bool> was_found(old_channels.size(), false);
  for (const Pair& pair : pairs) {
    ReportedChannel& channel = reported[pair.now];
    const SurveyedChannel& old = old_channels[pair.before];
    was_found[pair.before] = true;
    SurveyedChannel since = channel.channel;
    if (comparison.is_continued) {
      since.hits -= old.hits;
      since.looks -= old.looks;
    }
    channel.change = changeOf(since, old);
    channel.old_hits = old.hits;
    channel.old_looks = old.looks;
  }
  for (size_t index = 0; index < old_channels.size(); ++index) {
    const SurveyedChannel& old = old_channels[index];
    if (!was_found[index]) reported.push_back({old, Change::kGone, old.hits, old.looks});
  }
  return comparison;
}

void dropChangesOutsideBands(Comparison& comparison, const std::optional<pelagrim::Settings>& now,
                             const std::optional<pelagrim::Settings>& before) {
  comparison.gone_outside_band =
      std::erase_if(comparison.channels, [&](const ReportedChannel& reported) {
        return reported.change == Change::kGone && isOutsideBand(reported, now);
      });
  for (ReportedChannel& reported : comparison.channels) {
    if (reported.change != Change::kNew || !isOutsideBand(reported, before)) continue;
    reported.change = Change::kNone;
    ++comparison.new_outside_old_band;
  }
}

}  // namespace pelagrim_host
